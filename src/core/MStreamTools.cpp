#include "core/MStreamTools.h"

#include "core/MHexaStream.h"

void MCopyStream(MStream& source, MStream& target) {
  uint8_t buffer[4096];
  int32_t found;
  do {
    found = source.Read(buffer, sizeof buffer);
    target.Write(buffer, found);
  } while (found == sizeof buffer);
}

MString MHexadecimalText(MStream& stream, bool rewind) {
  if (rewind) stream.Seek(0, MSeekOrigin::kStart);
  MString text;
  uint8_t bytes[MHexaStream::kChunk];
  int32_t found;
  do {
    found = stream.Read(bytes, MHexaStream::kChunk);
    char digits[2 * MHexaStream::kChunk];
    MHexaStream::Encode(bytes, found, digits);
    text.AppendNarrow(digits, 2 * found);
  } while (found == MHexaStream::kChunk);
  return text;
}
