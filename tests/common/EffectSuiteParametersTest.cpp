// The rows of all plug-ins, and tests/golden/parameters.tsv, which lists them so that a change of any shows
// in a diff. When a row is meant to be new or different, put the lines that the failed test prints in the
// place of the old ones of that plug-in; plug-ins stand in the order of src/exports/plugins.def.

#include <charconv>
#include <fstream>
#include <map>
#include <set>
#include <span>

#include "plugin/MParameterText.h"
#include "tests/common/EffectSuite.h"
#include "tests/common/TestRandom.h"
#include "tests/common/Texts.h"

namespace {

// Keys that older states have with capitals.
const std::set<std::string> kKeysWithCapitals = {"Depth", "MinFreq", "MaxFreq", "Shape"};

bool IsKey(const std::string& key) {
  const auto isLower = [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); };
  return kKeysWithCapitals.contains(key) || (!key.empty() && std::all_of(key.begin(), key.end(), isLower));
}

// The shortest text that reads as the same number.
std::string Shortest(double value) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

// Kind, key, name, minimum, maximum and default of a row, with tabs between.
std::string Describe(const MPluginParameter& row) {
  static const char* const kKinds[] = {"none", "real", "integer", "enumeration", "switch", "panel"};
  const auto join = [&](double minimum, double maximum, double defaultValue) {
    return std::string(kKinds[static_cast<int32_t>(row.kind)]) + "\t" + Utf8(row.key) + "\t" +
           Utf8(row.name) + "\t" + Shortest(minimum) + "\t" + Shortest(maximum) + "\t" +
           Shortest(defaultValue);
  };
  switch (row.kind) {
    case MParameterKind::kReal:
      return join(row.real.minimum, row.real.maximum, row.real.defaultValue);
    case MParameterKind::kInteger:
      return join(row.integer.minimum, row.integer.maximum, row.integer.defaultValue);
    case MParameterKind::kEnumeration:
      return join(0, row.enumeration.count - 1, row.enumeration.defaultValue);
    case MParameterKind::kSwitch:
      return join(0, 1, row.onOff.defaultValue);
    default:
      return join(0, 0, 0);
  }
}

// A value of the row's range, whole where the row is whole; 0 is the minimum, 1 the maximum.
double ValueAt(const MPluginParameter& row, double position) {
  switch (row.kind) {
    case MParameterKind::kReal:
      return row.real.minimum + position * (row.real.maximum - row.real.minimum);
    case MParameterKind::kInteger:
      return std::round(row.integer.minimum + position * (row.integer.maximum - row.integer.minimum));
    case MParameterKind::kEnumeration:
      return std::round(position * (row.enumeration.count - 1));
    default:
      return std::round(position);
  }
}

// The lines of each plug-in, by its name.
std::map<std::string, std::string> ReadGoldenFile() {
  std::ifstream file(SONVELLE_PARAMETERS);
  std::map<std::string, std::string> lines;
  for (std::string line; std::getline(file, line);)
    if (!line.empty() && line[0] != '#') lines[line.substr(0, line.find('\t'))] += line + "\n";
  return lines;
}

TEST(PluginParameters, AreThoseOfTheGoldenFile) {
  std::map<std::string, std::string> golden = ReadGoldenFile();
  for (const PluginEntry& entry : std::span(kPluginEntries, static_cast<std::size_t>(kPluginEntryCount))) {
    EffectUnderTest plugin(entry);
    std::string lines;
    for (int32_t i = 0; i < plugin.GetRowCount(); ++i)
      lines += std::string(entry.name) + "\t" + std::to_string(i) + "\t" + Describe(plugin.GetRow(i)) + "\n";
    EXPECT_EQ(golden[entry.name], lines) << "the lines of " << entry.name << " are now\n" << lines;
    golden.erase(entry.name);
  }
  for (const auto& [name, lines] : golden)
    ADD_FAILURE() << "there is no plug-in " << name << ", remove\n" << lines;
}

