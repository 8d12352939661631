#include "hosts/vst3/Instance.h"

#include "hosts/builtin/BuiltInPlugins.h"

namespace vst3 {

struct Instance::Tables {
  static constexpr v3_funknown kUnknown = {kCall<&Instance::QueryInterface>, kCall<&Instance::Ref>,
                                           kCall<&Instance::Unref>};
  static constexpr v3_plugin_base kBase = {kCall<&Instance::Initialize>, kCall<&Instance::Terminate>};

  static constexpr v3_component_cpp kComponent = {
      kUnknown,
      kBase,
      {kCall<&Instance::GetControllerClassId>, kCall<&Instance::SetIoMode>, kCall<&Instance::GetBusCount>,
       kCall<&Instance::GetBusInfo>, kCall<&Instance::GetRoutingInfo>, kCall<&Instance::ActivateBus>,
       kCall<&Instance::SetActive>, kCall<&Instance::SetState>, kCall<&Instance::GetState>}};

  static constexpr v3_audio_processor_cpp kProcessor = {
      kUnknown,
      {kCall<&Instance::SetBusArrangements>, kCall<&Instance::GetBusArrangement>,
       kCall<&Instance::CanProcessSampleSize>, kCall<&Instance::GetLatencySamples>,
       kCall<&Instance::SetupProcessing>, kCall<&Instance::SetProcessing>, kCall<&Instance::Process>,
       kCall<&Instance::GetTailSamples>}};

  static constexpr v3_edit_controller_cpp kController = {
      kUnknown,
      kBase,
      {kCall<&Instance::SetComponentState>, kCall<&Instance::SetControllerState>,
       kCall<&Instance::GetControllerState>, kCall<&Instance::GetParameterCount>,
       kCall<&Instance::GetParameterInfo>, kCall<&Instance::GetParameterText>,
       kCall<&Instance::GetParameterValue>, kCall<&Instance::ToPlain>, kCall<&Instance::ToNormalized>,
       kCall<&Instance::GetParameter>, kCall<&Instance::SetParameter>, kCall<&Instance::SetComponentHandler>,
       kCall<&Instance::CreateView>}};

  static constexpr v3_unit_information_cpp kUnits = {
      kUnknown,
      {kCall<&Instance::GetUnitCount>, kCall<&Instance::GetUnitInfo>, kCall<&Instance::GetProgramListCount>,
       kCall<&Instance::GetProgramListInfo>, kCall<&Instance::GetProgramName>,
       kCall<&Instance::GetProgramInfo>, kCall<&Instance::HasProgramPitchNames>,
       kCall<&Instance::GetProgramPitchName>, kCall<&Instance::GetSelectedUnit>, kCall<&Instance::SelectUnit>,
       kCall<&Instance::GetUnitByBus>, kCall<&Instance::SetUnitProgramData>}};

  static constexpr v3_process_context_requirements_cpp kRequirements = {
      kUnknown, {kCall<&Instance::GetProcessContextRequirements>}};

  static constexpr v3_midi_mapping_cpp kMidiMapping = {kUnknown,
                                                       {kCall<&Instance::GetMidiControllerAssignment>}};
};

Instance::Instance(const Class& type)
    : component_{&Tables::kComponent, this},
      processor_{&Tables::kProcessor, this},
      controller_{&Tables::kController, this},
      units_{&Tables::kUnits, this},
      requirements_{&Tables::kRequirements, this},
      midiMapping_{&Tables::kMidiMapping, this},
      plugin_(*type.type, *this),
      presets_(builtin::GetPresets(*type.type)),
      list_(plugin_.GetParameterList(), presets_, plugin_.IsInstrument()),
      shown_(plugin_.GetParameters().size()),
      changes_(list_),
      arrangements_{V3_SPEAKER_L | V3_SPEAKER_R, V3_SPEAKER_L | V3_SPEAKER_R},
      areBusesActive_{{true, true}, {true, true}} {
  if (!presets_.empty()) firstState_ = plugin_.SaveState();
  ShowAll();
}

Instance::~Instance() {
  try {
    Terminate();
  } catch (...) {
    // Nobody is left who could hear of it.
  }
}

v3_result Instance::QueryInterface(const uint8_t* id, void** object) {
  if (!object) return V3_INVALID_ARG;
  *object = nullptr;
  if (!id) return V3_INVALID_ARG;
  const struct {
    const uint8_t* id;
    Face* face;
    bool isOffered = true;
  } offers[] = {{v3_funknown_iid, &component_},
                {v3_plugin_base_iid, &component_},
                {v3_component_iid, &component_},
                {v3_audio_processor_iid, &processor_},
                {v3_edit_controller_iid, &controller_},
                {v3_unit_information_iid, &units_},
                {v3_process_context_requirements_iid, &requirements_},
                {v3_midi_mapping_iid, &midiMapping_, plugin_.IsInstrument()}};
  for (const auto& offer : offers) {
    if (!offer.isOffered || !v3_tuid_match(offer.id, id)) continue;
    *object = offer.face;
    Ref();
    return V3_OK;
  }
  return V3_NO_INTERFACE;
}

uint32_t Instance::Ref() {
  return ++references_;
}

uint32_t Instance::Unref() {
  const uint32_t left = --references_;
  if (left == 0) delete this;
  return left;
}

v3_result Instance::Initialize(v3_funknown** context) {
  if (context_) return V3_FALSE;
  context_ = context;
  if (context_) v3_cpp_obj_ref(context_);
  return V3_OK;
}

v3_result Instance::Terminate() {
  SetActive(false);
  SetComponentHandler(nullptr);
  if (v3_funknown** const context = std::exchange(context_, nullptr)) v3_cpp_obj_unref(context);
  return V3_OK;
}

// Hosts with one thread for everything may wait on it.
bool Instance::IsAudioThread() const noexcept {
  const std::thread::id here = std::this_thread::get_id();
  return areBlocksComing_.load(std::memory_order_relaxed) && here == audioThread_.load() &&
         here != hostThread_.load();
}

}  // namespace vst3
