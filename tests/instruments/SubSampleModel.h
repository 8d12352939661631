#pragma once
// What MRenderSubSamples has to make, in double and by the definition of the transform.

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "instruments/MSubSampleRenderer.h"
#include "tests/audiofiles/SubSampleFile.h"

class SubSampleModel {
 public:
  static constexpr int32_t kBins = 8192;
  static constexpr int32_t kHalf = kBins / 2;

  SubSampleModel(const SubSampleFile& file, const MSubSampleBands& bands, double colorOffset) {
    for (std::size_t b = 0; b < 10; ++b) {
      const SubSampleFile::Band& source = file.bands[b];
      if (source.sounds.empty()) continue;
      const auto last = static_cast<double>(source.sounds.size() - 1);
      const double index = std::clamp<double>(bands[b].index, 0, last);
      const auto i = static_cast<std::size_t>(index);
      Use(source.sounds[i]);
      if (index - std::floor(index) >= 1e-20 && index < last) Use(source.sounds[i + 1]);
    }
    channels.assign(channelCount, std::vector<double>(length));
    for (std::size_t c = 0; c < channelCount; ++c) {
      const std::vector<std::vector<double>> spectra =
          Sum(file, bands, c, static_cast<double>(c) * colorOffset);
      MakeSound(spectra, channels[c]);
    }
    Finish();
  }

  std::vector<std::vector<double>> channels;

 private:
  std::size_t frames = 0, length = 0, channelCount = 0;

  void Use(const SubSampleFile::Sound& sound) {
    frames = std::max(frames, static_cast<std::size_t>(sound.frames));
    length = std::max(length, static_cast<std::size_t>(std::max(sound.length, 0)));
    channelCount = std::max(channelCount, static_cast<std::size_t>(sound.channels));
  }

  std::vector<std::vector<double>> Sum(const SubSampleFile& file, const MSubSampleBands& bands,
                                       std::size_t channel, double a) const {
    std::vector<std::vector<double>> spectra(frames, std::vector<double>(kBins));
    for (std::size_t b = 0; b < 10; ++b) {
      const SubSampleFile::Band& source = file.bands[b];
      if (source.sounds.empty()) continue;
      const auto last = static_cast<double>(source.sounds.size() - 1);
      const double index = std::clamp<double>(bands[b].index, 0, last);
      const auto i = static_cast<std::size_t>(index);
      const double p = index - std::floor(index);
      double m = b % 2 == 1 ? p + a : p - a + 1000;
      m = std::fmod(m, 2);
      if (m > 1) m = 2 - m;
      const int32_t place = source.firstBin + bands[b].shift;
      Add(spectra, source, source.sounds[i], channel, place, (1 - m) * bands[b].volume);
      if (p >= 1e-20 && index < last)
        Add(spectra, source, source.sounds[i + 1], channel, place, m * bands[b].volume);
    }
    return spectra;
  }

  static void Add(std::vector<std::vector<double>>& spectra, const SubSampleFile::Band& band,
                  const SubSampleFile::Sound& sound, std::size_t channel, int32_t place, double gain) {
    const std::size_t from = channel % static_cast<std::size_t>(sound.channels);
    for (std::size_t f = 0; f < static_cast<std::size_t>(sound.frames); ++f) {
      for (int32_t k = 0; k < band.binCount; ++k) {
        if (place + k < 0 || place + k >= kBins) continue;
        const std::size_t row = from * static_cast<std::size_t>(sound.frames) + f;
        const std::size_t at = row * static_cast<std::size_t>(band.binCount) + static_cast<std::size_t>(k);
        spectra[f][static_cast<std::size_t>(place + k)] += gain * sound.values[at];
      }
    }
  }

  // 2/N times the inverse transform of a packed spectrum.
  static std::vector<double> Inverse(const std::vector<double>& packed) {
    static const std::vector<double> kCosine = [] {
      std::vector<double> table(kBins);
      for (int32_t i = 0; i < kBins; ++i)
        table[static_cast<std::size_t>(i)] = std::cos(2 * std::numbers::pi * i / kBins);
      return table;
    }();
    std::vector<double> sound(kBins);
    for (std::size_t s = 0; s < kBins; ++s) {
      if (packed[s] == 0) continue;
      const std::size_t k = s < 2 ? s * kHalf : s / 2;
      const double weight = (s < 2 ? 0.5 : 1) * packed[s] * 2 / kBins;
      const std::size_t turn = s >= 2 && s % 2 == 1 ? kBins - kBins / 4 : 0;  // a sine is a cosine, later
      for (std::size_t n = 0; n < kBins; ++n) sound[n] += weight * kCosine[(k * n + turn) % kBins];
    }
    return sound;
  }

  static void MakeSound(const std::vector<std::vector<double>>& spectra, std::vector<double>& out) {
    std::vector<double> tail(kHalf);
    std::size_t done = 0;
    for (const std::vector<double>& spectrum : spectra) {
      if (done >= out.size()) return;
      const std::vector<double> x = Inverse(spectrum);
      for (std::size_t i = 0; i < kHalf && done < out.size(); ++i, ++done) {
        const double w = static_cast<double>(i) / kHalf;
        out[done] = w * x[i] + (1 - w) * tail[i];
      }
      if (out.size() - done > kHalf) {
        tail.assign(x.begin() + kHalf, x.end());
        continue;
      }
      for (std::size_t i = kHalf; done < out.size(); ++i, ++done) out[done] = x[i];
      return;
    }
  }

  void Finish() {
    double peak = 0;
    for (const std::vector<double>& channel : channels)
      for (const double sample : channel) peak = std::max(peak, std::abs(sample));
    const auto end = static_cast<double>(length) - 1;
    for (std::vector<double>& channel : channels) {
      for (std::size_t i = 0; i < channel.size(); ++i) {
        if (peak > 0) channel[i] /= peak;
        if (i + 200 > length || length < 200)
          channel[i] *= 1 - (static_cast<double>(i) - (static_cast<double>(length) - 200)) / 199;
        if (static_cast<double>(i) == end) channel[i] = 0;
      }
    }
  }
};
