// Swirlo's memory: what changes of the number of stages, skipped time and a loop gain of 1 do to it.

#include "tests/effects/SwirloUnderTest.h"

namespace {

constexpr int32_t kRate = SwirloUnderTest::kRate;

// Draws the start of a block to where the output before it was heading.
void Repair(AudioBlock& out, const AudioBlock& before) {
  const int32_t last = before.GetLength() - 1, count = std::clamp(out.GetLength() / 2, 16, 128);
  for (int32_t c = 0; c < out.GetChannelCount(); ++c) {
    const double distance = 2.0 * before[c][last] - before[c][last - 1] - out[c][0];
    for (int32_t i = 0; i < count; ++i)
      out[c][i] = static_cast<float>(out[c][i] + distance * (1 - static_cast<double>(i) / count));
  }
}

TEST(Swirlo, ChangesTheNumberOfStagesWithARepair) {
  TestRandom random;
  for (int32_t run = 0; run < 40; ++run) {
    SwirloSetting at = {0.5, 300, 3000, 2, 0.8, random.Integer(1, 10)};
    SwirloUnderTest swirlo;
    SwirloModel model(at);
    swirlo.Start(at, 2);
    AudioBlock before = AudioBlock::Noise(2, 1000, random);
    before = (ExpectClose(swirlo.Answer(before), model.Answer(before)), model.Answer(AudioBlock(2, 50)));
    swirlo.Answer(AudioBlock(2, 50));
    // Several changes before a block: what a smaller number gives up does not come back.
    bool isChanged = false;
    for (int32_t changes = random.Integer(1, 3); changes > 0; --changes) {
      const int32_t stages = random.Integer(1, 10);
      isChanged |= stages != at.stages;
      at.stages = stages;
      swirlo.Set("delays", stages);
      model.Apply(at);
    }
    const AudioBlock in = AudioBlock::Noise(2, random.Integer(32, 400), random);
    AudioBlock expected = model.Answer(in);
    if (isChanged) Repair(expected, before);
    ExpectClose(swirlo.Answer(in), expected);
  }
}

TEST(Swirlo, NewStagesStartEmpty) {
  for (const bool playsBetween : {false, true}) {
    SwirloUnderTest swirlo;
    swirlo.Start({1, 300, 3000, 2, 0, 6}, 1);
    swirlo.Answer(AudioBlock::Constant(1, 1000, 1));
    swirlo.Set("delays", 1);
    if (playsBetween) swirlo.AnswerToSilence(1, 5000);
    swirlo.Set("delays", 6);
    swirlo.Answer(AudioBlock(1, 1));  // no repair in so short a block
    const double left = swirlo.Answer(AudioBlock(1, 1000))[0][0];
    if (playsBetween)
      EXPECT_LE(std::abs(left), 1e-20);
    else
      EXPECT_GT(std::abs(left), 1e-6) << "the first stage goes on";
  }
}

TEST(Swirlo, BeginsAtZeroInItsFirstLongBlock) {
  SwirloUnderTest swirlo;
  swirlo.Prepare(1, kRate);
  EXPECT_EQ(swirlo.Answer(AudioBlock::Constant(1, 256, 1))[0][0], 0);
  swirlo.Set("feedback", 0.3);
  swirlo.Set("Depth", 1);
  swirlo.Prepare(1, kRate);
  SwirloUnderTest other;
  other.Prepare(1, kRate);
  EXPECT_EQ(other.Answer(AudioBlock::Constant(1, 256, 1))[0][0], 0);
}

TEST(Swirlo, RepairsNothingWhenAnotherValueChanges) {
  TestRandom random;
  SwirloSetting at;
  SwirloUnderTest swirlo;
  SwirloModel model(at);
  swirlo.Start(at, 2);
  for (double* const value : {&at.depth, &at.feedback, &at.minimumHertz, &at.maximumHertz, &at.hertz}) {
    *value *= 0.5;
    swirlo.Apply(at);
    swirlo.Prepare(2, kRate);
    model.Apply(at);
    const AudioBlock in = AudioBlock::Noise(2, 500, random);
    ExpectClose(swirlo.Answer(in), model.Answer(in));
  }
}

TEST(Swirlo, SkippingEmptiesTheStages) {
  for (const int32_t samples : {0, 1, 5000}) {
    SwirloUnderTest swirlo;
    swirlo.Start({1, 100, 1000, 2, 0.95, 10}, 2);
    EXPECT_GT(swirlo.Answer(AudioBlock::Constant(2, 2000, 1)).GetPeak(), 0.5);
    swirlo.Skip(samples);
    EXPECT_LE(swirlo.Answer(AudioBlock(2, 1000), {512}).GetPeak(), 1e-20) << samples;
  }
}

TEST(Swirlo, SkippingMovesThePhasesLikeZeros) {
  TestRandom random;
  const AudioBlock later = AudioBlock::Noise(3, 2000, random);
  for (const int32_t samples : {0, 1, 511, 100000}) {
    SwirloUnderTest skipped, fed;
    for (SwirloUnderTest* swirlo : {&skipped, &fed}) swirlo->Start({0.5, 100, 9000, 9.3, 0.8, 8, 0.3, 8}, 3);
    skipped.Skip(samples);
    fed.AnswerToSilence(3, samples);
    ExpectClose(skipped.Answer(later, {512}), fed.Answer(later, {512}));
  }
}

TEST(Swirlo, SkippingABillionSamplesKeepsThePhase) {
  TestRandom random;
  const AudioBlock later = AudioBlock::Noise(2, 2000, random);
  const SwirloSetting at = {0.5, 100, 9000, 3, 0.8, 6, 0.25};
  SwirloUnderTest swirlo;
  swirlo.Start(at, 2);
  swirlo.Skip(1000000000);  // 62500 periods of 16000 samples
  ExpectClose(swirlo.Answer(later, {512}), SwirloModel(at).Answer(later));
}

TEST(Swirlo, StaysFiniteAtALoopGainOfOneAndRecovers) {
  TestRandom random;
  for (const double feedback : {1.0, -1.0, 1e300}) {
    for (const int32_t stages : {1, 5, 10}) {
      SwirloUnderTest swirlo;
      swirlo.Start({1, 100, 10000, 10, feedback, stages}, 3);
      for (int32_t second = 0; second < 10; ++second)
        ASSERT_TRUE(swirlo.Answer(AudioBlock::Noise(3, kRate, random), {512}).IsFinite());
      swirlo.Set("feedback", 0.2);
      swirlo.Answer(AudioBlock::Noise(3, kRate, random), {512});
      EXPECT_LT(swirlo.Answer(AudioBlock::Noise(3, kRate, random), {512}).GetPeak(), 20);
    }
  }
}

// Samples of the range's end fed back at a gain of 1 leave it.
TEST(Swirlo, StartsAfreshWhenTheFeedbackLeavesTheRangeOfSamples) {
  SwirloUnderTest swirlo;
  swirlo.Start({1, 1000, 1000, 2, 1, 2}, 2);
  AudioBlock in(2, 512);
  for (int32_t i = 0; i < 512; ++i) in[0][i] = 3e38f, in[1][i] = 0.25f;
  const AudioBlock out = swirlo.Answer(in);
  EXPECT_TRUE(out.IsFinite());
  const AudioBlock silence = swirlo.Answer(AudioBlock(2, 512));
  EXPECT_LE(std::abs(silence[0][511]), 1e-20);
  EXPECT_GT(std::abs(silence[1][511]), 1) << "the other channel goes on";
}

}  // namespace
