// For ThreadSanitizer: a host that saves, loads and sets values while blocks are processed.

#include <atomic>
#include <thread>

#include "tests/hosts/bridge/DawPluginUnderTest.h"

namespace {

class DawPluginThreads : public testing::TestWithParam<const char*> {};

TEST_P(DawPluginThreads, AnotherThreadMaySetValuesAndLoadStatesWhileBlocksAreProcessed) {
  DawPluginUnderTest plugin(GetParam());
  plugin.Activate(2, 8000, 256);
  const auto count = static_cast<int32_t>(plugin.GetParameters().size());
  const auto at = [&](int32_t place, double share) {
    return bridge::Denormalize(plugin.GetParameters()[static_cast<std::size_t>(place)], share);
  };
  std::atomic<bool> done = false;
  std::thread host([&] {
    for (int32_t i = 0; i < 60; ++i) {
      for (int32_t place = 0; place < count; ++place) plugin.SetValue(place, at(place, 0.1 * (i % 10)));
      plugin.LoadState(plugin.SaveState());
      plugin.GetTail();
      plugin.DoWork();
    }
    done = true;
  });
  AudioBlock block(2, 300);
  for (int32_t i = 0; !done; ++i) {
    block.Fill([](int32_t k) { return 0.01 * (k % 50); });
    plugin.Begin(block.From(), block.From(), 300);
    plugin.Play({bridge::NoteEvent::Kind::kPress, 0, 60 + i % 12, 0.5, false});
    plugin.RunTo(100);
    plugin.Change(i % count, at(i % count, 0.1 * (i % 10)));
    plugin.End();
    if (i % 20 == 0) plugin.Reset();
    EXPECT_TRUE(block.IsFinite());
  }
  host.join();
}

std::vector<const char*> GetNames() {
  std::vector<const char*> names;
  for (int32_t i = 0; i < kPluginEntryCount; ++i) names.push_back(kPluginEntries[i].name);
  return names;
}

INSTANTIATE_TEST_SUITE_P(All, DawPluginThreads, testing::ValuesIn(GetNames()),
                         [](const auto& name) { return std::string(name.param); });

}  // namespace
