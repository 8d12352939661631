// The rows of a plug-in's table.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "core/MFormat.h"
#include "plugin/MPlugin.h"
#include "tests/common/Texts.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

void M_CALL FormatWithUnit(MString& text, double value, const MPluginParameter& row) {
  text = Format(row.unit).Arg(value).Text();
}

TEST(MPluginParameter, IsAnAutomatableRowWithoutKindOrTextsAtFirst) {
  const MPluginParameter row;
  EXPECT_EQ(row.kind, MParameterKind::kNone);
  for (const MString* text : {&row.name, &row.key, &row.help, &row.unit}) EXPECT_EQ(*text, "");
  EXPECT_EQ(row.reserved, 0);
  EXPECT_EQ(row.formatter, nullptr);
  EXPECT_EQ(row.automatable, 1);
  EXPECT_EQ(row.changed, 0);
  EXPECT_EQ(row.real.value, 0);
}

TEST(MPluginParameter, RealRowTakesItsDefaultAsValue) {
  MPluginParameter row;
  row.automatable = 0;
  AddRealParameter(row, "Feedback", "feedback", "<name>Feedback</name> returns.", -1.5, 0.8, 0.4, "{0;.1} dB",
                   FormatWithUnit);
  EXPECT_EQ(row.kind, MParameterKind::kReal);
  EXPECT_EQ(row.name, "Feedback");
  EXPECT_EQ(row.key, "feedback");
  EXPECT_EQ(row.help, "<name>Feedback</name> returns.");
  EXPECT_EQ(row.real.minimum, -1.5);
  EXPECT_EQ(row.real.maximum, 0.8);
  EXPECT_EQ(row.real.defaultValue, 0.4);
  EXPECT_EQ(row.real.value, 0.4);
  EXPECT_EQ(row.automatable, 0);  // stays as it was
  MString text;
  row.formatter(text, 6, row);
  EXPECT_EQ(text, "6.0 dB");
}

TEST(MPluginParameter, RealRowWithoutUnitAndFormatterHasNone) {
  MPluginParameter row;
  row.formatter = FormatWithUnit;
  row.unit = "left over";
  AddRealParameter(row, "Delay", "delay", "", 0, 1, 0.1);
  EXPECT_EQ(row.formatter, nullptr);
  EXPECT_EQ(row.unit, "");
}

TEST(MPluginParameter, SwitchRowTakesItsDefaultAsValue) {
  for (const bool isOn : {false, true}) {
    MPluginParameter row;
    AddSwitchParameter(row, "Enable", "enable", "<name>Enable</name> switches.", isOn);
    EXPECT_EQ(row.kind, MParameterKind::kSwitch);
    EXPECT_EQ(row.name, "Enable");
    EXPECT_EQ(row.key, "enable");
    EXPECT_EQ(row.help, "<name>Enable</name> switches.");
    EXPECT_EQ(row.onOff.defaultValue, isOn);
    EXPECT_EQ(row.onOff.value, isOn);
    EXPECT_EQ(MIsOn(row), isOn);
  }
}

TEST(MPluginParameter, AnyNumberButZeroSwitchesOn) {
  MPluginParameter row;
  AddSwitchParameter(row, "Enable", "enable", "", false);
  for (const int32_t value : {1, 2, -1, INT32_MAX, INT32_MIN}) {
    MStoreShared(row.onOff.value, value);
    EXPECT_TRUE(MIsOn(row)) << value;
  }
}

TEST(MPluginParameter, PanelHasANameAndNothingToKeep) {
  MPluginParameter row;
  AddPanel(row, "Low-pass filter");
  EXPECT_EQ(row.kind, MParameterKind::kPanel);
  EXPECT_EQ(row.name, "Low-pass filter");
  EXPECT_EQ(row.key, "");
  EXPECT_EQ(row.panel.open, nullptr);
}

TEST(MPluginParameter, TextIsItsAddressItsLengthAndItsFlag) {
  // A host of another make reads the record's bytes.
  const MString text("feedback");
  const void* address;
  int32_t length;
  uint32_t flags;
  const auto* const bytes = reinterpret_cast<const unsigned char*>(&text);
  std::memcpy(&address, bytes, sizeof address);
  std::memcpy(&length, bytes + sizeof address, sizeof length);
  std::memcpy(&flags, bytes + sizeof address + 4, sizeof flags);
  EXPECT_EQ(address, text.GetData());
  EXPECT_EQ(length, 8);
  EXPECT_EQ(flags, 1u);
}

TEST(MPluginEditorRow, IsAvailableAndClosedAtFirst) {
  const MPluginEditorRow row;
  EXPECT_EQ(row.kind, 0);
  EXPECT_EQ(row.name, "");
  EXPECT_EQ(row.available, 1);
  EXPECT_EQ(row.editor, nullptr);
}

double Limited(double value, double defaultValue = 0.25) {
  MPluginParameter row;
  AddRealParameter(row, "Delay", "delay", "", 0, 1, defaultValue);
  row.real.value = value;
  const double limited = MLimitedValue(row, -2, 3);
  EXPECT_EQ(std::memcmp(&row.real.value, &value, sizeof value), 0) << "the row keeps what was put there";
  return limited;
}

TEST(MLimitedValue, IsTheValueWithinTheLimits) {
  for (const double value : {-2.0, -0.0, 0.1, 2.999, 3.0}) EXPECT_EQ(Limited(value), value);
  EXPECT_EQ(Limited(std::numeric_limits<double>::denorm_min()), std::numeric_limits<double>::denorm_min());
}

TEST(MLimitedValue, IsTheNearerLimitForAValueOutside) {
  EXPECT_EQ(Limited(-2.001), -2);
  EXPECT_EQ(Limited(-1e308), -2);
  EXPECT_EQ(Limited(3.001), 3);
  EXPECT_EQ(Limited(1e308), 3);
}

TEST(MLimitedValue, IsTheDefaultForWhatIsNoFiniteNumber) {
  for (const double value : {kNaN, -kNaN, kInfinity, -kInfinity}) {
    EXPECT_EQ(Limited(value), 0.25);
    EXPECT_EQ(Limited(value, 7), 3);
    EXPECT_EQ(Limited(value, kInfinity), 3);
    EXPECT_EQ(Limited(value, -kInfinity), -2);
  }
}

TEST(MLimitedValue, IsALimitEvenIfTheDefaultIsNoNumberEither) {
  EXPECT_EQ(Limited(kNaN, kNaN), -2);
}

}  // namespace
