#include "dsp/MFilterKernels.h"

#include <algorithm>
#include <limits>

#include "dsp/MFilter.h"

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>

#define M_FUSED __attribute__((target("avx2,fma")))
#define M_FUSED_INLINE __attribute__((target("avx2,fma"), always_inline)) inline
#define M_PIPELINE M_FUSED_INLINE
#include "dsp/MFilterPipeline.h"
#include "dsp/MProcessor.h"

namespace {

constexpr float kMaximumSample = std::numeric_limits<float>::max();

// In all loops the product with y1 is added last, so that a frame waits for the one before by a single
// operation.

template <bool kBiased>
struct Section {
  using Value = __m128d;

  __m128d b0, b1, b2, a1, a2, x1, x2, y1, y2;
  __m128d ahead;  // of the next sum, what does not need the next input or the last output

  M_FUSED_INLINE void Load(const MSectionLanes& lanes) {
    b0 = _mm_set1_pd(lanes.b0);
    b1 = _mm_set1_pd(lanes.b1);
    b2 = _mm_set1_pd(lanes.b2);
    a1 = _mm_set1_pd(lanes.a1);
    a2 = _mm_set1_pd(lanes.a2);
    x1 = _mm_loadu_pd(lanes.x1);
    x2 = _mm_loadu_pd(lanes.x2);
    y1 = _mm_loadu_pd(lanes.y1);
    y2 = _mm_loadu_pd(lanes.y2);
    LookAhead();
  }
  M_FUSED_INLINE void Store(MSectionLanes& lanes) const {
    _mm_storeu_pd(lanes.x1, x1);
    _mm_storeu_pd(lanes.x2, x2);
    _mm_storeu_pd(lanes.y1, y1);
    _mm_storeu_pd(lanes.y2, y2);
  }
  M_FUSED_INLINE __m128d Step(__m128d x) {
    const __m128d bias = _mm_set1_pd(kFilterBias);
    if constexpr (kBiased) x = _mm_add_pd(x, bias);
    const __m128d y = _mm_fmadd_pd(y1, a1, _mm_fmadd_pd(x, b0, ahead));
    x2 = x1;
    x1 = x;
    y2 = y1;
    y1 = y;
    LookAhead();
    return y;
  }
  M_FUSED_INLINE void LookAhead() {
    ahead = kBiased ? _mm_fmadd_pd(x2, b2, _mm_set1_pd(kFilterBias)) : _mm_mul_pd(x2, b2);
    ahead = _mm_fmadd_pd(y2, a2, _mm_fmadd_pd(x1, b1, ahead));
  }
};

M_FUSED_INLINE __m128 LoadSamples(const float* left, const float* right) {
  const __m128 x = _mm_insert_ps(_mm_load_ss(left), _mm_load_ss(right), 0x10);
  const __m128 magnitude = _mm_andnot_ps(_mm_set1_ps(-0.0f), x);
  return _mm_and_ps(x, _mm_cmple_ps(magnitude, _mm_set1_ps(kMaximumSample)));
}

M_FUSED_INLINE __m128 Round(__m128d value) {
  const __m128d limit = _mm_set1_pd(kMaximumSample);
  return _mm_cvtpd_ps(_mm_min_pd(_mm_max_pd(value, _mm_set1_pd(-kMaximumSample)), limit));
}

M_FUSED_INLINE void StoreSamples(float* left, float* right, __m128d value) {
  const __m128 samples = Round(value);
  _mm_store_ss(left, samples);
  _mm_store_ss(right, _mm_movehdup_ps(samples));
}

M_FUSED_INLINE void StoreSamples(double* left, double* right, __m128d value) {
  _mm_storel_pd(left, value);
  _mm_storeh_pd(right, value);
}

// Left and right in one register; `Out` double leaves everything unrounded.
template <int kCount, typename Out>
struct Channels {
  const float* left;
  const float* right;
  Out* leftOut;
  Out* rightOut;

