// test_host LIBRARY ROUNDS: a host that is built apart from the library. It links `core`, knows no header of
// the library but MHostInterface.h, and drives whole lives: load, initialise with an allocator and a lock of
// its own, register, read the registry, make each plug-in that is in it, prepare, run, save, destroy, load
// the state into a new one, unload. Exit code 0: every step did what it should, and no block of the allocator
// is left.

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/MLock.h"
#include "core/MXMLItem.h"
#include "plugin/MHostInterface.h"
#include "tests/common/CountingFunctions.h"

namespace {

#define CHECK(condition)                                                                \
  do {                                                                                  \
    if (!(condition)) {                                                                 \
      std::fprintf(stderr, "test_host: line %d: not true: %s\n", __LINE__, #condition); \
      std::exit(1);                                                                     \
    }                                                                                   \
  } while (false)

constexpr int32_t kChannels = 2;
constexpr int32_t kRate = 44100;

// What comes out, block behind block.
using Audio = std::vector<float>;

MWord M_CALL Hear(void* context, int32_t, MServiceArguments*) {
  ++*static_cast<int32_t*>(context);
  return 0;
}

class Plugin {
 public:
  explicit Plugin(MPluginEntryPoint* entry) : entry_(entry) {
    MServiceArguments arguments(MAsWord(&calls_), reinterpret_cast<MWord>(&Hear));
    instance_ = MAsAddress<void>(entry_(nullptr, MService::kAttach, &arguments));
    CHECK(instance_);
  }
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;
  ~Plugin() { Call(MService::kDestroy); }

  MWord Call(int32_t service, MWord a = 0, MWord b = 0, MWord c = 0) {
    MServiceArguments arguments(a, b, c);
    return entry_(instance_, service, &arguments);
  }

  // Moves every row somewhere into its range.
  void Turn() {
    auto& block = *MAsAddress<MPluginPublicBlock>(Call(MService::kPublicBlock));
    for (int32_t i = 0; i < block.parameterCount; ++i) {
      MPluginParameter& row = block.parameters[i];
      switch (row.kind) {
        case MParameterKind::kReal:
          MStoreShared(row.real.value, row.real.minimum + 0.25 * (row.real.maximum - row.real.minimum));
          break;
        case MParameterKind::kInteger:
          MStoreShared(row.integer.value, row.integer.maximum);
          break;
        case MParameterKind::kEnumeration:
          MStoreShared(row.enumeration.value, row.enumeration.count - 1);
          break;
        case MParameterKind::kSwitch:
          MStoreShared(row.onOff.value, 1 - row.onOff.defaultValue);
          break;
        default:
          continue;
      }
      CHECK(Call(MService::kParameterChanged, i) == 0);
    }
  }

  // Blocks of growing size through an effect that has just been prepared.
  Audio Run() {
    CHECK(Call(MService::kPrepare, kChannels, kRate) == 0);
    Audio out;
    uint32_t noise = 1;
    for (int32_t size = 0; size < 300; size += 37) {
      const auto count = static_cast<std::size_t>(size);
      std::vector<std::vector<float>> channels(kChannels, Audio(count));
      for (Audio& channel : channels)
        for (float& sample : channel)
          sample = static_cast<float>((noise = noise * 214013 + 2531011) >> 16 & 0x7FFF) / 32768.0f - 0.5f;
      float* addresses[kChannels] = {channels[0].data(), channels[1].data()};
      CHECK(Call(MService::kProcess, MAsWord(addresses), MAsWord(addresses), size) == 0);
      for (const Audio& channel : channels) out.insert(out.end(), channel.begin(), channel.end());
    }
    const MWord silent = Call(MService::kIsSilent);
    CHECK(silent == 0 || silent == 1);
    CHECK(Call(MService::kGetLatency) >= 0);
    CHECK(Call(MService::kSkip, 100) == 0);
    return out;
  }

 private:
  MPluginEntryPoint* entry_;
  void* instance_ = nullptr;
  int32_t calls_ = 0;
};

void Live(MPluginEntryPoint* entry, bool isEffect) {
  MXMLItem state("state");
  Audio before;
  {
    Plugin plugin(entry);
    CHECK(plugin.Call(7) == -1);
    plugin.Turn();
    plugin.Call(MService::kSaveState, MAsWord(&state));
    plugin.Call(MService::kLoadState, MAsWord(&state));  // rounds the rows as the state has them
    plugin.Call(MService::kStateLoaded);
    if (isEffect) before = plugin.Run();
    plugin.Call(MService::kDetach);
  }
  Plugin plugin(entry);
  plugin.Call(MService::kLoadState, MAsWord(&state));
  plugin.Call(MService::kStateLoaded);
  if (isEffect) CHECK(plugin.Run() == before);
}

// The plug-ins of a registry file that the library has written and that it exports.
int32_t LiveAll(void* library, const char* file, bool isEffect) {
  MString path = MString::FromNarrow(std::getenv("XDG_DATA_HOME"));
  path.Append("/Tessaron/");
  path.Append(file);
  MXMLItem registry;
  registry.LoadFile(path);
  int32_t count = 0;
  for (const MXMLItem* row : registry.GetChildren()) {
    const MBytes name = EncodeNarrow(row->GetAttribute("interfacefname"));
    auto* const entry = reinterpret_cast<MPluginEntryPoint*>(dlsym(library, name.GetText()));
    if (!entry) continue;  // registered before it is built
    Live(entry, isEffect);
    ++count;
  }
  return count;
}

// The information about the module's type stays in the library.
__attribute__((no_sanitize("vptr"))) void LiveOnce(const char* path, bool registers) {
  MLock lock;
  void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (!library) std::fprintf(stderr, "test_host: %s\n", dlerror());
  CHECK(library);
  auto* const initialize = reinterpret_cast<MLibraryInitializer*>(dlsym(library, "MLibraryDLLInitialize"));
  CHECK(initialize);
  MModule* module = nullptr;
  {
    MLibraryRecord record{&MGetLibraryFunctions(), &lock, "test host"};
    module = initialize(&record);
    CHECK(module);
    CHECK(initialize(&record) == module);
  }
  CHECK(module->name == "Sonvelle.so");
  CHECK(module->title == "Tessaron Pavrek S");
  CHECK(module->serviceCount == 3);
  CHECK(MInvokeService(module, "no such service", nullptr) == -1);
  if (registers) {
    MServiceArguments arguments(MAsWord(path));
    CHECK(MInvokeService(module, "MRegisterAllPlugins", &arguments) == 0);
  }
  CHECK(LiveAll(library, "MAudioEffects.mps", true) > 0);
  LiveAll(library, "MAudioStreams.mps", false);
  if (auto* const slidebench =
          reinterpret_cast<MPluginEntryPoint*>(dlsym(library, "SlidebenchAudioEffectPluginInterface")))
    Live(slidebench, true);
  CHECK(dlclose(library) == 0);
  CHECK(!dlopen(path, RTLD_NOW | RTLD_NOLOAD));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 || !std::getenv("XDG_DATA_HOME")) {
    std::fprintf(stderr, "usage: XDG_DATA_HOME=FOLDER test_host LIBRARY ROUNDS\n");
    return 2;
  }
  const CountingFunctions counting;
  try {
    for (int32_t round = 0; round < std::atoi(argv[2]); ++round) LiveOnce(argv[1], round == 0);
  } catch (const MException& raised) {
    std::fprintf(stderr, "test_host: %s\n", EncodeNarrow(raised.message).GetText());
    return 1;
  }
  CHECK(CountingFunctions::GetAllocated() > 0);
  CHECK(CountingFunctions::GetHookCalls() == 0);
  CHECK(CountingFunctions::GetBalance() == 0);
  return 0;
}
