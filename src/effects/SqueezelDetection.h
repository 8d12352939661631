#pragma once
// The loop of Squeezel's detectors; for Vector see SqueezelPasses.h.

#include <cstring>

#include "effects/SqueezelCurve.h"

// One detector in both lanes of a pair, or two in one each. What does not wait for the sample before is
// done for a whole register, a turn; the lanes go through memory, which is faster than to take a register
// apart.
template <typename Vector, int32_t kCount>
struct SqueezelDetection {
  using Lanes = typename Vector::Lanes;
  typedef double Pair __attribute__((vector_size(16)));
  static constexpr int32_t kLanes = sizeof(Lanes) / sizeof(double);

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
  static Lanes Load(const double* from) {
    Lanes values;
    std::memcpy(&values, from, sizeof values);
    return values;
  }
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
  static void Run(SqueezelDetector* detectors, const SqueezelTimes& from, const double* powers, double scale,
                  double* levels, int32_t samples) noexcept {
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
