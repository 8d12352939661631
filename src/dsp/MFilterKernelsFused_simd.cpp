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
  const Channels<kCount, Out> channels = {in[0], in[1], out[0], out[1]};
  Pipeline<kCount, Section<kBiased>>(sections).Run(channels, samples);
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
//
// So a block takes kLag frames more. In the first of them the upper half runs on zeros, from states of zero
// and without an output, until a section's states are put in right before its first frame; in the last ones
// the lower half runs on zeros, its states having been taken out right behind its last frame.
constexpr int32_t kLag = 8;                 // a power of two
constexpr int32_t kShortestLag = 2 * kLag;  // frames of the shortest block that runs in halves

struct Halves {
  using Value = __m256d;

  __m256d b0, b1, b2, a1, a2, x1, x2, y1, y2;
  __m256d ahead;

  M_FUSED_INLINE static __m256d Join(double low, double high) {
    return _mm256_set_m128d(_mm_set1_pd(high), _mm_set1_pd(low));
  }
  M_FUSED_INLINE static __m256d Lower(const double* low) {
    return _mm256_insertf128_pd(_mm256_setzero_pd(), _mm_loadu_pd(low), 0);
  }
  // All but the states of the upper half, which are zero.
  M_FUSED_INLINE void Load(const MSectionLanes& low, const MSectionLanes& high) {
    b0 = Join(low.b0, high.b0);
    b1 = Join(low.b1, high.b1);
    b2 = Join(low.b2, high.b2);
    a1 = Join(low.a1, high.a1);
    a2 = Join(low.a2, high.a2);
    x1 = Lower(low.x1);
    x2 = Lower(low.x2);
    y1 = Lower(low.y1);
    y2 = Lower(low.y2);
    LookAhead();
  }
  M_FUSED_INLINE void LoadUpperStates(const MSectionLanes& high) {
    x1 = _mm256_insertf128_pd(x1, _mm_loadu_pd(high.x1), 1);
    x2 = _mm256_insertf128_pd(x2, _mm_loadu_pd(high.x2), 1);
    y1 = _mm256_insertf128_pd(y1, _mm_loadu_pd(high.y1), 1);
    y2 = _mm256_insertf128_pd(y2, _mm_loadu_pd(high.y2), 1);
    LookAhead();
  }
  template <int kHalf>
  M_FUSED_INLINE void Store(MSectionLanes& lanes) const {
    _mm_storeu_pd(lanes.x1, _mm256_extractf128_pd(x1, kHalf));
    _mm_storeu_pd(lanes.x2, _mm256_extractf128_pd(x2, kHalf));
    _mm_storeu_pd(lanes.y1, _mm256_extractf128_pd(y1, kHalf));
    _mm_storeu_pd(lanes.y2, _mm256_extractf128_pd(y2, kHalf));
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

// Frames for the lower half come from the channels, or are zero, those for the upper half come from the ring.
// Outputs are those of section kLast, in the upper half.
template <int kPairs, int kLast, bool kHasInput, bool kHasOutput>
struct HalfChannels {
  const float* left;
  const float* right;
  float* leftOut;
  float* rightOut;
  float (*ring)[2];

  // The statement keeps the compiler from converting a second time in the next turn.
  M_FUSED_INLINE static __m256d Widen(__m128 samples) {
    __m256d wide = _mm256_cvtps_pd(samples);
    asm("" : "+x"(wide));
    return wide;
  }
  M_FUSED_INLINE __m64* GetPlace(int32_t frame) const {
    return reinterpret_cast<__m64*>(ring[frame & (kLag - 1)]);
  }
  M_FUSED_INLINE __m256d Load(int32_t frame) const {
    __m128 samples = _mm_setzero_ps();
    if constexpr (kHasInput) samples = LoadSamples(left + frame, right + frame);
    return Widen(_mm_loadh_pi(samples, GetPlace(frame)));
  }
  template <int kSection>
  M_FUSED_INLINE __m256d Take(__m256d y, int32_t frame) const {
    const __m256d limit = _mm256_set1_pd(kMaximumSample);
    const __m256d limited = _mm256_min_pd(_mm256_max_pd(y, _mm256_set1_pd(-kMaximumSample)), limit);
    const __m128 samples = _mm256_cvtpd_ps(limited);
    if constexpr (kSection == kPairs - 1) _mm_storel_pi(GetPlace(frame), samples);
    if constexpr (kHasOutput && kSection == kLast) {
      _mm_store_ss(leftOut + (frame - kLag), _mm_movehl_ps(samples, samples));
      _mm_store_ss(rightOut + (frame - kLag), _mm_shuffle_ps(samples, samples, 3));
    }
    return Widen(samples);
  }
};

// The turns up to the first output. Section k meets the upper half's first frame in turn kLag + 2 k.
template <int kSection, int kPairs, int kUpper, typename Port>
M_FUSED_INLINE void PutUpperStates(Pipeline<kPairs, Halves>& pipeline, Halves (&sections)[kPairs],
                                   const MSectionLanes* lanes, const Port& port) {
  constexpr int kFirst = kSection == 0 ? 2 * kPairs - 1 : kLag + 2 * kSection - 2;
  for (int32_t i = kFirst; i < kLag + 2 * kSection; ++i) pipeline.GoOnce(port, i);
  sections[kSection].LoadUpperStates(lanes[kPairs + kSection]);
  if constexpr (kSection < kUpper - 1)
    PutUpperStates<kSection + 1, kPairs, kUpper>(pipeline, sections, lanes, port);
  else
    pipeline.GoOnce(port, kLag + 2 * kSection);
}

// The turns from the last input on. Section k meets it 2 k turns later.
template <int kSection, int kPairs, typename Port>
M_FUSED_INLINE void TakeLowerStates(Pipeline<kPairs, Halves>& pipeline, const Halves (&sections)[kPairs],
                                    MSectionLanes* lanes, const Port& port, int32_t turn) {
  pipeline.GoOnce(port, turn);
  sections[kSection].template Store<0>(lanes[kSection]);
  pipeline.GoOnce(port, turn + 1);
  if constexpr (kSection < kPairs - 1)
    TakeLowerStates<kSection + 1>(pipeline, sections, lanes, port, turn + 2);
}

// kPairs sections in the lower half, kUpper in the upper one.
template <int kPairs, int kUpper>
M_FUSED void RunLagging(MSectionLanes* lanes, const float* const* in, float* const* out, int32_t samples) {
  if (samples < kShortestLag) {
    RunSections<kPairs, false>(lanes, in, out, samples);
    RunSections<kUpper, false>(lanes + kPairs, out, out, samples);
    return;
  }
  constexpr MSectionLanes kIdle = {};
  alignas(8) float ring[kLag][2] = {};
  const HalfChannels<kPairs, kUpper - 1, true, false> head = {in[0], in[1], out[0], out[1], ring};
  const HalfChannels<kPairs, kUpper - 1, true, true> body = {in[0], in[1], out[0], out[1], ring};
  const HalfChannels<kPairs, kUpper - 1, false, true> tail = {in[0], in[1], out[0], out[1], ring};
  Halves sections[kPairs];
  for (int k = 0; k < kPairs; ++k) sections[k].Load(lanes[k], k < kUpper ? lanes[kPairs + k] : kIdle);
  Pipeline<kPairs, Halves> pipeline(sections);
  pipeline.Start(head);
  PutUpperStates<0, kPairs, kUpper>(pipeline, sections, lanes, head);
  pipeline.Go(body, kLag + 2 * kUpper - 1, samples - 1);
  TakeLowerStates<0>(pipeline, sections, lanes, tail, samples - 1);
  pipeline.Go(tail, samples - 1 + 2 * kPairs, samples + kLag - 1);
  pipeline.Finish(tail, samples + kLag - 1);
  for (int k = 0; k < kUpper; ++k) sections[k].template Store<1>(lanes[kPairs + k]);
}

void RunBiquads(MSectionLanes* sections, int32_t count, const float* const* in, float* const* out,
                int32_t samples) noexcept {
  switch (count) {
    case 3:
      return RunLagging<2, 1>(sections, in, out, samples);
    case 4:
      return RunLagging<2, 2>(sections, in, out, samples);
    case 5:
      return RunLagging<3, 2>(sections, in, out, samples);
    case 6:
      return RunLagging<3, 3>(sections, in, out, samples);
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
