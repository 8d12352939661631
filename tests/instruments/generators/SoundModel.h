#pragma once
// What the generator objects make, written down plainly in doubles: one sample after the other, a channel at
// a time, nothing shared with what is tested but the reading of a drawn curve.

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "dsp/MEnvelopeComputer.h"
#include "tests/effects/WaveModel.h"

using Signal = std::vector<double>;

namespace SoundModel {

// The truncated length in samples.
inline int32_t SamplesOf(double seconds, int32_t rate) {
  return static_cast<int32_t>(std::clamp(std::trunc(rate * seconds), 0.0, 2147483647.0));
}

struct Oscillator {
  WaveModel wave;
  double lengthSeconds = 0.1;
  double phase = 0;
  MEnvelopeData frequency;

  // `count` samples from the start of a sound on.
  Signal Make(double gain, double ratio, int32_t rate, int32_t count) const {
    const int32_t length = SamplesOf(lengthSeconds, rate);
    MEnvelopeData spread = frequency;
    spread.ScaleX(length, true);
    MEnvelopeComputer curve;
    if (length > 0) curve.Build(spread);
    const double baseStep = ratio / rate;
    const bool isFlat = frequency.GetCount() == 2 && std::abs(frequency[0].y - frequency[1].y) < 1e-50;
    const double flatStep = isFlat ? std::pow(10.0, std::clamp(frequency[0].y, -6.0, 6.0)) * baseStep : 0;
    Signal signal(static_cast<std::size_t>(count));
    long double at = phase;  // sums in double would drift, by 4e-8 in a minute
    for (int32_t i = 0; i < std::min(length, count); ++i) {
      signal[static_cast<std::size_t>(i)] =
          wave.Read(static_cast<double>(at - std::floor(at))) * static_cast<float>(gain);
      at += isFlat ? flatStep : std::pow(10.0, std::clamp(curve.GetValue(i), -6.0, 6.0)) * baseStep;
    }
    return signal;
  }
};

inline void ApplyEnvelope(Signal& signal, const MEnvelopeData& gains, int32_t length) {
  MEnvelopeComputer curve;
  curve.Build(gains);
  const double step = 1.0 / std::max(length, 1);
  for (std::size_t i = 0; i < signal.size(); ++i) signal[i] *= curve.GetValue(static_cast<double>(i) * step);
}

// The coefficients and the loop of the two filters, with the floats of their constants.
struct Section {
  double b0, b1, b2, a1, a2;

  void Run(Signal& signal) const {
    const double d = 1e-25f;
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
    for (double& sample : signal) {
      const double x = sample + d;
      const double y = b0 * x + b1 * x1 + b2 * x2 + a1 * y1 + a2 * y2 + d;
      x2 = x1;
      x1 = x;
      y2 = y1;
      y1 = y;
      sample = y;
    }
  }
};

inline double UsedCutOff(double cutOff, double ratio, int32_t rate) {
  const double limited = std::clamp(cutOff * ratio, 20.0, 20000.0);
  return limited < 0.5 * rate ? limited : 0.4999 * rate;
}

inline Section LowPass(double cutOff, double ratio, int32_t rate) {
  const double q = 1 - 0.5, d = 1e-25f;
  const double r = double{1.3f} * q + double{0.1f};
  const double c = 1 / std::tan(std::numbers::pi * UsedCutOff(cutOff, ratio, rate) / rate);
  const double g = 1 / ((c + r) * c + 1);
  return {g + d, 2 * g + d, g + d, d - 2 * (1 - c * c) * g, d - (1 - r * c + c * c) * g};
}

inline Section HighPass(double cutOff, double ratio, int32_t rate) {
  const double q = 1 - 0.5, d = 1e-25f;
  const double r = double{1.38f} * q + double{0.02f};
  const double c = std::tan(std::numbers::pi * UsedCutOff(cutOff, ratio, rate) / rate);
  const double g = 1 / ((c + r) * c + 1);
  return {g + d, d - 2 * g, g + d, d - 2 * (c * c - 1) * g, d - (1 - r * c + c * c) * g};
}

// The largest difference of a channel and a model.
inline double GetDistance(const float* samples, const Signal& model) {
  double distance = 0;
  for (std::size_t i = 0; i < model.size(); ++i) {
    const double difference = std::abs(samples[i] - model[i]);
    distance = std::isnan(difference) ? INFINITY : std::max(distance, difference);
  }
  return distance;
}

}  // namespace SoundModel
