#include "effects/Clampet.h"

#include <gtest/gtest.h>

#include <functional>

#include "plugin/MParameterText.h"
#include "tests/common/Texts.h"
#include "tests/effects/NamedEffect.h"

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int32_t kModes = 7;
const std::vector<double> kThresholds = {0, 0.3, 0.8, 1};  // square roots

class ClampetUnderTest : public NamedEffect {
 public:
  explicit ClampetUnderTest(int32_t mode = 0, double threshold = 0.8, double gainDecibels = 0,
                            double harmonics = 0, int32_t channels = 1)
      : NamedEffect("Clampet") {
    Set("mode", mode);
    Set("threshold", threshold);
    Set("gain", gainDecibels);
    Set("evenharmonics", harmonics);
    Prepare(channels, 48000);
  }
  double AnswerTo(double x) { return Answer(AudioBlock::Constant(1, 1, x))[0][0]; }
};

// The knee of each mode, of an excess x above T.
double Knee(int32_t mode, double x, double T) {
  const double k = T == 1 ? 1 : 1 / (1 - T);
  const double A = 1 - T;
  const double u = (mode == 1 ? k * 1.1941918983186133 : 3 * k) * x;
  switch (mode) {
    case 0:
      return std::sin(k * kPi / 2 * x) * A * 2 / kPi;
    case 1:
      return (u + (u + 1) * u * u * (-0.15)) * (1 - T) * 0.837386354243376;
    case 2:
      return (1 - std::pow(k * x - 1, 2)) * A * 0.5;
    case 3:
      return x / (std::pow(k * x, 2) + 1);
    case 4:
      return std::tanh(k * kPi * x) * A / kPi;
    case 5:
      return (u * u + 27) * u / (9 * u * u + 27) * A / 3;
    default:
      return std::atan(k * 2 * kPi * x) * A / (2 * kPi);
  }
}

double Expected(int32_t mode, double x, double T) {
  const double a = std::abs(x);
  const double N = 1 / (Knee(mode, 1 - T, T) + T);
  const double y = a < T ? a * N : a >= 1 ? 1 : (Knee(mode, a - T, T) + T) * N;
  return x < 0 ? -y : y;
}

AudioBlock Ramp(int32_t samples, double from, double to) {
  return AudioBlock(1, samples).Fill([&](int32_t i) { return from + (to - from) * i / (samples - 1); });
}

TEST(Clampet, FollowsTheCurveOfEachMode) {
  const AudioBlock in = Ramp(2001, -2, 2);
  for (int32_t mode = 0; mode < kModes; ++mode) {
    for (const double threshold : kThresholds) {
      for (const double decibels : {-12, 0, 12}) {
        ClampetUnderTest clampet(mode, threshold, decibels);
        const AudioBlock out = clampet.Answer(in);
        const double gain = std::pow(10, decibels * 0.05);
        for (int32_t i = 0; i < in.GetLength(); ++i)
          ASSERT_NEAR(out[0][i], Expected(mode, in[0][i] * gain, threshold * threshold), 1e-7)
              << "mode " << mode << " threshold " << threshold << " gain " << decibels << " at " << in[0][i];
      }
    }
  }
}

TEST(Clampet, HasNoStepAtTheThresholdAndReachesFullScaleThere) {
  for (int32_t mode = 0; mode < kModes; ++mode) {
    for (const double threshold : kThresholds) {
      ClampetUnderTest clampet(mode, threshold);
      const double T = threshold * threshold;
      EXPECT_NEAR(clampet.AnswerTo(T - 1e-6), clampet.AnswerTo(T + 1e-6), 2e-5) << mode << ", " << threshold;
      EXPECT_NEAR(clampet.AnswerTo(1 - 1e-7), 1, 1e-6) << mode << ", " << threshold;
      for (const double x : {1.0, 1.5, 1e30}) {
        EXPECT_EQ(clampet.AnswerTo(x), 1) << mode << ", " << threshold;
        EXPECT_EQ(clampet.AnswerTo(-x), -1) << mode << ", " << threshold;
      }
      EXPECT_EQ(clampet.AnswerTo(0), 0) << mode << ", " << threshold;
    }
  }
}

TEST(Clampet, OnlyLimitsWithAThresholdOfOne) {
  const AudioBlock in = Ramp(401, -2, 2);
  for (int32_t mode = 0; mode < kModes; ++mode) {
    ClampetUnderTest clampet(mode, 1);
    const AudioBlock out = clampet.Answer(in);
    for (int32_t i = 0; i < in.GetLength(); ++i)
      ASSERT_EQ(out[0][i], std::clamp(in[0][i], -1.0f, 1.0f)) << mode;
  }
}

TEST(Clampet, IsAllKneeWithTheSmallestThreshold) {
  for (int32_t mode = 0; mode < kModes; ++mode) {
    ClampetUnderTest smallest(mode, 1e-40), zero(mode, 0);
    for (const double x : {-1e-3, 1e-6, 0.2, 0.9}) {
      const double expected = Expected(mode, static_cast<float>(x), 0);
      EXPECT_NEAR(smallest.AnswerTo(x), expected, 1e-7 * std::abs(expected)) << mode;
      EXPECT_EQ(smallest.AnswerTo(x), zero.AnswerTo(x)) << mode;
    }
  }
}

