// A host's threads at work at the same time: blocks on one, the panel on another, states on a third.

#include <atomic>
#include <thread>

#include "tests/hosts/vst3/AllPlugins.h"

namespace {

using host::Changes;
using host::HostedPlugin;
using host::Planes;

class Vst3Threads : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Plugins, Vst3Threads, testing::ValuesIn(host::GetAll()), host::NameTest);

void RunBlocks(HostedPlugin& plugin, const std::atomic<bool>& mustStop) {
  const std::vector<v3_param_info> list = host::GetAutomatable(plugin);
  Planes samples = host::MakeNoise(2, 64);
  for (int32_t i = 0; !mustStop; ++i) {
    Changes changes;
    host::Events events;
    for (const v3_param_info& info : list) changes.Add(info.param_id, {{i % 64, (i % 11) / 10.0}});
    if (i % 16 == 0) events.Press(3, 60, 0.5f);
    if (i % 16 == 8) events.Release(5, 60);
    plugin.Process(samples, 0, 64, i % 4 == 0 ? &changes : nullptr, &events);
    if (i % 50 == 49) v3_cpp_obj(plugin.processor)->set_processing(plugin.processor, false);
  }
}

TEST_P(Vst3Threads, MayBlocksStatesAndValuesGoOnTogether) {
  HostedPlugin plugin(GetParam());
  plugin.Start({2, 48000, 64});
  const std::string state = plugin.SaveState();
  std::atomic<bool> mustStop = false;
  std::thread audio([&] { RunBlocks(plugin, mustStop); });
  std::thread states([&] {
    for (int32_t i = 0; i < 10; ++i) {
      EXPECT_EQ(plugin.LoadState(state, 100), V3_OK);
      EXPECT_FALSE(plugin.SaveState().empty());
    }
  });
  for (int32_t i = 0; i < 20; ++i)
    for (const v3_param_info& info : plugin.GetParameters()) {
      EXPECT_EQ(plugin.Set(info.param_id, (i % 7) / 6.0), V3_OK);
      plugin.GetText(info.param_id, plugin.Get(info.param_id));
      v3_cpp_obj(plugin.processor)->get_latency_samples(plugin.processor);
    }
  states.join();
  mustStop = true;
  audio.join();
  plugin.Stop();
  EXPECT_EQ(plugin.LoadState(state), V3_OK);
  EXPECT_EQ(plugin.SaveState(), state);
}

// Renderers of songs make, fill and use a plug-in on a worker that no panel has ever been near to.
TEST_P(Vst3Threads, MayAWorkerDoEverything) {
  std::string states[2];
  std::thread workers[2];
  for (const int32_t i : {0, 1})
    workers[i] = std::thread([&, i] {
      HostedPlugin plugin(GetParam());
      for (const v3_param_info& info : host::GetAutomatable(plugin)) plugin.Set(info.param_id, 0.25);
      plugin.Start({2, 48000, 256, true});
      Planes samples = host::MakeNoise(2, 2048);
      plugin.Process(samples);
      v3_cpp_obj(plugin.processor)->get_tail_samples(plugin.processor);
      plugin.Stop();
      states[i] = plugin.SaveState();
    });
  for (std::thread& worker : workers) worker.join();
  EXPECT_EQ(states[0], states[1]);
}

}  // namespace
