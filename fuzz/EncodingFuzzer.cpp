// A byte for the codec, one for the sizes of pieces, then text in that encoding: however it is read, it is
// the same, and what is encoded from it decodes to it again.

#include "core/MEncodingReader.h"
#include "core/MEncodingWriter.h"
#include "tests/core/Encodings.h"

namespace {

using namespace MEncoding;

void Require(bool condition) {
  if (!condition) __builtin_trap();
}

// In pieces of any size; now and then some units are given back.
std::u16string ReadUnits(TricklingStream stream, const Codec& codec, TestRandom& random) {
  Reader reader(stream, codec);
  std::u16string units;
  std::vector<MChar> room(static_cast<std::size_t>(random.Integer(2, 1500)));
  while (const int32_t count = reader.ReadUnits(room.data(), static_cast<int32_t>(room.size()))) {
    units.append(room.data(), static_cast<std::size_t>(count));
    int32_t unread = random.Integer(1 - 4 * count, count - 1);
    if (unread <= 0) continue;
    if ((room[static_cast<std::size_t>(count - unread)] & 0xFC00) == 0xDC00) ++unread;  // no half pair
    reader.SetCodec(codec, unread);
    units.resize(units.size() - static_cast<std::size_t>(unread));
  }
  return units;
}

std::u16string ReadLines(TricklingStream stream, const Codec& codec) {
  Reader reader(stream, codec);
  std::u16string lines;
  for (MString line; reader.ReadLine(line);) lines += Units(line) + u'\n';
  return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, std::size_t size) {
  static const std::vector<MString> kNames = CodecNames();
  if (size < 2) return 0;
  const Codec& codec = FindCodec(kNames[input[0] % kNames.size()]);
  TestRandom random(input[1]);
  const std::string bytes(input + 2, input + size);
  const MString text = Decode(codec, bytes);
  const std::u16string units = Units(text);
  Require(ReadUnits(TricklingStream(bytes, random), codec, random) == units);
  Require(ReadLines(TricklingStream(bytes, random), codec) ==
          ReadLines(TricklingStream(bytes, random), codec));

  const std::string encoded = Bytes(codec.Encode(text, false));
  if (&codec != &UTF8Codec::Get() || encoded.size() == FullSize(units))
    Require(Decode(codec, encoded) == text);
  BareStream written;
  Writer(written, codec).WriteText(text);
  Require(written.written == encoded);
  return 0;
}
