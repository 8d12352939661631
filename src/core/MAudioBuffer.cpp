#include "core/MAudioBuffer.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/MException.h"
#include "core/MTranslate.h"

// A channel's block with room for `capacity` samples between its two guards.
float* MAudioBuffer::NewChannel(int32_t capacity) {
  return MAllocator<float>().allocate(static_cast<std::size_t>(capacity) + 2) + 1;
}

void MAudioBuffer::Free() noexcept {
  for (float*& channel : channels_) {
    if (channel && !isView_) MRelease(channel - 1);
    channel = nullptr;
  }
  channelCount_ = length_ = capacity_ = 0;
  isView_ = false;
}

void MAudioBuffer::SetGuards() noexcept {
  for (int32_t c = 0; c < channelCount_; ++c) channels_[c][-1] = channels_[c][length_] = 0;
}

void MAudioBuffer::SetSize(int32_t channels, int32_t length, int32_t capacity) {
  channels = std::clamp(channels, 0, kMaximumChannels);
  length = std::max(length, 0);
  if (channels == channelCount_ && length == length_ && !isView_) return Reserve(capacity);
  capacity = std::max(capacity, length);
  if (channels == channelCount_ && capacity == capacity_ && !isView_) {
    length_ = length;
    Clear();
    return SetGuards();
  }
  Free();
  try {
    for (int32_t c = 0; c < channels; ++c) channels_[c] = NewChannel(capacity);
  } catch (...) {
    Free();
    throw;
  }
  channelCount_ = channels;
  length_ = length;
  capacity_ = capacity;
  Clear();
  SetGuards();
}

void MAudioBuffer::SetView(float* const* channels, int32_t count, int32_t length) noexcept {
  Free();
  isView_ = true;
  channelCount_ = std::clamp(count, 0, kMaximumChannels);
  length_ = capacity_ = std::max(length, 0);
  std::copy_n(channels, channelCount_, channels_);
}

void MAudioBuffer::Detach() noexcept {
  if (isView_) Free();
}

void MAudioBuffer::Reserve(int32_t capacity) {
  if (isView_) MThrowNotImplemented("MAudioBuffer::Reserve");
  if (capacity <= capacity_) return;
  float* grown[kMaximumChannels] = {};
  try {
    for (int32_t c = 0; c < channelCount_; ++c) grown[c] = NewChannel(capacity);
  } catch (...) {
    for (float* channel : grown)
      if (channel) MRelease(channel - 1);
    throw;
  }
  for (int32_t c = 0; c < channelCount_; ++c) {
    std::copy_n(channels_[c] - 1, int64_t{length_} + 2, grown[c] - 1);
    MRelease(channels_[c] - 1);
    channels_[c] = grown[c];
  }
  capacity_ = capacity;
}

void MAudioBuffer::Resize(int32_t length, bool clear) {
  if (length <= 0) return Free();
  Reserve(length);
  for (int32_t c = 0; c < channelCount_ && clear && length > length_; ++c)
    std::fill(channels_[c] + length_, channels_[c] + length, 0.0f);
  length_ = length;
  SetGuards();
}

void MAudioBuffer::Clear() noexcept {
  for (int32_t c = 0; c < channelCount_; ++c) std::fill_n(channels_[c], length_, 0.0f);
}

void MAudioBuffer::Rotate(int32_t offset) noexcept {
  if (length_ == 0) return;
  int32_t shift = offset % length_;
  if (shift < 0) shift += length_;
  if (shift == 0) return;
  for (int32_t c = 0; c < channelCount_; ++c)
    std::rotate(channels_[c], channels_[c] + (length_ - shift), channels_[c] + length_);
}

void MAudioBuffer::Fade(int32_t begin, double beginGain, int32_t end, double endGain) {
  if (begin > end) throw MException(Translate("Begin cannot follow the end in fade-in/out processing."));
  if (end < 0 || begin >= length_ || begin == end) return;
  const int32_t first = std::max(begin, 0);
  const int32_t last = std::min(end, length_ - 1);
  const double rise = endGain - beginGain;
  const double run = static_cast<double>(end) - begin;
  for (int32_t c = 0; c < channelCount_; ++c) {
    float* const samples = channels_[c];
    for (int32_t i = first; i <= last; ++i) {
      const double gain = beginGain + rise * (static_cast<double>(i) - begin) / run;
      samples[i] = static_cast<float>(samples[i] * gain);
    }
  }
}

bool MAudioBuffer::IsAllBelow(double threshold) const noexcept {
  // A float is above the threshold exactly if it is above the largest float that is not.
  float limit = static_cast<float>(threshold);
  if (limit > threshold) limit = std::nextafter(limit, -std::numeric_limits<float>::infinity());
  constexpr int64_t kChunk = 1024;  // no branch per sample, and a loud line is left early
  for (int32_t c = 0; c < channelCount_; ++c) {
    for (int64_t start = 0; start < length_; start += kChunk) {
      const int64_t end = std::min(start + kChunk, int64_t{length_});
      int above = 0;
      for (int64_t i = start; i < end; ++i) above |= std::abs(channels_[c][i]) > limit;
      if (above) return false;
    }
  }
  return true;
}
