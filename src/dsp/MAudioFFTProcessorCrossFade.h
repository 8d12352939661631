#pragma once
#include <vector>

#include "dsp/MAudioQueue.h"
#include "dsp/MRealFFT.h"

// Processes a stream in the spectral domain. Blocks of N samples, N/2 apart, are transformed, changed by a
// callback and transformed back; adjacent blocks are not added, they fade over in a straight line of N/2
// samples: out[i] = new[i] w + old[i] (1 - w), w = i / (N/2). Blocks that nobody changes thus give the input
// back, N + N/2 samples late. The first block begins without a fade.
//
// Samples go from a queue to a queue, both of which the owner holds, prepares and empties, for instance with
// room for a block of the host and 3 N more. Where the two have different numbers of channels, the source's
// further ones are lost and the destination's further ones are silent.
class MAudioFFTProcessorCrossFade final : public MObject {
 public:
  // Changes the spectrum of a block of one channel, `size` floats in MRealFFT's layout. [audio]
  using Callback = void(float* spectrum, int32_t size, void* user);

  // N as MRealFFT takes it. Without a callback the spectra stay as they are.
  MAudioFFTProcessorCrossFade(MAudioQueue& source, MAudioQueue& destination, int32_t blockSize,
                              Callback* callback, void* user);
  MAudioFFTProcessorCrossFade(const MAudioFFTProcessorCrossFade&) = delete;
  MAudioFFTProcessorCrossFade& operator=(const MAudioFFTProcessorCrossFade&) = delete;

  // Resets, and makes the buffers in the source's format. Raises "Out of memory." [any, not audio]
  void Prepare();
  // Processes as many blocks as the source holds. The first call appends the silence of the latency to the
  // destination, also if the source is empty. All blocks of a channel are called back in order: N samples
  // after N samples, and there one channel after the other. Allocates only where `Prepare` was left out, the
  // source has other channels since, or a queue has no room. [audio]
  void Run();
  // Forgets all but the two queues; the next call is a first one. [audio]
  void Reset() noexcept;
  // True if nothing above 0.0001 is left, neither here nor in the queues. [audio]
  bool IsTailSilent() const noexcept;
  int32_t GetLatency() const noexcept { return size_ + half_; }

  // The last N/2 samples that were read, and those that the next block fades over from, with zeros behind.
  const MAudioBuffer& GetHistory() const noexcept { return history_; }
  const MAudioBuffer& GetTail() const noexcept { return tail_; }

 private:
  void SetFormat();
  void RunFirst();
  void RunNext();
  void TakeSamples(int32_t offset);
  void PutSamples(int32_t samples);
  void Transform(const float* samples);
  void FadeOver(float* to) const noexcept;

  MAudioQueue& source_;
  MAudioQueue& destination_;
  const MRealFFT transform_;
  const int32_t size_;  // N
  const int32_t half_;
  const float scale_;  // 2 / N, a power of two
  Callback* const callback_;
  void* const user_;
  MAudioBuffer history_;  // N + N/2 samples
  MAudioBuffer tail_;
  std::vector<float, MAllocator<float>> frame_;
  bool isStarted_ = false;
  bool isEmpty_ = true;  // no block since the start
};
