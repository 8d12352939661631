#pragma once
// What all second-order sections share.

#include <cmath>
#include <limits>

// In every coefficient, so that a recursion that is fed zeros settles at a constant instead of in denormal
// numbers.
inline constexpr double kFilterBias = double{1e-25f};

// The frequency that a filter may be designed for: sections are unstable from half the sample rate on, where
// their users take 0.4999 of the rate instead. Designs themselves limit nothing.
constexpr double MLimitFilterFrequency(double frequencyHz, double sampleRate) noexcept {
  return frequencyHz < 0.5 * sampleRate ? frequencyHz : 0.4999 * sampleRate;
}

// The magnitude at a frequency of the section y = b0 x + b1 x1 + b2 x2 + a1 y1 + a2 y2 (a1 and a2 are added),
// linear. Raises "Complex division by zero." where the section has a pole on the unit circle.
double MGetSectionMagnitude(double b0, double b1, double b2, double a1, double a2, double frequencyHz,
                            double sampleRate);

// A sample as sections take it: what is not finite is 0.
inline float MCleanSample(float sample) noexcept {
  return std::abs(sample) <= std::numeric_limits<float>::max() ? sample : 0.0f;
}

// A value as a sample: rounded, and limited to the range of float.
template <typename Real>
inline float MLimitToFloat(Real value) noexcept {
  constexpr Real kLimit = std::numeric_limits<float>::max();
  const Real raised = value > -kLimit ? value : -kLimit;
  return static_cast<float>(raised < kLimit ? raised : kLimit);
}

// Whether a state may go into the next block. An unstable section's state is reset instead, so that a better
// design finds a working section.
template <typename Real>
inline bool MIsFinite(Real y1, Real y2) noexcept {
  return std::isfinite(y1) && std::isfinite(y2);
}
