#include "core/MTypes.h"
#include "hosts/builtin/BuiltInPlugins.h"

extern "C" {
M_VISIBLE const void* GetPluginFactory() {
  return nullptr;
}
M_VISIBLE bool ModuleEntry(void*) {
  return true;
}
M_VISIBLE bool ModuleExit() {
  return true;
}
}
