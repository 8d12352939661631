#include "dsp/MFilterCascade.h"

#include <gtest/gtest.h>

#include "tests/common/CountingFunctions.h"
#include "tests/dsp/Filters.h"

namespace {

constexpr int32_t kPlaces = 9;
constexpr int32_t kMaximumChannels = 8;
const std::vector<int32_t> kLengths = {0, 1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 64, 65, 99, 256, 999};

template <typename Filter>
std::vector<Filter> GetBands(int32_t count, TestRandom& random) {
  std::vector<Filter> bands(static_cast<std::size_t>(count));
  for (Filter& band : bands)
    band.Set(random.Below(MBiquadType::kCount), random.Real(-12, 12), random.Real(300, 15000), 48000,
             random.Real(0.3, 4));
  return bands;
}

std::vector<MResonantFilter> GetResonant(int32_t count, TestRandom& random) {
  std::vector<MResonantFilter> sections;
  for (int32_t k = 0; k < count; ++k) {
    MResonantLowPass low;
    MResonantHighPass high;
    low.Set(random.Real(2000, 15000), random.Real(0, 1), 48000);
    high.Set(random.Real(300, 3000), random.Real(0, 1), 48000);
    sections.push_back(k % 2 == 0 ? MResonantFilter(low) : high);
  }
  return sections;
}

// What the sections give that run one behind the other in place.
template <typename Filter>
AudioBlock RunEach(const std::vector<Filter>& sections, std::vector<typename Filter::State>& states,
                   const AudioBlock& in) {
  AudioBlock out = in;
  for (int32_t c = 0; c < in.GetChannelCount(); ++c)
    for (std::size_t k = 0; k < sections.size(); ++k)
      sections[k].Run(states[static_cast<std::size_t>(c * kPlaces) + k], out[c], out[c], in.GetLength());
  return out;
}

template <typename State>
std::vector<State> NewStates() {
  return std::vector<State>(kMaximumChannels * kPlaces);
}

// One cascade of each kind, over a block; the kernels are chosen by the caller.
AudioBlock RunCascade(const std::vector<MBiquadFilter>& sections, std::vector<MBiquadState>& states,
                      AudioBlock& in, AudioBlock& out, const MFilterKernels& kernels) {
  MBiquadCascade::Run(sections, states.data(), kPlaces, in.From(), out.From(), in.GetChannelCount(),
                      in.GetLength(), kernels);
  return out;
}

AudioBlock RunCascade(const std::vector<MResonantFilter>& sections, std::vector<MResonantState>& states,
                      AudioBlock& in, AudioBlock& out, const MFilterKernels& kernels) {
  MResonantCascade::Run(sections, states.data(), kPlaces, in.From(), out.From(), in.GetChannelCount(),
                        in.GetLength(), kernels);
  return out;
}

AudioBlock RunCascade(const std::vector<MBiquadFilterFloat>& sections, std::vector<MBiquadStateFloat>& states,
                      AudioBlock& in, AudioBlock& out, const MFilterKernels&) {
  MBiquadCascade::Run(sections, states.data(), kPlaces, in.From(), out.From(), in.GetChannelCount(),
                      in.GetLength());
  return out;
}

// Both blocks of a stream, so that the states count as well; `tolerance` of the peak, 0 for the same bits.
template <typename Filter>
void ExpectTwin(const std::vector<Filter>& sections, int32_t channels, int32_t samples,
                const MFilterKernels& kernels, double tolerance, TestRandom& random) {
  SCOPED_TRACE(testing::Message() << sections.size() << " sections, " << channels << " channels, "
                                  << samples);
  auto expectedStates = NewStates<typename Filter::State>(), states = expectedStates,
       placeStates = expectedStates;
  for (int32_t block = 0; block < 2; ++block) {
    AudioBlock in = AudioBlock::Noise(channels, samples, random), out(channels, samples), place = in;
    const AudioBlock expected = RunEach(sections, expectedStates, in), before = in;
    RunCascade(sections, states, in, out, kernels);
    RunCascade(sections, placeStates, place, place, kernels);
    EXPECT_TRUE(in == before && out == place && out.GuardsHold());
    if (tolerance == 0)
      EXPECT_TRUE(out == expected);
    else
      EXPECT_LE(out.GetDistance(expected), tolerance * expected.GetPeak());
  }
  for (std::size_t i = 0; i < states.size(); ++i)
    EXPECT_NEAR(double{states[i].y1}, double{expectedStates[i].y1}, tolerance * 100) << i;
}

template <typename Make>
void ExpectTwins(Make make, const MFilterKernels& kernels, double tolerance) {
  TestRandom random;
  for (int32_t count = 0; count <= 8; ++count)
    for (const int32_t samples : kLengths)
      ExpectTwin(make(count, random), 1 + (count + samples) % 3, samples, kernels, tolerance, random);
  for (int32_t channels = 0; channels <= kMaximumChannels; ++channels)
    for (const int32_t count : {1, 2, 5, 6})
      ExpectTwin(make(count, random), channels, 33, kernels, tolerance, random);
}

TEST(MFilterCascade, PlainKernelsGiveTheBitsOfTheSections) {
  ExpectTwins(GetBands<MBiquadFilter>, kPlainFilterKernels, 0);
  ExpectTwins(GetResonant, kPlainFilterKernels, 0);
}

TEST(MFilterCascade, SinglePrecisionGivesTheBitsOfTheSections) {
  ExpectTwins(GetBands<MBiquadFilterFloat>, kPlainFilterKernels, 0);
}

TEST(MFilterCascade, FusedKernelsGiveTheSamplesOfTheSections) {
  if (!MHasFusedFilterKernels()) GTEST_SKIP() << "this processor has no AVX2 and FMA";
  ExpectTwins(GetBands<MBiquadFilter>, kFusedFilterKernels, 1e-6);
  ExpectTwins(GetResonant, kFusedFilterKernels, 1e-6);
}

std::vector<const MFilterKernels*> GetAllKernels() {
  std::vector<const MFilterKernels*> all = {&kPlainFilterKernels};
  if (MHasFusedFilterKernels()) all.push_back(&kFusedFilterKernels);
  return all;
}

TEST(MFilterCascade, AnySplitGivesTheSameSamples) {
  TestRandom random;
  for (const MFilterKernels* kernels : GetAllKernels()) {
    for (int32_t count = 1; count <= 7; ++count) {
      const auto bands = GetBands<MBiquadFilter>(count, random);
      AudioBlock in = AudioBlock::Noise(3, 700, random), whole(3, 700), pieces(3, 700);
      auto states = NewStates<MBiquadState>(), other = states;
      MBiquadCascade::Run(bands, states.data(), kPlaces, in.From(), whole.From(), 3, 700, *kernels);
      for (int32_t i = 0, n; i < 700; i += n) {
        n = std::min(random.Integer(1, 40), 700 - i);
        MBiquadCascade::Run(bands, other.data(), kPlaces, in.From(i), pieces.From(i), 3, n, *kernels);
      }
      EXPECT_TRUE(pieces == whole) << count;
    }
  }
}

TEST(MFilterCascade, SectionsAreThoseOfTheModel) {
  TestRandom random;
  AudioBlock in = AudioBlock::Noise(2, 2001, random), out(2, 2001);
  std::vector<MBiquadFilter> bands(6);
  std::vector<ModelSection> models;
  for (int32_t k = 0; k < 6; ++k) {
    bands[static_cast<std::size_t>(k)].Set(k, 6 - 2 * k, 300 << k, 48000, 0.6);
    models.push_back(ModelBiquad(k, 6 - 2 * k, 300 << k, 48000, 0.6));
  }
  const AudioBlock expected = RunModel(models, in);
  for (const MFilterKernels* kernels : GetAllKernels()) {
    auto states = NewStates<MBiquadState>();
    MBiquadCascade::Run(bands, states.data(), kPlaces, in.From(), out.From(), 2, 2001, *kernels);
    EXPECT_LE(out.GetDistance(expected), 1e-6 * expected.GetPeak());
  }
}

TEST(MFilterCascade, APairStaysUnrounded) {
  TestRandom random;
  MResonantLowPass low;
  MResonantHighPass high;
  low.Set(9000, 0.7, 44100);
  high.Set(400, 0.1, 44100);
  for (const MFilterKernels* kernels : GetAllKernels()) {
    for (const int32_t channels : {1, 2, 3, 5}) {
      for (const int32_t samples : kLengths) {
        AudioBlock in = AudioBlock::Noise(channels, samples, random);
        std::vector<std::vector<double>> bands(static_cast<std::size_t>(channels));
        std::vector<double*> out;
        for (auto& band : bands)
          band.resize(static_cast<std::size_t>(samples) + 1, 7), out.push_back(band.data());
        std::vector<MResonantState> states(2 * static_cast<std::size_t>(channels)), model = states;
        MResonantCascade::RunPair(high, low, states.data(), in.From(), out.data(), channels, samples,
                                  *kernels);
        for (int32_t c = 0; c < channels; ++c) {
          const std::size_t first = 2 * static_cast<std::size_t>(c);
          for (int32_t i = 0; i < samples; ++i)
            ASSERT_NEAR(out[first / 2][i],
                        low.Step(model[first + 1], high.Step(model[first], double{in[c][i]})), 1e-10);
          EXPECT_EQ(out[first / 2][samples], 7);
          EXPECT_NEAR(states[first + 1].y2, model[first + 1].y2, 1e-10);
        }
      }
    }
  }
}

TEST(MFilterCascade, PlacesOfSectionsThatAreLeftOutKeepTheirState) {
  MResonantHighPass high;
  high.Set(1000, 0.5, 48000);
  const MResonantFilter sections[] = {high};
  MResonantState states[4];
  for (MResonantState& state : states) state.y1 = 0.25;
  AudioBlock block = AudioBlock::Constant(2, 50, 1);
  MResonantCascade::Run(sections, states + 1, 2, block.From(), block.From(), 2, 50);
  EXPECT_EQ(states[0].y1, 0.25);
  EXPECT_EQ(states[2].y1, 0.25);
  EXPECT_NE(states[1].y1, 0.25);
  EXPECT_EQ(states[1].y1, states[3].y1);
}

TEST(MFilterCascade, WhatIsNotFiniteCountsAsZeroAndHarmsNoOtherChannel) {
  TestRandom random;
  for (const MFilterKernels* kernels : GetAllKernels()) {
    for (const int32_t count : {1, 2, 3, 6}) {
      const auto bands = GetBands<MBiquadFilter>(count, random);
      AudioBlock hurt = AudioBlock::Noise(2, 99, random), clean = hurt;
      for (const int32_t i : {0, 17, 50, 98}) {
        hurt[0][i] = i == 17 ? NAN : i == 50 ? -INFINITY : INFINITY;
        clean[0][i] = 0;
      }
      auto one = NewStates<MBiquadState>(), two = one;
      RunCascade(bands, one, hurt, hurt, *kernels);
      RunCascade(bands, two, clean, clean, *kernels);
      EXPECT_TRUE(hurt == clean);
    }
  }
}

TEST(MFilterCascade, TheLoudestSignalStaysFinite) {
  std::vector<MBiquadFilter> bands(6);
  for (MBiquadFilter& band : bands) band.Set(MBiquadType::kPeak, 24, 1000, 48000, 20);
  for (const MFilterKernels* kernels : GetAllKernels()) {
    AudioBlock block(2, 999);
    block.Fill([](int32_t i) { return i % 48 < 24 ? 3.4e38 : -3.4e38; });
    auto states = NewStates<MBiquadState>();
    RunCascade(bands, states, block, block, *kernels);
    EXPECT_TRUE(block.IsFinite());
    EXPECT_TRUE(std::isfinite(states[5].y1));
  }
}

TEST(MFilterCascade, AnUnstableSectionIsReset) {
  std::vector<MBiquadFilter> bands(4);
  bands[1].a1 = 1e9;
  for (const MFilterKernels* kernels : GetAllKernels()) {
    AudioBlock block = AudioBlock::Constant(2, 99, 1);
    auto states = NewStates<MBiquadState>();
    RunCascade(bands, states, block, block, *kernels);
    EXPECT_EQ(states[1].y1, 0);
    EXPECT_EQ(states[1].x1, 0);
    EXPECT_TRUE(std::isfinite(states[3].y1));
  }
}

TEST(MFilterCascade, NothingAllocates) {
  TestRandom random;
  const auto bands = GetBands<MBiquadFilter>(6, random);
  const auto singles = GetBands<MBiquadFilterFloat>(2, random);
  const auto resonant = GetResonant(2, random);
  auto states = NewStates<MBiquadState>();
  auto singleStates = NewStates<MBiquadStateFloat>();
  auto resonantStates = NewStates<MResonantState>();
  AudioBlock block = AudioBlock::Noise(3, 99, random);
  float** const channels = block.From();
  const CountingFunctions counting;
  MBiquadCascade::Run(bands, states.data(), kPlaces, channels, channels, 3, 99);
  MBiquadCascade::Run(singles, singleStates.data(), kPlaces, channels, channels, 3, 99);
  MResonantCascade::Run(resonant, resonantStates.data(), kPlaces, channels, channels, 3, 99);
  EXPECT_EQ(CountingFunctions::GetCalls(), 0);
}

TEST(MFilterCascade, ACopyTakesWhatIsNotFiniteAsZero) {
  AudioBlock in = AudioBlock::Constant(3, 20, 0.5), expected = in;
  for (const float bad : {NAN, INFINITY, -INFINITY}) in[1][7] = in[2][19] = bad;
  expected[1][7] = expected[2][19] = 0;
  in[0][3] = expected[0][3] = 1e-40f;
  auto states = NewStates<MBiquadState>();
  auto floatStates = NewStates<MBiquadStateFloat>();
  AudioBlock out(3, 20), floatOut(3, 20);
  RunCascade(std::vector<MBiquadFilter>(), states, in, out, kPlainFilterKernels);
  RunCascade(std::vector<MBiquadFilterFloat>(), floatStates, in, floatOut, kPlainFilterKernels);
  EXPECT_TRUE(out == expected);
  EXPECT_TRUE(floatOut == expected);
}

}  // namespace
