// What the bridge does on an audio thread.

#include <gtest/gtest.h>

#include "exports/PluginEntries.h"
#include "hosts/bridge/Plugin.h"
#include "tests/common/AudioThreadWatch.h"

namespace {

TEST(BridgeOnTheAudioThread, NeitherAllocatesNorWaits) {
  bridge::Plugin effect(kPluginEntries[0].entryPoint);
  effect.Prepare(2, 48000);
  float left[512] = {1}, right[512] = {1};
  float* const channels[] = {left, right};
  bool isSilent = false;
  const AudioThreadWatch watch;
  for (int32_t i = 0; i < 20; ++i) {
    effect.Process(channels, channels, 512);
    isSilent = effect.IsSilent();
    effect.Skip(10);
    effect.SetValue(0, 0.1 * (i % 8));
  }
  const int64_t allocations = watch.GetAllocations(), waits = watch.GetWaits();
  EXPECT_EQ(allocations, 0);
  EXPECT_EQ(waits, 0);
  EXPECT_FALSE(isSilent);
}

}  // namespace
