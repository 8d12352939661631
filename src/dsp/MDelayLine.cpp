#include "dsp/MDelayLine.h"

#include <algorithm>

#include "core/MException.h"

int32_t MDelayLine::GetLength(int32_t sampleRate, double seconds) noexcept {
  constexpr int32_t kLongest = 1 << 23;
  return static_cast<int32_t>(std::clamp<double>(sampleRate * seconds, 1, kLongest));
}

void MDelayLine::Set(int32_t channels, int32_t sampleRate, int32_t length, int32_t capacity) {
  position_ = 0;
  buffer_.sampleRate = sampleRate;
  buffer_.SetSize(channels, length, capacity);
  buffer_.Clear();
}

void MDelayLine::Fit(int32_t length) {
  const int32_t before = GetLength();
  if (before == 0 || length == before) return;
  try {
    buffer_.Reserve(length);
  } catch (const MException&) {
    return;
  }
  buffer_.Rotate(before - position_);
  buffer_.Resize(length, true);
  buffer_.Fade(0, 1.0, std::min(before, length), 0.0);
  if (position_ >= length) position_ = 0;  // and otherwise stays, though the samples have moved
}
