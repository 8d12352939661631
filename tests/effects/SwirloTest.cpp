// What Swirlo does to a signal while nothing but its wave moves.

#include "plugin/MParameterText.h"
#include "tests/common/Texts.h"
#include "tests/effects/SwirloUnderTest.h"

namespace {

constexpr int32_t kRate = SwirloUnderTest::kRate;

TEST(Swirlo, SweepsAChainOfAllPassStages) {
  TestRandom random;
  for (int32_t stages = 1; stages <= 10; ++stages) {
    for (const double feedback : {0.0, 0.7, 0.95}) {
      for (const double difference : {0.0, 0.5, -0.25, 1.0}) {
        const SwirloSetting at = {random.Real(0, 1),
                                  random.Real(100, 10000),
                                  random.Real(100, 10000),
                                  random.Real(0.1, 10),
                                  feedback,
                                  stages,
                                  difference};
        const int32_t channels = random.Integer(1, 5);
        SwirloUnderTest swirlo;
        swirlo.Start(at, channels);
        const AudioBlock in = AudioBlock::Noise(channels, 3000, random);
        ExpectClose(swirlo.Answer(in, {1, 2, 3, 700, 256, 32}), SwirloModel(at).Answer(in));
      }
    }
  }
}

TEST(Swirlo, EveryShapeMovesTheSweep) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(2, 12000, random);
  for (double shape = 0; shape <= 15; shape += 0.75) {
    const SwirloSetting at = {0.5, 200, 8000, 10, 0.6, 4, 0.25, shape};
    SwirloUnderTest swirlo;
    swirlo.Start(at, 2);
    const AudioBlock expected = SwirloModel(at).Answer(in);
    EXPECT_LE(swirlo.Answer(in, {512}).GetDistance(expected), 2e-6 * expected.GetPeak()) << shape;
  }
}

TEST(Swirlo, BlocksOfAnySizeGiveTheSameAudioWithoutARepair) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(3, 4000, random);
  const SwirloSetting at = {0.5, 100, 10000, 7, 0.9, 7, 0.3};
  const AudioBlock expected = SwirloModel(at).Answer(in);
  for (const int32_t size : {1, 2, 3, 31, 32, 255, 256, 257, 441, 512, 4000}) {
    SwirloUnderTest swirlo;
    swirlo.Start(at, 3);
    ExpectClose(swirlo.Answer(in, {size}), expected);
  }
}

TEST(Swirlo, MovesAllChannelsAlikeWithoutAPhaseDifference) {
  TestRandom random;
  const AudioBlock one = AudioBlock::Noise(1, 5000, random);
  for (const double difference : {0.0, 1.0, -1.0}) {
    SwirloUnderTest swirlo;
    swirlo.Start({0.5, 400, 1600, 5, 0.7, 6, difference}, 8);
    const AudioBlock out =
        swirlo.Answer(AudioBlock(8, 5000).Fill([&](int32_t i) { return one[0][i]; }), {441});
    for (int32_t c = 1; c < 8; ++c) EXPECT_TRUE(std::equal(out[0], out[0] + 5000, out[c])) << c;
  }
}

// The first half of a sine turned over is its second half.
TEST(Swirlo, SweepsInReverseFromAMinimumAboveTheMaximum) {
  TestRandom random;
  const AudioBlock one = AudioBlock::Noise(1, 30000, random);
  const AudioBlock in = AudioBlock(2, 30000).Fill([&](int32_t i) { return one[0][i]; });
  SwirloUnderTest upwards, downwards;
  upwards.Start({0.5, 300, 3000, 2, 0.7, 6, 0.5}, 2);
  downwards.Start({0.5, 3000, 300, 2, 0.7, 6, 0.5}, 2);
  const AudioBlock up = upwards.Answer(in, {512});
  AudioBlock down = downwards.Answer(in, {512});
  EXPECT_GT(down.GetDistance(up), 0.1);
  std::swap_ranges(down[0], down[0] + 30000, down[1]);
  ExpectClose(down, up);
}

