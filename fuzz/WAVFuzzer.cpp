// The bytes are a WAV file: reading it raises or gives samples, in parts the same as at once.

#include "audiofiles/MWAVReader.h"
#include "fuzz/SampleFuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, std::size_t size) {
  if (size < 1) return 0;
  const std::string bytes(reinterpret_cast<const char*>(input) + 1, size - 1);
  MAudioBuffer whole;
  if (!CheckLoad(LoadWAV, whole, bytes, 4).empty()) return 0;

  MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
  MWAVReader reader;
  reader.Open(stream);
  MAudioBuffer part;
  int32_t done = 0;
  while (reader.GetBytesLeft() > 0) {
    part.SetSize(reader.GetFormat().channels, 1 + input[0]);
    reader.Read(part);
    for (int32_t c = 0; c < part.GetChannelCount(); ++c)
      if (std::memcmp(part.GetChannel(c), whole.GetChannel(c) + done,
                      static_cast<std::size_t>(part.GetLength()) * sizeof(float)) != 0)
        __builtin_trap();
    done += part.GetLength();
  }
  if (done != whole.GetLength()) __builtin_trap();
  return 0;
}
