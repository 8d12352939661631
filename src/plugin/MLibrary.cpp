#include "plugin/MLibrary.h"

#include <cstdio>

#include "core/MGuard.h"
#include "core/MLock.h"
#include "core/MThread.h"
#include "plugin/MBuiltInResources.h"
#include "plugin/MModuleFile.h"
#include "plugin/SonvelleDLL.h"

constinit MBuiltInBlock MGlobalResources = {MBuiltInResources, &MBuiltInResourcesSize};
constinit MBuiltInBlock MGlobalData = {nullptr, nullptr};

namespace {

constexpr uint32_t kStopMilliseconds = 2000;

// The end of the library, at its unloading or at the end of the process.
struct LibraryEnd {
  ~LibraryEnd() { MDestroyModuleInstance(); }
};

// A text of another binary may be a literal there: this one stays when that is gone.
MString OwnCopy(const MString& text) {
  MString copy(text);
  copy.Reserve(text.GetLength() + 1);
  return copy;
}

}  // namespace

MModule* MInitializeLibrary(MLibraryRecord* record) {
  if (!record || !record->functions) return nullptr;
  MModule* module = nullptr;
  const bool isDone = MRunGuarded("MLibraryDLLInitialize", [record, &module] {
    MSetLibraryFunctions(*record->functions);
    MSetEventLock(record->lock);
    module = MModule::instance ? MModule::instance : MStartLibrary(record);
  });
  return isDone ? module : nullptr;
}

MModule* MStartLibrary(const MLibraryRecord* record) {
  MCreateModuleInstance();
  if (!MModule::instance) return nullptr;
  if (record) MModule::instance->name = OwnCopy(record->name);
  MLoadGlobalResources();
  MModule::instance->Initialize();
  return MModule::instance;
}

void MCreateModuleInstance() {
  MRunGuarded("MCreateModuleInstance", [] {
    static const LibraryEnd end;
    MModule::instance = new SonvelleDLL;
    MModule::instance->handle = MGetModuleHandle();
  });
}

void MLoadGlobalResources() {
  MRunGuarded("MLoadGlobalResources", [] {
    if (MGlobalResources.bytes) {
      MMemoryStream stream(MGlobalResources.bytes, *MGlobalResources.size);
      MModule::instance->resources.Load(stream);
    }
    if (MGlobalData.bytes)
      MModule::instance->globalData = MMemoryStream(MGlobalData.bytes, *MGlobalData.size);
  });
}

void MDestroyModuleInstance() {
  MRunGuarded("MCreateModuleInstance", [] {
    struct Forget {
      ~Forget() { MModule::instance = nullptr; }
    } const forget;
    if (!MThread::StopAll(kStopMilliseconds)) {
      // Its code is about to be unmapped, and glibc has no way to keep it any more.
      std::fputs("Sonvelle: waiting for the end of a thread.\n", stderr);
      MThread::StopAll(kWaitForever);
    }
    delete MModule::instance;
  });
}
