#include "core/MFlushDenormals.h"
#include "core/MLock.h"
#include "tests/common/AudioThreadWatch.h"
#include "tests/common/CountingFunctions.h"
#include "tests/common/EffectSuite.h"

namespace {

// Half of the smallest normal number, which is zero while denormals are flushed.
bool AreDenormalsFlushed() {
  volatile float smallest = 1.17549435e-38f;
  volatile float half = smallest * 0.5f;
  return half == 0;
}

TEST(AudioThreadWatch, SeesAllocationsAndLocksOfTheLibrary) {
  MLock lock;
  const AudioThreadWatch watch;
  MRelease(MAllocate(16));
  EXPECT_EQ(watch.GetAllocations(), 2);
  ::operator delete(::operator new(1));  // a plain new and delete may be left out
  EXPECT_EQ(watch.GetAllocations(), 4);
  EXPECT_EQ(watch.GetWaits(), 0);
  { const MLocker locker(lock); }
  EXPECT_EQ(watch.GetWaits(), 1);
}

TEST_P(EffectSuite, ASteadyBlockNeitherAllocatesNorWaits) {
  TestRandom random;
  const CountingFunctions table;
  for (int32_t setting = 0; setting < kSettings; ++setting) {
    for (const int32_t channels : {2, 10}) {
      EffectUnderTest effect(GetParam());
      PrepareWithSetting(effect, setting, random.GetSeed(), channels);
      AudioBlock in = AudioBlock::Noise(channels, 5000, random);
      AudioBlock out(channels, 5000);
      effect.Process(in.From(), out.From(), 5000);
      float** const from = in.From();
      float** const to = out.From();
      const int64_t calls = table.GetCalls();
      const AudioThreadWatch watch;
      for (const int32_t samples : {0, 1, 64, 441, 5000, 5000, 5000}) {
        effect.Process(from, to, samples);
        effect.Process(to, to, samples);
        effect.IsSilent();
        effect.Call(MService::kGetLatency);
      }
      EXPECT_EQ(watch.GetAllocations(), 0);
      EXPECT_TRUE(watch.GetWaits() == 0 || IsAllowed(Allowance::kLocks)) << watch.GetWaits();
      EXPECT_EQ(table.GetCalls(), calls);
    }
  }
}

TEST_P(EffectSuite, SkippingDoesNotAllocate) {
  EffectUnderTest effect(GetParam());
  effect.Prepare(2, kRate);
  const CountingFunctions table;
  const AudioThreadWatch watch;
  for (const int32_t samples : {0, 1, 512, 100000}) effect.Skip(samples);
  EXPECT_EQ(watch.GetAllocations(), 0);
  EXPECT_EQ(table.GetCalls(), 0);
}

TEST_P(EffectSuite, TheCallersTreatmentOfDenormalsComesBack) {
  TestRandom random;
  EffectUnderTest effect(GetParam());
  AudioBlock block = AudioBlock::Noise(2, 500, random);
  float** const addresses = block.From();
  const auto callAll = [&] {
    effect.Prepare(2, kRate);
    effect.Process(addresses, addresses, 500);
    effect.Skip(500);
    effect.IsSilent();
  };
  callAll();
  EXPECT_FALSE(AreDenormalsFlushed());
  const MFlushDenormals flush;
  callAll();
  EXPECT_TRUE(AreDenormalsFlushed());
}

}  // namespace
