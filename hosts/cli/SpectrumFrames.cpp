#include "hosts/cli/SpectrumFrames.h"

#include <algorithm>
#include <cmath>

namespace cli {

FrameReader::FrameReader(const std::string& path)
    : reader_(path),
      channels_(reader_.GetFormat().channels),
      interleaved_(static_cast<std::size_t>(kSize) * static_cast<std::size_t>(channels_)),
      planes_(interleaved_.size()) {}

bool FrameReader::Next() {
  const int32_t kept = isFirst_ ? 0 : kHop;
  const auto read = static_cast<int32_t>(reader_.Read(interleaved_.data(), kSize - kept));
  if (read == 0) return false;
  isFirst_ = false;
  length_ += read;
  for (int32_t c = 0; c < channels_; ++c) {
    float* const plane = planes_.data() + static_cast<std::ptrdiff_t>(c) * kSize;
    std::copy_n(plane + kSize - kept, kept, plane);
    std::fill(plane + kept, plane + kSize, 0.0f);
    for (int32_t i = 0; i < read; ++i)
      plane[kept + i] = interleaved_[static_cast<std::size_t>(i * channels_ + c)];
  }
  return true;
}

std::optional<double> Difference::GetRatio() const noexcept {
  if (!(signal_ > 0 && noise_ > 0)) return std::nullopt;
  return 10 * std::log10(signal_ / noise_);
}

void FrameComparison::Add(const float* frame, const float* again, Difference& difference) {
  constexpr float kScale = 2.0f / FrameReader::kSize;
  for (int32_t i = 0; i < FrameReader::kHop; ++i) {
    float& tail = tail_[static_cast<std::size_t>(i)];
    const float rise = static_cast<float>(i) / FrameReader::kHop;
    if (!isFirst_) difference.Add(frame[i], rise * (kScale * again[i]) + (1 - rise) * tail);
    tail = kScale * again[FrameReader::kHop + i];
  }
  isFirst_ = false;
}

void FrameComparison::Finish(const float* frame, Difference& difference) const {
  for (int32_t i = 0; i < FrameReader::kHop; ++i)
    difference.Add(frame[FrameReader::kHop + i], tail_[static_cast<std::size_t>(i)]);
}

}  // namespace cli
