#include "plugin/MWindowsModule.h"

#include <utility>

#include "core/MGuard.h"
#include "plugin/MDLL.h"

namespace {

MWord GetFirstWord(const MServiceArguments* arguments) noexcept {
  return arguments ? arguments->slot[0].value : 0;
}

MWord M_CALL SetConfiguration(MModule*, MServiceArguments* arguments) {
  MWindowsModule::windowing = MAsAddress<MWindowsConfiguration>(GetFirstWord(arguments));
  return 0;
}

MWord M_CALL CreateStyle(MModule* module, MServiceArguments* arguments) {
  return static_cast<MWindowsModule*>(module)->CreateStyle(MServiceText(arguments));
}

MWord M_CALL RegisterStyle(MModule* module, MServiceArguments* arguments) {
  static_cast<MWindowsModule*>(module)->RegisterStyle(GetFirstWord(arguments) != 0);
  return 0;
}

}  // namespace

MWindowsModule::~MWindowsModule() {
  if (!ownsWindowing || !windowing) return;
  MWindowsConfiguration* const owned = std::exchange(windowing, nullptr);
  if (operations.destroy) operations.destroy(*owned);
}

void MWindowsModule::DLLLoaded(MDLL& dll) {
  MModule::DLLLoaded(dll);
  MRunGuarded("MWindowsModule::DLLLoaded", [&dll] {
    if (!windowing || !dll.module) return;
    MServiceArguments arguments(MAsWord(windowing));
    dll.Invoke("MWindowsConfiguration", &arguments);
  });
}

void MWindowsModule::Initialize() {
  MModule::Initialize();
  AddService("MWindowsConfiguration", ::SetConfiguration);
  AddService("MWindowsCreateStyle", ::CreateStyle);
  AddService("MWindowsRegisterStyle", ::RegisterStyle);
}

int32_t MWindowsModule::CreateStyle(const MString& styleName) {
  return windowing && operations.createStyle ? operations.createStyle(*windowing, styleName) : 0;
}

void MWindowsModule::RegisterStyle(bool isDefault) {
  if (windowing && operations.registerStyle) operations.registerStyle(*windowing, isDefault);
}
