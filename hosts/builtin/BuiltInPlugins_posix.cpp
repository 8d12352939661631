#include "hosts/builtin/BuiltInPlugins.h"

#include <dlfcn.h>

#include <cstdio>
#include <string_view>

#include "core/MException.h"
#include "core/MLock.h"
#include "core/MMemory.h"
#include "exports/PluginEntries.h"
#include "hosts/bridge/FirstSettings.h"
#include "hosts/bridge/Parameters.h"
#include "plugin/MLibrary.h"

namespace builtin {

namespace {

std::filesystem::path GetBinary() {
  static const char mark = 0;
  Dl_info info = {};
  if (dladdr(&mark, &info) == 0 || !info.dli_fname) return {};
  std::error_code error;
  return std::filesystem::canonical(info.dli_fname, error);
}

// Settings that cannot be written are those of another day; the library has defaults.
void ChooseContent(const std::filesystem::path& content) {
  if (!content.empty()) try {
      bridge::WriteFirstSettings(bridge::FromUtf8(bridge::MakeWritable(content).string()));
    } catch (const MException& raised) {
      std::fprintf(stderr, "Sonvelle: the settings could not be written: %s\n",
                   bridge::ToUtf8(raised.message).c_str());
    }
}

MPluginEntryPoint* FindEntryPoint(const bridge::PluginType& type) {
  for (int32_t i = 0; i < kPluginEntryCount; ++i)
    if (kPluginEntries[i].name == type.name) return kPluginEntries[i].entryPoint;
  return nullptr;
}

struct Library {
  Library() : binary(GetBinary()), content(bridge::FindContent(binary)) {
    ChooseContent(content);
    MLibraryRecord record{&MGetLibraryFunctions(), &MGetEventLock(), bridge::FromUtf8(binary.string())};
    if (MInitializeLibrary(&record)) plugins = bridge::MakePluginTable(FindEntryPoint);
  }

  std::filesystem::path binary;
  std::filesystem::path content;
  bridge::PluginTable plugins;
};

const Library& GetLibrary() {
  static const Library library;
  return library;
}

}  // namespace

const bridge::PluginTable& GetPlugins() {
  return GetLibrary().plugins;
}

std::vector<bridge::Preset> GetPresets(const bridge::PluginType& type) {
  return bridge::ReadPresets(GetLibrary().content, type.name);
}

}  // namespace builtin
