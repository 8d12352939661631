#pragma once
// Squeezel's loops, written once for registers of any width: Vector has Lanes (a vector of doubles), Floats
// (as many floats), Ints (as many 32-bit integers), and Root, the square roots of all lanes. Choices between
// values are those of registers, so that no branch depends on the signal.

#include "effects/BendformPasses.h"
#include "effects/SqueezelDetection.h"

template <typename Vector>
struct SqueezelPasses {
  using Lanes = typename Vector::Lanes;
  using Floats = typename Vector::Floats;
  static constexpr int32_t kLanes = sizeof(Lanes) / sizeof(double);

  struct Hard {
    static Lanes Gain(const SqueezelCurve& curve, Lanes x) {
      const Lanes above = curve.gain * (curve.slope * x + curve.offset) / x;
      return x > curve.settings.threshold ? above : Lanes{} + curve.gain;
    }
  };

  struct Linear {
    static Lanes Gain(const SqueezelCurve& curve, Lanes x) {
      const auto isAbove = x >= curve.kneeEnd;
      const Lanes u = (x - curve.kneeStart) * curve.kneeScale;
      const Lanes chord = (1 - u) * curve.startOutput + u * curve.endOutput;
      const Lanes above = curve.gain * (curve.slope * x + curve.offset);
      const Lanes bent = (isAbove ? above : chord * curve.settings.inputGain) / x;
      const auto isBelow = ~isAbove & (x <= curve.kneeStart);
      return isBelow ? Lanes{} + curve.gain : bent;
    }
  };

  struct Soft {
    static Lanes Gain(const SqueezelCurve& curve, Lanes x) {
      const auto isAbove = x >= curve.kneeEnd;
      const Lanes d = x + curve.minusCentreX;
      const Lanes radicand = curve.squaredRadius - d * d;
      const Lanes arc = curve.centreY + Vector::Root(radicand > 0 ? radicand : Lanes{});
      const Lanes bent = (isAbove ? curve.slope * x + curve.offset : arc) * curve.gain / x;
      const auto isBelow = ~isAbove & (x <= curve.kneeStart);
      return isBelow ? Lanes{} + curve.gain : bent;
    }
  };

  struct Drawn {
    static Lanes Gain(const SqueezelCurve& curve, Lanes x) {
      using Pieces = typename BendformPasses<Vector>::template Pieces<true>;
      constexpr double kCells = BendformCurve::kCells;
      const auto isHeard = x - 1e-20 > 0;
      const Lanes level = isHeard ? x : Lanes{} + 1;
      const Lanes u = Vector::Root(level);
      const auto cells =
          __builtin_convertvector(BendformPasses<Vector>::Minimum(u * kCells, kCells), typename Vector::Ints);
      Lanes v = {};
      for (int32_t i = 0; i < kLanes; ++i)
        v[i] = Pieces::Read(curve.drawn, curve.drawn.cells[cells[i]], u[i]);
      return isHeard ? v * v / level * curve.gain : Lanes{} + curve.gain;
    }
  };

  template <typename Way>
  static void GetGains(const SqueezelCurve& from, const double* levels, double* gains, int32_t count) {
    const SqueezelCurve curve = from;  // which no gain can be a part of
    for (int32_t i = 0; i < count; i += kLanes) {
      Lanes level;
      std::memcpy(&level, levels + i, sizeof level);
      const Lanes gain = Way::Gain(curve, level);
      std::memcpy(gains + i, &gain, sizeof gain);
    }
  }

  static Lanes LoadSamples(const float* in) {
    constexpr float kMaximum = std::numeric_limits<float>::max();
    Floats samples;
    std::memcpy(&samples, in, sizeof samples);
    const Lanes x = __builtin_convertvector(samples, Lanes);
    const auto isFinite = (x >= -kMaximum) & (x <= kMaximum);
    return isFinite ? x : Lanes{};
  }

  static Lanes Load(const double* from) {
    Lanes values;
    std::memcpy(&values, from, sizeof values);
    return values;
  }

  static void AddPower(Lanes samples, double gain, double* powers) {
    const Lanes x = samples * gain;
    const Lanes sum = Load(powers) + x * x;
    std::memcpy(powers, &sum, sizeof sum);
  }

  static void AddPowers(const float* in, double gain, double* powers, int32_t count) noexcept {
    int32_t i = 0;
    for (; i + kLanes <= count; i += kLanes) AddPower(LoadSamples(in + i), gain, powers + i);
    if (i == count) return;
    float rest[kLanes] = {};
    std::memcpy(rest, in + i, static_cast<std::size_t>(count - i) * sizeof(float));
    AddPower(LoadSamples(rest), gain, powers + i);
  }

  static void ScaleTurn(const float* in, const double* gains, float* out) {
    constexpr double kMaximum = std::numeric_limits<float>::max();
    Lanes y = LoadSamples(in) * Load(gains);
    y = y < kMaximum ? y : Lanes{} + kMaximum;
    y = y > -kMaximum ? y : Lanes{} - kMaximum;
    const Floats scaled = __builtin_convertvector(y, Floats);
    std::memcpy(out, &scaled, sizeof scaled);
  }

  static void Scale(const float* in, const double* gains, float* out, int32_t count) noexcept {
    int32_t i = 0;
    for (; i + kLanes <= count; i += kLanes) ScaleTurn(in + i, gains + i, out + i);
    if (i == count) return;
    float rest[kLanes] = {};
    const std::size_t size = static_cast<std::size_t>(count - i) * sizeof(float);
    std::memcpy(rest, in + i, size);
    ScaleTurn(rest, gains + i, rest);
    std::memcpy(out + i, rest, size);
  }

  static constexpr SqueezelKernel kKernel = {
      {GetGains<Hard>, GetGains<Linear>, GetGains<Soft>, GetGains<Drawn>},
      AddPowers,
      SqueezelDetection<Vector, 1>::Run,
      SqueezelDetection<Vector, 2>::Run,
      Scale};
};
