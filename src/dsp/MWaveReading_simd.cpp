#include "dsp/MWaveReading.h"

#include "dsp/MProcessor.h"
#include "dsp/MSignalGenerator.h"

#if defined(__SSE2__)
#include <immintrin.h>
#endif

#if defined(__SSE2__)

namespace {

constexpr int32_t kLength = MWaveShapes::kLength;

// A place of the table and the next one, as they are read at one time. Another thread may write them: each of
// the two is whole, which the thread checker cannot know.
__attribute__((no_sanitize("thread"))) inline __m128 LoadNeighbours(const float* at) noexcept {
  return _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(at)));
}

// Two samples at x.
inline __m128d ReadPair(const float* table, __m128d x) noexcept {
  const __m128i whole = _mm_cvttpd_epi32(x);
  const __m128d t = _mm_sub_pd(x, _mm_cvtepi32_pd(whole));
  const __m128i wrapped = _mm_and_si128(whole, _mm_set1_epi32(kLength - 1));
  const __m128d a = _mm_cvtps_pd(LoadNeighbours(table + _mm_cvtsi128_si32(wrapped)));
  const __m128d b = _mm_cvtps_pd(LoadNeighbours(table + _mm_extract_epi16(wrapped, 2)));
  const __m128d y0 = _mm_unpacklo_pd(a, b);
  const __m128d y1 = _mm_unpackhi_pd(a, b);
  return _mm_add_pd(y0, _mm_mul_pd(t, _mm_sub_pd(y1, y0)));
}

// Four samples at x.
__attribute__((target("avx2,fma"))) inline __m256d ReadFour(const float* table, __m256d x) noexcept {
  const __m128i whole = _mm256_cvttpd_epi32(x);
  const __m256d t = _mm256_sub_pd(x, _mm256_cvtepi32_pd(whole));
  const __m128i wrapped = _mm_and_si128(whole, _mm_set1_epi32(kLength - 1));
  const __m128 a = LoadNeighbours(table + _mm_cvtsi128_si32(wrapped));
  const __m128 b = LoadNeighbours(table + _mm_extract_epi16(wrapped, 2));
  const __m128 c = LoadNeighbours(table + _mm_extract_epi16(wrapped, 4));
  const __m128 d = LoadNeighbours(table + _mm_extract_epi16(wrapped, 6));
  // The halves of a register are unpacked apart, so a and c, b and d share one.
  const __m256d even = _mm256_cvtps_pd(_mm_movelh_ps(a, c));
  const __m256d odd = _mm256_cvtps_pd(_mm_movelh_ps(b, d));
  const __m256d y0 = _mm256_unpacklo_pd(even, odd);
  const __m256d y1 = _mm256_unpackhi_pd(even, odd);
  return _mm256_fmadd_pd(t, _mm256_sub_pd(y1, y0), y0);
}

__attribute__((target("avx2,fma"))) void ReadWide(const float* table, double* values, double start,
                                                  double step, int32_t count) noexcept {
  const __m256d starts = _mm256_set1_pd(start);
  const __m256d steps = _mm256_set1_pd(step);
  __m256d index = _mm256_set_pd(3, 2, 1, 0);
  int32_t i = 0;
  for (; i + 4 <= count; i += 4) {
    _mm256_storeu_pd(values + i, ReadFour(table, _mm256_fmadd_pd(index, steps, starts)));
    index = _mm256_add_pd(index, _mm256_set1_pd(4));
  }
  for (; i < count; ++i) _mm_store_sd(values + i, ReadPair(table, _mm_set1_pd(start + i * step)));
}

}  // namespace

void MWaveReading::ReadPairs(const float* table, double* values, double start, double step,
                             int32_t count) noexcept {
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

MWaveReading::Path MWaveReading::GetWidePath() noexcept {
  return MHasAVX2() ? ReadWide : nullptr;
}

#else

void MWaveReading::ReadPairs(const float* table, double* values, double start, double step,
                             int32_t count) noexcept {
  for (int32_t i = 0; i < count; ++i)
    values[i] = MSignalGenerator::Read(table, (start + i * step) / MWaveShapes::kLength);
}

MWaveReading::Path MWaveReading::GetWidePath() noexcept {
  return nullptr;
}

#endif
