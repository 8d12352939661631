#pragma once
#include <clap/ext/state.h>

#include <array>
#include <thread>

#include "hosts/clap/Host.h"
#include "hosts/clap/Notes.h"

namespace clap {

// A plug-in as CLAP sees it. The C functions (Handle.cpp, Extensions.cpp) lead here; which thread may call
// what is said in CLAP's headers, in short: [main] and [audio]. What may raise MException says so.
class Instance final : private bridge::DawPlugin::Client {
 public:
  static constexpr int32_t kMostChannels = 2;

  // Raises MException when the plug-in cannot be made.
  Instance(const bridge::PluginType& type, const clap_plugin_descriptor_t& descriptor,
           const clap_host_t* host);
  Instance(const Instance&) = delete;
  Instance& operator=(const Instance&) = delete;
  ~Instance() override;

  const clap_plugin_t& GetHandle() const noexcept { return handle_; }
  const Host& GetHost() const noexcept { return host_; }
  bridge::DawPlugin& GetPlugin() noexcept { return plugin_; }
  bool IsInstrument() const noexcept { return plugin_.IsInstrument(); }
  bool IsActive() const noexcept { return isActive_.load(std::memory_order_relaxed); }

  void Start() noexcept;  // [main]
  // False for formats that nobody uses. Raises MException. [main]
  bool Activate(double sampleRate, uint32_t mostFrames);
  void Deactivate();  // [main]
  // What was asked for since the last time. Raises MException. [main]
  void RunOnMainThread();

  int32_t GetChannels() const noexcept { return channels_; }
  void SetChannels(int32_t channels) noexcept { channels_ = channels; }  // [main, not active]
  // While active that of the beginning, whatever it is by now: the host is asked to begin anew. [main]
  uint32_t GetLatency() const noexcept;
  // Raises MException on the main thread, where it measures that of an effect. [main, audio]
  uint32_t GetTail();
  void SetOffline(bool isOffline) noexcept { wantsOffline_ = isOffline; }  // [main]
  void Save(const clap_ostream_t& stream);                                 // raises MException [main]
  void Load(const clap_istream_t& stream);                                 // raises MException [main]
  void LoadPreset(const char* name);                                       // raises MException [main]

  clap_process_status Process(const clap_process_t& block) noexcept;  // [audio]
  void Reset() noexcept;                                              // [audio]
  void Flush(const clap_input_events_t* events) noexcept;             // [active ? audio : main]

 private:
  enum Waiting : uint32_t { kValues = 1, kWork = 2, kTail = 4 };  // for the main thread

  void OnValuesChanged() noexcept override { Ask(kValues); }
  void OnWorkWaiting() noexcept override { Ask(kWork); }
  void OnLatencyChanged() noexcept override {
    if (IsActive() && !isRestartAsked_.exchange(true)) host_.RequestRestart();
  }
  void Ask(uint32_t waiting) noexcept;
  void LoadText(const std::string& text);
  void MeasureTail();
  bool TakeBuffers(const clap_process_t& block) noexcept;
  void RunEvents(const clap_input_events_t* events, uint32_t frames, bool areNotesHeard) noexcept;
  void RunEvent(const clap_event_header_t& header, int32_t frame, bool areNotesHeard) noexcept;
  void Change(const clap_event_param_value_t& event, int32_t frame) noexcept;
  int32_t FindPlace(const clap_event_param_value_t& event) const noexcept;
  void FollowTail() noexcept;

  Host host_;
  bridge::DawPlugin plugin_;
  const clap_plugin_t handle_;
  Notes notes_;
  std::thread::id mainThread_;
  std::atomic<uint32_t> waiting_ = 0;
  std::atomic<bool> isActive_ = false;
  std::atomic<bool> wantsOffline_ = false;
  std::atomic<bool> isRestartAsked_ = false;
  std::atomic<uint32_t> tail_ = 0;
  std::atomic<bool> isTailOld_ = true;
  std::atomic<bool> isTailNew_ = false;  // and the host is yet to be told
  bool isOffline_ = false;
  bool hasChanged_ = false;  // a parameter, in this block
  int32_t channels_ = kMostChannels;
  int32_t latency_ = 0;
  std::array<const float*, kMostChannels> in_ = {};
  std::array<float*, kMostChannels> out_ = {};
};

// The functions of a plug-in, for its handle.
clap_plugin_t MakeHandle(const clap_plugin_descriptor_t& descriptor, Instance& instance) noexcept;
// The functions of an extension, or null. [any]
const void* FindExtension(const Instance& instance, const char* id) noexcept;

}  // namespace clap
