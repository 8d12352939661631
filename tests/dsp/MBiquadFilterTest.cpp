#include "dsp/MBiquadFilter.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"
#include "tests/dsp/Filters.h"

namespace {

constexpr double kRates[] = {44100, 48000, 96000};
constexpr double kFrequencies[] = {20, 440, 1000, 15000};

template <typename Filter>
Filter Designed(int32_t type, double gain, double frequency, double rate, double q) {
  Filter filter;
  filter.Set(type, gain, frequency, rate, q);
  return filter;
}

template <typename Test>
void ForAllDesigns(Test test) {
  for (int32_t type = 0; type < MBiquadType::kCount; ++type)
    for (const double rate : kRates)
      for (const double frequency : kFrequencies)
        for (const double gain : {-24.0, 0.0, 12.0})
          for (const double q : {0.05, 0.7, 20.0}) test(type, gain, frequency, rate, q);
}

TEST(MBiquadFilter, AllTypesAreDesignedByTheCookbook) {
  ForAllDesigns([](int32_t type, double gain, double frequency, double rate, double q) {
    const auto filter = Designed<MBiquadFilter>(type, gain, frequency, rate, q);
    const ModelSection model = ModelBiquad(type, gain, frequency, rate, q);
    const double tolerance = 1e-14 * (1 + std::abs(model.b0) + std::abs(model.b1));
    EXPECT_NEAR(filter.b0, model.b0, tolerance);
    EXPECT_NEAR(filter.b1, model.b1, tolerance);
    EXPECT_NEAR(filter.b2, model.b2, tolerance);
    EXPECT_NEAR(filter.a1, model.a1, 1e-14);
    EXPECT_NEAR(filter.a2, model.a2, 1e-14);
  });
}

TEST(MBiquadFilter, CoefficientsThatWouldBeZeroAreTheBias) {
  EXPECT_EQ(Designed<MBiquadFilter>(MBiquadType::kBandPass, 0, 1000, 48000, 1).b1, kBias);
  EXPECT_EQ(Designed<MBiquadFilterFloat>(MBiquadType::kBandPass, 0, 1000, 48000, 1).b1, 1e-25f);
  // w = pi/2 makes alpha 1/2, Q = 1/2 makes a2 0.
  EXPECT_NEAR(Designed<MBiquadFilter>(MBiquadType::kLowPass, 0, 12000, 48000, 0.5).a2, kBias, 1e-30);
}

TEST(MBiquadFilter, KeepsItsParametersAndTheirOrder) {
  const auto filter = Designed<MBiquadFilter>(MBiquadType::kNotch, -3, 440, 44100, 2);
  const auto& [type, gain, frequency, rate, q, b0, b2, a2, b1, a1] = filter;
  EXPECT_EQ(type, 6);
  EXPECT_EQ(gain, -3);
  EXPECT_EQ(frequency, 440);
  EXPECT_EQ(rate, 44100);
  EXPECT_EQ(q, 2);
  EXPECT_EQ(b0, b2);
  EXPECT_NEAR(b1, -a1 + 2 * kBias, 1e-15);
  EXPECT_LT(a2, 0);
  const MBiquadState state{1, 2, 3, 4};
  EXPECT_EQ(state.x2, 1);
  EXPECT_EQ(state.y2, 2);
  EXPECT_EQ(state.x1, 3);
  EXPECT_EQ(state.y1, 4);
}

TEST(MBiquadFilter, AnotherTypeRaisesAndChangesTheParametersOnly) {
  for (const int32_t type : {-1, 7, INT32_MAX, INT32_MIN}) {
    auto filter = Designed<MBiquadFilter>(MBiquadType::kLowPass, 0, 1000, 48000, 1);
    const MBiquadFilter before = filter;
    EXPECT_RAISES(filter.Set(type, 1, 2, 3, 4), "Invalid filter type.", 0);
    EXPECT_EQ(filter.type, type);
    EXPECT_EQ(filter.frequencyHz, 2);
    EXPECT_EQ(filter.q, 4);
    EXPECT_EQ(filter.b0, before.b0);
    EXPECT_EQ(filter.b1, before.b1);
    EXPECT_EQ(filter.a1, before.a1);
    EXPECT_EQ(filter.a2, before.a2);
  }
}

TEST(MBiquadFilter, ADesignThatIsNotFiniteKeepsTheCoefficients) {
  for (const double bad : {double(NAN), double(INFINITY)}) {
    auto filter = Designed<MBiquadFilter>(MBiquadType::kPeak, 6, 1000, 48000, 1);
    const MBiquadFilter before = filter;
    filter.Set(MBiquadType::kPeak, 6, bad, 48000, 1);
    EXPECT_EQ(filter.b0, before.b0);
    EXPECT_EQ(filter.a1, before.a1);
    filter.Set(MBiquadType::kPeak, 6, 1000, 0, 1);
    EXPECT_EQ(filter.b0, before.b0);
    EXPECT_EQ(filter.sampleRate, 0);
  }
}

TEST(MBiquadFilter, PeakAndShelvesWithoutGainAreFlat) {
  for (const int32_t type : {MBiquadType::kPeak, MBiquadType::kLowShelf, MBiquadType::kHighShelf})
    for (const double frequency : {0.0, 10.0, 999.0, 1000.0, 20000.0})
      EXPECT_NEAR(Designed<MBiquadFilter>(type, 0, 1000, 48000, 0.7).GetMagnitude(frequency), 1, 1e-12);
}

TEST(MBiquadFilter, ResponsesHaveTheirKnownPoints) {
  const double q = std::sqrt(0.5);
  const auto at = [&](int32_t type, double gain, double frequency) {
    return Designed<MBiquadFilter>(type, gain, 1000, 48000, q).GetMagnitude(frequency);
  };
  EXPECT_NEAR(at(MBiquadType::kLowPass, 0, 0), 1, 1e-10);
  EXPECT_NEAR(at(MBiquadType::kLowPass, 0, 1000), std::sqrt(0.5), 1e-12);
  EXPECT_NEAR(at(MBiquadType::kHighPass, 0, 1000), std::sqrt(0.5), 1e-12);
  EXPECT_NEAR(at(MBiquadType::kHighPass, 0, 24000), 1, 1e-12);
  EXPECT_NEAR(at(MBiquadType::kBandPass, 0, 1000), 1, 1e-12);
  EXPECT_NEAR(at(MBiquadType::kNotch, 0, 1000), 0, 1e-12);
  EXPECT_NEAR(at(MBiquadType::kPeak, 12, 1000), std::pow(10, 12 / 20.0), 1e-11);
  EXPECT_NEAR(at(MBiquadType::kLowShelf, -6, 0), std::pow(10, -6 / 20.0), 1e-10);
  EXPECT_NEAR(at(MBiquadType::kHighShelf, -6, 24000), std::pow(10, -6 / 20.0), 1e-11);
}

TEST(MBiquadFilter, TheMagnitudeIsWhatASineMeasures) {
  for (int32_t type = 0; type < MBiquadType::kCount; ++type) {
    const auto filter = Designed<MBiquadFilter>(type, 6, 1000, 48000, 1.5);
    for (const double frequency : {240.0, 960.0, 6000.0}) {
      MBiquadState state;
      const auto run = [&](const float* in, float* out, int32_t n) { filter.Run(state, in, out, n); };
      EXPECT_NEAR(MeasureMagnitude(run, frequency, 48000), filter.GetMagnitude(frequency), 1e-6);
    }
  }
}

TEST(MBiquadFilter, APoleOnTheUnitCircleRaises) {
  MBiquadFilter filter;
  filter.sampleRate = 48000;
  filter.a1 = 1;
  EXPECT_RAISES(filter.GetMagnitude(0), "Complex division by zero.", 0);
}

TEST(MBiquadFilter, TheImpulseResponseIsThatOfTheRecursion) {
  for (int32_t type = 0; type < MBiquadType::kCount; ++type) {
    const auto filter = Designed<MBiquadFilter>(type, -9, 700, 44100, 3);
    const AudioBlock in = AudioBlock::Impulse(1, 4001);
    AudioBlock out(1, 4001);
    MBiquadState state;
    filter.Run(state, in[0], out[0], 4001);
    EXPECT_LE(out.GetDistance(RunModel({ModelBiquad(type, -9, 700, 44100, 3)}, in)), 1e-7);
  }
}

template <typename Filter>
void ExpectSameForAnySplit() {
  const auto filter = Designed<Filter>(MBiquadType::kPeak, 12, 600, 48000, 4);
  TestRandom random;
  AudioBlock in = AudioBlock::Noise(1, 600, random), whole(1, 600);
  typename Filter::State state;
  filter.Run(state, in[0], whole[0], 600);
  for (const int32_t split : {1, 2, 3, 5, 64}) {
    AudioBlock pieces = in;
    typename Filter::State other;
    for (int32_t i = 0; i < 600; i += split)
      filter.Run(other, pieces[0] + i, pieces[0] + i, std::min(split, 600 - i));
    EXPECT_TRUE(pieces == whole) << split;
    EXPECT_EQ(other.y1, state.y1);
    EXPECT_EQ(other.x2, state.x2);
  }
}

TEST(MBiquadFilter, AnySplitAndInPlaceGiveTheSameSamples) {
  ExpectSameForAnySplit<MBiquadFilter>();
  ExpectSameForAnySplit<MBiquadFilterFloat>();
}

TEST(MBiquadFilter, ZerosBehindASignalFadeToNothing) {
  for (int32_t type = 0; type < MBiquadType::kCount; ++type) {
    const auto filter = Designed<MBiquadFilter>(type, 6, 1000, 48000, 2);
    TestRandom random(1);
    AudioBlock block = AudioBlock::Noise(1, 1000, random);
    MBiquadState state;
    filter.Run(state, block[0], block[0], 1000);
    AudioBlock zeros(1, 100000);
    filter.Run(state, zeros[0], zeros[0], 100000);
    EXPECT_LT(std::abs(zeros[0][99999]), 1e-20);
  }
}

TEST(MBiquadFilter, WhatIsNotFiniteCountsAsZeroAndTheStateStaysFinite) {
  const auto filter = Designed<MBiquadFilter>(MBiquadType::kPeak, 24, 1000, 48000, 20);
  const auto single = Designed<MBiquadFilterFloat>(MBiquadType::kPeak, 24, 1000, 48000, 20);
  constexpr float kMaximum = std::numeric_limits<float>::max();
  const float bad[] = {NAN, INFINITY, -INFINITY};
  AudioBlock hurt(1, 99), clean(1, 99), loud(1, 99);
  hurt.Fill([&](int32_t i) { return i % 7 == 0 ? bad[i % 3] : 0.5; });
  clean.Fill([&](int32_t i) { return i % 7 == 0 ? 0 : 0.5; });
  loud.Fill([&](int32_t i) { return i % 48 < 24 ? kMaximum : -kMaximum; });
  MBiquadState one, two;
  filter.Run(one, hurt[0], hurt[0], 99);
  filter.Run(two, clean[0], clean[0], 99);
  EXPECT_TRUE(hurt == clean);
  AudioBlock loudToo = loud;
  MBiquadStateFloat state;
  filter.Run(one, loud[0], loud[0], 99);
  single.Run(state, loudToo[0], loudToo[0], 99);
  EXPECT_TRUE(loud.IsFinite() && loudToo.IsFinite());
  EXPECT_TRUE(std::isfinite(one.y1) && std::isfinite(state.y1));
}

TEST(MBiquadFilter, AnUnstableSectionWorksAgainOnceItIsDesignedWell) {
  MBiquadFilter filter;
  filter.a1 = 1e9;
  MBiquadState state;
  AudioBlock block = AudioBlock::Constant(1, 200, 1);
  filter.Run(state, block[0], block[0], 200);
  EXPECT_TRUE(block.IsFinite());
  EXPECT_EQ(state.y1, 0);
  filter.a1 = 0;
  block = AudioBlock::Constant(1, 200, 1);
  filter.Run(state, block[0], block[0], 200);
  EXPECT_EQ(block[0][199], 1);
}

TEST(MBiquadFilter, ANewDesignKeepsTheState) {
  auto filter = Designed<MBiquadFilter>(MBiquadType::kLowPass, 0, 1000, 48000, 1);
  MBiquadState state;
  AudioBlock block = AudioBlock::Constant(1, 10, 1);
  filter.Run(state, block[0], block[0], 10);
  filter.Set(MBiquadType::kLowPass, 0, 2000, 48000, 1);
  ModelSection model = ModelBiquad(3, 0, 2000, 48000, 1);
  model.x1 = state.x1, model.x2 = state.x2, model.y1 = state.y1, model.y2 = state.y2;
  float next = 1;
  filter.Run(state, &next, &next, 1);
  EXPECT_NEAR(next, model.Step(1), 1e-7);
  state.Reset();
  EXPECT_EQ(state.y1, 0);
}

TEST(MBiquadFilterFloat, IsTheDesignOfItsStoredParametersRounded) {
  ForAllDesigns([](int32_t type, double gain, double frequency, double rate, double q) {
    const auto single = Designed<MBiquadFilterFloat>(type, gain, frequency, rate, q);
    const auto full = Designed<MBiquadFilter>(type, float(gain), float(frequency), float(rate), float(q));
    EXPECT_EQ(single.b0, float(full.b0));
    EXPECT_EQ(single.b1, float(full.b1));
    EXPECT_EQ(single.b2, float(full.b2));
    EXPECT_EQ(single.a1, float(full.a1));
    EXPECT_EQ(single.a2, float(full.a2));
  });
}

TEST(MBiquadFilterFloat, RespondsRightFromSomeHundredHertzUp) {
  for (const double frequency : {600.0, 2400.0, 12000.0}) {
    const auto filter = Designed<MBiquadFilterFloat>(MBiquadType::kLowPass, 0, 2000, 48000, 1);
    MBiquadStateFloat state;
    const auto run = [&](const float* in, float* out, int32_t n) { filter.Run(state, in, out, n); };
    const double expected =
        Designed<MBiquadFilter>(MBiquadType::kLowPass, 0, 2000, 48000, 1).GetMagnitude(frequency);
    EXPECT_NEAR(MeasureMagnitude(run, frequency, 48000), expected, 1e-4);
  }
}

TEST(MBiquadFilter, NothingAllocates) {
  const CountingFunctions counting;
  auto filter = Designed<MBiquadFilter>(MBiquadType::kPeak, 6, 1000, 48000, 1);
  MBiquadState state;
  float samples[33] = {1};
  filter.Run(state, samples, samples, 33);
  filter.GetMagnitude(1000);
  EXPECT_EQ(CountingFunctions::GetCalls(), 0);
}

TEST(MFilter, FrequenciesAreLimitedBelowHalfTheRateOnly) {
  EXPECT_EQ(MLimitFilterFrequency(23999.9, 48000), 23999.9);
  EXPECT_EQ(MLimitFilterFrequency(24000, 48000), 0.4999 * 48000);
  EXPECT_EQ(MLimitFilterFrequency(1e9, 22050), 0.4999 * 22050);
}

}  // namespace
