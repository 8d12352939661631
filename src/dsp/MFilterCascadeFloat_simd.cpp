#include <algorithm>

#include "dsp/MFilterCascade.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Single precision: up to four channels stand in one register.
namespace {

constexpr int32_t kLanes = 4;

#if defined(__SSE2__)

using Four = __m128;

Four Clean(Four x) {
  const Four magnitude = _mm_andnot_ps(_mm_set1_ps(-0.0f), x);
  return _mm_and_ps(x, _mm_cmple_ps(magnitude, _mm_set1_ps(std::numeric_limits<float>::max())));
}

Four Limit(Four y) {
  const Four limit = _mm_set1_ps(std::numeric_limits<float>::max());
  return _mm_min_ps(_mm_max_ps(y, _mm_sub_ps(_mm_setzero_ps(), limit)), limit);
}

#else

using Four = float __attribute__((vector_size(16)));

Four Clean(Four x) {
  return Four{MCleanSample(x[0]), MCleanSample(x[1]), MCleanSample(x[2]), MCleanSample(x[3])};
}

Four Limit(Four y) {
  return Four{MLimitToFloat(y[0]), MLimitToFloat(y[1]), MLimitToFloat(y[2]), MLimitToFloat(y[3])};
}

#endif

struct Section {
  Section(const MBiquadFilterFloat& filter, const MBiquadStateFloat* const* states)
      : b0(All(filter.b0)), b1(All(filter.b1)), b2(All(filter.b2)), a1(All(filter.a1)), a2(All(filter.a2)) {
    for (int lane = 0; lane < kLanes; ++lane) {
      x2[lane] = states[lane]->x2;
      y2[lane] = states[lane]->y2;
      x1[lane] = states[lane]->x1;
      y1[lane] = states[lane]->y1;
    }
  }
  static Four All(float value) { return Four{value, value, value, value}; }
  MBiquadStateFloat GetState(int lane) const {
    return MIsFinite(y1[lane], y2[lane]) ? MBiquadStateFloat{x2[lane], y2[lane], x1[lane], y1[lane]}
                                         : MBiquadStateFloat();
  }
  Four Step(Four x) {
    const Four y = Limit(x2 * b2 + x1 * b1 + (y2 * a2 + y1 * a1) + x * b0);
    x2 = x1;
    x1 = x;
    y2 = y1;
    y1 = y;
    return y;
  }

  Four b0, b1, b2, a1, a2, x1{}, x2{}, y1{}, y2{};
};

// One or two sections over `count` channels, 1 to 4; lanes without a channel repeat the last one.
template <bool kTwo>
void RunLanes(const MBiquadFilterFloat* sections, MBiquadStateFloat* states, int32_t places,
              const float* const* in, float* const* out, int32_t count, int32_t samples) {
  MBiquadStateFloat* lanes[2][kLanes];
  const float* source[kLanes];
  for (int32_t lane = 0; lane < kLanes; ++lane) {
    const int32_t channel = std::min(lane, count - 1);
    source[lane] = in[channel];
    for (int32_t k = 0; k < 2; ++k) lanes[k][lane] = states + channel * places + (kTwo ? k : 0);
  }
  Section first(sections[0], lanes[0]), second(sections[kTwo ? 1 : 0], lanes[1]);
  for (int32_t i = 0; i < samples; ++i) {
    Four x = first.Step(Clean(Four{source[0][i], source[1][i], source[2][i], source[3][i]}));
    if constexpr (kTwo) x = second.Step(x);
    out[0][i] = x[0];
    if (count > 1) out[1][i] = x[1];
    if (count > 2) out[2][i] = x[2];
    if (count > 3) out[3][i] = x[3];
  }
  for (int32_t lane = 0; lane < count; ++lane) {
    *lanes[0][lane] = first.GetState(lane);
    if constexpr (kTwo) *lanes[1][lane] = second.GetState(lane);
  }
}

}  // namespace

void MBiquadCascade::Run(std::span<const MBiquadFilterFloat> sections, MBiquadStateFloat* states,
                         int32_t places, const float* const* in, float* const* out, int32_t channels,
                         int32_t samples) noexcept {
  if (samples <= 0) return;
  for (int32_t c = 0; c < channels; c += kLanes) {
    const int32_t count = std::min(channels - c, kLanes);
    const float* const* source = in + c;
    for (std::size_t done = 0; done < sections.size(); done += 2) {
      MBiquadStateFloat* const first = states + static_cast<std::ptrdiff_t>(c) * places + done;
      const auto run = done + 1 < sections.size() ? RunLanes<true> : RunLanes<false>;
      run(&sections[done], first, places, source, out + c, count, samples);
      source = out + c;
    }
    for (int32_t lane = 0; lane < count && sections.empty(); ++lane)
      for (int32_t i = 0; i < samples; ++i) out[c + lane][i] = MCleanSample(in[c + lane][i]);
  }
}
