#include "hosts/vst3/ParameterList.h"

#include <algorithm>
#include <cmath>

#include "hosts/vst3/Text.h"

namespace vst3 {

namespace {

constexpr v3_param_id kProgramId = 0x50524F47;          // "PROG"
constexpr v3_param_id kFirstControllerId = 0x4D494449;  // "MIDI"
constexpr double kMostData = 127;
constexpr const char* kControllerNames[] = {"Sustain pedal", "All sound off", "Reset controllers",
                                            "All notes off"};
constexpr const char* kFirstProgram = "Default";

bool IsUnitCharacter(char c) {
  return c == '%' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool EndsNumber(char c) {
  return c >= '0' && c <= '9';
}

// "Hz" of "440Hz", "ms" of "12 ms"; empty if no number stands in front.
std::string_view GetUnit(std::string_view text) {
  std::size_t start = text.size();
  while (start > 0 && IsUnitCharacter(text[start - 1])) --start;
  std::size_t number = start;
  while (number > 0 && text[number - 1] == ' ') --number;
  return number > 0 && EndsNumber(text[number - 1]) ? text.substr(start) : std::string_view();
}

void Trim(std::string_view& text) {
  while (text.ends_with(' ')) text.remove_suffix(1);
}

// Hosts write the unit behind each text, so it is one only if all texts of the row end with it.
std::string FindUnit(const bridge::DawParameter& parameter) {
  constexpr int32_t kLooks = 32;
  if (parameter.row->kind != MParameterKind::kReal && parameter.row->kind != MParameterKind::kInteger)
    return {};
  const std::string shown = bridge::GetDawText(parameter, bridge::GetRange(*parameter.row).defaultValue);
  const std::string unit(GetUnit(shown));
  for (int32_t i = 0; i <= kLooks; ++i)
    if (!bridge::GetDawText(parameter, bridge::Denormalize(parameter, double(i) / kLooks)).ends_with(unit))
      return {};
  return unit;
}

}  // namespace

ParameterList::ParameterList(const bridge::DawParameters& parameters,
                             const std::vector<bridge::Preset>& presets, bool isInstrument)
    : parameters_(parameters), presets_(presets), isInstrument_(isInstrument) {
  for (const bridge::DawParameter& parameter : parameters.GetAll()) {
    targets_.push_back({Target::Kind::kParameter, static_cast<int32_t>(units_.size())});
    units_.push_back(FindUnit(parameter));
    if (!parameter.group.empty() &&
        std::find(groups_.begin(), groups_.end(), parameter.group) == groups_.end())
      groups_.push_back(parameter.group);
  }
  if (!presets.empty()) targets_.push_back({Target::Kind::kProgram, 0});
  for (int32_t i = 0; isInstrument && i < kControllerCount; ++i)
    targets_.push_back({Target::Kind::kController, i});
}

Target ParameterList::Find(v3_param_id id) const noexcept {
  const int32_t place = parameters_.Find(id);
  if (place >= 0) return {Target::Kind::kParameter, place};
  if (id == kProgramId && !presets_.empty()) return {Target::Kind::kProgram, 0};
  if (isInstrument_ && id >= kFirstControllerId && id < kFirstControllerId + kControllerCount)
    return {Target::Kind::kController, static_cast<int32_t>(id - kFirstControllerId)};
  return {};
}

bool ParameterList::FindController(int32_t channel, int32_t controller, v3_param_id& id) noexcept {
  const auto found = std::find(kControllers.begin(), kControllers.end(), controller);
  if (channel < 0 || channel >= kChannels || found == kControllers.end()) return false;
  id = kFirstControllerId + static_cast<uint32_t>(channel * static_cast<int32_t>(kControllers.size())) +
       static_cast<uint32_t>(found - kControllers.begin());
  return true;
}

int32_t ParameterList::GetChannel(Target controller) noexcept {
  return controller.place / static_cast<int32_t>(kControllers.size());
}

uint8_t ParameterList::GetController(Target controller) noexcept {
  return kControllers[static_cast<std::size_t>(controller.place) % kControllers.size()];
}

v3_param_id ParameterList::GetId(Target target) const noexcept {
  if (target.kind == Target::Kind::kParameter) return At(target).id;
  return target.kind == Target::Kind::kProgram ? kProgramId
                                               : kFirstControllerId + static_cast<uint32_t>(target.place);
}

int32_t ParameterList::GetStepCount(Target target) const noexcept {
  if (target.kind == Target::Kind::kParameter) return bridge::GetStepCount(At(target));
  return target.kind == Target::Kind::kProgram ? GetProgramCount() - 1 : static_cast<int32_t>(kMostData);
}

v3_param_info ParameterList::Describe(int32_t index) const {
  const Target target = targets_[static_cast<std::size_t>(index)];
  v3_param_info info = {};
  info.param_id = GetId(target);
  info.step_count = GetStepCount(target);
  if (target.kind == Target::Kind::kParameter) {
    DescribeParameter(target, info);
  } else if (target.kind == Target::Kind::kProgram) {
    WriteText("Program", info.title);
    WriteText("Program", info.short_title);
    info.flags = V3_PARAM_IS_LIST | V3_PARAM_PROGRAM_CHANGE;
  } else {
    const std::string name = kControllerNames[target.place % static_cast<int32_t>(kControllers.size())];
    WriteText(name + ", channel " + std::to_string(GetChannel(target) + 1), info.title);
    WriteText(name, info.short_title);
    info.flags = V3_PARAM_IS_HIDDEN;
  }
  return info;
}

void ParameterList::DescribeParameter(Target target, v3_param_info& info) const {
  const bridge::DawParameter& parameter = At(target);
  WriteText(parameter.name, info.title);
  WriteText(bridge::ToUtf8(parameter.row->name), info.short_title);
  WriteText(units_[static_cast<std::size_t>(target.place)], info.units);
  info.default_normalised_value = bridge::Normalize(parameter, bridge::GetRange(*parameter.row).defaultValue);
  const auto group = std::find(groups_.begin(), groups_.end(), parameter.group);
  info.unit_id = group == groups_.end() ? 0 : static_cast<int32_t>(group - groups_.begin()) + 1;
  info.flags = V3_PARAM_CAN_AUTOMATE;
  if (parameter.row->kind == MParameterKind::kEnumeration) info.flags |= V3_PARAM_IS_LIST;
  if (parameter.control == bridge::HostControl::kBypass) info.flags |= V3_PARAM_IS_BYPASS;
}

double ParameterList::ToPlain(Target target, double normalized) const noexcept {
  if (target.kind == Target::Kind::kParameter) return bridge::Denormalize(At(target), normalized);
  if (!(normalized > 0)) return 0;
  return std::round(std::min(normalized, 1.0) * GetStepCount(target));
}

double ParameterList::ToNormalized(Target target, double plain) const noexcept {
  if (target.kind == Target::Kind::kParameter) return bridge::Normalize(At(target), plain);
  if (!(plain > 0)) return 0;
  return std::min(plain / GetStepCount(target), 1.0);
}

std::string ParameterList::GetText(Target target, double normalized) const {
  const double plain = ToPlain(target, normalized);
  if (target.kind == Target::Kind::kProgram) return GetProgramName(static_cast<int32_t>(plain));
  if (target.kind == Target::Kind::kController) return std::to_string(static_cast<int32_t>(plain));
  const std::string text = bridge::GetDawText(At(target), plain);
  const std::string& unit = units_[static_cast<std::size_t>(target.place)];
  std::string_view number = text;
  if (text.ends_with(unit)) number.remove_suffix(unit.size());
  Trim(number);
  return std::string(number);
}

std::optional<double> ParameterList::ReadText(Target target, std::string_view text) const {
  Trim(text);
  std::optional<double> plain;
  if (target.kind == Target::Kind::kProgram) {
    for (int32_t i = 0; i < GetProgramCount(); ++i)
      if (text == GetProgramName(i)) plain = i;
  } else if (target.kind == Target::Kind::kController) {
    for (int32_t i = 0; i <= static_cast<int32_t>(kMostData); ++i)
      if (text == std::to_string(i)) plain = i;
  } else {
    const std::string& unit = units_[static_cast<std::size_t>(target.place)];
    std::string_view number = text;
    if (text.ends_with(unit)) number.remove_suffix(unit.size());
    Trim(number);
    plain = bridge::ReadDawText(At(target), std::string(number) + unit);
    if (!plain) plain = bridge::ReadDawText(At(target), text);
  }
  if (!plain) return plain;
  return ToNormalized(target, *plain);
}

int32_t ParameterList::GetProgramCount() const noexcept {
  return presets_.empty() ? 0 : static_cast<int32_t>(presets_.size()) + 1;
}

const char* ParameterList::GetProgramName(int32_t program) const noexcept {
  return program == 0 ? kFirstProgram : presets_[static_cast<std::size_t>(program - 1)].name.c_str();
}

}  // namespace vst3
