#include "dsp/MAudioQueue.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int32_t kLongest = std::numeric_limits<int32_t>::max() / 2;

}  // namespace

void MAudioQueue::Prepare(int32_t channels, int32_t sampleRate, int32_t capacity) {
  Clear();
  storage_.sampleRate = sampleRate;
  const int32_t room = 2 * std::clamp(capacity, 1, kLongest);
  channels = std::clamp(channels, 0, MAudioBuffer::kMaximumChannels);
  const bool isEnough = channels == GetChannelCount() && room <= storage_.GetLength();
  if (!isEnough) storage_.SetSize(channels, room);
}

const float* MAudioQueue::GetChannel(int32_t channel) const noexcept {
  const float* const samples = storage_.GetChannel(channel);
  return samples ? samples + begin_ : nullptr;
}

// Lets `samples` more stand behind those that wait.
void MAudioQueue::MakeRoom(int32_t samples) {
  if (samples > kLongest - length_) MThrowOutOfMemory();
  const int32_t needed = length_ + samples;
  if (needed <= storage_.GetLength() - begin_) return;
  if (2 * needed > storage_.GetLength()) storage_.Resize(2 * needed, false);
  for (int32_t c = 0; c < GetChannelCount(); ++c) {
    float* const channel = storage_.GetChannel(c);
    std::copy_n(channel + begin_, length_, channel);
  }
  begin_ = 0;
}

void MAudioQueue::Append(const float* const* channels, int32_t samples) {
  if (samples < 1) return;
  MakeRoom(samples);
  for (int32_t c = 0; c < GetChannelCount(); ++c) {
    float* const to = storage_.GetChannel(c) + begin_ + length_;
    if (channels && channels[c])
      std::copy_n(channels[c], samples, to);
    else
      std::fill_n(to, samples, 0.0f);
  }
  length_ += samples;
}

void MAudioQueue::Read(float* const* channels, int32_t samples) noexcept {
  samples = std::max(samples, 0);
  const int32_t taken = std::min(samples, length_);
  for (int32_t c = 0; c < GetChannelCount(); ++c) {
    if (!channels[c]) continue;
    std::copy_n(GetChannel(c), taken, channels[c]);
    std::fill_n(channels[c] + taken, samples - taken, 0.0f);
  }
  Drop(taken);
}

void MAudioQueue::Drop(int32_t samples) noexcept {
  samples = std::clamp(samples, 0, length_);
  begin_ += samples;
  length_ -= samples;
  if (length_ == 0) begin_ = 0;
}

bool MAudioQueue::IsAllBelow(float threshold) const noexcept {
  for (int32_t c = 0; c < GetChannelCount(); ++c) {
    const float* const samples = GetChannel(c);
    int above = 0;  // no branch per sample
    for (int32_t i = 0; i < length_; ++i) above |= std::abs(samples[i]) > threshold;
    if (above) return false;
  }
  return true;
}
