#include "dsp/MBiquadFilter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "core/MException.h"
#include "core/MTranslate.h"

namespace {

struct RawCoefficients {
  double b0, b1, b2, a0, a1, a2;
};

RawCoefficients DesignRaw(int32_t type, double gainDecibels, double w, double q) {
  const double A = std::pow(10.0, gainDecibels * 0.5 * 0.05);
  const double sn = std::sin(w), cs = std::cos(w);
  const double alpha = sn / (2 * q);
  const double slope = 2 * std::sqrt(A) * alpha;
  const double up = A + 1, down = A - 1;
  switch (type) {
    case MBiquadType::kPeak:
      return {1 + alpha * A, -2 * cs, 1 - alpha * A, 1 + alpha / A, -2 * cs, 1 - alpha / A};
    case MBiquadType::kLowShelf:
      return {A * (up - down * cs + slope), 2 * A * (down - up * cs), A * (up - down * cs - slope),
              up + down * cs + slope,       -2 * (down + up * cs),    up + down * cs - slope};
    case MBiquadType::kHighShelf:
      return {A * (up + down * cs + slope), -2 * A * (down + up * cs), A * (up + down * cs - slope),
              up - down * cs + slope,       2 * (down - up * cs),      up - down * cs - slope};
    case MBiquadType::kLowPass:
      return {(1 - cs) / 2, 1 - cs, (1 - cs) / 2, 1 + alpha, -2 * cs, 1 - alpha};
    case MBiquadType::kHighPass:
      return {(1 + cs) / 2, -(1 + cs), (1 + cs) / 2, 1 + alpha, -2 * cs, 1 - alpha};
    case MBiquadType::kBandPass:
      return {alpha, 0, -alpha, 1 + alpha, -2 * cs, 1 - alpha};
    case MBiquadType::kNotch:
      return {1, -2 * cs, 1, 1 + alpha, -2 * cs, 1 - alpha};
    default:
      throw MException(Translate("Invalid filter type."));
  }
}

}  // namespace

template <typename Real>
void MBiquadFilterOf<Real>::Set(int32_t newType, double newGainDecibels, double newFrequencyHz,
                                double newSampleRate, double newQ) {
  type = newType;
  gainDecibels = static_cast<Real>(newGainDecibels);
  frequencyHz = static_cast<Real>(newFrequencyHz);
  sampleRate = static_cast<Real>(newSampleRate);
  q = static_cast<Real>(newQ);
  const double w = 2 * std::numbers::pi * frequencyHz / sampleRate;
  const RawCoefficients raw = DesignRaw(type, gainDecibels, w, q);
  const double g = 1 / raw.a0;
  const auto finish = [](double value) { return static_cast<Real>(value + kFilterBias); };
  const Real finished[] = {finish(raw.b0 * g), finish(raw.b2 * g), finish(-(raw.a2 * g)), finish(raw.b1 * g),
                           finish(-(raw.a1 * g))};
  if (!std::all_of(std::begin(finished), std::end(finished), [](Real value) { return std::isfinite(value); }))
    return;
  b0 = finished[0];
  b2 = finished[1];
  a2 = finished[2];
  b1 = finished[3];
  a1 = finished[4];
}

template <typename Real>
void MBiquadFilterOf<Real>::Run(State& state, const float* in, float* out, int32_t samples) const noexcept {
  State s = state;
  for (int32_t i = 0; i < samples; ++i) {
    const Real x = MCleanSample(in[i]);
    Real y = s.x2 * b2 + s.x1 * b1 + (s.y2 * a2 + s.y1 * a1) + x * b0;
    if constexpr (sizeof(Real) == sizeof(float)) y = MLimitToFloat(y);
    s = {s.x1, s.y1, x, y};
    out[i] = MLimitToFloat(y);
  }
  state = MIsFinite(s.y1, s.y2) ? s : State();
}

template struct MBiquadFilterOf<double>;
template struct MBiquadFilterOf<float>;
