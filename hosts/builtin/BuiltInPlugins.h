#pragma once
#include "hosts/bridge/Content.h"
#include "hosts/bridge/PluginTable.h"

// The plug-ins of this binary, for the adapters of the DAW formats.
namespace builtin {

// Starts the library, the first time, with the content that is installed with this binary, and gives its
// plug-ins; empty when it could not be started. Any thread, not audio.
const bridge::PluginTable& GetPlugins();

// The states that come with a plug-in. Reads files.
std::vector<bridge::Preset> GetPresets(const bridge::PluginType& type);

}  // namespace builtin
