#pragma once
// Bendform's loops, written once and compiled for several processors: turns of samples in arrays of their
// own, which the compiler puts into registers of its width. Unit is a type of the including source alone, so
// that each has functions of its own.

#include <cstring>
#include <limits>

#include "effects/BendformCurve.h"

template <typename Unit>
struct BendformPasses {
  static constexpr int32_t kTurn = 16;
  using View = BendformCurve::View;
  using Piece = BendformCurve::Piece;

  static double Polynomial(const Piece& p, double u) {
    const double s = (u - p.start) * p.scale;
    return (((p.c[4] * s + p.c[3]) * s + p.c[2]) * s + p.c[1]) * s + p.c[0];
  }

  static double Read(const View& curve, double u) {
    const double cell = u * BendformCurve::kCells;
    const Piece* p =
        curve.pieces +
        curve.cells[cell < BendformCurve::kCells ? static_cast<int32_t>(cell) : BendformCurve::kCells];
    while (p->end <= u) ++p;
    return p->item ? p->item->GetValue(u) : Polynomial(*p, u);
  }

  // Squares of the values at the roots of a.
  static void Square(const View& curve, const double (&a)[kTurn], double (&squares)[kTurn]) {
    if (curve.isIdentity) {
      for (int32_t i = 0; i < kTurn; ++i) squares[i] = a[i] < 1 ? a[i] : 1;
      return;
    }
    double u[kTurn];
    for (int32_t i = 0; i < kTurn; ++i) u[i] = __builtin_sqrt(a[i]);
    if (curve.isSingle) {
      const Piece p = curve.pieces[0];
      for (int32_t i = 0; i < kTurn; ++i) u[i] = Polynomial(p, u[i] < p.end ? u[i] : p.end);
    } else {
      for (int32_t i = 0; i < kTurn; ++i) u[i] = Read(curve, u[i]);
    }
    for (int32_t i = 0; i < kTurn; ++i) squares[i] = u[i] * u[i];
  }

  static void RunTurn(const View& curve, double depth, const float* in, float* out) {
    constexpr float kMaximum = std::numeric_limits<float>::max();
    float x[kTurn], y[kTurn];
    double a[kTurn], squares[kTurn];
    std::memcpy(x, in, sizeof x);
    for (int32_t i = 0; i < kTurn; ++i) {
      const float magnitude = __builtin_fabsf(x[i]);
      a[i] = magnitude <= kMaximum ? magnitude : 0.0f;
    }
    Square(curve, a, squares);
    const double dry = 1 - depth;
    for (int32_t i = 0; i < kTurn; ++i) {
      const double wet = squares[i] * depth;
      double sum = x[i] * dry + (x[i] < 0 ? -wet : wet);
      sum = sum < kMaximum ? sum : kMaximum;
      sum = sum > -kMaximum ? sum : -kMaximum;
      y[i] = __builtin_fabsf(x[i]) <= kMaximum ? static_cast<float>(sum) : x[i];
    }
    std::memcpy(out, y, sizeof y);
  }

  static void Run(const View& curve, double depth, const float* in, float* out, int32_t samples) noexcept {
    int32_t i = 0;
    for (; i + kTurn <= samples; i += kTurn) RunTurn(curve, depth, in + i, out + i);
    if (i == samples) return;
    float rest[kTurn] = {};
    const std::size_t size = static_cast<std::size_t>(samples - i) * sizeof(float);
    std::memcpy(rest, in + i, size);
    RunTurn(curve, depth, rest, rest);
    std::memcpy(out + i, rest, size);
  }
};
