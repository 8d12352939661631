#include "exports/PluginEntries.h"

#define M_PLUGIN(name, kind, summary) extern "C" MPluginEntryPoint name##kind##PluginInterface;
#include "exports/plugins.def"
#undef M_PLUGIN

const PluginEntry kPluginEntries[] = {
#define M_PLUGIN(name, kind, summary) {#name, #kind, name##kind##PluginInterface},
#include "exports/plugins.def"
#undef M_PLUGIN
};
const int32_t kPluginEntryCount = sizeof kPluginEntries / sizeof kPluginEntries[0];
