#include <gtest/gtest.h>

#include "plugin/MParameterText.h"
#include "tests/common/Texts.h"
#include "tests/effects/ModulationUnderTest.h"

namespace {

constexpr int32_t kRate = 48000;

class RoamplexUnderTest : public ModulationUnderTest {
 public:
  RoamplexUnderTest() : ModulationUnderTest("Roamplex") {}

  void Set(double shape, double depth, double hertz) {
    SetShape(shape);
    ModulationUnderTest::Set("depth", depth);
    SetRate(hertz);
  }
};

AudioBlock Model(const AudioBlock& in, double shape, double depth, double hertz, double phase = 0) {
  const TestWave wave(shape);
  AudioBlock out = in;
  for (int32_t i = 0; i < in.GetLength(); ++i) {
    const double m = wave.Read(phase) * depth, l = in[0][i] + 1e-25, r = in[1][i] + 1e-25;
    phase += hertz / kRate;
    const double ll = m >= 0 ? 1 - m : 1, rl = m >= 0 ? 0 : -m;
    const double lr = m >= 0 ? m : 0, rr = m >= 0 ? 1 : m + 1;
    out[0][i] = static_cast<float>(l * ll + r * rl);
    out[1][i] = static_cast<float>(l * lr + r * rr);
  }
  return out;
}

void ExpectClose(const AudioBlock& out, const AudioBlock& expected) {
  EXPECT_LE(out.GetDistance(expected), 1e-6 * expected.GetPeak());
}

TEST(Roamplex, MovesEachChannelToTheOtherByTheWave) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(2, 12000, random);
  for (double shape = 0; shape <= 15; shape += 0.75) {
    for (const double depth : {0.0, 0.4, 1.0}) {
      RoamplexUnderTest roamplex;
      roamplex.Set(shape, depth, 7);
      roamplex.Prepare(2, kRate);
      ExpectClose(roamplex.Answer(in, {700, 1, 300}), Model(in, shape, depth, 7));
    }
  }
}

TEST(Roamplex, MovesAWholeChannelAtTheTopsOfTheWave) {
  AudioBlock in(2, 16000);
  std::fill_n(in[0], 16000, 0.5f);
  std::fill_n(in[1], 16000, 0.25f);
  RoamplexUnderTest roamplex;
  roamplex.Set(5, 1, 3);  // a sine, 16000 samples a period
  roamplex.Prepare(2, kRate);
  const AudioBlock out = roamplex.Answer(in);
  const auto expect = [&](int32_t i, double left, double right) {
    EXPECT_NEAR(out[0][i], left, 1e-6) << i;
    EXPECT_NEAR(out[1][i], right, 1e-6) << i;
  };
  expect(0, 0.5, 0.25);
  expect(4000, 0, 0.75);
  expect(8000, 0.5, 0.25);
  expect(12000, 0.75, 0);
}

TEST(Roamplex, KeepsTheSumOfBothChannels) {
  TestRandom random;
  RoamplexUnderTest roamplex;
  roamplex.Set(9.5, 1, 15);
  roamplex.Prepare(2, kRate);
  const AudioBlock in = AudioBlock::Noise(2, 10000, random), out = roamplex.Answer(in, {512});
  EXPECT_GT(out.GetDistance(in), 0.1);
  for (int32_t i = 0; i < 10000; ++i) ASSERT_NEAR(out[0][i] + out[1][i], in[0][i] + in[1][i], 1e-6);
}

TEST(Roamplex, CopiesOneChannelAndRests) {
  TestRandom random;
  RoamplexUnderTest roamplex;
  roamplex.Set(5, 1, 20);
  roamplex.Prepare(1, kRate);
  const AudioBlock mono = AudioBlock::Noise(1, 777, random), stereo = AudioBlock::Noise(2, 777, random);
  EXPECT_TRUE(roamplex.Answer(mono, {64}) == mono);
  roamplex.Prepare(2, kRate);
  ExpectClose(roamplex.Answer(stereo, {64}), Model(stereo, 5, 1, 20));
}

TEST(Roamplex, CopiesChannelsFromTheThirdOn) {
  TestRandom random;
  for (const int32_t channels : {3, 8, 11}) {
    RoamplexUnderTest roamplex;
    roamplex.Set(5, 1, 20);
    roamplex.Prepare(channels, kRate);
    const AudioBlock in = AudioBlock::Noise(channels, 500, random), out = roamplex.Answer(in, {64});
    ExpectClose(out, Model(in, 5, 1, 20));
    for (int32_t c = 2; c < channels; ++c) EXPECT_TRUE(std::equal(in[c], in[c] + 500, out[c]));
  }
}

TEST(Roamplex, ThePhaseSurvivesPreparingAndOtherValues) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(2, 1000, random);
  RoamplexUnderTest roamplex;
  roamplex.Set(5, 1, 3);
  roamplex.Prepare(2, kRate);
  roamplex.Answer(in, {64});
  roamplex.Set(2, 0.5, 5);
  roamplex.Prepare(2, kRate);
  ExpectClose(roamplex.Answer(in, {64}), Model(in, 2, 0.5, 5, 1000 * 3.0 / kRate));
}

TEST(Roamplex, SkippingMovesThePhaseLikeZeros) {
  TestRandom random;
  const AudioBlock later = AudioBlock::Noise(2, 2000, random);
  for (const int32_t samples : {0, 1, 511, 100000}) {
    RoamplexUnderTest skipped, fed;
    for (RoamplexUnderTest* roamplex : {&skipped, &fed}) {
      roamplex->Set(11, 1, 3.3);
      roamplex->Prepare(2, kRate);
    }
    skipped.Skip(samples);
    fed.AnswerToSilence(2, samples);
    ExpectClose(skipped.Answer(later, {512}), fed.Answer(later, {512}));
  }
}

TEST(Roamplex, SkippingABillionSamplesKeepsThePhase) {
  TestRandom random;
  const AudioBlock later = AudioBlock::Noise(2, 2000, random);
  RoamplexUnderTest roamplex;
  roamplex.Set(1, 1, 3);
  roamplex.Prepare(1, kRate);  // skipping counts for any number of channels
  roamplex.Skip(1000000000 - 12000);
  roamplex.Prepare(2, kRate);
  ExpectClose(roamplex.Answer(later, {512}), Model(later, 1, 1, 3, 0.25));
}

TEST(Roamplex, ShowsPercentAndHertz) {
  RoamplexUnderTest roamplex;
  ASSERT_EQ(roamplex.GetRowCount(), 3);
  EXPECT_EQ(roamplex.GetBlock().pluginFlag, 1);
  EXPECT_EQ(Utf8(MParameterText(roamplex.GetRow(0), 0.5)), "50.00%");
  EXPECT_EQ(Utf8(MParameterText(roamplex.GetRow(1), std::log10(20))), "20.0Hz");
  EXPECT_EQ(Utf8(MParameterText(roamplex.GetRow(2), 5)), "5.0000");
}

}  // namespace
