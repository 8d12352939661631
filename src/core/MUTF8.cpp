#include "core/MUTF8.h"

namespace {

uint8_t* Put(uint8_t* out, uint32_t codePoint) {
  const auto tail = [codePoint](int shift) {
    return static_cast<uint8_t>(0x80 | (codePoint >> shift & 0x3F));
  };
  if (codePoint < 0x80) {
    *out++ = static_cast<uint8_t>(codePoint);
  } else if (codePoint < 0x800) {
    *out++ = static_cast<uint8_t>(0xC0 | codePoint >> 6);
    *out++ = tail(0);
  } else if (codePoint < 0x10000) {
    *out++ = static_cast<uint8_t>(0xE0 | codePoint >> 12);
    *out++ = tail(6);
    *out++ = tail(0);
  } else {
    *out++ = static_cast<uint8_t>(0xF0 | codePoint >> 18);
    *out++ = tail(12);
    *out++ = tail(6);
    *out++ = tail(0);
  }
  return out;
}

}  // namespace

MBytes MEncodeUTF8(const MString& text, bool terminate) {
  const int32_t length = text.GetLength();
  const int64_t bound = int64_t{length} * 3 + 1;
  if (bound > MString::kWhole) MThrowOutOfMemory();
  MDataBlock* const block = MDataBlock::Make(static_cast<int32_t>(bound));
  uint8_t* out = block->data;
  for (int32_t i = 0; i < length; ++i) {
    const MChar unit = text.At(i);
    if ((unit & 0xFC00) == 0xDC00) continue;
    if ((unit & 0xFC00) != 0xD800) {
      out = Put(out, unit);
      continue;
    }
    const MChar low = text.At(++i);
    if ((low & 0xFC00) != 0xDC00) continue;
    const uint32_t codePoint = 0x10000 + ((unit & 0x3FFu) << 10 | (low & 0x3FFu));
    if (codePoint >= 0x10FE01 && codePoint <= 0x10FEFF) {
      *out++ = static_cast<uint8_t>(codePoint);
      ++i;
    } else {
      out = Put(out, codePoint);
    }
  }
  if (terminate) *out++ = 0;
  block->size = static_cast<int32_t>(out - block->data);
  return MBytes(block);
}

MBytes EncodeNarrow(const MString& text) {
  return MEncodeUTF8(text, true);
}
