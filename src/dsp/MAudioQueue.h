#pragma once
#include "core/MAudioBuffer.h"

// Samples of up to eight channels that are appended behind and taken from the front. Those that wait lie
// together, so that a reader needs no wrap. The memory holds twice what was asked for, and the samples move
// to its front when its end is reached: in the mean less than once each.
class MAudioQueue final : public MObject {
 public:
  // Empties the queue and sets its format, channels limited to 0..8. The next `capacity` samples and no more
  // can then wait without further memory. Raises "Out of memory.", and the queue then has no channels.
  // [any, not audio]
  void Prepare(int32_t channels, int32_t sampleRate, int32_t capacity);
  // Makes it empty and keeps format and memory. [audio]
  void Clear() noexcept { begin_ = length_ = 0; }

  int32_t GetChannelCount() const noexcept { return storage_.GetChannelCount(); }
  int32_t GetSampleRate() const noexcept { return storage_.sampleRate; }
  int32_t GetLength() const noexcept { return length_; }  // samples that wait
  // The oldest sample of a channel below the count, null for another number.
  const float* GetChannel(int32_t channel) const noexcept;

  // Appends `samples` of each channel; a channel that is null, or all when `channels` is null, gets zeros. A
  // count below 1 does nothing. Beyond the capacity it allocates; on a failure nothing changes. [audio]
  void Append(const float* const* channels, int32_t samples);
  // Takes the oldest samples; what is missing reads as 0. A channel that is null is left out. [audio]
  void Read(float* const* channels, int32_t samples) noexcept;
  // Forgets the oldest samples. [audio]
  void Drop(int32_t samples) noexcept;
  // True if no magnitude of a waiting sample is above the threshold. NaN is not above. [audio]
  bool IsAllBelow(float threshold) const noexcept;

 private:
  void MakeRoom(int32_t samples);

  MAudioBuffer storage_;  // all of it counts as its length
  int32_t begin_ = 0;
  int32_t length_ = 0;
};
