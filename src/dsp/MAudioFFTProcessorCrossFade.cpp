#include "dsp/MAudioFFTProcessorCrossFade.h"

#include <algorithm>

namespace {

// Moves all channels by `samples` to the left, with zeros behind.
void ShiftLeft(MAudioBuffer& buffer, int32_t samples) {
  const int32_t kept = buffer.GetLength() - samples;
  for (int32_t c = 0; c < buffer.GetChannelCount(); ++c) {
    float* const channel = buffer.GetChannel(c);
    std::copy_n(channel + samples, kept, channel);
    std::fill_n(channel + kept, samples, 0.0f);
  }
}

}  // namespace

MAudioFFTProcessorCrossFade::MAudioFFTProcessorCrossFade(MAudioQueue& source, MAudioQueue& destination,
                                                         int32_t blockSize, Callback* callback, void* user)
    : source_(source),
      destination_(destination),
      transform_(blockSize),
      size_(transform_.GetSize()),
      half_(size_ / 2),
      scale_(size_ > 0 ? 2.0f / static_cast<float>(size_) : 0),
      callback_(callback),
      user_(user),
      frame_(static_cast<std::size_t>(size_)) {}

void MAudioFFTProcessorCrossFade::SetFormat() {
  for (MAudioBuffer* buffer : {&history_, &tail_}) {
    buffer->SetSize(source_.GetChannelCount(), size_ + half_);
    buffer->sampleRate = source_.GetSampleRate();
  }
}

void MAudioFFTProcessorCrossFade::Prepare() {
  Reset();
  SetFormat();
}

void MAudioFFTProcessorCrossFade::Reset() noexcept {
  history_.Clear();
  tail_.Clear();
  isStarted_ = false;
  isEmpty_ = true;
}

void MAudioFFTProcessorCrossFade::Run() {
  if (size_ == 0) return;
  if (!isStarted_) {
    destination_.Append(nullptr, GetLatency());
    isStarted_ = true;
  }
  while (source_.GetLength() >= size_) {
    if (isEmpty_ || history_.GetChannelCount() != source_.GetChannelCount())
      RunFirst();
    else
      RunNext();
  }
}

void MAudioFFTProcessorCrossFade::RunFirst() {
  SetFormat();
  TakeSamples(0);
  for (int32_t c = 0; c < tail_.GetChannelCount(); ++c) {
    Transform(history_.GetChannel(c));
    for (int32_t i = 0; i < size_; ++i) tail_.GetChannel(c)[i] = frame_[static_cast<std::size_t>(i)] * scale_;
  }
  PutSamples(half_);
  isEmpty_ = false;
}

void MAudioFFTProcessorCrossFade::RunNext() {
  TakeSamples(half_);
  for (int32_t c = 0; c < tail_.GetChannelCount(); ++c) {
    for (const int32_t begin : {0, half_}) {
      Transform(history_.GetChannel(c) + begin);
      FadeOver(tail_.GetChannel(c) + begin);
    }
  }
  PutSamples(size_);
}

// N samples from the source to the history.
void MAudioFFTProcessorCrossFade::TakeSamples(int32_t offset) {
  float* to[MAudioBuffer::kMaximumChannels];
  for (int32_t c = 0; c < MAudioBuffer::kMaximumChannels; ++c)
    to[c] = history_.GetChannel(c) ? history_.GetChannel(c) + offset : nullptr;
  source_.Read(to, size_);
}

// The tail's finished samples to the destination.
void MAudioFFTProcessorCrossFade::PutSamples(int32_t samples) {
  const float* from[MAudioBuffer::kMaximumChannels];
  for (int32_t c = 0; c < MAudioBuffer::kMaximumChannels; ++c) from[c] = tail_.GetChannel(c);
  destination_.Append(from, samples);
  ShiftLeft(history_, samples);
  ShiftLeft(tail_, samples);
}

// A block through the chain, up to the factor of 2 / N.
void MAudioFFTProcessorCrossFade::Transform(const float* samples) {
  std::copy_n(samples, size_, frame_.data());
  transform_.Forward(frame_.data());
  if (callback_) callback_(frame_.data(), size_, user_);
  transform_.Inverse(frame_.data());
}

void MAudioFFTProcessorCrossFade::FadeOver(float* to) const noexcept {
  const float* const frame = frame_.data();
  const float step = 1.0f / static_cast<float>(half_);  // exact, and so is each weight
  for (int32_t i = 0; i < half_; ++i) {
    const float weight = static_cast<float>(i) * step;
    to[i] = frame[i] * scale_ * weight + to[i] * (1 - weight);
  }
  for (int32_t i = half_; i < size_; ++i) to[i] = frame[i] * scale_;
}

bool MAudioFFTProcessorCrossFade::IsTailSilent() const noexcept {
  constexpr float kSilence = 0.0001f;  // rounded down, so the largest float that is not above
  return history_.IsAllBelow(kSilence) && tail_.IsAllBelow(kSilence) && source_.IsAllBelow(kSilence) &&
         destination_.IsAllBelow(kSilence);
}
