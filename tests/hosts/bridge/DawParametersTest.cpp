// The parameters of all plug-ins as a DAW sees them.

#include "hosts/bridge/DawParameters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "exports/PluginEntries.h"
#include "hosts/bridge/Parameters.h"
#include "hosts/bridge/Plugin.h"

namespace {

// A plug-in with its list.
struct Listed {
  explicit Listed(const PluginEntry& entry)
      : name(entry.name),
        plugin(entry.entryPoint),
        parameters(plugin.GetParameters(), entry.kind == std::string_view("AudioEffect")
                                               ? bridge::PluginKind::kEffect
                                               : bridge::PluginKind::kInstrument) {}

  std::string name;
  bridge::Plugin plugin;
  bridge::DawParameters parameters;
};

template <typename Check>
void ForEachParameter(Check check) {
  for (int32_t i = 0; i < kPluginEntryCount; ++i) {
    const Listed listed(kPluginEntries[i]);
    for (const bridge::DawParameter& parameter : listed.parameters.GetAll()) {
      SCOPED_TRACE(listed.name + " " + parameter.name);
      check(parameter);
    }
  }
}

TEST(DawParameters, KeepTheirNumbersForEver) {
  std::map<std::string, uint32_t> pinned;
  std::ifstream file(SONVELLE_PARAMETER_IDS);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('#')) continue;
    std::istringstream fields(line);
    std::string plugin, key;
    uint32_t id = 0;
    ASSERT_TRUE(fields >> plugin >> key >> id) << line;
    ASSERT_TRUE(pinned.emplace(plugin + "\t" + key, id).second) << line;
  }
  std::size_t found = 0;
  for (int32_t i = 0; i < kPluginEntryCount; ++i) {
    const Listed listed(kPluginEntries[i]);
    for (const bridge::DawParameter& parameter : listed.parameters.GetAll()) {
      const std::string key = listed.name + "\t" + parameter.key;
      ASSERT_TRUE(pinned.contains(key)) << key << "\t" << parameter.id;
      EXPECT_EQ(parameter.id, pinned[key]) << key;
      ++found;
    }
  }
  EXPECT_EQ(found, pinned.size()) << "a number is never given up";
}

TEST(DawParameters, HaveNumbersNamesAndKeysOfTheirOwnWithinAPlugin) {
  for (int32_t i = 0; i < kPluginEntryCount; ++i) {
    const Listed listed(kPluginEntries[i]);
    const auto all = listed.parameters.GetAll();
    std::set<uint32_t> ids;
    std::set<std::string> names, keys;
    for (std::size_t place = 0; place < all.size(); ++place) {
      const bridge::DawParameter& parameter = all[place];
      EXPECT_TRUE(ids.insert(parameter.id).second && names.insert(parameter.name).second &&
                  keys.insert(parameter.key).second)
          << listed.name << " " << parameter.name;
      EXPECT_FALSE(parameter.name.empty());
      EXPECT_LE(parameter.id, 0x7FFFFFFFu);
      EXPECT_EQ(listed.parameters.Find(parameter.id), static_cast<int32_t>(place));
      EXPECT_EQ(listed.parameters.Find(parameter.key), static_cast<int32_t>(place));
    }
    EXPECT_EQ(listed.parameters.Find(uint32_t{0}), -1);
    EXPECT_EQ(listed.parameters.Find(std::string_view("")), -1);
  }
}

TEST(DawParameters, NameTheirPanel) {
  for (int32_t i = 0; i < kPluginEntryCount; ++i) {
    if (kPluginEntries[i].name != std::string_view("Slotter")) continue;
    const Listed slotter(kPluginEntries[i]);
    const auto& parameter =
        slotter.parameters.GetAll()[static_cast<std::size_t>(slotter.parameters.Find("lowfreq"))];
    EXPECT_EQ(parameter.group, "Low-pass filter");
    EXPECT_EQ(parameter.name, "Low-pass filter Frequency");
  }
}

TEST(DawParameters, EndWithThoseOfTheHostSide) {
  for (int32_t i = 0; i < kPluginEntryCount; ++i) {
    const Listed listed(kPluginEntries[i]);
    const auto all = listed.parameters.GetAll();
    if (kPluginEntries[i].kind == std::string_view("AudioEffect")) {
      EXPECT_EQ(all.back().control, bridge::HostControl::kBypass);
      EXPECT_EQ(bridge::GetDawText(all.back(), 0), "Off");
      EXPECT_EQ(bridge::GetDawText(all.back(), 1), "On");
    } else {
      const bridge::DawParameter& release = all[all.size() - 2];
      EXPECT_EQ(release.control, bridge::HostControl::kRelease);
      EXPECT_EQ(bridge::GetDawText(release, bridge::LoadValue(*release.row)), "20 ms");
      EXPECT_EQ(bridge::GetRange(*release.row).maximum, 10);
      EXPECT_EQ(bridge::ReadDawText(release, "250 ms"), 0.25);
      EXPECT_EQ(bridge::ReadDawText(release, "1.5 s"), 1.5);
      EXPECT_EQ(all.back().control, bridge::HostControl::kOneShot);
      EXPECT_EQ(all.back().name, "One shot");
    }
  }
}

