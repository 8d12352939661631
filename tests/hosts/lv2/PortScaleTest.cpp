// Ports in what people read: checked with the rows of all plug-ins.

#include "hosts/lv2/PortScale.h"

#include <charconv>
#include <functional>

#include "tests/hosts/lv2/Lv2Test.h"

namespace {

using bridge::DawParameter;
using lv2::PortScale;

class PortScales : public Lv2Test {
 protected:
  using Check = std::function<void(const DawParameter&, const PortScale&)>;

  static void ForAll(const Check& check) {
    for (const bridge::PluginType& type : builtin::GetPlugins()) {
      NoClient client;
      const bridge::DawPlugin plugin(type, client);
      for (const DawParameter& parameter : plugin.GetParameters()) {
        SCOPED_TRACE(std::string(type.name) + " " + parameter.key);
        check(parameter, PortScale(parameter));
      }
    }
  }
  // "PLUGIN KEY" of what holds.
  static std::string List(const std::function<bool(const DawParameter&, const PortScale&)>& holds) {
    std::string list;
    for (const bridge::PluginType& type : builtin::GetPlugins()) {
      NoClient client;
      const bridge::DawPlugin plugin(type, client);
      for (const DawParameter& parameter : plugin.GetParameters())
        if (holds(parameter, PortScale(parameter)))
          list += std::string(type.name) + " " + parameter.key + "\n";
    }
    return list;
  }
  static double At(const DawParameter& parameter, double place) {
    const bridge::ParameterRange range = bridge::GetRange(*parameter.row);
    return range.minimum + place * (range.maximum - range.minimum);
  }
};

TEST_F(PortScales, TheTextOfAValueIsThePortsNumberInItsUnit) {
  ForAll([](const DawParameter& parameter, const PortScale& scale) {
    if (!scale.IsShown()) return;
    for (int i = 1; i < 200; ++i) {
      double value = At(parameter, i / 200.0);
      if (bridge::IsWhole(*parameter.row)) value = std::round(value);
      const std::string text = bridge::GetDawText(parameter, value);
      double number = 0;
      const char* const end = std::from_chars(text.data(), text.data() + text.size(), number).ptr;
      const char* const point = std::find(text.data(), end, '.');
      double accuracy = 0.500001 * std::pow(10.0, point == end ? 0.0 : static_cast<double>(point - end + 1));
      std::string unit = end + std::strspn(end, " ");
      if (unit == "kHz") number *= 1000, accuracy *= 1000, unit = "Hz";
      EXPECT_EQ(unit, scale.GetUnit()) << text;
      EXPECT_NEAR(number, scale.ToPort(value), accuracy + 1e-7 * std::abs(number)) << text;  // of a float
    }
  });
}

TEST_F(PortScales, RowsInTableUnitsAreThese) {
  EXPECT_EQ(List([](const DawParameter& parameter, const PortScale& scale) {
              return parameter.row->kind == MParameterKind::kReal && !scale.IsShown();
            }),
            "Echolan feedback\nClampet threshold\nSwirlo feedback\n");
  EXPECT_EQ(List([](const DawParameter& parameter, const PortScale& scale) {
              return parameter.row->kind == MParameterKind::kInteger && !scale.IsShown();
            }),
            "Lumascope fftsize\n");
}

TEST_F(PortScales, FrequenciesAreInHertz) {
  EXPECT_EQ(List([](const DawParameter&, const PortScale& scale) { return scale.IsLogarithmic(); }),
            List([](const DawParameter&, const PortScale& scale) { return scale.GetUnit() == "Hz"; }));
  ForAll([](const DawParameter& parameter, const PortScale& scale) {
    if (parameter.key != "highfreq") return;
    EXPECT_EQ(scale.ToPort(3), 1000.0f);
    EXPECT_EQ(scale.ToPort(bridge::GetRange(*parameter.row).maximum), 20000.0f);
    EXPECT_EQ(scale.FromPort(440.0f), std::log10(440.0));
  });
}

TEST_F(PortScales, TheWayBackIsExactForValuesOfStates) {
  ForAll([](const DawParameter& parameter, const PortScale& scale) {
    const bridge::ParameterRange range = bridge::GetRange(*parameter.row);
    for (const double value : {range.minimum, range.maximum, range.defaultValue})
      EXPECT_EQ(scale.FromPort(scale.ToPort(value)), value);
    const double step = bridge::IsWhole(*parameter.row) ? 1 : 1e-4;
    const auto first = std::llround(std::ceil(range.minimum / step));
    const auto last = std::llround(std::floor(range.maximum / step));
    for (long long i = first; i <= last; ++i) {
      const double value = step == 1 ? static_cast<double>(i) : static_cast<double>(i) / 1e4;
      ASSERT_EQ(scale.FromPort(scale.ToPort(value)), value);
    }
  });
}

TEST_F(PortScales, AnyNumberGivesAValueInTheRange) {
  ForAll([](const DawParameter& parameter, const PortScale& scale) {
    const bridge::ParameterRange range = bridge::GetRange(*parameter.row);
    for (const float port :
         {-INFINITY, -1e30f, -1.0f, -0.0f, 0.0f, 1e-40f, 0.3f, 1.0f, 77.7f, 1e30f, INFINITY, NAN}) {
      const double value = scale.FromPort(port);
      EXPECT_TRUE(value >= range.minimum && value <= range.maximum) << port;
    }
  });
}

TEST_F(PortScales, TheBypassIsOffWhereEnabledIsOn) {
  NoClient client;
  const bridge::DawPlugin plugin(GetType("Echolan"), client);
  const PortScale scale(plugin.GetParameters().back());
  EXPECT_EQ(scale.ToPort(0), 1.0f);
  EXPECT_EQ(scale.ToPort(1), 0.0f);
  EXPECT_EQ(scale.FromPort(0.2f), 0);
  EXPECT_EQ(scale.FromPort(0), 1);
}

}  // namespace
