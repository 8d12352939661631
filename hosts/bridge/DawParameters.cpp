#include "hosts/bridge/DawParameters.h"

#include <algorithm>
#include <cmath>

#include "core/MUnitText.h"
#include "hosts/bridge/Parameters.h"
#include "hosts/bridge/Voices.h"

namespace bridge {

namespace {

constexpr double kLongestRelease = 10;  // seconds
constexpr double kStateDecimals = 1e4;
constexpr double kTypedDecimals = 1e10;

void M_CALL ShowMilliseconds(MString& text, double value, const MPluginParameter&) {
  text = MUnits::kMilliseconds.show(value);
}

MPluginParameter MakeSwitch() {
  MPluginParameter row;
  row.kind = MParameterKind::kSwitch;
  row.onOff = {0, 0};
  return row;
}

MPluginParameter MakeRelease() {
  MPluginParameter row;
  row.kind = MParameterKind::kReal;
  row.formatter = ShowMilliseconds;
  row.real = {0, kLongestRelease, Voices::kReleaseSeconds, Voices::kReleaseSeconds};
  return row;
}

template <typename Member, typename Value>
int32_t FindPlace(const std::vector<DawParameter>& all, Member member, const Value& value) noexcept {
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const DawParameter& each) { return each.*member == value; });
  return found == all.end() ? -1 : static_cast<int32_t>(found - all.begin());
}

}  // namespace

uint32_t MakeParameterId(std::string_view key) noexcept {
  uint32_t hash = 2166136261u;
  for (const char c : key) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
  return hash & 0x7FFFFFFFu;
}

DawParameters::DawParameters(std::span<const MPluginParameter> rows, PluginKind kind) {
  std::string group;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const MPluginParameter& row = rows[i];
    if (row.kind == MParameterKind::kPanel) group = ToUtf8(row.name);
    if (!HasValue(row)) continue;
    const std::string key = ToUtf8(row.key);
    const std::string name = (group.empty() ? "" : group + " ") + ToUtf8(row.name);
    all_.push_back(
        {MakeParameterId(key), key, name, group, &row, static_cast<int32_t>(i), HostControl::kNone});
  }
  if (kind == PluginKind::kEffect) {
    AddHostRow(HostControl::kBypass, "hostBypass", "Bypass", MakeSwitch());
  } else {
    AddHostRow(HostControl::kRelease, "hostRelease", "Release", MakeRelease());
    AddHostRow(HostControl::kOneShot, "hostOneShot", "One shot", MakeSwitch());
  }
}

void DawParameters::AddHostRow(HostControl control, const char* key, const char* name,
                               const MPluginParameter& row) {
  MPluginParameter& kept = hostRows_.emplace_back(row);
  kept.key = MString::Literal(key);
  kept.name = MString::Literal(name);
  all_.push_back({MakeParameterId(key), key, name, "", &kept, -1, control});
}

int32_t DawParameters::Find(uint32_t id) const noexcept {
  return FindPlace(all_, &DawParameter::id, id);
}

int32_t DawParameters::Find(std::string_view key) const noexcept {
  return FindPlace(all_, &DawParameter::key, key);
}

void DawParameters::StoreHostValue(const DawParameter& parameter, double value) noexcept {
  for (MPluginParameter& row : hostRows_)
    if (&row == parameter.row) StoreValue(row, value);
}

int32_t GetStepCount(const DawParameter& parameter) noexcept {
  if (!IsWhole(*parameter.row)) return 0;
  const ParameterRange range = GetRange(*parameter.row);
  return static_cast<int32_t>(range.maximum - range.minimum);
}

double Normalize(const DawParameter& parameter, double value) noexcept {
  const ParameterRange range = GetRange(*parameter.row);
  if (!(range.maximum > range.minimum) || std::isnan(value)) return 0;
  return std::clamp((value - range.minimum) / (range.maximum - range.minimum), 0.0, 1.0);
}

double Denormalize(const DawParameter& parameter, double normalized) noexcept {
  const ParameterRange range = GetRange(*parameter.row);
  if (!(normalized > 0)) return range.minimum;
  if (normalized >= 1) return range.maximum;
  const double value = range.minimum + normalized * (range.maximum - range.minimum);
  if (IsWhole(*parameter.row)) return std::round(value);
  return std::clamp(std::round(value * kTypedDecimals) / kTypedDecimals, range.minimum, range.maximum);
}

double FromFloat(const DawParameter& parameter, float value) noexcept {
  const ParameterRange range = GetRange(*parameter.row);
  for (const double end : {range.minimum, range.maximum, range.defaultValue})
    if (static_cast<float>(end) == value) return end;
  const double typed = std::round(double(value) * kStateDecimals) / kStateDecimals;
  return static_cast<float>(typed) == value ? typed : double(value);
}

std::string GetDawText(const DawParameter& parameter, double value) {
  if (parameter.row->kind == MParameterKind::kSwitch && !parameter.row->formatter)
    return value >= 0.5 ? "On" : "Off";
  return GetText(*parameter.row, value);
}

std::optional<double> ReadDawText(const DawParameter& parameter, std::string_view text) {
  const MPluginParameter& row = *parameter.row;
  const std::optional<double> value = ReadText(row, text);
  if (!value || !IsReadWithinRange(row, *value)) return std::nullopt;
  const ParameterRange range = GetRange(row);
  return std::clamp(*value, range.minimum, range.maximum);
}

}  // namespace bridge
