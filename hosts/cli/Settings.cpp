#include "hosts/cli/Settings.h"

#include <algorithm>
#include <cmath>

#include "core/MNumberScanner.h"
#include "hosts/cli/Failure.h"
#include "hosts/cli/Words.h"

namespace cli {

namespace {

std::string ListKeys(const bridge::Plugin& plugin) {
  std::string keys;
  for (const MPluginParameter& row : plugin.GetParameters())
    if (bridge::HasValue(row)) keys += (keys.empty() ? "" : ", ") + bridge::ToUtf8(row.key);
  return keys.empty() ? "none" : keys;
}

std::string_view Trimmed(std::string_view text) {
  const std::size_t start = text.find_first_not_of(' ');
  return start == std::string_view::npos ? "" : text.substr(start, text.find_last_not_of(' ') - start + 1);
}

std::string Quoted(const std::string& text) {
  return "\"" + text + "\"";
}

// What the row can be told.
std::string ListTexts(const MPluginParameter& row) {
  const bridge::ParameterRange range = bridge::GetRange(row);
  const std::string number = bridge::IsWhole(row) ? "whole number" : "finite number";
  if (row.kind == MParameterKind::kSwitch) return "neither 0 or 1 nor \"on\" or \"off\"";
  if (row.kind == MParameterKind::kEnumeration) {
    std::string choices;
    for (int32_t i = 0; i < row.enumeration.count; ++i)
      choices += (i == 0 ? "" : ", ") + Quoted(row.enumeration.choices[i]);
    return "neither a number from 0 to " + NumberText(range.maximum) + " nor one of: " + choices;
  }
  const std::string example = bridge::GetText(row, range.defaultValue);
  if (!row.formatter || !bridge::ReadText(row, example)) return "not a " + number;
  return "neither a " + number + " nor a text like " + Quoted(example);
}

std::optional<double> ReadAsNumber(const MPluginParameter& row, const std::string& start,
                                   std::string_view text) {
  const std::optional<double> value = ParseNumber(text);
  if (!value) return std::nullopt;
  const bridge::ParameterRange range = bridge::GetRange(row);
  const std::string limits = NumberText(range.minimum) + " to " + NumberText(range.maximum);
  if (bridge::IsWhole(row) && *value != std::floor(*value))
    throw Failure(ExitCode::kUsage, start + "not a whole number from " + limits);
  if (*value < range.minimum || *value > range.maximum)
    throw Failure(ExitCode::kUsage, start + "out of range, " + limits);
  return value;
}

// The texts of the ends of the range may be rounded and stand for values a little outside.
std::optional<double> ReadAsText(const MPluginParameter& row, const std::string& start,
                                 std::string_view text) {
  const std::optional<MQuantity> quantity = MReadQuantity(bridge::FromUtf8(text));
  if (quantity && quantity->unit.IsEmpty()) return std::nullopt;  // a number in a form of its own
  const std::optional<double> value = bridge::ReadText(row, text);
  if (!value || std::isnan(*value)) return std::nullopt;
  const bridge::ParameterRange range = bridge::GetRange(row);
  if (!bridge::IsReadWithinRange(row, *value))
    throw Failure(ExitCode::kUsage, start + "out of range, " + bridge::GetText(row, range.minimum) + " to " +
                                        bridge::GetText(row, range.maximum));
  return std::clamp(*value, range.minimum, range.maximum);
}

double ReadValue(const MPluginParameter& row, const std::string& key, const std::string& typed) {
  const std::string start = "--set " + key + ": " + Quoted(typed) + " is ";
  const std::string_view text = Trimmed(typed);
  if (const std::optional<double> value = ReadAsNumber(row, start, text)) return *value;
  if (const std::optional<double> value = ReadAsText(row, start, text)) return *value;
  throw Failure(ExitCode::kUsage, start + ListTexts(row));
}

Setting ReadSetting(const bridge::Plugin& plugin, const std::string& pluginName, const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos)
    throw Failure(ExitCode::kUsage, "--set: \"" + text + "\" is not of the form KEY=VALUE");
  const std::string key = text.substr(0, equals);
  const int32_t index = plugin.FindParameter(key);
  if (index < 0 || !bridge::HasValue(plugin.GetParameters()[static_cast<std::size_t>(index)]))
    throw Failure(ExitCode::kUsage,
                  pluginName + " has no parameter \"" + key + "\", its keys are: " + ListKeys(plugin));
  const MPluginParameter& row = plugin.GetParameters()[static_cast<std::size_t>(index)];
  return {index, ReadValue(row, key, text.substr(equals + 1))};
}

}  // namespace

std::vector<Setting> ReadSettings(const bridge::Plugin& plugin, const std::string& pluginName,
                                  const std::vector<std::string>& texts) {
  std::vector<Setting> settings;
  for (const std::string& text : texts) settings.push_back(ReadSetting(plugin, pluginName, text));
  return settings;
}

}  // namespace cli
