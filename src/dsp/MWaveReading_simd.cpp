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

// A place as 13 bits of its sample and 51 of its fraction, so that it wraps by itself. The unit of integers
// finds the samples, while that of numbers has the fractions.
constexpr int32_t kFractionBits = 51;
static_assert(kLength == 1 << (64 - kFractionBits));

uint64_t PlaceOf(double x) noexcept {
  return static_cast<uint64_t>((x < kLength ? x : x - kLength) * (int64_t{1} << kFractionBits));
}

inline __m128 LoadAt(const float* table, uint64_t place) noexcept {
  return LoadNeighbours(table + (place >> kFractionBits));
}

// The places' fractions: as those of numbers from 2 to 3, whose last bit weighs as much.
constexpr int64_t kFractionMask = (int64_t{1} << kFractionBits) - 1;
constexpr int64_t kBitsOfTwo = int64_t{1} << 62;

inline __m128d FractionsOf(__m128i places) noexcept {
  const __m128i fractions = _mm_and_si128(places, _mm_set1_epi64x(kFractionMask));
  const __m128i numbers = _mm_or_si128(fractions, _mm_set1_epi64x(kBitsOfTwo));
  return _mm_sub_pd(_mm_castsi128_pd(numbers), _mm_set1_pd(2));
}

__attribute__((target("avx2,fma"))) inline __m256d FractionsOf(__m256i places) noexcept {
  const __m256i fractions = _mm256_and_si256(places, _mm256_set1_epi64x(kFractionMask));
  const __m256i numbers = _mm256_or_si256(fractions, _mm256_set1_epi64x(kBitsOfTwo));
  return _mm256_sub_pd(_mm256_castsi256_pd(numbers), _mm256_set1_pd(2));
}

void ReadSingles(const float* table, double* values, uint64_t place, uint64_t step, int32_t count) noexcept {
  for (int32_t i = 0; i < count; ++i, place += step) {
    const __m128d y = _mm_cvtps_pd(LoadAt(table, place));
    const __m128d t = FractionsOf(_mm_set1_epi64x(static_cast<int64_t>(place)));
    const __m128d rise = _mm_sub_sd(_mm_unpackhi_pd(y, y), y);
    _mm_store_sd(values + i, _mm_add_sd(y, _mm_mul_sd(t, rise)));
  }
}

__attribute__((target("avx2,fma"))) void ReadWide(const float* table, double* values, double start,
                                                  double stepLength, int32_t count) noexcept {
  const uint64_t step = PlaceOf(stepLength);
  uint64_t a = PlaceOf(start), b = a + step, c = b + step, d = c + step;
  const auto bits = [](uint64_t place) { return static_cast<int64_t>(place); };
  const __m256i steps = _mm256_set1_epi64x(bits(4 * step));
  __m256i places = _mm256_set_epi64x(bits(d), bits(c), bits(b), bits(a));
  int32_t i = 0;
  for (; i + 4 <= count; i += 4) {
    // The halves of a register are unpacked apart, so a and c, b and d share one.
    const __m256d even = _mm256_cvtps_pd(_mm_movelh_ps(LoadAt(table, a), LoadAt(table, c)));
    const __m256d odd = _mm256_cvtps_pd(_mm_movelh_ps(LoadAt(table, b), LoadAt(table, d)));
    const __m256d y0 = _mm256_unpacklo_pd(even, odd);
    const __m256d y1 = _mm256_unpackhi_pd(even, odd);
    _mm256_storeu_pd(values + i, _mm256_fmadd_pd(FractionsOf(places), _mm256_sub_pd(y1, y0), y0));
    places = _mm256_add_epi64(places, steps);
    for (uint64_t* const place : {&a, &b, &c, &d}) *place += 4 * step;
  }
  _mm256_zeroupper();  // which the compiler forgets before a call at the very end
  ReadSingles(table, values + i, a, step, count - i);
}

}  // namespace

void MWaveReading::ReadPairs(const float* table, double* values, double start, double stepLength,
                             int32_t count) noexcept {
  const uint64_t step = PlaceOf(stepLength);
  uint64_t a = PlaceOf(start), b = a + step;
  const auto bits = [](uint64_t place) { return static_cast<int64_t>(place); };
  const __m128i steps = _mm_set1_epi64x(bits(2 * step));
  __m128i places = _mm_set_epi64x(bits(b), bits(a));
  int32_t i = 0;
  for (; i + 2 <= count; i += 2) {
    const __m128d first = _mm_cvtps_pd(LoadAt(table, a));
    const __m128d second = _mm_cvtps_pd(LoadAt(table, b));
    const __m128d y0 = _mm_unpacklo_pd(first, second);
    const __m128d rise = _mm_sub_pd(_mm_unpackhi_pd(first, second), y0);
    _mm_storeu_pd(values + i, _mm_add_pd(y0, _mm_mul_pd(FractionsOf(places), rise)));
    places = _mm_add_epi64(places, steps);
    a += 2 * step;
    b += 2 * step;
  }
  ReadSingles(table, values + i, a, step, count - i);
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
