#pragma once
#include "core/MTypes.h"
#include "dsp/MFilter.h"

// Second-order sections of seven types, designed by the formulas of Robert Bristow-Johnson's "Audio EQ
// Cookbook":
//   y = b0 x + b1 x1 + b2 x2 + a1 y1 + a2 y2,
// with a1 and a2 stored negated, as they are added, and kFilterBias in each of the five. Frequencies are in
// hertz, gains in decibels (used by peak and shelves). Nothing is limited: a frequency is to lie below half
// the sample rate (MLimitFilterFrequency) and a quality above 0, or the section is unstable.
//
// Samples are float and the output is rounded once. A sample that is not finite counts as 0, and an output
// beyond the range of float is limited to it, so one bad sample harms nothing that follows. The state is the
// owner's; a new design leaves it as it is. Nothing here allocates, except an exception.

struct MBiquadType {
  enum : int32_t { kPeak, kLowShelf, kHighShelf, kLowPass, kHighPass, kBandPass, kNotch, kCount };
};
// By which states and menus call the types.
inline constexpr const char* kBiquadTypeNames[MBiquadType::kCount] = {
    "Peak", "LowShelf", "HighShelf", "LowPass", "HighPass", "BandPass", "Notch"};

// What a section remembers between samples, for each channel.
template <typename Real>
struct MBiquadStateOf {
  Real x2 = 0, y2 = 0, x1 = 0, y1 = 0;

  void Reset() noexcept { *this = {}; }
};
using MBiquadState = MBiquadStateOf<double>;
using MBiquadStateFloat = MBiquadStateOf<float>;

template <typename Real>
struct MBiquadFilterOf {
  using State = MBiquadStateOf<Real>;

  int32_t type = MBiquadType::kPeak;
  Real gainDecibels = 0;
  Real frequencyHz = 0;
  Real sampleRate = 0;
  Real q = 0;
  Real b0 = 1, b2 = 0, a2 = 0, b1 = 0, a1 = 0;  // before the first design: the input passes

  // Stores the parameters and designs from what is stored, in double. Another type raises "Invalid filter
  // type."; then, and where the design is not finite, the coefficients stay as they were. [any]
  void Set(int32_t newType, double newGainDecibels, double newFrequencyHz, double newSampleRate, double newQ);

  // Filters a block; `in` and `out` may be the same. Sums are formed as x2 b2 + x1 b1 + (y2 a2 + y1 a1) + x
  // b0 in the type of the coefficients. MBiquadCascade runs several sections and channels at once. [audio]
  void Run(State& state, const float* in, float* out, int32_t samples) const noexcept;

  // The linear magnitude of the response at a frequency, for a section that was designed. [any]
  double GetMagnitude(double atHz) const {
    return MGetSectionMagnitude(b0, b1, b2, a1, a2, atHz, sampleRate);
  }
};
using MBiquadFilter = MBiquadFilterOf<double>;
// The same in single precision, for detectors: parameters, coefficients, sums and state are floats. Good from
// some hundred hertz upwards.
using MBiquadFilterFloat = MBiquadFilterOf<float>;

extern template struct MBiquadFilterOf<double>;
extern template struct MBiquadFilterOf<float>;
