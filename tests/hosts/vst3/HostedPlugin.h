#pragma once
// A plug-in as a host drives it, through nothing but the interfaces of the format.

#include <travesty/audio_processor.h>
#include <travesty/component.h>
#include <travesty/edit_controller.h>
#include <travesty/factory.h>
#include <travesty/unit.h>

#include "tests/hosts/vst3/HostObjects.h"

extern "C" const void* GetPluginFactory();

namespace host {

using Planes = std::vector<std::vector<float>>;

struct Setup {
  int32_t channels = 2;
  double rate = 48000;
  int32_t block = 512;
  bool isOffline = false;
};

class HostedPlugin {
 public:
  // Raises std::runtime_error when the factory has no plug-in of that name.
  explicit HostedPlugin(const std::string& name, const void* factory = GetPluginFactory());
  HostedPlugin(const HostedPlugin&) = delete;
  HostedPlugin& operator=(const HostedPlugin&) = delete;
  ~HostedPlugin();

  // Another interface of the object, null if it has none; a reference less to give back is taken care of.
  template <class Interface>
  Interface** Query(const uint8_t* id) const {
    Interface** found = nullptr;
    v3_cpp_obj_query_interface(component, id, &found);
    if (found) v3_cpp_obj_unref(found);
    return found;
  }
  bool IsInstrument() const;

  // Everything up to set_processing.
  void Start(const Setup& setup);
  void Stop();
  // The blocks' samples: written in place for effects.
  void Process(Planes& samples, int32_t start, int32_t frames, Changes* changes = nullptr,
               Events* events = nullptr);
  // All of it, in blocks of the set-up.
  void Process(Planes& samples);
  // Parameters without samples.
  void Flush(Changes& changes);

  std::vector<v3_param_info> GetParameters() const;
  double Get(v3_param_id id) const;
  v3_result Set(v3_param_id id, double normalized);
  double ToNormalized(v3_param_id id, double plain) const;
  std::string GetText(v3_param_id id, double normalized) const;
  std::string SaveState(int32_t portion = 1 << 30) const;
  v3_result LoadState(std::string text, int32_t portion = 1 << 30);

  v3_component** component = nullptr;
  v3_audio_processor** processor = nullptr;
  v3_edit_controller** controller = nullptr;
  Handler handler;
  uint64_t silence = 0;  // which channels of the last block were told to be silent

 private:
  Setup setup_;
};

// The names of all classes of a factory.
std::vector<std::string> GetNames(const void* factory = GetPluginFactory());
std::string ToText(const int16_t* text);
// Noise that is the same each time.
Planes MakeNoise(int32_t channels, int32_t frames);

}  // namespace host
