#pragma once
#include <clap/ext/latency.h>
#include <clap/ext/params.h>
#include <clap/ext/thread-check.h>

#include "hosts/clap/extensions.h"

namespace clap {

// The host of one plug-in. What it does not offer is left out; nothing is asked of it before Start.
class Host {
 public:
  explicit Host(const clap_host_t* host) noexcept : host_(host) {}

  // Looks for the host's extensions. [main]
  void Start() noexcept;

  void RequestCallback() const noexcept;  // [any]
  void RequestRestart() const noexcept;   // [any]
  // A line for the log, of the standard error stream without one. [any]
  void Log(const char* message) const noexcept;
  void TellValues() const noexcept;   // they have changed by themselves [main]
  void TellLatency() const noexcept;  // [main, not active]
  bool HearsTail() const noexcept { return tail_ && tail_->changed; }
  void TellTail() const noexcept;                    // [audio]
  void TellPreset(const char* name) const noexcept;  // [main]
  void TellPresetError(uint32_t kind, const char* location, const char* name,
                       const char* message) const noexcept;  // [main]
  // In debug builds, and where the host knows its threads: ends the process on the wrong one.
  void ExpectMain() const noexcept;
  void ExpectAudio() const noexcept;

 private:
  template <typename Extension>
  const Extension* Find(const char* id) const noexcept;

  const clap_host_t* const host_;
  bool hasStarted_ = false;
  const clap_host_params_t* params_ = nullptr;
  const clap_host_latency_t* latency_ = nullptr;
  const clap_host_thread_check_t* threads_ = nullptr;
  const sonvelle_clap_host_tail_t* tail_ = nullptr;
  const sonvelle_clap_host_preset_load_t* presets_ = nullptr;
  const sonvelle_clap_host_log_t* log_ = nullptr;
};

}  // namespace clap
