#include "hosts/bridge/PluginTable.h"

#include <algorithm>

namespace bridge {

namespace {

constexpr PluginKind ToKind(std::string_view kind) {
  return kind == "AudioEffect" ? PluginKind::kEffect : PluginKind::kInstrument;
}

constexpr PluginType kCatalogue[] = {
#define M_PLUGIN(name, kind, summary) {#name, ToKind(#kind), summary, #name #kind "PluginInterface"},
#include "exports/plugins.def"
#undef M_PLUGIN
};

}  // namespace

PluginTable MakePluginTable(const std::function<MPluginEntryPoint*(const PluginType&)>& find) {
  PluginTable table;
  for (PluginType type : kCatalogue) {
    type.entryPoint = find(type);
    if (type.entryPoint) table.push_back(type);
  }
  return table;
}

const PluginType* FindPlugin(const PluginTable& table, std::string_view name) noexcept {
  const auto found =
      std::find_if(table.begin(), table.end(), [name](const PluginType& type) { return type.name == name; });
  return found == table.end() ? nullptr : &*found;
}

}  // namespace bridge
