// What a host does before the first block: it loads the library, starts it, makes every plug-in and reads its
// table; and what it does when a song is opened and saved.

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "bench/Calibrated.h"
#include "core/MMemoryStream.h"
#include "core/MXMLItem.h"
#include "plugin/MHostInterface.h"

namespace {

constexpr const char* kEntries[] = {
#define M_PLUGIN(name, kind, summary) #name #kind "PluginInterface",
#include "exports/plugins.def"
#undef M_PLUGIN
};

// The library's data folder, in memory where the system has such a place: what is measured is not the disk.
class DataFolder {
 public:
  DataFolder() {
    std::string pattern = (std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp");
    pattern += "/sonvelle-bench-XXXXXX";
    if (!mkdtemp(pattern.data())) std::abort();
    path_ = pattern;
    setenv("XDG_DATA_HOME", path_.c_str(), 1);
    std::filesystem::current_path(path_);
  }
  ~DataFolder() {
    std::filesystem::current_path("/");
    std::filesystem::remove_all(path_);
  }

 private:
  std::filesystem::path path_;
};

// The plug-ins of a loaded library.
struct Library {
  Library() : handle(dlopen(SONVELLE_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {
    if (!handle) std::abort();
    MLibraryRecord record{&MGetLibraryFunctions(), nullptr, "bench"};
    if (!reinterpret_cast<MLibraryInitializer*>(dlsym(handle, "MLibraryDLLInitialize"))(&record))
      std::abort();
  }
  ~Library() { dlclose(handle); }
  MPluginEntryPoint* Find(const char* name) const {
    return reinterpret_cast<MPluginEntryPoint*>(dlsym(handle, name));
  }

  void* handle;
};

MWord Call(MPluginEntryPoint* entry, MWord instance, int32_t service, MWord a = 0) {
  MServiceArguments arguments(a);
  return entry(MAsAddress<void>(instance), service, &arguments);
}

void LoadMakeAndRead(benchmark::State& state) {
  Calibrate(state);
  const DataFolder data;
  for (auto _ : state) {
    const Library library;
    int64_t characters = 0;
    for (const char* const name : kEntries) {
      MPluginEntryPoint* const entry = library.Find(name);
      const MWord instance = Call(entry, 0, MService::kAttach);
      const auto& block = *MAsAddress<MPluginPublicBlock>(Call(entry, instance, MService::kPublicBlock));
      for (int32_t i = 0; i < block.parameterCount; ++i)
        characters += block.parameters[i].name.GetLength() + block.parameters[i].help.GetLength();
      Call(entry, instance, MService::kDestroy);
    }
    benchmark::DoNotOptimize(characters);
  }
}
BENCHMARK(LoadMakeAndRead)->Unit(benchmark::kMillisecond);

// The state of every plug-in in turn, as text and back; the time is that of one.
void SaveAndLoadState(benchmark::State& state) {
  Calibrate(state);
  const DataFolder data;
  const Library library;
  std::vector<std::pair<MPluginEntryPoint*, MWord>> plugins;
  for (const char* const name : kEntries) {
    MPluginEntryPoint* const entry = library.Find(name);
    plugins.emplace_back(entry, Call(entry, 0, MService::kAttach));
  }
  std::size_t next = 0;
  for (auto _ : state) {
    const auto& [entry, instance] = plugins[next++ % plugins.size()];
    MXMLItem saved("state");
    Call(entry, instance, MService::kSaveState, MAsWord(&saved));
    MMemoryStream stream;
    saved.Save(stream);
    stream.Seek(0, MSeekOrigin::kStart);
    MXMLItem loaded;
    loaded.Load(stream);
    Call(entry, instance, MService::kLoadState, MAsWord(&loaded));
  }
  for (const auto& [entry, instance] : plugins) Call(entry, instance, MService::kDestroy);
}
BENCHMARK(SaveAndLoadState)->Unit(benchmark::kMicrosecond);

}  // namespace
