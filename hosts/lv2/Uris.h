#pragma once
#include <lv2/urid/urid.h>

#include <string>

#include "hosts/bridge/PluginTable.h"
#include "hosts/lv2/FileKind.h"

namespace lv2 {

// The URIs of the plug-ins never change: songs know plug-ins by them.
constexpr char kPluginsUri[] = "https://sonvelle.example/plugins/";
// The property that holds the text of a state.
constexpr char kStateUri[] = "https://sonvelle.example/plugins/state#text";

inline std::string GetUri(const bridge::PluginType& type) {
  return kPluginsUri + std::string(type.name);
}

// The property that holds the path of the file that an instrument plays.
inline std::string GetFileUri(const FileKind& kind) {
  return kPluginsUri + std::string(kind.plugin) + "#" + kind.property;
}

// The numbers of the URIs that the adapter knows.
struct Urids {
  Urids(LV2_URID_Map& map, const FileKind* kind);

  LV2_URID atomBlank, atomInt, atomObject, atomPath, atomSequence, atomString, atomUrid;
  LV2_URID mostFrames, nominalFrames;
  LV2_URID logError;
  LV2_URID midiEvent;
  LV2_URID patchGet, patchProperty, patchSet, patchValue;
  LV2_URID stateChanged, stateText;
  LV2_URID file;  // 0 without a kind
};

}  // namespace lv2
