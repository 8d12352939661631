#include <cstdarg>

#include "core/MNumberText.h"
#include "core/MString.h"

int64_t MString::ToInteger(int32_t base, int32_t* consumed, int32_t start) const noexcept {
  const int32_t first = start < 0 ? 0 : start;
  return Visit([&](const auto* units, int32_t length) {
    const auto at = [&](int32_t i) { return i < length ? Widen(units[i]) : MChar(0); };
    const bool negative = at(first) == u'-';
    int32_t i = negative ? first + 1 : first;
    uint64_t value = 0;
    for (; i < length; ++i) {
      const int32_t digit = MDigitValue(Widen(units[i]));
      if (digit < 0 || digit >= base) break;
      value = value * static_cast<uint64_t>(base) + static_cast<uint64_t>(digit);
    }
    if (consumed) *consumed = i - first;
    return static_cast<int64_t>(negative ? 0 - value : value);
  });
}

double MString::ToDouble() const {
  if (IsLiteral()) return MReadDouble(Narrow());
  if (length_ >= kDoubleTextSize) return MReadDouble(EncodeNarrow(*this).GetText());
  char text[kDoubleTextSize];
  int32_t end = 0;
  for (; end < length_ && Units()[end] < 128; ++end) text[end] = static_cast<char>(Units()[end]);
  text[end] = 0;
  return MReadDouble(text);
}

MString MString::FromInteger(int64_t value, int32_t base, int32_t width, MChar fill) {
  MChar text[kIntegerTextSize];
  const MChar sign = value < 0 ? u'-' : MChar(0);
  const int32_t length = MWriteInteger(text, sign, MMagnitude(value), base, width, fill);
  return MString(std::u16string_view(text, static_cast<std::size_t>(length)));
}

MString MString::FromUnsigned(uint64_t value, int32_t base, int32_t width, MChar fill) {
  MChar text[kIntegerTextSize];
  const int32_t length = MWriteInteger(text, 0, value, base, width, fill);
  return MString(std::u16string_view(text, static_cast<std::size_t>(length)));
}

MString MString::FromDouble(double value, int32_t precision) {
  char text[kDoubleTextSize];
  return FromNarrow(text, MWriteDouble(text, value, precision, false));
}

MString MString::Printf(const char* format, ...) {
  char text[8191];
  std::va_list arguments;
  va_start(arguments, format);
  if (MPrintText(text, sizeof text, format, arguments) < 0) text[0] = 0;
  va_end(arguments);
  return FromNarrow(text);
}
