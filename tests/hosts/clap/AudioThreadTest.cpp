#include <set>

#include "tests/common/AudioThreadWatch.h"
#include "tests/hosts/clap/TestHost.h"

namespace {

// Effects whose blocks take the plug-in's lock; a change may take it in others too.
const std::set<std::string> kBlocksLock = {"Bendform", "Imprinta", "Pulsetta", "Quaverly", "Squeezel"};

struct Counts {
  int64_t allocations, waits;
};

// Runs ten blocks with these events, behind one that does not count.
Counts Watch(ClapPlugin& plugin, const EventList& events) {
  TestRandom random;
  AudioBlock signal = AudioBlock::Noise(2, 512, random);
  const clap_audio_buffer_t in = {signal.From(), nullptr, 2, 0, 0};
  clap_audio_buffer_t out = in;
  const uint32_t inputs = plugin.IsInstrument() ? 0 : 1;
  const clap_process_t block = {0, 512, nullptr, &in, &out, inputs, 1, events.GetInput(), nullptr};
  const auto* const parameters = plugin.Find<clap_plugin_params_t>(CLAP_EXT_PARAMS);
  plugin->process(plugin.Get(), &block);
  clap_process_status status = CLAP_PROCESS_CONTINUE;
  const AudioThreadWatch watch;
  for (int32_t i = 0; i < 10 && status != CLAP_PROCESS_ERROR; ++i) {
    parameters->flush(plugin.Get(), events.GetInput(), nullptr);
    status = plugin->process(plugin.Get(), &block);
  }
  const Counts counts = {watch.GetAllocations(), watch.GetWaits()};
  EXPECT_NE(status, CLAP_PROCESS_ERROR);
  return counts;
}

TEST_P(ClapSuite, ABlockNeitherAllocatesNorWaits) {
  plugin_.Activate();
  const EventList none;
  const Counts counts = Watch(plugin_, none);
  EXPECT_EQ(counts.allocations, 0);
  EXPECT_TRUE(counts.waits == 0 || kBlocksLock.count(plugin_->desc->name)) << counts.waits;
}

TEST_P(ClapSuite, ABlockWithChangesDoesNotAllocate) {
  plugin_.Activate();
  EventList events;
  for (const uint32_t frame : {0u, 100u, 101u})
    for (const clap_param_info_t& each : plugin_.GetParameters())
      events.events_.push_back(
          SetAt(frame, each, frame == 100 ? each.max_value : each.default_value, frame == 100));
  EXPECT_EQ(Watch(plugin_, events).allocations, 0);
}

}  // namespace
