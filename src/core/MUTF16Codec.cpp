#include <algorithm>
#include <bit>
#include <cstring>

#include "core/MEncoding.h"
#include "core/MEncodingReader.h"
#include "core/MEncodingWriter.h"
#include "core/MException.h"
#include "core/MTranslate.h"

namespace MEncoding {
namespace {

constexpr uint8_t kHeader[2] = {0xFF, 0xFE};
constexpr int32_t kChunk = 64;

constexpr MChar Unit(const uint8_t* bytes) {
  return static_cast<MChar>(bytes[0] | bytes[1] << 8);
}

uint8_t* Put(uint8_t* out, MChar unit) {
  *out++ = static_cast<uint8_t>(unit);
  *out++ = static_cast<uint8_t>(unit >> 8);
  return out;
}

}  // namespace

const UTF16Codec& UTF16Codec::Get() noexcept {
  static constinit const UTF16Codec codec;
  return codec;
}

MString UTF16Codec::GetName() const {
  return "utf16";
}

MBytes UTF16Codec::Encode(const MString& text, bool terminate) const {
  const int32_t zero = terminate ? 1 : 0;
  const int64_t size = (int64_t{text.GetLength()} + zero) * 2;
  if (size > MString::kWhole) MThrowOutOfMemory();
  // A text's own units have a zero behind them already.
  if (std::endian::native == std::endian::little && !text.IsLiteral())
    return MBytes(MDataBlock::Share(text, static_cast<int32_t>(size)));
  MDataBlock* const block = MDataBlock::Make(static_cast<int32_t>(size));
  uint8_t* const end = EncodeTo(text, block->data);
  if (terminate) Put(end, 0);
  return MBytes(block);
}

void UTF16Codec::ReadHeader(MStream& stream) const {
  uint8_t header[sizeof kHeader];
  stream.ReadRequired(header, sizeof header);
  if (std::memcmp(header, kHeader, sizeof header) != 0) throw MException(Translate("Invalid UTF8 header."));
}

void UTF16Codec::WriteHeader(MStream& stream) const {
  stream.Write(kHeader, sizeof kHeader);
}

bool UTF16Codec::ReadLine(Reader& reader, MString& line) const {
  line.Clear();
  MChar chunk[kChunk];
  int32_t count = 0;
  bool found = false;
  while (reader.Fill(2) >= 2) {
    const MChar unit = Unit(reader.GetBytes());
    reader.Skip(2);
    found = true;
    if (unit == 0 || unit == u'\n') break;
    if (unit == u'\r') continue;
    chunk[count++] = unit;
    if (count < kChunk) continue;
    line.AppendUnits(chunk, count);
    count = 0;
  }
  line.AppendUnits(chunk, count);
  return found;
}

void UTF16Codec::WriteText(Writer& writer, const MString& text) const {
  for (int32_t i = 0; i < text.GetLength(); ++i) {
    Put(writer.MakeRoom(2), text.At(i));
    writer.Advance(2);
  }
}

Piece UTF16Codec::DecodePiece(const uint8_t* bytes, int32_t size, bool isLast, MChar* units,
                              int32_t capacity) const noexcept {
  const int32_t count = std::min(size / 2, capacity);
  if constexpr (std::endian::native == std::endian::little) {
    if (count > 0) std::memcpy(units, bytes, static_cast<std::size_t>(count) * 2);
  } else {
    for (int32_t i = 0; i < count; ++i) units[i] = Unit(bytes + 2 * i);
  }
  const bool dropsOdd = isLast && size - 2 * count == 1;
  return {dropsOdd ? size : 2 * count, count};
}

uint8_t* UTF16Codec::EncodeTo(const MString& text, uint8_t* bytes) const noexcept {
  for (int32_t i = 0; i < text.GetLength(); ++i) bytes = Put(bytes, text.At(i));
  return bytes;
}

}  // namespace MEncoding
