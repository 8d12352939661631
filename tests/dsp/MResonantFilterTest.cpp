#include "dsp/MResonantFilter.h"

#include <gtest/gtest.h>

#include "tests/common/CountingFunctions.h"
#include "tests/dsp/Filters.h"

namespace {

template <typename Filter>
Filter Designed(double frequency, double resonance, double rate) {
  Filter filter;
  filter.Set(frequency, resonance, rate);
  return filter;
}

void ExpectSection(const MResonantFilter& filter, const ModelSection& model) {
  EXPECT_NEAR(filter.c0, model.b0, 1e-14);
  EXPECT_NEAR(filter.c1, model.b1, 1e-14);
  EXPECT_NEAR(filter.c2, model.b2, 1e-14);
  EXPECT_NEAR(filter.d1, model.a1, 1e-14);
  EXPECT_NEAR(filter.d2, model.a2, 1e-14);
}

template <typename Test>
void ForAllDesigns(Test test) {
  for (const double rate : {44100.0, 48000.0, 96000.0})
    for (const double frequency : {20.0, 1000.0, 2000.0, 20000.0})
      for (const double resonance : {0.0, 0.3, 0.5, 1.0}) test(frequency, resonance, rate);
}

TEST(MResonantFilter, BothKindsAreDesignedByTheirFormulas) {
  ForAllDesigns([](double frequency, double resonance, double rate) {
    ExpectSection(Designed<MResonantLowPass>(frequency, resonance, rate),
                  ModelLowPass(frequency, resonance, rate));
    ExpectSection(Designed<MResonantHighPass>(frequency, resonance, rate),
                  ModelHighPass(frequency, resonance, rate));
  });
}

TEST(MResonantFilter, TheCornerIsOneOverTheDamping) {
  const auto low = [](double r) { return Designed<MResonantLowPass>(1000, r, 48000).GetMagnitude(1000); };
  const auto high = [](double r) { return Designed<MResonantHighPass>(1000, r, 48000).GetMagnitude(1000); };
  EXPECT_NEAR(low(0), 1 / 0.1, 1e-6);
  EXPECT_NEAR(high(0), 1 / 0.02, 1e-5);
  EXPECT_NEAR(low(1), 1 / 1.4, 1e-7);
  EXPECT_NEAR(high(1), 1 / 1.4, 1e-7);
}

TEST(MResonantFilter, PassesItsSideAndStopsTheOther) {
  const auto low = Designed<MResonantLowPass>(1000, 0.5, 48000);
  const auto high = Designed<MResonantHighPass>(1000, 0.5, 48000);
  EXPECT_NEAR(low.GetMagnitude(0), 1, 1e-9);
  EXPECT_NEAR(low.GetMagnitude(24000), 0, 1e-9);
  EXPECT_NEAR(high.GetMagnitude(0), 0, 1e-9);
  EXPECT_NEAR(high.GetMagnitude(24000), 1, 1e-9);
}

TEST(MResonantFilter, TheMagnitudeIsWhatASineMeasures) {
  for (const double frequency : {240.0, 960.0, 6000.0}) {
    const MResonantFilter filters[] = {Designed<MResonantLowPass>(1000, 0.4, 48000),
                                       Designed<MResonantHighPass>(1000, 0.4, 48000)};
    for (const MResonantFilter& filter : filters) {
      MResonantState state;
      const auto run = [&](const float* in, float* out, int32_t n) { filter.Run(state, in, out, n); };
      EXPECT_NEAR(MeasureMagnitude(run, frequency, 48000), filter.GetMagnitude(frequency), 1e-6);
    }
  }
}

TEST(MResonantFilter, TheImpulseResponseIsThatOfTheRecursion) {
  ForAllDesigns([](double frequency, double resonance, double rate) {
    const AudioBlock in = AudioBlock::Impulse(1, 501);
    AudioBlock out(1, 501);
    MResonantState state;
    Designed<MResonantLowPass>(frequency, resonance, rate).Run(state, in[0], out[0], 501);
    EXPECT_LE(out.GetDistance(RunModel({ModelLowPass(frequency, resonance, rate)}, in)), 1e-7);
    state.Reset();
    Designed<MResonantHighPass>(frequency, resonance, rate).Run(state, in[0], out[0], 501);
    EXPECT_LE(out.GetDistance(RunModel({ModelHighPass(frequency, resonance, rate)}, in)), 1e-7);
  });
}

TEST(MResonantFilter, AnySplitAndInPlaceGiveTheSameSamples) {
  const auto filter = Designed<MResonantLowPass>(600, 0, 48000);
  TestRandom random;
  AudioBlock in = AudioBlock::Noise(1, 601, random), whole(1, 601);
  MResonantState state;
  filter.Run(state, in[0], whole[0], 601);
  for (const int32_t split : {1, 2, 3, 5, 64}) {
    AudioBlock pieces = in;
    MResonantState other;
    for (int32_t i = 0; i < 601; i += split)
      filter.Run(other, pieces[0] + i, pieces[0] + i, std::min(split, 601 - i));
    EXPECT_TRUE(pieces == whole) << split;
  }
}

TEST(MResonantFilter, SilenceSettlesAtAConstantAboutTheBias) {
  const MResonantFilter filters[] = {Designed<MResonantLowPass>(1000, 0.5, 48000),
                                     Designed<MResonantHighPass>(1000, 0.5, 48000)};
  for (const MResonantFilter& filter : filters) {
    TestRandom random(1);
    AudioBlock block = AudioBlock::Noise(1, 1000, random);
    MResonantState state;
    filter.Run(state, block[0], block[0], 1000);
    AudioBlock zeros(1, 20000);
    filter.Run(state, zeros[0], zeros[0], 20000);
    const double settled = zeros[0][19999];
    EXPECT_EQ(zeros[0][19998], zeros[0][19999]);
    // The bias on the input passes or not; the one on the output is amplified by the recursion alone.
    const double expected = kBias * (filter.c0 + filter.c1 + filter.c2 + 1) / (1 - filter.d1 - filter.d2);
    EXPECT_NEAR(settled, expected, 1e-4 * expected);
    EXPECT_GT(std::abs(settled), 1e-26);
    EXPECT_LT(std::abs(settled), 1e-22);
  }
}

TEST(MResonantFilter, StepIsTheRunWithoutRounding) {
  const auto filter = Designed<MResonantHighPass>(300, 0.2, 44100);
  MResonantState state;
  ModelSection model = ModelHighPass(300, 0.2, 44100);
  TestRandom random;
  for (int32_t i = 0; i < 100; ++i) {
    const double x = random.Real(-1, 1);
    EXPECT_NEAR(filter.Step(state, x), model.Step(x), 1e-11);
  }
}

TEST(MResonantFilter, ADesignThatIsNotFiniteKeepsTheCoefficients) {
  auto filter = Designed<MResonantLowPass>(1000, 0.5, 48000);
  filter.Set(NAN, 0.5, 48000);
  ExpectSection(filter, ModelLowPass(1000, 0.5, 48000));
  filter.Set(1000, 0.5, 0);
  ExpectSection(filter, ModelLowPass(1000, 0.5, 48000));
}

TEST(MResonantFilter, WhatIsNotFiniteCountsAsZero) {
  const auto filter = Designed<MResonantLowPass>(1000, 0, 48000);
  AudioBlock hurt(1, 99), clean(1, 99);
  const float bad[] = {NAN, INFINITY, -INFINITY};
  hurt.Fill([&](int32_t i) { return i % 7 == 0 ? bad[i % 3] : 0.5; });
  clean.Fill([&](int32_t i) { return i % 7 == 0 ? 0 : 0.5; });
  MResonantState one, two;
  filter.Run(one, hurt[0], hurt[0], 99);
  filter.Run(two, clean[0], clean[0], 99);
  EXPECT_TRUE(hurt == clean);
}

TEST(MResonantFilter, NothingAllocates) {
  const CountingFunctions counting;
  const auto filter = Designed<MResonantLowPass>(1000, 0.5, 48000);
  MResonantState state;
  float samples[33] = {1};
  filter.Run(state, samples, samples, 33);
  EXPECT_EQ(CountingFunctions::GetCalls(), 0);
}

}  // namespace
