#include <cxxabi.h>

#include "core/MException.h"
#include "core/MFormat.h"
#include "core/MGuard.h"
#include "core/MTranslate.h"

namespace {

void Report(const char* location, const MException& exception) {
  const MString text = Translate("Structured exception from '{1}' catched at '{0}' ('{2}')");
  ReportFatal(Format(text).Arg(location).Arg(exception.source).Arg(exception.message).Text());
}

void Report(const char* location) {
  ReportFatal(Format(Translate("SYSTEM EXCEPTION! {0}")).Arg(location).Text());
}

// Without memory for the text there is no report.
template <typename... Caught>
void TryToReport(const Caught&... caught) noexcept {
  try {
    Report(caught...);
  } catch (...) {
  }
}

}  // namespace

// The unwinding has no object, which the sanitizer takes for a reference to null.
__attribute__((no_sanitize("null"))) bool MRunGuarded(const char* location, void (*call)(void*), void* body) {
  try {
    call(body);
    return true;
  } catch (const MException& exception) {
    TryToReport(location, exception);
  } catch (abi::__forced_unwind&) {
    throw;  // who stops it here ends the process
  } catch (...) {
    TryToReport(location);
  }
  return false;
}
