#include <atomic>
#include <thread>

#include "tests/common/EffectSuite.h"

namespace {

// For ThreadSanitizer: whatever both threads touch has to be atomic or locked.
TEST_P(EffectSuite, AnotherThreadMayWriteRowsWhileBlocksAreProcessed) {
  TestRandom random;
  TestRandom other(random.GetSeed() + 1);
  EffectUnderTest effect(GetParam());
  effect.Prepare(2, kLowRate);
  std::atomic<bool> done = false;
  std::thread host([&] {
    for (int32_t i = 0; i < 2000; ++i) effect.SetAllAtRandom(other);
    done = true;
  });
  while (!done) {
    EXPECT_TRUE(effect.Answer(AudioBlock::Noise(2, random.Below(500), random)).IsFinite());
    effect.IsSilent();
    effect.Skip(100);
    effect.Call(MService::kGetLatency);
  }
  host.join();
}

}  // namespace
