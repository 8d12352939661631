#include <cmath>
#include <cstring>

#include "dsp/MEnvelopeItemsSSE.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace MEnvelopeItems {

namespace {

// Two doubles in one register. The compiler has the arithmetic of such vectors for every processor.
using Pair = double __attribute__((vector_size(16)));

double Root(double radicand) noexcept {
  return std::sqrt(radicand > 0 ? radicand : 0);
}

Pair Root(Pair radicand) noexcept {
#if defined(__SSE2__)
  return _mm_sqrt_pd(_mm_max_pd(radicand, _mm_setzero_pd()));
#else
  return Pair{Root(radicand[0]), Root(radicand[1])};
#endif
}

void Store(double* output, Pair values) noexcept {
  std::memcpy(output, &values, sizeof values);
}

void Store(float* output, Pair values) noexcept {
  const auto floats = __builtin_convertvector(values, float __attribute__((vector_size(8))));
  std::memcpy(output, &floats, sizeof floats);
}

struct Quadratic {
  double start, scale, a, b, c;
  explicit Quadratic(const Polynomial<2>& p) noexcept
      : start(p.start), scale(p.scale), a(p.coefficients[2]), b(p.coefficients[1]), c(p.coefficients[0]) {}
  template <typename T>
  T operator()(T x) const noexcept {
    const T u = (x - start) * scale;
    return c + b * u + a * (u * u);
  }
};

struct Cubic {
  double start, scale, a, b, c, d;
  explicit Cubic(const Polynomial<3>& p) noexcept
      : start(p.start),
        scale(p.scale),
        a(p.coefficients[3]),
        b(p.coefficients[2]),
        c(p.coefficients[1]),
        d(p.coefficients[0]) {}
  template <typename T>
  T operator()(T x) const noexcept {
    const T u = (x - start) * scale;
    const T u2 = u * u;
    return d + c * u + a * (u2 * u) + b * u2;
  }
};

struct FourthOrder {
  double start, scale, a, b, c, d, e;
  explicit FourthOrder(const Polynomial<4>& p) noexcept
      : start(p.start),
        scale(p.scale),
        a(p.coefficients[4]),
        b(p.coefficients[3]),
        c(p.coefficients[2]),
        d(p.coefficients[1]),
        e(p.coefficients[0]) {}
  template <typename T>
  T operator()(T x) const noexcept {
    const T u = (x - start) * scale;
    const T u2 = u * u;
    return (e + d * u) + (c * u2 + b * (u2 * u)) + a * (u2 * u2);
  }
};

struct LinearBezier {
  Bezier z;
  template <typename T>
  T operator()(T x) const noexcept {
    const T u = (x - z.start) * z.scale;
    return (z.a * u + z.b) * u + z.c;
  }
};

struct BentBezier {
  Bezier z;
  template <typename T>
  T operator()(T x) const noexcept {
    const T p = Root(((x - z.start) * z.scale) * z.bend + z.offset) * z.rootScale + z.rootOffset;
    return (z.a * p + z.b) * p + z.c;
  }
};

// Four samples at a time, so that the chain of the indices is no limit.
template <typename Out, typename Curve>
void Fill(const Curve curve, Out* output, double start, double step, int32_t count) noexcept {
  int32_t i = 0;
  for (Pair index{0, 1}; i + 4 <= count; i += 4, index += 4) {
    Store(output + i, curve(start + index * step));
    Store(output + i + 2, curve(start + (index + 2) * step));
  }
  for (; i < count; ++i) output[i] = static_cast<Out>(curve(start + i * step));
}

template <typename Out>
void FillBezier(const Bezier& bezier, Out* output, double start, double step, int32_t count) noexcept {
  if (bezier.isLinear)
    Fill(LinearBezier{bezier}, output, start, step, count);
  else
    Fill(BentBezier{bezier}, output, start, step, count);
}

}  // namespace

void ItemQuadraticSSE::FillFloat(float* output, double start, double step, int32_t count) const noexcept {
  Fill(Quadratic(polynomial_), output, start, step, count);
}

void ItemQuadraticSSE::FillDouble(double* output, double start, double step, int32_t count) const noexcept {
  Fill(Quadratic(polynomial_), output, start, step, count);
}

double ItemQuadraticSSE::GetValue(double x) const noexcept {
  return Quadratic(polynomial_)(x);
}

void ItemCubicSSE::FillFloat(float* output, double start, double step, int32_t count) const noexcept {
  Fill(Cubic(polynomial_), output, start, step, count);
}

void ItemCubicSSE::FillDouble(double* output, double start, double step, int32_t count) const noexcept {
  Fill(Cubic(polynomial_), output, start, step, count);
}

double ItemCubicSSE::GetValue(double x) const noexcept {
  return Cubic(polynomial_)(x);
}

void ItemFourthOrderSSE::FillFloat(float* output, double start, double step, int32_t count) const noexcept {
  Fill(FourthOrder(polynomial_), output, start, step, count);
}

void ItemFourthOrderSSE::FillDouble(double* output, double start, double step, int32_t count) const noexcept {
  Fill(FourthOrder(polynomial_), output, start, step, count);
}

double ItemFourthOrderSSE::GetValue(double x) const noexcept {
  return FourthOrder(polynomial_)(x);
}

void ItemBezierSSE::FillFloat(float* output, double start, double step, int32_t count) const noexcept {
  FillBezier(bezier_, output, start, step, count);
}

void ItemBezierSSE::FillDouble(double* output, double start, double step, int32_t count) const noexcept {
  FillBezier(bezier_, output, start, step, count);
}

double ItemBezierSSE::GetValue(double x) const noexcept {
  return bezier_.isLinear ? LinearBezier{bezier_}(x) : BentBezier{bezier_}(x);
}

}  // namespace MEnvelopeItems
