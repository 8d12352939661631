#include "dsp/MResonantFilter.h"

#include <numbers>

namespace {

// The damping at a resonance of 0 and of 1, between which it is linear.
constexpr double kSharpestLowPass = double{0.1f};
constexpr double kSharpestHighPass = double{0.02f};
constexpr double kSoftest = double{1.4f};

double GetDamping(double sharpest, double resonance) {
  return (kSoftest - sharpest) * resonance + sharpest;
}

}  // namespace

void MResonantFilter::Run(State& state, const float* in, float* out, int32_t samples) const noexcept {
  const MResonantFilter section = *this;
  State s = state;
  for (int32_t i = 0; i < samples; ++i) out[i] = MLimitToFloat(section.Step(s, MCleanSample(in[i])));
  state = MIsFinite(s.y1, s.y2) ? s : State();
}

// c is 1/tan(pi f/rate) for the low-pass and tan(pi f/rate) for the high-pass; `middle` is the sign of the
// numerator's middle coefficient and of the poles' sum.
void MResonantFilter::Design(double newFrequencyHz, double newResonance, double newSampleRate, double c,
                             double d, double middle) noexcept {
  frequencyHz = newFrequencyHz;
  resonance = newResonance;
  sampleRate = newSampleRate;
  const double g = 1 / ((c + d) * c + 1);
  const double outer = g + kFilterBias;
  const double inner = kFilterBias + middle * 2 * g;
  const double first = kFilterBias - middle * 2 * (1 - c * c) * g;
  const double second = kFilterBias - (c * c + 1 - c * d) * g;
  if (!std::isfinite(outer) || !std::isfinite(first) || !std::isfinite(second)) return;
  c0 = c2 = outer;
  c1 = inner;
  d1 = first;
  d2 = second;
}

void MResonantLowPass::Set(double newFrequencyHz, double newResonance, double newSampleRate) noexcept {
  const double t = std::tan(std::numbers::pi * newFrequencyHz / newSampleRate);
  Design(newFrequencyHz, newResonance, newSampleRate, 1 / t, GetDamping(kSharpestLowPass, newResonance), 1);
}

void MResonantHighPass::Set(double newFrequencyHz, double newResonance, double newSampleRate) noexcept {
  const double t = std::tan(std::numbers::pi * newFrequencyHz / newSampleRate);
  Design(newFrequencyHz, newResonance, newSampleRate, t, GetDamping(kSharpestHighPass, newResonance), -1);
}
