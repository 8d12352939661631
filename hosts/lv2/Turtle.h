#pragma once
// The texts of a bundle, made from the plug-ins themselves.

#include "hosts/bridge/Content.h"
#include "hosts/bridge/PluginTable.h"

namespace lv2 {

// A plug-in with the states that come with it.
struct Described {
  bridge::PluginType type;
  std::vector<bridge::Preset> presets;
};

// manifest.ttl: the plug-ins, and their presets.
std::string MakeManifest(const std::vector<Described>& plugins);
// NAME.ttl. `version` is that of the project, "MAJOR.MINOR.PATCH". Raises MException.
std::string MakePluginTurtle(const bridge::PluginType& type, const std::string& version);
// NAME-presets.ttl: the number of each port and the state. Raises MException.
std::string MakePresetsTurtle(const Described& plugin);

// The class of LV2 that says what a plug-in does: "DelayPlugin"; empty if none does.
std::string GetClass(const bridge::PluginType& type);

// Whether its blocks neither allocate nor wait, also when a control changes: lv2:hardRTCapable. Most effects
// take a lock of their own then, and streams of instruments allocate.
bool IsHardRealTime(const bridge::PluginType& type) noexcept;

}  // namespace lv2
