// Blocks of all plug-ins without a system call.

#include "tests/common/SystemCallWatch.h"
#include "tests/hosts/bridge/DawPluginUnderTest.h"

namespace {

constexpr int32_t kBlocks = 300, kFrames = 128;

// A block with a change at a frame, of one parameter after the other; those before the last, which is the
// bypass, many times as often.
void RunBlock(DawPluginUnderTest& plugin, AudioBlock& block, int32_t index) {
  const auto count = static_cast<int32_t>(plugin.GetParameters().size());
  const int32_t place = index % 20 == 19 ? count - 1 : index % std::max(count - 1, 1);
  const bridge::DawParameter& parameter = plugin.GetParameters()[static_cast<std::size_t>(place)];
  float* const* const channels = block.From();
  plugin.Begin(channels, channels, kFrames);
  plugin.RunTo(index % kFrames);
  plugin.Change(place, bridge::Denormalize(parameter, 0.1 * (index / 20 % 11)));
  plugin.End();
}

TEST(SystemCalls, AreNotMadeByBlocksOfEffects) {
  int32_t effects = 0;
  for (int32_t i = 0; i < kPluginEntryCount; ++i) {
    if (kPluginEntries[i].kind != std::string_view("AudioEffect")) continue;
    SCOPED_TRACE(kPluginEntries[i].name);
    DawPluginUnderTest plugin(kPluginEntries[i].name);
    plugin.Start();
    TestRandom random;
    AudioBlock block = AudioBlock::Noise(2, kFrames, random);
    for (int32_t k = 0; k < 4; ++k) RunBlock(plugin, block, k);
    EXPECT_FALSE(MakesSystemCalls([&] {
      for (int32_t k = 0; k < kBlocks; ++k) RunBlock(plugin, block, k);
    }));
    ++effects;
  }
  EXPECT_EQ(effects, 15);
}

TEST(SystemCalls, AreNotMadeBetweenNotes) {
  DawPluginUnderTest plugin("Toneloom4NN");
  plugin.Start();
  AudioBlock block(2, kFrames);
  float* const* const channels = block.From();
  plugin.Begin(nullptr, channels, kFrames);
  plugin.Play({bridge::NoteEvent::Kind::kPress, 0, 60, 1, false});
  plugin.End();
  EXPECT_GT(block.GetPeak(), 0);
  EXPECT_FALSE(MakesSystemCalls([&] {
    for (int32_t k = 0; k < 20; ++k) {
      plugin.Begin(nullptr, channels, kFrames);
      plugin.End();
      if (block.IsZero()) getppid();  // it still sounds
    }
  }));
}

}  // namespace
