#pragma once
#include <cstring>

#include "dsp/MRealFFTKernel.h"

// The passes of MRealFFT over vectors of 4 or 8 floats. A source that runs them defines, in its unnamed
// namespace, a Vector for its instructions, so that no two sources share a function:
//   kLanes, and Lanes, a type of that many floats with the operators of floats;
//   Even and Odd: the lanes 0, 2, ... and 1, 3, ... of two vectors that follow each other;
//   ZipLow and ZipHigh: the way back, a[0], b[0], a[1], b[1] ... in two vectors;
//   Reverse: the last lane first;
//   StoreTransposed: lane l of x[0] to x[7] goes to the eight floats at to + 16 l, or for four lanes to the
//   four floats there and the four at to + 16 l + 8.
//
// The complex transform Z[k] = sum z[n] e^(+2 pi i k n / M) of z[n] = x[2n] + i x[2n + 1] runs in the
// self-sorting form of Stockham (decimation in frequency) between the data and a scratch of the same size:
// radix 8 first, then radix 4, and radix 8 or 4 without factors at the end. Between the passes kLanes points
// lie as a block, their real parts and then their imaginary parts. The inverse is the same with real and
// imaginary parts exchanged on the way in and out. Source: C. Van Loan, "Computational Frameworks for the
// Fast Fourier Transform" (SIAM 1992).
template <typename Vector>
class MRealFFTPasses {
 public:
  template <bool kInverse>
  static void Transform(const MRealFFTTables& tables, float* data) noexcept {
    if (tables.points < kSmallest)
      TransformSmall<kInverse>(tables, data);
    else if (tables.points <= 2048)
      TransformLarge<kInverse, 4096>(tables, data);
    else
      TransformLarge<kInverse, 32768>(tables, data);
  }

 private:
  using Lanes = typename Vector::Lanes;
  static constexpr int32_t kLanes = Vector::kLanes;
  static constexpr int32_t kSmallest = 64;  // points for which the vectors of the first pass are full

  struct Points {  // kLanes complex numbers
    Lanes real, imaginary;

    [[gnu::always_inline]] friend Points operator+(const Points& a, const Points& b) {
      return {a.real + b.real, a.imaginary + b.imaginary};
    }
    [[gnu::always_inline]] friend Points operator-(const Points& a, const Points& b) {
      return {a.real - b.real, a.imaginary - b.imaginary};
    }
    [[gnu::always_inline]] friend Points operator*(const Points& a, const Points& b) {
      return {a.real * b.real - a.imaginary * b.imaginary, a.real * b.imaginary + a.imaginary * b.real};
    }
  };

  [[gnu::always_inline]] static Points TimesI(const Points& a) { return {-a.imaginary, a.real}; }
  [[gnu::always_inline]] static Lanes Load(const float* from) {
    Lanes lanes;
    std::memcpy(&lanes, from, sizeof lanes);
    return lanes;
  }
  [[gnu::always_inline]] static void Store(float* to, const Lanes& lanes) {
    std::memcpy(to, &lanes, sizeof lanes);
  }
  [[gnu::always_inline]] static Points LoadBlock(const float* from) {
    return {Load(from), Load(from + kLanes)};
  }
  [[gnu::always_inline]] static void StoreBlock(float* to, const Points& points) {
    Store(to, points.real);
    Store(to + kLanes, points.imaginary);
  }

  // Real and imaginary parts by turns, as outside; exchanged for the inverse.
  template <bool kExchanged>
  [[gnu::always_inline]] static Points LoadPairs(const float* from) {
    const Lanes a = Load(from), b = Load(from + kLanes);
    const Lanes even = Vector::Even(a, b), odd = Vector::Odd(a, b);
    if constexpr (kExchanged) return {odd, even};
    return {even, odd};
  }
  template <bool kExchanged>
  [[gnu::always_inline]] static void StorePairs(float* to, const Points& points) {
    const Lanes& even = kExchanged ? points.imaginary : points.real;
    const Lanes& odd = kExchanged ? points.real : points.imaginary;
    Store(to, Vector::ZipLow(even, odd));
    Store(to + kLanes, Vector::ZipHigh(even, odd));
  }
  [[gnu::always_inline]] static Points Reverse(const Points& a) {
    return {Vector::Reverse(a.real), Vector::Reverse(a.imaginary)};
  }

