#pragma once
// The resonant pair as it is written down, in doubles.

#include <algorithm>
#include <cmath>
#include <cstdint>

struct ResonantModel {
  double c0 = 0, c1 = 0, c2 = 0, d1 = 0, d2 = 0;

  static constexpr double kBias = 1.0000000195414814e-25;

  static double Tangent(double log10Hz, int32_t sampleRate) {
    double frequency = std::pow(10.0, log10Hz);
    if (frequency >= 0.5 * sampleRate) frequency = 0.4999 * sampleRate;
    return std::tan(3.14159265358979323846 * frequency / sampleRate);
  }

  void SetLowPass(double log10Hz, double resonance, int32_t sampleRate) {
    const double d = 1.299999974668026 * resonance + 0.10000000149011612;
    const double c = 1 / Tangent(log10Hz, sampleRate);
    const double g = 1 / ((c + d) * c + 1);
    c0 = g + kBias;
    c1 = 2 * g + kBias;
    c2 = g + kBias;
    d1 = kBias - 2 * (1 - c * c) * g;
    d2 = kBias - (c * c + 1 - c * d) * g;
  }

  void SetHighPass(double log10Hz, double resonance, int32_t sampleRate) {
    const double d = 1.379999976605177 * resonance + 0.019999999552965164;
    const double c = Tangent(log10Hz, sampleRate);
    const double g = 1 / ((c + d) * c + 1);
    c0 = g + kBias;
    c1 = kBias - 2 * g;
    c2 = g + kBias;
    d1 = kBias - 2 * (c * c - 1) * g;
    d2 = kBias - (c * c + 1 - c * d) * g;
  }
};

struct ResonantModelState {
  double x1 = 0, x2 = 0, y1 = 0, y2 = 0;

  double Run(const ResonantModel& f, double sample) {
    const double x = sample + ResonantModel::kBias;
    const double y = f.c0 * x + f.c1 * x1 + f.c2 * x2 + f.d1 * y1 + f.d2 * y2 + ResonantModel::kBias;
    x2 = x1;
    x1 = x;
    y2 = y1;
    y1 = y;
    return y;
  }
};
