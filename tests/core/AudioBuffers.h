#pragma once
// Audio buffers with known samples.

#include <gtest/gtest.h>

#include "core/MAudioBuffer.h"

// Gives the buffer the format; channel c holds 100 c + 1, 100 c + 2, ...
inline void FillByNumber(MAudioBuffer& buffer, int32_t channels, int32_t length) {
  buffer.SetSize(channels, length);
  for (int32_t c = 0; c < channels; ++c)
    for (int32_t i = 0; i < length; ++i) buffer.GetChannel(c)[i] = static_cast<float>(100 * c + i + 1);
}

inline void ExpectGuards(const MAudioBuffer& buffer) {
  for (int32_t c = 0; c < buffer.GetChannelCount(); ++c) {
    EXPECT_EQ(buffer.GetChannel(c)[-1], 0) << "in front of channel " << c;
    EXPECT_EQ(buffer.GetChannel(c)[buffer.GetLength()], 0) << "behind channel " << c;
  }
}
