#pragma once
// Numbers as text in the caller's memory, independent of the process's locale. What MString and MFormat
// share.

#include <cstdarg>

#include "core/MTypes.h"

constexpr int32_t kMaximumDigits = 62;
constexpr int32_t kIntegerTextSize = kMaximumDigits + 1;  // with the sign
constexpr int32_t kDoubleTextSize = 512;  // 1e308 has 309 digits, and up to 99 decimals follow

// Writes digits of base 2 to 16 in upper case, padded on the left with `fill` to `width` digits, with the
// sign in front unless it is 0; at most 62 digits, of which the lowest remain. Other bases count as 10.
// Returns the length; nothing terminates the text.
int32_t MWriteInteger(MChar (&text)[kIntegerTextSize], MChar sign, uint64_t magnitude, int32_t base,
                      int32_t width, MChar fill) noexcept;

// The magnitude of a number that may be negative.
constexpr uint64_t MMagnitude(int64_t value) noexcept {
  return value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
}

// Writes fixed notation with `precision` decimals, limited to 0..99, exactly rounded, with "+" in front of
// numbers at or above 0 if `plus` is set. Returns the length; nothing terminates the text.
int32_t MWriteDouble(char (&text)[kDoubleTextSize], double value, int32_t precision, bool plus) noexcept;

// C's strtod and vsnprintf under the "C" locale, whatever the host has set.
double MReadDouble(const char* text) noexcept;
int32_t MPrintText(char* text, std::size_t size, const char* format, std::va_list arguments) noexcept;
