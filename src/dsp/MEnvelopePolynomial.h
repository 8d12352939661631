#pragma once
// Polynomial segments, and their coefficients.

#include <array>

#include "dsp/MEnvelopeItem.h"

namespace MEnvelopeItems {

// The sum of coefficients[i] u^i with u = (x - start) scale, scale being 1 / (end - start).
template <int Degree>
struct Polynomial {
  double start, scale;
  std::array<double, Degree + 1> coefficients;

  // By Horner's rule.
  double At(double x) const noexcept {
    const double u = (x - start) * scale;
    double sum = coefficients[Degree];
    for (std::size_t i = Degree; i-- > 0;) sum = sum * u + coefficients[i];
    return sum;
  }
  double SlopeAt(double x) const noexcept {
    const double u = (x - start) * scale;
    double sum = coefficients[Degree] * Degree;
    for (std::size_t i = Degree; i-- > 1;) sum = sum * u + coefficients[i] * static_cast<double>(i);
    return sum * scale;
  }
};

// y1 + s (x - x1) + q (x - x1)^2 with s = (dy/dx)(1 - tension), q = (dy - dx s)/dx^2.
Polynomial<2> MakeQuadratic(double x1, double y1, double x2, double y2, double tension) noexcept;
// Hermite's cubic through both points with the slopes s1 and s2 there.
Polynomial<3> MakeCubic(double x1, double y1, double s1, double x2, double y2, double s2) noexcept;
// y1 + dy f(u); f = t u^4 + (1 - t) u for a tension t above 0, else t u^4 - 4 t u^3 + 6 t u^2 + (1 - 3 t) u.
Polynomial<4> MakeFourthOrder(double x1, double y1, double x2, double y2, double tension) noexcept;

template <int Degree>
class ItemPolynomial : public Item {
 public:
  ItemPolynomial(double end, const Polynomial<Degree>& polynomial) noexcept
      : Item(end), polynomial_(polynomial) {}

  void FillFloat(float* output, double start, double step, int32_t count) const noexcept override;
  void FillDouble(double* output, double start, double step, int32_t count) const noexcept override;
  double GetValue(double x) const noexcept override;
  double GetLeftSlope(double x) const noexcept override;
  double GetRightSlope(double x) const noexcept override;

 protected:
  Polynomial<Degree> polynomial_;
};

using ItemQuadratic = ItemPolynomial<2>;
using ItemCubic = ItemPolynomial<3>;
using ItemFourthOrder = ItemPolynomial<4>;

}  // namespace MEnvelopeItems