TEST(DawParameters, AreNormalizedAndBack) {
  ForEachParameter([](const bridge::DawParameter& parameter) {
    const bridge::ParameterRange range = bridge::GetRange(*parameter.row);
    EXPECT_EQ(bridge::Normalize(parameter, range.minimum), 0);
    EXPECT_EQ(bridge::Normalize(parameter, range.maximum), 1);
    EXPECT_EQ(bridge::Denormalize(parameter, 0), range.minimum);
    EXPECT_EQ(bridge::Denormalize(parameter, 1), range.maximum);
    EXPECT_EQ(bridge::Denormalize(parameter, NAN), range.minimum);
    EXPECT_EQ(bridge::Denormalize(parameter, 7), range.maximum);
    EXPECT_EQ(bridge::Normalize(parameter, NAN), 0);
    EXPECT_EQ(bridge::Normalize(parameter, 1e300), 1);
    for (int32_t i = 1; i < 1000; ++i) {
      // What states and people write: a few decimals.
      double value = range.minimum + (range.maximum - range.minimum) * i / 1000;
      value = bridge::IsWhole(*parameter.row) ? std::round(value) : std::stod(std::to_string(value));
      if (value < range.minimum || value > range.maximum) continue;
      EXPECT_EQ(bridge::Denormalize(parameter, bridge::Normalize(parameter, value)), value);
    }
  });
}

TEST(DawParameters, HaveAStepForEachWholeValue) {
  ForEachParameter([](const bridge::DawParameter& parameter) {
    const int32_t steps = bridge::GetStepCount(parameter);
    if (!bridge::IsWhole(*parameter.row)) {
      EXPECT_EQ(steps, 0);
      return;
    }
    EXPECT_GE(steps, 1);
    const bridge::ParameterRange range = bridge::GetRange(*parameter.row);
    for (int32_t i = 0; i <= steps; ++i)
      EXPECT_EQ(bridge::Denormalize(parameter, double(i) / steps), range.minimum + i);
  });
}

TEST(DawParameters, MeanTheValueWithFourDecimalsByItsFloat) {
  ForEachParameter([](const bridge::DawParameter& parameter) {
    const bridge::ParameterRange range = bridge::GetRange(*parameter.row);
    for (const double value : {range.minimum, range.maximum, range.defaultValue})
      EXPECT_EQ(bridge::FromFloat(parameter, static_cast<float>(value)), value);
    for (int32_t i = 1; i < 100; ++i) {
      const double value =
          std::round((range.minimum + (range.maximum - range.minimum) * i / 100) * 1e4) / 1e4;
      if (static_cast<float>(value) == static_cast<float>(range.defaultValue)) continue;
      EXPECT_EQ(bridge::FromFloat(parameter, static_cast<float>(value)), value);
    }
    const float other = 0.123456789f;
    EXPECT_EQ(bridge::FromFloat(parameter, other), double{other});
  });
}

TEST(DawParameters, ReadTheirOwnTexts) {
  ForEachParameter([](const bridge::DawParameter& parameter) {
    const bridge::ParameterRange range = bridge::GetRange(*parameter.row);
    for (int32_t i = 0; i <= 20; ++i) {
      const double value = bridge::Denormalize(parameter, i / 20.0);
      const std::string text = bridge::GetDawText(parameter, value);
      const std::optional<double> read = bridge::ReadDawText(parameter, text);
      ASSERT_TRUE(read) << text;
      EXPECT_GE(*read, range.minimum);
      EXPECT_LE(*read, range.maximum);
      EXPECT_EQ(bridge::GetDawText(parameter, *read), text) << *read;
    }
    EXPECT_EQ(bridge::ReadDawText(parameter, "no value of anything"), std::nullopt);
    EXPECT_EQ(bridge::ReadDawText(parameter, ""), std::nullopt);
    if (parameter.row->formatter) return;
    EXPECT_EQ(bridge::ReadDawText(parameter, "1e30"), std::nullopt);
  });
}

}  // namespace
