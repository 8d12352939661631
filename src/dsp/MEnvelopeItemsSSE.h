#pragma once
// The segments that curves are built of: results of their plain namesakes, to rounding, two samples at a
// time. The polynomials are summed term by term.

#include "dsp/MEnvelopeBezier.h"
#include "dsp/MEnvelopePolynomial.h"

namespace MEnvelopeItems {

class ItemQuadraticSSE final : public ItemQuadratic {
 public:
  using ItemQuadratic::ItemQuadratic;

  void FillFloat(float* output, double start, double step, int32_t count) const noexcept override;
  void FillDouble(double* output, double start, double step, int32_t count) const noexcept override;
  double GetValue(double x) const noexcept override;
};

// Has the slopes of the base, unlike ItemCubic.
class ItemCubicSSE final : public Item {
 public:
  ItemCubicSSE(double end, const Polynomial<3>& polynomial) noexcept : Item(end), polynomial_(polynomial) {}

  void FillFloat(float* output, double start, double step, int32_t count) const noexcept override;
  void FillDouble(double* output, double start, double step, int32_t count) const noexcept override;
  double GetValue(double x) const noexcept override;

 private:
  Polynomial<3> polynomial_;
};

class ItemFourthOrderSSE final : public ItemFourthOrder {
 public:
  using ItemFourthOrder::ItemFourthOrder;

  void FillFloat(float* output, double start, double step, int32_t count) const noexcept override;
  void FillDouble(double* output, double start, double step, int32_t count) const noexcept override;
  double GetValue(double x) const noexcept override;
};

// Raises a negative radicand to 0 in the value too.
class ItemBezierSSE final : public ItemBezier {
 public:
  using ItemBezier::ItemBezier;

  void FillFloat(float* output, double start, double step, int32_t count) const noexcept override;
  void FillDouble(double* output, double start, double step, int32_t count) const noexcept override;
  double GetValue(double x) const noexcept override;
};

}  // namespace MEnvelopeItems
