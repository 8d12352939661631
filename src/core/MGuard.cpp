#include "core/MGuard.h"

#include <atomic>

namespace {

constinit std::atomic<MFatalHook> fatalHook = nullptr;

}  // namespace

void ReportFatal(const MString& text) noexcept {
  if (const MFatalHook hook = fatalHook) hook(text);
}

void MSetFatalHook(MFatalHook hook) noexcept {
  fatalHook = hook;
}
