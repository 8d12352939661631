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

constexpr MModulationKernels kWide = {MultiplyWide, PanWide};

#endif

}  // namespace

const MModulationKernels kModulationPlain = {MultiplyPlain, PanPlain};

const MModulationKernels& MGetModulationKernels() noexcept {
#if defined(__SSE2__)
  if (MHasAVX2()) return kWide;
#endif
  return kModulationPlain;
}
