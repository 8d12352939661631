// What no host should send, and some do.

#include "tests/hosts/clap/TestHost.h"

namespace {

constexpr int32_t kWildNumbers[] = {-32768, -2, -1, 0, 1, 15, 16, 60, 127, 128, 32767};
constexpr double kWildValues[] = {NAN, INFINITY, -INFINITY, -1, -0.0, 5e-324, 0.5, 1, 2, 1e300};

template <typename Values>
auto& Choose(Values& values, TestRandom& random) {
  return values[static_cast<std::size_t>(random.Below(static_cast<int32_t>(std::size(values))))];
}

// Notes, values, modulations and MIDI of all numbers, in no order, within the block and behind it.
std::vector<TestEvent> MakeWildEvents(const ClapPlugin& plugin, TestRandom& random) {
  const std::vector<clap_param_info_t> parameters = plugin.GetParameters();
  std::vector<TestEvent> events;
  for (int32_t i = 0; i < 20; ++i) {
    const auto frame = [&] { return static_cast<uint32_t>(random.Below(200)); };
    const auto data = [&] { return static_cast<uint8_t>(random.Below(256)); };
    events.push_back(NoteAt(frame(), static_cast<uint16_t>(random.Below(8)), Choose(kWildNumbers, random),
                            Choose(kWildNumbers, random), Choose(kWildNumbers, random),
                            Choose(kWildValues, random)));
    events.back().note.port_index = static_cast<int16_t>(Choose(kWildNumbers, random));
    events.push_back(MidiAt(frame(), data(), data(), data()));
    const clap_param_info_t& parameter = Choose(parameters, random);
    events.push_back(SetAt(frame(), parameter, Choose(kWildValues, random), false));
  }
  return events;
}

TEST_P(ClapSuite, WildEventsDoNoHarm) {
  TestRandom random;
  plugin_.Activate(48000, 64);
  for (int32_t i = 0; i < 40; ++i) {
    const AudioBlock out = plugin_.Run(AudioBlock::Noise(2, 128, random), MakeWildEvents(plugin_, random),
                                       {random.Integer(1, 128)});
    ASSERT_TRUE(out.IsFinite() && out.GuardsHold());
    if (i % 8 == 3) plugin_->reset(plugin_.Get());
    if (i % 8 == 5) plugin_->on_main_thread(plugin_.Get());
    if (i % 20 != 9) continue;
    plugin_.Deactivate();
    plugin_->reset(plugin_.Get());
    plugin_.Flush(MakeWildEvents(plugin_, random));
    plugin_.Activate(22050, 8192);
  }
  for (const clap_param_info_t& each : plugin_.GetParameters()) {
    const double value = plugin_.GetValue(each);
    EXPECT_TRUE(value >= each.min_value && value <= each.max_value) << each.name;
  }
  const std::string text = plugin_.SaveState();
  EXPECT_TRUE(plugin_.LoadState(text));
  EXPECT_EQ(plugin_.SaveState(), text);
}

TEST_P(ClapSuite, StatesWithWrongBytesDoNoHarm) {
  TestRandom random;
  plugin_.Activate(8000, 64);
  for (int32_t i = 0; i < 200; ++i) {
    std::string text = plugin_.SaveState();
    for (int32_t k = 0; k < 3; ++k) Choose(text, random) = static_cast<char>(random.Below(256));
    plugin_.LoadState(text);
    ASSERT_TRUE(plugin_.Run(AudioBlock(2, 64)).IsFinite());
  }
}

TEST_P(ClapSuite, RatesThatNobodyUsesDoNoHarm) {
  TestRandom random;
  for (const double rate : {1.0, 1.4, 10.0, 1e6}) {
    ASSERT_TRUE(plugin_->activate(plugin_.Get(), rate, 8192, 1)) << rate;
    EXPECT_TRUE(plugin_.Run(AudioBlock::Noise(2, 1000, random), MakeWildEvents(plugin_, random)).IsFinite());
    plugin_.Deactivate();
  }
}

}  // namespace
