#pragma once
// A quadratic Bezier curve as a function of x.

#include "dsp/MEnvelopeItem.h"

namespace MEnvelopeItems {

// Through (x1, y1) and (x2, y2), drawn by the control point (cx, cy), x1 <= cx <= x2. With e = x1 - 2 cx + x2
// the parameter is p = sqrt(x e + cx^2 - x1 x2) / e + (x1 - cx) / e and y = (a p + b) p + c; where |e| is
// below 1e-10 p is u itself. In u, from 0 to 1, the radicand is u bend + offset.
struct Bezier {
  Bezier(double x1, double y1, double cx, double cy, double x2, double y2) noexcept;

  double start, scale;           // u = (x - start) scale
  bool isLinear;                 // p is u
  double bend, offset;           // of the radicand
  double rootScale, rootOffset;  // p = sqrt(radicand) rootScale + rootOffset
  double a, b, c;
};

// The value under a negative radicand is not a number here; the fills raise such a radicand to 0.
class ItemBezier : public Item {
 public:
  ItemBezier(double end, const Bezier& bezier) noexcept : Item(end), bezier_(bezier) {}

  void FillFloat(float* output, double start, double step, int32_t count) const noexcept override;
  void FillDouble(double* output, double start, double step, int32_t count) const noexcept override;
  double GetValue(double x) const noexcept override;

 protected:
  Bezier bezier_;
};

}  // namespace MEnvelopeItems
