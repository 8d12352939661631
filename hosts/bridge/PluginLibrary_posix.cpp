#include <dlfcn.h>

#include "core/MLock.h"
#include "core/MMemory.h"
#include "hosts/bridge/Parameters.h"
#include "hosts/bridge/PluginLibrary.h"

namespace bridge {

// A name without a folder would be searched for in the system's folders.
PluginLibrary::PluginLibrary(const std::filesystem::path& file)
    : file_(std::filesystem::absolute(file).lexically_normal()),
      handle_(dlopen(file_.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (!handle_) {
    const char* const text = dlerror();
    throw LibraryError(text ? text : file.string());
  }
  Start();
  plugins_ = MakePluginTable([this](const PluginType& type) {
    return reinterpret_cast<MPluginEntryPoint*>(dlsym(handle_.get(), type.exportedName));
  });
}

void PluginLibrary::Start() {
  MLibraryRecord record{&MGetLibraryFunctions(), &MGetEventLock(), FromUtf8(file_.native())};
  if (void* const function = dlsym(handle_.get(), "MLibraryDLLInitialize"))
    module_ = reinterpret_cast<MLibraryInitializer*>(function)(&record);
}

void PluginLibrary::Close::operator()(void* handle) const noexcept {
  dlclose(handle);
}

}  // namespace bridge
