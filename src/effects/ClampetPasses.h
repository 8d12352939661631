#pragma once
// Clampet's loops, written once for registers of any width: Vector has Lanes (a vector of doubles), Floats
// (as many floats), and AreAll, which says whether all lanes of a comparison hold.

#include <cstring>
#include <limits>

#include "effects/ClampetCurve.h"

template <typename Vector>
struct ClampetPasses {
  using Lanes = typename Vector::Lanes;
  using Floats = typename Vector::Floats;
  using Bits = typename Vector::Bits;
  static constexpr int32_t kLanes = sizeof(Lanes) / sizeof(double);
  // Registers that are looked at together: if all of their samples are below the threshold, no knee is
  // computed.
  static constexpr int32_t kTurn = 4;

  template <std::size_t kCount>
  static Lanes Polynomial(Lanes z, const double (&coefficients)[kCount]) {
    Lanes sum = z * coefficients[kCount - 1] + coefficients[kCount - 2];
    for (std::size_t i = kCount - 2; i-- > 0;) sum = sum * z + coefficients[i];
    return sum;
  }

  // The polynomials and rational functions of sin, tanh and atan interpolate function(u) / u over u^2, on the
  // range that a knee has, at nodes of Chebyshev's kind.

  static Lanes Soft1(Lanes u, const ClampetCurve&) {
    static constexpr double kSine[] = {0.999999999982919107,   -0.166666666168155664,
                                       0.00833333097420757348, -0.00019840861179318339,
                                       2.75252698122356832e-6, -2.38892177723153955e-8};
    return u * Polynomial(u * u, kSine);
  }

  static Lanes Soft2(Lanes u, const ClampetCurve&) { return u + (u + 1) * u * u * -0.15; }

  static Lanes Soft3(Lanes u, const ClampetCurve&) { return u * (2 - u); }

  static Lanes Soft4(Lanes u, const ClampetCurve& curve) { return u * curve.inverseScale / (u * u + 1); }

  static Lanes Clip1(Lanes u, const ClampetCurve&) {
    static constexpr double kAbove[] = {0.999999999999765433, 0.136703369235328124, 0.0038512432092798167,
                                        0.000027228637543962898, 2.53051167713413834e-8};
    static constexpr double kBelow[] = {1, 0.470036702564699625, 0.0271968107431278173,
                                        0.00038952582833235815, 1.19743088358358985e-6};
    return u * Polynomial(u * u, kAbove) / Polynomial(u * u, kBelow);
  }

  static Lanes Clip2(Lanes u, const ClampetCurve&) { return (u * u + 27) * u / (9 * u * u + 27); }

  static Lanes Clip3(Lanes u, const ClampetCurve&) {
    static constexpr double kAbove[] = {
        0.999999999990404212,    2.09496769166425092,    1.55395801327735912,
        0.504536088661446513,    0.0733887165951783399,  0.0045239567231173988,
        0.000103938817161689775, 6.77433340839812032e-7, 5.32754189426718748e-10};
    static constexpr double kBelow[] = {1,
                                        2.42830102353004558,
                                        2.16339172258259814,
                                        0.882863285463934709,
                                        0.170788684501168349,
                                        0.0150300438500055242,
                                        0.000544555926984779295,
                                        6.71285015031732692e-6,
                                        1.80003597799517672e-8};
    return u * Polynomial(u * u, kAbove) / Polynomial(u * u, kBelow);
  }

  // A knee without its height; u is the excess times the scale.
  using Knee = Lanes(Lanes u, const ClampetCurve& curve);

  static Lanes Load(const float* in) {
    Floats samples;
    std::memcpy(&samples, in, sizeof samples);
    return __builtin_convertvector(samples, Lanes);
  }

  static void Store(float* out, Lanes values) {
    const Floats samples = __builtin_convertvector(values, Floats);
    std::memcpy(out, &samples, sizeof samples);
  }

  static Lanes And(Lanes a, Bits b) { return reinterpret_cast<Lanes>(reinterpret_cast<Bits>(a) & b); }
  static Bits SignBit() { return Bits{} + std::numeric_limits<int64_t>::min(); }
  static Lanes Magnitude(Lanes x) { return And(x, ~SignBit()); }
  static Lanes WithSignOf(Lanes magnitude, Lanes x) {
    return reinterpret_cast<Lanes>(reinterpret_cast<Bits>(magnitude) |
                                   reinterpret_cast<Bits>(And(x, SignBit())));
  }

  template <Knee kKnee, bool kHarmonics>
  static Lanes Shape(Lanes x, const ClampetCurve& curve) {
    const Lanes a = Magnitude(x);
    const Lanes excess = a - curve.threshold;
    const Lanes range = Lanes{} + curve.range;
    const Lanes u = (excess > range ? range : excess) * curve.scale;
    const Lanes knee =
        kKnee(u, curve) * (curve.height * curve.outputGain) + curve.threshold * curve.outputGain;
    Lanes y = a < curve.threshold ? a * curve.outputGain : knee;
    y = WithSignOf(a >= 1 ? Lanes{} + 1 : y, x);
    if constexpr (kHarmonics) {
      y = (y - x) * (y - x) * curve.harmonics + y;
      y = y > 1 ? Lanes{} + 1 : y;
    }
    return y;
  }

  template <Knee kKnee, bool kHarmonics>
  static void RunTurn(const ClampetCurve& curve, const float* in, float* out) {
    Lanes x[kTurn];
    auto isBelow = Lanes{} < 1;
    for (int32_t i = 0; i < kTurn; ++i) {
      x[i] = Load(in + i * kLanes) * curve.gain;
      isBelow &= Magnitude(x[i]) < curve.threshold;
    }
    // The harmonics are formed in one way only, so that a sample does not depend on those around it.
    if (!kHarmonics && Vector::AreAll(isBelow))
      for (int32_t i = 0; i < kTurn; ++i) Store(out + i * kLanes, x[i] * curve.outputGain);
    else
      for (int32_t i = 0; i < kTurn; ++i) Store(out + i * kLanes, Shape<kKnee, kHarmonics>(x[i], curve));
  }

  template <Knee kKnee, bool kHarmonics>
  static void RunTurns(const ClampetCurve& curve, const float* in, float* out, int32_t samples) {
    int32_t i = 0;
    for (; i + kTurn * kLanes <= samples; i += kTurn * kLanes)
      RunTurn<kKnee, kHarmonics>(curve, in + i, out + i);
    if (i == samples) return;
    float rest[kTurn * kLanes] = {};
    const std::size_t size = static_cast<std::size_t>(samples - i) * sizeof(float);
    std::memcpy(rest, in + i, size);
    RunTurn<kKnee, kHarmonics>(curve, rest, rest);
    std::memcpy(out + i, rest, size);
  }

  template <Knee kKnee>
  static void Run(const ClampetCurve& curve, const float* in, float* out, int32_t samples) noexcept {
    const ClampetCurve local = curve;  // which no sample can be a part of
    if (local.hasHarmonics)
      RunTurns<kKnee, true>(local, in, out, samples);
    else
      RunTurns<kKnee, false>(local, in, out, samples);
  }

  static constexpr ClampetKernel kKernel = {
      {Run<Soft1>, Run<Soft2>, Run<Soft3>, Run<Soft4>, Run<Clip1>, Run<Clip2>, Run<Clip3>}};
};
