#pragma once
// The wave of a low-frequency oscillator by its formulas, sample by sample: the sixteen shapes, the way
// between two of them, the drawn curve mixed in, and the reading between two samples of the table.

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "dsp/MEnvelopeComputer.h"

class WaveModel {
 public:
  double shape = 5;
  double customDepth = 0;
  MEnvelopeData curve;  // counts with a custom depth above 0

  void Build() {
    const double limited = std::isfinite(shape) ? std::clamp(shape, 0.0, 15.0) : 5;
    const int32_t whole = static_cast<int32_t>(limited);
    const double part = limited - whole;
    MEnvelopeComputer drawn;
    if (customDepth >= 0.00001) drawn.Build(curve);
    double peak = 0.1;
    for (int32_t i = 0; i < kLength; ++i) {
      double value = Shape(whole, i);
      if (part > 0) value = (1 - part) * value + part * Shape(whole + 1, i);
      const double y = customDepth >= 0.00001 ? drawn.GetValue(static_cast<double>(i) / kLength) : 0;
      if (customDepth >= 0.99999)
        value = y;
      else if (customDepth >= 0.00001)
        value = (1 - customDepth) * value + customDepth * y;
      At(i) = static_cast<float>(value);
      peak = std::max(peak, std::abs(At(i)));
    }
    for (double& value : table_) value = static_cast<float>(value * (1 / peak));
    At(kLength) = At(0);
  }

  double Read(double phase) const {
    const double x = (phase - std::floor(phase)) * kLength, whole = std::floor(x), t = x - whole;
    const auto index = static_cast<std::size_t>(whole) % kLength;
    return t * table_[index + 1] + (1 - t) * table_[index];
  }

 private:
  static constexpr int32_t kLength = 8192;

  double& At(int32_t i) { return table_[static_cast<std::size_t>(i)]; }

  // Tables hold floats.
  static double Shape(int32_t shape, int32_t i) {
    if (shape == 14) return Noise(i);
    if (shape == 15) return Mess(i);
    const bool isQuarters = shape <= 5 || (shape >= 9 && shape <= 11);
    return static_cast<float>(isQuarters ? Quarters(shape, i) : Whole(shape, i));
  }
  static double Quarters(int32_t shape, int32_t i) {
    const int32_t half = i % 4096, quarter = std::min(half, 4095 - half);
    return i < 4096 ? Quarter(shape, quarter) : -Quarter(shape, quarter);
  }
  static double Quarter(int32_t shape, int32_t i) {
    const double ramp = i / 2048.0, sine = std::sin(Angle(i));
    const std::array<double, 12> powers = {4, 1, 8, 4, 2, 1, 0, 0, 0, 0.5, 0.2, 0};
    if (shape == 11) return std::min(i / 31.0, 1.0);
    return std::pow(shape <= 1 ? ramp : sine, powers[static_cast<std::size_t>(shape)]);
  }
  static double Whole(int32_t shape, int32_t i) {
    const double angle = Angle(i);
    const auto sine = [&](double times) { return std::sin(times * angle); };
    const double harmonics = 0.5 * sine(1) + 0.3 * sine(2) + 0.1 * sine(4);
    switch (shape) {
      case 6:
        return harmonics;
      case 7:
        return harmonics + 0.02 * sine(16) + 0.05 * sine(8);
      case 8:
        return std::min({1.0, i / 1023.0, (8191 - i) / 1023.0}) *
               (0.2 * (sine(1.1) + sine(1.2) + sine(1.3)) + 0.1 * sine(1.4) + 0.3 * sine(1));
      default:
        return 1 - i / (shape == 12 ? 8192.0 : 4096.0);
    }
  }
  static double Noise(int32_t i) {
    static const std::array<double, kLength> values = [] {
      std::array<double, kLength> made;
      uint32_t x = 0;
      for (double& value : made) {
        x = x * 214013 + 2531011;
        value = static_cast<float>((x >> 16 & 0x7fff) / 32767.0);
      }
      return made;
    }();
    return values[static_cast<std::size_t>(i)];
  }
  static double Mess(int32_t i) {
    const uint32_t c = static_cast<uint32_t>(i) * 1111917978u;
    return static_cast<float>((c ^ 0xCCDD1122u) % 1000000u * 0.000001);
  }
  static double Angle(int32_t i) { return 2 * std::numbers::pi * i / kLength; }

  std::array<double, kLength + 1> table_ = {};
};
