// The bytes are a sequence of calls on one plug-in: all that a host may do, in any order and with any
// numbers.

#include "core/MException.h"
#include "fuzz/EffectFuzzing.h"
#include "fuzz/StreamFuzzing.h"

namespace {

template <typename Fuzzing>
void CallMany(FuzzedDataProvider& data, const PluginEntry& entry) {
  Fuzzing plugin(data, entry);
  for (int32_t calls = 0; calls < 60 && data.remaining_bytes() > 0; ++calls) {
    try {
      plugin.CallOne();
    } catch (const MException&) {
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  const PluginEntry& entry = kPluginEntries[data.ConsumeIntegral<uint8_t>() % kPluginEntryCount];
  if (entry.kind == std::string_view("AudioEffect"))
    CallMany<EffectFuzzing>(data, entry);
  else
    CallMany<StreamFuzzing>(data, entry);
  return 0;
}
