#pragma once
// The library's life inside a test: started by a record as a host starts it, destroyed at the end.

#include "core/MLock.h"
#include "plugin/MLibrary.h"
#include "plugin/SonvelleDLL.h"
#include "tests/common/DataFolder.h"
#include "tests/common/ReportedTexts.h"

class LibraryLife {
 public:
  LibraryLife() = default;
  ~LibraryLife() {
    MDestroyModuleInstance();
    MSetLibraryFunctions(MGetDefaultLibraryFunctions());
    MSetEventLock(nullptr);
    SonvelleDLL::parts = parts_;
    MGlobalResources = resources_;
    MGlobalData = data_;
    MWindowsModule::windowing = nullptr;
    MWindowsModule::operations = {};
  }

  // Stand-ins that do nothing in place of tables and configuration.
  static void LeaveOutParts() { SonvelleDLL::parts = {}; }

  static SonvelleDLL* Start(const MLibraryFunctions& functions = MGetDefaultLibraryFunctions(),
                            MLock* lock = nullptr, const MString& name = "host's name") {
    MLibraryRecord record{&functions, lock, name};
    return static_cast<SonvelleDLL*>(MInitializeLibrary(&record));
  }

 private:
  DataFolder folder_;

 public:
  ReportedTexts reported;
  const DataFolder& GetFolder() const { return folder_; }

 private:
  SonvelleParts parts_ = SonvelleDLL::parts;
  MBuiltInBlock resources_ = MGlobalResources;
  MBuiltInBlock data_ = MGlobalData;
};
