#include <clap/entry.h>

#include <atomic>
#include <string_view>

#include "hosts/builtin/BuiltInPlugins.h"
#include "hosts/clap/Factory.h"

namespace {

std::atomic<int32_t> starts = 0;  // that are not ended

bool CLAP_ABI Start(const char*) try {
  if (builtin::GetPlugins().empty()) return false;
  ++starts;
  return true;
} catch (...) {
  return false;
}

void CLAP_ABI End() {
  int32_t count = starts;
  while (count > 0 && !starts.compare_exchange_weak(count, count - 1)) {
  }
}

const void* CLAP_ABI GetFactory(const char* id) {
  const bool isKnown = id && std::string_view(id) == CLAP_PLUGIN_FACTORY_ID;
  return isKnown && starts > 0 ? &clap::kFactory : nullptr;
}

}  // namespace

extern "C" CLAP_EXPORT const clap_plugin_entry_t clap_entry = {CLAP_VERSION_INIT, Start, End, GetFactory};