TEST(Clampet, AddsEvenHarmonicsAboveAHundredThousandth) {
  for (int32_t mode = 0; mode < kModes; ++mode) {
    ClampetUnderTest none(mode), least(mode, 0.8, 0, 1e-5), some(mode, 0.8, 0, 1.1e-5),
        half(mode, 0.8, 0, 0.5);
    for (const double x : {-3.0, -1.5, -0.9, -0.3, 0.3, 0.9}) {
      const double y = Expected(mode, static_cast<float>(x), 0.64);
      const double squared = std::pow(y - static_cast<float>(x), 2);
      EXPECT_EQ(least.AnswerTo(x), none.AnswerTo(x)) << mode;
      EXPECT_NEAR(some.AnswerTo(x), y + squared * 1.1e-5, 1.2e-7) << mode;
      EXPECT_NEAR(half.AnswerTo(x), std::min(1.0, y + squared * 0.5), 1.2e-7) << mode;
    }
  }
}

TEST(Clampet, LimitsEvenHarmonicsToFullScaleAboveAndNotBelow) {
  ClampetUnderTest clampet(0, 0.8, 24, 1);
  EXPECT_EQ(clampet.AnswerTo(1), 1);
  EXPECT_EQ(clampet.AnswerTo(-1), 1);  // the square lifts it over the top
  EXPECT_EQ(clampet.AnswerTo(1e30), 1);
  ClampetUnderTest gentle(0, 0.8, 0, 1e-4);
  EXPECT_NEAR(gentle.AnswerTo(-2), -1 + 1e-4, 1e-7);
}

TEST(Clampet, PutsOutTheSameForASampleWhereverItStands) {
  TestRandom random;
  for (int32_t mode = 0; mode < kModes; ++mode) {
    for (const double harmonics : {0.0, 0.7}) {
      ClampetUnderTest clampet(mode, 0.6, 0, harmonics);
      AudioBlock in = AudioBlock::Noise(1, 200, random, 1.3);
      const AudioBlock out = clampet.Answer(in);
      for (int32_t i = 0; i < 200; ++i)
        ASSERT_EQ(clampet.AnswerTo(in[0][i]), out[0][i]) << mode << ", " << in[0][i];
    }
  }
}

TEST(Clampet, PassesWhatIsNoNumberAndLimitsInfinity) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  for (int32_t mode = 0; mode < kModes; ++mode) {
    for (const double harmonics : {0.0, 0.5}) {
      ClampetUnderTest clampet(mode, 0.8, 0, harmonics);
      AudioBlock in = Ramp(40, -2, 2);
      const AudioBlock expected = clampet.Answer(in);
      in[0][5] = in[0][17] = std::numeric_limits<float>::quiet_NaN();
      in[0][30] = kInfinity;
      in[0][31] = -kInfinity;
      const AudioBlock out = clampet.Answer(in);
      for (int32_t i = 0; i < 30; ++i)
        if (i == 5 || i == 17)
          EXPECT_TRUE(std::isnan(out[0][i])) << mode;
        else
          EXPECT_EQ(out[0][i], expected[0][i]) << mode;
      EXPECT_EQ(out[0][30], 1) << mode;
      EXPECT_EQ(out[0][31], harmonics > 0 ? 1 : -1) << mode;
    }
  }
}

TEST(Clampet, ServesAllChannels) {
  ClampetUnderTest clampet(0, 0.3, 0, 0, 11);
  const AudioBlock out = clampet.Answer(AudioBlock::Constant(11, 50, 0.5));
  for (int32_t c = 0; c < 11; ++c) EXPECT_NEAR(out[c][49], Expected(0, 0.5, 0.09), 1e-7) << c;
}

TEST(Clampet, CopiesTheInputUntilItHasASampleRateAndKeepsItsCurveWithoutOne) {
  NamedEffect clampet("Clampet");
  clampet.Prepare(1, 0);
  const AudioBlock in = Ramp(100, -2, 2);
  EXPECT_TRUE(clampet.Answer(in) == in);
  clampet.Prepare(1, 48000);
  const AudioBlock limited = clampet.Answer(in);
  EXPECT_EQ(limited[0][99], 1);
  clampet.Prepare(1, 0);
  clampet.Set("threshold", 0.1);
  EXPECT_TRUE(clampet.Answer(in) == limited);
}

TEST(Clampet, LimitsRawValues) {
  const AudioBlock in = Ramp(100, -2, 2);
  const auto answer = [&](double mode, double threshold, double gain) {
    return ClampetUnderTest(static_cast<int32_t>(mode), threshold, gain).Answer(in);
  };
  EXPECT_TRUE(answer(0, -5, 0) == answer(0, 0, 0));
  EXPECT_TRUE(answer(0, 7, 0) == answer(0, 1, 0));
  EXPECT_TRUE(answer(0, NAN, 0) == answer(0, 0.8, 0));
  EXPECT_TRUE(answer(-3, 0.8, 0) == answer(0, 0.8, 0));
  EXPECT_TRUE(answer(99, 0.8, 0) == answer(6, 0.8, 0));
  EXPECT_TRUE(answer(0, 0.8, 1e9) == answer(0, 0.8, 200));
  EXPECT_TRUE(answer(0, 0.8, NAN) == answer(0, 0.8, 0));
}

TEST(Clampet, HasItsTextsAndTheFlagForHosts) {
  ClampetUnderTest clampet;
  const auto show = [&](int32_t row, double value) {
    return Utf8(MParameterText(clampet.GetRow(row), value));
  };
  EXPECT_EQ(show(0, -24), "-24.0000dB");
  EXPECT_EQ(show(0, 0), "0.0000dB");
  EXPECT_EQ(show(1, 0.8), "-3.9 dB");
  EXPECT_EQ(show(1, 1e-40), "silence");
  EXPECT_EQ(show(2, 0.125), "12.50%");
  EXPECT_EQ(show(3, 0), "Soft 1");
  EXPECT_EQ(show(3, 6), "Clip 3");
  EXPECT_EQ(clampet.GetBlock().pluginFlag, 1);
  EXPECT_EQ(clampet.GetBlock().editorCount, 0);
}

}  // namespace
