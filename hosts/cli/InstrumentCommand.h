#pragma once
#include "hosts/bridge/PluginTable.h"
#include "hosts/cli/Arguments.h"

namespace bridge {
class Plugin;
}

namespace cli {

// Raises Failure with kUsage when the source and the output are one file.
void RequireOther(const std::string& source, const std::string& output);

// Has an instrument take over a sound file. Warns where it cannot be loaded; raises Failure with kUsage for a
// plug-in that imports none.
void ImportSample(bridge::Plugin& plugin, const std::string& name, const std::string& path);

// Plays notes or a MIDI file into a WAV file, and prints what became of the notes. Raises Failure.
void RenderInstrument(const bridge::PluginType& type, const RenderArguments& arguments);

}  // namespace cli
