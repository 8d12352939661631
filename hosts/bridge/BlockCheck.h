#pragma once
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace bridge {

// Whether none of the samples is infinite or no number. [audio]
inline bool IsFinite(const float* samples, int32_t count) noexcept {
  using Floats = float __attribute__((vector_size(16)));
  using Words = uint32_t __attribute__((vector_size(16)));
  constexpr int32_t kLanes = 4, kTurn = 4 * kLanes;
  Words spoilt[4] = {};  // 0 times what is not finite is no number, else a zero of either sign
  int32_t i = 0;
  for (; i + kTurn <= count; i += kTurn)
    for (int32_t k = 0; k < 4; ++k) {
      Floats lanes;
      std::memcpy(&lanes, samples + i + k * kLanes, sizeof lanes);
      lanes *= 0.0f;
      Words words;
      std::memcpy(&words, &lanes, sizeof words);
      spoilt[k] |= words;
    }
  const Words all = (spoilt[0] | spoilt[1] | spoilt[2] | spoilt[3]) << 1;
  if ((all[0] | all[1] | all[2] | all[3]) != 0) return false;
  return std::all_of(samples + i, samples + count, [](float sample) { return std::isfinite(sample); });
}

// Whether all of the samples are zeros. [audio]
inline bool IsSilent(const float* samples, int32_t count) noexcept {
  return std::all_of(samples, samples + count, [](float sample) { return sample == 0; });
}

}  // namespace bridge
