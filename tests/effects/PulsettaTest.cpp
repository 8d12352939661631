#include <gtest/gtest.h>

#include "plugin/MParameterText.h"
#include "tests/common/Texts.h"
#include "tests/effects/ModulationUnderTest.h"

namespace {

constexpr int32_t kRate = 48000;

class PulsettaUnderTest : public ModulationUnderTest {
 public:
  PulsettaUnderTest() : ModulationUnderTest("Pulsetta") {}
};

struct Setting {
  double shape = 5, depth = 0.4, hertz = 4, difference = 0;

  void Apply(PulsettaUnderTest& pulsetta) const {
    pulsetta.SetShape(shape);
    pulsetta.Set("depth", depth);
    pulsetta.SetRate(hertz);
    pulsetta.Set("phasediff", difference);
  }
};

// The formula, from a phase of the first channel on; all later channels follow it.
AudioBlock Model(const AudioBlock& in, const Setting& at, double phase = 0) {
  const TestWave wave(at.shape);
  AudioBlock out(in.GetChannelCount(), in.GetLength());
  for (int32_t c = 0; c < in.GetChannelCount(); ++c) {
    double own = phase;
    for (int32_t i = 0; i < in.GetLength(); ++i) {
      out[c][i] = static_cast<float>((1 - wave.Read(own) * at.depth) * in[c][i]);
      own += at.hertz / kRate;
    }
    phase += at.difference;
    if (phase < 0) phase += 1;
  }
  return out;
}

void ExpectClose(const AudioBlock& out, const AudioBlock& expected) {
  EXPECT_LE(out.GetDistance(expected), 1e-6 * expected.GetPeak());
}

TEST(Pulsetta, MultipliesByOneLessTheWave) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(2, 12000, random);
  for (double shape = 0; shape <= 15; shape += 0.75) {
    for (const double depth : {0.4, 1.0}) {
      const Setting at = {shape, depth, 7, 0.25};
      PulsettaUnderTest pulsetta;
      at.Apply(pulsetta);
      pulsetta.Prepare(2, kRate);
      ExpectClose(pulsetta.Answer(in, {700, 1, 300}), Model(in, at));
    }
  }
}

TEST(Pulsetta, EachChannelIsAheadOfTheOneBefore) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(4, 5000, random);
  for (const double difference : {-1.0, -0.25, 0.0, 0.5, 1.0}) {
    const Setting at = {4.25, 0.7, 20, difference};
    PulsettaUnderTest pulsetta;
    at.Apply(pulsetta);
    pulsetta.Prepare(4, kRate);
    ExpectClose(pulsetta.Answer(in, {512}), Model(in, at));
  }
}

TEST(Pulsetta, AnotherDifferenceStartsFromTheFirstChannel) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(3, 1000, random);
  PulsettaUnderTest pulsetta;
  Setting at = {5, 0.7, 3, 0.5};
  at.Apply(pulsetta);
  pulsetta.Prepare(3, kRate);
  pulsetta.Answer(in, {64});
  at.difference = -0.125;
  at.Apply(pulsetta);
  pulsetta.Prepare(3, kRate);
  ExpectClose(pulsetta.Answer(in, {64}), Model(in, at, 1000 * 3.0 / kRate));
}

TEST(Pulsetta, ReturnsTheInputAtDepthZeroWhateverTheShape) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(2, 3000, random);
  for (int32_t shape = 0; shape <= 15; ++shape) {
    PulsettaUnderTest pulsetta;
    Setting{shape + 0.0, 0, 20, 0.3}.Apply(pulsetta);
    pulsetta.Prepare(2, kRate);
    EXPECT_TRUE(pulsetta.Answer(in, {512}) == in) << shape;
  }
}

TEST(Pulsetta, SwingsFromOneLessTheDepthToOneAndTheDepth) {
  for (const double depth : {0.1, 0.4, 1.0}) {
    PulsettaUnderTest pulsetta;
    pulsetta.Set("depth", depth);
    pulsetta.Prepare(1, kRate);
    const AudioBlock out = pulsetta.Answer(AudioBlock::Constant(1, kRate, 0.5), {512});
    const auto [least, most] = std::minmax_element(out[0], out[0] + kRate);
    EXPECT_NEAR(*least, 0.5 * (1 - depth), 1e-6);
    EXPECT_NEAR(*most, 0.5 * (1 + depth), 1e-6);
    EXPECT_NEAR(out[0][kRate / 16], 0.5 * (1 - depth), 1e-6) << "a quarter of the first period";
  }
}

TEST(Pulsetta, SkippingMovesThePhasesLikeZeros) {
  TestRandom random;
  const AudioBlock later = AudioBlock::Noise(3, 2000, random);
  for (const int32_t samples : {0, 1, 511, 100000}) {
    PulsettaUnderTest skipped, fed;
    for (PulsettaUnderTest* pulsetta : {&skipped, &fed}) {
      Setting{11, 1, 3.3, 0.3}.Apply(*pulsetta);
      pulsetta->Prepare(3, kRate);
    }
    skipped.Skip(samples);
    fed.AnswerToSilence(3, samples);
    ExpectClose(skipped.Answer(later, {512}), fed.Answer(later, {512}));
  }
}

TEST(Pulsetta, SkippingABillionSamplesKeepsThePhase) {
  TestRandom random;
  const AudioBlock later = AudioBlock::Noise(2, 2000, random);
  const Setting at = {1, 1, 3, 0.25};
  PulsettaUnderTest pulsetta;
  at.Apply(pulsetta);
  pulsetta.Prepare(2, kRate);
  pulsetta.Skip(1000000000);
  // 62500 periods of 16000 samples.
  ExpectClose(pulsetta.Answer(later, {512}), Model(later, at, 0));
}

TEST(Pulsetta, PassesChannelsFromTheNinthOn) {
  TestRandom random;
  PulsettaUnderTest pulsetta;
  Setting{5, 1, 20, 0.1}.Apply(pulsetta);
  pulsetta.Prepare(10, kRate);
  const AudioBlock in = AudioBlock::Noise(10, 500, random), out = pulsetta.Answer(in, {64});
  for (int32_t c = 0; c < 10; ++c)
    EXPECT_EQ(std::equal(in[c], in[c] + 500, out[c]), c >= 8) << "channel " << c;
}

TEST(Pulsetta, ShowsPercentAndHertz) {
  PulsettaUnderTest pulsetta;
  ASSERT_EQ(pulsetta.GetRowCount(), 4);
  EXPECT_EQ(pulsetta.GetBlock().pluginFlag, 1);
  const auto show = [&](int32_t row, double value) {
    return Utf8(MParameterText(pulsetta.GetRow(row), value));
  };
  EXPECT_EQ(show(0, 0.5), "50.00%");
  EXPECT_EQ(show(1, std::log10(4)), "4.00Hz");
  EXPECT_EQ(show(1, -2), "0.0100Hz");
  EXPECT_EQ(show(2, -0.25), "-25.00%");
}

}  // namespace
