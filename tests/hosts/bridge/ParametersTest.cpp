#include "hosts/bridge/Parameters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "hosts/bridge/Plugin.h"
#include "tests/hosts/FakePlugin.h"

namespace {

// Rows without formatters.
struct Rows {
  Rows() {
    real.kind = MParameterKind::kReal;
    real.real = {-1, 0.8, 0.4, 0.4};
    integer.kind = MParameterKind::kInteger;
    integer.integer = {-3, 5, 2, 2};
    list.kind = MParameterKind::kEnumeration;
    list.enumeration = {kChoices, 2, 1, 1};
    onOff.kind = MParameterKind::kSwitch;
    onOff.onOff = {1, 1};
    panel.kind = MParameterKind::kPanel;
    panel.panel = {0, nullptr};
  }

  static constexpr const char* kChoices[] = {"Soft 1", "Clip"};
  MPluginParameter real, integer, list, onOff, panel;
};

double Stored(MPluginParameter& row, double value) {
  bridge::StoreValue(row, value);
  return bridge::LoadValue(row);
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(Parameters, TellRangesInTableUnits) {
  const Rows rows;
  EXPECT_EQ(bridge::GetRange(rows.real).minimum, -1);
  EXPECT_EQ(bridge::GetRange(rows.real).maximum, 0.8);
  EXPECT_EQ(bridge::GetRange(rows.real).defaultValue, 0.4);
  EXPECT_EQ(bridge::GetRange(rows.integer).minimum, -3);
  EXPECT_EQ(bridge::GetRange(rows.integer).maximum, 5);
  EXPECT_EQ(bridge::GetRange(rows.list).maximum, 1);
  EXPECT_EQ(bridge::GetRange(rows.list).defaultValue, 1);
  EXPECT_EQ(bridge::GetRange(rows.onOff).maximum, 1);
  EXPECT_EQ(bridge::GetRange(rows.onOff).defaultValue, 1);
}

TEST(Parameters, OnlyGroupsHaveNoValue) {
  const Rows rows;
  for (const auto* row : {&rows.real, &rows.integer, &rows.list, &rows.onOff})
    EXPECT_TRUE(bridge::HasValue(*row));
  EXPECT_FALSE(bridge::HasValue(rows.panel));
  EXPECT_FALSE(bridge::HasValue(MPluginParameter()));
  EXPECT_FALSE(bridge::IsWhole(rows.real));
  EXPECT_TRUE(bridge::IsWhole(rows.list));
}

TEST(Parameters, KeepValuesWithinTheirRange) {
  Rows rows;
  EXPECT_EQ(Stored(rows.real, 0.25), 0.25);
  EXPECT_EQ(Stored(rows.real, 0.9), 0.8);
  EXPECT_EQ(Stored(rows.real, -kInfinity), -1);
  EXPECT_EQ(Stored(rows.integer, 1e300), 5);
  EXPECT_EQ(Stored(rows.integer, -2.6), -3);
  EXPECT_EQ(Stored(rows.list, 0.4), 0);
  EXPECT_EQ(Stored(rows.list, 7), 1);
  EXPECT_EQ(Stored(rows.onOff, 0), 0);
  EXPECT_EQ(Stored(rows.onOff, kInfinity), 1);
}

TEST(Parameters, TakeNoValueThatIsNoNumber) {
  Rows rows;
  EXPECT_EQ(Stored(rows.real, std::nan("")), 0.4);
  EXPECT_EQ(Stored(rows.integer, std::nan("")), 2);
}

TEST(Parameters, OfAnEmptyListHaveTheFirstChoiceAndShowItsNumber) {
  Rows rows;
  rows.list.enumeration = {nullptr, 0, 0, 0};
  EXPECT_EQ(Stored(rows.list, 3), 0);
  EXPECT_EQ(bridge::GetText(rows.list, 0), "0");
}

TEST(Parameters, WithoutAFormatterAreShownByTheirKind) {
  const Rows rows;
  EXPECT_EQ(bridge::GetText(rows.real, 0.12345), "0.1235");
  EXPECT_EQ(bridge::GetText(rows.integer, -3), "-3");
  EXPECT_EQ(bridge::GetText(rows.list, 1), "Clip");
  EXPECT_EQ(bridge::GetText(rows.list, 2), "2");
  EXPECT_EQ(bridge::GetText(rows.list, -1), "-1");
  EXPECT_EQ(bridge::GetText(rows.onOff, 1), "1");
}

TEST(Parameters, WithAFormatterAreShownAsItSays) {
  const bridge::Plugin plugin(FakePlugin::EntryPoint);
  EXPECT_EQ(bridge::GetText(plugin.GetParameters()[FakePlugin::kGain], 0.5), "\u00D7 0.5");
}

TEST(Parameters, AreReadFromTheTextsThatAreShown) {
  Rows rows;
  EXPECT_EQ(bridge::ReadText(rows.list, "clip"), 1);
  EXPECT_EQ(bridge::ReadText(rows.list, "Soft 2"), std::nullopt);
  EXPECT_EQ(bridge::ReadText(rows.onOff, "off"), 0);
  EXPECT_EQ(bridge::ReadText(rows.integer, " 5 "), 5);
  EXPECT_EQ(bridge::ReadText(rows.real, "\xff"), std::nullopt);
  EXPECT_EQ(bridge::ReadText(rows.panel, "1"), std::nullopt);
  rows.real.formatter = [](MString& text, double value, const MPluginParameter&) {
    text = MString::FromDouble(1000 * value, 0);
    text.Append(MString(u" \u00B5s"));
  };
  rows.real.real = {0, 1, 0.5, 0.5};
  const std::optional<double> value = bridge::ReadText(rows.real, "250 \u00B5s");
  ASSERT_TRUE(value);
  EXPECT_NEAR(*value, 0.25, 0.0005);
}

TEST(Parameters, LoseTheMarkUpOfTheirHelpAndNothingElse) {
  MPluginParameter row;
  row.help = "<name>Depth</name> is < 2 and <b>not</b> > 1, a<b in <3 lines <unclosed";
  EXPECT_EQ(bridge::GetPlainHelp(row), "Depth is < 2 and not > 1, a<b in <3 lines <unclosed");
}

}  // namespace