  M_FUSED_INLINE __m128d Load(int32_t frame) const {
    return _mm_cvtps_pd(LoadSamples(left + frame, right + frame));
  }
  template <int kSection>
  M_FUSED_INLINE __m128d Take(__m128d y, int32_t frame) const {
    if constexpr (kSection == kCount - 1)
      StoreSamples(leftOut + frame, rightOut + frame, y);
    else if constexpr (sizeof(Out) == sizeof(float))
      return _mm_cvtps_pd(Round(y));
    return y;
  }
};

template <int kCount, bool kBiased, typename Out>
M_FUSED void RunSections(MSectionLanes* lanes, const float* const* in, Out* const* out, int32_t samples) {
  Section<kBiased> sections[kCount];
  for (int k = 0; k < kCount; ++k) sections[k].Load(lanes[k]);
  Channels<kCount, Out> channels = {in[0], in[1], out[0], out[1]};
  Pipeline<kCount, Section<kBiased>, Channels<kCount, Out>>(sections, channels).Run(samples);
  for (int k = 0; k < kCount; ++k) sections[k].Store(lanes[k]);
}

template <bool kBiased>
void RunOneOrTwo(MSectionLanes* sections, int32_t count, const float* const* in, float* const* out,
                 int32_t samples) noexcept {
  if (count == 1)
    RunSections<1, kBiased>(sections, in, out, samples);
  else
    RunSections<2, kBiased>(sections, in, out, samples);
}

void RunResonantPair(MSectionLanes* sections, const float* const* in, double* const* out,
                     int32_t samples) noexcept {
  RunSections<2, true>(sections, in, out, samples);
}

// Three and more sections stand in two halves, one in the lower and one in the upper half of each register:
// the lower half runs the first sections, the upper one the rest of the cascade on what the lower half gave
// kLag frames before. The lag is long enough that neither waits for the other.
constexpr int32_t kLag = 8;  // a power of two

struct Halves {
  using Value = __m256d;

  __m256d b0, b1, b2, a1, a2, x1, x2, y1, y2;
  __m256d ahead;

  M_FUSED_INLINE static __m256d Join(double low, double high) {
    return _mm256_set_m128d(_mm_set1_pd(high), _mm_set1_pd(low));
  }
  M_FUSED_INLINE static __m256d Join(const double* low, const double* high) {
    return _mm256_loadu2_m128d(high, low);
  }
  M_FUSED_INLINE void Load(const MSectionLanes& low, const MSectionLanes& high) {
    b0 = Join(low.b0, high.b0);
    b1 = Join(low.b1, high.b1);
    b2 = Join(low.b2, high.b2);
    a1 = Join(low.a1, high.a1);
    a2 = Join(low.a2, high.a2);
    x1 = Join(low.x1, high.x1);
    x2 = Join(low.x2, high.x2);
    y1 = Join(low.y1, high.y1);
    y2 = Join(low.y2, high.y2);
    LookAhead();
  }
  M_FUSED_INLINE void Store(MSectionLanes& low, MSectionLanes& high) const {
    _mm256_storeu2_m128d(high.x1, low.x1, x1);
    _mm256_storeu2_m128d(high.x2, low.x2, x2);
    _mm256_storeu2_m128d(high.y1, low.y1, y1);
    _mm256_storeu2_m128d(high.y2, low.y2, y2);
  }
  M_FUSED_INLINE __m256d Step(__m256d x) {
    const __m256d y = _mm256_fmadd_pd(y1, a1, _mm256_fmadd_pd(x, b0, ahead));
    x2 = x1;
    x1 = x;
    y2 = y1;
    y1 = y;
    LookAhead();
    return y;
  }
  M_FUSED_INLINE void LookAhead() {
    ahead = _mm256_fmadd_pd(y2, a2, _mm256_fmadd_pd(x1, b1, _mm256_mul_pd(x2, b2)));
  }
};

// Frames for the lower half come from the channels, those for the upper half from the ring, at place `start`
// and on. With an odd number of sections the last place of the upper half is empty.
template <int kPairs, bool kOdd>
struct HalfChannels {
  const float* left;
  const float* right;
  float* leftOut;
  float* rightOut;
  float (*ring)[2];
  int32_t start;

