#include "instruments/generators/MOscillatorAudioSource.h"

#include <gtest/gtest.h>

#include "tests/instruments/generators/Pumped.h"
#include "tests/instruments/generators/SoundModel.h"

namespace {

// The model of an oscillator's parameters.
SoundModel::Oscillator ModelOf(const MOscillatorAudioSource& oscillator) {
  SoundModel::Oscillator model;
  model.wave.shape = oscillator.signal.GetShape();
  model.wave.customDepth = oscillator.signal.GetCustomDepth();
  model.wave.curve = oscillator.signal.GetCurve();
  model.wave.Build();
  model.lengthSeconds = oscillator.lengthSeconds;
  model.phase = oscillator.phase;
  model.frequency = oscillator.frequencyLog10Hz;
  return model;
}

void ExpectModel(MOscillatorAudioSource& oscillator, int32_t rate, double gain, double ratio) {
  oscillator.SetFormat(2, rate);
  const int32_t count = static_cast<int32_t>(std::min(oscillator.GetLength(false), 200000.0)) + 700;
  const Signal expected = ModelOf(oscillator).Make(gain, ratio, rate, count);
  for (const Sizes& sizes : kSplits) {
    const AudioBlock out = Pump(oscillator, 2, count, sizes, gain, ratio);
    ASSERT_LE(SoundModel::GetDistance(out[0], expected), 2e-7 * std::abs(gain)) << sizes[0];
    ASSERT_EQ(std::memcmp(out[0], out[1], sizeof(float) * static_cast<std::size_t>(count)), 0);
  }
}

void SetCurve(MOscillatorAudioSource& oscillator, std::initializer_list<std::pair<double, double>> points) {
  oscillator.frequencyLog10Hz.Clear();
  for (const auto& [x, hertz] : points) oscillator.frequencyLog10Hz.Add(x, std::log10(hertz));
}

TEST(MOscillatorAudioSource, StartsAsASineOfATenthOfASecondAtThreeHundredHertz) {
  MOscillatorAudioSource oscillator;
  EXPECT_EQ(oscillator.lengthSeconds, 0.1);
  EXPECT_EQ(oscillator.phase, 0);
  EXPECT_EQ(oscillator.signal.GetShape(), MWaveShapes::kSine);
  ASSERT_EQ(oscillator.frequencyLog10Hz.GetCount(), 2);
  EXPECT_EQ(oscillator.frequencyLog10Hz[0].y, std::log10(300.0));
  EXPECT_EQ(oscillator.frequencyLog10Hz[1].y, std::log10(300.0));
  EXPECT_EQ(oscillator.frequencyLog10Hz[0].flags, MEnvelopeFlag::kDefault);
  EXPECT_EQ(oscillator.frequencyLog10Hz.yMinimum, std::log10(20.0));
  EXPECT_EQ(oscillator.frequencyLog10Hz.yMaximum, 4);
  oscillator.SetFormat(1, 48000);
  const AudioBlock out = Pump(oscillator, 1, 4800);
  // The quarters of the table repeat their ends, which bends the sine by less than a place of the table.
  for (int32_t i = 0; i < 4800; ++i)
    ASSERT_NEAR(out[0][i], std::sin(2 * std::numbers::pi * 300 * i / 48000), 2 * std::numbers::pi / 8192);
}

TEST(MOscillatorAudioSource, FlatToneIsThatOfTheModelAtEveryRatioPhaseAndRate) {
  for (const double ratio : {0.5, 1.0, 2.0}) {
    for (const double phase : {0.0, 0.25, -0.25}) {
      for (const int32_t rate : {22050, 44100, 96000}) {
        MOscillatorAudioSource oscillator;
        oscillator.phase = phase;
        ExpectModel(oscillator, rate, 0.7, ratio);
      }
    }
  }
}

TEST(MOscillatorAudioSource, QuarterOfAPhaseForwardAndBackAreTheTopAndTheBottomOfASine) {
  MOscillatorAudioSource oscillator;
  oscillator.SetFormat(1, 44100);
  oscillator.phase = 0.25;
  EXPECT_NEAR(Pump(oscillator, 1, 1)[0][0], 1, 1e-6);
  oscillator.phase = -0.25;
  EXPECT_NEAR(Pump(oscillator, 1, 1)[0][0], -1, 1e-6);
}

TEST(MOscillatorAudioSource, ShapesBetweenTwoTablesAndDrawnWavesAreThoseOfTheModel) {
  for (const auto& [shape, depth] :
       {std::pair{1.5, 0.0}, {11.25, 0.3}, {0.0, 1.0}, {15.0, 0.0}, {13.0, 0.0}}) {
    MOscillatorAudioSource oscillator;
    oscillator.signal.SetShape(shape);
    oscillator.signal.SetCustomDepth(depth);
    oscillator.signal.Rebuild();
    oscillator.SetFormat(2, 44100);
    // Noise and edges of a wave turn a rounding of the phase into more.
    const Signal expected = ModelOf(oscillator).Make(1, 1, 44100, 4410);
    const AudioBlock out = Pump(oscillator, 2, 4410, {256});
    EXPECT_LE(SoundModel::GetDistance(out[0], expected), 1e-6) << shape;
  }
}

TEST(MOscillatorAudioSource, DrawnFrequencyIsThatOfTheModel) {
  for (const double ratio : {0.5, 1.0, 2.0}) {
    MOscillatorAudioSource oscillator;
    oscillator.lengthSeconds = 0.31234;
    SetCurve(oscillator, {{0, 100}, {0.3, 2000}, {0.31, 50}, {0.8, 9000}, {1, 20}});
    oscillator.frequencyLog10Hz[1].tension = 0.5;
    oscillator.frequencyLog10Hz[3].type = MEnvelopeType::kMode3;
    oscillator.frequencyLog10Hz[3].tension = -0.4;
    ExpectModel(oscillator, 44100, 1, ratio);
  }
}

TEST(MOscillatorAudioSource, LongGlideStaysInPhase) {
  MOscillatorAudioSource oscillator;
  oscillator.lengthSeconds = 60;
  SetCurve(oscillator, {{0, 10000}, {0.5, 9000}, {1, 10000}});
  oscillator.SetFormat(1, 44100);
  const auto count = static_cast<int32_t>(oscillator.GetLength(false));
  const Signal expected = ModelOf(oscillator).Make(1, 1, 44100, count);
  EXPECT_LE(SoundModel::GetDistance(Pump(oscillator, 1, count, {441})[0], expected), 2e-7);
}

TEST(MOscillatorAudioSource, TwoPointsApartAndThreeEqualPointsAreNotFlatAndSoundAsTheModel) {
  MOscillatorAudioSource oscillator;
  SetCurve(oscillator, {{0, 300}, {1, 300.0001}});
  ExpectModel(oscillator, 44100, 1, 1);
  SetCurve(oscillator, {{0, 300}, {0.5, 300}, {1, 300}});
  ExpectModel(oscillator, 44100, 1, 1);
}

TEST(MOscillatorAudioSource, CurvesWithoutPointsOrBeyondAllRangesAreLimited) {
  MOscillatorAudioSource oscillator;
  oscillator.lengthSeconds = 0.01;
  SetCurve(oscillator, {});
  ExpectModel(oscillator, 44100, 1, 1);
  oscillator.frequencyLog10Hz.Clear();
  for (const double y : {1e300, -1e300}) {
    oscillator.frequencyLog10Hz.Add(0, y);
    oscillator.frequencyLog10Hz.Add(1, y);
    EXPECT_TRUE(Pump(oscillator, 1, 500, {64}).IsFinite());
  }
}

TEST(MOscillatorAudioSource, EndsWithItsTruncatedLengthAndIsSilentBehindIt) {
  MOscillatorAudioSource oscillator;
  oscillator.SetFormat(2, 44100);
  oscillator.lengthSeconds = 1000.7 / 44100;
  EXPECT_EQ(oscillator.GetLength(false), 1000);
  EXPECT_EQ(oscillator.GetLength(true), 1000.7 / 44100);
  const MGeneratorStatePointer state = oscillator.CreateState(1, 1);
  std::vector<bool> calls;
  const AudioBlock out = Pump(oscillator, *state, 2, 1600, {500, 499, 1, 600}, &calls);
  EXPECT_EQ(calls, (std::vector<bool>{false, false, true, true}));
  EXPECT_NE(out[1][999], 0);
  for (int32_t i = 1000; i < 1600; ++i) ASSERT_EQ(out[1][i], 0);
}

TEST(MOscillatorAudioSource, LengthInUseIsLimited) {
  MOscillatorAudioSource oscillator;
  oscillator.SetFormat(1, 44100);
  for (const auto& [seconds, samples] : {std::pair{-1.0, 0.0}, {1e9, 2147483647.0}, {1e300, 2147483647.0}}) {
    oscillator.lengthSeconds = seconds;
    EXPECT_EQ(oscillator.GetLength(false), samples);
  }
  oscillator.lengthSeconds = NAN;
  EXPECT_EQ(oscillator.GetLength(false), 4410);
  oscillator.lengthSeconds = 0;
  SetCurve(oscillator, {{0, 100}, {1, 200}});
  const MGeneratorStatePointer state = oscillator.CreateState(1, 1);
  std::vector<bool> calls;
  EXPECT_TRUE(Pump(oscillator, *state, 1, 64, {}, &calls).IsZero());
  EXPECT_EQ(calls, std::vector<bool>{true});
}

TEST(MOscillatorAudioSource, FormatBringsTheWaveUpToDate) {
  MOscillatorAudioSource oscillator;
  oscillator.SetFormat(1, 44100);
  oscillator.signal.SetShape(MWaveShapes::kRectangle);
  const AudioBlock sine = Pump(oscillator, 1, 147);
  EXPECT_NEAR(sine[0][5], std::sin(2 * std::numbers::pi * 5 / 147), 1e-3);
  oscillator.SetFormat(1, 44100);
  EXPECT_EQ(Pump(oscillator, 1, 147)[0][5], 1);
}

TEST(MOscillatorAudioSource, EditsDoNotReachASoundButThoseOfTheWaveDo) {
  MOscillatorAudioSource oscillator, untouched;
  for (MOscillatorAudioSource* object : {&oscillator, &untouched}) {
    object->lengthSeconds = 0.05;
    object->SetFormat(1, 44100);
  }
  const MGeneratorStatePointer state = oscillator.CreateState(1, 1);
  const AudioBlock expected = Pump(untouched, 1, 2205);
  oscillator.lengthSeconds = 1;
  oscillator.phase = 0.3;
  SetCurve(oscillator, {{0, 1000}, {1, 2000}});
  EXPECT_LE(Pump(oscillator, *state, 1, 1000).GetDistance(Pump(untouched, 1, 1000)), 0);
  oscillator.signal.SetShape(MWaveShapes::kRectangle);
  oscillator.signal.Rebuild();
  const AudioBlock rest = Pump(oscillator, *state, 1, 1205);
  EXPECT_GT(std::abs(rest[0][300] - expected[0][1300]), 0.01);
  EXPECT_NEAR(std::abs(rest[0][300]), 1, 1e-6);
}

}  // namespace
