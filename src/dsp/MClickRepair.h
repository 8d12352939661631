#pragma once
#include <atomic>

#include "core/MTypes.h"

// Takes away the step that a change of a filter leaves in its output. The first block of n >= 32 samples
// behind a request is drawn to where the last two samples before it were heading: with p0 the last one and p1
// the one before,
//   d = 2 p0 - p1 - x[0],  y[i] = x[i] + d (1 - i/m) for i < m,  m = n/2, limited to 16..128.
// A shorter block drops the request without a repair; an empty one changes nothing. Samples are float, sums
// double. Serves eight channels, further ones pass. Without a request in it, a block is only read. Where d is
// not finite there is no repair.
class MClickRepair {
 public:
  static constexpr int32_t kChannels = 8;

  void Request() noexcept { isWanted_.store(true, std::memory_order_relaxed); }  // [any]

  // Repairs a block of output in place, if that is asked for, and remembers its end. [audio]
  void Run(float* const* out, int32_t channels, int32_t samples) noexcept;

 private:
  std::atomic<bool> isWanted_ = false;
  float last_[kChannels] = {};        // p0
  float beforeLast_[kChannels] = {};  // p1
};
