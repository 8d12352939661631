#include "tests/common/CountingFunctions.h"
#include "tests/common/EffectSuite.h"

namespace {

// What a row holds, in the order of its kind's fields.
std::vector<double> GetNumbers(const MPluginParameter& row) {
  switch (row.kind) {
    case MParameterKind::kReal:
      return {row.real.minimum, row.real.maximum, row.real.defaultValue, row.real.value};
    case MParameterKind::kInteger:
      return {double(row.integer.minimum), double(row.integer.maximum), double(row.integer.defaultValue),
              double(row.integer.value)};
    case MParameterKind::kEnumeration:
      return {double(row.enumeration.count), double(row.enumeration.defaultValue),
              double(row.enumeration.value)};
    case MParameterKind::kSwitch:
      return {double(row.onOff.defaultValue), double(row.onOff.value)};
    default:
      return {double(row.panel.zero), double(row.panel.open != nullptr)};
  }
}

class CallsWithoutEffect : public EffectSuite {
 protected:
  // Expects `call` between two blocks to change neither the audio behind it nor the rows.
  template <typename Call>
  void ExpectNoEffect(Call call) {
    TestRandom random;
    const AudioBlock first = AudioBlock::Noise(2, 10000, random);
    const AudioBlock second = AudioBlock::Noise(2, 10000, random);
    EffectUnderTest left(GetParam()), called(GetParam());
    for (EffectUnderTest* effect : {&left, &called}) {
      PrepareWithSetting(*effect, 1, random.GetSeed());
      effect->Answer(first, {512});
    }
    call(called);
    for (int32_t i = 0; i < left.GetRowCount(); ++i) {
      EXPECT_EQ(left.GetRow(i).kind, called.GetRow(i).kind) << "row " << i;
      EXPECT_EQ(GetNumbers(left.GetRow(i)), GetNumbers(called.GetRow(i))) << "row " << i;
    }
    EXPECT_TRUE(called.Answer(second, {512}) == left.Answer(second, {512}));
  }
};

TEST_P(EffectSuite, ThePublicBlockAndItsRowsStayWhereTheyAre) {
  TestRandom random;
  EffectUnderTest effect(GetParam());
  const MPluginPublicBlock* const block = &effect.GetBlock();
  const MPluginParameter* const rows = block->parameters;
  const int32_t count = block->parameterCount;
  for (const int32_t channels : {2, 0, 10}) {
    effect.Prepare(channels, kRate);
    effect.SetAllAtRandom(random);
    effect.Answer(AudioBlock::Noise(channels, 1000, random));
    EXPECT_EQ(&effect.GetBlock(), block);
    EXPECT_EQ(block->parameters, rows);
    EXPECT_EQ(block->parameterCount, count);
  }
}

TEST_P(EffectSuite, ServicesWithNothingToWorkOnReturnTheirNeutralResult) {
  EffectUnderTest effect(GetParam());
  for (int32_t round = 0; round < 2; ++round) {
    EXPECT_EQ(effect.Call(MService::kDetach), 0);
    EXPECT_EQ(effect.Call(MService::kCreateEditor), 0);
    EXPECT_EQ(effect.Call(MService::kEditorClosed), 0);
    EXPECT_EQ(effect.Call(MService::kStateLoaded), 0);
    EXPECT_EQ(effect.Call(MService::kSaveState), 0);
    EXPECT_EQ(effect.Call(MService::kLoadState), 0);
    EXPECT_EQ(effect.Call(MService::kQuery), -1);
    EXPECT_EQ(effect.Call(MService::kCommand), -1);
    EXPECT_EQ(effect.Call(MService::kCommand, MAsWord("NoSuchCommand")), -1);
    for (int32_t row = -1; row <= effect.GetRowCount(); ++row)
      EXPECT_EQ(effect.Call(MService::kParameterChanged, row), 0);
    effect.Prepare(2, kRate);
  }
}

TEST_P(CallsWithoutEffect, UnknownServicesGiveMinusOne) {
  ExpectNoEffect([](EffectUnderTest& effect) {
    for (const int32_t service : {7,   8,   10,  15,  19,  21,  99, 105, 199,       200,
                                  201, 202, 203, 204, 205, 206, -1, -5,  INT32_MIN, INT32_MAX})
      EXPECT_EQ(effect.Call(service, 2, 48000, 64), MWord{-1}) << service;
  });
}

TEST_P(CallsWithoutEffect, EmptyAndNegativeBlocksLeaveTheOutput) {
  ExpectNoEffect([](EffectUnderTest& effect) {
    AudioBlock in = AudioBlock::Constant(2, 64, 0.5);
    AudioBlock out = AudioBlock::Constant(2, 64, 0.25);
    const AudioBlock before = out;
    for (const int32_t samples : {0, -1, -64, INT32_MIN})
      EXPECT_EQ(effect.Process(in.From(), out.From(), samples), 0);
    effect.Process(nullptr, nullptr, 0);
    EXPECT_TRUE(out == before);
  });
}

TEST_P(CallsWithoutEffect, ABlockWithANullAddressIsLeftAlone) {
  ExpectNoEffect([](EffectUnderTest& effect) {
    AudioBlock in = AudioBlock::Constant(2, 64, 0.5);
    AudioBlock out = AudioBlock::Constant(2, 64, 0.25);
    const AudioBlock before = out;
    float* noInput[] = {in[0], nullptr};
    float* noOutput[] = {nullptr, out[1]};
    EXPECT_EQ(effect.Process(nullptr, out.From(), 64), 0);
    EXPECT_EQ(effect.Process(in.From(), nullptr, 64), 0);
    EXPECT_EQ(effect.Process(nullptr, nullptr, 64), 0);
    EXPECT_EQ(effect.Process(noInput, out.From(), 64), 0);
    EXPECT_EQ(effect.Process(in.From(), noOutput, 64), 0);
    EXPECT_TRUE(out == before);
  });
}

TEST_P(CallsWithoutEffect, AskingForSilenceLatencyAndTheBlockChangesNothing) {
  ExpectNoEffect([](EffectUnderTest& effect) {
    for (int32_t i = 0; i < 3; ++i) {
      effect.IsSilent();
      effect.Call(MService::kGetLatency);
      effect.GetBlock();
    }
  });
}

TEST_P(EffectSuite, ABlockBeforePreparingTouchesNothing) {
  EffectUnderTest effect(GetParam());
  AudioBlock in = AudioBlock::Constant(2, 64, 0.5);
  AudioBlock out = AudioBlock::Constant(2, 64, 0.25);
  const AudioBlock inBefore = in;
  const AudioBlock outBefore = out;
  EXPECT_EQ(effect.Process(in.From(), out.From(), 64), 0);
  EXPECT_EQ(effect.Process(nullptr, nullptr, 64), 0);
  EXPECT_TRUE(in == inBefore && out == outBefore);
}

TEST_P(EffectSuite, AMissingRecordOfArgumentsReadsAsZeros) {
  EffectUnderTest effect(GetParam());
  effect.Prepare(2, kRate);
  void* const instance = MAsAddress<void>(effect.Call(MService::kAttach));
  for (const int32_t service : {0, 2, 3, 4, 5, 6, 11, 12, 13, 14, 20, 100, 101, 102, 103, 104, 7, 200}) {
    MServiceArguments zeros(0);
    EXPECT_EQ(GetParam().entryPoint(instance, service, nullptr),
              GetParam().entryPoint(instance, service, &zeros))
        << service;
  }
}

TEST_P(EffectSuite, AllMemoryIsGivenBackWithTheEffect) {
  TestRandom random;
  const auto live = [&] {
    EffectUnderTest effect(GetParam());
    for (const int32_t channels : {2, 9, 0, 1}) {
      effect.Prepare(channels, kRate);
      effect.Answer(AudioBlock::Noise(channels, 5000, random), {512});
      effect.SetAllAtRandom(random);
    }
  };
  live();  // what all instances share is made with the first one
  const CountingFunctions table;
  for (int32_t i = 0; i < 3; ++i) live();
  EXPECT_GT(table.GetAllocated(), 0);
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST_P(EffectSuite, PreparingWithoutMemoryRaisesAndTheEffectStaysUsable) {
  TestRandom random;
  for (int32_t request = 0; request < 40; ++request) {
    EffectUnderTest effect(GetParam());
    const CountingFunctions table;
    table.FailAfter(request);
    try {
      effect.Prepare(3, kRate);
    } catch (const MException&) {
    }
    table.FailAfter(-1);
    EXPECT_TRUE(effect.Answer(AudioBlock::Noise(3, 1000, random), {512}).IsFinite()) << request;
    EXPECT_EQ(effect.Prepare(3, kRate), 0);
    EXPECT_TRUE(effect.Answer(AudioBlock::Noise(3, 1000, random), {512}).IsFinite()) << request;
  }
}

INSTANTIATE_TEST_SUITE_P(Effects, CallsWithoutEffect, testing::ValuesIn(GetAllEffects()), NameOfEffect);

}  // namespace
