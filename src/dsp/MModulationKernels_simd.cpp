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

void WidenPlain(const float* in, double* line, int32_t samples) noexcept {
  for (int32_t i = 0; i < samples; ++i) line[i] = MCleanSample(in[i]);
}

// From sample `first` on.
void InterpolateFrom(int32_t first, const double* line, float* out, const double* wave, double swing,
                     double start, int32_t samples) noexcept {
  for (int32_t i = first; i < samples; ++i) {
    const double x = start + i + swing * wave[i];
    const auto whole = static_cast<int32_t>(x);
    const double t = x - whole;
    const double* const at = line + whole;
    const double p0 = at[-1], p1 = at[0], p2 = at[1], p3 = at[2];
    const double c = ((p1 - p2) * 3 - p0 + p3) * 0.5;
    const double y = p1 + ((c * t + (2 * p2 + p0 - (5 * p1 + p3) * 0.5)) * t + (p2 - p0) * 0.5) * t;
    out[i] = MLimitToFloat(y);
  }
}

void InterpolatePlain(const double* line, float* out, const double* wave, double swing, double start,
                      int32_t samples) noexcept {
  InterpolateFrom(0, line, out, wave, swing, start, samples);
}

#if defined(__SSE2__)

#define WIDE __attribute__((target("avx2,fma"))) inline

WIDE __m256d Load(const float* at) noexcept {
  const __m128 x = _mm_loadu_ps(at);
  const __m128 magnitude = _mm_andnot_ps(_mm_set1_ps(-0.0f), x);
  const __m128 isFinite = _mm_cmple_ps(magnitude, _mm_set1_ps(std::numeric_limits<float>::max()));
  return _mm256_cvtps_pd(_mm_and_ps(x, isFinite));
}

WIDE void Store(float* at, __m256d y) noexcept {
  constexpr double kLimit = std::numeric_limits<float>::max();
  const __m256d raised = _mm256_max_pd(y, _mm256_set1_pd(-kLimit));
  _mm_storeu_ps(at, _mm256_cvtpd_ps(_mm256_min_pd(raised, _mm256_set1_pd(kLimit))));
}

// The samples at[0] and at[1] of four places, in a register each.
WIDE void LoadTwoOfFour(const double* const (&at)[4], __m256d& first, __m256d& second) noexcept {
  const __m256d even =
      _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(at[0])), _mm_loadu_pd(at[2]), 1);
  const __m256d odd =
      _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(at[1])), _mm_loadu_pd(at[3]), 1);
  first = _mm256_unpacklo_pd(even, odd);
  second = _mm256_unpackhi_pd(even, odd);
}

__attribute__((target("avx2,fma"))) void MultiplyWide(const float* in, float* out, const double* wave,
                                                      double scale, double offset, double bias,
                                                      int32_t samples) noexcept {
  const __m256d scales = _mm256_set1_pd(scale), offsets = _mm256_set1_pd(offset);
  const __m256d biases = _mm256_set1_pd(bias);
  int32_t i = 0;
  for (; i + 4 <= samples; i += 4) {
    const __m256d gain = _mm256_fmadd_pd(_mm256_loadu_pd(wave + i), scales, offsets);
    Store(out + i, _mm256_mul_pd(_mm256_add_pd(Load(in + i), biases), gain));
  }
  MultiplyPlain(in + i, out + i, wave + i, scale, offset, bias, samples - i);
}

__attribute__((target("avx2,fma"))) void PanWide(const float* const* in, float* const* out,
                                                 const double* wave, double depth, double bias,
                                                 int32_t samples) noexcept {
  const __m256d depths = _mm256_set1_pd(depth), biases = _mm256_set1_pd(bias);
  int32_t i = 0;
  for (; i + 4 <= samples; i += 4) {
    const __m256d l = _mm256_add_pd(Load(in[0] + i), biases), r = _mm256_add_pd(Load(in[1] + i), biases);
    const __m256d m = _mm256_mul_pd(_mm256_loadu_pd(wave + i), depths);
    const __m256d moved = _mm256_mul_pd(m, _mm256_blendv_pd(l, r, m));
    Store(out[0] + i, _mm256_sub_pd(l, moved));
    Store(out[1] + i, _mm256_add_pd(r, moved));
  }
  const float* const inRest[] = {in[0] + i, in[1] + i};
  float* const outRest[] = {out[0] + i, out[1] + i};
  PanPlain(inRest, outRest, wave + i, depth, bias, samples - i);
}

