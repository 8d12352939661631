#pragma once
// States of plug-ins as files: an XML element "state" with the attribute "plugin", the name of the plug-in
// as `sonvelle list` has it, and whatever the plug-in saves.

#include <string>

#include "core/MXMLItem.h"
#include "hosts/bridge/Plugin.h"

namespace cli {

// Reads a state for the plug-in of this name. Its root may have any name; without the attribute it may be of
// any plug-in. Raises Failure with kFile: the file is no XML, or the state of another plug-in.
void ReadState(const std::string& path, const std::string& pluginName, MXMLItem& state);

// The state that the plug-in would save, a file of UTF-8.
std::string GetStateText(bridge::Plugin& plugin, const std::string& pluginName);

}  // namespace cli
