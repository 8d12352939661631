#pragma once
// Swirlo's loop, written once for every processor: two channels side by side in one register, frame by frame.
// Vector has Lanes, a vector of two doubles, and Floats, one of two floats.
//
// A frame waits for the one before through the feedback, and each stage for the one before it. Two stages in
// a row with the memories s0 and s1 shorten the wait to a product and a sum, as
//   y2 = s1 - a (s0 - a y) = (s1 - a s0) + a^2 y
// and what is in brackets is known before y is.

#include <cstring>

#include "dsp/MFilter.h"

// What one channel remembers.
struct SwirloChannel {
  static constexpr int32_t kMaximumStages = 10;

  double stages[kMaximumStages];
  double feedback;  // the last stage's output of the frame before
};

// A stretch of two channels, which may be the same one.
struct SwirloStretch {
  SwirloChannel* channels[2];
  const double* waves[2];
  const float* in[2];
  float* out[2];  // may be the inputs
  // d = scale wave + offset, at least 0; each stage's coefficient is (1 - d) / (1 + d).
  double scale;
  double offset;
  double feedback;
  double depth;
  double bias;  // in each input
};

// For each number of stages, less one.
struct SwirloKernel {
  using Pass = void (*)(const SwirloStretch& stretch, int32_t samples) noexcept;
  Pass passes[SwirloChannel::kMaximumStages];
};

extern const SwirloKernel kSwirloBaseline;
// Null passes where the compiler has no AVX2 and FMA for it; only for processors with MHasAVX2().
extern const SwirloKernel kSwirloWide;

template <typename Vector>
struct SwirloPasses {
  using Lanes = typename Vector::Lanes;
  using Floats = typename Vector::Floats;

  static Lanes LoadSamples(const SwirloStretch& at, int32_t i) {
    return Lanes{MCleanSample(at.in[0][i]), MCleanSample(at.in[1][i])} + at.bias;
  }

  static void StoreSamples(const SwirloStretch& at, int32_t i, Lanes y) {
    const Lanes top = Lanes{} + std::numeric_limits<float>::max();
    y = y > -top ? y : -top;
    y = y < top ? y : top;
    const Floats samples = __builtin_convertvector(y, Floats);
    at.out[0][i] = samples[0];
    at.out[1][i] = samples[1];
  }

  static Lanes GetCoefficients(const SwirloStretch& at, int32_t i) {
    Lanes d = Lanes{at.waves[0][i], at.waves[1][i]} * at.scale + at.offset;
    d = d > 0 ? d : Lanes{};
    return (1 - d) / (1 + d);
  }

  template <int32_t kStages>
  static Lanes RunStages(Lanes (&s)[kStages], Lanes a, Lanes y) {
    const Lanes square = a * a;
    for (int32_t k = 0; k + 2 <= kStages; k += 2) {
      const Lanes y1 = s[k] - a * y;
      const Lanes y2 = (s[k + 1] - a * s[k]) + square * y;
      s[k] = y1 * a + y;
      s[k + 1] = y2 * a + y1;
      y = y2;
    }
    if constexpr (kStages % 2 == 1) {
      Lanes& last = s[kStages - 1];
      const Lanes t = last - a * y;
      last = t * a + y;
      y = t;
    }
    return y;
  }

  template <int32_t kStages>
  static void Run(const SwirloStretch& stretch, int32_t samples) noexcept {
    const SwirloStretch at = stretch;
    SwirloChannel &left = *at.channels[0], &right = *at.channels[1];
    Lanes s[kStages], z = {left.feedback, right.feedback};
    for (int32_t k = 0; k < kStages; ++k) s[k] = Lanes{left.stages[k], right.stages[k]};
    for (int32_t i = 0; i < samples; ++i) {
      const Lanes x = LoadSamples(at, i);
      z = RunStages<kStages>(s, GetCoefficients(at, i), z * at.feedback + x);
      StoreSamples(at, i, z * at.depth + x * (1 - at.depth));
    }
    for (int32_t k = 0; k < kStages; ++k) left.stages[k] = s[k][0], right.stages[k] = s[k][1];
    left.feedback = z[0], right.feedback = z[1];
  }

  static constexpr SwirloKernel kKernel = {
      {Run<1>, Run<2>, Run<3>, Run<4>, Run<5>, Run<6>, Run<7>, Run<8>, Run<9>, Run<10>}};
};