  // The statement keeps the compiler from converting a second time in the next turn.
  M_FUSED_INLINE static __m256d Widen(__m128 samples) {
    __m256d wide = _mm256_cvtps_pd(samples);
    asm("" : "+x"(wide));
    return wide;
  }
  M_FUSED_INLINE __m64* GetPlace(int32_t frame) const {
    return reinterpret_cast<__m64*>(ring[(start + frame) & (kLag - 1)]);
  }
  M_FUSED_INLINE __m256d Load(int32_t frame) const {
    return Widen(_mm_loadh_pi(LoadSamples(left + frame, right + frame), GetPlace(frame)));
  }
  template <int kSection>
  M_FUSED_INLINE __m256d Take(__m256d y, int32_t frame) const {
    const __m256d limit = _mm256_set1_pd(kMaximumSample);
    const __m256d limited = _mm256_min_pd(_mm256_max_pd(y, _mm256_set1_pd(-kMaximumSample)), limit);
    const __m128 samples = _mm256_cvtpd_ps(limited);
    if constexpr (kSection == kPairs - 1) _mm_storel_pi(GetPlace(frame), samples);
    if constexpr (kSection == (kOdd ? kPairs - 2 : kPairs - 1)) {
      _mm_store_ss(leftOut + frame, _mm_movehl_ps(samples, samples));
      _mm_store_ss(rightOut + frame, _mm_shuffle_ps(samples, samples, 3));
    }
    return Widen(samples);
  }
};

template <int kPairs, bool kOdd>
M_FUSED void RunHalves(MSectionLanes* low, MSectionLanes* high, HalfChannels<kPairs, kOdd> channels,
                       int32_t samples) {
  Halves sections[kPairs];
  for (int k = 0; k < kPairs; ++k) sections[k].Load(low[k], high[k]);
  Pipeline<kPairs, Halves, HalfChannels<kPairs, kOdd>>(sections, channels).Run(samples);
  for (int k = 0; k < kPairs; ++k) sections[k].Store(low[k], high[k]);
}

template <int kPairs, bool kOdd>
void RunLagging(MSectionLanes* sections, const float* const* in, float* const* out, int32_t samples) {
  constexpr int kUpper = kOdd ? kPairs - 1 : kPairs;
  const float silence[kLag] = {};
  float unheard[kLag];
  alignas(8) float ring[kLag][2] = {};
  MSectionLanes upper[kPairs] = {}, idle[kPairs] = {};
  std::copy_n(sections + kPairs, kUpper, upper);
  std::copy_n(sections + kPairs, kUpper, idle);
  const int32_t lag = std::min(samples, kLag);

  RunHalves<kPairs, kOdd>(sections, idle, {in[0], in[1], unheard, unheard, ring, 0}, lag);
  RunHalves<kPairs, kOdd>(sections, upper, {in[0] + lag, in[1] + lag, out[0], out[1], ring, 0},
                          samples - lag);
  std::copy_n(sections, kPairs, idle);
  RunHalves<kPairs, kOdd>(
      idle, upper, {silence, silence, out[0] + samples - lag, out[1] + samples - lag, ring, samples - lag},
      lag);
  std::copy_n(upper, kUpper, sections + kPairs);
}

void RunBiquads(MSectionLanes* sections, int32_t count, const float* const* in, float* const* out,
                int32_t samples) noexcept {
  switch (count) {
    case 3:
      return RunLagging<2, true>(sections, in, out, samples);
    case 4:
      return RunLagging<2, false>(sections, in, out, samples);
    case 5:
      return RunLagging<3, true>(sections, in, out, samples);
    case 6:
      return RunLagging<3, false>(sections, in, out, samples);
    default:
      return RunOneOrTwo<false>(sections, count, in, out, samples);
  }
}

}  // namespace

const MFilterKernels kFusedFilterKernels = {RunBiquads, RunOneOrTwo<true>, RunResonantPair};

bool MHasFusedFilterKernels() noexcept {
  return MHasAVX2();
}

#else

const MFilterKernels kFusedFilterKernels = kPlainFilterKernels;

bool MHasFusedFilterKernels() noexcept {
  return false;
}

#endif
