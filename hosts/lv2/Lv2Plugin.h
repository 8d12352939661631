#pragma once
#include <lv2/state/state.h>

#include <deque>

#include "hosts/bridge/DawPlugin.h"
#include "hosts/lv2/Atoms.h"
#include "hosts/lv2/Host.h"
#include "hosts/lv2/PathBox.h"
#include "hosts/lv2/PortScale.h"
#include "hosts/lv2/Ports.h"

namespace lv2 {

// An instance in an LV2 host. Thread classes are those of LV2: Run and HearWork are its audio functions;
// Save and Restore may be called while Run is, and Work is called by the host's worker. Nothing is raised but
// by the constructor.
//
// Control ports are what holds: a port is applied in front of a block when its number has changed, and all
// are compared with the values behind a restored state. A value that came with a state is kept exactly as
// long as its port is the float of it.
class Lv2Plugin final : public bridge::DawPlugin::Client {
 public:
  // Raises MException when the host lacks something or the plug-in cannot be made.
  Lv2Plugin(const bridge::PluginType& type, double sampleRate, const LV2_Feature* const* features);
  ~Lv2Plugin() override;

  void Connect(uint32_t port, void* data) noexcept;
  void Activate() noexcept;
  void Deactivate() noexcept;
  void Run(uint32_t frames) noexcept;

  LV2_State_Status Save(LV2_State_Store_Function store, LV2_State_Handle handle,
                        const LV2_Feature* const* features) noexcept;
  LV2_State_Status Restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle,
                           const LV2_Feature* const* features) noexcept;
  LV2_Worker_Status Work(uint32_t size, const void* message) noexcept;

  void OnValuesChanged() noexcept override { isStateNew_ = true; }
  void OnWorkWaiting() noexcept override { isWorkWaiting_ = true; }
  void OnLatencyChanged() noexcept override {}  // every block says it

 private:
  struct Control {
    explicit Control(const bridge::DawParameter& parameter) : scale(parameter) {}
    PortScale scale;
    const float* port = nullptr;
    float seen = 0;
    std::atomic<double> kept = 0;  // of the last state
  };
  static constexpr std::size_t kCount = kChannels;

  void KeepValues() noexcept;
  void ReadFreeWheel() noexcept;
  void ReadControls() noexcept;
  void RunPiece(uint32_t start, int32_t frames, bool isLast, EventReader& events) noexcept;
  void PointChannels(uint32_t start) noexcept;
  void Hear(const LV2_Atom& atom) noexcept;
  void HearObject(const LV2_Atom& object) noexcept;
  void HearFile(const LV2_Atom* path) noexcept;
  void AskForWork() noexcept;
  void WriteMessages() noexcept;

  void LoadFile(const std::string& path);
  void TellFile();
  void RestoreText(std::string_view text, const std::string& path);
  void RestoreDefault();
  std::string SaveFilePath(const MXMLItem& state, const LV2_Feature* const* features) const;
  std::string RestoreFilePath(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle,
                              const LV2_Feature* const* features) const;

  const bridge::PluginType type_;
  const FileKind* const kind_;
  const Host host_;
  const int32_t sampleRate_;
  std::atomic<bool> mustCompare_ = true;
  std::atomic<bool> isStateNew_ = false;
  bool isWorkWaiting_ = false;
  bool isOffline_ = false;
  std::mutex loadLock_;  // one state or file at a time
  bridge::DawPlugin plugin_;
  const std::vector<Port> ports_;
  std::deque<Control> controls_;

  std::array<const float*, kCount> in_ = {}, inAt_ = {};
  std::array<float*, kCount> out_ = {}, outAt_ = {};
  std::array<std::vector<float>, kCount> outSink_;
  const LV2_Atom_Sequence* eventsIn_ = nullptr;
  LV2_Atom_Sequence* eventsOut_ = nullptr;
  const float* freeWheel_ = nullptr;
  float* latency_ = nullptr;

  EventWriter writer_;
  PathBox file_;
  std::array<char, PathBox::kMost + 1> message_ = {};  // for the worker
};

}  // namespace lv2
