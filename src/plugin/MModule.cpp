#include "plugin/MModule.h"

#include "core/MFileTools.h"
#include "core/MGuard.h"
#include "core/MLock.h"
#include "core/MPath.h"
#include "core/MTranslate.h"
#include "plugin/MDLL.h"
#include "plugin/MModuleFile.h"

MModule::MModule() {
  if (!first) first = this;
}

MModule::~MModule() {
  MRunGuarded("MModule::MModule", [] {
    if (emptyCaches) emptyCaches();
    delete MSetTranslationTable(nullptr);
  });
  if (first == this) first = nullptr;
}

void MModule::DLLLoaded(MDLL& dll) {
  MRunGuarded("MModule::DLLLoaded", [&dll] {
    MLibraryRecord record{&MGetLibraryFunctions(), &MGetEventLock(), dll.path};
    if (void* const function = dll.GetFunction("MLibraryDLLInitialize"))
      dll.module = reinterpret_cast<MLibraryInitializer*>(function)(&record);
  });
}

void MModule::Initialize() {
  MRunGuarded("MModule::Initialize", [this] {
    const MString path = NormalizePath(MGetModulePath());
    name = GetPathName(path);
    const int32_t dot = name.FindLast(u'.');
    title = dot < 0 ? name : name.Substring(0, dot);
    if (!resources.IsEmpty()) return;
    MString file = path.Substring(0, path.GetLength() - (name.GetLength() - title.GetLength()));
    file.Append(".mrf");
    if (FileExists(file)) resources.LoadFile(file);
  });
}

void MModule::RegisterAllPlugins(const MString&) {}

void MModule::AddService(const char* serviceName, MModuleService* function) {
  if (serviceCount < 0 || serviceCount >= kMaximumServices) MThrowIndexOutOfRange();
  services[serviceCount++] = {serviceName, function};
}
