#include "tests/common/EffectSuite.h"

namespace {

TEST_P(EffectSuite, PreparingWithoutASampleRateFirstLeavesNoTrace) {
  TestRandom random;
  const AudioBlock signal = AudioBlock::Noise(2, 20000, random);
  for (int32_t setting = 0; setting < kSettings; ++setting) {
    EffectUnderTest fresh(GetParam()), later(GetParam());
    PrepareWithSetting(fresh, setting, random.GetSeed());
    PrepareWithSetting(later, setting, random.GetSeed(), 2, 0);
    later.Prepare(2, kRate);
    EXPECT_TRUE(later.Answer(signal, {512}) == fresh.Answer(signal, {512})) << "setting " << setting;
  }
}

TEST_P(EffectSuite, PreparingWithoutASampleRateReturnsZeroAndTheMemoryGoesOnSounding) {
  TestRandom random;
  const AudioBlock first = AudioBlock::Noise(2, 10000, random);
  const AudioBlock second = AudioBlock::Noise(2, 10000, random, 0.1);
  for (int32_t setting = 0; setting < kSettings; ++setting) {
    EffectUnderTest left(GetParam()), prepared(GetParam());
    for (EffectUnderTest* effect : {&left, &prepared}) {
      PrepareWithSetting(*effect, setting, random.GetSeed());
      effect->Answer(first, {512});
    }
    for (const int32_t rate : {0, -1, -44100, INT32_MIN}) EXPECT_EQ(prepared.Prepare(2, rate), 0);
    EXPECT_TRUE(prepared.Answer(second, {512}) == left.Answer(second, {512})) << "setting " << setting;
  }
}

TEST_P(EffectSuite, OtherChannelsWithoutASampleRateStayInTheirBuffers) {
  TestRandom random;
  for (const int32_t rate : {0, -1}) {
    EffectUnderTest effect(GetParam());
    effect.Prepare(2, kRate);
    effect.Answer(AudioBlock::Noise(2, 5000, random));
    for (const int32_t channels : {16, 1, 0, -7, 9, 8, 3}) {
      EXPECT_EQ(effect.Prepare(channels, rate), 0);
      AudioBlock in = AudioBlock::Noise(channels, 700, random);
      AudioBlock out = AudioBlock::Constant(channels, 700, NAN);
      effect.Process(in.From(), out.From(), 700);
      EXPECT_TRUE(out.IsFinite() && out.GuardsHold()) << channels << " channels";
    }
  }
}

TEST_P(EffectSuite, IsSilentAfterPreparingAndAgainLongAfterASound) {
  TestRandom random;
  EffectUnderTest effect(GetParam());
  EXPECT_EQ(effect.IsSilent(), 1) << "fresh";
  effect.Prepare(2, kLowRate);
  EXPECT_EQ(effect.IsSilent(), 1) << "prepared";
  effect.Answer(AudioBlock::Noise(2, kLowRate, random), {512});
  effect.AnswerToSilence(2, 30 * kLowRate);
  EXPECT_EQ(effect.IsSilent(), 1) << "after half a minute of silence";
  effect.Answer(AudioBlock::Noise(2, kLowRate, random), {512});
  effect.Prepare(2, kLowRate);
  EXPECT_EQ(effect.IsSilent(), 1) << "prepared again";
}

TEST_P(EffectSuite, SkippingReturnsZeroForAnyNumber) {
  TestRandom random;
  EffectUnderTest effect(GetParam());
  for (int32_t round = 0; round < 2; ++round) {
    for (const int32_t samples : {0, 1, 4800, -1, INT32_MIN, INT32_MAX}) EXPECT_EQ(effect.Skip(samples), 0);
    effect.Prepare(2, kRate);
  }
  EXPECT_TRUE(effect.Answer(AudioBlock::Noise(2, 5000, random), {512}).IsFinite());
}

TEST_P(EffectSuite, TheLatencyIsNotNegativeAndStaysWhileBlocksPass) {
  TestRandom random;
  EffectUnderTest effect(GetParam());
  EXPECT_GE(effect.Call(MService::kGetLatency), 0);
  effect.Prepare(2, kRate);
  const MWord latency = effect.Call(MService::kGetLatency);
  EXPECT_GE(latency, 0);
  EXPECT_LT(latency, kRate);
  effect.Answer(AudioBlock::Noise(2, 10000, random), {512});
  EXPECT_EQ(effect.Call(MService::kGetLatency), latency);
}

}  // namespace
