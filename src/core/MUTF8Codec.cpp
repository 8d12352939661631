#include <algorithm>

#include "core/MEncoding.h"
#include "core/MEncodingASCII.h"

namespace MEncoding {
namespace {

constexpr MChar kBroken = 1;  // stands for a sequence that is none
constexpr MChar kByteOrderMark = 0xFEFF;
constexpr uint32_t kLastCodePoint = 0x10FFFF;

constexpr bool IsTail(uint8_t byte) {
  return (byte & 0xC0) == 0x80;
}

// Continuation bytes that the byte announces: 0 for ASCII, -1 for one that begins nothing.
constexpr int32_t TailLength(uint8_t lead) {
  if (lead < 0x80) return 0;
  if (lead < 0xC0 || lead >= 0xF8) return -1;
  return lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
}

MChar* PutUnits(MChar* out, uint32_t codePoint) {
  if (codePoint > kLastCodePoint) {
    *out++ = kBroken;
  } else if (codePoint > 0xFFFF) {
    *out++ = static_cast<MChar>(0xD7C0 + (codePoint >> 10));
    *out++ = static_cast<MChar>(0xDC00 | (codePoint & 0x3FF));
  } else if (codePoint != kByteOrderMark) {
    *out++ = static_cast<MChar>(codePoint);
  }
  return out;
}

uint8_t* PutBytes(uint8_t* out, uint32_t codePoint) {
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

// Decodes one character, or drops one byte. False if it is cut off, or has no room.
bool DecodeOne(const uint8_t*& in, const uint8_t* end, bool isLast, MChar*& out, const MChar* limit) {
  const int32_t tails = TailLength(*in);
  if (tails < 0) {
    ++in;
    return true;
  }
  uint32_t codePoint = tails == 0 ? *in : *in & (0x3Fu >> tails);
  for (int32_t i = 1; i <= tails; ++i) {
    if (in + i == end) {
      if (isLast) in = end;
      return isLast;
    }
    if (!IsTail(in[i])) {
      *out++ = kBroken;
      in += i + 1;
      return true;
    }
    codePoint = codePoint << 6 | (in[i] & 0x3Fu);
  }
  if (codePoint > 0xFFFF && codePoint <= kLastCodePoint && limit - out < 2) return false;
  out = PutUnits(out, codePoint);
  in += tails + 1;
  return true;
}

uint8_t* EncodeUnits(const char* units, int32_t count, uint8_t* out) {
  for (int32_t i = 0; i < count; ++i) out = PutBytes(out, MString::Widen(units[i]));
  return out;
}

uint8_t* EncodeUnits(const MChar* units, int32_t count, uint8_t* out) {
  for (int32_t i = 0; i < count; ++i) {
    if (units[i] < 0x80) {
      const int32_t run = NarrowASCII(units + i, out, count - i);
      i += run - 1;
      out += run;
      continue;
    }
    const MChar unit = units[i];
    if ((unit & 0xF800) != 0xD800) {
      out = PutBytes(out, unit);
      continue;
    }
    if ((unit & 0xFC00) == 0xDC00 || ++i == count || (units[i] & 0xFC00) != 0xDC00) continue;
    const uint32_t codePoint = 0x10000 + ((unit & 0x3FFu) << 10 | (units[i] & 0x3FFu));
    if (codePoint >= 0x10FE01 && codePoint <= 0x10FEFF) {
      *out++ = static_cast<uint8_t>(codePoint);
      ++i;
    } else {
      out = PutBytes(out, codePoint);
    }
  }
  return out;
}

// Bytes that the units take at most: exact but for surrogates without a partner and the channel of raw bytes.
int64_t CountBytes(const char* units, int32_t count) {
  return count + 2 * std::count_if(units, units + count, [](char c) { return (c & 0x80) != 0; });
}

int64_t CountBytes(const MChar* units, int32_t count) {
  int64_t bytes = 0;
  while (count > 0) {
    const int32_t block = std::min(count, 0x2000);  // the sum of a block fits into 16 bits
    uint16_t sum = 0;
    for (int32_t i = 0; i < block; ++i) {
      const bool isLong = units[i] >= 0x800 && (units[i] & 0xF800) != 0xD800;
      sum = static_cast<uint16_t>(sum + 1 + (units[i] >= 0x80) + isLong);
    }
    bytes += sum;
    units += block;
    count -= block;
  }
  return bytes;
}

}  // namespace

const UTF8Codec& UTF8Codec::Get() noexcept {
  static constinit const UTF8Codec codec;
  return codec;
}

MString UTF8Codec::GetName() const {
  return "utf8";
}

MBytes UTF8Codec::Encode(const MString& text, bool terminate) const {
  const int64_t bound = text.Visit([](const auto* units, int32_t count) { return CountBytes(units, count); });
  return EncodeBlock(text, bound, terminate);
}

Piece UTF8Codec::DecodePiece(const uint8_t* bytes, int32_t size, bool isLast, MChar* units,
                             int32_t capacity) const noexcept {
  const uint8_t* in = bytes;
  const uint8_t* const end = bytes + size;
  MChar* out = units;
  MChar* const limit = units + capacity;
  while (in < end && out < limit) {
    const uint8_t lead = *in;
    if (lead < 0x80) {
      const auto run = WidenASCII(in, out, static_cast<int32_t>(std::min(end - in, limit - out)));
      in += run;
      out += run;
    } else if ((lead & 0xE0) == 0xC0 && end - in >= 2 && IsTail(in[1])) {
      *out++ = static_cast<MChar>((lead & 0x1F) << 6 | (in[1] & 0x3F));
      in += 2;
    } else if ((lead & 0xF0) == 0xE0 && end - in >= 3 && IsTail(in[1]) && IsTail(in[2])) {
      const auto unit = static_cast<MChar>((lead & 0xF) << 12 | (in[1] & 0x3F) << 6 | (in[2] & 0x3F));
      *out = unit;
      out += unit != kByteOrderMark;
      in += 3;
    } else if (!DecodeOne(in, end, isLast, out, limit)) {
      break;
    }
  }
  return {static_cast<int32_t>(in - bytes), static_cast<int32_t>(out - units)};
}

uint8_t* UTF8Codec::EncodeTo(const MString& text, uint8_t* bytes) const noexcept {
  return text.Visit([bytes](const auto* units, int32_t count) { return EncodeUnits(units, count, bytes); });
}

}  // namespace MEncoding

MBytes EncodeNarrow(const MString& text) {
  return MEncoding::UTF8Codec::Get().Encode(text, true);
}
