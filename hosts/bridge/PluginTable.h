#pragma once
#include <functional>
#include <string_view>
#include <vector>

#include "plugin/MHostInterface.h"

namespace bridge {

enum class PluginKind { kEffect, kInstrument };

// A plug-in that can be made.
struct PluginType {
  std::string_view name;  // without its kind: "Echolan"
  PluginKind kind;
  std::string_view summary;  // what it does, in a few words
  const char* exportedName;  // of the entry point
  MPluginEntryPoint* entryPoint = nullptr;
};

using PluginTable = std::vector<PluginType>;

// All plug-ins of exports/plugins.def, in its order, that `find` gives an entry point for; null leaves a
// plug-in out. Whoever links the static targets finds the addresses there, PluginLibrary in a shared object.
PluginTable MakePluginTable(const std::function<MPluginEntryPoint*(const PluginType&)>& find);

// The plug-in of exactly this name, or null.
const PluginType* FindPlugin(const PluginTable& table, std::string_view name) noexcept;

}  // namespace bridge
