#include "hosts/cli/Listing.h"

#include "hosts/cli/Words.h"

namespace cli {

const char* KindName(bridge::PluginKind kind) noexcept {
  return kind == bridge::PluginKind::kEffect ? "effect" : "instrument";
}

const char* KindName(MParameterKind kind) noexcept {
  switch (kind) {
    case MParameterKind::kReal:
      return "real";
    case MParameterKind::kInteger:
      return "integer";
    case MParameterKind::kEnumeration:
      return "enumeration";
    case MParameterKind::kSwitch:
      return "switch";
    default:
      return "";
  }
}

std::string ListAsText(const bridge::PluginTable& plugins) {
  std::vector<std::vector<std::string>> rows;
  for (const bridge::PluginType& type : plugins)
    rows.push_back({std::string(type.name), KindName(type.kind), std::string(type.summary)});
  std::string text;
  for (const std::string& line : Columns(rows)) text += line + "\n";
  return text;
}

namespace {

// What stands below a parameter: its help, and what "--set" takes beside numbers.
std::string HelpLines(const MPluginParameter& row, const bridge::ParameterRange& range) {
  const std::string help = bridge::GetPlainHelp(row);
  std::string lines = help.empty() ? "" : "    " + help + "\n";
  if (row.kind == MParameterKind::kEnumeration) {
    std::string choices;
    for (int32_t i = 0; i < row.enumeration.count; ++i)
      choices += (i == 0 ? "" : ", ") + std::string(row.enumeration.choices[i]);
    lines += "    Choices: " + choices + "\n";
  } else if (row.formatter) {
    lines += "    Shown range: " + bridge::GetText(row, range.minimum) + " to " +
             bridge::GetText(row, range.maximum) + "\n";
  }
  return lines;
}

}  // namespace

std::string ParametersAsText(const bridge::Plugin& plugin) {
  std::vector<std::vector<std::string>> rows = {{"KEY", "NAME", "KIND", "RANGE", "DEFAULT", "SHOWN AS"}};
  std::vector<std::string> helps = {""};
  for (const MPluginParameter& row : plugin.GetParameters()) {
    if (!bridge::HasValue(row)) continue;
    const bridge::ParameterRange range = bridge::GetRange(row);
    rows.push_back({bridge::ToUtf8(row.key), bridge::ToUtf8(row.name), KindName(row.kind),
                    NumberText(range.minimum) + " to " + NumberText(range.maximum),
                    NumberText(range.defaultValue), bridge::GetText(row, range.defaultValue)});
    helps.push_back(HelpLines(row, range));
  }
  const std::vector<std::string> lines = Columns(rows);
  std::string text;
  for (std::size_t i = 0; i < lines.size(); ++i) text += lines[i] + "\n" + helps[i];
  return text;
}

}  // namespace cli
