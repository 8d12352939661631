#pragma once
// Numbers as 8-bit text in caller's memory, independent of the process's locale. What MString and MFormat
// share.

#include <cstdarg>

#include "core/MTypes.h"

constexpr int32_t kIntegerTextSize = 64;  // 62 digits, sign, terminator
constexpr int32_t kDoubleTextSize = 512;  // 1e308 has 309 digits, and up to 99 decimals follow

// Writes digits of base 2 to 16 in upper case, padded on the left with `fill` to `width` digits, with the
// sign in front; at most 62 digits, of which the lowest remain. Other bases count as 10. Returns the length.
int32_t MWriteInteger(char (&text)[kIntegerTextSize], int64_t value, int32_t base, int32_t width,
                      char fill) noexcept;
int32_t MWriteUnsigned(char (&text)[kIntegerTextSize], uint64_t value, int32_t base, int32_t width,
                       char fill) noexcept;

// Writes fixed notation with `precision` decimals, limited to 0..99, exactly rounded. Returns the length.
int32_t MWriteDouble(char (&text)[kDoubleTextSize], double value, int32_t precision) noexcept;

// C's strtod and vsnprintf under the "C" locale, whatever the host has set.
double MReadDouble(const char* text) noexcept;
int32_t MPrintText(char* text, std::size_t size, const char* format, std::va_list arguments) noexcept;