TEST_P(EffectSuite, RowsHaveAKeyANameAHelpTextAndTheirDefault) {
  EffectUnderTest effect(GetParam());
  std::set<std::string> keys;
  for (int32_t i = 0; i < effect.GetRowCount(); ++i) {
    const MPluginParameter& row = effect.GetRow(i);
    SCOPED_TRACE(std::to_string(i) + " " + Utf8(row.name));
    EXPECT_NE(Utf8(row.name), "");
    EXPECT_EQ(row.changed, 0);
    if (row.kind == MParameterKind::kPanel) {
      EXPECT_EQ(Utf8(row.key), "");
      continue;
    }
    EXPECT_TRUE(IsKey(Utf8(row.key))) << Utf8(row.key);
    std::string lower = Utf8(row.key);
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    EXPECT_TRUE(keys.insert(lower).second) << "a second row with the key " << Utf8(row.key);
    EXPECT_EQ(Utf8(row.help).find("<name>"), 0u) << Utf8(row.help);
    EXPECT_NE(Utf8(row.help).find("</name>"), std::string::npos) << Utf8(row.help);
  }
}

TEST_P(EffectSuite, RowsStartAtTheirDefaultWithinTheirRange) {
  EffectUnderTest effect(GetParam());
  const auto expectRange = [](double minimum, double maximum, double defaultValue, double value) {
    EXPECT_TRUE(std::isfinite(minimum) && std::isfinite(maximum));
    EXPECT_LT(minimum, maximum);
    EXPECT_TRUE(minimum <= defaultValue && defaultValue <= maximum) << defaultValue;
    EXPECT_EQ(value, defaultValue);
  };
  for (int32_t i = 0; i < effect.GetRowCount(); ++i) {
    const MPluginParameter& row = effect.GetRow(i);
    SCOPED_TRACE(std::to_string(i) + " " + Utf8(row.name));
    switch (row.kind) {
      case MParameterKind::kReal:
        expectRange(row.real.minimum, row.real.maximum, row.real.defaultValue, row.real.value);
        break;
      case MParameterKind::kInteger:
        expectRange(row.integer.minimum, row.integer.maximum, row.integer.defaultValue, row.integer.value);
        break;
      case MParameterKind::kEnumeration:
        expectRange(0, row.enumeration.count - 1, row.enumeration.defaultValue, row.enumeration.value);
        for (int32_t choice = 0; choice < row.enumeration.count; ++choice)
          EXPECT_STRNE(row.enumeration.choices[choice], nullptr);
        break;
      case MParameterKind::kSwitch:
        expectRange(0, 1, row.onOff.defaultValue, row.onOff.value);
        break;
      case MParameterKind::kPanel:
        EXPECT_EQ(row.panel.zero, 0);
        break;
      default:
        ADD_FAILURE() << "a row without a kind";
    }
  }
}

TEST_P(EffectSuite, TextsOfRowsCanBeTypedBack) {
  EffectUnderTest effect(GetParam());
  TestRandom random;
  for (int32_t i = 0; i < effect.GetRowCount(); ++i) {
    const MPluginParameter& row = effect.GetRow(i);
    if (row.kind == MParameterKind::kPanel) continue;
    SCOPED_TRACE(Utf8(row.key));
    for (int run = 0; run < 1000; ++run) {
      const double value = ValueAt(row, random.Real(0, 1));
      const MString text = MParameterText(row, value);
      const std::optional<double> read = ParseParameterText(row, text);
      ASSERT_TRUE(read) << Utf8(text);
      ASSERT_TRUE(row.kind == MParameterKind::kReal || *read == value) << Utf8(text);
      ASSERT_NEAR(*read, value, 0.01 * std::abs(ValueAt(row, 1) - ValueAt(row, 0))) << Utf8(text);
      const MString again = MParameterText(row, *read);
      if (again == text) continue;
      // Between two precisions a text may gain or lose a decimal, but its value stays.
      const std::optional<double> readAgain = ParseParameterText(row, again);
      ASSERT_TRUE(readAgain) << Utf8(again);
      ASSERT_NEAR(*readAgain, *read, 1e-9 * std::abs(*read) + 1e-12) << Utf8(text) << ", " << Utf8(again);
    }
  }
}

}  // namespace
