#pragma once
#include <cstdint>

// Reading a recording at any speed, for the instruments: the places are worked out once and serve all
// channels and tracks. There is no low-pass at speeds above 1. All of it is [audio].
class MSampleReading {
 public:
  static constexpr int32_t kMost = 256;  // places

  // The places start + i speed, i below `count`, which is at most kMost. The speed is above 0.
  MSampleReading(double start, double speed, int32_t count) noexcept;

  // out[i] = the recording at place i: MCubic of the four samples around it, what lies outside counts as 0;
  // the sample itself where the speed is 1 and the start is whole. 0 where the place is below 0 or at or
  // behind the length.
  void Read(float* out, const float* samples, int32_t length) const noexcept;

 private:
  void Copy(float* out, const float* samples, int32_t length) const noexcept;

  const bool isCopy_;
  const int32_t count_;
  const double start_;
  int32_t whole_[kMost];  // the places toward zero; out of the range of the type at its ends
  float behind_[kMost];   // how far the places are behind those
};
