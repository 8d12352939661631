#include <clap/ext/audio-ports.h>
#include <clap/ext/note-ports.h>

#include <algorithm>

#include "hosts/clap/Call.h"
#include "hosts/clap/Parameters.h"

namespace clap {

namespace {

// Effects alone have an input.
uint32_t CountAudioPorts(Instance& instance, bool isInput) noexcept {
  return isInput && instance.GetPlugin().IsInstrument() ? 0 : 1;
}

const char* GetPortType(int32_t channels) noexcept {
  return channels == 1 ? CLAP_PORT_MONO : CLAP_PORT_STEREO;
}

uint32_t CLAP_ABI GetAudioPortCount(const clap_plugin_t* plugin, bool isInput) {
  return Call(plugin, 0u, [=](Instance& instance) { return CountAudioPorts(instance, isInput); });
}

bool CLAP_ABI GetAudioPort(const clap_plugin_t* plugin, uint32_t index, bool isInput,
                           clap_audio_port_info_t* info) {
  return Call(plugin, false, [=](Instance& instance) {
    if (!info || index >= CountAudioPorts(instance, isInput)) return false;
    *info = {};
    CopyText(info->name, CLAP_NAME_SIZE, isInput ? "Input" : "Output");
    info->flags = CLAP_AUDIO_PORT_IS_MAIN;
    info->channel_count = static_cast<uint32_t>(instance.GetChannels());
    info->port_type = GetPortType(instance.GetChannels());
    info->in_place_pair = instance.GetPlugin().IsInstrument() ? CLAP_INVALID_ID : 0;
    return true;
  });
}

constexpr clap_plugin_audio_ports_t kAudioPorts = {GetAudioPortCount, GetAudioPort};

// Stereo comes first: hosts that do not choose take that.
constexpr int32_t kConfigurations[] = {2, 1};  // their channels, which are their ids as well

uint32_t CLAP_ABI GetConfigurationCount(const clap_plugin_t*) {
  return static_cast<uint32_t>(std::size(kConfigurations));
}

bool CLAP_ABI GetConfiguration(const clap_plugin_t* plugin, uint32_t index,
                               sonvelle_clap_audio_ports_config_t* config) {
  return Call(plugin, false, [=](Instance& instance) {
    if (!config || index >= std::size(kConfigurations)) return false;
    const int32_t channels = kConfigurations[index];
    const auto count = static_cast<uint32_t>(channels);
    *config = {};
    config->id = count;
    CopyText(config->name, CLAP_NAME_SIZE, channels == 1 ? "Mono" : "Stereo");
    config->input_port_count = CountAudioPorts(instance, true);
    config->output_port_count = 1;
    config->main_output_channel_count = count;
    config->main_output_port_type = GetPortType(channels);
    config->has_main_output = true;
    config->has_main_input = config->input_port_count > 0;
    if (!config->has_main_input) return true;
    config->main_input_channel_count = count;
    config->main_input_port_type = GetPortType(channels);
    return true;
  });
}

bool CLAP_ABI SelectConfiguration(const clap_plugin_t* plugin, clap_id id) {
  return CallOnMain(plugin, false, [=](Instance& instance) {
    const auto* const found = std::find_if(std::begin(kConfigurations), std::end(kConfigurations),
                                           [id](int32_t each) { return static_cast<clap_id>(each) == id; });
    if (found == std::end(kConfigurations) || instance.IsActive()) return false;
    instance.SetChannels(*found);
    return true;
  });
}

constexpr sonvelle_clap_plugin_audio_ports_config_t kPortConfigurations = {
    GetConfigurationCount, GetConfiguration, SelectConfiguration};

uint32_t CLAP_ABI GetNotePortCount(const clap_plugin_t*, bool isInput) {
  return isInput ? 1 : 0;
}

bool CLAP_ABI GetNotePort(const clap_plugin_t*, uint32_t index, bool isInput, clap_note_port_info_t* info) {
  if (!info || !isInput || index > 0) return false;
  *info = {};
  info->supported_dialects = CLAP_NOTE_DIALECT_CLAP | CLAP_NOTE_DIALECT_MIDI;
  info->preferred_dialect = CLAP_NOTE_DIALECT_CLAP;
  CopyText(info->name, CLAP_NAME_SIZE, "Notes");
  return true;
}

constexpr clap_plugin_note_ports_t kNotePorts = {GetNotePortCount, GetNotePort};

uint32_t CLAP_ABI GetLatency(const clap_plugin_t* plugin) {
  return Call(plugin, 0u, [](Instance& instance) { return instance.GetLatency(); });
}

constexpr clap_plugin_latency_t kLatency = {GetLatency};

uint32_t CLAP_ABI GetTail(const clap_plugin_t* plugin) {
  return Call(plugin, 0u, [](Instance& instance) { return instance.GetTail(); });
}

constexpr sonvelle_clap_plugin_tail_t kTail = {GetTail};

bool CLAP_ABI HasHardRealtimeRequirement(const clap_plugin_t*) {
  return false;
}

bool CLAP_ABI SetRenderMode(const clap_plugin_t* plugin, int32_t mode) {
  if (mode != SONVELLE_CLAP_RENDER_REALTIME && mode != SONVELLE_CLAP_RENDER_OFFLINE) return false;
  return CallOnMain(plugin, false, [=](Instance& instance) {
    instance.SetOffline(mode == SONVELLE_CLAP_RENDER_OFFLINE);
    return true;
  });
}

constexpr sonvelle_clap_plugin_render_t kRender = {HasHardRealtimeRequirement, SetRenderMode};

bool CLAP_ABI SaveState(const clap_plugin_t* plugin, const clap_ostream_t* stream) {
  return CallOnMain(plugin, false, [=](Instance& instance) {
    if (stream) instance.Save(*stream);
    return stream != nullptr;
  });
}

bool CLAP_ABI LoadState(const clap_plugin_t* plugin, const clap_istream_t* stream) {
  return CallOnMain(plugin, false, [=](Instance& instance) {
    if (stream) instance.Load(*stream);
    return stream != nullptr;
  });
}

constexpr clap_plugin_state_t kState = {SaveState, LoadState};

bool CLAP_ABI LoadPreset(const clap_plugin_t* plugin, uint32_t kind, const char* location, const char* name) {
  return CallOnMain(plugin, false, [=](Instance& instance) {
    try {
      if (kind != SONVELLE_CLAP_PRESET_IN_PLUGIN || !name) throw MException("There is no such preset.");
      instance.LoadPreset(name);
    } catch (const MException& raised) {
      instance.GetHost().TellPresetError(kind, location, name, bridge::ToUtf8(raised.message).c_str());
      return false;
    }
    instance.GetHost().TellPreset(name);
    return true;
  });
}

constexpr sonvelle_clap_plugin_preset_load_t kPresetLoad = {LoadPreset};

struct Extension {
  std::string_view id;
  const void* functions;
  bool isForInstruments;  // alone
};

const Extension kExtensions[] = {
    {CLAP_EXT_PARAMS, &kParameters, false},
    {CLAP_EXT_STATE, &kState, false},
    {CLAP_EXT_AUDIO_PORTS, &kAudioPorts, false},
    {CLAP_EXT_NOTE_PORTS, &kNotePorts, true},
    {CLAP_EXT_LATENCY, &kLatency, false},
    {SONVELLE_CLAP_EXT_TAIL, &kTail, false},
    {SONVELLE_CLAP_EXT_RENDER, &kRender, false},
    {SONVELLE_CLAP_EXT_AUDIO_PORTS_CONFIG, &kPortConfigurations, false},
    {SONVELLE_CLAP_EXT_PRESET_LOAD, &kPresetLoad, false},
    {SONVELLE_CLAP_EXT_PRESET_LOAD_DRAFT, &kPresetLoad, false},
};

}  // namespace

const void* FindExtension(const Instance& instance, const char* id) noexcept {
  for (const Extension& extension : kExtensions)
    if (extension.id == id && (!extension.isForInstruments || instance.IsInstrument()))
      return extension.functions;
  return nullptr;
}

}  // namespace clap
