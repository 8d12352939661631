#pragma once
// The loops of a finite impulse response, written once for registers of any width. A sum per lane: neighbours
// share the tap, and several registers share its load.

#include <cstring>
#include <limits>

#include "dsp/MFirKernel.h"

template <typename Vector>
struct MFirPasses {
  using Lanes = typename Vector::Lanes;
  static constexpr int32_t kLanes = sizeof(Lanes) / sizeof(float);
  static constexpr int32_t kMost = Vector::kRegisters;

  static Lanes Load(const float* from) {
    Lanes lanes;
    std::memcpy(&lanes, from, sizeof lanes);
    return lanes;
  }

  static Lanes Limit(Lanes value) {
    const Lanes limit = Lanes{} + std::numeric_limits<float>::max();
    value = value < limit ? value : limit;
    return value > -limit ? value : -limit;
  }

  // kSteps taps, a register's width apart, for all sums: a register of samples that is some way ahead for one
  // tap is further ahead for the next, so that it is loaded once for all of them.
  template <int32_t kRegisters, int32_t kSteps>
  static void AddTaps(const float* taps, const float* newest, Lanes (&sums)[kRegisters]) {
    Lanes tap[kSteps];
    for (int32_t m = 0; m < kSteps; ++m) tap[m] = Lanes{} + taps[m * kLanes];
#pragma GCC unroll 16
    for (int32_t r = 1 - kSteps; r < kRegisters; ++r) {
      const Lanes x = Load(newest + r * kLanes);
#pragma GCC unroll 4
      for (int32_t m = 0; m < kSteps; ++m)
        if (r + m >= 0 && r + m < kRegisters) sums[r + m] += x * tap[m];
    }
  }

  // `newest` is the newest sample of the first sum.
  template <int32_t kRegisters>
  static void RunRegisters(const float* taps, int32_t length, float gain, const float* newest, float* out) {
    constexpr int32_t kSteps = Vector::kSteps;
    Lanes sums[kRegisters] = {};
    int32_t k = 0;
    for (; k + kSteps * kLanes <= length; k += kSteps * kLanes)
      for (int32_t j = k; j < k + kLanes; ++j) AddTaps<kRegisters, kSteps>(taps + j, newest - j, sums);
    for (; k < length; ++k) AddTaps<kRegisters, 1>(taps + k, newest - k, sums);
    for (int32_t r = 0; r < kRegisters; ++r) {
      const Lanes limited = Limit(sums[r] * gain);
      std::memcpy(out + r * kLanes, &limited, sizeof limited);
    }
  }

  template <int32_t kRegisters>
  static void RunRest(const float* taps, int32_t length, float gain, const float* newest, float* out,
                      int32_t count) {
    float all[kRegisters * kLanes];
    RunRegisters<kRegisters>(taps, length, gain, newest, all);
    std::memcpy(out, all, static_cast<std::size_t>(count) * sizeof(float));
  }

  static void Run(const float* taps, int32_t length, float gain, const float* samples, float* out,
                  int32_t count) noexcept {
    const float* newest = samples + length - 1;
    for (; count >= kMost * kLanes; count -= kMost * kLanes) {
      RunRegisters<kMost>(taps, length, gain, newest, out);
      newest += kMost * kLanes;
      out += kMost * kLanes;
    }
    if (count > kMost / 4 * kLanes)
      RunRest<kMost>(taps, length, gain, newest, out, count);
    else if (count > 0)
      RunRest<kMost / 4>(taps, length, gain, newest, out, count);
  }
};
