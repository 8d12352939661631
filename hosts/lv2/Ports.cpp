#include "hosts/lv2/Ports.h"

#include <algorithm>

#include "hosts/lv2/FileKind.h"

namespace lv2 {

namespace {

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

void Add(std::vector<Port>& ports, PortRole role, const std::string& wanted, int32_t place = 0) {
  const auto isTaken = [&](const std::string& symbol) {
    return std::any_of(ports.begin(), ports.end(), [&](const Port& port) { return port.symbol == symbol; });
  };
  std::string symbol = wanted;
  for (int32_t i = 2; isTaken(symbol); ++i) symbol = wanted + "_" + std::to_string(i);
  ports.push_back({role, symbol, place});
}

}  // namespace

std::string MakeSymbol(std::string_view text) {
  std::string symbol(text);
  std::replace_if(
      symbol.begin(), symbol.end(), [](char c) { return !IsLetter(c) && !IsDigit(c); }, '_');
  return symbol.empty() || IsDigit(symbol[0]) ? "_" + symbol : symbol;
}

std::vector<Port> MakePorts(const bridge::PluginType& type,
                            std::span<const bridge::DawParameter> parameters) {
  std::vector<Port> ports;
  const bool isInstrument = type.kind == bridge::PluginKind::kInstrument;
  if (isInstrument) Add(ports, PortRole::kEventsIn, "events_in");
  if (isInstrument && FindFileKind(type)) Add(ports, PortRole::kEventsOut, "events_out");
  if (!isInstrument) {
    Add(ports, PortRole::kIn, "in_left", 0);
    Add(ports, PortRole::kIn, "in_right", 1);
  }
  Add(ports, PortRole::kOut, "out_left", 0);
  Add(ports, PortRole::kOut, "out_right", 1);
  if (isInstrument)
    Add(ports, PortRole::kFreeWheel, "freewheel");
  else
    Add(ports, PortRole::kLatency, "latency");
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const bool isBypass = parameters[i].control == bridge::HostControl::kBypass;
    Add(ports, PortRole::kControl, isBypass ? "enabled" : MakeSymbol(parameters[i].key),
        static_cast<int32_t>(i));
  }
  return ports;
}

}  // namespace lv2
