#include "plugin/MDLL.h"

#include "core/MTranslate.h"

MDLL::~MDLL() {
  Unload();
}

void MDLL::CheckLoaded() const {
  if (!handle) throw MException(Translate("Dynamic link library has not been loaded."));
}

MWord MDLL::Invoke(const char* name, MServiceArguments* arguments) const {
  CheckLoaded();
  if (!module) throw MException(Translate("The library does not support Tessaron service access."));
  return MInvokeService(module, name, arguments);
}
