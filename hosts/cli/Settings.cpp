#include "hosts/cli/Settings.h"

#include <cmath>

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

double ReadValue(const MPluginParameter& row, const std::string& key, const std::string& text) {
  const std::string start = "--set " + key + ": \"" + text + "\" is ";
  const std::optional<double> value = ParseNumber(text);
  if (!value) throw Failure(ExitCode::kUsage, start + "not a finite number");
  const bridge::ParameterRange range = bridge::GetRange(row);
  const std::string limits = NumberText(range.minimum) + " to " + NumberText(range.maximum);
  if (bridge::IsWhole(row) && *value != std::floor(*value))
    throw Failure(ExitCode::kUsage, start + "not a whole number from " + limits);
  if (*value < range.minimum || *value > range.maximum)
    throw Failure(ExitCode::kUsage, start + "out of range, " + limits);
  return *value;
}

Setting ReadSetting(const bridge::Plugin& plugin, const std::string& pluginName, const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos)
    throw Failure(ExitCode::kUsage, "--set: \"" + text + "\" is not of the form KEY=NUMBER");
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
