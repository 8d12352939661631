#include "effects/LumascopeSpectrum.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double kPeakDecay = 0.99;

// The magnitudes of the bins of a spectrum, times a scale, in its first half.
void MeasureBins(float* spectrum, int32_t bins, float scale) noexcept {
  for (int32_t k = 0; k < bins; ++k) {
    const float re = spectrum[2 * k] * scale;
    const float im = spectrum[2 * k + 1] * scale;
    const float level = std::sqrt(re * re + im * im);
    spectrum[k] = level <= std::numeric_limits<float>::max() ? level : 0;
  }
}

}  // namespace

double LumascopeSpectrum::GetFrequency(int32_t point) noexcept {
  constexpr double kStep = 1.0 / kPoints;
  const double low = std::log10(kLowestFrequency);
  const double step = (std::log10(kHighestFrequency) - low) * kStep;
  return std::pow(10, low + (point + 0.5) * step);
}

int32_t LumascopeSpectrum::CountFrames(const Settings& settings) const noexcept {
  const double perSecond = static_cast<double>(settings.sampleRate) / settings.size / (1 - settings.overlap);
  return static_cast<int32_t>(std::clamp(settings.averageSeconds * perSecond, 1.0, double{kMostFrames}));
}

void LumascopeSpectrum::Set(const Settings& settings) {
  const int32_t frames = CountFrames(settings);
  const bool isResized = settings.size != settings_.size || settings.sampleRate != settings_.sampleRate;
  const bool isReset = isResized || frames != frameCount_ || settings.overlap != settings_.overlap;
  std::vector<float, MAllocator<float>> ring;
  if (frames != frameCount_ && frames > 1) ring.resize(static_cast<std::size_t>(frames) * kPoints);
  if (settings.size != GetSize()) SetSize(settings.size);
  if (isResized) Place(settings.size, settings.sampleRate);
  if (frames != frameCount_) {
    const MLocker locker(lock_);
    ring_.swap(ring);
    frameCount_ = frames;
  }
  SetOverlap(settings.overlap);
  settings_ = settings;
  if (isReset) Reset();
  if (settings.window != GetWindow().GetType()) SetWindowType(settings.window);
}

void LumascopeSpectrum::Place(int32_t size, int32_t sampleRate) noexcept {
  const double highest = (sampleRate - 2) / 2.0;
  for (int32_t i = 0; i < kPoints; ++i) {
    const double frequency = std::max(std::min(GetFrequency(i), highest), 0.0);
    positions_[i] = static_cast<float>(frequency * size / sampleRate);
  }
  const int32_t last = size / 2 - 1;
  const auto whole = [&](int32_t i) { return std::min(static_cast<int32_t>(positions_[i]), last); };
  int32_t i = 0;
  for (; i < kPoints && (i == 0 || positions_[i] - positions_[i - 1] < 1); ++i)
    sources_[i] = {whole(i), 0, positions_[i] - static_cast<float>(whole(i))};
  for (; i < kPoints && whole(i) > whole(i - 1); ++i)
    sources_[i] = {whole(i - 1), whole(i) - whole(i - 1), 0};
  sourceCount_ = i;
}

void LumascopeSpectrum::Reset() {
  MAudioFFTReader::Reset();
  const MLocker locker(lock_);
  std::fill(ring_.begin(), ring_.end(), 0.0f);
  std::fill_n(sum_, kPoints, 0.0);
  std::fill_n(peaks_, kPoints, 0.0f);
  next_ = 0;
}

void LumascopeSpectrum::HandleSpectrum(int32_t size, float* spectrum) {
  const int32_t bins = size / 2;
  MeasureBins(spectrum, bins, 1 / GetWindow().GetSum());
  Reduce(spectrum, bins);
  AddFrame();
}

void LumascopeSpectrum::Reduce(const float* levels, int32_t bins) noexcept {
  for (int32_t i = 0; i < sourceCount_; ++i) {
    const Source& source = sources_[i];
    const float* const first = levels + source.first;
    if (source.count == 0) {
      const float next = levels[std::min(source.first + 1, bins - 1)];
      frame_[i] = *first + (next - *first) * source.fraction;
      continue;
    }
    double sum = 0;
    for (int32_t k = 0; k < source.count; ++k) sum += first[k];
    frame_[i] = static_cast<float>(sum / source.count);
  }
  std::fill(frame_ + sourceCount_, frame_ + kPoints, 0.0f);
}

void LumascopeSpectrum::AddFrame() {
  const MLocker locker(lock_);
  if (frameCount_ > 1) {
    float* const oldest = ring_.data() + next_ * kPoints;
    for (int32_t i = 0; i < kPoints; ++i) {
      sum_[i] += double{frame_[i]} - double{oldest[i]};
      oldest[i] = frame_[i];
    }
    next_ = next_ + 1 < frameCount_ ? next_ + 1 : 0;
  } else {
    std::copy_n(frame_, kPoints, sum_);
  }
  for (int32_t i = 0; i < kPoints; ++i)
    peaks_[i] = std::max(static_cast<float>(peaks_[i] * kPeakDecay), frame_[i]);
}

void LumascopeSpectrum::Skip(int32_t samples) {
  const int32_t size = GetSize();
  const int32_t hop = size - static_cast<int32_t>(size * settings_.overlap);
  // Behind so many zeros every sample that waits and every frame is zero, and a hop gives a frame.
  const int64_t settling = size + int64_t{hop} * frameCount_;
  FeedSilence(static_cast<int32_t>(std::min<int64_t>(samples, settling)));
  if (samples <= settling) return;
  const auto left = static_cast<int32_t>(samples - settling);
  FeedSilence(left % hop);
  const double decay = std::pow(kPeakDecay, left / hop);
  const MLocker locker(lock_);
  for (float& peak : peaks_) peak = static_cast<float>(peak * decay);
}

void LumascopeSpectrum::Read(double (&mean)[kPoints], double (&peaks)[kPoints]) const {
  const MLocker locker(lock_);
  for (int32_t i = 0; i < kPoints; ++i) mean[i] = std::max(sum_[i], 0.0) / frameCount_;
  std::copy_n(peaks_, kPoints, peaks);
}
