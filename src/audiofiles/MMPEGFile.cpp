#include "audiofiles/MMPEGFile.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <memory>
#include <utility>

#include "audiofiles/MPEGOpening.h"
#include "audiofiles/MSampleContents.h"
#include "audiofiles/MSampleConversion.h"
#include "audiofiles/ampegdecoder.h"

namespace {

using mp3dec::ampegdecoder;

// Makes the buffer longer by a frame, by doubling where nobody knows how many will come.
void AddFrame(MAudioBuffer& buffer, int32_t samples) {
  constexpr int64_t kLongest = std::numeric_limits<int32_t>::max() - 1;
  const int64_t length = int64_t{buffer.GetLength()} + samples;
  if (length > kLongest) MThrowOutOfMemory();
  if (length > buffer.GetCapacity())
    buffer.Reserve(
        static_cast<int32_t>(std::min(std::max(2 * int64_t{buffer.GetCapacity()}, length), kLongest)));
  buffer.Resize(static_cast<int32_t>(length), false);
}

void MakeRoom(MAudioBuffer& buffer, const ampegdecoder& decoder) {
  const int64_t samples = std::max<int64_t>(decoder.GetFrameCount(), 0) * decoder.GetHeader().samples;
  if (samples > std::numeric_limits<int32_t>::max() - 1) MThrowOutOfMemory();
  buffer.SetSize(decoder.GetHeader().channels, 0, static_cast<int32_t>(samples));
}

// The samples are in this machine's byte order, files in little-endian.
void ToLittleEndian(uint8_t* pcm, int32_t bytes) {
  if constexpr (std::endian::native == std::endian::little) return;
  for (int32_t i = 0; i + 1 < bytes; i += 2) std::swap(pcm[i], pcm[i + 1]);
}

}  // namespace

void LoadMPEG(MAudioBuffer& buffer, MStream& stream) {
  buffer.SetSize(0, 0);
  mp3dec::binfileMStream file(stream);
  const std::unique_ptr<mp3dec::mpegsplitstream> split = mp3dec::OpenMPEG(file);
  mp3dec::binfile& source = split ? static_cast<mp3dec::binfile&>(*split) : file;
  const int64_t start = source.Ioctl(mp3dec::kGetPosition);
  ampegdecoder decoder(source);
  buffer.sampleRate = decoder.GetHeader().sampleRate;
  buffer.bitDepth = 16;
  MakeRoom(buffer, decoder);

  const MSampleFormat format{decoder.GetHeader().channels, 16, false};
  const int32_t samples = decoder.GetHeader().samples;
  uint8_t pcm[mp3dec::MPEGHeader::kMostSamples * 2 * 2];
  while (decoder.RawRead(pcm, decoder.GetFrameBytes()) == decoder.GetFrameBytes()) {
    ToLittleEndian(pcm, decoder.GetFrameBytes());
    AddFrame(buffer, samples);
    MConvertSamples(buffer, buffer.GetLength() - samples, format, pcm, samples);
  }
  if (decoder.GetFrameNumber() == 0) MThrowInvalidContents("Error decompressing MPEG stream.", start);
}
