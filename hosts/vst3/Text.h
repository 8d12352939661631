#pragma once
#include <string>

#include "hosts/bridge/Parameters.h"

namespace vst3 {

constexpr int32_t kTextUnits = 128;  // of a text that the host has room for

// Writes UTF-8 as UTF-16 that ends with 0, as much of it as there is room for.
inline void WriteText(std::string_view text, int16_t* out, int32_t room = kTextUnits) {
  const MString units = bridge::FromUtf8(text);
  int32_t count = std::min(units.GetLength(), room - 1);
  const bool isCut = count < units.GetLength() && count > 0;
  if (isCut && (units.At(count - 1) & 0xFC00) == 0xD800) --count;  // half a character
  for (int32_t i = 0; i < count; ++i) out[i] = static_cast<int16_t>(units.At(i));
  out[count] = 0;
}

// UTF-8 of at most kTextUnits of UTF-16.
inline std::string ReadText(const int16_t* text) {
  MString units;
  for (int32_t i = 0; i < kTextUnits && text[i] != 0; ++i) units.Append(static_cast<MChar>(text[i]));
  return bridge::ToUtf8(units);
}

}  // namespace vst3
