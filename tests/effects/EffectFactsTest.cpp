// What can be measured of the effects from outside: responses, levels, times and rates.

#include <gtest/gtest.h>

#include <numbers>

#include "tests/common/TestRandom.h"
#include "tests/dsp/Filters.h"
#include "tests/effects/NamedEffect.h"
#include "tests/effects/SqueezelUnderTest.h"
#include "tests/effects/TonebenchUnderTest.h"

namespace {

constexpr int32_t kRate = 48000;

double Decibels(double gain) {
  return 20 * std::log10(gain);
}

// The magnitude at a frequency of a signal that has ended within its block.
double MagnitudeAt(double hertz, const AudioBlock& response) {
  const double w = 2 * std::numbers::pi * hertz / kRate;
  double sine = 0, cosine = 0;
  for (int32_t i = 0; i < response.GetLength(); ++i) {
    sine += response[0][i] * std::sin(w * i);
    cosine += response[0][i] * std::cos(w * i);
  }
  return std::hypot(sine, cosine);
}

TEST(EffectFacts, TonebenchPassesHalfOfThePowerAtTheCornersOfItsPasses) {
  for (const int32_t type : {MBiquadType::kLowPass, MBiquadType::kHighPass}) {
    for (const double corner : {50.0, 1000.0, 15000.0}) {
      TonebenchUnderTest tone;
      tone.SetBand(3, corner, 0, std::sqrt(0.5), type);
      tone.Prepare(1, kRate);
      const AudioBlock response = tone.Answer(AudioBlock::Impulse(1, kRate));
      EXPECT_NEAR(Decibels(MagnitudeAt(corner, response)), -3.0103, 0.0005) << type << ", " << corner;
    }
  }
}

TEST(EffectFacts, SlotterIsDownByItsDampingAtTheCorners) {
  for (const char* const filter : {"low", "high"}) {
    NamedEffect slotter("Slotter");
    slotter.Set((filter + std::string("enable")).c_str(), 1);
    slotter.Set((filter + std::string("resonance")).c_str(), 1);
    slotter.Set((filter + std::string("freq")).c_str(), 3);
    slotter.Prepare(1, kRate);
    const AudioBlock response = slotter.Answer(AudioBlock::Impulse(1, kRate));
    EXPECT_NEAR(Decibels(MagnitudeAt(1000, response)), -Decibels(1.4), 0.0005) << filter;
  }
}

TEST(EffectFacts, TonebenchHasTheResponseThatItsEditorDrawsAtAHundredFrequencies) {
  TonebenchUnderTest tone;
  tone.SetBand(0, 80, 6, 0.7, MBiquadType::kLowShelf);
  tone.SetBand(1, 300, -9, 3, MBiquadType::kPeak);
  tone.SetBand(2, 1000, 12, 1, MBiquadType::kPeak);
  tone.SetBand(3, 9000, -6, 0.8, MBiquadType::kHighShelf);
  tone.SetBand(4, 30, 0, 0.9, MBiquadType::kHighPass);
  tone.SetBand(5, 16000, 0, 1.2, MBiquadType::kLowPass);
  tone.Prepare(1, kRate);
  const AudioBlock response = tone.Answer(AudioBlock::Impulse(1, kRate), {64});
  for (int32_t i = 0; i < 100; ++i) {
    const double log10Hz = std::log10(20.0) + 3 * i / 99.0;
    const double measured = MagnitudeAt(std::pow(10, log10Hz), response);
    EXPECT_NEAR(Decibels(measured), tone.GetPlugin().GetShape(log10Hz), 0.001) << std::pow(10, log10Hz);
  }
}

// Settled, with times as they are by default.
TEST(EffectFacts, SqueezelHasItsStaticCurveAtTwentyLevels) {
  for (int32_t knee = 0; knee < 3; ++knee) {
    const SqueezelModel model{0.25, 4, 0.25, 1, 1, knee, true};
    for (int32_t i = 1; i <= 20; ++i) {
      const double level = 0.05 * i + 0.001;
      SqueezelUnderTest squeezel({{"kneemode", knee}, {"ratio", 4}});
      const AudioBlock out = squeezel.Answer(AudioBlock::Constant(1, kRate / 2, level), {512});
      EXPECT_NEAR(out[0][kRate / 2 - 1], level * model.GainOf(level), 1e-6) << knee << ", " << level;
    }
  }
}

// After the time that is set, all but 1/e of the way is done.
TEST(EffectFacts, SqueezelReachesItsLevelWithTheAttackAndReleaseTimesThatAreSet) {
  const SqueezelModel model{0.01, 4, 0, 1, 1, 0, true};
  for (const double seconds : {0.001, 0.01, 0.1}) {
    const auto samples = static_cast<int32_t>(std::lround(seconds * kRate));
    SqueezelUnderTest rising(
        {{"attack", seconds}, {"rmslength", 0}, {"ratio", 4}, {"threshold", 0.1}, {"kneesize", 0}});
    const AudioBlock up = rising.Answer(AudioBlock::Constant(1, samples, 0.8), {100});
    EXPECT_NEAR(up[0][samples - 1], 0.8 * model.GainOf(0.8 * (1 - 1 / std::numbers::e)), 1e-6) << seconds;
    SqueezelUnderTest falling({{"attack", 0},
                               {"release", seconds},
                               {"rmslength", 0},
                               {"ratio", 4},
                               {"threshold", 0.1},
                               {"kneesize", 0}});
    falling.Answer(AudioBlock::Constant(1, 10, 0.8));
    const AudioBlock down = falling.Answer(AudioBlock::Constant(1, samples, 0.2), {100});
    EXPECT_NEAR(down[0][samples - 1], 0.2 * model.GainOf(0.2 + 0.6 / std::numbers::e), 1e-6) << seconds;
  }
}

TEST(EffectFacts, ClampetLetsNothingAboveFullScale) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(2, 5000, random, 20);
  for (int32_t mode = 0; mode < 7; ++mode) {
    for (const double threshold : {1e-40, 0.3, 0.8, 1.0}) {
      NamedEffect clampet("Clampet");
      clampet.Set("mode", mode);
      clampet.Set("threshold", threshold);
      clampet.Set("gain", random.Real(-24, 24));
      clampet.Prepare(2, kRate);
      EXPECT_EQ(clampet.Answer(in, {333}).GetPeak(), 1) << mode << ", " << threshold;
    }
  }
}

