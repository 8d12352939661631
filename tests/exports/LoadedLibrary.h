#pragma once
// The shared library and its plug-ins as a host sees them: opened by path, without its names in the process's
// own, called through the exported functions.

#include <dlfcn.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "plugin/MHostInterface.h"

// Of the rows in plugins.def.
struct PluginName {
  std::string name, kind;
  std::string GetExport() const { return name + kind + "PluginInterface"; }
};
inline const std::vector<PluginName> kPluginNames = {
#define M_PLUGIN(name, kind, summary) {#name, #kind},
#include "exports/plugins.def"
#undef M_PLUGIN
};

class LoadedLibrary {
 public:
  explicit LoadedLibrary(const std::string& path = SONVELLE_LIBRARY)
      : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!handle_) throw std::runtime_error(dlerror());
  }
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;
  ~LoadedLibrary() { dlclose(handle_); }

  MPluginEntryPoint* Find(const std::string& name) const {
    return reinterpret_cast<MPluginEntryPoint*>(dlsym(handle_, name.c_str()));
  }
  static bool IsLoaded(const std::string& path = SONVELLE_LIBRARY) {
    void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle) dlclose(handle);
    return handle != nullptr;
  }

 private:
  void* handle_;
};

class LoadedPlugin {
 public:
  LoadedPlugin(const LoadedLibrary& library, const std::string& name) : entry_(library.Find(name)) {
    if (!entry_) throw std::runtime_error(name + " is not exported");
    instance_ = MAsAddress<void>(Call(MService::kAttach));
  }
  LoadedPlugin(const LoadedPlugin&) = delete;
  LoadedPlugin& operator=(const LoadedPlugin&) = delete;
  ~LoadedPlugin() { Call(MService::kDestroy); }

  MWord Call(int32_t service, MWord a = 0, MWord b = 0, MWord c = 0) {
    MServiceArguments arguments(a, b, c);
    return entry_(instance_, service, &arguments);
  }
  MPluginPublicBlock& GetBlock() { return *MAsAddress<MPluginPublicBlock>(Call(MService::kPublicBlock)); }
  // Runs a block of one channel in place.
  void Process(std::vector<float>& samples) {
    float* channel = samples.data();
    Call(MService::kProcess, MAsWord(&channel), MAsWord(&channel), static_cast<MWord>(samples.size()));
  }

 private:
  MPluginEntryPoint* entry_;
  void* instance_ = nullptr;
};