  // Four points apart in x: y[r] = sum over j of x[j] i^(j r).
  [[gnu::always_inline]] static void Butterfly4(Points& x0, Points& x1, Points& x2, Points& x3) {
    const Points a = x0 + x2, b = x0 - x2, c = x1 + x3, d = TimesI(x1 - x3);
    x0 = a + c;
    x1 = b + d;
    x2 = a - c;
    x3 = b - d;
  }
  // y[r] = sum over j of x[j] e^(2 pi i j r / 8).
  [[gnu::always_inline]] static void Butterfly8(Points (&x)[8]) {
    const Lanes half = Lanes{} + 0.70710678f;
    Points a[4], b[4];
    for (int32_t j = 0; j < 4; ++j) {
      a[j] = x[j] + x[j + 4];
      b[j] = x[j] - x[j + 4];
    }
    b[1] = {(b[1].real - b[1].imaginary) * half, (b[1].real + b[1].imaginary) * half};
    b[2] = TimesI(b[2]);
    b[3] = {(b[3].real + b[3].imaginary) * -half, (b[3].real - b[3].imaginary) * half};
    Butterfly4(a[0], a[1], a[2], a[3]);
    Butterfly4(b[0], b[1], b[2], b[3]);
    for (int32_t j = 0; j < 4; ++j) {
      x[2 * j] = a[j];
      x[2 * j + 1] = b[j];
    }
  }

  // Radix 8: y[8 p + r] = e^(2 pi i p r / M) times the butterfly's r over x[p + j M/8].
  template <bool kInverse>
  static void First(int32_t points, const float* factors, const float* data, float* __restrict to) {
    const int32_t stride = points / 8;
    for (int32_t p = 0; p < stride; p += kLanes) {
      Points x[8];
      for (int32_t j = 0; j < 8; ++j) x[j] = LoadPairs<kInverse>(data + 2 * (p + stride * j));
      Butterfly8(x);
      const float* const w = factors + p / 8 * 112 + p % 8;
      for (int32_t r = 1; r < 8; ++r) x[r] = x[r] * Points{Load(w + 16 * r - 16), Load(w + 16 * r - 8)};
      Lanes real[8], imaginary[8];
      for (int32_t r = 0; r < 8; ++r) {
        real[r] = x[r].real;
        imaginary[r] = x[r].imaginary;
      }
      Vector::StoreTransposed(to + 16 * p, real);
      Vector::StoreTransposed(to + 16 * p + kLanes, imaginary);
    }
  }

  // Radix 4 over `step` interleaved sequences of `length` points:
  // y[q + step (4 p + r)] = e^(2 pi i p r / length) times the butterfly's r over x[q + step (p + j
  // length/4)].
  static void Middle(int32_t length, int32_t step, const float* factors, const float* __restrict from,
                     float* __restrict to) {
    const int32_t stride = length / 4;
    for (int32_t p = 0; p < stride; ++p, factors += 6) {
      Points w[3];
      for (int32_t r = 0; r < 3; ++r) w[r] = {Lanes{} + factors[2 * r], Lanes{} + factors[2 * r + 1]};
      const float* const x = from + 2 * step * p;
      float* const y = to + 8 * step * p;
      for (int32_t q = 0; q < 2 * step; q += 2 * kLanes) {
        Points x0 = LoadBlock(x + q), x1 = LoadBlock(x + q + 2 * step * stride),
               x2 = LoadBlock(x + q + 4 * step * stride), x3 = LoadBlock(x + q + 6 * step * stride);
        Butterfly4(x0, x1, x2, x3);
        StoreBlock(y + q, x0);
        StoreBlock(y + q + 2 * step, x1 * w[0]);
        StoreBlock(y + q + 4 * step, x2 * w[1]);
        StoreBlock(y + q + 6 * step, x3 * w[2]);
      }
    }
  }

  // The last radix, without factors; from the scratch or in place.
  template <bool kInverse>
  static void Last8(int32_t step, const float* from, float* data) {
    for (int32_t q = 0; q < 2 * step; q += 2 * kLanes) {
      Points x[8];
      for (int32_t j = 0; j < 8; ++j) x[j] = LoadBlock(from + q + 2 * step * j);
      Butterfly8(x);
      for (int32_t r = 0; r < 8; ++r) StorePairs<kInverse>(data + q + 2 * step * r, x[r]);
    }
  }
  template <bool kInverse>
  static void Last4(int32_t step, const float* from, float* data) {
    for (int32_t q = 0; q < 2 * step; q += 2 * kLanes) {
      Points x[4];
      for (int32_t j = 0; j < 4; ++j) x[j] = LoadBlock(from + q + 2 * step * j);
      Butterfly4(x[0], x[1], x[2], x[3]);
      for (int32_t r = 0; r < 4; ++r) StorePairs<kInverse>(data + q + 2 * step * r, x[r]);
    }
  }

