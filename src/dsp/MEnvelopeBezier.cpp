#include "dsp/MEnvelopeBezier.h"

#include <algorithm>
#include <cmath>

namespace MEnvelopeItems {

namespace {

constexpr double kLeastBend = 1e-10;  // in units of x

double Radicand(const Bezier& bezier, double x) noexcept {
  return (x - bezier.start) * bezier.scale * bezier.bend + bezier.offset;
}

double Parameter(const Bezier& bezier, double radicand) noexcept {
  return std::sqrt(radicand) * bezier.rootScale + bezier.rootOffset;
}

double Value(const Bezier& bezier, double p) noexcept {
  return (bezier.a * p + bezier.b) * p + bezier.c;
}

template <typename Out>
void Fill(Bezier bezier, Out* output, double start, double step, int32_t count) noexcept {
  if (bezier.isLinear) {
    for (int32_t i = 0; i < count; ++i)
      output[i] = static_cast<Out>(Value(bezier, (start + i * step - bezier.start) * bezier.scale));
    return;
  }
  for (int32_t i = 0; i < count; ++i) {
    const double radicand = std::max(0.0, Radicand(bezier, start + i * step));
    output[i] = static_cast<Out>(Value(bezier, Parameter(bezier, radicand)));
  }
}

}  // namespace

Bezier::Bezier(double x1, double y1, double cx, double cy, double x2, double y2) noexcept
    : start(x1), scale(1 / (x2 - x1)), a(y1 - 2 * cy + y2), b(2 * (cy - y1)), c(y1) {
  const double e = (x2 - x1) - 2 * (cx - x1);
  const double control = (cx - x1) * scale;
  isLinear = std::abs(e) < kLeastBend;
  bend = isLinear ? 0 : e * scale;
  offset = control * control;
  rootScale = isLinear ? 0 : 1 / bend;
  rootOffset = -control * rootScale;
}

void ItemBezier::FillFloat(float* output, double start, double step, int32_t count) const noexcept {
  Fill(bezier_, output, start, step, count);
}

void ItemBezier::FillDouble(double* output, double start, double step, int32_t count) const noexcept {
  Fill(bezier_, output, start, step, count);
}

double ItemBezier::GetValue(double x) const noexcept {
  if (bezier_.isLinear) return Value(bezier_, (x - bezier_.start) * bezier_.scale);
  return Value(bezier_, Parameter(bezier_, Radicand(bezier_, x)));
}

}  // namespace MEnvelopeItems
