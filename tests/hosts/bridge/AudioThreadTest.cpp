// What the bridge does on an audio thread.

#include <gtest/gtest.h>

#include "exports/PluginEntries.h"
#include "hosts/bridge/Plugin.h"
#include "tests/common/AudioThreadWatch.h"
#include "tests/hosts/bridge/DawPluginUnderTest.h"

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

// All that happens in a block: changes, bypass, a reset, silence, what is no number.
void RunEverything(DawPluginUnderTest& plugin, AudioBlock& block) {
  float* const* const channels = block.From();
  for (int32_t i = 0; i < 200; ++i) {
    block[0][7] = i % 9 == 0 ? NAN : 0.1f;
    plugin.Begin(channels, channels, 512);
    for (int32_t place = 0; place < static_cast<int32_t>(plugin.GetParameters().size()); ++place) {
      plugin.RunTo(10 * place);
      if (i % 7 == place % 7)
        plugin.Change(place, bridge::Denormalize(plugin.GetParameters()[static_cast<std::size_t>(place)],
                                                 0.1 * (i % 11)));
    }
    plugin.End();
    if (i % 50 == 49) plugin.Reset();
    plugin.IsQuiet();
  }
}

template <typename Check>
void ForEachEffect(Check check) {
  for (int32_t i = 0; i < kPluginEntryCount; ++i) {
    if (kPluginEntries[i].kind != std::string_view("AudioEffect")) continue;
    SCOPED_TRACE(kPluginEntries[i].name);
    DawPluginUnderTest plugin(kPluginEntries[i].name);
    plugin.Start();
    AudioBlock block = AudioBlock::Constant(2, 512, 0.5);
    block.From();
    check(plugin, block);
  }
}

// Those whose taps, waves or curves are rebuilt while blocks pass take their lock.
bool MayLock(std::string_view name) {
  return name == "Imprinta" || name == "Bendform" || name == "Pulsetta" || name == "Quaverly" ||
         name == "Squeezel";
}

TEST(DawPluginOnTheAudioThread, AllocatesNothing) {
  ForEachEffect([](DawPluginUnderTest& plugin, AudioBlock& block) {
    const AudioThreadWatch watch;
    RunEverything(plugin, block);
    const int64_t allocations = watch.GetAllocations();
    EXPECT_EQ(allocations, 0);
  });
}

// A change takes the effect's lock, whose turn it is.
TEST(DawPluginOnTheAudioThread, TakesNoLockWhereNothingChanges) {
  ForEachEffect([](DawPluginUnderTest& plugin, AudioBlock& block) {
    if (MayLock(plugin.GetType().name)) return;
    plugin.Answer(block, 64);
    float* const* const channels = block.From();
    const AudioThreadWatch watch;
    for (int32_t i = 0; i < 200; ++i) {
      plugin.Begin(channels, channels, 512);
      plugin.End();
      if (i == 0) plugin.IsQuiet();
    }
    const int64_t waits = watch.GetWaits();
    EXPECT_EQ(waits, 0);
  });
}

}  // namespace
