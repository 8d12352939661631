#pragma once
// Those extensions of CLAP 1.2 that the installed headers do not have, as the published interface lays them
// out. Threads stand behind each function; "main" is the host's main thread.

#include <clap/plugin.h>
#include <clap/string-sizes.h>

#ifdef __cplusplus
extern "C" {
#endif

// An enumeration: stepped, and every value from the minimum to the maximum has a text.
enum { SONVELLE_CLAP_PARAM_IS_ENUM = 1 << 16 };

static CLAP_CONSTEXPR const char SONVELLE_CLAP_EXT_TAIL[] = "clap.tail";

typedef struct sonvelle_clap_plugin_tail {
  // In samples; INT32_MAX and more are endless. [main, audio]
  uint32_t(CLAP_ABI* get)(const clap_plugin_t* plugin);
} sonvelle_clap_plugin_tail_t;

typedef struct sonvelle_clap_host_tail {
  // get gives another number. [audio]
  void(CLAP_ABI* changed)(const clap_host_t* host);
} sonvelle_clap_host_tail_t;

static CLAP_CONSTEXPR const char SONVELLE_CLAP_EXT_RENDER[] = "clap.render";

enum { SONVELLE_CLAP_RENDER_REALTIME = 0, SONVELLE_CLAP_RENDER_OFFLINE = 1 };

typedef struct sonvelle_clap_plugin_render {
  // Whether the plug-in cannot be faster than real time. [main]
  bool(CLAP_ABI* has_hard_realtime_requirement)(const clap_plugin_t* plugin);
  // Whether the mode is taken. [main]
  bool(CLAP_ABI* set)(const clap_plugin_t* plugin, int32_t mode);
} sonvelle_clap_plugin_render_t;

static CLAP_CONSTEXPR const char SONVELLE_CLAP_EXT_AUDIO_PORTS_CONFIG[] = "clap.audio-ports-config";

typedef struct sonvelle_clap_audio_ports_config {
  clap_id id;
  char name[CLAP_NAME_SIZE];
  uint32_t input_port_count;
  uint32_t output_port_count;
  bool has_main_input;
  uint32_t main_input_channel_count;
  const char* main_input_port_type;
  bool has_main_output;
  uint32_t main_output_channel_count;
  const char* main_output_port_type;
} sonvelle_clap_audio_ports_config_t;

typedef struct sonvelle_clap_plugin_audio_ports_config {
  // [main]
  uint32_t(CLAP_ABI* count)(const clap_plugin_t* plugin);
  // [main]
  bool(CLAP_ABI* get)(const clap_plugin_t* plugin, uint32_t index,
                      sonvelle_clap_audio_ports_config_t* config);
  // [main, not active]
  bool(CLAP_ABI* select)(const clap_plugin_t* plugin, clap_id config_id);
} sonvelle_clap_plugin_audio_ports_config_t;

static CLAP_CONSTEXPR const char SONVELLE_CLAP_EXT_PRESET_LOAD[] = "clap.preset-load/2";
static CLAP_CONSTEXPR const char SONVELLE_CLAP_EXT_PRESET_LOAD_DRAFT[] = "clap.preset-load.draft/2";

enum { SONVELLE_CLAP_PRESET_IN_FILE = 0, SONVELLE_CLAP_PRESET_IN_PLUGIN = 1 };

typedef struct sonvelle_clap_plugin_preset_load {
  // location is null for presets in the plug-in, and load_key names one of them. [main]
  bool(CLAP_ABI* from_location)(const clap_plugin_t* plugin, uint32_t location_kind, const char* location,
                                const char* load_key);
} sonvelle_clap_plugin_preset_load_t;

typedef struct sonvelle_clap_host_preset_load {
  // os_error may be 0. [main]
  void(CLAP_ABI* on_error)(const clap_host_t* host, uint32_t location_kind, const char* location,
                           const char* load_key, int32_t os_error, const char* message);
  // [main]
  void(CLAP_ABI* loaded)(const clap_host_t* host, uint32_t location_kind, const char* location,
                         const char* load_key);
} sonvelle_clap_host_preset_load_t;

static CLAP_CONSTEXPR const char SONVELLE_CLAP_EXT_LOG[] = "clap.log";

enum { SONVELLE_CLAP_LOG_ERROR = 3 };

typedef struct sonvelle_clap_host_log {
  // UTF-8. [any]
  void(CLAP_ABI* log)(const clap_host_t* host, int32_t severity, const char* message);
} sonvelle_clap_host_log_t;

#ifdef __cplusplus
}
#endif
