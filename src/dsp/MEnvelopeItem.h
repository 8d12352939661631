#pragma once
// The pieces that a curve is made of. One piece serves the x values below its end, the next one those from
// there on. Pieces are made once, when a curve is built, and then only read.
//
// Segments measure x from their own start, in their own width, u = (x - x1) / (x2 - x1): that is the formula
// of the whole axis with less rounding, since powers of u stay near 1 however narrow the segment is.

#include "core/MObject.h"

namespace MEnvelopeItems {

class Item : public MObject {
 public:
  explicit Item(double end) noexcept : end_(end) {}

  double GetEnd() const noexcept { return end_; }
  void SetEnd(double end) noexcept { end_ = end; }

  // Writes the curve at start + i step, for i below the count. The base writes nothing. [any]
  virtual void FillFloat(float* output, double start, double step, int32_t count) const noexcept;
  virtual void FillDouble(double* output, double start, double step, int32_t count) const noexcept;
  // The curve at x; 0 in the base. [any]
  virtual double GetValue(double x) const noexcept;
  // The slopes on both sides of x, in the base over a distance of 1e-10 and 0 where that is no number. [any]
  virtual double GetLeftSlope(double x) const noexcept;
  virtual double GetRightSlope(double x) const noexcept;

 private:
  double end_;
};

class ItemConstant final : public Item {
 public:
  ItemConstant(double end, double value) noexcept : Item(end), value_(value) {}

  void FillFloat(float* output, double start, double step, int32_t count) const noexcept override;
  void FillDouble(double* output, double start, double step, int32_t count) const noexcept override;
  double GetValue(double x) const noexcept override;
  double GetLeftSlope(double x) const noexcept override;
  double GetRightSlope(double x) const noexcept override;

 private:
  double value_;
};

// The straight line through (x1, y1) and (x2, y2), x1 and x2 different, as for all that follow. Ends at x2.
class ItemLinear final : public Item {
 public:
  ItemLinear(double x1, double y1, double x2, double y2) noexcept
      : Item(x2), x1_(x1), y1_(y1), slope_((y2 - y1) / (x2 - x1)) {}

  void FillFloat(float* output, double start, double step, int32_t count) const noexcept override;
  void FillDouble(double* output, double start, double step, int32_t count) const noexcept override;
  double GetValue(double x) const noexcept override;
  double GetLeftSlope(double x) const noexcept override;
  double GetRightSlope(double x) const noexcept override;

 private:
  double x1_, y1_, slope_;
};

// A super-ellipse: y1 + dy (1 - v^(1/k)), v = 1 - u^k at or above 0, k = e^(3 tension). u below 0 counts as
// 0. Two powers per sample; the fills add the step from sample to sample.
class ItemExponencial final : public Item {
 public:
  ItemExponencial(double x1, double y1, double x2, double y2, double tension) noexcept;

  void FillFloat(float* output, double start, double step, int32_t count) const noexcept override;
  void FillDouble(double* output, double start, double step, int32_t count) const noexcept override;
  double GetValue(double x) const noexcept override;

 private:
  double x1_, scale_, y1_, height_, power_, root_;
};

}  // namespace MEnvelopeItems
