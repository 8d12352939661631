#pragma once
#include "plugin/MHostInterface.h"

// A plug-in of this library.
struct PluginEntry {
  const char* name;  // without its kind: "Echolan"
  const char* kind;  // "AudioEffect" or "AudioStream"
  MPluginEntryPoint* entryPoint;
};

// All plug-ins, in the order of plugins.def, for programs that link the static targets.
extern const PluginEntry kPluginEntries[];
extern const int32_t kPluginEntryCount;
