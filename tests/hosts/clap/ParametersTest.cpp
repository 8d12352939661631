#include <fstream>
#include <set>

#include "hosts/bridge/DawParameters.h"
#include "tests/hosts/clap/TestHost.h"

namespace {

TEST_P(ClapSuite, ParametersSayWhatTheyAre) {
  std::set<clap_id> ids;
  std::set<std::string> names;
  for (const clap_param_info_t& each : plugin_.GetParameters()) {
    ids.insert(each.id);
    names.insert(each.name);
    EXPECT_TRUE(each.flags & CLAP_PARAM_IS_AUTOMATABLE) << each.name;
    EXPECT_LT(each.min_value, each.max_value) << each.name;
    EXPECT_TRUE(each.default_value >= each.min_value && each.default_value <= each.max_value) << each.name;
    EXPECT_EQ(plugin_.GetValue(each), each.default_value) << each.name;
    EXPECT_EQ(std::string(each.name).rfind(each.module, 0), 0u) << each.name << " is of " << each.module;
    EXPECT_NE(each.cookie, nullptr);
  }
  EXPECT_EQ(ids.size(), plugin_.GetParameters().size());
  EXPECT_EQ(names.size(), ids.size());
  const clap_param_info_t last = plugin_.GetParameters().back();
  EXPECT_EQ((last.flags & CLAP_PARAM_IS_BYPASS) != 0, !plugin_.IsInstrument());
  EXPECT_TRUE(last.flags & CLAP_PARAM_IS_STEPPED);
}

TEST_P(ClapSuite, TextsOfValuesAreReadBack) {
  TestRandom random;
  const auto* const extension = plugin_.Find<clap_plugin_params_t>(CLAP_EXT_PARAMS);
  for (const clap_param_info_t& each : plugin_.GetParameters()) {
    std::vector<double> values = {each.min_value, each.max_value, each.default_value};
    for (int32_t i = 0; i < 20; ++i) values.push_back(ChooseValue(each, random));
    for (const double value : values) {
      char text[256] = {}, again[256] = {};
      double read = NAN, reread = NAN;
      ASSERT_TRUE(extension->value_to_text(plugin_.Get(), each.id, value, text, sizeof text)) << each.name;
      ASSERT_TRUE(extension->text_to_value(plugin_.Get(), each.id, text, &read)) << each.name << ": " << text;
      EXPECT_TRUE(read >= each.min_value && read <= each.max_value) << each.name << ": " << text;
      // A rounded value may have a text of its own, "10.0 ms" for "10 ms", that means the same.
      ASSERT_TRUE(extension->value_to_text(plugin_.Get(), each.id, read, again, sizeof again));
      ASSERT_TRUE(extension->text_to_value(plugin_.Get(), each.id, again, &reread));
      EXPECT_EQ(reread, read) << each.name << ": " << text << ", " << again;
      if (each.flags & CLAP_PARAM_IS_STEPPED) {
        EXPECT_EQ(read, value) << each.name << ": " << text;
      }
    }
  }
}

TEST_P(ClapSuite, ParametersRefuseWhatTheyDoNotKnow) {
  const auto* const extension = plugin_.Find<clap_plugin_params_t>(CLAP_EXT_PARAMS);
  const clap_param_info_t first = plugin_.GetParameters()[0];
  clap_param_info_t info;
  char text[8] = "x";
  double value = 7;
  EXPECT_FALSE(extension->get_info(plugin_.Get(), extension->count(plugin_.Get()), &info));
  EXPECT_FALSE(extension->get_info(plugin_.Get(), 0, nullptr));
  EXPECT_FALSE(extension->get_value(plugin_.Get(), 12345, &value));
  EXPECT_FALSE(extension->value_to_text(plugin_.Get(), 12345, 0, text, sizeof text));
  EXPECT_FALSE(extension->value_to_text(plugin_.Get(), first.id, 0, text, 0));
  EXPECT_FALSE(extension->value_to_text(plugin_.Get(), first.id, 0, nullptr, 8));
  EXPECT_FALSE(extension->value_to_text(plugin_.Get(), first.id, NAN, text, sizeof text));
  EXPECT_FALSE(extension->text_to_value(plugin_.Get(), first.id, "nonsense", &value));
  EXPECT_FALSE(extension->text_to_value(plugin_.Get(), first.id, nullptr, &value));
  EXPECT_STREQ(text, "x");
  EXPECT_EQ(value, 7);
  EXPECT_TRUE(extension->value_to_text(plugin_.Get(), first.id, first.default_value, text, 2));
  EXPECT_LE(std::string(text).size(), 1u);
}

TEST_P(ClapSuite, FlushSetsValuesWithAndWithoutCookiesBeforeAndAfterActivation) {
  TestRandom random;
  for (const bool isActive : {false, true}) {
    if (isActive) plugin_.Activate();
    for (const bool hasCookie : {false, true}) {
      for (const clap_param_info_t& each : plugin_.GetParameters()) {
        const double value = ChooseValue(each, random);
        plugin_.Flush({SetAt(0, each, value, hasCookie)});
        EXPECT_EQ(plugin_.GetValue(each), value) << each.name;
      }
    }
  }
  plugin_->on_main_thread(plugin_.Get());
}

TEST_P(ClapSuite, ValuesFromOutsideAreLimited) {
  plugin_.Activate();
  for (clap_param_info_t each : plugin_.GetParameters()) {
    plugin_.Flush({SetAt(0, each, 1e300)});
    EXPECT_EQ(plugin_.GetValue(each), each.max_value) << each.name;
    plugin_.Flush({SetAt(0, each, -INFINITY)});
    EXPECT_EQ(plugin_.GetValue(each), each.min_value) << each.name;
    plugin_.Flush({SetAt(0, each, NAN)});
    EXPECT_EQ(plugin_.GetValue(each), each.min_value) << each.name;
    for (const uintptr_t wrong :
         {uintptr_t{1}, reinterpret_cast<uintptr_t>(each.cookie) + 8, ~uintptr_t{0}}) {
      each.cookie = reinterpret_cast<void*>(wrong);
      plugin_.Flush({SetAt(0, each, each.default_value)});
      EXPECT_EQ(plugin_.GetValue(each), each.default_value) << each.name;
    }
  }
}

TEST_P(ClapSuite, EventsOfForeignSpacesAndHalfEventsChangeNothing) {
  plugin_.Activate();
  const std::string before = plugin_.SaveState();
  std::vector<TestEvent> events;
  for (const clap_param_info_t& each : plugin_.GetParameters()) {
    events.push_back(SetAt(0, each, each.max_value));
    events.back().header.space_id = 0x5A;
    events.push_back(SetAt(1, each, each.min_value));
    events.back().header.size = sizeof(clap_event_header_t);
    events.push_back(SetAt(2, each, each.max_value));
    events.back().value.param_id = 12345;
    events.back().value.cookie = nullptr;
    events.push_back(SetAt(3, each, each.max_value));
    events.back().header.type = CLAP_EVENT_PARAM_MOD;
  }
  TestRandom random(1);
  const AudioBlock in = AudioBlock::Noise(2, 64, random);
  const AudioBlock out = plugin_.Run(in, events);
  EXPECT_EQ(plugin_.SaveState(), before);
  plugin_->reset(plugin_.Get());
  ClapPlugin other(GetParam(), host_);
  other.Activate();
  EXPECT_TRUE(other.Run(in) == out);
}

TEST(ClapParameters, KeepTheDecimalNumberThatAHostWithFloatsMeans) {
  TestHost host;
  const ClapPlugin plugin("com.sonvelle.echolan", host);
  const clap_param_info_t delay = plugin.GetParameter("Delay");
  plugin.Flush({SetAt(0, delay, double{0.3f})});
  EXPECT_EQ(plugin.GetValue(delay), 0.3);
  plugin.Flush({SetAt(0, delay, 0x1p-16)});
  EXPECT_EQ(plugin.GetValue(delay), 0x1p-16);
}

TEST(ClapParameters, CutValuesBetweenTwoSteps) {
  TestHost host;
  const ClapPlugin plugin("com.sonvelle.echolan", host);
  const clap_param_info_t bypass = plugin.GetParameter("Bypass");
  char text[8];
  plugin.Find<clap_plugin_params_t>(CLAP_EXT_PARAMS)
      ->value_to_text(plugin.Get(), bypass.id, 0.9, text, sizeof text);
  EXPECT_STREQ(text, "Off");
  plugin.Flush({SetAt(0, bypass, 0.9)});
  EXPECT_EQ(plugin.GetValue(bypass), 0);
}

// Songs keep these numbers.
TEST(ClapParameters, HaveTheIdsOfTheTable) {
  std::string ids = "# Ids of plug-ins and of their parameters, with the keys that they are made of.\n";
  TestHost host;
  for (const std::string& id : ClapPlugin::GetIds()) {
    const ClapPlugin plugin(id, host);
    for (const clap_param_info_t& each : plugin.GetParameters())
      ids += id + "\t" + std::to_string(each.id) + "\t" +
             static_cast<const bridge::DawParameter*>(each.cookie)->key + "\n";
  }
  std::ifstream file(SONVELLE_CLAP_IDS);
  const std::string table(std::istreambuf_iterator<char>(file), {});
  EXPECT_EQ(ids, table) << ids;
}

}  // namespace
