// What Squeezel keeps over time: detectors in skipped time, the side chain, the meters.

#include <gtest/gtest.h>

#include "tests/effects/SqueezelUnderTest.h"

namespace {

void ExpectSameAnswers(SqueezelUnderTest& a, SqueezelUnderTest& b, TestRandom& random, int32_t channels) {
  const AudioBlock in = AudioBlock::Noise(channels, 500, random);
  EXPECT_TRUE(a.Answer(in) == b.Answer(in));
}

TEST(SqueezelSkip, GoesOnAsThroughZeros) {
  TestRandom random;
  for (const bool isLinked : {true, false})
    for (const int32_t samples : {1, 63, 64, 65, 1000, 30000}) {
      const SqueezelUnderTest::Values values = {{"linkchannels", isLinked}, {"ratio", 4}, {"threshold", 0.2}};
      SqueezelUnderTest skipped(values, 2), fed(values, 2);
      const AudioBlock in = AudioBlock::Noise(2, 500, random);
      EXPECT_TRUE(skipped.Answer(in) == fed.Answer(in));
      skipped.Skip(samples);
      fed.AnswerToSilence(2, samples);
      ExpectSameAnswers(skipped, fed, random, 2);
      // The detector of the other channel waits for the link to be switched.
      for (SqueezelUnderTest* const each : {&skipped, &fed}) each->Set("linkchannels", !isLinked);
      ExpectSameAnswers(skipped, fed, random, 2);
    }
}

TEST(SqueezelSkip, EndsSoonerWhenNothingChangesAnyMore) {
  TestRandom random;
  const SqueezelUnderTest::Values values = {{"release", 0.001}, {"ratio", 4}};
  SqueezelUnderTest all(values), some(values);
  const AudioBlock in = AudioBlock::Noise(1, 500, random);
  EXPECT_TRUE(all.Answer(in) == some.Answer(in));
  all.Skip(INT32_MAX);
  some.Skip(1000000);
  ExpectSameAnswers(all, some, random, 1);
}

TEST(SqueezelSkip, LeavesTheDetectorsThatAreNotInUse) {
  TestRandom random;
  const SqueezelUnderTest::Values values = {{"linkchannels", 0}, {"ratio", 4}, {"release", 1}};
  SqueezelUnderTest skipped(values, 2), fed(values, 2);
  const AudioBlock loud = AudioBlock::Constant(2, 2000, 1);
  skipped.Answer(loud);
  fed.Answer(loud);
  skipped.Set("linkchannels", 1);
  skipped.Skip(20000);
  skipped.Set("linkchannels", 0);
  const AudioBlock in = AudioBlock::Constant(2, 100, 0.5);
  const AudioBlock out = skipped.Answer(in), still = fed.Answer(in);
  EXPECT_EQ(std::memcmp(out[1], still[1], 400), 0);
  EXPECT_NE(std::memcmp(out[0], still[0], 400), 0);
}

TEST(SqueezelBypass, ClearsTheDetectors) {
  TestRandom random;
  SqueezelUnderTest squeezel({{"ratio", 4}, {"release", 1}}), fresh({{"ratio", 4}, {"release", 1}});
  squeezel.Answer(AudioBlock::Constant(1, 5000, 1));
  squeezel.Set("ratio", 1);
  squeezel.Set("ratio", 4);
  ExpectSameAnswers(squeezel, fresh, random, 1);
}

class SqueezelSideChain : public testing::TestWithParam<std::pair<double, double>> {};

TEST_P(SqueezelSideChain, LimitsWhatTheDetectorsHear) {
  TestRandom random;
  const auto [minimum, maximum] = GetParam();
  for (const bool isLinked : {true, false}) {
    SqueezelUnderTest squeezel({{"ratio", 4}, {"threshold", 0.2}, {"linkchannels", isLinked}}, 2);
    SqueezelUnderTest player({{"ratio", 4}, {"threshold", 0.2}, {"linkchannels", isLinked}}, 2);
    squeezel.GetPlugin().SetSideChain({true, false, minimum, maximum});
    player.GetPlugin().SetSideChain({true, true, minimum, maximum});
    AudioBlock in = AudioBlock::Noise(2, 3000, random);
    AudioBlock heard = in;
    for (int32_t c = 0; c < 2; ++c) {
      MBiquadFilterFloat filter;
      MBiquadStateFloat low, high;
      filter.Set(MBiquadType::kLowPass, 0, maximum, 48000, 1);
      if (maximum < 20000) filter.Run(low, heard[c], heard[c], 3000);
      filter.Set(MBiquadType::kHighPass, 0, minimum, 48000, 1);
      if (minimum > 20) filter.Run(high, heard[c], heard[c], 3000);
    }
    const AudioBlock out = squeezel.Answer(in, {7, 64, 500});
    EXPECT_TRUE(player.Answer(in, {1, 100, 65}) == heard);
    const SqueezelModel model{0.04, 4};
    std::vector<SqueezelDetectorModel> detectors(2, {48000, 0.01, 0.05, 0.001});
    for (int32_t i = 0; i < 3000; ++i) {
      const double powers[] = {std::pow(heard[0][i], 2), std::pow(heard[1][i], 2)};
      double gain = isLinked ? model.GainOf(detectors[0].Step((powers[0] + powers[1]) / 2)) : 0;
      for (std::size_t c = 0; c < 2; ++c) {
        if (!isLinked) gain = model.GainOf(detectors[c].Step(powers[c]));
        const int32_t channel = static_cast<int32_t>(c);
        ASSERT_NEAR(out[channel][i], in[channel][i] * gain, 3e-6);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Filters, SqueezelSideChain,
                         testing::Values(std::pair(20, 3000), std::pair(500, 20000), std::pair(500, 3000)));

TEST(SqueezelSideChainOff, ChangesNothing) {
  TestRandom random;
  SqueezelUnderTest plain({}, 2), off({}, 2), open({}, 2);
  off.GetPlugin().SetSideChain({false, true, 500, 3000});
  open.GetPlugin().SetSideChain({true, true, 20, 20000});
  const AudioBlock in = AudioBlock::Noise(2, 1000, random);
  const AudioBlock out = plain.Answer(in);
  EXPECT_TRUE(off.Answer(in) == out);
  EXPECT_TRUE(open.Answer(in) == out);
}

TEST(SqueezelSideChainOff, SkippingClearsTheFilters) {
  TestRandom random;
  SqueezelUnderTest skipped, fresh;
  for (SqueezelUnderTest* const each : {&skipped, &fresh})
    each->GetPlugin().SetSideChain({true, true, 500, 3000});
  skipped.Answer(AudioBlock::Noise(1, 1000, random));
  skipped.Skip(1);
  ExpectSameAnswers(skipped, fresh, random, 1);  // of the filters alone
}

TEST(SqueezelSideChainOff, AnyFrequencyIsSafe) {
  TestRandom random;
  SqueezelUnderTest squeezel({}, 2, 8000);
  for (const double frequency :
       {0.0, -5.0, 1e-300, 19999.0, 1e300, -1e300, 4000.0, double{NAN}, double{INFINITY}})
    for (const bool plays : {true, false}) {
      squeezel.GetPlugin().SetSideChain({true, plays, frequency, frequency});
      EXPECT_TRUE(squeezel.Answer(AudioBlock::Noise(2, 2000, random)).IsFinite()) << frequency;
      squeezel.GetPlugin().SetSideChain({true, plays, 500, 2000});
      EXPECT_TRUE(squeezel.Answer(AudioBlock::Noise(2, 2000, random)).IsFinite()) << frequency;
    }
}

TEST(SqueezelMeters, FallFromTheLargestSampleAndShowTheReduction) {
  SqueezelUnderTest squeezel(SqueezelUnderTest::Instant({{"ratio", 4}}), 2);
  const SqueezelModel model{0.25, 4};
  const auto meters = [&] { return squeezel.GetPlugin().GetMeters(); };
  const AudioBlock loud = AudioBlock::Constant(2, 480, 0.8);
  squeezel.Answer(loud);
  EXPECT_EQ(meters().slowLevel, 0);  // no editor is open
  squeezel.GetPlugin().SetEditorOpen(true);
  const AudioBlock out = squeezel.Answer(loud);
  EXPECT_EQ(meters().fastLevel, out[0][479]);
  EXPECT_EQ(meters().slowLevel, out[0][479]);
  EXPECT_NEAR(meters().reduction, std::sqrt(model.GainOf(0.8) / model.Gain()), 1e-6);
  squeezel.Answer(AudioBlock::Constant(2, 480, 0.001));
  EXPECT_NEAR(meters().fastLevel, out[0][479] * std::exp(-0.1), 1e-12);
  EXPECT_NEAR(meters().slowLevel, out[0][479] * std::exp(-0.004), 1e-12);
  EXPECT_EQ(meters().reduction, 1.000000001);
  squeezel.Skip(4800);
  EXPECT_NEAR(meters().fastLevel, out[0][479] * std::exp(-1.1), 1e-12);
}

TEST(SqueezelMeters, FallAtTheSamePaceWhenPreparedWithoutASampleRate) {
  SqueezelUnderTest squeezel;
  squeezel.GetPlugin().SetEditorOpen(true);
  squeezel.Answer(AudioBlock::Constant(1, 480, 0.1));
  const auto before = squeezel.GetPlugin().GetMeters();
  squeezel.Prepare(1, 0);
  squeezel.Answer(AudioBlock(1, 480));
  EXPECT_NEAR(squeezel.GetPlugin().GetMeters().fastLevel, before.fastLevel * std::exp(-0.1), 1e-12);
  EXPECT_NEAR(squeezel.GetPlugin().GetMeters().slowLevel, before.slowLevel * std::exp(-0.004), 1e-12);
}

TEST(SqueezelMeters, ShowThePeakInBypassAndZeroAfterSkippedTime) {
  SqueezelUnderTest squeezel({{"ratio", 1}}, 1);
  squeezel.GetPlugin().SetEditorOpen(true);
  squeezel.Answer(AudioBlock::Constant(1, 100, 0.5));
  EXPECT_EQ(squeezel.GetPlugin().GetMeters().fastLevel, 0.5);
  EXPECT_EQ(squeezel.GetPlugin().GetMeters().reduction, 1.000000001);
  squeezel.Skip(1);
  EXPECT_EQ(squeezel.GetPlugin().GetMeters().fastLevel, 0);
  EXPECT_EQ(squeezel.GetPlugin().GetMeters().slowLevel, 0);
}

}  // namespace
