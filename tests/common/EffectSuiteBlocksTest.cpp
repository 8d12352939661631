#include "tests/common/EffectSuite.h"

namespace {

// 0.4 s of loud noise, then 0.2 s of silence.
AudioBlock LoudThenSilent(int32_t channels, TestRandom& random) {
  AudioBlock signal(channels, 26460);
  return signal.Fill([&](int32_t i) { return i < 17640 ? random.Real(-1, 1) : 0; });
}

TEST_P(EffectSuite, AnySplitIntoBlocksGivesTheSameAudio) {
  if (IsAllowed(Allowance::kBlocksAreHeard)) GTEST_SKIP() << "the effect's own tests say what blocks do";
  TestRandom random;
  std::vector<std::vector<int32_t>> splits = {{1}, {7}, {32}, {64}, {441}, {512}, {4096}, {}};
  for (int32_t i = 0; i < 100; ++i) splits.back().push_back(random.Integer(0, 1000));
  splits.back().push_back(313);
  AudioBlock signal = LoudThenSilent(2, random);
  for (int32_t setting = 0; setting < kSettings; ++setting) {
    EffectUnderTest whole(GetParam());
    PrepareWithSetting(whole, setting, random.GetSeed());
    const AudioBlock expected = whole.Answer(signal);
    for (const std::vector<int32_t>& sizes : splits) {
      EffectUnderTest split(GetParam());
      PrepareWithSetting(split, setting, random.GetSeed());
      const AudioBlock out = split.Answer(signal, sizes);
      const std::string which = "setting " + std::to_string(setting) + ", size " + std::to_string(sizes[0]);
      if (IsAllowed(Allowance::kBlocksChangeRounding))
        EXPECT_LE(out.GetDistance(expected), 1e-6 * expected.GetPeak()) << which;
      else
        EXPECT_TRUE(out == expected) << which << " differs by " << out.GetDistance(expected);
    }
  }
}

TEST_P(EffectSuite, InPlaceAndSeparateBuffersGiveTheSameAudioAndTheInputIsNotWritten) {
  TestRandom random;
  for (int32_t setting = 0; setting < kSettings; ++setting) {
    EffectUnderTest separate(GetParam()), inPlace(GetParam());
    PrepareWithSetting(separate, setting, random.GetSeed());
    PrepareWithSetting(inPlace, setting, random.GetSeed());
    for (int32_t i = 0; i < 30; ++i) {
      AudioBlock in = AudioBlock::Noise(2, random.Integer(0, 2000), random);
      AudioBlock both = in;
      const AudioBlock before = in;
      AudioBlock out(2, in.GetLength());
      separate.Process(in.From(), out.From(), in.GetLength());
      inPlace.Process(both.From(), both.From(), both.GetLength());
      ASSERT_TRUE(in == before) << "the input was written";
      ASSERT_TRUE(both == out) << "setting " << setting << ", differs by " << both.GetDistance(out);
    }
  }
}

TEST_P(EffectSuite, EveryNumberOfChannelsAndEverySampleRateWorks) {
  TestRandom random;
  for (const int32_t rate : {1, 8000, 22050, 44100, 48000, 96000, 192000, 384000, 1000000}) {
    for (const int32_t channels : {-1, 0, 1, 2, 3, 6, 8, 10, 16}) {
      EffectUnderTest effect(GetParam());
      EXPECT_EQ(effect.Prepare(channels, rate), 0);
      AudioBlock in = AudioBlock::Noise(channels, 3000, random);
      AudioBlock out = AudioBlock::Constant(channels, 3000, NAN);
      effect.Process(in.From(), out.From(), 3000);
      EXPECT_TRUE(out.IsFinite()) << channels << " channels at " << rate << " Hz";
      EXPECT_TRUE(in.GuardsHold() && out.GuardsHold()) << channels << " channels at " << rate << " Hz";
    }
  }
}

TEST_P(EffectSuite, TwoRunsGiveTheSameBits) {
  TestRandom random;
  const AudioBlock signal = LoudThenSilent(2, random);
  for (int32_t setting = 0; setting < kSettings; ++setting) {
    EffectUnderTest first(GetParam()), second(GetParam());
    PrepareWithSetting(first, setting, random.GetSeed());
    PrepareWithSetting(second, setting, random.GetSeed());
    EXPECT_TRUE(first.Answer(signal, {512}) == second.Answer(signal, {512})) << "setting " << setting;
  }
}

TEST_P(EffectSuite, InstancesDoNotHearEachOther) {
  TestRandom random;
  AudioBlock signal = LoudThenSilent(2, random);
  EffectUnderTest alone(GetParam()), beside(GetParam());
  PrepareWithSetting(alone, 1, random.GetSeed());
  const AudioBlock expected = alone.Answer(signal, {100});
  EffectUnderTest other(GetParam());
  PrepareWithSetting(beside, 1, random.GetSeed());
  PrepareWithSetting(other, 2, random.GetSeed(), 6, 96000);
  AudioBlock out(2, signal.GetLength());
  for (int32_t done = 0; done < signal.GetLength(); done += 100) {
    beside.Process(signal.From(done), out.From(done), std::min(100, signal.GetLength() - done));
    if (random.OneIn(2)) other.Answer(AudioBlock::Noise(6, 50, random));
    if (random.OneIn(20)) other.SetAllAtRandom(random);
    if (random.OneIn(50)) other.Prepare(6, random.Below(100000));
  }
  EXPECT_TRUE(out == expected);
}

}  // namespace
