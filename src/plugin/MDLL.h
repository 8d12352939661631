#pragma once
#include "plugin/MModule.h"

// A loaded library as its caller sees it. The library stays loaded for the object's lifetime.
class MDLL {
 public:
  MDLL() noexcept = default;
  MDLL(const MDLL&) = delete;
  MDLL& operator=(const MDLL&) = delete;
  ~MDLL();

  // Unloads what is loaded, loads the file, and has the current module initialise it, if there is one. A file
  // that cannot be loaded leaves this unloaded, which the first use reports.
  void Load(const MString& file);
  void Unload() noexcept;

  // Raises "Dynamic link library has not been loaded."; the other operations begin with it.
  void CheckLoaded() const;
  // The address of an exported name, or null.
  void* GetFunction(const MString& name) const;
  // MInvokeService on the library's module. Raises "The library does not support Tessaron service access."
  // without one.
  MWord Invoke(const char* name, MServiceArguments* arguments) const;

  MString path;
  void* handle = nullptr;     // the system's, null while nothing is loaded
  MModule* module = nullptr;  // null for a library that has no services
};
