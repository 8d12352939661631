// A library that notes how it is started and what is asked of it first.

#include <string>

#include "hosts/bridge/Parameters.h"
#include "plugin/MHostInterface.h"

namespace {

std::string notes;
const MLibraryFunctions* functions;
MLock* lock;

}  // namespace

extern "C" {

M_VISIBLE MModule* MLibraryDLLInitialize(MLibraryRecord* record) {
  functions = record->functions;
  lock = record->lock;
  notes += "start " + bridge::ToUtf8(record->name) + "\n";
  return nullptr;
}

M_VISIBLE MWord EcholanAudioEffectPluginInterface(void*, int32_t service, MServiceArguments*) {
  notes += "service " + std::to_string(service) + "\n";
  return 0;
}

M_VISIBLE const char* GetNotes() {
  return notes.c_str();
}
M_VISIBLE const MLibraryFunctions* GetFunctions() {
  return functions;
}
M_VISIBLE MLock* GetLock() {
  return lock;
}

}  // extern "C"
