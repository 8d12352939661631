#pragma once
// Reading a recording at any speed, for the instruments. What lies outside of it reads as 0. There is no
// low-pass at speeds above 1. All of it is [audio].

#include <cstdint>

namespace MSampleReading {

// out[i] = samples[start + i], i below the count.
void Copy(float* out, const float* samples, int32_t length, int64_t start, int32_t count) noexcept;

// out[i] = the recording at start + i speed: MCubic of the four samples around it. 0 where the place is below
// 0 or at or behind the length. The speed is above 0.
void Resample(float* out, const float* samples, int32_t length, double start, double speed,
              int32_t count) noexcept;

}  // namespace MSampleReading
