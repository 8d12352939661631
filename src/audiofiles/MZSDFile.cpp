#include "audiofiles/MZSDFile.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "audiofiles/MSampleContents.h"

namespace {

constexpr int32_t kHeadBytes = 60;
constexpr int32_t kRateAt = 36;
constexpr int32_t kChannelsAt = 40;
constexpr int32_t kLengthAt = 44;
constexpr int32_t kPeakAt = 48;
constexpr int32_t kPieceSamples = 4096;

int32_t GetNumber(const uint8_t* bytes) {
  return static_cast<int32_t>(MGetLittle32(bytes));
}

// The place of the first thing that is wrong in a head, -1 if nothing is.
int32_t FindFault(const uint8_t* head) {
  if (std::memcmp(head, "ZSD1", 4) != 0) return 0;
  const int32_t channels = GetNumber(head + kChannelsAt);
  if (channels < 1 || channels > MAudioBuffer::kMaximumChannels) return kChannelsAt;
  if (GetNumber(head + kLengthAt) < 1) return kLengthAt;
  if (GetNumber(head + kRateAt) < 1) return kRateAt;
  return -1;
}

// Returns the bytes read: all of the channel, or fewer.
int64_t ReadChannel(MStream& stream, float* samples, int32_t length, double peak) {
  uint8_t piece[4 * kPieceSamples];
  for (int32_t done = 0; done < length;) {
    const int32_t count = std::min(kPieceSamples, length - done);
    const int32_t read = MReadFully(stream, piece, 4 * count);
    for (int32_t i = 0; i < read / 4; ++i)
      samples[done + i] = static_cast<float>(GetNumber(piece + 4 * i) * peak * 4.656612875245797e-10);
    if (read < 4 * count) return 4 * int64_t{done} + read;
    done += count;
  }
  return 4 * int64_t{length};
}

}  // namespace

void LoadZSD(MAudioBuffer& buffer, MStream& stream) {
  buffer.SetSize(0, 0);
  uint8_t head[kHeadBytes];
  if (MReadFully(stream, head, sizeof head) < kHeadBytes) MThrowInvalidContents("No ZSD header found.", 0);
  const int32_t fault = FindFault(head);
  if (fault >= 0) MThrowInvalidContents("Invalid ZSD header.", fault);
  buffer.peakFactor = std::bit_cast<float>(MGetLittle32(head + kPeakAt));
  buffer.sampleRate = GetNumber(head + kRateAt);
  buffer.bitDepth = 32;

  const int32_t channels = GetNumber(head + kChannelsAt);
  const int32_t length = GetNumber(head + kLengthAt);
  MMemoryStream copy;
  MStream* const source = MRequireBytes(stream, 4 * int64_t{channels} * length, copy);
  if (!source) MThrowInvalidContents("Could not load samples.", kHeadBytes);
  buffer.SetSize(channels, length);
  for (int32_t c = 0; c < channels; ++c) {
    const int64_t read = ReadChannel(*source, buffer.GetChannel(c), length, buffer.peakFactor);
    if (read < 4 * int64_t{length})
      MThrowInvalidContents("Could not load samples.", kHeadBytes + 4 * int64_t{length} * c + read);
  }
}
