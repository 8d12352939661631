#include "effects/WidenorPasses.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

#if defined(__SSE2__)

constexpr int32_t kWidth = 4;

// Four frames of one channel in double.
struct Four {
  __m128d low, high;

  static Four Of(__m128 samples) {
    return {_mm_cvtps_pd(samples), _mm_cvtps_pd(_mm_movehl_ps(samples, samples))};
  }
  __m128 Round() const { return _mm_movelh_ps(_mm_cvtpd_ps(low), _mm_cvtpd_ps(high)); }
};

Four operator+(Four a, Four b) {
  return {_mm_add_pd(a.low, b.low), _mm_add_pd(a.high, b.high)};
}

Four operator-(Four a, Four b) {
  return {_mm_sub_pd(a.low, b.low), _mm_sub_pd(a.high, b.high)};
}

Four operator*(Four a, double factor) {
  const __m128d both = _mm_set1_pd(factor);
  return {_mm_mul_pd(a.low, both), _mm_mul_pd(a.high, both)};
}

// The order of the operands makes what is no number the lower limit.
Four Limit(Four value) {
  const __m128d top = _mm_set1_pd(std::numeric_limits<float>::max());
  const __m128d bottom = _mm_set1_pd(-double{std::numeric_limits<float>::max()});
  return {_mm_min_pd(_mm_max_pd(value.low, bottom), top), _mm_min_pd(_mm_max_pd(value.high, bottom), top)};
}

Four LoadBand(const double* band) {
  return Limit({_mm_loadu_pd(band), _mm_loadu_pd(band + 2)});
}

Four LoadSamples(const float* samples) {
  const __m128 x = _mm_loadu_ps(samples);
  const __m128 magnitude = _mm_andnot_ps(_mm_set1_ps(-0.0f), x);
  return Four::Of(_mm_and_ps(x, _mm_cmple_ps(magnitude, _mm_set1_ps(std::numeric_limits<float>::max()))));
}

template <bool kIsDelayed>
int32_t WidenFours(const WidenorStretch& stretch, int32_t samples) {
  const WidenorStretch at = stretch;
  int32_t i = 0;
  for (; i + kWidth <= samples; i += kWidth) {
    const Four left = LoadBand(at.bandLeft + i), right = LoadBand(at.bandRight + i);
    Four sum = (left - right) * at.depth;
    if constexpr (kIsDelayed) {
      const Four lineLeft = Four::Of(_mm_loadu_ps(at.lineLeft + i));
      const Four lineRight = Four::Of(_mm_loadu_ps(at.lineRight + i));
      sum = sum + (lineLeft - lineRight) * at.delayDepth;
      _mm_storeu_ps(at.lineLeft + i, left.Round());
      _mm_storeu_ps(at.lineRight + i, right.Round());
    }
    const Four inLeft = LoadSamples(at.left + i), inRight = LoadSamples(at.right + i);
    _mm_storeu_ps(at.leftOut + i, Limit(inLeft + sum).Round());
    _mm_storeu_ps(at.rightOut + i, Limit(inRight - sum).Round());
  }
  return i;
}

#else

template <bool kIsDelayed>
int32_t WidenFours(const WidenorStretch&, int32_t) {
  return 0;
}

#endif

}  // namespace

void WidenFrames(const WidenorStretch& at, int32_t samples) noexcept {
  int32_t i = at.lineLeft ? WidenFours<true>(at, samples) : WidenFours<false>(at, samples);
  for (; i < samples; ++i) WidenFrame(at, i);
}
