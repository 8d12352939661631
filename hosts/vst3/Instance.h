#pragma once
#include <travesty/audio_processor.h>
#include <travesty/base.h>
#include <travesty/component.h>
#include <travesty/edit_controller.h>
#include <travesty/unit.h>

#include <thread>

#include "hosts/bridge/DawPlugin.h"
#include "hosts/vst3/BlockChanges.h"
#include "hosts/vst3/Classes.h"
#include "hosts/vst3/Interface.h"
#include "hosts/vst3/NoteIds.h"
#include "hosts/vst3/ParameterList.h"
#include "hosts/vst3/ShownValues.h"

namespace vst3 {

// A plug-in in a host: component and controller in one object, which counts its references. The operations
// are those of the format's interfaces, in their order; what a host passes is checked. Threads are those of
// bridge::DawPlugin: Process and SetProcessing are [audio], the others [host], states from any of them.
class Instance final : bridge::DawPlugin::Client {
 public:
  // Has one reference. Raises MException when the plug-in cannot be made.
  explicit Instance(const Class& type);

  v3_result QueryInterface(const uint8_t* id, void** object);
  uint32_t Ref();
  uint32_t Unref();
  v3_result Initialize(v3_funknown** context);
  v3_result Terminate();

  // The component.
  v3_result GetControllerClassId(uint8_t* id);
  v3_result SetIoMode(int32_t mode);
  int32_t GetBusCount(int32_t media, int32_t direction);
  v3_result GetBusInfo(int32_t media, int32_t direction, int32_t index, v3_bus_info* info);
  v3_result GetRoutingInfo(v3_routing_info* input, v3_routing_info* output);
  v3_result ActivateBus(int32_t media, int32_t direction, int32_t index, v3_bool state);
  v3_result SetActive(v3_bool state);
  v3_result SetState(v3_bstream** stream);
  v3_result GetState(v3_bstream** stream);

  // The processor.
  v3_result SetBusArrangements(v3_speaker_arrangement* inputs, int32_t inputCount,
                               v3_speaker_arrangement* outputs, int32_t outputCount);
  v3_result GetBusArrangement(int32_t direction, int32_t index, v3_speaker_arrangement* arrangement);
  v3_result CanProcessSampleSize(int32_t size);
  uint32_t GetLatencySamples();
  v3_result SetupProcessing(v3_process_setup* setup);
  v3_result SetProcessing(v3_bool state);
  v3_result Process(v3_process_data* data);
  uint32_t GetTailSamples();
  uint32_t GetProcessContextRequirements();

  // The controller.
  v3_result SetComponentState(v3_bstream** stream);
  v3_result SetControllerState(v3_bstream** stream);
  v3_result GetControllerState(v3_bstream** stream);
  int32_t GetParameterCount();
  v3_result GetParameterInfo(int32_t index, v3_param_info* info);
  v3_result GetParameterText(v3_param_id id, double normalized, int16_t* text);
  v3_result GetParameterValue(v3_param_id id, int16_t* text, double* normalized);
  double ToPlain(v3_param_id id, double normalized);
  double ToNormalized(v3_param_id id, double plain);
  double GetParameter(v3_param_id id);
  v3_result SetParameter(v3_param_id id, double normalized);
  v3_result SetComponentHandler(v3_component_handler** handler);
  v3_plugin_view** CreateView(const char* name);
  v3_result GetMidiControllerAssignment(int32_t bus, int16_t channel, int16_t controller, v3_param_id* id);

  // The units: the root, and one per panel.
  int32_t GetUnitCount();
  v3_result GetUnitInfo(int32_t index, v3_unit_info* info);
  int32_t GetProgramListCount();
  v3_result GetProgramListInfo(int32_t index, v3_program_list_info* info);
  v3_result GetProgramName(int32_t list, int32_t program, int16_t* name);
  v3_result GetProgramInfo(int32_t list, int32_t program, const char* attribute, int16_t* value);
  v3_result HasProgramPitchNames(int32_t list, int32_t program);
  v3_result GetProgramPitchName(int32_t list, int32_t program, int16_t pitch, int16_t* name);
  int32_t GetSelectedUnit();
  v3_result SelectUnit(int32_t unit);
  v3_result GetUnitByBus(int32_t media, int32_t direction, int32_t bus, int32_t channel, int32_t* unit);
  v3_result SetUnitProgramData(int32_t list, int32_t program, v3_bstream** data);

 private:
  struct Tables;

  ~Instance() override;
  void OnValuesChanged() noexcept override { restart_ |= V3_RESTART_PARAM_VALUES_CHANGED; }
  void OnWorkWaiting() noexcept override { isWorkWaiting_ = true; }
  void OnLatencyChanged() noexcept override { restart_ |= V3_RESTART_LATENCY_CHANGED; }

  bool HasBus(int32_t media, int32_t direction, int32_t index) noexcept;
  v3_speaker_arrangement& GetArrangement(int32_t direction) noexcept;
  bool IsAudioThread() const noexcept;
  void Activate();

  // Does what waits for a thread that may.
  void Deliver();
  void ShowAll() noexcept;
  // Values that no queue will bring reach the processor.
  void Settle();
  void SetValue(int32_t place, double normalized);
  void LoadProgram(int32_t program);

  void EnterBlocks() noexcept;
  bool ConnectBuffers(const v3_process_data& data, int32_t frames) noexcept;
  void PlayChanges() noexcept;
  void PlayEvent(const v3_event& event) noexcept;
  void PlayPoint(Target target, double value) noexcept;
  void FinishBuffers(const v3_process_data& data, int32_t frames) noexcept;

  Face component_, processor_, controller_, units_, requirements_, midiMapping_;
  std::atomic<uint32_t> references_ = 1;
  bridge::DawPlugin plugin_;
  const std::vector<bridge::Preset> presets_;
  const ParameterList list_;
  ShownValues shown_;
  std::array<std::atomic<double>, ParameterList::kControllerCount> controllers_ = {};
  BlockChanges changes_;
  NoteIds noteIds_;

  v3_funknown** context_ = nullptr;
  v3_component_handler** handler_ = nullptr;
  std::string firstState_;  // the program 0
  std::atomic<int32_t> program_ = 0;
  std::atomic<int32_t> nextProgram_ = -1;  // one that a block has asked for
  std::atomic<int32_t> restart_ = 0;       // what the host is yet to be told
  std::atomic<bool> isWorkWaiting_ = false;
  std::atomic<uint32_t> tail_ = 0;

  v3_process_setup setup_ = {V3_REALTIME, V3_SAMPLE_32, 1024, 44100};
  v3_speaker_arrangement arrangements_[2];  // of input and output
  std::atomic<bool> areBusesActive_[2][2];  // by media type and direction
  std::atomic<bool> areBlocksComing_ = false;
  std::atomic<std::thread::id> audioThread_;  // of the last block
  std::atomic<std::thread::id> hostThread_;   // of the last activation
  std::atomic<uint32_t> blocks_ = 0;
  std::atomic<uint32_t> blocksAtWait_ = 0;  // when a value began to wait
  std::vector<const float*> in_;
  std::vector<float*> out_;
  std::vector<float> scratch_;  // planes for outputs that the host does not have
  int32_t planeSize_ = 0;
};

}  // namespace vst3
