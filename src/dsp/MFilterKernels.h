#pragma once
#include "core/MTypes.h"

// The inner loops of the cascades (MFilterCascade.h), which is their only user beside tests and benchmarks.
//
// One second-order section of either family over two channels side by side, coefficients as they are added:
//   y = b0 x + b1 x1 + b2 x2 + a1 y1 + a2 y2.
struct MSectionLanes {
  double b0, b1, b2, a1, a2;
  double x1[2], x2[2], y1[2], y2[2];
};

// One way of running sections in series over two channels. The sums of the plain one are formed in the order
// of MBiquadFilter::Run and MResonantFilter::Run, so that its samples are theirs to the bit; the fused one
// rounds less often inside a sum. Either gives the same samples for any split into blocks. `in` and `out` may
// be the same, also both channels of them. Counts of samples and sections are 1 and more.
struct MFilterKernels {
  static constexpr int32_t kMaximumSections = 6;   // of biquads
  static constexpr int32_t kResonantSections = 2;  // of resonant ones

  void (*biquads)(MSectionLanes* sections, int32_t count, const float* const* in, float* const* out,
                  int32_t samples) noexcept;
  void (*resonant)(MSectionLanes* sections, int32_t count, const float* const* in, float* const* out,
                   int32_t samples) noexcept;
  // Two resonant sections with nothing rounded, between them or behind.
  void (*resonantPair)(MSectionLanes* sections, const float* const* in, double* const* out,
                       int32_t samples) noexcept;
};

extern const MFilterKernels kPlainFilterKernels;
// For processors with AVX2 and FMA; the plain ones elsewhere.
extern const MFilterKernels kFusedFilterKernels;

bool MHasFusedFilterKernels() noexcept;
inline const MFilterKernels& MGetFilterKernels() noexcept {
  return MHasFusedFilterKernels() ? kFusedFilterKernels : kPlainFilterKernels;
}
