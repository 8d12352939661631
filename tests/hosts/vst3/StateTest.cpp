// States, programs, and what the host is told of.

#include <thread>

#include "hosts/vst3/Text.h"
#include "tests/hosts/vst3/AllPlugins.h"

namespace {

using host::Changes;
using host::HostedPlugin;
using host::Planes;

class Vst3State : public testing::TestWithParam<std::string> {
 protected:
  // Moves all parameters of a plug-in.
  static void Move(HostedPlugin& plugin) {
    for (const v3_param_info& info : plugin.GetParameters())
      if (info.flags & V3_PARAM_CAN_AUTOMATE) plugin.Set(info.param_id, 0.3712345);
  }
  static std::vector<double> GetValues(const HostedPlugin& plugin) {
    std::vector<double> values;
    for (const v3_param_info& info : plugin.GetParameters())
      if (info.flags & V3_PARAM_CAN_AUTOMATE) values.push_back(plugin.Get(info.param_id));
    return values;
  }

  HostedPlugin plugin_{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Plugins, Vst3State, testing::ValuesIn(host::GetAll()), host::NameTest);

TEST_P(Vst3State, ComesBackByteForByteInPortionsOfAnySize) {
  Move(plugin_);
  const std::string state = plugin_.SaveState();
  EXPECT_EQ(plugin_.SaveState(1), state);
  for (const int32_t portion : {1, 7, 1 << 30}) {
    HostedPlugin other(GetParam());
    EXPECT_EQ(other.LoadState(state, portion), V3_OK);
    EXPECT_EQ(other.SaveState(), state);
    EXPECT_EQ(GetValues(other), GetValues(plugin_));
  }
}

TEST_P(Vst3State, ThatIsForeignOrBrokenChangesNothing) {
  Move(plugin_);
  const std::string state = plugin_.SaveState();
  const std::string other = HostedPlugin(GetParam() == "Echolan" ? "Swirlo" : "Echolan").SaveState();
  for (const std::string& text :
       {std::string(), std::string("no state"), std::string("<preset/>"), std::string("/>"), other,
        state.substr(0, state.size() / 2), std::string(5000, '\0')}) {
    EXPECT_NE(plugin_.LoadState(text), V3_OK) << text;
    EXPECT_EQ(plugin_.SaveState(), state);
  }
}

TEST_P(Vst3State, ThatCannotBeWrittenIsAnError) {
  host::Stream stream({}, 10);
  stream.limit = 20;
  EXPECT_NE(v3_cpp_obj(plugin_.component)->get_state(plugin_.component, stream.Get()), V3_OK);
}

TEST_P(Vst3State, NeedsNothingOfTheController) {
  host::Stream stream;
  const v3_edit_controller& controller = *v3_cpp_obj(plugin_.controller);
  EXPECT_EQ(controller.get_state(plugin_.controller, stream.Get()), V3_OK);
  EXPECT_EQ(stream.text, "");
  EXPECT_EQ(controller.set_state(plugin_.controller, stream.Get()), V3_OK);
  host::Stream state(plugin_.SaveState());
  EXPECT_EQ(controller.set_component_state(plugin_.controller, state.Get()), V3_OK);
}

// Those of the plug-in's programs; every plug-in with states of its own has them.
TEST_P(Vst3State, HasProgramsThatLoadWhatComesWithThePlugin) {
  v3_unit_information** const units = plugin_.Query<v3_unit_information>(v3_unit_information_iid);
  const v3_unit_information& table = *v3_cpp_obj(units);
  std::vector<v3_param_info> programs = plugin_.GetParameters();
  std::erase_if(programs, [](const v3_param_info& info) { return !(info.flags & V3_PARAM_PROGRAM_CHANGE); });
  v3_unit_info root = {};
  v3_program_list_info list = {};
  ASSERT_EQ(table.get_unit_info(units, 0, &root), V3_OK);
  ASSERT_EQ(table.get_program_list_count(units), static_cast<int32_t>(programs.size()));
  if (programs.empty()) {
    EXPECT_EQ(root.program_list_id, -1);
    EXPECT_EQ(table.get_program_list_info(units, 0, &list), V3_INVALID_ARG);
    return;
  }
  ASSERT_EQ(table.get_program_list_info(units, 0, &list), V3_OK);
  EXPECT_EQ(root.program_list_id, list.id);
  EXPECT_EQ(programs[0].step_count, list.programCount - 1);
  const std::string first = plugin_.SaveState();
  std::string last = first;
  for (int32_t i = 0; i < list.programCount; ++i) {
    v3_str_128 name = {};
    ASSERT_EQ(table.get_program_name(units, list.id, i, name), V3_OK);
    const double value = plugin_.ToNormalized(programs[0].param_id, i);
    EXPECT_EQ(plugin_.GetText(programs[0].param_id, value), host::ToText(name));
    plugin_.handler.flags = 0;
    EXPECT_EQ(plugin_.Set(programs[0].param_id, value), V3_OK);
    EXPECT_EQ(plugin_.Get(programs[0].param_id), value);
    EXPECT_EQ(plugin_.handler.flags, i == 0 ? 0 : V3_RESTART_PARAM_VALUES_CHANGED);
    EXPECT_EQ(plugin_.SaveState() == last, i == 0) << i;
    last = plugin_.SaveState();
  }
  EXPECT_EQ(plugin_.Set(programs[0].param_id, 0), V3_OK);
  EXPECT_EQ(plugin_.SaveState(), first);
  v3_str_128 name = {};
  EXPECT_EQ(table.get_program_name(units, list.id, list.programCount, name), V3_INVALID_ARG);
  EXPECT_EQ(table.get_program_name(units, list.id + 1, 0, name), V3_INVALID_ARG);
  EXPECT_EQ(table.get_program_name(units, list.id, 0, nullptr), V3_INVALID_ARG);
}

class Vst3EffectState : public Vst3State {};
INSTANTIATE_TEST_SUITE_P(Effects, Vst3EffectState, testing::ValuesIn(host::GetEffects()), host::NameTest);

TEST_P(Vst3EffectState, MakesTheSameSoundBeforeAndAfterActivation) {
  Move(plugin_);
  const std::string state = plugin_.SaveState();
  HostedPlugin before(GetParam()), after(GetParam());
  EXPECT_EQ(before.LoadState(state), V3_OK);
  before.Start({});
  after.Start({});
  EXPECT_EQ(after.LoadState(state), V3_OK);
  Planes samples = host::MakeNoise(2, 4096), same = samples;
  before.Process(samples);
  after.Process(same);
  EXPECT_EQ(samples, same);
}

TEST(Vst3Program, ThatTheHostRepeatsBehindAStateDoesNotReplaceIt) {
  HostedPlugin plugin("Toneloom4NN");
  const v3_param_id program = host::FindId(plugin, "Program");
  const v3_param_id release = host::FindId(plugin, "Release");
  plugin.Set(program, 1);
  plugin.Set(release, 0.5);
  const std::string state = plugin.SaveState();
  plugin.Set(program, 1);
  EXPECT_EQ(plugin.SaveState(), state);
  HostedPlugin other("Toneloom4NN");
  EXPECT_EQ(other.LoadState(state), V3_OK);
  other.Set(program, other.Get(program));
  EXPECT_EQ(other.SaveState(), state);
}

TEST(Vst3Program, OfAQueueIsLoadedWhenTheHostCallsNext) {
  HostedPlugin plugin("Toneloom4NN"), set("Toneloom4NN");
  const v3_param_id program = host::FindId(plugin, "Program");
  plugin.Start({});
  Planes samples = host::MakeNoise(2, 64);
  Changes changes;
  changes.Add(program, {{0, 1}});
  plugin.Process(samples, 0, 64, &changes);
  EXPECT_EQ(plugin.Get(program), 1);
  EXPECT_EQ(plugin.handler.flags, V3_RESTART_PARAM_VALUES_CHANGED);
  set.Set(program, 1);
  EXPECT_EQ(plugin.SaveState(), set.SaveState());
}

// Some hosts hold a lock while they set it, for which what they are told would wait for ever.
TEST(Vst3Program, ThatIsSetTellsItsValuesAtTheNextCall) {
  HostedPlugin plugin("Toneloom4NN");
  const v3_param_id program = host::FindId(plugin, "Program");
  plugin.Get(program);
  const int32_t before = plugin.handler.restarts;
  plugin.Set(program, 1);
  EXPECT_EQ(plugin.handler.restarts, before);
  plugin.Get(program);
  EXPECT_EQ(plugin.handler.restarts, before + 1);
  EXPECT_EQ(plugin.handler.flags, V3_RESTART_PARAM_VALUES_CHANGED);
}

TEST(Vst3Latency, IsToldToTheHostAtItsNextCallAndNotWithinABlock) {
  HostedPlugin plugin("Quaverly");
  const auto latency = [&] { return v3_cpp_obj(plugin.processor)->get_latency_samples(plugin.processor); };
  const auto depth = host::FindId(plugin, "Depth");
  plugin.Start({});
  const uint32_t before = latency();
  EXPECT_GT(before, 0u);
  Planes samples = host::MakeNoise(2, 512);
  plugin.Get(depth);
  EXPECT_EQ(plugin.handler.restarts, 0) << "known from the beginning";
  Changes changes;
  changes.Add(depth, {{100, 1}});
  plugin.Process(samples, 0, 512, &changes);
  EXPECT_GT(latency(), before);
  EXPECT_EQ(plugin.handler.restarts, 0);
  plugin.Get(depth);
  EXPECT_EQ(plugin.handler.flags, V3_RESTART_LATENCY_CHANGED);
  plugin.Get(depth);
  EXPECT_EQ(plugin.handler.restarts, 1);
}

TEST(Vst3Tail, FollowsTheSettingsAndMayBeInfinite) {
  HostedPlugin plugin("Echolan");
  const auto tail = [&] { return v3_cpp_obj(plugin.processor)->get_tail_samples(plugin.processor); };
  plugin.Start({});
  const uint32_t before = tail();
  EXPECT_GT(before, 4800u);  // one echo at least
  EXPECT_LT(before, 480000u);
  plugin.Stop();
  plugin.Set(host::FindId(plugin, "Feedback"), 0);
  plugin.Start({});
  EXPECT_LT(tail(), before);
  plugin.Stop();
  EXPECT_EQ(plugin.LoadState(R"(<state parameterfeedback="1.0000"/>)"), V3_OK);
  plugin.Start({2, 8000});
  EXPECT_EQ(tail(), 0xFFFFFFFFu);
  EXPECT_EQ(
      v3_cpp_obj(HostedPlugin("Slotter").processor)->get_tail_samples(HostedPlugin("Slotter").processor),
      0u);  // nothing is known before there is a format
}

TEST(Vst3Tail, OfAnInstrumentIsItsRelease) {
  HostedPlugin plugin("Toneloom4NN");
  plugin.Start({2, 48000, 64});
  Planes samples(2, std::vector<float>(64));
  uint32_t tail = 0;
  std::thread([&] {
    Changes changes;
    changes.Add(host::FindId(plugin, "Release"), {{0, 0.5}});
    plugin.Process(samples, 0, 64, &changes);
    tail = v3_cpp_obj(plugin.processor)->get_tail_samples(plugin.processor);
  }).join();
  EXPECT_EQ(tail, 240000u);
}

}  // namespace
