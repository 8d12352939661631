#include "dsp/MEnvelopeItem.h"

#include <algorithm>
#include <cmath>

namespace MEnvelopeItems {

namespace {

constexpr double kSlopeDistance = 1e-10;

double Slope(double rise) noexcept {
  const double slope = rise * (1 / kSlopeDistance);
  return std::isfinite(slope) ? slope : 0;
}

}  // namespace

void Item::FillFloat(float*, double, double, int32_t) const noexcept {}

void Item::FillDouble(double*, double, double, int32_t) const noexcept {}

double Item::GetValue(double) const noexcept {
  return 0;
}

double Item::GetLeftSlope(double x) const noexcept {
  return Slope(GetValue(x) - GetValue(x - kSlopeDistance));
}

double Item::GetRightSlope(double x) const noexcept {
  return Slope(GetValue(x + kSlopeDistance) - GetValue(x));
}

void ItemConstant::FillFloat(float* output, double, double, int32_t count) const noexcept {
  std::fill_n(output, count, static_cast<float>(value_));
}

void ItemConstant::FillDouble(double* output, double, double, int32_t count) const noexcept {
  std::fill_n(output, count, value_);
}

double ItemConstant::GetValue(double) const noexcept {
  return value_;
}

double ItemConstant::GetLeftSlope(double) const noexcept {
  return 0;
}

double ItemConstant::GetRightSlope(double) const noexcept {
  return 0;
}

void ItemLinear::FillFloat(float* output, double start, double step, int32_t count) const noexcept {
  for (int32_t i = 0; i < count; ++i) output[i] = static_cast<float>((start + i * step - x1_) * slope_ + y1_);
}

void ItemLinear::FillDouble(double* output, double start, double step, int32_t count) const noexcept {
  for (int32_t i = 0; i < count; ++i) output[i] = (start + i * step - x1_) * slope_ + y1_;
}

double ItemLinear::GetValue(double x) const noexcept {
  return (x - x1_) * slope_ + y1_;
}

double ItemLinear::GetLeftSlope(double) const noexcept {
  return slope_;
}

double ItemLinear::GetRightSlope(double) const noexcept {
  return slope_;
}

ItemExponencial::ItemExponencial(double x1, double y1, double x2, double y2, double tension) noexcept
    : Item(x2),
      x1_(x1),
      scale_(1 / (x2 - x1)),
      y1_(y1),
      height_(y2 - y1),
      power_(std::exp(3 * tension)),
      root_(1 / power_) {}

double ItemExponencial::GetValue(double x) const noexcept {
  const double u = std::max(0.0, (x - x1_) * scale_);
  const double v = std::max(0.0, 1 - std::pow(u, power_));
  return y1_ + height_ * (1 - std::pow(v, root_));
}

void ItemExponencial::FillFloat(float* output, double x, double step, int32_t count) const noexcept {
  for (int32_t i = 0; i < count; ++i, x += step) output[i] = static_cast<float>(GetValue(x));
}

void ItemExponencial::FillDouble(double* output, double x, double step, int32_t count) const noexcept {
  for (int32_t i = 0; i < count; ++i, x += step) output[i] = GetValue(x);
}

}  // namespace MEnvelopeItems
