#pragma once
#include "hosts/bridge/DawParameters.h"
#include "hosts/bridge/Plugin.h"

class MXMLItem;

namespace bridge {

// States as songs keep them: the XML text of an item "state", the form that the command `sonvelle` reads and
// prints, with the plug-in's name. Two things are more: real values that four decimals do not hold have as
// many as it takes, and the parameters of the host side are there ("hostBypass" and so on).

// Writes the state to an item. Raises MException. [host]
void SaveDawState(Plugin& plugin, const PluginType& type, const DawParameters& parameters, MXMLItem& item);
// Takes over the state of an item. A parameter of the host side that it lacks stays as it is. Raises
// MException, with the plug-in as it was, for a state of another plug-in and for what is no state. [host]
void LoadDawState(Plugin& plugin, const PluginType& type, DawParameters& parameters, MXMLItem& item);

// UTF-8 and back. ReadStateText raises MException for what is no XML or is cut off.
std::string GetStateText(const MXMLItem& item);
void ReadStateText(std::string_view text, MXMLItem& item);

}  // namespace bridge
