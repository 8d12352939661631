#include "dsp/MFirFilter.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "dsp/MFilter.h"
#include "dsp/MProcessor.h"

MFirFilter::MFirFilter() : kernel_(MHasAVX2() ? kFirWide : kFirBaseline) {}

void MFirFilter::SetFormat(int32_t kernels, int32_t length, int32_t channels, int32_t mostLength) {
  const auto kernelCount = static_cast<std::size_t>(std::clamp(kernels, 1, kMaximumKernels));
  const auto channelCount =
      std::max(kernelCount, static_cast<std::size_t>(std::clamp(channels, 1, kMaximumChannels)));
  length = std::max(length, 1);
  if (kernelCount == kernels_.size() && channelCount == rings_.size() && length == length_) return;
  if (kernelCount == kernels_.size() && channelCount == rings_.size() && length <= room_)
    return Clear(length);
  const int32_t room = std::max(length, mostLength);
  const auto taps = static_cast<std::size_t>(room);
  decltype(kernels_) newKernels(kernelCount, Floats(taps));
  decltype(rings_) newRings(channelCount, Floats(taps));
  Floats newLine(taps + kTurn + MFirKernel::kPadding);
  kernels_.swap(newKernels);
  rings_.swap(newRings);
  line_.swap(newLine);
  room_ = room;
  Clear(length);
}

void MFirFilter::Clear(int32_t length) noexcept {
  const auto taps = static_cast<std::size_t>(length);
  for (Floats& kernel : kernels_) kernel.assign(taps, 0.0f);
  for (Floats& ring : rings_) ring.assign(taps, 0.0f);
  line_.assign(taps + kTurn + MFirKernel::kPadding, 0.0f);
  std::fill(std::begin(gains_), std::end(gains_), 1.0f);
  length_ = length;
  position_ = 0;
}

void MFirFilter::Normalize() noexcept {
  for (std::size_t i = 0; i < kernels_.size(); ++i) {
    double sum = 0;
    for (const float tap : kernels_[i]) sum += std::abs(tap);
    gains_[i] = sum < 1e-20 ? 1.0f : static_cast<float>(1 / sum);
  }
}

void MFirFilter::MovePlace(int64_t samples) noexcept {
  position_ = static_cast<int32_t>((position_ + samples) % length_);
}

// The last of `samples` into the ring, and the place behind them; null is zeros.
void MFirFilter::Keep(Floats& ring, const float* line, int32_t samples) noexcept {
  const int32_t kept = std::min(samples, length_);
  MovePlace(samples - kept);
  const int32_t first = std::min(kept, length_ - position_);
  const auto copy = [&](int32_t place, int32_t from, int32_t count) {
    float* const to = ring.data() + place;
    if (line)
      std::copy_n(line + samples - kept + from, count, to);
    else
      std::fill_n(to, count, 0.0f);
  };
  copy(position_, 0, first);
  copy(0, first, kept - first);
  MovePlace(kept);
}

void MFirFilter::RunTurn(std::size_t channel, const float* in, float* out, int32_t samples) noexcept {
  Floats& ring = rings_[channel];
  const auto place = ring.begin() + position_;
  const auto later = std::copy(place + 1, ring.end(), line_.begin());  // the place itself is written next
  float* const input = &*std::copy(ring.begin(), place, later);
  for (int32_t i = 0; i < samples; ++i) input[i] = MCleanSample(in[i]);

  const std::size_t kernel = channel % kernels_.size();
  kernel_.run(kernels_[kernel].data(), length_, gains_[kernel], line_.data(), out, samples);
  Keep(ring, input, samples);
}

void MFirFilter::Run(const float* const* in, float* const* out, int32_t channels, int32_t samples) noexcept {
  const auto count = static_cast<std::size_t>(std::clamp(channels, 0, kMaximumChannels));
  for (std::size_t c = 0; c < count; ++c) {
    if (c >= rings_.size()) {
      std::memmove(out[c], in[c], static_cast<std::size_t>(samples) * sizeof(float));
      continue;
    }
    for (int32_t done = 0; done < samples; done += kTurn)
      RunTurn(c, in[c] + done, out[c] + done, std::min(samples - done, kTurn));
  }
}

void MFirFilter::Skip(int32_t channels, int32_t samples) noexcept {
  if (length_ == 0) return;
  const auto count =
      std::min(static_cast<std::size_t>(std::clamp(channels, 0, kMaximumChannels)), rings_.size());
  for (std::size_t c = 0; c < count; ++c) Keep(rings_[c], nullptr, samples);
}
