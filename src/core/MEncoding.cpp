#include "core/MEncoding.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <vector>

#include "core/MEncodingReader.h"
#include "core/MEncodingWriter.h"
#include "core/MException.h"
#include "core/MFormat.h"
#include "core/MTranslate.h"

namespace MEncoding {

MString Codec::Decode(const void* bytes, int32_t size) const {
  MString text;
  if (!bytes) return text;
  const auto* in = static_cast<const uint8_t*>(bytes);
  MChar chunk[1024];
  while (size > 0) {
    const Piece piece = DecodePiece(in, size, true, chunk, std::size(chunk));
    if (piece.bytes == 0) break;
    text.AppendUnits(chunk, piece.units);
    in += piece.bytes;
    size -= piece.bytes;
  }
  return text;
}

MBytes Codec::Encode(const MString& text, bool terminate) const {
  return EncodeBlock(text, text.GetLength(), terminate);
}

MBytes Codec::EncodeBlock(const MString& text, int64_t bound, bool terminate) const {
  if (terminate) ++bound;
  if (bound > MString::kWhole) MThrowOutOfMemory();
  MDataBlock* const block = MDataBlock::Make(static_cast<int32_t>(bound));
  uint8_t* end = EncodeTo(text, block->data);
  if (terminate) *end++ = 0;
  block->size = static_cast<int32_t>(end - block->data);
  return MBytes(block);
}

void Codec::ReadHeader(MStream&) const {}

void Codec::WriteHeader(MStream&) const {}

bool Codec::ReadLine(Reader& reader, MString& line) const {
  std::vector<uint8_t, MAllocator<uint8_t>> gathered;
  bool isFound = false, isEnded = false;
  while (!isEnded) {
    const int32_t available = reader.Fill(1);
    if (available < 1) break;
    const uint8_t* const bytes = reader.GetBytes();
    const void* const feed = std::memchr(bytes, '\n', static_cast<std::size_t>(available));
    const uint8_t* const end = feed ? static_cast<const uint8_t*>(feed) : bytes + available;
    const auto old = static_cast<std::ptrdiff_t>(gathered.size());
    gathered.insert(gathered.end(), bytes, end);
    gathered.erase(std::remove(gathered.begin() + old, gathered.end(), '\r'), gathered.end());
    if (gathered.size() > MString::kWhole) MThrowOutOfMemory();
    reader.Skip(static_cast<int32_t>(end - bytes) + (feed ? 1 : 0));
    isFound = true;
    isEnded = feed != nullptr;
  }
  line = Decode(gathered.data(), static_cast<int32_t>(gathered.size()));
  return isFound;
}

void Codec::WriteText(Writer& writer, const MString& text) const {
  uint8_t* const room = writer.MakeRoom(int64_t{text.GetLength()} * kMaximumBytes);
  if (room) {
    writer.Advance(static_cast<int32_t>(EncodeTo(text, room) - room));
  } else {
    const MBytes bytes = Encode(text, false);
    writer.Write(bytes.GetData(), bytes.GetSize());
  }
}

void Codec::WriteTextLine(Writer& writer, const MString& text) const {
  MString line(text);
  line.Append(u'\n');
  WriteText(writer, line);
}

const ASCIICodec& ASCIICodec::Get() noexcept {
  static constinit const ASCIICodec codec;
  return codec;
}

MString ASCIICodec::GetName() const {
  return "ascii";
}

Piece ASCIICodec::DecodePiece(const uint8_t* bytes, int32_t size, bool, MChar* units,
                              int32_t capacity) const noexcept {
  const int32_t count = std::max(std::min(size, capacity), 0);
  std::copy_n(bytes, count, units);
  return {count, count};
}

uint8_t* ASCIICodec::EncodeTo(const MString& text, uint8_t* bytes) const noexcept {
  return text.Visit([bytes](const auto* units, int32_t count) {
    return std::transform(units, units + count, bytes, [](auto unit) { return static_cast<uint8_t>(unit); });
  });
}

const Codec& FindCodec(const MString& name) {
  const auto is = [&name](const char* own) { return name.Compare(MString::Literal(own)) == 0; };
  if (is("") || is("ascii")) return ASCIICodec::Get();
  if (is("utf8") || is("utf-8")) return UTF8Codec::Get();
  if (is("utf16") || is("utf-16")) return UTF16Codec::Get();
  if (const TableCodec* const codec = TableCodec::Find(name)) return *codec;
  throw MException(Format(Translate("No codec found for encoding {0}.")).Arg(name).Text());
}

}  // namespace MEncoding
