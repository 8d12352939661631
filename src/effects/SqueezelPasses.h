#pragma once
// Squeezel's loops, written once for registers of any width: Vector has Lanes (a vector of doubles), Floats
// (as many floats), Ints (as many 32-bit integers), and Root, the square roots of all lanes. Choices between
// values are those of registers, so that no branch depends on the signal.

#include "effects/BendformPasses.h"
#include "effects/SqueezelCurve.h"

template <typename Vector>
struct SqueezelPasses {
  using Lanes = typename Vector::Lanes;
  using Floats = typename Vector::Floats;
  using Detector = SqueezelDetector;
  typedef double Pair __attribute__((vector_size(16)));
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

  // One detector in both lanes of a pair, or two in one each. What does not wait for the sample before is
  // done for a whole register, a turn; the lanes go through memory, which is faster than to take a register
  // apart.
  template <int32_t kCount>
  struct Detection {
    static constexpr double kBias = SqueezelDetector::kBias;
    static constexpr int32_t kSecond = (kCount - 1) * kSqueezelPart;
    static constexpr int32_t kTurn = kLanes / kCount;  // samples

    // What each sample brings to the average, channel behind channel. Of each turn, one behind the other: the
    // roots of the average, and what they bring to a rising and a falling envelope.
    struct Work {
      double inputs[kCount * kSqueezelPart];
      double roots[kCount * kSqueezelPart];
      double rising[kCount * kSqueezelPart];
      double falling[kCount * kSqueezelPart];
    };

    static Pair PairAt(const double* at, int32_t second) { return Pair{at[0], at[second]}; }
    static Lanes Weigh(Lanes value, double old) { return (1 - old) * value + kBias; }
    static void Store(double* to, Lanes value) { std::memcpy(to, &value, sizeof value); }

    static Pair Average(const SqueezelTimes& times, Work& work, Pair power, int32_t start, int32_t samples) {
      Lanes means = {};
      for (int32_t i = 0; i < samples; ++i) {
        power = times.rms * power + PairAt(work.inputs + start + i, kSecond);
        for (int32_t c = 0; c < kCount; ++c) means[i * kCount + c] = power[c];
      }
      const Lanes root = Vector::Root(means);
      Store(work.roots + start * kCount, root);
      Store(work.rising + start * kCount, Weigh(root, times.attack));
      Store(work.falling + start * kCount, Weigh(root, times.release));
      return power;
    }

    static Pair Follow(const SqueezelTimes& times, const Work& work, Pair envelope, double* levels,
                       int32_t start, int32_t samples) {
      for (int32_t i = start; i < start + samples; ++i) {
        const Pair rising = times.attack * envelope + PairAt(work.rising + i * kCount, kCount - 1);
        const Pair falling = times.release * envelope + PairAt(work.falling + i * kCount, kCount - 1);
        envelope = PairAt(work.roots + i * kCount, kCount - 1) <= envelope ? falling : rising;
        for (int32_t c = 0; c < kCount; ++c) levels[i + c * kSecond] = envelope[c];
      }
      return envelope;
    }

    // The average is one turn ahead of the envelope, so that neither waits for the other.
    static void Run(SqueezelDetector* detectors, const SqueezelTimes& from, const double* powers,
                    double scale, double* levels, int32_t samples) noexcept {
      const SqueezelTimes times = from;  // which no level can be a part of
      Work work;
      for (int32_t c = 0; c < kCount; ++c)
        for (int32_t i = c * kSqueezelPart; i < c * kSqueezelPart + samples; i += kLanes)
          Store(work.inputs + i, Weigh(Load(powers + i) * scale, times.rms));
      Pair power = {detectors[0].power, detectors[kCount - 1].power};
      Pair envelope = {detectors[0].envelope, detectors[kCount - 1].envelope};
      const int32_t rest = samples % kTurn, whole = samples - rest;
      if (whole > 0) power = Average(times, work, power, 0, kTurn);
      for (int32_t i = kTurn; i < whole; i += kTurn) {
        power = Average(times, work, power, i, kTurn);
        envelope = Follow(times, work, envelope, levels, i - kTurn, kTurn);
      }
      if (whole > 0) envelope = Follow(times, work, envelope, levels, whole - kTurn, kTurn);
      if (rest > 0) {
        power = Average(times, work, power, whole, rest);
        envelope = Follow(times, work, envelope, levels, whole, rest);
      }
      for (int32_t c = 0; c < kCount; ++c) detectors[c] = {power[c], envelope[c]};
    }
  };

  static constexpr SqueezelKernel kKernel = {
      {GetGains<Hard>, GetGains<Linear>, GetGains<Soft>, GetGains<Drawn>},
      AddPowers,
      Detection<1>::Run,
      Detection<2>::Run,
      Scale};
};
