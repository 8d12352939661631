#include "hosts/clap/Parameters.h"

#include <algorithm>
#include <cmath>

#include "hosts/clap/Call.h"

namespace clap {

namespace {

uint32_t GetFlags(const bridge::DawParameter& parameter) noexcept {
  uint32_t flags = CLAP_PARAM_IS_AUTOMATABLE;
  if (bridge::IsWhole(*parameter.row)) flags |= CLAP_PARAM_IS_STEPPED;
  if (parameter.row->kind == MParameterKind::kEnumeration) flags |= SONVELLE_CLAP_PARAM_IS_ENUM;
  if (parameter.control == bridge::HostControl::kBypass) flags |= CLAP_PARAM_IS_BYPASS;
  return flags;
}

uint32_t CLAP_ABI GetCount(const clap_plugin_t* plugin) {
  return Call(plugin, 0u, [](Instance& instance) {
    return static_cast<uint32_t>(instance.GetPlugin().GetParameters().size());
  });
}

bool CLAP_ABI GetInfo(const clap_plugin_t* plugin, uint32_t index, clap_param_info_t* info) {
  return Call(plugin, false, [=](Instance& instance) {
    const auto parameters = instance.GetPlugin().GetParameters();
    if (!info || index >= parameters.size()) return false;
    const bridge::DawParameter& parameter = parameters[index];
    const bridge::ParameterRange range = bridge::GetRange(*parameter.row);
    *info = {};
    info->id = parameter.id;
    info->flags = GetFlags(parameter);
    info->cookie = const_cast<bridge::DawParameter*>(&parameter);
    CopyText(info->name, CLAP_NAME_SIZE, parameter.name);
    CopyText(info->module, CLAP_PATH_SIZE, parameter.group);
    info->min_value = range.minimum;
    info->max_value = range.maximum;
    info->default_value = range.defaultValue;
    return true;
  });
}

// Calls with the plug-in's parameter of this id; false if it has none.
template <typename Function>
bool CallWith(const clap_plugin_t* plugin, clap_id id, Function call) noexcept {
  return Call(plugin, false, [&](Instance& instance) {
    const int32_t place = instance.GetPlugin().GetParameterList().Find(id);
    return place >= 0 && call(instance, place);
  });
}

const bridge::DawParameter& At(Instance& instance, int32_t place) noexcept {
  return instance.GetPlugin().GetParameters()[static_cast<std::size_t>(place)];
}

// States may hold what lies outside of the range, or no number; hosts may not hear of that.
bool CLAP_ABI GetValue(const clap_plugin_t* plugin, clap_id id, double* value) {
  return CallWith(plugin, id, [=](Instance& instance, int32_t place) {
    if (!value) return false;
    const bridge::ParameterRange range = bridge::GetRange(*At(instance, place).row);
    const double kept = instance.GetPlugin().GetValue(place);
    *value = std::isnan(kept) ? range.defaultValue : std::clamp(kept, range.minimum, range.maximum);
    return true;
  });
}

bool CLAP_ABI GetText(const clap_plugin_t* plugin, clap_id id, double value, char* text, uint32_t size) {
  return CallWith(plugin, id, [=](Instance& instance, int32_t place) {
    const bridge::DawParameter& parameter = At(instance, place);
    const bridge::ParameterRange range = bridge::GetRange(*parameter.row);
    if (!text || size == 0 || std::isnan(value)) return false;
    const double meant = std::clamp(ReadValue(parameter, value), range.minimum, range.maximum);
    CopyText(text, size, bridge::GetDawText(parameter, meant));
    return true;
  });
}

bool CLAP_ABI ReadText(const clap_plugin_t* plugin, clap_id id, const char* text, double* value) {
  return CallWith(plugin, id, [=](Instance& instance, int32_t place) {
    if (!text || !value) return false;
    const std::optional<double> read = bridge::ReadDawText(At(instance, place), text);
    if (read) *value = *read;
    return read.has_value();
  });
}

void CLAP_ABI Flush(const clap_plugin_t* plugin, const clap_input_events_t* in, const clap_output_events_t*) {
  Call(plugin, false, [=](Instance& instance) {
    instance.Flush(in);
    return true;
  });
}

}  // namespace

const clap_plugin_params_t kParameters = {GetCount, GetInfo, GetValue, GetText, ReadText, Flush};

// Whole values are cut, as hosts show them.
double ReadValue(const bridge::DawParameter& parameter, double value) noexcept {
  if (bridge::IsWhole(*parameter.row)) return std::trunc(value);
  const auto narrow = static_cast<float>(value);
  return double{narrow} == value ? bridge::FromFloat(parameter, narrow) : value;
}

void CopyText(char* to, std::size_t size, std::string_view text) noexcept {
  if (size == 0) return;
  std::size_t length = std::min(text.size(), size - 1);
  while (length < text.size() && length > 0 && (text[length] & 0xC0) == 0x80) --length;
  std::copy_n(text.data(), length, to);
  to[length] = 0;
}

}  // namespace clap
