#include <dlfcn.h>

#include <utility>

#include "core/MPath.h"
#include "plugin/MDLL.h"

void MDLL::Load(const MString& file) {
  Unload();
  path = file;
  // A name without a folder would be searched for in the system's folders.
  const MBytes bytes = MEncodePath(NormalizePath(file));
  if (file.IsEmpty() || bytes.GetSize() == 0) return;
  handle = dlopen(bytes.GetText(), RTLD_NOW | RTLD_LOCAL);
  if (handle && MModule::instance) MModule::instance->DLLLoaded(*this);
}

void MDLL::Unload() noexcept {
  module = nullptr;
  if (void* const loaded = std::exchange(handle, nullptr)) dlclose(loaded);
}

void* MDLL::GetFunction(const MString& name) const {
  CheckLoaded();
  return dlsym(handle, EncodeNarrow(name).GetText());
}
