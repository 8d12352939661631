#include <cstdarg>
#include <cstring>

#include "core/MNumberText.h"
#include "core/MString.h"

int64_t MString::ToInteger(int32_t base, int32_t* consumed, int32_t start) const noexcept {
  int32_t i = start < 0 ? 0 : start;
  const int32_t first = i;
  const bool negative = At(i) == u'-';
  if (negative) ++i;
  uint64_t value = 0;
  for (;; ++i) {
    const MChar c = At(i);
    const int32_t digit = MDigitValue(c);
    if (digit < 0 || digit >= base) break;
    value = value * static_cast<uint64_t>(base) + static_cast<uint64_t>(digit);
  }
  if (consumed) *consumed = i - first;
  return static_cast<int64_t>(negative ? 0 - value : value);
}

double MString::ToDouble() const {
  if (IsLiteral()) return MReadDouble(Narrow());
  const auto narrow = [this](char* target, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
      const MChar c = Units()[i];
      target[i] = c < 128 ? static_cast<char>(c) : '?';  // no number holds it: the reader stops there
    }
    target[count] = 0;
    return MReadDouble(target);
  };
  char local[kDoubleTextSize];
  if (length_ < kDoubleTextSize) return narrow(local, length_);
  MBytes bytes(MDataBlock::Make(length_ + 1));
  return narrow(const_cast<char*>(bytes.GetText()), length_);
}

MString MString::FromInteger(int64_t value, int32_t base, int32_t width, MChar fill) {
  char text[kIntegerTextSize];
  return FromNarrow(text, MWriteInteger(text, value, base, width, static_cast<char>(fill)));
}

MString MString::FromUnsigned(uint64_t value, int32_t base, int32_t width, MChar fill) {
  char text[kIntegerTextSize];
  return FromNarrow(text, MWriteUnsigned(text, value, base, width, static_cast<char>(fill)));
}

MString MString::FromDouble(double value, int32_t precision) {
  char text[kDoubleTextSize];
  return FromNarrow(text, MWriteDouble(text, value, precision));
}

MString MString::Printf(const char* format, ...) {
  char text[8191];
  std::va_list arguments;
  va_start(arguments, format);
  const int32_t length = MPrintText(text, sizeof text, format, arguments);
  va_end(arguments);
  return length > 0 ? FromNarrow(text) : MString();
}
