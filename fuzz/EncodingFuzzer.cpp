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
  Require(ReadInPieces(TricklingStream(bytes, random), codec, random) == units);
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
