#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/MXMLItem.h"
#include "plugin/MPlugin.h"
#include "tests/common/CommaLocale.h"
#include "tests/common/Texts.h"

namespace {

const char* const kChoices[] = {"Soft 1", "Soft 2", "Clip 1"};

// One row of every kind, and a panel that is not kept.
class StatePlugin : public MPlugin {
 public:
  StatePlugin() {
    AddRealParameter(rows[kReal], "Real", "real", "", -1, 1, 0.4);
    rows[kInteger].kind = MParameterKind::kInteger;
    rows[kInteger].key = "integer";
    rows[kInteger].integer = {-10, 10, -3, -3};
    rows[kChoice].kind = MParameterKind::kEnumeration;
    rows[kChoice].key = "choice";
    rows[kChoice].enumeration = {kChoices, 3, 1, 1};
    rows[kSwitch].kind = MParameterKind::kSwitch;
    rows[kSwitch].key = "switch";
    rows[kSwitch].onOff = {1, 1};
    for (const int32_t panel : {kPanel, kLoosePanel}) rows[panel].kind = MParameterKind::kPanel;
    rows[kPanel].key = "panel";
    rows[kPanel].panel = {0, &open};
    rows[kLoosePanel].key = "loose";
    rows[kLoosePanel].panel = {0, nullptr};
    SetParameters(rows);
  }
  void Update() override { ++updates; }

