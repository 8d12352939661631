#pragma once
// The end of a wait that is given in milliseconds, on the clock that never jumps.

#include <chrono>

#include "core/MLock.h"

// kWaitForever is a hundred years, since the very last moment of a clock overflows in conversions.
inline std::chrono::steady_clock::time_point MDeadline(uint32_t wait) noexcept {
  using std::chrono::steady_clock;
  if (wait == kWaitForever) return steady_clock::now() + std::chrono::years(100);
  return steady_clock::now() + std::chrono::milliseconds(wait);
}
