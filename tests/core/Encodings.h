#pragma once
// Bytes and units in tests of the encodings, and UTF-8 coders straight from its rules.

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "core/MEncodingReader.h"
#include "tests/common/TestRandom.h"
#include "tests/core/StreamDoubles.h"

inline std::string Bytes(const MBytes& bytes) {
  return std::string(bytes.GetText(), static_cast<std::size_t>(bytes.GetSize()));
}

inline std::u16string Units(const MString& text) {
  std::u16string units;
  for (int32_t i = 0; i < text.GetLength(); ++i) units += text.At(i);
  return units;
}

inline MString Decode(const MEncoding::Codec& codec, const std::string& bytes) {
  return codec.Decode(bytes.data(), static_cast<int32_t>(bytes.size()));
}

// The names of all codecs, one for each.
inline std::vector<MString> CodecNames() {
  return {"ascii",        "utf8",         "utf16",        "KOI8-R",       "KOI8-U",       "ISO-8859-2",
          "ISO-8859-3",   "ISO-8859-4",   "ISO-8859-5",   "ISO-8859-6",   "ISO-8859-7",   "ISO-8859-8",
          "ISO-8859-9",   "ISO-8859-10",  "ISO-8859-13",  "ISO-8859-14",  "ISO-8859-16",  "IBM850",
          "IBM874",       "IBM866",       "windows-1250", "windows-1251", "windows-1252", "windows-1253",
          "windows-1254", "windows-1255", "windows-1256", "windows-1257", "windows-1258", "Apple Roman",
          "roman8"};
}

// UTF-8 byte by byte, with a count of continuation bytes due.
inline std::u16string PlainDecode(const std::string& bytes) {
  std::u16string units;
  uint32_t codePoint = 0;
  int due = 0;
  for (const char c : bytes) {
    const auto byte = static_cast<uint8_t>(c);
    if (due == 0) {
      if (byte < 0x80) units += static_cast<char16_t>(byte);
      if (byte >= 0xC0 && byte <= 0xDF) due = 1, codePoint = byte & 0x1F;
      if (byte >= 0xE0 && byte <= 0xEF) due = 2, codePoint = byte & 0x0F;
      if (byte >= 0xF0 && byte <= 0xF7) due = 3, codePoint = byte & 0x07;
      continue;
    }
    if (byte < 0x80 || byte > 0xBF) {
      units += char16_t{1};
      due = 0;
      continue;
    }
    codePoint = codePoint * 64 + (byte & 0x3F);
    if (--due > 0 || codePoint == 0xFEFF) continue;
    if (codePoint > 0x10FFFF) {
      units += char16_t{1};
    } else if (codePoint > 0xFFFF) {
      units += static_cast<char16_t>(0xD800 + (codePoint - 0x10000) / 0x400);
      units += static_cast<char16_t>(0xDC00 + (codePoint - 0x10000) % 0x400);
    } else {
      units += static_cast<char16_t>(codePoint);
    }
  }
  return units;
}

// UTF-8 unit by unit, with a high surrogate held.
inline std::string PlainEncode(const std::u16string& units) {
  std::string bytes;
  uint32_t held = 0;
  bool skips = false;
  for (const char16_t unit : units) {
    uint32_t codePoint = unit;
    if (std::exchange(skips, false)) continue;
    const bool isLow = unit >= 0xDC00 && unit <= 0xDFFF;
    if (const uint32_t high = std::exchange(held, 0)) {
      if (!isLow) continue;
      codePoint = 0x10000 + (high - 0xD800) * 0x400 + (unit - 0xDC00u);
    } else if (unit >= 0xD800 && unit <= 0xDBFF) {
      held = unit;
      continue;
    } else if (isLow) {
      continue;
    }
    if (codePoint >= 0x10FE01 && codePoint <= 0x10FEFF) {
      bytes += static_cast<char>(codePoint & 0xFF);
      skips = true;
      continue;
    }
    const int tails = codePoint < 0x80 ? 0 : codePoint < 0x800 ? 1 : codePoint < 0x10000 ? 2 : 3;
    constexpr uint32_t kMarks[] = {0, 0xC0, 0xE0, 0xF0};
    bytes += static_cast<char>(kMarks[tails] | codePoint >> 6 * tails);
    for (int i = tails - 1; i >= 0; --i) bytes += static_cast<char>(0x80 | (codePoint >> 6 * i & 0x3F));
  }
  return bytes;
}

// Bytes of the units in UTF-8 if nothing is lost. Surrogates without a partner are, and some code points
// become raw bytes; then the encoded text is shorter.
inline std::size_t FullSize(const std::u16string& units) {
  std::size_t size = 0;
  for (const char16_t unit : units)
    size += unit < 0x80 ? 1 : unit < 0x800 || (unit & 0xF800) == 0xD800 ? 2 : 3;
  return size;
}

// A stream that gives little at a time.
class TricklingStream : public ForwardStream {
 public:
  TricklingStream(std::string bytes, TestRandom& random) : ForwardStream(std::move(bytes)), random_(random) {}
  int32_t Read(void* bytes, int32_t count) override {
    return ForwardStream::Read(bytes, std::min(count, random_.Integer(1, 3000)));
  }

 private:
  TestRandom& random_;
};

// A text from a reader in pieces of any size; now and then some units are given back.
inline std::u16string ReadInPieces(TricklingStream stream, const MEncoding::Codec& codec,
                                   TestRandom& random) {
  MEncoding::Reader reader(stream, codec);
  std::u16string units;
  std::vector<MChar> room(static_cast<std::size_t>(random.Integer(2, 1500)));
  while (const int32_t count = reader.ReadUnits(room.data(), static_cast<int32_t>(room.size()))) {
    units.append(room.data(), static_cast<std::size_t>(count));
    int32_t unread = random.Integer(1 - 4 * count, count - 1);
    if (unread <= 0) continue;
    while (unread < count && (room[static_cast<std::size_t>(count - unread)] & 0xFC00) == 0xDC00)
      ++unread;  // no half pair, which may have further lower halves behind it
    reader.SetCodec(codec, unread);
    units.resize(units.size() - static_cast<std::size_t>(unread));
  }
  return units;
}
