#include "hosts/lv2/Turtle.h"

#include <cmath>
#include <cstdio>

#include "hosts/bridge/NoClient.h"
#include "hosts/lv2/PortTurtle.h"
#include "hosts/lv2/Uris.h"

namespace lv2 {

namespace {

std::string GetPresetUri(const Described& plugin, const bridge::Preset& preset) {
  return GetUri(plugin.type) + "/presets/" + MakeSymbol(preset.name);
}

// Hosts prefer the greater numbers; an even minor one, above 0, is a release.
std::string VersionTurtle(const std::string& version) {
  int major = 0, minor = 0, patch = 0;
  std::sscanf(version.c_str(), "%d.%d.%d", &major, &minor, &patch);
  return "\tlv2:minorVersion " + std::to_string(2 * (100 * major + minor)) + " ;\n\tlv2:microVersion " +
         std::to_string(2 * patch) + " ;\n";
}

// An effect runs without numbers of URIs, as simple hosts have it.
std::string FeatureTurtle(const bridge::DawPlugin& plugin) {
  const std::string map = plugin.IsInstrument() ? "\tlv2:requiredFeature urid:map ;\n\tlv2:optionalFeature "
                                                : "\tlv2:optionalFeature urid:map , ";
  return map + "opts:options , bufsz:boundedBlockLength , log:log , state:threadSafeRestore" +
         (IsHardRealTime(plugin.GetType()) ? " , lv2:hardRTCapable" : "") +
         (plugin.HasWork() ? " , work:schedule" : "") +
         (FindFileKind(plugin.GetType()) ? " , state:mapPath , state:freePath" : "") +
         " ;\n\topts:supportedOption bufsz:maxBlockLength , bufsz:nominalBlockLength ;\n"
         "\tlv2:extensionData state:interface" +
         (plugin.HasWork() ? " , work:interface ;\n" : " ;\n");
}

std::string AudioGroups(const std::string& uri, bool isInstrument) {
  const std::string input = Reference(uri, kInGroup), output = Reference(uri, kOutGroup);
  std::string text;
  if (!isInstrument)
    text +=
        input + "\n\ta pg:StereoGroup , pg:InputGroup ;\n\tlv2:symbol \"in\" ;\n\tlv2:name \"Input\" .\n\n";
  text += output + "\n\ta pg:StereoGroup , pg:OutputGroup ;\n\tlv2:symbol \"out\" ;\n\tlv2:name \"Output\"";
  return text + (isInstrument ? "" : " ;\n\tpg:source " + input) + " .\n\n";
}

std::string PanelGroups(const std::string& uri, std::span<const bridge::DawParameter> parameters) {
  std::string text, last;
  for (const bridge::DawParameter& parameter : parameters) {
    if (parameter.group.empty() || parameter.group == last) continue;
    last = parameter.group;
    text += Reference(uri, MakeSymbol(last)) + "\n\ta pg:InputGroup ;\n\tlv2:symbol " +
            Quote(MakeSymbol(last)) + " ;\n\tlv2:name " + Quote(last) + " .\n\n";
  }
  return text;
}

std::string FileTurtle(const FileKind& kind) {
  return "<" + GetFileUri(kind) + ">\n\ta lv2:Parameter ;\n\trdfs:label " + Quote(kind.label) +
         " ;\n\trdfs:range atom:Path .\n\n";
}

std::string StateTurtle() {
  return Reference(kStateUri) +
         "\n\ta rdf:Property , owl:DatatypeProperty ;\n\trdfs:label \"state\" ;\n"
         "\trdfs:comment \"The state of a plug-in as text.\" ;\n\trdfs:range xsd:string .\n\n";
}

std::string Capitalized(std::string_view text) {
  std::string capitalized(text);
  if (capitalized[0] >= 'a' && capitalized[0] <= 'z') capitalized[0] = static_cast<char>(text[0] - 'a' + 'A');
  return capitalized;
}

}  // namespace

std::string GetClass(const bridge::PluginType& type) {
  if (type.kind == bridge::PluginKind::kInstrument) return "InstrumentPlugin";
  // The first that the summary holds.
  static constexpr std::string_view kClasses[][2] = {
      {"delay", "DelayPlugin"},           {"limiter", "LimiterPlugin"},
      {"band pass", "BandpassPlugin"},    {"stereo", "SpatialPlugin"},
      {"equalizer of", "ParaEQPlugin"},   {"equalizer", "EQPlugin"},
      {"convolver", "FilterPlugin"},      {"wave shaper", "WaveshaperPlugin"},
      {"tremolo", "ModulatorPlugin"},     {"autopan", "ModulatorPlugin"},
      {"modulator", "ModulatorPlugin"},   {"vibrato", "ModulatorPlugin"},
      {"compressor", "CompressorPlugin"}, {"analyzer", "AnalyserPlugin"},
      {"phaser", "PhaserPlugin"},
  };
  for (const auto& [word, name] : kClasses)
    if (type.summary.find(word) != std::string_view::npos) return std::string(name);
  return {};
}

bool IsHardRealTime(const bridge::PluginType& type) noexcept {
  return type.name == "Echolan" || type.name == "Tonebench";
}

std::string MakeManifest(const std::vector<Described>& plugins) {
  std::string text = kPrefixes;
  for (const Described& plugin : plugins) {
    const std::string uri = GetUri(plugin.type), name(plugin.type.name);
    text += Reference(uri) + "\n\ta lv2:Plugin ;\n\tlv2:binary <sonvelle-plugins.so> ;\n\trdfs:seeAlso <" +
            name + ".ttl> .\n\n";
    for (const bridge::Preset& preset : plugin.presets)
      text += Reference(GetPresetUri(plugin, preset)) + "\n\ta pset:Preset ;\n\tlv2:appliesTo " +
              Reference(uri) + " ;\n\trdfs:seeAlso <" + name + "-presets.ttl> .\n\n";
  }
  return text;
}

std::string MakePluginTurtle(const bridge::PluginType& type, const std::string& version) {
  bridge::NoClient client;
  bridge::DawPlugin plugin(type, client);
  const std::string uri = GetUri(type), itsClass = GetClass(type);
  const FileKind* const kind = FindFileKind(type);
  const bool isInstrument = plugin.IsInstrument();
  std::string text =
      kPrefixes + AudioGroups(uri, isInstrument) + PanelGroups(uri, plugin.GetParameters()) + StateTurtle();
  if (kind) text += FileTurtle(*kind);
  text += Reference(uri) + "\n\ta lv2:Plugin" + (itsClass.empty() ? "" : " , lv2:" + itsClass) +
          " , doap:Project ;\n\tdoap:name " + Quote(type.name) + " ;\n\tdoap:shortdesc " +
          Quote(Capitalized(type.summary) + ".") + " ;\n\trdfs:comment " +
          Quote(Capitalized(type.summary) + ".") +
          " ;\n\tdoap:license <https://spdx.org/licenses/MIT> ;\n"
          "\tdoap:maintainer [\n\t\tfoaf:name \"Sonvelle\" ;\n\t\tfoaf:homepage "
          "<https://sonvelle.example/>\n\t] ;\n" +
          VersionTurtle(version) + FeatureTurtle(plugin);
  if (!isInstrument) text += "\tpg:mainInput " + Reference(uri, kInGroup) + " ;\n";
  text += "\tpg:mainOutput " + Reference(uri, kOutGroup) + " ;\n";
  if (kind) text += "\tpatch:writable <" + GetFileUri(*kind) + "> ;\n";
  const std::vector<Port> ports = MakePorts(type, plugin.GetParameters());
  for (std::size_t i = 0; i < ports.size(); ++i)
    text += (i == 0 ? "\tlv2:port " : " , ") + PortTurtle(type, plugin.GetParameters(), ports[i], i);
  return text + " .\n";
}

std::string MakePresetsTurtle(const Described& described) {
  bridge::NoClient client;
  bridge::DawPlugin plugin(described.type, client);
  const std::vector<Port> ports = MakePorts(described.type, plugin.GetParameters());
  std::string text = kPrefixes;
  for (const bridge::Preset& preset : described.presets) {
    plugin.LoadState(preset.text);
    text += Reference(GetPresetUri(described, preset)) + "\n\ta pset:Preset ;\n\tlv2:appliesTo " +
            Reference(GetUri(described.type)) + " ;\n\trdfs:label " + Quote(preset.name) +
            " ;\n\tstate:state [\n\t\t<" + kStateUri + "> " + Quote(preset.text) + "\n\t]";
    for (const Port& port : ports) {
      if (port.role != PortRole::kControl) continue;
      const PortScale scale(plugin.GetParameters()[static_cast<std::size_t>(port.place)]);
      text += " ;\n\tlv2:port [\n\t\tlv2:symbol " + Quote(port.symbol) + " ;\n\t\tpset:value " +
              FloatText(scale.ToPort(plugin.GetValue(port.place))) + "\n\t]";
    }
    text += " .\n\n";
  }
  return text;
}

}  // namespace lv2
