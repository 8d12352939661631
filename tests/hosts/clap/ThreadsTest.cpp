// For ThreadSanitizer.

#include <thread>

#include "tests/hosts/clap/TestHost.h"

namespace {

TEST_P(ClapSuite, AnotherThreadSavesAndLoadsStatesWhileBlocksAreProcessed) {
  plugin_.Activate(8000, 512);
  const clap_param_info_t first = plugin_.GetParameters()[0];
  const auto* const tail = plugin_.Find<sonvelle_clap_plugin_tail_t>(SONVELLE_CLAP_EXT_TAIL);
  const auto* const render = plugin_.Find<sonvelle_clap_plugin_render_t>(SONVELLE_CLAP_EXT_RENDER);
  std::atomic<bool> isDone = false;
  std::thread audio([&] {
    TestRandom random(1);
    while (!isDone) {
      const auto frame = static_cast<uint32_t>(random.Below(300));
      const double value = ChooseValue(first, random);
      const AudioBlock out =
          plugin_.Run(AudioBlock::Noise(2, 300, random),
                      {SetAt(frame, first, value), NoteAt(frame, CLAP_EVENT_NOTE_ON, 1, 0, 60)}, {64});
      EXPECT_TRUE(out.IsFinite());
      tail->get(plugin_.Get());
    }
  });
  for (int32_t i = 0; i < 40; ++i) {
    EXPECT_TRUE(plugin_.LoadState(plugin_.SaveState()));
    plugin_->on_main_thread(plugin_.Get());
    render->set(plugin_.Get(), i % 2 == 0 ? SONVELLE_CLAP_RENDER_OFFLINE : SONVELLE_CLAP_RENDER_REALTIME);
    for (const clap_param_info_t& each : plugin_.GetParameters()) plugin_.GetValue(each);
    tail->get(plugin_.Get());
  }
  isDone = true;
  audio.join();
}

TEST_P(ClapSuite, InstancesAreMadeAndGoOnManyThreads) {
  std::vector<std::thread> threads;
  for (int32_t i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      TestHost host;
      ClapPlugin plugin(GetParam(), host);
      plugin.Activate(8000, 64);
      EXPECT_LE(plugin.Run(AudioBlock(2, 64)).GetPeak(), 1e-20);
    });
  }
  for (std::thread& each : threads) each.join();
}

}  // namespace
