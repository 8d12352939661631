#include "dsp/MFilterKernels.h"

#include "dsp/MFilter.h"
#include "dsp/MFilterPipeline.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Left and right channel stand in one register. All sections take their turn on each frame; since no section
// waits for a later one, the processor overlaps the next frames with it.
namespace {

#if defined(__SSE2__)

using Two = __m128d;

Two Both(double value) {
  return _mm_set1_pd(value);
}

Two LoadState(const double* values) {
  return _mm_loadu_pd(values);
}

void StoreState(double* values, Two two) {
  _mm_storeu_pd(values, two);
}

// What is not finite becomes 0.
Two LoadSamples(const float* left, const float* right) {
  const __m128 x = _mm_unpacklo_ps(_mm_load_ss(left), _mm_load_ss(right));
  const __m128 magnitude = _mm_andnot_ps(_mm_set1_ps(-0.0f), x);
  const __m128 isFinite = _mm_cmple_ps(magnitude, _mm_set1_ps(std::numeric_limits<float>::max()));
  return _mm_cvtps_pd(_mm_and_ps(x, isFinite));
}

__m128 Round(Two value) {
  const Two limit = Both(std::numeric_limits<float>::max());
  return _mm_cvtpd_ps(_mm_min_pd(_mm_max_pd(value, _mm_sub_pd(Both(0), limit)), limit));
}

Two AsSamples(Two value) {
  return _mm_cvtps_pd(Round(value));
}

void StoreSamples(float* left, float* right, Two value) {
  const __m128 samples = Round(value);
  _mm_store_ss(left, samples);
  _mm_store_ss(right, _mm_shuffle_ps(samples, samples, 1));
}

void StoreSamples(double* left, double* right, Two value) {
  _mm_storel_pd(left, value);
  _mm_storeh_pd(right, value);
}

#else

using Two = double __attribute__((vector_size(16)));

Two Both(double value) {
  return Two{value, value};
}

Two LoadState(const double* values) {
  return Two{values[0], values[1]};
}

void StoreState(double* values, Two two) {
  values[0] = two[0];
  values[1] = two[1];
}

Two LoadSamples(const float* left, const float* right) {
  return Two{MCleanSample(*left), MCleanSample(*right)};
}

Two AsSamples(Two value) {
  return Two{MLimitToFloat(value[0]), MLimitToFloat(value[1])};
}

void StoreSamples(float* left, float* right, Two value) {
  *left = MLimitToFloat(value[0]);
  *right = MLimitToFloat(value[1]);
}

void StoreSamples(double* left, double* right, Two value) {
  *left = value[0];
  *right = value[1];
}

#endif

// One section in registers. A resonant one has the bias on its input and output.
template <bool kBiased>
class Section {
 public:
  using Value = Two;

  void Load(const MSectionLanes& lanes) {
    b0_ = Both(lanes.b0);
    b1_ = Both(lanes.b1);
    b2_ = Both(lanes.b2);
    a1_ = Both(lanes.a1);
    a2_ = Both(lanes.a2);
    x1_ = LoadState(lanes.x1);
    x2_ = LoadState(lanes.x2);
    y1_ = LoadState(lanes.y1);
    y2_ = LoadState(lanes.y2);
  }
  void Store(MSectionLanes& lanes) const {
    StoreState(lanes.x1, x1_);
    StoreState(lanes.x2, x2_);
    StoreState(lanes.y1, y1_);
    StoreState(lanes.y2, y2_);
  }
  Two Step(Two x) {
    const Two bias = Both(kFilterBias);
    if constexpr (kBiased) x = x + bias;
    const Two y = kBiased ? b0_ * x + b1_ * x1_ + b2_ * x2_ + a1_ * y1_ + a2_ * y2_ + bias
                          : x2_ * b2_ + x1_ * b1_ + (y2_ * a2_ + y1_ * a1_) + x * b0_;
    x2_ = x1_;
    x1_ = x;
    y2_ = y1_;
    y1_ = y;
    return y;
  }

 private:
  Two b0_, b1_, b2_, a1_, a2_, x1_, x2_, y1_, y2_;
};

// `Out` double leaves everything unrounded.
template <int kCount, typename Out>
struct Channels {
  const float* left;
  const float* right;
  Out* leftOut;
  Out* rightOut;

  Two Load(int32_t frame) const { return LoadSamples(left + frame, right + frame); }
  template <int kSection>
  Two Take(Two y, int32_t frame) const {
    if constexpr (kSection == kCount - 1)
      StoreSamples(leftOut + frame, rightOut + frame, y);
    else if constexpr (sizeof(Out) == sizeof(float))
      return AsSamples(y);
    return y;
  }
};

template <int kCount, bool kBiased, typename Out>
void RunSections(MSectionLanes* lanes, const float* const* in, Out* const* out, int32_t samples) {
  Section<kBiased> sections[kCount];
  for (int k = 0; k < kCount; ++k) sections[k].Load(lanes[k]);
  const Channels<kCount, Out> channels = {in[0], in[1], out[0], out[1]};
  Pipeline<kCount, Section<kBiased>>(sections).Run(channels, samples);
  for (int k = 0; k < kCount; ++k) sections[k].Store(lanes[k]);
}

// Long cascades run in passes: the states of more sections would not fit into the registers.
template <bool kBiased>
void RunInPasses(MSectionLanes* sections, int32_t count, const float* const* in, float* const* out,
                 int32_t samples) noexcept {
  for (; count > 0; in = out) {
    const int32_t pass = count == 4 ? 2 : count < 3 ? count : 3;
    if (pass == 1)
      RunSections<1, kBiased>(sections, in, out, samples);
    else if (pass == 2)
      RunSections<2, kBiased>(sections, in, out, samples);
    else
      RunSections<3, kBiased>(sections, in, out, samples);
    sections += pass;
    count -= pass;
  }
}

void RunResonantPair(MSectionLanes* sections, const float* const* in, double* const* out,
                     int32_t samples) noexcept {
  RunSections<2, true>(sections, in, out, samples);
}

}  // namespace

const MFilterKernels kPlainFilterKernels = {RunInPasses<false>, RunInPasses<true>, RunResonantPair};
