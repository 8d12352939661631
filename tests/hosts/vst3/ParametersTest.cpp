// Parameters, units and programs as a host sees them.

#include <cmath>
#include <set>

#include "hosts/vst3/Text.h"
#include "tests/hosts/vst3/AllPlugins.h"

namespace {

using host::HostedPlugin;
using host::ToText;

class Vst3Parameters : public testing::TestWithParam<std::string> {
 protected:
  double ReadText(v3_param_id id, const std::string& text) {
    v3_str_128 units;
    vst3::WriteText(text, units);
    double value = -1;
    const v3_result result =
        v3_cpp_obj(plugin_.controller)->get_parameter_value_for_string(plugin_.controller, id, units, &value);
    EXPECT_EQ(result, V3_OK) << text;
    return value;
  }

  HostedPlugin plugin_{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Plugins, Vst3Parameters, testing::ValuesIn(host::GetAll()), host::NameTest);

TEST_P(Vst3Parameters, HaveIdsOfTheirOwnAndStandAtTheirDefaults) {
  std::set<v3_param_id> ids;
  int32_t bypasses = 0;
  for (const v3_param_info& info : plugin_.GetParameters()) {
    EXPECT_TRUE(ids.insert(info.param_id).second);
    EXPECT_LT(info.param_id, 0x80000000u);
    EXPECT_FALSE(ToText(info.title).empty());
    EXPECT_DOUBLE_EQ(plugin_.Get(info.param_id), info.default_normalised_value) << ToText(info.title);
    bypasses += (info.flags & V3_PARAM_IS_BYPASS) ? 1 : 0;
    EXPECT_FALSE((info.flags & V3_PARAM_IS_HIDDEN) && (info.flags & V3_PARAM_CAN_AUTOMATE));
  }
  EXPECT_EQ(bypasses, plugin_.IsInstrument() ? 0 : 1);
}

TEST_P(Vst3Parameters, KeepWhatIsSetAndStepWhereTheyHaveSteps) {
  for (const v3_param_info& info : plugin_.GetParameters())
    for (const double value : {0.0, 0.1, 0.25, 0.5, 0.77, 1.0}) {
      EXPECT_EQ(plugin_.Set(info.param_id, value), V3_OK);
      const int32_t steps = info.step_count;
      const double expected = steps > 0 ? std::round(value * steps) / steps : value;
      EXPECT_NEAR(plugin_.Get(info.param_id), expected, 1e-9) << ToText(info.title);
    }
}

TEST_P(Vst3Parameters, LeadFromPlainToNormalizedAndBack) {
  const v3_edit_controller& controller = *v3_cpp_obj(plugin_.controller);
  for (const v3_param_info& info : plugin_.GetParameters())
    for (int32_t i = 0; i <= 10; ++i) {
      const double plain =
          controller.normalised_parameter_to_plain(plugin_.controller, info.param_id, i / 10.0);
      const double back = plugin_.ToNormalized(info.param_id, plain);
      EXPECT_EQ(controller.normalised_parameter_to_plain(plugin_.controller, info.param_id, back), plain);
    }
}

TEST_P(Vst3Parameters, HaveTextsThatReadBackWithAndWithoutTheUnit) {
  for (const v3_param_info& info : plugin_.GetParameters()) {
    const std::string unit = ToText(info.units);
    for (int32_t i = 0; i <= 10; ++i) {
      const std::string text = plugin_.GetText(info.param_id, i / 10.0);
      EXPECT_FALSE(text.empty());
      EXPECT_TRUE(unit.empty() || !text.ends_with(unit)) << text;
      EXPECT_EQ(plugin_.GetText(info.param_id, ReadText(info.param_id, text)), text) << ToText(info.title);
      EXPECT_EQ(plugin_.GetText(info.param_id, ReadText(info.param_id, text + " " + unit)), text);
    }
  }
}

TEST_P(Vst3Parameters, RefuseTextsThatMeanNothing) {
  for (const v3_param_info& info : plugin_.GetParameters()) {
    v3_str_128 text;
    vst3::WriteText("\xF0\x9F\x8E\xB5 no value", text);
    double value = 7;
    EXPECT_EQ(v3_cpp_obj(plugin_.controller)
                  ->get_parameter_value_for_string(plugin_.controller, info.param_id, text, &value),
              V3_FALSE);
    EXPECT_EQ(value, 7);
  }
}

TEST_P(Vst3Parameters, BelongToUnitsNamedByTheirPanels) {
  v3_unit_information** const units = plugin_.Query<v3_unit_information>(v3_unit_information_iid);
  const v3_unit_information& table = *v3_cpp_obj(units);
  const int32_t count = table.get_unit_count(units);
  v3_unit_info info = {};
  EXPECT_EQ(table.get_unit_info(units, count, &info), V3_INVALID_ARG);
  EXPECT_EQ(table.get_unit_info(units, 0, nullptr), V3_INVALID_ARG);
  for (int32_t i = 0; i < count; ++i) {
    ASSERT_EQ(table.get_unit_info(units, i, &info), V3_OK);
    EXPECT_EQ(info.id, i);
    EXPECT_EQ(info.parent_unit_id, i == 0 ? -1 : 0);
    EXPECT_FALSE(ToText(info.name).empty());
  }
  for (const v3_param_info& parameter : plugin_.GetParameters()) {
    ASSERT_EQ(table.get_unit_info(units, parameter.unit_id, &info), V3_OK);
    if (parameter.unit_id == 0) continue;
    EXPECT_EQ(ToText(parameter.title), ToText(info.name) + " " + ToText(parameter.short_title));
  }
  int32_t unit = -1;
  EXPECT_EQ(table.get_unit_by_bus(units, V3_AUDIO, V3_OUTPUT, 0, 0, &unit), V3_OK);
  EXPECT_EQ(unit, 0);
  EXPECT_EQ(table.get_unit_by_bus(units, V3_AUDIO, V3_OUTPUT, 1, 0, &unit), V3_INVALID_ARG);
}

TEST(Vst3Units, AreTheOscillatorsOfBellwarp) {
  const HostedPlugin plugin("Bellwarp");
  v3_unit_information** const units = plugin.Query<v3_unit_information>(v3_unit_information_iid);
  v3_unit_info info = {};
  ASSERT_EQ(v3_cpp_obj(units)->get_unit_count(units), 3);
  v3_cpp_obj(units)->get_unit_info(units, 2, &info);
  EXPECT_EQ(ToText(info.name), "Oscillator 2");
}

TEST(Vst3ParameterUnits, StandBesideTheTextsThatLackThem) {
  const HostedPlugin echolan("Echolan"), slotter("Slotter"), squeezel("Squeezel");
  const auto unit = [](const HostedPlugin& plugin, const char* title) {
    for (const v3_param_info& info : plugin.GetParameters())
      if (ToText(info.title) == title) return ToText(info.units);
    return std::string("no such parameter");
  };
  EXPECT_EQ(unit(echolan, "Delay"), "ms");
  EXPECT_EQ(unit(echolan, "Feedback"), "");  // "silence" has none
  EXPECT_EQ(unit(slotter, "Low-pass filter Frequency"), "Hz");
  EXPECT_EQ(unit(slotter, "Low-pass filter Resonance"), "%");
  EXPECT_EQ(unit(squeezel, "Gain"), "dB");
  EXPECT_EQ(echolan.GetText(host::FindId(echolan, "Delay"), 0.2), "100");
  EXPECT_EQ(slotter.GetText(host::FindId(slotter, "Low-pass filter Frequency"), 1), "20.0k");
  EXPECT_EQ(squeezel.GetText(host::FindId(squeezel, "Knee mode"), 1), "Soft");
}

TEST(Vst3Controllers, AreMappedToHiddenParametersOfEachChannel) {
  const HostedPlugin plugin("Toneloom4NN");
  v3_midi_mapping** const mapping = plugin.Query<v3_midi_mapping>(v3_midi_mapping_iid);
  const auto get = v3_cpp_obj(mapping)->get_midi_controller_assignment;
  std::set<v3_param_id> ids;
  for (int16_t channel = 0; channel < 16; ++channel)
    for (const int16_t controller : std::initializer_list<int16_t>{64, 120, 121, 123}) {
      v3_param_id id = 0;
      EXPECT_EQ(get(mapping, 0, channel, controller, &id), V3_OK);
      ids.insert(id);
    }
  EXPECT_EQ(ids.size(), 64u);
  EXPECT_EQ(*ids.begin(), 0x4D494449u);  // songs hold them
  EXPECT_EQ(*ids.rbegin(), 0x4D494449u + 63);
  EXPECT_EQ(host::FindId(plugin, "Program"), 0x50524F47u);
  v3_param_id id = 0;
  EXPECT_EQ(get(mapping, 0, 0, 64, nullptr), V3_INVALID_ARG);
  EXPECT_EQ(get(mapping, 1, 0, 64, &id), V3_FALSE);
  EXPECT_EQ(get(mapping, 0, 16, 64, &id), V3_FALSE);
  EXPECT_EQ(get(mapping, 0, -1, 64, &id), V3_FALSE);
  EXPECT_EQ(get(mapping, 0, 0, 1, &id), V3_FALSE);
  for (const v3_param_info& info : plugin.GetParameters())
    EXPECT_EQ(ids.contains(info.param_id), (info.flags & V3_PARAM_IS_HIDDEN) != 0);
}

}  // namespace
