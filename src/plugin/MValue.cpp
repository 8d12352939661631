#include "plugin/MValue.h"

void MValue::GetShortText(ShortText& text) const {
  MString whole;
  GetText(whole);
  Shorten(text, whole);
}

void MValue::Shorten(ShortText& buffer, const MString& text) noexcept {
  constexpr int32_t kMaximum = sizeof buffer - 1;
  int32_t length = 0;
  for (; length < kMaximum && text.At(length) != 0; ++length) {
    const MChar c = text.At(length);
    buffer[length] = c < 128 ? static_cast<char>(c) : '?';
  }
  buffer[length] = 0;
}
