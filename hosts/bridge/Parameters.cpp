#include "hosts/bridge/Parameters.h"

#include <algorithm>
#include <cmath>

#include "core/MEncoding.h"
#include "plugin/MParameterText.h"

namespace bridge {

namespace {

// Whether mark-up begins at this "<": a name follows, or "/" and a name.
bool IsTag(const std::string& text, std::size_t start) {
  const std::size_t name = start + (text.compare(start, 2, "</") == 0 ? 2 : 1);
  if (name >= text.size()) return false;
  const char lower = static_cast<char>(text[name] | 0x20);
  return lower >= 'a' && lower <= 'z';
}

}  // namespace

bool HasValue(const MPluginParameter& row) noexcept {
  return row.kind == MParameterKind::kReal || IsWhole(row);
}

bool IsWhole(const MPluginParameter& row) noexcept {
  return row.kind == MParameterKind::kInteger || row.kind == MParameterKind::kEnumeration ||
         row.kind == MParameterKind::kSwitch;
}

ParameterRange GetRange(const MPluginParameter& row) noexcept {
  switch (row.kind) {
    case MParameterKind::kReal:
      return {row.real.minimum, row.real.maximum, row.real.defaultValue};
    case MParameterKind::kInteger:
      return {static_cast<double>(row.integer.minimum), static_cast<double>(row.integer.maximum),
              static_cast<double>(row.integer.defaultValue)};
    case MParameterKind::kEnumeration:
      return {0, static_cast<double>(std::max(row.enumeration.count - 1, 0)),
              static_cast<double>(row.enumeration.defaultValue)};
    case MParameterKind::kSwitch:
      return {0, 1, static_cast<double>(row.onOff.defaultValue)};
    default:
      return {};
  }
}

double LoadValue(const MPluginParameter& row) noexcept {
  switch (row.kind) {
    case MParameterKind::kReal:
      return MLoadShared(row.real.value);
    case MParameterKind::kInteger:
      return MLoadShared(row.integer.value);
    case MParameterKind::kEnumeration:
      return MLoadShared(row.enumeration.value);
    case MParameterKind::kSwitch:
      return MLoadShared(row.onOff.value);
    default:
      return 0;
  }
}

void StoreValue(MPluginParameter& row, double value) noexcept {
  if (std::isnan(value)) return;
  const ParameterRange range = GetRange(row);
  const double limited = std::max(range.minimum, std::min(range.maximum, value));
  const int32_t whole = IsWhole(row) ? static_cast<int32_t>(std::lround(limited)) : 0;
  switch (row.kind) {
    case MParameterKind::kReal:
      return MStoreShared(row.real.value, limited);
    case MParameterKind::kInteger:
      return MStoreShared(row.integer.value, whole);
    case MParameterKind::kEnumeration:
      return MStoreShared(row.enumeration.value, whole);
    case MParameterKind::kSwitch:
      return MStoreShared(row.onOff.value, whole);
    default:
      return;
  }
}

std::string GetText(const MPluginParameter& row, double value) {
  return ToUtf8(MParameterText(row, value));
}

std::optional<double> ReadText(const MPluginParameter& row, std::string_view text) {
  return ParseParameterText(row, FromUtf8(text));
}

bool IsReadWithinRange(const MPluginParameter& row, double value) {
  const ParameterRange range = GetRange(row);
  const double first = ReadText(row, GetText(row, range.minimum)).value_or(range.minimum);
  const double last = ReadText(row, GetText(row, range.maximum)).value_or(range.maximum);
  return value >= std::min(range.minimum, first) && value <= std::max(range.maximum, last);
}

std::string GetPlainHelp(const MPluginParameter& row) {
  const std::string help = ToUtf8(row.help);
  std::string plain;
  for (std::size_t i = 0; i < help.size(); ++i) {
    const std::size_t end = help[i] == '<' && IsTag(help, i) ? help.find('>', i) : std::string::npos;
    if (end != std::string::npos)
      i = end;
    else
      plain += help[i];
  }
  return plain;
}

std::string ToUtf8(const MString& text) {
  const MBytes bytes = EncodeNarrow(text);
  return std::string(bytes.GetText(), static_cast<std::size_t>(bytes.GetSize() - 1));
}

MString FromUtf8(std::string_view text) {
  return MEncoding::UTF8Codec::Get().Decode(text.data(), static_cast<int32_t>(text.size()));
}

}  // namespace bridge
