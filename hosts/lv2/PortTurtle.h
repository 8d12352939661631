#pragma once
#include "hosts/lv2/PortScale.h"
#include "hosts/lv2/Ports.h"
#include "hosts/lv2/TurtleText.h"

namespace lv2 {

constexpr char kInGroup[] = "in";
constexpr char kOutGroup[] = "out";

// A port as the file of its plug-in describes it, in square brackets.
std::string PortTurtle(const bridge::PluginType& type, std::span<const bridge::DawParameter> parameters,
                       const Port& port, std::size_t index);

}  // namespace lv2
