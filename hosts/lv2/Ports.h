#pragma once
#include <span>
#include <string>
#include <vector>

#include "hosts/bridge/DawParameters.h"

namespace lv2 {

enum class PortRole { kEventsIn, kEventsOut, kIn, kOut, kLatency, kFreeWheel, kControl };

struct Port {
  PortRole role;
  std::string symbol;
  int32_t place = 0;  // kControl: of the parameter; kIn, kOut: the channel
};

constexpr int32_t kChannels = 2;

// The ports of a plug-in; a port's index is its place. Symbols are the keys of the rows, "enabled" for the
// bypass; songs keep them (tests/golden/lv2_ports.tsv).
std::vector<Port> MakePorts(const bridge::PluginType& type, std::span<const bridge::DawParameter> parameters);

// A valid symbol like the text: what is no letter, digit or "_" becomes "_".
std::string MakeSymbol(std::string_view text);

}  // namespace lv2
