// Squeezel's curve and detectors.

#include <gtest/gtest.h>

#include "plugin/MParameterText.h"
#include "tests/common/Texts.h"
#include "tests/effects/SqueezelUnderTest.h"

namespace {

AudioBlock Levels() {
  return AudioBlock(1, 1501).Fill([](int32_t i) { return (i % 2 ? -1 : 1) * (i + 1) * 0.001; });
}

TEST(Squeezel, FollowsTheFormulaOfEveryKnee) {
  const AudioBlock in = Levels();
  for (const double ratio : {1.2, 1.8, 4.0, 20.0})
    for (const double threshold : {0.1, 0.5, 1.0})
      for (const double size : {0.0, 0.25, 1.0})
        for (int32_t mode = 0; mode < 6; ++mode) {
          const int32_t knee = mode / 2, maximizes = mode % 2;
          SqueezelUnderTest squeezel(SqueezelUnderTest::Instant({{"ratio", ratio},
                                                                 {"threshold", threshold},
                                                                 {"kneesize", size},
                                                                 {"kneemode", knee},
                                                                 {"maximize", maximizes},
                                                                 {"gain", 2},
                                                                 {"outputgain", -3}}));
          const SqueezelModel model{threshold * threshold, ratio, size,          std::pow(10, 0.1),
                                    std::pow(10, -0.15),   knee,  maximizes != 0};
          const AudioBlock out = squeezel.Answer(in, {64, 7, 100});
          for (int32_t i = 0; i < in.GetLength(); ++i) {
            const double level = std::abs(double{in[0][i]}) * model.inputGain;
            // Rounding decides between the two branches at the ends of a linear knee.
            if (std::min(std::abs(level - model.Start()), std::abs(level - model.End())) < 1e-9) continue;
            ASSERT_NEAR(out[0][i], in[0][i] * model.GainOf(level), 3e-7 * std::abs(out[0][i]))
                << ratio << ", " << threshold << ", " << size << ", mode " << mode << ", level " << level;
          }
        }
}

TEST(Squeezel, TheCurveOfTheEditorIsTheOneThatIsHeard) {
  const AudioBlock in = Levels();
  for (int32_t knee = 0; knee < 3; ++knee) {
    SqueezelUnderTest squeezel(SqueezelUnderTest::Instant({{"kneemode", knee}, {"ratio", 4}}));
    const AudioBlock out = squeezel.Answer(in);
    for (int32_t i = 0; i < in.GetLength(); ++i) {
      const double level = std::abs(in[0][i]);
      ASSERT_NEAR(std::abs(out[0][i]), squeezel.GetPlugin().GetOutput(level), 1e-6) << knee << ", " << level;
    }
  }
}

TEST(Squeezel, TheSoftKneeTouchesBothLines) {
  const SqueezelModel model{0.25, 4, 0.25, 1, 1, 2, true};
  SqueezelUnderTest squeezel({{"kneemode", 2}, {"ratio", 4}});
  const auto output = [&](double x) { return squeezel.GetPlugin().GetOutput(x); };
  const double a = model.Start(), b = model.End(), h = 1e-6;
  EXPECT_NEAR((output(a + h) - output(a)) / h, model.MakeUp(), 1e-4);
  EXPECT_NEAR((output(b) - output(b - h)) / h, model.MakeUp() * model.Slope(), 1e-4);
  EXPECT_NEAR(output(b - 1e-12), output(b), 1e-10);
}

TEST(Squeezel, TheLinearKneeHasNoOutputGain) {
  const SqueezelModel model{0.25, 1.8, 0.25, 1, 2, 1, true};
  SqueezelUnderTest squeezel(
      SqueezelUnderTest::Instant({{"kneemode", 1}, {"outputgain", 20 * std::log10(2)}}));
  const auto gainAt = [&](double x) { return squeezel.Answer(AudioBlock::Constant(1, 1, x))[0][0] / x; };
  EXPECT_NEAR(gainAt(model.Start() - 1e-5) / gainAt(model.Start() + 1e-5), 2, 1e-3);
  EXPECT_NEAR(gainAt(model.End() + 1e-5) / gainAt(model.End() - 1e-5), 2, 1e-3);
}

TEST(Squeezel, ARatioOfOneOnlyScales) {
  TestRandom random;
  SqueezelUnderTest squeezel({{"ratio", 1}, {"gain", 6}, {"outputgain", -2}, {"threshold", 0.1}}, 2);
  const AudioBlock in = AudioBlock::Noise(2, 500, random, 1);
  const AudioBlock out = squeezel.Answer(in);
  for (int32_t c = 0; c < 2; ++c)
    for (int32_t i = 0; i < 500; ++i) ASSERT_NEAR(out[c][i], in[c][i] * std::pow(10, 0.2), 1e-6);
}

TEST(Squeezel, AThresholdOfOneDoesNotReduce) {
  for (int32_t knee = 0; knee < 3; ++knee) {
    const AudioBlock in = Levels();
    SqueezelUnderTest squeezel(
        SqueezelUnderTest::Instant({{"threshold", 1}, {"ratio", 20}, {"kneemode", knee}}));
    EXPECT_LE(squeezel.Answer(in).GetDistance(in), 2e-7) << knee;
  }
}

TEST(Squeezel, FullScaleComesOutAtFullScaleWhenMaximized) {
  for (int32_t knee = 0; knee < 3; ++knee) {
    SqueezelUnderTest squeezel({{"threshold", 0.3}, {"ratio", 4}, {"kneemode", knee}});
    EXPECT_NEAR(squeezel.Answer(AudioBlock::Constant(1, 48000, 1))[0][47999], 1, 1e-6) << knee;
  }
}

TEST(Squeezel, FollowsADrawnCurve) {
  MEnvelopeData curve;
  curve.Add(0, 0.1).tension = 0.4;
  curve.Add(0.3, 0.6).type = MEnvelopeType::kMode1;
  curve.Add(0.7, 0.2).type = MEnvelopeType::kMode3;
  curve.Add(1, 0.9);
  MEnvelopeComputer computer;
  computer.Build(curve);
  SqueezelUnderTest squeezel(
      SqueezelUnderTest::Instant({{"customshape", 1}, {"gain", 2}, {"outputgain", -3}}));
  squeezel.GetPlugin().SetCurve(curve);
  const AudioBlock in = Levels();
  const AudioBlock out = squeezel.Answer(in);
  for (int32_t i = 0; i < in.GetLength(); ++i) {
    const double level = std::abs(double{in[0][i]}) * std::pow(10, 0.1), u = std::sqrt(level);
    computer.Seek(u);
    const double v = computer.GetValue(u);
    const double expected = v * v / level * std::pow(10, -0.05) * std::abs(in[0][i]);
    ASSERT_NEAR(std::abs(out[0][i]), expected, 1e-6) << i;
  }
}

TEST(Squeezel, ANewDrawnCurveIsUnity) {
  const AudioBlock in = Levels();
  SqueezelUnderTest squeezel(SqueezelUnderTest::Instant({{"customshape", 1}}));
  const AudioBlock out = squeezel.Answer(in);
  for (int32_t i = 0; i < 1000; ++i) ASSERT_NEAR(out[0][i], in[0][i], 1e-7);
}

TEST(Squeezel, TheDetectorFollowsTheFormulaAtAnyTimes) {
  TestRandom random;
  for (const double attack : {0.0, 0.01, 1.0})
    for (const double release : {0.0, 0.05, 1.0})
      for (const double rms : {0.0, 0.001, 0.1}) {
        SqueezelUnderTest squeezel(
            {{"attack", attack}, {"release", release}, {"rmslength", rms}, {"ratio", 4}, {"gain", 3}});
        SqueezelDetectorModel detector(48000, attack, release, rms);
        const SqueezelModel model{0.25, 4, 0.25, std::pow(10, 0.15)};
        const AudioBlock in =
            AudioBlock(1, 3000).Fill([&](int32_t i) { return random.Real(-1, 1) * (i / 700 % 2 ? 0.1 : 1); });
        const AudioBlock out = squeezel.Answer(in, {333, 64, 65});
        for (int32_t i = 0; i < 3000; ++i) {
          const double x = in[0][i] * model.inputGain;
          const double gain = model.GainOf(detector.Step(x * x));
          ASSERT_NEAR(out[0][i], in[0][i] * gain, 1e-6)
              << attack << ", " << release << ", " << rms << ", " << i;
        }
      }
}

TEST(Squeezel, LinkedChannelsShareTheMeanOfTheirPowersAndOthersHaveTheirOwn) {
  TestRandom random;
  for (const int32_t channels : {1, 2, 3, 8})
    for (const bool isLinked : {true, false}) {
      SqueezelUnderTest squeezel({{"linkchannels", isLinked}, {"ratio", 4}}, channels);
      std::vector<SqueezelDetectorModel> detectors(8, {48000, 0.01, 0.05, 0.001});
      const SqueezelModel model{0.25, 4};
      AudioBlock in = AudioBlock::Noise(channels, 2000, random);
      for (int32_t i = 0; i < 2000; ++i) in[0][i] *= 0.2f;
      const AudioBlock out = squeezel.Answer(in);
      for (int32_t i = 0; i < 2000; ++i) {
        double sum = 0;
        for (int32_t c = 0; c < channels; ++c) sum += double{in[c][i]} * in[c][i];
        const double shared = isLinked ? model.GainOf(detectors[0].Step(sum / channels)) : 0;
        for (int32_t c = 0; c < channels; ++c) {
          const double own = double{in[c][i]} * in[c][i];
          const double gain =
              isLinked ? shared : model.GainOf(detectors[static_cast<std::size_t>(c)].Step(own));
          ASSERT_NEAR(out[c][i], in[c][i] * gain, 1e-6) << channels << ", " << isLinked;
        }
      }
    }
}

TEST(Squeezel, PassesChannelsBehindTheEighth) {
  TestRandom random;
  SqueezelUnderTest squeezel({{"gain", 12}}, 10);
  const AudioBlock in = AudioBlock::Noise(10, 100, random);
  const AudioBlock out = squeezel.Answer(in);
  EXPECT_EQ(std::memcmp(in[8], out[8], 400) | std::memcmp(in[9], out[9], 400), 0);
  EXPECT_NE(std::memcmp(in[7], out[7], 400), 0);
}

TEST(Squeezel, TakesWhatIsNotFiniteAsZero) {
  TestRandom random;
  SqueezelUnderTest squeezel, clean;
  AudioBlock in = AudioBlock::Noise(1, 300, random), zeroed = in;
  in[0][20] = NAN;
  in[0][101] = INFINITY;
  in[0][299] = -INFINITY;
  for (const int32_t i : {20, 101, 299}) zeroed[0][i] = 0;
  EXPECT_TRUE(squeezel.Answer(in) == clean.Answer(zeroed));
}

TEST(Squeezel, CopiesUntilItHasASampleRate) {
  TestRandom random;
  SqueezelUnderTest squeezel({}, 2, 0);
  const AudioBlock in = AudioBlock::Noise(2, 100, random);
  squeezel.Skip(10);
  EXPECT_TRUE(squeezel.Answer(in) == in);
}

TEST(Squeezel, ShowsItsValuesWithUnits) {
  SqueezelUnderTest squeezel;
  const auto text = [&](int32_t row, double value) {
    return Utf8(MParameterText(squeezel.GetRow(row), value));
  };
  EXPECT_EQ(text(0, -3), "-3.00 dB");
  EXPECT_EQ(text(2, 0.01), "10.0 ms");
  EXPECT_EQ(text(4, 1e-5), "Peak");
  EXPECT_EQ(text(4, 0.001), "1.0 ms");
  EXPECT_EQ(text(6, 1.8), "1.80 : 1");
  EXPECT_EQ(text(7, 2), "Soft");
  EXPECT_EQ(text(8, 0.25), "25.00%");
  EXPECT_EQ(ParseParameterText(squeezel.GetRow(6), "4.00 : 1"), 4);
}

}  // namespace
