#include "plugin/MModuleFile.h"

#include <dlfcn.h>
#include <link.h>

#include <cerrno>
#include <climits>
#include <cstdlib>

#include "core/MPath.h"

namespace {

// What the dynamic linker knows of the object that this code is in.
const link_map* FindOwnMap() noexcept {
  Dl_info info;
  link_map* map = nullptr;
  const int found = dladdr1(reinterpret_cast<const void*>(&MGetModuleHandle), &info,
                            reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP);
  return found != 0 ? map : nullptr;
}

// The object of the process itself has no name.
const char* FindOwnFile() noexcept {
  const link_map* const map = FindOwnMap();
  return map && map->l_name && *map->l_name ? map->l_name : nullptr;
}

}  // namespace

void* MGetModuleHandle() noexcept {
  const char* const file = FindOwnFile();
  void* const handle = dlopen(file, file ? RTLD_NOW | RTLD_NOLOAD : RTLD_NOW);
  if (handle) dlclose(handle);  // the address stays good for as long as this code is loaded
  return handle;
}

MString MGetModulePath() {
  const char* const file = FindOwnFile();
  char path[PATH_MAX];
  if (!realpath(file ? file : "/proc/self/exe", path)) MThrowNoSystemPath(OSErrorText());
  MString text;
  if (!MDecodePath(path, text)) {
    errno = EILSEQ;
    MThrowNoSystemPath(OSErrorText());
  }
  return text;
}
