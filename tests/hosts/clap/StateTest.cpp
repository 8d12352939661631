#include "hosts/bridge/DawParameters.h"
#include "hosts/builtin/BuiltInPlugins.h"
#include "tests/hosts/clap/TestHost.h"

namespace {

void SetAllAtRandom(const ClapPlugin& plugin, TestRandom& random) {
  for (const clap_param_info_t& each : plugin.GetParameters())
    plugin.Flush({SetAt(0, each, ChooseValue(each, random))});
}

TEST_P(ClapSuite, StatesSurviveSingleBytesBeforeAndAfterActivation) {
  TestRandom random;
  for (const bool isActive : {false, true}) {
    if (isActive) plugin_.Activate();
    SetAllAtRandom(plugin_, random);
    const std::string text = plugin_.SaveState(1);
    EXPECT_EQ(plugin_.SaveState(), text);
    ClapPlugin other(GetParam(), host_);
    if (isActive) other.Activate();
    ASSERT_TRUE(other.LoadState(text, 1));
    EXPECT_EQ(other.SaveState(), text);
    for (const clap_param_info_t& each : plugin_.GetParameters())
      EXPECT_EQ(other.GetValue(each), plugin_.GetValue(each)) << each.name;
    EXPECT_EQ(host_.rescans, 0);
    other->on_main_thread(other.Get());
    EXPECT_EQ(host_.rescans, 1);
    host_.rescans = 0;
  }
}

TEST_P(ClapSuite, AStateThatIsLoadedBeforeActivationSoundsAsOneBehind) {
  TestRandom random;
  SetAllAtRandom(plugin_, random);
  const std::string text = plugin_.SaveState();
  ClapPlugin before(GetParam(), host_), behind(GetParam(), host_);
  EXPECT_TRUE(before.LoadState(text));
  before.Activate();
  behind.Activate();
  EXPECT_TRUE(behind.LoadState(text));
  behind.Deactivate();  // the next activation brings the latency
  behind.Activate();
  const AudioBlock in = AudioBlock::Noise(2, 8192, random);
  EXPECT_TRUE(before.Run(in) == behind.Run(in));
}

TEST_P(ClapSuite, AStateThatCannotBeReadLeavesThePluginAsItWas) {
  TestRandom random;
  SetAllAtRandom(plugin_, random);
  const std::string text = plugin_.SaveState();
  const std::vector<std::string> broken = {
      "",          "x",  std::string(5000, '\0'),       text.substr(0, text.size() / 2),
      "<preset/>", "/>", "<state plugin=\"Another\"/>", "<state plugin=\"Another"};
  for (const std::string& each : broken) {
    EXPECT_FALSE(plugin_.LoadState(each)) << each;
    EXPECT_EQ(plugin_.SaveState(), text) << each;
  }
  EXPECT_EQ(host_.errors.size(), broken.size());
}

TEST_P(ClapSuite, AStateOutsideOfTheRangesShowsValuesWithinThem) {
  for (const char* const number : {"nan", "inf", "-1e300", "99999999999999999999"}) {
    std::string text = "<state";
    for (const clap_param_info_t& each : plugin_.GetParameters())
      text +=
          " parameter" + static_cast<const bridge::DawParameter*>(each.cookie)->key + "=\"" + number + "\"";
    EXPECT_TRUE(plugin_.LoadState(text + "/>"));
    for (const clap_param_info_t& each : plugin_.GetParameters()) {
      const double value = plugin_.GetValue(each);
      EXPECT_TRUE(value >= each.min_value && value <= each.max_value) << each.name << ": " << value;
    }
  }
}

TEST_P(ClapSuite, StreamsThatFailAreRefused) {
  const auto* const state = plugin_.Find<clap_plugin_state_t>(CLAP_EXT_STATE);
  const std::string text = plugin_.SaveState();
  for (const int64_t result : {int64_t{-1}, int64_t{1} << 40}) {
    static int64_t given;
    given = result;
    const clap_istream_t in = {nullptr, [](const clap_istream_t*, void*, uint64_t) { return given; }};
    const clap_ostream_t out = {nullptr, [](const clap_ostream_t*, const void*, uint64_t) { return given; }};
    EXPECT_FALSE(state->load(plugin_.Get(), &in));
    EXPECT_FALSE(state->save(plugin_.Get(), &out));
  }
  const clap_istream_t in = {};
  const clap_ostream_t out = {};
  EXPECT_FALSE(state->load(plugin_.Get(), &in) || state->save(plugin_.Get(), &out));
  EXPECT_FALSE(state->load(plugin_.Get(), nullptr) || state->save(plugin_.Get(), nullptr));
  EXPECT_EQ(plugin_.SaveState(), text);
}

// Trees without the content have no presets.
TEST_P(ClapSuite, PresetsAreLoadedByTheirNames) {
  const auto* const load = plugin_.Find<sonvelle_clap_plugin_preset_load_t>(SONVELLE_CLAP_EXT_PRESET_LOAD);
  const bridge::PluginType& type = *bridge::FindPlugin(builtin::GetPlugins(), plugin_->desc->name);
  for (const bridge::Preset& preset : builtin::GetPresets(type)) {
    EXPECT_TRUE(
        load->from_location(plugin_.Get(), SONVELLE_CLAP_PRESET_IN_PLUGIN, nullptr, preset.name.c_str()));
    EXPECT_EQ(host_.presets.back(), preset.name);
  }
  const std::string text = plugin_.SaveState();
  const std::size_t loaded = host_.presets.size();
  EXPECT_FALSE(load->from_location(plugin_.Get(), SONVELLE_CLAP_PRESET_IN_PLUGIN, nullptr, "no such preset"));
  EXPECT_FALSE(load->from_location(plugin_.Get(), SONVELLE_CLAP_PRESET_IN_PLUGIN, nullptr, nullptr));
  EXPECT_FALSE(load->from_location(plugin_.Get(), SONVELLE_CLAP_PRESET_IN_FILE, "/x", "y"));
  EXPECT_EQ(host_.errors.size(), 3u);
  EXPECT_EQ(host_.presets.size(), loaded);
  EXPECT_EQ(plugin_.SaveState(), text);
}

}  // namespace
