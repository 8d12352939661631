#pragma once
#include <bit>
#include <cstdint>

namespace bridge {

struct BlockCheck {
  bool isFinite;  // neither infinite nor no number
  bool isSilent;  // zeros alone
};

// Looks at `count` samples. [audio]
inline BlockCheck CheckBlock(const float* samples, int32_t count) noexcept {
  constexpr int32_t kLanes = 8;
  float spoilt[kLanes] = {};  // 0 times what is not finite is no number, and stays that
  uint32_t bits[kLanes] = {};
  int32_t i = 0;
  for (; i + kLanes <= count; i += kLanes)
    for (int32_t lane = 0; lane < kLanes; ++lane) {
      spoilt[lane] += samples[i + lane] * 0.0f;
      bits[lane] |= std::bit_cast<uint32_t>(samples[i + lane]);
    }
  for (; i < count; ++i) {
    spoilt[0] += samples[i] * 0.0f;
    bits[0] |= std::bit_cast<uint32_t>(samples[i]);
  }
  float sum = 0;
  uint32_t all = 0;
  for (int32_t lane = 0; lane < kLanes; ++lane) {
    sum += spoilt[lane];
    all |= bits[lane];
  }
  return {sum == 0, (all & 0x7FFFFFFFu) == 0};
}

}  // namespace bridge
