#pragma once
#include "core/MAudioBuffer.h"

// How samples lie in a file: interleaved and little-endian.
struct MSampleFormat {
  int32_t channels = 0;  // 1..8
  int32_t bits = 0;      // 8, 16, 24, 32
  bool isFloat = false;  // says something with 32 bits only

  int32_t GetFrameBytes() const noexcept { return bits / 8 * channels; }
};

// Converts `frames` frames into samples `start` and following of a buffer with as many channels, which has
// them.
//   8 bits, unsigned   (b - 127) / 127
//   16 bits            s / 32767
//   24 bits            s / 8388607
//   32 bits, integer   s / 2147483520
//   32 bits, float     as they are, bit for bit
// Factors are the floats nearest to these quotients, for 32 bits the double; products are rounded once.
void MConvertSamples(MAudioBuffer& buffer, int32_t start, const MSampleFormat& format, const uint8_t* bytes,
                     int32_t frames);
