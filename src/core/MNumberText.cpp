#include "core/MNumberText.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace {

// Writes digits downwards from `end`, at most 62; returns the first one.
template <typename Base>
MChar* WriteDigits(MChar* end, uint64_t magnitude, Base base) noexcept {
  MChar* first = end;
  do {
    *--first = u"0123456789ABCDEF"[magnitude % base];
    magnitude /= base;
  } while (magnitude != 0 && end - first < kMaximumDigits);
  return first;
}

}  // namespace

int32_t MWriteInteger(MChar (&text)[kIntegerTextSize], MChar sign, uint64_t magnitude, int32_t base,
                      int32_t width, MChar fill) noexcept {
  MChar digits[kMaximumDigits];
  MChar* const digitsEnd = digits + kMaximumDigits;
  const MChar* const first =
      base < 2 || base == 10 || base > 16
          ? WriteDigits(digitsEnd, magnitude,
                        std::integral_constant<uint32_t, 10>())  // division by a constant
          : WriteDigits(digitsEnd, magnitude, static_cast<uint32_t>(base));
  MChar* end = text;
  if (sign != 0) *end++ = sign;
  end = std::fill_n(end, std::min(width, kMaximumDigits) - (digitsEnd - first), fill);
  end = std::copy(first, static_cast<const MChar*>(digitsEnd), end);
  return static_cast<int32_t>(end - text);
}

int32_t MWriteDouble(char (&text)[kDoubleTextSize], double value, int32_t precision, bool plus) noexcept {
  char* start = text;
  if (plus && value >= 0) {
    *start++ = '+';
    value = std::abs(value);  // of a negative zero
  }
  const auto result = std::to_chars(start, text + kDoubleTextSize, value, std::chars_format::fixed,
                                    std::clamp(precision, 0, 99));
  return static_cast<int32_t>(result.ptr - text);
}
