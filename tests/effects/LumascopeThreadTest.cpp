// For ThreadSanitizer: what the host, the editor and the audio thread of Lumascope touch together.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "core/MXMLItem.h"
#include "tests/effects/LumascopeUnderTest.h"

namespace {

void WorkAsHost(LumascopeUnderTest& effect, TestRandom& random) {
  for (int32_t i = 0; i < 60; ++i) {
    effect.SetAllAtRandom(random);
    MXMLItem item("state");
    effect.Call(MService::kSaveState, MAsWord(&item));
    effect.Call(MService::kLoadState, MAsWord(&item));
  }
}

void WorkAsEditor(LumascopeAudioEffectPlugin& plugin) {
  plugin.SetFrozen(!plugin.IsFrozen());
  plugin.SetView({true, true, true});
  for (const double level : plugin.GetPicture().current) EXPECT_TRUE(std::isfinite(level));
  const auto curve = plugin.CopyCurve();
  EXPECT_TRUE(plugin.PasteComparison(curve.data(), curve.size()));
}

TEST(LumascopeThreads, HostAndEditorMayWorkWhileBlocksAreMeasured) {
  TestRandom random, hostRandom(random.GetSeed() + 1);
  LumascopeUnderTest effect;
  std::atomic<bool> isDone = false;
  std::thread host([&] {
    WorkAsHost(effect, hostRandom);
    isDone = true;
  });
  std::thread editor([&] {
    while (!isDone) WorkAsEditor(effect.GetPlugin());
  });
  while (!isDone) {
    effect.Answer(AudioBlock::Noise(2, random.Below(3000), random), {100});
    effect.Skip(500);
  }
  host.join();
  editor.join();
}

}  // namespace
