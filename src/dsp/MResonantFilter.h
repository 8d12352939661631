#pragma once
#include "core/MTypes.h"
#include "dsp/MFilter.h"

// Second-order low-pass and high-pass with a resonance, by the bilinear transform of 1/(s^2 + d s + 1) and
// s^2/(s^2 + d s + 1) at the corner, where the damping d grows with the parameter `resonance`:
//   low-pass d = 1.3 r + 0.1, high-pass d = 1.38 r + 0.02,
// so that resonance 0 is the sharpest setting and 1 the softest. A section runs, with e = kFilterBias,
//   x' = x + e,  y = c0 x' + c1 x1 + c2 x2 + d1 y1 + d2 y2 + e.
// Coefficients and state are double, samples float, the output is rounded once. Bad samples and states are
// treated as MBiquadFilter.h says. The frequency is to lie below half the sample rate
// (MLimitFilterFrequency).

// What a section remembers between samples, for each channel.
struct MResonantState {
  double x1 = 0, x2 = 0, y1 = 0, y2 = 0;

  void Reset() noexcept { *this = {}; }
};

// A designed section of either kind; both run alike. Before the first design the input passes.
struct MResonantFilter {
  using State = MResonantState;

  double frequencyHz = 0;
  double resonance = 0;  // 0 to 1
  double sampleRate = 0;
  double c0 = 1, c1 = 0, c2 = 0, d1 = 0, d2 = 0;

  // One sample in double.
  double Step(State& state, double x) const noexcept {
    const double biased = x + kFilterBias;
    const double y =
        c0 * biased + c1 * state.x1 + c2 * state.x2 + d1 * state.y1 + d2 * state.y2 + kFilterBias;
    state = {biased, state.x1, y, state.y1};
    return y;
  }

  // Filters a block; `in` and `out` may be the same. MResonantCascade runs several sections and channels at
  // once. [audio]
  void Run(State& state, const float* in, float* out, int32_t samples) const noexcept;

  // The linear magnitude of the response at a frequency, for a section that was designed. [any]
  double GetMagnitude(double atHz) const {
    return MGetSectionMagnitude(c0, c1, c2, d1, d2, atHz, sampleRate);
  }

 protected:
  void Design(double newFrequencyHz, double newResonance, double newSampleRate, double c, double d,
              double middle) noexcept;
};

struct MResonantLowPass : MResonantFilter {
  // Stores the parameters and designs. Coefficients that would not be finite stay as they were. [any]
  void Set(double newFrequencyHz, double newResonance, double newSampleRate) noexcept;
};

struct MResonantHighPass : MResonantFilter {
  // Stores the parameters and designs. Coefficients that would not be finite stay as they were. [any]
  void Set(double newFrequencyHz, double newResonance, double newSampleRate) noexcept;
};
