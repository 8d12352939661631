#pragma once
#include <vector>

#include "core/MMemory.h"
#include "dsp/MFirKernel.h"

// Finite impulse response in the time domain: y = gain sum over k of x[-k] tap[k], the newest sample first.
// Samples, taps and gains are float, and so are the sums. One to eight kernels serve one
// to eight channels, channel c the kernel c modulo their number.
//
// Each channel keeps its samples in a ring, and all channels share the place in it: a channel begins where
// the one before has ended. So with several channels a ring goes on without a seam only behind a block whose
// length is a multiple of the number of taps; behind another one it is read at another place than it was
// left. A sample that is not finite counts as 0.
class MFirFilter {
 public:
  M_LIBRARY_MEMORY

  static constexpr int32_t kMaximumKernels = 8;
  static constexpr int32_t kMaximumChannels = 8;

  MFirFilter();

  // Another format makes everything anew: taps and samples 0, gains 1, the place 0. The same one changes
  // nothing. Numbers of kernels and channels are limited to 1..8, channels at least as many as kernels, the
  // length to 1 and more. On a failure nothing changes. There is room for `mostLength` taps from then on:
  // other lengths up to that, with the same counts, allocate nothing.
  void SetFormat(int32_t kernels, int32_t length, int32_t channels, int32_t mostLength = 0);
  int32_t GetLength() const noexcept { return length_; }
  float* GetKernel(int32_t kernel) noexcept { return kernels_[static_cast<std::size_t>(kernel)].data(); }

  // Gives each kernel the gain that brings the sum of its magnitudes to 1; gain 1 where that is below 1e-20.
  void Normalize() noexcept;

  // Filters a block of the first channels; without a format it copies. `in` and `out` may be the same.
  // [audio]
  void Run(const float* const* in, float* const* out, int32_t channels, int32_t samples) noexcept;
  // As many zeros, with nothing put out. [audio]
  void Skip(int32_t channels, int32_t samples) noexcept;

 private:
  using Floats = std::vector<float, MAllocator<float>>;

  static constexpr int32_t kTurn = 512;  // samples of a channel that are filtered at once

  void Clear(int32_t length) noexcept;
  void RunTurn(std::size_t channel, const float* in, float* out, int32_t samples) noexcept;
  void Keep(Floats& ring, const float* line, int32_t samples) noexcept;
  void MovePlace(int64_t samples) noexcept;

  const MFirKernel& kernel_;
  int32_t length_ = 0;
  int32_t room_ = 0;      // taps that all have room for
  int32_t position_ = 0;  // in all rings, of the next sample, below the length
  std::vector<Floats, MAllocator<Floats>> kernels_;
  std::vector<Floats, MAllocator<Floats>> rings_;
  float gains_[kMaximumKernels] = {};
  Floats line_;  // what a turn reads, in the order of time
};
