// lv2_turtle FOLDER CONTENT: writes what describes the plug-ins to a bundle: manifest.ttl, NAME.ttl, and
// NAME-presets.ttl of the states in CONTENT/states/NAME.

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "core/MException.h"
#include "hosts/bridge/Parameters.h"
#include "hosts/builtin/BuiltInPlugins.h"
#include "hosts/lv2/Turtle.h"

namespace {

void WriteFile(const std::filesystem::path& file, const std::string& text) {
  std::ofstream stream(file, std::ios::binary);
  stream << text;
  if (!stream.flush()) throw std::runtime_error(file.string() + ": it cannot be written");
}

void WriteBundle(const std::filesystem::path& folder, const std::filesystem::path& content) {
  std::filesystem::create_directories(folder);
  std::vector<lv2::Described> plugins;
  for (const bridge::PluginType& type : builtin::GetPlugins())
    plugins.push_back({type, bridge::ReadPresets(content, type.name)});
  if (plugins.empty()) throw std::runtime_error("there are no plug-ins");
  WriteFile(folder / "manifest.ttl", lv2::MakeManifest(plugins));
  for (const lv2::Described& plugin : plugins) {
    const std::string name(plugin.type.name);
    WriteFile(folder / (name + ".ttl"), lv2::MakePluginTurtle(plugin.type, SONVELLE_VERSION));
    if (!plugin.presets.empty()) WriteFile(folder / (name + "-presets.ttl"), lv2::MakePresetsTurtle(plugin));
  }
}

}  // namespace

int main(int count, char** arguments) try {
  if (count != 3) throw std::runtime_error("usage: lv2_turtle FOLDER CONTENT");
  WriteBundle(arguments[1], arguments[2]);
  return 0;
} catch (const MException& raised) {
  std::fprintf(stderr, "lv2_turtle: %s\n", bridge::ToUtf8(raised.message).c_str());
  return 1;
} catch (const std::exception& raised) {
  std::fprintf(stderr, "lv2_turtle: %s\n", raised.what());
  return 1;
}
