// The root unit has the programs, a panel's unit its parameters.

#include "hosts/vst3/Instance.h"
#include "hosts/vst3/Text.h"

namespace vst3 {

namespace {

constexpr int32_t kRoot = 0;
constexpr int32_t kNone = -1;
constexpr int32_t kPrograms = 1;  // the list

}  // namespace

int32_t Instance::GetUnitCount() {
  return static_cast<int32_t>(list_.GetGroups().size()) + 1;
}

v3_result Instance::GetUnitInfo(int32_t index, v3_unit_info* info) {
  if (!info || index < 0 || index >= GetUnitCount()) return V3_INVALID_ARG;
  *info = {};
  info->id = index;
  info->parent_unit_id = index == kRoot ? kNone : kRoot;
  info->program_list_id = index == kRoot && GetProgramListCount() > 0 ? kPrograms : kNone;
  WriteText(index == kRoot ? "Root" : list_.GetGroups()[static_cast<std::size_t>(index - 1)], info->name);
  return V3_OK;
}

int32_t Instance::GetProgramListCount() {
  return list_.GetProgramCount() > 0 ? 1 : 0;
}

v3_result Instance::GetProgramListInfo(int32_t index, v3_program_list_info* info) {
  if (!info || index < 0 || index >= GetProgramListCount()) return V3_INVALID_ARG;
  *info = {};
  info->id = kPrograms;
  info->programCount = list_.GetProgramCount();
  WriteText("Programs", info->name);
  return V3_OK;
}

v3_result Instance::GetProgramName(int32_t list, int32_t program, int16_t* name) {
  if (!name || list != kPrograms || program < 0 || program >= list_.GetProgramCount()) return V3_INVALID_ARG;
  WriteText(list_.GetProgramName(program), name);
  return V3_OK;
}

v3_result Instance::GetProgramInfo(int32_t, int32_t, const char*, int16_t*) {
  return V3_NOT_IMPLEMENTED;
}

v3_result Instance::HasProgramPitchNames(int32_t, int32_t) {
  return V3_FALSE;
}

v3_result Instance::GetProgramPitchName(int32_t, int32_t, int16_t, int16_t*) {
  return V3_NOT_IMPLEMENTED;
}

int32_t Instance::GetSelectedUnit() {
  return kRoot;
}

v3_result Instance::SelectUnit(int32_t unit) {
  return unit >= kRoot && unit < GetUnitCount() ? V3_OK : V3_INVALID_ARG;
}

v3_result Instance::GetUnitByBus(int32_t media, int32_t direction, int32_t bus, int32_t, int32_t* unit) {
  if (!unit || !HasBus(media, direction, bus)) return V3_INVALID_ARG;
  *unit = kRoot;
  return V3_OK;
}

v3_result Instance::SetUnitProgramData(int32_t, int32_t, v3_bstream**) {
  return V3_NOT_IMPLEMENTED;
}

}  // namespace vst3
