#include "dsp/MModulationKernels.h"

#include "dsp/MFilter.h"
#include "dsp/MProcessor.h"

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace {

inline float Multiply(float x, double gain, double bias) noexcept {
  return MLimitToFloat((MCleanSample(x) + bias) * gain);
}

void MultiplyPlain(const float* in, float* out, const double* wave, double scale, double offset, double bias,
                   int32_t samples) noexcept {
  for (int32_t i = 0; i < samples; ++i) out[i] = Multiply(in[i], wave[i] * scale + offset, bias);
}

void PanPlain(const float* const* in, float* const* out, const double* wave, double depth, double bias,
              int32_t samples) noexcept {
  for (int32_t i = 0; i < samples; ++i) {
    const double l = MCleanSample(in[0][i]) + bias, r = MCleanSample(in[1][i]) + bias;
    const double m = wave[i] * depth;
    const double moved = m * (m >= 0 ? l : r);
    out[0][i] = MLimitToFloat(l - moved);
    out[1][i] = MLimitToFloat(r + moved);
  }
}

// From sample `first` on.
void InterpolateFrom(int32_t first, const float* line, float* out, const double* wave, double swing,
                     double start, int32_t samples) noexcept {
  for (int32_t i = first; i < samples; ++i) {
    const double x = start + i + swing * wave[i];
    const auto whole = static_cast<int32_t>(x);
    const double t = x - whole;
    const float* const at = line + whole;
    const double p0 = at[-1], p1 = at[0], p2 = at[1], p3 = at[2];
    const double c = ((p1 - p2) * 3 - p0 + p3) * 0.5;
    const double y = p1 + ((c * t + (2 * p2 + p0 - (5 * p1 + p3) * 0.5)) * t + (p2 - p0) * 0.5) * t;
    out[i] = MLimitToFloat(y);
  }
}

void InterpolatePlain(const float* line, float* out, const double* wave, double swing, double start,
                      int32_t samples) noexcept {
  InterpolateFrom(0, line, out, wave, swing, start, samples);
}

#if defined(__SSE2__)

#define WIDE __attribute__((target("avx2,fma"))) inline

WIDE __m256d Load(const float* at, __m256d bias) noexcept {
  const __m128 x = _mm_loadu_ps(at);
  const __m128 magnitude = _mm_andnot_ps(_mm_set1_ps(-0.0f), x);
  const __m128 isFinite = _mm_cmple_ps(magnitude, _mm_set1_ps(std::numeric_limits<float>::max()));
  return _mm256_add_pd(_mm256_cvtps_pd(_mm_and_ps(x, isFinite)), bias);
}

WIDE void Store(float* at, __m256d y) noexcept {
  constexpr double kLimit = std::numeric_limits<float>::max();
  const __m256d raised = _mm256_max_pd(y, _mm256_set1_pd(-kLimit));
  _mm_storeu_ps(at, _mm256_cvtpd_ps(_mm256_min_pd(raised, _mm256_set1_pd(kLimit))));
}

#undef WIDE

__attribute__((target("avx2,fma"))) void MultiplyWide(const float* in, float* out, const double* wave,
                                                      double scale, double offset, double bias,
                                                      int32_t samples) noexcept {
  const __m256d scales = _mm256_set1_pd(scale), offsets = _mm256_set1_pd(offset);
  const __m256d biases = _mm256_set1_pd(bias);
  int32_t i = 0;
  for (; i + 4 <= samples; i += 4) {
    const __m256d gain = _mm256_fmadd_pd(_mm256_loadu_pd(wave + i), scales, offsets);
    Store(out + i, _mm256_mul_pd(Load(in + i, biases), gain));
  }
  MultiplyPlain(in + i, out + i, wave + i, scale, offset, bias, samples - i);
}

__attribute__((target("avx2,fma"))) void PanWide(const float* const* in, float* const* out,
                                                 const double* wave, double depth, double bias,
                                                 int32_t samples) noexcept {
  const __m256d depths = _mm256_set1_pd(depth), biases = _mm256_set1_pd(bias);
  int32_t i = 0;
  for (; i + 4 <= samples; i += 4) {
    const __m256d l = Load(in[0] + i, biases), r = Load(in[1] + i, biases);
    const __m256d m = _mm256_mul_pd(_mm256_loadu_pd(wave + i), depths);
    const __m256d moved = _mm256_mul_pd(m, _mm256_blendv_pd(l, r, m));
    Store(out[0] + i, _mm256_sub_pd(l, moved));
    Store(out[1] + i, _mm256_add_pd(r, moved));
  }
  const float* const inRest[] = {in[0] + i, in[1] + i};
  float* const outRest[] = {out[0] + i, out[1] + i};
  PanPlain(inRest, outRest, wave + i, depth, bias, samples - i);
}

__attribute__((target("avx2,fma"))) void InterpolateWide(const float* line, float* out, const double* wave,
                                                         double swing, double start,
                                                         int32_t samples) noexcept {
  const __m256d half = _mm256_set1_pd(0.5), two = _mm256_set1_pd(2), three = _mm256_set1_pd(3);
  __m256d places = _mm256_add_pd(_mm256_set1_pd(start), _mm256_set_pd(3, 2, 1, 0));
  int32_t i = 0;
  for (; i + 4 <= samples; i += 4) {
    const __m256d x = _mm256_fmadd_pd(_mm256_set1_pd(swing), _mm256_loadu_pd(wave + i), places);
    const __m128i whole = _mm256_cvttpd_epi32(x);
    const __m256d t = _mm256_sub_pd(x, _mm256_cvtepi32_pd(whole));
    // The four neighbours of each place, turned into the same neighbour of all places.
    __m128 n0 = _mm_loadu_ps(line + _mm_cvtsi128_si32(whole) - 1);
    __m128 n1 = _mm_loadu_ps(line + _mm_extract_epi32(whole, 1) - 1);
    __m128 n2 = _mm_loadu_ps(line + _mm_extract_epi32(whole, 2) - 1);
    __m128 n3 = _mm_loadu_ps(line + _mm_extract_epi32(whole, 3) - 1);
    _MM_TRANSPOSE4_PS(n0, n1, n2, n3);
    const __m256d p0 = _mm256_cvtps_pd(n0), p1 = _mm256_cvtps_pd(n1);
    const __m256d p2 = _mm256_cvtps_pd(n2), p3 = _mm256_cvtps_pd(n3);
    const __m256d ends = _mm256_sub_pd(p3, p0);
    const __m256d c = _mm256_mul_pd(_mm256_fmadd_pd(_mm256_sub_pd(p1, p2), three, ends), half);
    const __m256d outer = _mm256_fmadd_pd(_mm256_set1_pd(5), p1, p3);
    const __m256d b = _mm256_fnmadd_pd(outer, half, _mm256_fmadd_pd(p2, two, p0));
    const __m256d a = _mm256_mul_pd(_mm256_sub_pd(p2, p0), half);
    const __m256d slope = _mm256_fmadd_pd(_mm256_fmadd_pd(c, t, b), t, a);
    Store(out + i, _mm256_fmadd_pd(slope, t, p1));
    places = _mm256_add_pd(places, _mm256_set1_pd(4));
  }
  // The compiler forgets this before a call at the very end. Left as they are, the upper halves would make
  // all instructions of the narrow kind wait for one another, in whatever runs next.
  _mm256_zeroupper();
  InterpolateFrom(i, line, out, wave, swing, start, samples);
}

constexpr MModulationKernels kWide = {MultiplyWide, PanWide, InterpolateWide};

#endif

}  // namespace

const MModulationKernels kModulationPlain = {MultiplyPlain, PanPlain, InterpolatePlain};

const MModulationKernels& MGetModulationKernels() noexcept {
#if defined(__SSE2__)
  if (MHasAVX2()) return kWide;
#endif
  return kModulationPlain;
}
