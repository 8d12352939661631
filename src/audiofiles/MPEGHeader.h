#pragma once
#include <cstdint>

namespace mp3dec {

// The head of a frame of MPEG audio, ISO/IEC 11172-3 and 13818-3, and of the extension to lower rates that is
// called MPEG-2.5.
struct MPEGHeader {
  static constexpr int32_t kBytes = 4;
  static constexpr int32_t kMostFrameBytes = 1729;  // layer II, 384 kbit/s at 32 kHz
  static constexpr int32_t kMostSamples = 1152;

  int32_t version;     // 0: MPEG-1, 1: MPEG-2, 2: MPEG-2.5; the rate is halved as often
  int32_t layer;       // 1..3
  int32_t sampleRate;  // in hertz
  int32_t bitRate;     // in bits per second
  int32_t channels;    // 1 or 2
  int32_t frameBytes;  // with the head
  int32_t samples;     // of a channel, in a frame

  // False for what no frame begins with, for reserved values, MPEG-2.5 but with layer III, and the free
  // format, whose frames do not tell their size.
  static bool Parse(const uint8_t (&bytes)[kBytes], MPEGHeader& header) noexcept;
  // Its frame may lie in one file with those of `other`: all of them give as many samples of the same rate.
  bool Fits(const MPEGHeader& other) const noexcept;
};

}  // namespace mp3dec
