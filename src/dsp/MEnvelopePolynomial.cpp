#include "dsp/MEnvelopePolynomial.h"

namespace MEnvelopeItems {

Polynomial<2> MakeQuadratic(double x1, double y1, double x2, double y2, double tension) noexcept {
  const double dy = y2 - y1;
  return {x1, 1 / (x2 - x1), {y1, dy * (1 - tension), dy * tension}};
}

Polynomial<3> MakeCubic(double x1, double y1, double s1, double x2, double y2, double s2) noexcept {
  const double dx = x2 - x1;
  const double dy = y2 - y1;
  return {x1, 1 / dx, {y1, s1 * dx, 3 * dy - (2 * s1 + s2) * dx, (s1 + s2) * dx - 2 * dy}};
}

Polynomial<4> MakeFourthOrder(double x1, double y1, double x2, double y2, double tension) noexcept {
  const double scale = 1 / (x2 - x1);
  const double dy = y2 - y1;
  const double bend = dy * tension;
  if (tension > 0) return {x1, scale, {y1, dy - bend, 0, 0, bend}};
  return {x1, scale, {y1, dy - 3 * bend, 6 * bend, -4 * bend, bend}};
}

template <int Degree>
void ItemPolynomial<Degree>::FillFloat(float* output, double start, double step,
                                       int32_t count) const noexcept {
  const Polynomial<Degree> polynomial = polynomial_;
  for (int32_t i = 0; i < count; ++i) output[i] = static_cast<float>(polynomial.At(start + i * step));
}

template <int Degree>
void ItemPolynomial<Degree>::FillDouble(double* output, double start, double step,
                                        int32_t count) const noexcept {
  const Polynomial<Degree> polynomial = polynomial_;
  for (int32_t i = 0; i < count; ++i) output[i] = polynomial.At(start + i * step);
}

template <int Degree>
double ItemPolynomial<Degree>::GetValue(double x) const noexcept {
  return polynomial_.At(x);
}

template <int Degree>
double ItemPolynomial<Degree>::GetLeftSlope(double x) const noexcept {
  return polynomial_.SlopeAt(x);
}

template <int Degree>
double ItemPolynomial<Degree>::GetRightSlope(double x) const noexcept {
  return polynomial_.SlopeAt(x);
}

template class ItemPolynomial<2>;
template class ItemPolynomial<3>;
template class ItemPolynomial<4>;

}  // namespace MEnvelopeItems