__attribute__((target("avx2,fma"))) void WidenWide(const float* in, double* line, int32_t samples) noexcept {
  int32_t i = 0;
  for (; i + 4 <= samples; i += 4) _mm256_storeu_pd(line + i, Load(in + i));
  _mm256_zeroupper();
  WidenPlain(in + i, line + i, samples - i);
}

// Four places at a time, up to kTurn; the whole ones go through memory, which is faster than to take a
// register apart.
constexpr int32_t kTurn = 64;

struct Places {
  int32_t whole[kTurn];
  double fraction[kTurn];
};

WIDE void FindPlaces(Places& places, const double* wave, double swing, double start,
                     int32_t samples) noexcept {
  __m256d own = _mm256_add_pd(_mm256_set1_pd(start), _mm256_set_pd(3, 2, 1, 0));
  for (int32_t i = 0; i < samples; i += 4) {
    const __m256d x = _mm256_fmadd_pd(_mm256_set1_pd(swing), _mm256_loadu_pd(wave + i), own);
    const __m128i whole = _mm256_cvttpd_epi32(x);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(places.whole + i), whole);
    _mm256_storeu_pd(places.fraction + i, _mm256_sub_pd(x, _mm256_cvtepi32_pd(whole)));
    own = _mm256_add_pd(own, _mm256_set1_pd(4));
  }
}

// With the formula's line in halves, of which that through p1 and p2 makes the middle coefficient the rest.
WIDE void ReadPlaces(const Places& places, const double* line, float* out, int32_t samples) noexcept {
  const __m256d half = _mm256_set1_pd(0.5), two = _mm256_set1_pd(2), three = _mm256_set1_pd(3);
  for (int32_t i = 0; i < samples; i += 4) {
    const int32_t* const whole = places.whole + i;
    const double* at[4] = {line + whole[0] - 1, line + whole[1] - 1, line + whole[2] - 1,
                           line + whole[3] - 1};
    __m256d p0, p1, p2, p3;
    LoadTwoOfFour(at, p0, p1);
    for (const double*& each : at) each += 2;
    LoadTwoOfFour(at, p2, p3);
    const __m256d t = _mm256_loadu_pd(places.fraction + i);
    const __m256d a = _mm256_sub_pd(p2, p0), fall = _mm256_sub_pd(p1, p2);
    const __m256d c = _mm256_fmadd_pd(fall, three, _mm256_sub_pd(p3, p0));
    const __m256d minusB = _mm256_add_pd(_mm256_fmadd_pd(fall, two, a), c);
    const __m256d slope = _mm256_fmadd_pd(_mm256_fmsub_pd(c, t, minusB), t, a);
    Store(out + i, _mm256_fmadd_pd(slope, _mm256_mul_pd(t, half), p1));
  }
}

__attribute__((target("avx2,fma"))) void InterpolateWide(const double* line, float* out, const double* wave,
                                                         double swing, double start,
                                                         int32_t samples) noexcept {
  const int32_t whole = samples & ~3;
  Places places;
  for (int32_t done = 0; done < whole; done += kTurn) {
    const int32_t run = whole - done < kTurn ? whole - done : kTurn;
    FindPlaces(places, wave + done, swing, start + done, run);
    ReadPlaces(places, line, out + done, run);
  }
  // The compiler forgets this before a call at the very end. Left as they are, the upper halves would make
  // all instructions of the narrow kind wait for one another, in whatever runs next.
  _mm256_zeroupper();
  InterpolateFrom(whole, line, out, wave, swing, start, samples);
}

#undef WIDE

constexpr MModulationKernels kWide = {MultiplyWide, PanWide, WidenWide, InterpolateWide};

#endif

}  // namespace

const MModulationKernels kModulationPlain = {MultiplyPlain, PanPlain, WidenPlain, InterpolatePlain};

const MModulationKernels& MGetModulationKernels() noexcept {
#if defined(__SSE2__)
  if (MHasAVX2()) return kWide;
#endif
  return kModulationPlain;
}
