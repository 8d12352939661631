#pragma once
// The object that stands for a loaded library, and the protocol by which one library reaches another.

#include <cstring>

#include "core/MConsoleStream.h"
#include "core/MEncoding.h"
#include "core/MMemoryStream.h"
#include "plugin/MServiceArguments.h"
#include "resources/MResourceLibrary.h"

class MDLL;
class MLock;
class MModule;

// A named service of a module.
using MModuleService = MWord M_CALL(MModule* module, MServiceArguments* arguments);

struct MNamedService {
  const char* name;
  MModuleService* function;
};

// The text of slot 0, a zero-terminated one in UTF-8; null, and a null record, are the empty text.
inline MString MServiceText(const MServiceArguments* arguments) {
  const char* const text = arguments ? MAsAddress<const char>(arguments->slot[0].value) : nullptr;
  if (!text) return MString();
  return MEncoding::UTF8Codec::Get().Decode(text, static_cast<int32_t>(std::strlen(text)));
}

// What a host hands in with MLibraryDLLInitialize. It may drop the record and the table after the call; the
// functions and the lock outlive the library.
struct MLibraryRecord {
  const MLibraryFunctions* functions;  // the allocator that is in force from then on
  MLock* lock;   // serialises the event subscriptions of the process; null: one of the library
  MString name;  // of the module, until it knows its own
};

// MLibraryDLLInitialize: makes the module at the first call, and returns it, or null when that failed. Every
// call puts the record's allocator and lock in force. Not for two threads at once. [host]
using MLibraryInitializer = MModule* M_CALL(MLibraryRecord* record);

// There is one module per library, made by the library's first start. Hosts read the table of services in
// place, so the order of the members is part of the interface. The table is written by Initialize alone.
class MModule : public MObject {
 public:
  static constexpr int32_t kMaximumServices = 64;

  MModule();
  ~MModule() override;

  // The caller's side of loading a library: hands it this library's allocator, event lock and the path, and
  // keeps its module in `dll`, where there is one.
  virtual void DLLLoaded(MDLL& dll);
  // Finds the library's own name and its resources. What fails is reported to ReportFatal.
  virtual void Initialize();
  // Kept for the place in the order.
  virtual int32_t Reserved() { return 0; }
  // Writes the library's plug-ins to the registry; `library` is the path that hosts are to load.
  virtual void RegisterAllPlugins(const MString& library);

  // Adds a pair behind the others. The 65th raises "Index out of range."
  void AddService(const char* serviceName, MModuleService* function);

  static inline MModule* instance = nullptr;
  static inline MModule* first = nullptr;  // the first one that was made
  // Empties what the toolkit keeps for the whole library, at the module's end. The toolkit puts it here.
  static inline void (*emptyCaches)() = nullptr;

  MString name;   // file name of the library
  MString title;  // without its extension; a module may have another title
  MResourceLibrary resources;
  MMemoryStream globalData;
  uint32_t reserved = 31;
  MNamedService services[kMaximumServices] = {};
  int32_t serviceCount = 0;
  MConsoleStream console;
  void* handle = nullptr;  // of this library, or of the process
};

// Calls a service of a module by its name, compared by content; the first of a name counts. An unknown name,
// and a null module or name, give -1. "MRegisterAllPlugins" is there without being in the table: slot 0 is
// the library's path in UTF-8, null for none. The module may be another library's. [host]
#if defined(__GNUC__)
__attribute__((no_sanitize("vptr")))  // the type's information stays in the other library
#endif
inline MWord
MInvokeService(MModule* module, const char* name, MServiceArguments* arguments) {
  if (!module || !name) return -1;
  if (std::strcmp(name, "MRegisterAllPlugins") == 0) {
    module->RegisterAllPlugins(MServiceText(arguments));
    return 0;
  }
  for (int32_t i = 0; i < module->serviceCount; ++i)
    if (std::strcmp(module->services[i].name, name) == 0)
      return module->services[i].function(module, arguments);
  return -1;
}