  enum { kReal, kInteger, kChoice, kSwitch, kPanel, kLoosePanel, kNone, kCount };
  MPluginParameter rows[kCount];
  int8_t open = 0;
  int32_t updates = 0;
};

std::string Value(const MXMLItem& item, const char* key) {
  return Utf8(item.GetAttribute(MString::Literal(key), "missing"));
}

TEST(MPluginState, EachKindHasItsText) {
  StatePlugin plugin;
  plugin.open = -2;
  MXMLItem item;
  EXPECT_FALSE(plugin.SaveState(item));
  EXPECT_EQ(Value(item, "parameterreal"), "0.4000");
  EXPECT_EQ(Value(item, "parameterinteger"), "-3");
  EXPECT_EQ(Value(item, "parameterchoice"), "1");
  EXPECT_EQ(Value(item, "parameterswitch"), "1");
  EXPECT_EQ(Value(item, "parameterpanel"), "-2");
  EXPECT_EQ(item.GetAttributes().GetCount(), 5)
      << "a panel without a byte and a row without a kind have none";
}

TEST(MPluginState, RealValuesCarryFourDecimals) {
  StatePlugin plugin;
  plugin.rows[StatePlugin::kReal].real.value = 0.123456;
  MXMLItem item;
  plugin.SaveState(item);
  EXPECT_EQ(Value(item, "parameterreal"), "0.1235");
  EXPECT_FALSE(plugin.LoadState(item));
  EXPECT_EQ(plugin.rows[StatePlugin::kReal].real.value, 0.1235);
  plugin.rows[StatePlugin::kReal].real.value = 1e-40;
  plugin.SaveState(item);
  plugin.LoadState(item);
  EXPECT_EQ(plugin.rows[StatePlugin::kReal].real.value, 0);
}

TEST(MPluginState, SavingTouchesNoOtherAttribute) {
  StatePlugin plugin;
  MXMLItem item;
  item.SetAttribute("preset", "mine");
  item.SetAttribute("PARAMETERREAL", "7");
  plugin.SaveState(item);
  plugin.SaveState(item);
  EXPECT_EQ(item.GetAttributes().GetCount(), 6);
  EXPECT_EQ(Value(item, "preset"), "mine");
  EXPECT_EQ(Value(item, "parameterreal"), "0.4000");
}

TEST(MPluginState, AnEmptyItemGivesTheDefaultsAndUpdatesOnce) {
  StatePlugin plugin;
  plugin.rows[StatePlugin::kReal].real.value = 0.9;
  plugin.rows[StatePlugin::kInteger].integer.value = 9;
  plugin.rows[StatePlugin::kChoice].enumeration.value = 2;
  plugin.rows[StatePlugin::kSwitch].onOff.value = 0;
  plugin.open = 1;
  MXMLItem item;
  EXPECT_FALSE(plugin.LoadState(item));
  EXPECT_EQ(plugin.rows[StatePlugin::kReal].real.value, 0.4);
  EXPECT_EQ(plugin.rows[StatePlugin::kInteger].integer.value, -3);
  EXPECT_EQ(plugin.rows[StatePlugin::kChoice].enumeration.value, 1);
  EXPECT_EQ(plugin.rows[StatePlugin::kSwitch].onOff.value, 1);
  EXPECT_EQ(plugin.open, 0);
  EXPECT_EQ(plugin.updates, 1);
}

TEST(MPluginState, AbsentAttributesCountAsTheDefaultWithFourDecimals) {
  StatePlugin plugin;
  plugin.rows[StatePlugin::kReal].real.defaultValue = 0.123456;
  MXMLItem item;
  plugin.LoadState(item);
  EXPECT_EQ(plugin.rows[StatePlugin::kReal].real.value, 0.1235);
}

TEST(MPluginState, ValuesOutsideOfTheRangeAreTakenAsTheyStand) {
  StatePlugin plugin;
  MXMLItem item;
  item.SetAttribute("ParameterReal", "1e308");
  item.SetAttribute("parameterINTEGER", "-2000000000");
  item.SetAttribute("parameterchoice", "99");
  item.SetAttribute("parameterswitch", "-5");
  item.SetAttribute("parameterpanel", "-100");
  plugin.LoadState(item);
  EXPECT_EQ(plugin.rows[StatePlugin::kReal].real.value, 1e308);
  EXPECT_EQ(plugin.rows[StatePlugin::kInteger].integer.value, -2000000000);
  EXPECT_EQ(plugin.rows[StatePlugin::kChoice].enumeration.value, 99);
  EXPECT_EQ(plugin.rows[StatePlugin::kSwitch].onOff.value, -5);
  EXPECT_EQ(plugin.open, -100);
}

TEST(MPluginState, WholeNumbersBeyondTheWordAreLimitedToIt) {
  StatePlugin plugin;
  MXMLItem item;
  item.SetAttribute("parameterinteger", "5000000000");
  item.SetAttribute("parameterpanel", "-5000000000");
  plugin.LoadState(item);
  EXPECT_EQ(plugin.rows[StatePlugin::kInteger].integer.value, std::numeric_limits<int32_t>::max());
  EXPECT_EQ(plugin.open, std::numeric_limits<int8_t>::min());
}

TEST(MPluginState, UnreadableNumbersAreZeroAndNotANumberIsKept) {
  StatePlugin plugin;
  MXMLItem item;
  item.SetAttribute("parameterreal", "loud");
  item.SetAttribute("parameterinteger", "");
  plugin.LoadState(item);
  EXPECT_EQ(plugin.rows[StatePlugin::kReal].real.value, 0);
  EXPECT_EQ(plugin.rows[StatePlugin::kInteger].integer.value, 0);
  item.SetAttribute("parameterreal", "nan");
  plugin.LoadState(item);
  EXPECT_TRUE(std::isnan(plugin.rows[StatePlugin::kReal].real.value));
}

TEST(MPluginState, APanelWithoutAByteIsSkipped) {
  StatePlugin plugin;
  MXMLItem item;
  item.SetAttribute("parameterloose", "1");
  plugin.LoadState(item);
  EXPECT_EQ(plugin.rows[StatePlugin::kLoosePanel].panel.open, nullptr);
}

TEST(MPluginState, WithoutRowsNothingIsSavedAndLoadingStillUpdates) {
  class Bare : public MPlugin {
   public:
    void Update() override { ++updates; }
    int32_t updates = 0;
  } plugin;
  MXMLItem item;
  EXPECT_FALSE(plugin.SaveState(item));
  EXPECT_EQ(item.GetAttributes().GetCount(), 0);
  EXPECT_FALSE(plugin.LoadState(item));
  EXPECT_EQ(plugin.updates, 1);
}

TEST(MPluginState, TheProcesssLocaleChangesNothing) {
  const CommaLocale comma;
  StatePlugin plugin;
  MXMLItem item;
  plugin.SaveState(item);
  EXPECT_EQ(Value(item, "parameterreal"), "0.4000");
  item.SetAttribute("parameterreal", "0.25");
  plugin.LoadState(item);
  EXPECT_EQ(plugin.rows[StatePlugin::kReal].real.value, 0.25);
}

TEST(MPluginState, ServicesSaveAndLoadAndGiveZero) {
  StatePlugin plugin;
  MXMLItem item;
  MServiceArguments arguments(MAsWord(&item));
  EXPECT_EQ(plugin.Service(MService::kSaveState, &arguments), 0);
  EXPECT_EQ(Value(item, "parameterreal"), "0.4000");
  item.SetAttribute("parameterreal", "-0.5");
  EXPECT_EQ(plugin.Service(MService::kLoadState, &arguments), 0);
  EXPECT_EQ(plugin.rows[StatePlugin::kReal].real.value, -0.5);
}

}  // namespace
