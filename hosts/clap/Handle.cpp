#include "hosts/clap/Call.h"

namespace clap {

namespace {

bool CLAP_ABI Init(const clap_plugin_t* plugin) {
  return Call(plugin, false, [](Instance& instance) {
    instance.Start();
    instance.GetHost().ExpectMain();
    return true;
  });
}

void CLAP_ABI Destroy(const clap_plugin_t* plugin) {
  CallOnMain(plugin, false, [](Instance& instance) {
    delete &instance;
    return true;
  });
}

bool CLAP_ABI Activate(const clap_plugin_t* plugin, double sampleRate, uint32_t, uint32_t mostFrames) {
  return CallOnMain(plugin, false,
                    [&](Instance& instance) { return instance.Activate(sampleRate, mostFrames); });
}

void CLAP_ABI Deactivate(const clap_plugin_t* plugin) {
  CallOnMain(plugin, false, [](Instance& instance) {
    instance.Deactivate();
    return true;
  });
}

bool CLAP_ABI StartProcessing(const clap_plugin_t* plugin) {
  return Call(plugin, false, [](Instance& instance) {
    instance.GetHost().ExpectAudio();
    return instance.IsActive();
  });
}

void CLAP_ABI StopProcessing(const clap_plugin_t*) {}

void CLAP_ABI Reset(const clap_plugin_t* plugin) {
  Call(plugin, false, [](Instance& instance) {
    instance.Reset();
    return true;
  });
}

clap_process_status CLAP_ABI Process(const clap_plugin_t* plugin, const clap_process_t* block) {
  if (!block) return CLAP_PROCESS_ERROR;
  return Call(plugin, clap_process_status{CLAP_PROCESS_ERROR},
              [block](Instance& instance) { return instance.Process(*block); });
}

const void* CLAP_ABI GetExtension(const clap_plugin_t* plugin, const char* id) {
  if (!id) return nullptr;
  return Call(plugin, static_cast<const void*>(nullptr),
              [id](Instance& instance) { return FindExtension(instance, id); });
}

void CLAP_ABI OnMainThread(const clap_plugin_t* plugin) {
  CallOnMain(plugin, false, [](Instance& instance) {
    instance.RunOnMainThread();
    return true;
  });
}

}  // namespace

clap_plugin_t MakeHandle(const clap_plugin_descriptor_t& descriptor, Instance& instance) noexcept {
  return {&descriptor,     &instance,      Init,  Destroy, Activate,     Deactivate,
          StartProcessing, StopProcessing, Reset, Process, GetExtension, OnMainThread};
}

}  // namespace clap
