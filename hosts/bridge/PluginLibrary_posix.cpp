#include <dlfcn.h>

#include "hosts/bridge/PluginLibrary.h"

namespace bridge {

// A name without a folder would be searched for in the system's folders.
PluginLibrary::PluginLibrary(const std::filesystem::path& file)
    : handle_(dlopen(std::filesystem::absolute(file).c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (!handle_) {
    const char* const text = dlerror();
    throw LibraryError(text ? text : file.string());
  }
  plugins_ = MakePluginTable([this](const PluginType& type) {
    return reinterpret_cast<MPluginEntryPoint*>(dlsym(handle_, type.exportedName));
  });
}

PluginLibrary::~PluginLibrary() {
  dlclose(handle_);
}

}  // namespace bridge
