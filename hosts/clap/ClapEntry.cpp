#include <clap/entry.h>

#include "hosts/builtin/BuiltInPlugins.h"

namespace {

bool Start(const char*) {
  return !builtin::GetPlugins().empty();
}
void End() {}
const void* GetFactory(const char*) {
  return nullptr;
}

}  // namespace

extern "C" CLAP_EXPORT const clap_plugin_entry_t clap_entry = {CLAP_VERSION_INIT, Start, End, GetFactory};
