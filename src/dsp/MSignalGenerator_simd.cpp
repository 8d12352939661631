#include "dsp/MSignalGenerator.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

constexpr int32_t kLength = MWaveShapes::kLength;
constexpr int32_t kRun = 1 << 16;  // samples whose places in the table, not yet wrapped, fit an int32_t

// The wave at start + i step, both in samples of the table and from 0 to its length.
#if defined(__SSE2__)

// A place of the table and the next one, as they are read at one time. Another thread may write them: each of
// the two is whole, which the thread checker cannot know.
__attribute__((no_sanitize("thread"))) inline __m128d LoadNeighbours(const float* at) noexcept {
  return _mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(at))));
}

// Two samples at x.
inline __m128d ReadPair(const float* table, __m128d x) noexcept {
  const __m128i whole = _mm_cvttpd_epi32(x);
  const __m128d t = _mm_sub_pd(x, _mm_cvtepi32_pd(whole));
  const __m128i wrapped = _mm_and_si128(whole, _mm_set1_epi32(kLength - 1));
  const __m128d a = LoadNeighbours(table + _mm_cvtsi128_si32(wrapped));
  const __m128d b = LoadNeighbours(table + _mm_extract_epi16(wrapped, 2));
  const __m128d y0 = _mm_unpacklo_pd(a, b);
  const __m128d y1 = _mm_unpackhi_pd(a, b);
  return _mm_add_pd(y0, _mm_mul_pd(t, _mm_sub_pd(y1, y0)));
}

void ReadRun(const float* table, double* values, double start, double step, int32_t count) noexcept {
  const __m128d steps = _mm_set1_pd(step);
  const __m128d first = _mm_set_pd(start + step, start);
  const __m128d second = _mm_add_pd(first, _mm_set1_pd(2 * step));
  __m128d index = _mm_setzero_pd();
  int32_t i = 0;
  for (; i + 4 <= count; i += 4) {
    const __m128d moved = _mm_mul_pd(index, steps);
    _mm_storeu_pd(values + i, ReadPair(table, _mm_add_pd(first, moved)));
    _mm_storeu_pd(values + i + 2, ReadPair(table, _mm_add_pd(second, moved)));
    index = _mm_add_pd(index, _mm_set1_pd(4));
  }
  for (; i < count; ++i) _mm_store_sd(values + i, ReadPair(table, _mm_set1_pd(start + i * step)));
}

#else

void ReadRun(const float* table, double* values, double start, double step, int32_t count) noexcept {
  for (int32_t i = 0; i < count; ++i) values[i] = MSignalGenerator::Read(table, (start + i * step) / kLength);
}

#endif

}  // namespace

void MSignalGenerator::Read(double* values, double phase, double step, int32_t count) const noexcept {
  const bool isFinite = std::isfinite(phase) && std::isfinite(step);
  const double wrappedStep = isFinite ? Fraction(step) * kLength : 0;
  double start = isFinite ? Fraction(phase) * kLength : 0;
  for (; count > kRun; count -= kRun) {
    ReadRun(table_, values, start, wrappedStep, kRun);
    start = Fraction((start + kRun * wrappedStep) / kLength) * kLength;
    values += kRun;
  }
  ReadRun(table_, values, start, wrappedStep, count);
}
