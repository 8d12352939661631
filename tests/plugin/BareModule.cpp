// A small library of its own for tests of loading: a module without built-in resources and without the parts
// of this library. `Ask` tells what a test wants to know about it.

#include <chrono>
#include <cstring>
#include <thread>

#include "core/MThread.h"
#include "plugin/MLibrary.h"
#include "plugin/SonvelleDLL.h"

namespace {

// Ends some time after it is asked to.
class SlowThread final : public MThread {
 public:
  ~SlowThread() override { StopAndJoin(); }

 protected:
  uint32_t Run() override {
    while (!IsStopRequested()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    *ended = true;
    return 0;
  }

 public:
  bool* ended = nullptr;
};

}  // namespace

extern "C" {

// What the caller has called it.
static char givenName[4096];

M_VISIBLE const char* GetGivenName() {
  return givenName;
}

M_VISIBLE const MLibraryFunctions* GetFunctionsInForce() {
  return &MGetLibraryFunctions();
}

M_VISIBLE MModule* MLibraryDLLInitialize(MLibraryRecord* record) {
  std::strncpy(givenName, EncodeNarrow(record->name).GetText(), sizeof givenName - 1);
  MGlobalResources = {};
  SonvelleDLL::parts = {};
  return MInitializeLibrary(record);
}

M_VISIBLE int32_t CountResources() {
  return MModule::instance->resources.GetResources().GetCount();
}

M_VISIBLE MWindowsConfiguration* GetWindowing() {
  return MWindowsModule::windowing;
}

M_VISIBLE MLock* GetEventLockInForce() {
  return &MGetEventLock();
}

// A thread that nobody stops but the end of the library.
M_VISIBLE void StartThread(bool* ended) {
  auto* const thread = new SlowThread;
  thread->ended = ended;
  thread->SetDeleteOnFinish(true);
  thread->Create();
  thread->Start();
}

}  // extern "C"
