#include "hosts/clap/Host.h"

#include <cassert>
#include <cstdio>

namespace clap {

template <typename Extension>
const Extension* Host::Find(const char* id) const noexcept {
  return static_cast<const Extension*>(host_->get_extension(host_, id));
}

void Host::Start() noexcept {
  if (!host_) return;
  if (host_->get_extension) {
    params_ = Find<clap_host_params_t>(CLAP_EXT_PARAMS);
    latency_ = Find<clap_host_latency_t>(CLAP_EXT_LATENCY);
    threads_ = Find<clap_host_thread_check_t>(CLAP_EXT_THREAD_CHECK);
    tail_ = Find<sonvelle_clap_host_tail_t>(SONVELLE_CLAP_EXT_TAIL);
    presets_ = Find<sonvelle_clap_host_preset_load_t>(SONVELLE_CLAP_EXT_PRESET_LOAD);
    if (!presets_) presets_ = Find<sonvelle_clap_host_preset_load_t>(SONVELLE_CLAP_EXT_PRESET_LOAD_DRAFT);
    log_ = Find<sonvelle_clap_host_log_t>(SONVELLE_CLAP_EXT_LOG);
  }
  hasStarted_ = true;
}

void Host::RequestCallback() const noexcept {
  if (hasStarted_ && host_->request_callback) host_->request_callback(host_);
}

void Host::RequestRestart() const noexcept {
  if (hasStarted_ && host_->request_restart) host_->request_restart(host_);
}

void Host::Log(const char* message) const noexcept {
  if (log_ && log_->log)
    log_->log(host_, SONVELLE_CLAP_LOG_ERROR, message);
  else
    std::fprintf(stderr, "Sonvelle: %s\n", message);
}

void Host::TellValues() const noexcept {
  if (params_ && params_->rescan) params_->rescan(host_, CLAP_PARAM_RESCAN_VALUES);
}

void Host::TellLatency() const noexcept {
  if (latency_ && latency_->changed) latency_->changed(host_);
}

void Host::TellTail() const noexcept {
  if (HearsTail()) tail_->changed(host_);
}

void Host::TellPreset(const char* name) const noexcept {
  if (presets_ && presets_->loaded) presets_->loaded(host_, SONVELLE_CLAP_PRESET_IN_PLUGIN, nullptr, name);
}

void Host::TellPresetError(uint32_t kind, const char* location, const char* name,
                           const char* message) const noexcept {
  if (presets_ && presets_->on_error)
    presets_->on_error(host_, kind, location, name, 0, message);
  else
    Log(message);
}

void Host::ExpectMain() const noexcept {
  assert(!threads_ || !threads_->is_main_thread || threads_->is_main_thread(host_));
}

void Host::ExpectAudio() const noexcept {
  assert(!threads_ || !threads_->is_audio_thread || threads_->is_audio_thread(host_));
}

}  // namespace clap