  template <bool kInverse, int32_t kScratch>
  [[gnu::noinline]] static void TransformLarge(const MRealFFTTables& tables, float* data) {
    alignas(64) float scratch[kScratch];
    if constexpr (kInverse) Split<true>(tables, data);
    First<kInverse>(tables.points, tables.first, data, scratch);
    const float* factors = tables.middle;
    float *from = scratch, *to = data;
    int32_t length = tables.points / 8, step = 8;
    for (; length > 8; length /= 4, step *= 4) {
      Middle(length, step, factors, from, to);
      factors += length / 4 * 6;
      float* const written = to;
      to = from;
      from = written;
    }
    if (length == 8)
      Last8<kInverse>(step, from, data);
    else
      Last4<kInverse>(step, from, data);
    if constexpr (!kInverse) Split<false>(tables, data);
  }

  // Radix 2 throughout, one point at a time.
  template <bool kInverse>
  static void TransformSmall(const MRealFFTTables& tables, float* data) {
    if constexpr (kInverse) Split<true>(tables, data);
    float scratch[kSmallest];
    float *x = data, *y = scratch;
    for (int32_t stride = tables.points / 2, step = 1; stride > 0; stride /= 2, step *= 2) {
      for (int32_t i = 0; i < stride * step; ++i) {
        const int32_t p = i / step;
        const float* const a = x + 2 * i;
        const float* const b = a + tables.points;
        float* const sum = y + 2 * (i + p * step);
        float* const turned = sum + 2 * step;
        const float real = a[0] - b[0], imaginary = a[1] - b[1];
        const float cosine = tables.first[2 * p * step];
        const float sine = kInverse ? -tables.first[2 * p * step + 1] : tables.first[2 * p * step + 1];
        sum[0] = a[0] + b[0];
        sum[1] = a[1] + b[1];
        turned[0] = real * cosine - imaginary * sine;
        turned[1] = real * sine + imaginary * cosine;
      }
      float* const written = y;
      y = x;
      x = written;
    }
    if (x != data) std::memcpy(data, x, static_cast<std::size_t>(tables.points) * 8);
    if constexpr (!kInverse) Split<false>(tables, data);
  }

  // Between the transform of the complex points and the spectrum of the real samples, in place. With
  // m = conj(a[M - k]) and t = 0.5 (sin(pi k / M) -+ i cos(pi k / M)), minus forward:
  //   b[k] = 0.5 (a[k] + m) + t (a[k] - m),  b[M - k] = conj(0.5 (a[k] + m) - t (a[k] - m)).
  template <bool kInverse>
  static void Split(const MRealFFTTables& tables, float* data) {
    const float first = data[0], second = data[1], scale = kInverse ? 0.5f : 1.0f;
    data[0] = (first + second) * scale;
    data[1] = (first - second) * scale;
    int32_t k = 1;
    for (; k + kLanes <= tables.points / 2; k += kLanes) {
      float* const mirrored = data + 2 * (tables.points - k - kLanes + 1);
      Points low = LoadPairs<false>(data + 2 * k), high = Reverse(LoadPairs<false>(mirrored));
      const float* const t = tables.split + (k - 1) / 8 * 16 + (k - 1) % 8;
      SplitPair<kInverse>(low.real, low.imaginary, high.real, high.imaginary, Load(t), Load(t + 8));
      StorePairs<false>(data + 2 * k, low);
      StorePairs<false>(mirrored, Reverse(high));
    }
    for (; k < tables.points / 2; ++k) {
      float *const low = data + 2 * k, *const high = data + 2 * (tables.points - k);
      const float* const t = tables.split + (k - 1) / 8 * 16 + (k - 1) % 8;
      SplitPair<kInverse>(low[0], low[1], high[0], high[1], t[0], t[8]);
    }
  }
  template <bool kInverse, typename T>
  [[gnu::always_inline]] static void SplitPair(T& lowReal, T& lowImaginary, T& highReal, T& highImaginary,
                                               T sine, T cosine) {
    const T real = lowReal - highReal, imaginary = lowImaginary + highImaginary;
    const T halfReal = (lowReal + highReal) * 0.5f, halfImaginary = (lowImaginary - highImaginary) * 0.5f;
    if constexpr (kInverse) cosine = -cosine;
    const T turnedReal = real * sine + imaginary * cosine;
    const T turnedImaginary = imaginary * sine - real * cosine;
    lowReal = halfReal + turnedReal;
    lowImaginary = halfImaginary + turnedImaginary;
    highReal = halfReal - turnedReal;
    highImaginary = turnedImaginary - halfImaginary;
  }
};
