// The bytes are a file of MPEG audio: reading it raises or gives samples. Then its decoder goes to and fro.

#include "audiofiles/MMPEGFile.h"
#include "audiofiles/MPEGOpening.h"
#include "audiofiles/ampegdecoder.h"
#include "fuzz/SampleFuzzing.h"

namespace {

using namespace mp3dec;

void GoToAndFro(ampegdecoder& decoder, TestRandom& random) {
  const auto size = static_cast<int32_t>(std::min<int64_t>(decoder.Ioctl(kGetSize), 1 << 20));
  uint8_t bytes[10000];
  for (int i = 0; i < 5; ++i) {
    const int32_t position = random.Integer(-1, size + 1);
    const int64_t reached = decoder.RawSeek(position);
    if (reached > decoder.Ioctl(kGetSize) || reached > std::max(position, 0)) __builtin_trap();
    const int32_t count = random.Below(sizeof bytes);
    const int32_t peeked = decoder.RawPeek(bytes, count);
    if (decoder.RawRead(bytes, count) < peeked) __builtin_trap();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, std::size_t size) {
  if (size < 1) return 0;
  TestRandom random(input[0]);
  const std::string bytes(reinterpret_cast<const char*>(input) + 1, size - 1);
  MAudioBuffer buffer;
  // A frame of 24 bytes has 576 samples of two channels.
  if (!CheckLoad(LoadMPEG, buffer, bytes, 4 * 576 * 2 / 24).empty()) return 0;
  MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
  binfileMStream file(stream);
  const std::unique_ptr<mpegsplitstream> split = OpenMPEG(file);
  ampegdecoder decoder(split ? static_cast<binfile&>(*split) : file);
  GoToAndFro(decoder, random);
  return 0;
}
