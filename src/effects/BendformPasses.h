#pragma once
// Bendform's loops, written once for registers of any width: Vector has Lanes (a vector of doubles), Floats
// (as many floats), Ints (as many 32-bit integers), and Root, the square roots of all lanes.

#include <cstring>
#include <limits>

#include "effects/BendformCurve.h"

template <typename Vector>
struct BendformPasses {
  using Lanes = typename Vector::Lanes;
  using Floats = typename Vector::Floats;
  using Ints = typename Vector::Ints;
  using View = BendformCurve::View;
  using Piece = BendformCurve::Piece;
  static constexpr int32_t kLanes = sizeof(Lanes) / sizeof(double);
  static constexpr int32_t kTurn = 16;  // samples
  static constexpr float kMaximum = std::numeric_limits<float>::max();

  template <typename Real>
  static Real Polynomial(const Piece& p, Real u) {
    const Real s = (u - p.start) * p.scale;
    return (((s * p.c[4] + p.c[3]) * s + p.c[2]) * s + p.c[1]) * s + p.c[0];
  }

  static Lanes Minimum(Lanes a, double limit) {
    const Lanes limits = Lanes{} + limit;
    return a < limits ? a : limits;
  }

  // Ways to read the squares of the values at the roots of a turn's magnitudes.

  struct Identity {
    static void Square(const View&, Lanes (&a)[kTurn / kLanes]) {
      for (Lanes& lanes : a) lanes = Minimum(lanes, 1);
    }
  };

  struct Single {
    static void Square(const View& curve, Lanes (&a)[kTurn / kLanes]) {
      const Piece& p = curve.pieces[0];
      for (Lanes& lanes : a) {
        const Lanes v = Polynomial(p, Minimum(Vector::Root(lanes), p.end));
        lanes = v * v;
      }
    }
  };

  template <bool kHasItems>
  struct Pieces {
    static double Read(const View& curve, uint32_t place, double u) {
      const Piece* p = curve.pieces + place;
      while (p->end <= u) ++p;
      if (kHasItems && p->item) return p->item->GetValue(u);
      return Polynomial(*p, u);
    }

    static void Square(const View& curve, Lanes (&a)[kTurn / kLanes]) {
      double u[kTurn];
      int32_t cells[kTurn];
      for (int32_t i = 0; i < kTurn / kLanes; ++i) {
        const Lanes root = Vector::Root(a[i]);
        const Ints cell =
            __builtin_convertvector(Minimum(root * BendformCurve::kCells, BendformCurve::kCells), Ints);
        std::memcpy(u + i * kLanes, &root, sizeof root);
        std::memcpy(cells + i * kLanes, &cell, sizeof cell);
      }
      for (int32_t i = 0; i < kTurn / kLanes; ++i) {
        // Lane by lane: a register is slow to load right behind stores of its parts.
        Lanes v = {};
        for (int32_t j = 0; j < kLanes; ++j)
          v[j] = Read(curve, curve.cells[cells[i * kLanes + j]], u[i * kLanes + j]);
        a[i] = v * v;
      }
    }
  };

  template <typename Way>
  static void RunTurn(const View& curve, double depth, const float* in, float* out) {
    Lanes x[kTurn / kLanes], a[kTurn / kLanes];
    for (int32_t i = 0; i < kTurn / kLanes; ++i) {
      Floats samples;
      std::memcpy(&samples, in + i * kLanes, sizeof samples);
      x[i] = __builtin_convertvector(samples, Lanes);
      const Lanes magnitude = x[i] < 0 ? -x[i] : x[i];
      a[i] = magnitude <= kMaximum ? magnitude : Lanes{};
    }
    Way::Square(curve, a);
    for (int32_t i = 0; i < kTurn / kLanes; ++i) {
      const Lanes wet = a[i] * depth;
      Lanes y = x[i] * (1 - depth) + (x[i] < 0 ? -wet : wet);
      y = Minimum(y, kMaximum);
      y = y > -kMaximum ? y : Lanes{} - kMaximum;
      const auto isFinite = (x[i] <= kMaximum) & (x[i] >= -kMaximum);
      const Floats samples = __builtin_convertvector(isFinite ? y : x[i], Floats);
      std::memcpy(out + i * kLanes, &samples, sizeof samples);
    }
  }

  template <typename Way>
  static void RunTurns(const View& curve, double depth, const float* in, float* out, int32_t samples) {
    int32_t i = 0;
    for (; i + kTurn <= samples; i += kTurn) RunTurn<Way>(curve, depth, in + i, out + i);
    if (i == samples) return;
    float rest[kTurn] = {};
    const std::size_t size = static_cast<std::size_t>(samples - i) * sizeof(float);
    std::memcpy(rest, in + i, size);
    RunTurn<Way>(curve, depth, rest, rest);
    std::memcpy(out + i, rest, size);
  }

  static void Run(const View& curve, double depth, const float* in, float* out, int32_t samples) noexcept {
    if (curve.isIdentity)
      RunTurns<Identity>(curve, depth, in, out, samples);
    else if (curve.isSingle)
      RunTurns<Single>(curve, depth, in, out, samples);
    else if (curve.hasItems)
      RunTurns<Pieces<true>>(curve, depth, in, out, samples);
    else
      RunTurns<Pieces<false>>(curve, depth, in, out, samples);
  }
};
