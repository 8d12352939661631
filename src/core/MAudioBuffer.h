#pragma once
#include "core/MObject.h"

// Samples of up to eight channels in 32-bit float, one block of memory per channel, with a zero guard sample
// in front and behind. Lengths are in samples. Memory that cannot be had raises "Out of memory."
//
// A buffer may be a view of samples that somebody else owns, for as long as they live: it has no guards, and
// is never resized (that raises "Service "MAudioBuffer::Reserve" is not implemented."). SetSize and Detach
// end the view.
class MAudioBuffer final : public MObject {
 public:
  static constexpr int32_t kMaximumChannels = 8;

  MAudioBuffer() noexcept = default;
  MAudioBuffer(const MAudioBuffer&) = delete;
  MAudioBuffer& operator=(const MAudioBuffer&) = delete;
  ~MAudioBuffer() override { Free(); }

  int32_t sampleRate = 44100;  // in hertz
  int32_t bitDepth = 16;       // of the source of the samples
  float peakFactor = 1;        // that a file's samples were multiplied with, or a renderer's result

  int32_t GetChannelCount() const noexcept { return channelCount_; }
  int32_t GetLength() const noexcept { return length_; }
  int32_t GetCapacity() const noexcept { return capacity_; }
  // The first sample of a channel below the count, null for another number; index -1 and index GetLength()
  // are the guards.
  float* GetChannel(int32_t channel) noexcept { return IsChannel(channel) ? channels_[channel] : nullptr; }
  const float* GetChannel(int32_t channel) const noexcept {
    return IsChannel(channel) ? channels_[channel] : nullptr;
  }

  // Sets the format, channels limited to 0..8, length to 0 and more. The same format is Reserve(capacity).
  // Another one makes the samples anew, as zeros, with room for `capacity` of them if that is more; on a
  // failure the buffer is then empty.
  void SetSize(int32_t channels, int32_t length, int32_t capacity = 0);
  // Makes room for `capacity` samples a channel and keeps what is there. On a failure nothing changes.
  void Reserve(int32_t capacity);
  // Becomes a view of `length` samples of each of the channels, of which eight are taken. Allocates nothing;
  // frees what the buffer had. [audio]
  void SetView(float* const* channels, int32_t count, int32_t length) noexcept;
  // Ends a view: the buffer is empty. One that has its own samples stays as it is. [audio]
  void Detach() noexcept;
  // Changes the length and keeps the samples that fit; with `clear` new samples are zero, without it
  // undefined. A length within the capacity needs no memory; length 0 frees the buffer. On a failure nothing
  // changes.
  void Resize(int32_t length, bool clear);

  // Sets all samples to 0. [audio]
  void Clear() noexcept;
  // Shifts all channels cyclically by `offset` towards higher indices. [audio]
  void Rotate(int32_t offset) noexcept;
  // Multiplies the samples `begin` to `end`, both included, with a gain that runs linearly between the two
  // given, g(i) = beginGain + (endGain - beginGain) (i - begin) / (end - begin). The gain's line runs over
  // the given range, also where it lies outside of the buffer; a range outside, or of one sample, changes
  // nothing. begin > end raises "Begin cannot follow the end in fade-in/out processing." [audio]
  void Fade(int32_t begin, double beginGain, int32_t end, double endGain);
  // True if no sample's magnitude is above the threshold. NaN is not above. [audio]
  bool IsAllBelow(double threshold) const noexcept;

 private:
  static bool IsChannel(int32_t channel) noexcept { return channel >= 0 && channel < kMaximumChannels; }
  static float* NewChannel(int32_t capacity);
  void Free() noexcept;
  void SetGuards() noexcept;

  int32_t channelCount_ = 0;
  int32_t length_ = 0;
  int32_t capacity_ = 0;
  bool isView_ = false;
  float* channels_[kMaximumChannels] = {};
};
