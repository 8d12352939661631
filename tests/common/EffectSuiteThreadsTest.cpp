#include <atomic>
#include <thread>

#include "core/MXMLItem.h"
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
    for (int32_t i = 0; i < 500; ++i) effect.SetAllAtRandom(other);
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

// The saved state takes drawn curves and waves along.
TEST_P(EffectSuite, AnotherThreadMaySaveAndLoadStatesWhileBlocksAreProcessed) {
  TestRandom random;
  TestRandom other(random.GetSeed() + 1);
  EffectUnderTest effect(GetParam());
  effect.Prepare(2, kLowRate);
  std::atomic<bool> done = false;
  std::thread host([&] {
    for (int32_t i = 0; i < 100; ++i) {
      effect.SetAllAtRandom(other);
      MXMLItem item("state");
      effect.Call(MService::kSaveState, MAsWord(&item));
      effect.Call(MService::kLoadState, MAsWord(&item));
      effect.Call(MService::kStateLoaded);
    }
    done = true;
  });
  while (!done) {
    EXPECT_TRUE(effect.Answer(AudioBlock::Noise(2, random.Below(500), random)).IsFinite());
    effect.IsSilent();
    effect.Skip(100);
  }
  host.join();
}

}  // namespace
