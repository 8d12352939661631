#pragma once
// The guard of the boundaries that no exception may cross: what is caught is reported, and the caller goes on
// behind the guarded block.

#include <memory>
#include <type_traits>

#include "core/MString.h"

// Takes the text of a failure that a guard has stopped. Leaves no trace.
void ReportFatal(const MString& text) noexcept;

// Gets every text that is reported, on the thread that reports it; null for none. Only tests set it.
using MFatalHook = void (*)(const MString& text);
void MSetFatalHook(MFatalHook hook) noexcept;

// Calls `call(body)` and returns true. When it throws, reports "Structured exception from ..." with the
// location, the source and the message of an MException, "SYSTEM EXCEPTION! ..." with the location for all
// else, and returns false. Only the unwinding of a cancelled thread passes through.
bool MRunGuarded(const char* location, void (*call)(void*), void* body);

// The same for any callable without arguments.
template <typename F>
bool MRunGuarded(const char* location, F&& body) {
  using Body = std::remove_reference_t<F>;
  return MRunGuarded(
      location, [](void* b) { (*static_cast<Body*>(b))(); },
      const_cast<void*>(static_cast<const volatile void*>(std::addressof(body))));
}