class EffectOscillator : public testing::TestWithParam<const char*> {};

// All rates are whole numbers of hertz, so that with an input that repeats each second the output does.
TEST_P(EffectOscillator, KeepsItsRateOverTenMinutes) {
  constexpr int32_t kLowRate = 8000;
  TestRandom random;
  const AudioBlock second = AudioBlock::Noise(2, kLowRate, random, 0.5);
  NamedEffect effect(GetParam());
  effect.Prepare(2, kLowRate);
  for (int32_t i = 0; i < 2; ++i) effect.Answer(second, {500});
  const AudioBlock early = effect.Answer(second, {500});
  for (int32_t i = 3; i < 599; ++i) effect.Answer(second, {500});
  EXPECT_LE(effect.Answer(second, {500}).GetDistance(early), 2e-6 * early.GetPeak());
}

INSTANTIATE_TEST_SUITE_P(All, EffectOscillator,
                         testing::Values("Bellwarp", "Pulsetta", "Quaverly", "Roamplex", "Swirlo"),
                         [](const testing::TestParamInfo<const char*>& row) { return row.param; });

struct Change {
  const char* effect;
  const char* key;
  double from, to;
};

void PrintTo(const Change& change, std::ostream* out) {
  *out << change.effect;
}

class EffectRepair : public testing::TestWithParam<Change> {
 protected:
  static constexpr int32_t kBefore = 45000;  // the oscillators are far from zero there
  static constexpr int32_t kAfter = 1000;

  // A slow sine in blocks of 500 samples, then the change, and the rest in blocks of this size.
  static AudioBlock Answer(int32_t size) {
    NamedEffect effect(GetParam().effect);
    effect.Set(GetParam().key, GetParam().from);
    effect.Prepare(1, kRate);
    AudioBlock sine(1, kBefore + kAfter), out = sine;
    sine.Fill([](int32_t i) { return 0.5 * std::sin(2 * std::numbers::pi * 101 * i / kRate); });
    for (int32_t i = 0; i < kBefore; i += 500) effect.Process(sine.From(i), out.From(i), 500);
    effect.Set(GetParam().key, GetParam().to);
    for (int32_t i = kBefore; i < out.GetLength(); i += size)
      effect.Process(sine.From(i), out.From(i), std::min(size, out.GetLength() - i));
    return out;
  }
  static double StepAt(const AudioBlock& out, int32_t i) { return double{out[0][i]} - out[0][i - 1]; }
};

TEST_P(EffectRepair, GoesOnInALineAndTakesTheJumpBackInSmallSteps) {
  const AudioBlock repaired = Answer(kAfter), plain = Answer(31);  // such a block is too short for a repair
  const double jump = double{repaired[0][kBefore]} - plain[0][kBefore];
  ASSERT_GT(std::abs(jump), 0.01) << "there is nothing to repair";
  EXPECT_NEAR(StepAt(repaired, kBefore), StepAt(repaired, kBefore - 1), 1e-6);
  for (int32_t i = kBefore + 1; i < repaired.GetLength(); ++i)
    ASSERT_LE(std::abs(StepAt(repaired, i) - StepAt(plain, i)), std::abs(jump) / 128 + 1e-6) << i - kBefore;
  EXPECT_NEAR(repaired[0][kBefore + 200], plain[0][kBefore + 200], 1e-6);
}

INSTANTIATE_TEST_SUITE_P(All, EffectRepair,
                         testing::Values(Change{"Imprinta", "length", 16, 400},
                                         Change{"Quaverly", "depth", 0.1, 1},
                                         Change{"Swirlo", "delays", 6, 10}),
                         [](const testing::TestParamInfo<Change>& change) { return change.param.effect; });

}  // namespace
