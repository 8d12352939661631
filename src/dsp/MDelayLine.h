#pragma once
#include "core/MAudioBuffer.h"

// Memory of a delay: up to eight channels that are read and written at one position, which runs through the
// line in a circle. Lengths are in samples.
class MDelayLine {
 public:
  static constexpr double kLongestSeconds = 60;

  // The samples of a delay: at least 1, truncated, at most 2^23.
  static int32_t GetLength(int32_t sampleRate, double seconds) noexcept;

  // Makes an empty line of this length, with room for `capacity` samples if that is more. A failure raises
  // and leaves a line without channels. [host]
  void Set(int32_t channels, int32_t sampleRate, int32_t length, int32_t capacity);
  // Gives the line another length: rotates it so that the sample which would be read next comes first, cuts
  // it or lengthens it with zeros, and fades it out towards its end, or to its old end if that is nearer. The
  // position stays, unless it lies behind the end: then it is 0. A line without samples stays as it is, and
  // so does one that would need more memory than there is; within the capacity nothing allocates. [audio]
  void Fit(int32_t length);

  int32_t GetChannelCount() const noexcept { return buffer_.GetChannelCount(); }
  int32_t GetLength() const noexcept { return buffer_.GetLength(); }
  float* GetChannel(int32_t channel) noexcept { return buffer_.GetChannel(channel); }
  bool IsAllBelow(double threshold) const noexcept { return buffer_.IsAllBelow(threshold); }

  // Where all channels are read and written next, below the length.
  int32_t GetPosition() const noexcept { return position_; }
  // The samples from the position to the end.
  int32_t GetRun() const noexcept { return GetLength() - position_; }
  // Moves the position by as many samples, GetRun() at most.
  void Advance(int32_t samples) noexcept {
    position_ += samples;
    if (position_ >= GetLength()) position_ = 0;
  }

 private:
  MAudioBuffer buffer_;
  int32_t position_ = 0;
};
