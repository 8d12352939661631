// Blocks of all plug-ins without a system call.

#include "tests/common/SystemCallWatch.h"
#include "tests/hosts/clap/TestHost.h"

namespace {

constexpr uint32_t kFrames = 128;

TEST_P(ClapSuite, ABlockWithAChangeMakesNoSystemCall) {
  if (plugin_.IsInstrument()) return;  // notes allocate
  plugin_.Activate();
  const std::vector<clap_param_info_t> parameters = plugin_.GetParameters();
  EventList events({SetAt(0, parameters[0], parameters[0].default_value)});
  TestRandom random;
  AudioBlock signal = AudioBlock::Noise(2, kFrames, random);
  const clap_audio_buffer_t in = {signal.From(), nullptr, 2, 0, 0};
  clap_audio_buffer_t out = in;
  const clap_process_t block = {0, kFrames, nullptr, &in, &out, 1, 1, events.GetInput(), nullptr};
  const auto run = [&](uint32_t index) {
    const bool isBypass = index % 20 == 19;
    const clap_param_info_t& parameter =
        isBypass ? parameters.back() : parameters[index % std::max<std::size_t>(parameters.size() - 1, 1)];
    const double part = isBypass ? index / 20 % 2 : 0.1 * (index / 20 % 11);
    events.events_[0] = SetAt(index % kFrames, parameter,
                              parameter.min_value + part * (parameter.max_value - parameter.min_value));
    if (plugin_->process(plugin_.Get(), &block) == CLAP_PROCESS_ERROR) std::abort();
  };
  for (uint32_t i = 0; i < 4; ++i) run(i);
  EXPECT_FALSE(MakesSystemCalls([&] {
    for (uint32_t i = 0; i < 300; ++i) run(i);
  }));
}

TEST_P(ClapSuite, ABlockBetweenNotesMakesNoSystemCall) {
  if (!plugin_.IsInstrument()) return;
  plugin_.Activate();
  plugin_.Run(AudioBlock(2, kFrames), {NoteAt(0, CLAP_EVENT_NOTE_ON, -1, 0, 60)});
  AudioBlock signal(2, kFrames);
  clap_audio_buffer_t out = {signal.From(), nullptr, 2, 0, 0};
  const clap_process_t block = {0, kFrames, nullptr, nullptr, &out, 0, 1, nullptr, nullptr};
  EXPECT_FALSE(MakesSystemCalls([&] {
    for (int32_t i = 0; i < 20; ++i) plugin_->process(plugin_.Get(), &block);
  }));
}

}  // namespace
