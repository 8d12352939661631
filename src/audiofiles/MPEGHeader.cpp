#include "audiofiles/MPEGHeader.h"

namespace mp3dec {

namespace {

constexpr int32_t kRates[] = {44100, 48000, 32000};

// In kbit/s; 0 is the free format. Rows: MPEG-1 layers I, II, III, then layer I and the other two of the
// lower rates.
constexpr int32_t kBitRates[5][15] = {
    {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
    {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
    {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},
};

int32_t GetFrameBytes(const MPEGHeader& header, int32_t padding) {
  if (header.layer == 1) return (12 * header.bitRate / header.sampleRate + padding) * 4;
  const int32_t factor = header.layer == 3 && header.version > 0 ? 72 : 144;
  return factor * header.bitRate / header.sampleRate + padding;
}

}  // namespace

bool MPEGHeader::Parse(const uint8_t (&bytes)[kBytes], MPEGHeader& header) noexcept {
  if (bytes[0] != 0xFF || bytes[1] < 0xE0) return false;
  constexpr int32_t kVersions[] = {2, -1, 1, 0};
  const int32_t version = kVersions[bytes[1] >> 3 & 3];
  const int32_t layer = 4 - (bytes[1] >> 1 & 3);
  const int32_t bitRateIndex = bytes[2] >> 4;
  const int32_t rateIndex = bytes[2] >> 2 & 3;
  if (version < 0 || layer == 4 || bitRateIndex == 0 || bitRateIndex == 15 || rateIndex == 3) return false;
  if (version == 2 && layer != 3) return false;
  const int32_t row = version == 0 ? layer - 1 : layer == 1 ? 3 : 4;
  header.version = version;
  header.layer = layer;
  header.sampleRate = kRates[rateIndex] >> version;
  header.bitRate = kBitRates[row][bitRateIndex] * 1000;
  header.channels = bytes[3] >> 6 == 3 ? 1 : 2;
  header.frameBytes = GetFrameBytes(header, bytes[2] >> 1 & 1);
  header.samples = layer == 1 ? 384 : layer == 3 && version > 0 ? 576 : 1152;
  return true;
}

bool MPEGHeader::Fits(const MPEGHeader& other) const noexcept {
  return version == other.version && layer == other.layer && sampleRate == other.sampleRate &&
         channels == other.channels;
}

}  // namespace mp3dec
