#include "hosts/lv2/PortTurtle.h"

#include "hosts/lv2/Uris.h"

namespace lv2 {

namespace {

using bridge::DawParameter;

constexpr int32_t kMostPoints = 64;

// "predicate object ;" on a line of its own.
std::string Line(const std::string& predicate, const std::string& object) {
  return "\t\t" + predicate + " " + object + " ;\n";
}

std::string EventsTurtle(bool isInput, bool hasFile) {
  std::string supports = isInput ? "midi:MidiEvent" : "";
  if (hasFile) supports += isInput ? " , patch:Message" : "patch:Message";
  return Line("lv2:name", isInput ? "\"Events in\"" : "\"Events out\"") +
         Line("atom:bufferType", "atom:Sequence") + Line("atom:supports", supports) +
         Line("lv2:designation", "lv2:control") + (hasFile ? Line("rsz:minimumSize", "8192") : "") +
         Line("lv2:portProperty", "lv2:connectionOptional");
}

std::string AudioTurtle(const std::string& uri, bool isInput, bool isLeft) {
  return Line("lv2:name", Quote(std::string(isInput ? "In" : "Out") + (isLeft ? " left" : " right"))) +
         Line("pg:group", Reference(uri, isInput ? kInGroup : kOutGroup)) +
         Line("lv2:designation", isLeft ? "pg:left" : "pg:right");
}

std::string LatencyTurtle() {
  return Line("lv2:name", "\"Latency\"") + Line("lv2:designation", "lv2:latency") + Line("lv2:minimum", "0") +
         Line("units:unit", "units:frame") +
         Line("lv2:portProperty", "lv2:reportsLatency , lv2:integer , lv2:connectionOptional");
}

std::string FreeWheelTurtle() {
  return Line("lv2:name", "\"Freewheel\"") + Line("lv2:designation", "lv2:freeWheeling") +
         Line("lv2:minimum", "0") + Line("lv2:maximum", "1") + Line("lv2:default", "0") +
         Line("lv2:portProperty", "lv2:toggled , lv2:connectionOptional , pprops:notOnGUI");
}

std::string UnitTurtle(const std::string& unit) {
  static constexpr const char* kUnits[][2] = {{"Hz", "units:hz"}, {"%", "units:pc"},
                                              {"ms", "units:ms"}, {"s", "units:s"},
                                              {"dB", "units:db"}, {"samples", "units:frame"}};
  if (unit.empty()) return {};
  for (const auto& [name, known] : kUnits)
    if (unit == name) return Line("units:unit", known);
  return Line("units:unit", "[\n\t\t\ta units:Unit ;\n\t\t\trdfs:label " + Quote(unit) +
                                " ;\n\t\t\tunits:symbol " + Quote(unit) + " ;\n\t\t\tunits:render " +
                                Quote("%.2f " + unit) + "\n\t\t]");
}

// Whether the port has a name for each of its numbers.
bool IsList(const DawParameter& parameter, const PortScale& scale) {
  const int32_t steps = bridge::GetStepCount(parameter);
  return parameter.row->kind == MParameterKind::kEnumeration ||
         (parameter.row->kind == MParameterKind::kInteger && !scale.IsShown() && steps < kMostPoints);
}

std::string PointTurtle(const DawParameter& parameter, const PortScale& scale, double value) {
  const float port = scale.ToPort(value);
  return Line("lv2:scalePoint",
              "[\n\t\t\trdfs:label " + Quote(bridge::GetDawText(parameter, value)) + " ;\n\t\t\trdf:value " +
                  (bridge::IsWhole(*parameter.row) ? WholeText(port) : FloatText(port)) + "\n\t\t]");
}

// All choices; or what some places of the range mean, where the number is not that of the panel.
std::string PointsTurtle(const DawParameter& parameter, const PortScale& scale) {
  std::string text;
  const bridge::ParameterRange range = bridge::GetRange(*parameter.row);
  if (IsList(parameter, scale))
    for (double value = range.minimum; value <= range.maximum; ++value)
      text += PointTurtle(parameter, scale, value);
  else if (parameter.row->kind == MParameterKind::kReal && !scale.IsShown())
    for (const double place : {0.0, 0.25, 0.5, 0.75, 1.0})
      text += PointTurtle(parameter, scale, bridge::Denormalize(parameter, place));
  return text;
}

std::string PropertiesTurtle(const DawParameter& parameter, const PortScale& scale) {
  std::string properties;
  if (parameter.row->kind == MParameterKind::kSwitch)
    properties = "lv2:toggled";
  else if (IsList(parameter, scale))
    properties = "lv2:integer , lv2:enumeration";
  else if (bridge::IsWhole(*parameter.row))
    properties = "lv2:integer";
  else if (scale.IsLogarithmic())
    properties = "pprops:logarithmic";
  return properties.empty() ? "" : Line("lv2:portProperty", properties);
}

std::string ControlTurtle(const std::string& uri, const DawParameter& parameter) {
  const PortScale scale(parameter);
  const bridge::ParameterRange range = bridge::GetRange(*parameter.row);
  const bool isBypass = parameter.control == bridge::HostControl::kBypass;
  const auto number = [&](double value) {
    const float port = scale.ToPort(value);
    return bridge::IsWhole(*parameter.row) ? WholeText(port) : FloatText(port);
  };
  std::string text = Line("lv2:name", Quote(isBypass ? "Enabled" : parameter.name)) +
                     Line("lv2:minimum", number(isBypass ? range.maximum : range.minimum)) +
                     Line("lv2:maximum", number(isBypass ? range.minimum : range.maximum)) +
                     Line("lv2:default", number(range.defaultValue));
  if (isBypass) text += Line("lv2:designation", "lv2:enabled");
  if (!parameter.group.empty()) text += Line("pg:group", Reference(uri, MakeSymbol(parameter.group)));
  text += UnitTurtle(scale.GetUnit()) + PropertiesTurtle(parameter, scale) + PointsTurtle(parameter, scale);
  const std::string help = bridge::GetPlainHelp(*parameter.row);
  return help.empty() ? text : text + Line("rdfs:comment", Quote(help));
}

std::string DetailsTurtle(const bridge::PluginType& type, std::span<const DawParameter> parameters,
                          const Port& port) {
  const std::string uri = GetUri(type);
  switch (port.role) {
    case PortRole::kEventsIn:
    case PortRole::kEventsOut:
      return EventsTurtle(port.role == PortRole::kEventsIn, FindFileKind(type));
    case PortRole::kIn:
    case PortRole::kOut:
      return AudioTurtle(uri, port.role == PortRole::kIn, port.place == 0);
    case PortRole::kLatency:
      return LatencyTurtle();
    case PortRole::kFreeWheel:
      return FreeWheelTurtle();
    case PortRole::kControl:
      return ControlTurtle(uri, parameters[static_cast<std::size_t>(port.place)]);
  }
  return {};
}

std::string ClassesTurtle(PortRole role) {
  switch (role) {
    case PortRole::kEventsIn:
      return "lv2:InputPort , atom:AtomPort";
    case PortRole::kEventsOut:
      return "lv2:OutputPort , atom:AtomPort";
    case PortRole::kIn:
      return "lv2:InputPort , lv2:AudioPort";
    case PortRole::kOut:
      return "lv2:OutputPort , lv2:AudioPort";
    case PortRole::kLatency:
      return "lv2:OutputPort , lv2:ControlPort";
    default:
      return "lv2:InputPort , lv2:ControlPort";
  }
}

}  // namespace

std::string PortTurtle(const bridge::PluginType& type, std::span<const DawParameter> parameters,
                       const Port& port, std::size_t index) {
  return "[\n" + Line("a", ClassesTurtle(port.role)) + Line("lv2:index", std::to_string(index)) +
         Line("lv2:symbol", Quote(port.symbol)) + DetailsTurtle(type, parameters, port) + "\t]";
}

}  // namespace lv2