// A chain of n stages turns the phase by half a turn and whole turns more where each stage turns it by
// (2 k + 1) / n of half a turn, which is where tan(w / 2) = d tan(that / 2).
TEST(Swirlo, CutsANotchForEachTwoStages) {
  const double pi = std::numbers::pi, hertz = 1000, d = 2 * hertz / kRate;
  for (const int32_t stages : {2, 3, 4, 6, 10}) {
    for (int32_t k = 0; k < stages / 2; ++k) {
      const double w = 2 * std::atan(d * std::tan((2 * k + 1) * pi / stages / 2));
      SwirloUnderTest swirlo;
      swirlo.Start({0.5, hertz, hertz, 2, 0, stages}, 1);
      AudioBlock in(1, kRate);
      in.Fill([&](int32_t i) { return std::sin(w * i); });
      const AudioBlock out = swirlo.Answer(in, {512});
      for (int32_t i = kRate / 2; i < kRate; ++i) ASSERT_NEAR(out[0][i], 0, 1e-5) << stages << ", " << k;
    }
  }
}

TEST(Swirlo, RaisesAConstantByTheFeedback) {
  for (const double feedback : {0.0, 0.5, 0.7, 0.9}) {
    SwirloUnderTest swirlo;
    swirlo.Start({0.4, 1000, 1000, 2, feedback, 6}, 2);
    const AudioBlock out = swirlo.Answer(AudioBlock::Constant(2, kRate, 0.1), {512});
    EXPECT_NEAR(out[1][kRate - 1], 0.1 * (0.6 + 0.4 / (1 - feedback * feedback)), 1e-6) << feedback;
  }
}

TEST(Swirlo, ReturnsTheInputAtDepthZero) {
  TestRandom random;
  const AudioBlock noise = AudioBlock::Noise(2, 3000, random), silence(2, 3000);
  SwirloUnderTest swirlo;
  swirlo.Start({0, 100, 10000, 10, 0.9, 10}, 2);
  EXPECT_TRUE(swirlo.Answer(noise, {512}) == noise);
  EXPECT_LE(swirlo.Answer(silence, {512}).GetPeak(), 2e-25) << "but the bias";
}

TEST(Swirlo, KeepsItsRateOverMinutes) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(2, 3000, random);
  const SwirloSetting at = {0.5, 100, 10000, 3.7, 0.8, 6, 0.5, 3};
  SwirloUnderTest swirlo;
  swirlo.Start(at, 2, 8000);
  swirlo.AnswerToSilence(2, 300 * 8000);  // 1110 periods
  ExpectClose(swirlo.Answer(in, {441}), SwirloModel(at, 8000).Answer(in));
}

TEST(Swirlo, PassesChannelsFromTheNinthOn) {
  TestRandom random;
  SwirloUnderTest swirlo;
  swirlo.Start({}, 10);
  const AudioBlock in = AudioBlock::Noise(10, 500, random), out = swirlo.Answer(in, {64});
  for (int32_t c = 0; c < 10; ++c)
    EXPECT_EQ(std::equal(in[c], in[c] + 500, out[c]), c >= 8) << "channel " << c;
}

TEST(Swirlo, ShowsItsRowsInTheirUnits) {
  SwirloUnderTest swirlo;
  ASSERT_EQ(swirlo.GetRowCount(), 8);
  EXPECT_EQ(swirlo.GetBlock().pluginFlag, 1);
  const auto show = [&](int32_t row, double value) {
    return Utf8(MParameterText(swirlo.GetRow(row), value));
  };
  EXPECT_EQ(show(0, 0.4), "40.00%");
  EXPECT_EQ(show(1, 2), "100Hz");
  EXPECT_EQ(show(2, 4), "10.0kHz");
  EXPECT_EQ(show(3, std::log10(2)), "2.00Hz");
  EXPECT_EQ(show(4, 0.7), "-6.2 dB");
  EXPECT_EQ(show(4, 0), "silence");
  EXPECT_EQ(show(5, 6), "6");
  EXPECT_EQ(show(6, -0.25), "-25.00%");
}

}  // namespace
