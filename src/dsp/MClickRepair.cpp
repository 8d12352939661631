#include "dsp/MClickRepair.h"

#include <algorithm>
#include <cmath>

#include "dsp/MFilter.h"

namespace {

constexpr int32_t kShortestBlock = 32;

void Draw(float* samples, int32_t count, double distance) {
  for (int32_t i = 0; i < count; ++i)
    samples[i] = MLimitToFloat(samples[i] + distance * (1 - static_cast<double>(i) / count));
}

}  // namespace

void MClickRepair::Run(float* const* out, int32_t channels, int32_t samples) noexcept {
  if (samples <= 0) return;
  const bool isWanted = isWanted_.exchange(false, std::memory_order_relaxed) && samples >= kShortestBlock;
  for (int32_t c = 0; c < std::min(channels, kChannels); ++c) {
    const double distance = 2 * double{last_[c]} - beforeLast_[c] - out[c][0];
    if (isWanted && std::isfinite(distance)) Draw(out[c], std::clamp(samples / 2, 16, 128), distance);
    beforeLast_[c] = samples > 1 ? out[c][samples - 2] : last_[c];
    last_[c] = out[c][samples - 1];
  }
}
