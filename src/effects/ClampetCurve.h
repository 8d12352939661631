#pragma once
#include "core/MTypes.h"

// Clampet's static curve: with x the input times the gain, a = |x|, T the threshold and f the knee,
//   y = a N            below T,
//   y = (f(a - T) + T) N  from T to 1,  N = 1 / (f(1 - T) + T),
//   y = 1              from 1 on,
// with the sign of x; then even harmonics e above 1e-5 make it min(1, (y - x)^2 e + y). T is linear, 0 to 1.
struct ClampetCurve {
  enum Mode { kSoft1, kSoft2, kSoft3, kSoft4, kClip1, kClip2, kClip3, kModeCount };

  ClampetCurve() noexcept = default;
  ClampetCurve(int32_t curveMode, double curveThreshold, double curveGain, double evenHarmonics) noexcept;

  // The knee; x is the excess above T.
  double GetKnee(double x) const noexcept;
  // The whole curve at an input before the gain.
  double GetOutput(double input) const noexcept;

  int32_t mode = kSoft1;
  double threshold = 1;  // T
  double gain = 1;       // of the input, linear
  double range = 0;      // 1 - T
  double scale = 1;      // k, of what goes into the knee
  double inverseScale = 1;
  double height = 0;      // A, of what comes out of it; 1 in Soft 4
  double outputGain = 1;  // N
  double harmonics = 0;   // e
  bool hasHarmonics = false;
  bool isReady = false;  // a default curve limits nothing
};

// Blocks of one channel through a curve; `in` and `out` may be the same. Knees that have no plain formula are
// approximated, relative error below 1e-10; every sample is the same for any split into blocks.
struct ClampetKernel {
  using Run = void(const ClampetCurve& curve, const float* in, float* out, int32_t samples) noexcept;
  Run* modes[ClampetCurve::kModeCount];
};

extern const ClampetKernel kClampetBaseline;
extern const ClampetKernel kClampetWide;  // AVX2 and FMA; of nulls where it was not compiled
