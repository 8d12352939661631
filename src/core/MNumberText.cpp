#include "core/MNumberText.h"

#include <algorithm>
#include <charconv>
#include <cstring>

int32_t MWriteUnsigned(char (&text)[kIntegerTextSize], uint64_t value, int32_t base, int32_t width,
                       char fill) noexcept {
  constexpr int32_t kMaximumDigits = 62;
  if (base < 2 || base > 16) base = 10;
  char digits[64];
  int32_t count = 0;
  do {
    digits[count++] = "0123456789ABCDEF"[value % static_cast<uint32_t>(base)];
    value /= static_cast<uint32_t>(base);
  } while (value != 0);
  count = std::min(count, kMaximumDigits);
  const int32_t padding = std::clamp(width, count, kMaximumDigits) - count;
  std::memset(text, fill, static_cast<std::size_t>(padding));
  std::reverse_copy(digits, digits + count, text + padding);
  text[padding + count] = 0;
  return padding + count;
}

int32_t MWriteInteger(char (&text)[kIntegerTextSize], int64_t value, int32_t base, int32_t width,
                      char fill) noexcept {
  if (value >= 0) return MWriteUnsigned(text, static_cast<uint64_t>(value), base, width, fill);
  const int32_t length = MWriteUnsigned(text, 0 - static_cast<uint64_t>(value), base, width, fill);
  std::memmove(text + 1, text, static_cast<std::size_t>(length) + 1);
  text[0] = '-';
  return length + 1;
}

int32_t MWriteDouble(char (&text)[kDoubleTextSize], double value, int32_t precision) noexcept {
  const auto result = std::to_chars(text, text + kDoubleTextSize - 1, value, std::chars_format::fixed,
                                    std::clamp(precision, 0, 99));
  *result.ptr = 0;
  return static_cast<int32_t>(result.ptr - text);
}
