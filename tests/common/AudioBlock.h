#pragma once
// A block of audio of a test: one buffer per channel, each between two rows of guard samples.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "tests/common/TestRandom.h"

class AudioBlock {
 public:
  // Zeros.
  AudioBlock(int32_t channels, int32_t samples)
      : samples_(samples), buffers_(static_cast<std::size_t>(std::max(channels, 0))) {
    for (std::vector<float>& buffer : buffers_) {
      buffer.assign(static_cast<std::size_t>(samples) + 2 * kGuards, kGuard);
      std::fill_n(buffer.begin() + kGuards, samples, 0.0f);
    }
  }
  static AudioBlock Noise(int32_t channels, int32_t samples, TestRandom& random, double peak = 1) {
    return AudioBlock(channels, samples).Fill([&](int32_t) { return random.Real(-peak, peak); });
  }
  static AudioBlock Constant(int32_t channels, int32_t samples, double value) {
    return AudioBlock(channels, samples).Fill([&](int32_t) { return value; });
  }
  // 1 in the first sample of each channel, then zeros.
  static AudioBlock Impulse(int32_t channels, int32_t samples) {
    return AudioBlock(channels, samples).Fill([](int32_t i) { return i == 0 ? 1 : 0; });
  }

  // Sets each sample of each channel to function(its index).
  template <typename Function>
  AudioBlock& Fill(Function function) {
    for (int32_t c = 0; c < GetChannelCount(); ++c)
      for (int32_t i = 0; i < samples_; ++i) (*this)[c][i] = static_cast<float>(function(i));
    return *this;
  }

  int32_t GetChannelCount() const { return static_cast<int32_t>(buffers_.size()); }
  int32_t GetLength() const { return samples_; }
  float* operator[](int32_t channel) { return buffers_[static_cast<std::size_t>(channel)].data() + kGuards; }
  const float* operator[](int32_t channel) const {
    return buffers_[static_cast<std::size_t>(channel)].data() + kGuards;
  }
  // The addresses of all channels from a sample on, as a host hands them in; valid until the next call.
  float** From(int32_t sample = 0) {
    addresses_.clear();
    for (int32_t c = 0; c < GetChannelCount(); ++c) addresses_.push_back((*this)[c] + sample);
    return addresses_.data();
  }

  // The same bits in every sample and guard.
  bool operator==(const AudioBlock& other) const {
    return samples_ == other.samples_ && std::equal(buffers_.begin(), buffers_.end(), other.buffers_.begin(),
                                                    other.buffers_.end(), [](const auto& a, const auto& b) {
                                                      return !std::memcmp(a.data(), b.data(), 4 * a.size());
                                                    });
  }
  bool GuardsHold() const {
    return std::all_of(buffers_.begin(), buffers_.end(), [](const std::vector<float>& buffer) {
      const auto isGuard = [](float value) { return value == kGuard; };
      return std::all_of(buffer.begin(), buffer.begin() + kGuards, isGuard) &&
             std::all_of(buffer.end() - kGuards, buffer.end(), isGuard);
    });
  }
  bool IsFinite() const {
    return All([](float value) { return std::isfinite(value); });
  }
  bool IsZero() const {
    return All([](float value) { return value == 0; });
  }
  double GetPeak() const {
    double peak = 0;
    All([&](float value) { return peak = std::max(peak, std::abs(double{value})), true; });
    return peak;
  }
  // The largest difference of two samples, infinity when one is no number; both blocks have the same size.
  double GetDistance(const AudioBlock& other) const {
    double distance = 0;
    for (int32_t c = 0; c < GetChannelCount(); ++c) {
      for (int32_t i = 0; i < samples_; ++i) {
        const double difference = std::abs(double{(*this)[c][i]} - other[c][i]);
        distance = std::isnan(difference) ? INFINITY : std::max(distance, difference);
      }
    }
    return distance;
  }

 private:
  static constexpr int32_t kGuards = 16;
  static constexpr float kGuard = -54321.125f;

  template <typename Test>
  bool All(Test test) const {
    for (int32_t c = 0; c < GetChannelCount(); ++c)
      if (!std::all_of((*this)[c], (*this)[c] + samples_, test)) return false;
    return true;
  }

  int32_t samples_;
  std::vector<std::vector<float>> buffers_;
  std::vector<float*> addresses_;
};
