// Parameters and what goes on behind them.

#include <cmath>

#include "hosts/vst3/Instance.h"
#include "hosts/vst3/Text.h"

namespace vst3 {

v3_result Instance::SetComponentState(v3_bstream**) {
  return V3_OK;  // it was this object's
}

v3_result Instance::SetControllerState(v3_bstream**) {
  return V3_OK;
}

v3_result Instance::GetControllerState(v3_bstream**) {
  return V3_OK;
}

int32_t Instance::GetParameterCount() {
  return list_.GetCount();
}

v3_result Instance::GetParameterInfo(int32_t index, v3_param_info* info) {
  if (!info || index < 0 || index >= list_.GetCount()) return V3_INVALID_ARG;
  *info = list_.Describe(index);
  return V3_OK;
}

v3_result Instance::GetParameterText(v3_param_id id, double normalized, int16_t* text) {
  Deliver();
  const Target target = list_.Find(id);
  if (!text || target.kind == Target::Kind::kNone || std::isnan(normalized)) return V3_INVALID_ARG;
  WriteText(list_.GetText(target, normalized), text);
  return V3_OK;
}

v3_result Instance::GetParameterValue(v3_param_id id, int16_t* text, double* normalized) {
  const Target target = list_.Find(id);
  if (!text || !normalized || target.kind == Target::Kind::kNone) return V3_INVALID_ARG;
  const std::optional<double> value = list_.ReadText(target, ReadText(text));
  if (!value) return V3_FALSE;
  *normalized = *value;
  return V3_OK;
}

double Instance::ToPlain(v3_param_id id, double normalized) {
  const Target target = list_.Find(id);
  return target.kind == Target::Kind::kNone ? normalized : list_.ToPlain(target, normalized);
}

double Instance::ToNormalized(v3_param_id id, double plain) {
  const Target target = list_.Find(id);
  return target.kind == Target::Kind::kNone ? plain : list_.ToNormalized(target, plain);
}

double Instance::GetParameter(v3_param_id id) {
  Deliver();
  const Target target = list_.Find(id);
  const auto place = static_cast<std::size_t>(target.place);
  switch (target.kind) {
    case Target::Kind::kParameter:
      return shown_.Get(place);
    case Target::Kind::kProgram:
      return list_.ToNormalized(target, program_);
    case Target::Kind::kController:
      return controllers_[place];
    case Target::Kind::kNone:
      break;
  }
  return 0;
}

// A program's values are told at the next call: some hosts hold a lock here that the telling would wait for.
v3_result Instance::SetParameter(v3_param_id id, double normalized) {
  const Target target = list_.Find(id);
  if (target.kind == Target::Kind::kNone || std::isnan(normalized)) return V3_INVALID_ARG;
  const double plain = list_.ToPlain(target, normalized);
  if (target.kind == Target::Kind::kProgram) {
    LoadProgram(static_cast<int32_t>(plain));
    return V3_OK;
  }
  if (target.kind == Target::Kind::kParameter)
    SetValue(target.place, list_.ToNormalized(target, plain));
  else
    controllers_[static_cast<std::size_t>(target.place)] = list_.ToNormalized(target, plain);
  Deliver();
  return V3_OK;
}

// What an instrument has to read for a value is read on this thread, so that it comes here first.
void Instance::SetValue(int32_t place, double normalized) {
  const bridge::DawParameter& parameter = plugin_.GetParameters()[static_cast<std::size_t>(place)];
  const bool isRead = plugin_.IsInstrument() && parameter.control == bridge::HostControl::kNone;
  if (areBlocksComing_ && !isRead) {
    shown_.Await(static_cast<std::size_t>(place), normalized);
    blocksAtWait_ = blocks_.load();
    return;
  }
  shown_.Show(static_cast<std::size_t>(place), normalized);
  const double value = bridge::Denormalize(parameter, normalized);
  if (value != plugin_.GetValue(place)) plugin_.SetValue(place, value);
}

void Instance::Settle() {
  for (std::size_t i = 0; i < shown_.GetCount(); ++i)
    if (shown_.Take(i))
      plugin_.SetValue(static_cast<int32_t>(i),
                       bridge::Denormalize(plugin_.GetParameters()[i], shown_.Get(i)));
}

void Instance::ShowAll() noexcept {
  for (std::size_t i = 0; i < shown_.GetCount(); ++i)
    shown_.Show(i, bridge::Normalize(plugin_.GetParameters()[i], plugin_.GetValue(static_cast<int32_t>(i))));
}

// The program that is there already may have been changed since: a host that repeats it does not want it.
void Instance::LoadProgram(int32_t program) {
  if (program_ == program) return;
  const auto preset = static_cast<std::size_t>(program - 1);
  plugin_.LoadState(program == 0 ? firstState_ : presets_[preset].text);
  program_ = program;
  ShowAll();
  restart_ |= V3_RESTART_PARAM_VALUES_CHANGED;
}

// What fails here is not what the host has called for.
void Instance::Deliver() try {
  if (IsAudioThread()) return;
  if (isWorkWaiting_.exchange(false)) plugin_.DoWork();
  if (const int32_t program = nextProgram_.exchange(-1); program >= 0) LoadProgram(program);
  if (!handler_) return;
  const int32_t flags = restart_.exchange(0);
  if ((flags & V3_RESTART_PARAM_VALUES_CHANGED) && !areBlocksComing_) ShowAll();
  if (flags != 0) v3_cpp_obj(handler_)->restart_component(handler_, flags);
} catch (const MException& raised) {
  Report(raised);
}

v3_result Instance::SetComponentHandler(v3_component_handler** handler) {
  if (handler == handler_) return V3_OK;
  if (handler) v3_cpp_obj_ref(handler);
  if (v3_component_handler** const before = std::exchange(handler_, handler)) v3_cpp_obj_unref(before);
  return V3_OK;
}

v3_plugin_view** Instance::CreateView(const char*) {
  return nullptr;
}

v3_result Instance::GetMidiControllerAssignment(int32_t bus, int16_t channel, int16_t controller,
                                                v3_param_id* id) {
  if (!id) return V3_INVALID_ARG;
  return bus == 0 && ParameterList::FindController(channel, controller, *id) ? V3_OK : V3_FALSE;
}

}  // namespace vst3
