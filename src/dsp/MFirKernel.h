#pragma once
#include "core/MTypes.h"

// The inner loop of MFirFilter: out[i] = gain sum over k of taps[k] samples[length - 1 + i - k], limited to
// the range of float. Up to kPadding samples behind the last one are read, and their values do not matter, as
// long as they are finite. Each sum is formed in one order, whatever the count.
struct MFirKernel {
  static constexpr int32_t kPadding = 64;
  void (*run)(const float* taps, int32_t length, float gain, const float* samples, float* out,
              int32_t count) noexcept;
};

extern const MFirKernel kFirBaseline;
extern const MFirKernel kFirWide;  // AVX2 and FMA; of nulls where it was not compiled
