#pragma once
// Notes of four oscillators and two noises behind one mixer, sample by sample and in double: each object
// keeps all that a note needs, and a block is computed object after object.

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include "dsp/MEnvelopeComputer.h"
#include "tests/effects/WaveModel.h"

namespace ToneloomModel {

using Sound = std::vector<std::vector<double>>;  // of a block, by channels

// One chain: an oscillator with its band pass and then its envelope, or a noise with its envelope and then
// its band pass.
struct Chain {
  bool isNoise = false;
  double length = 0.1, phase = 0;  // seconds, periods
  WaveModel wave;
  MEnvelopeData frequency;  // decimal logarithm of hertz
  bool hasLowPass = false, hasHighPass = false;
  double lowPassHertz = 2000, highPassHertz = 1000;
  MEnvelopeData gains;
  bool isEnabled = false;
  double volume = 1, pan = 0;
  int32_t mode = 0;  // add, ring, freq
};

// The common random numbers.
struct Random {
  uint32_t x = 0;
  double Next() {
    x = x * 214013 + 2531011;
    return (x >> 16 & 0x7fff) / 32767.0;
  }
};

class Filter {
 public:
  Filter(bool isHighPass, double hertz, double ratio, double rate) {
    double cutoff = std::clamp(hertz * ratio, 20.0, 20000.0);
    if (cutoff >= rate / 2) cutoff = 0.4999 * rate;
    const double q = 1 - 0.5, tangent = std::tan(std::numbers::pi * cutoff / rate);
    const double r = isHighPass ? double{1.38f} * q + double{0.02f} : double{1.3f} * q + double{0.1f};
    const double c = isHighPass ? tangent : 1 / tangent;
    const double g = 1 / ((c + r) * c + 1);
    b0_ = g + kBias;
    b1_ = isHighPass ? kBias - 2 * g : 2 * g + kBias;
    a1_ = kBias - 2 * (isHighPass ? c * c - 1 : 1 - c * c) * g;
    a2_ = kBias - (1 - r * c + c * c) * g;
  }
  double Run(double in) {
    const double x = in + kBias;
    const double y = b0_ * x + b1_ * x1_ + b0_ * x2_ + a1_ * y1_ + a2_ * y2_ + kBias;
    x2_ = x1_, x1_ = x, y2_ = y1_, y1_ = y;
    return y;
  }

 private:
  static constexpr double kBias = double{1e-25f};
  double b0_, b1_, a1_, a2_, x1_ = 0, x2_ = 0, y1_ = 0, y2_ = 0;
};

// A chain of a note. All channels of it are the same.
class Voice {
 public:
  Voice(const Chain& chain, double volume, double ratio, int32_t rate)
      : chain_(chain), volume_(static_cast<float>(volume)), phase_(chain.phase) {
    remaining_ = total_ = static_cast<int32_t>(std::clamp(rate * chain.length, 0.0, 2147483647.0));
    if (!chain.isNoise) {
      MEnvelopeData curve = chain.frequency;
      isFlat_ = curve.GetCount() == 2 && std::abs(curve[0].y - curve[1].y) < 1e-50;
      flat_ = std::pow(10.0, std::clamp(curve.GetCount() > 0 ? curve[0].y : 0, -6.0, 6.0));
      curve.ScaleX(total_, true);
      frequency_.Build(curve);
    }
    baseStep_ = ratio / rate;
    gains_.Build(chain.gains);
    if (chain.hasLowPass) filters_.emplace_back(false, chain.lowPassHertz, ratio, rate);
    if (chain.hasHighPass) filters_.emplace_back(true, chain.highPassHertz, ratio, rate);
  }

  bool HasFinished() const { return hasFinished_; }

  std::vector<double> Compute(std::size_t samples, Random& random) {
    std::vector<double> out(samples);
    const auto sounding = static_cast<std::size_t>(
        std::max(std::min<int64_t>(remaining_, static_cast<int64_t>(samples)), int64_t{0}));
    for (std::size_t i = 0; i < sounding; ++i)
      out[i] = chain_.isNoise ? (random.Next() - 0.5) * volume_ : Oscillate();
    remaining_ -= static_cast<int32_t>(sounding);
    hasFinished_ = remaining_ < 1;
    if (chain_.isNoise) Fade(out);
    for (Filter& filter : filters_)
      for (double& sample : out) sample = filter.Run(sample);
    if (!chain_.isNoise) Fade(out);
    return out;
  }

 private:
  double Oscillate() {
    const double sample = chain_.wave.Read(phase_) * volume_;
    const double hertz = isFlat_ ? flat_ : std::pow(10.0, std::clamp(frequency_.GetValue(time_), -6.0, 6.0));
    phase_ += hertz * baseStep_;
    time_ += 1;
    return sample;
  }
  void Fade(std::vector<double>& out) {
    for (double& sample : out) sample *= gains_.GetValue(faded_++ / std::max<double>(total_, 1));
  }

  const Chain& chain_;
  double volume_, phase_, baseStep_ = 0, flat_ = 0, time_ = 0, faded_ = 0;
  bool isFlat_ = false, hasFinished_ = false;
  int32_t total_ = 0, remaining_ = 0;
  MEnvelopeComputer frequency_, gains_;
  std::vector<Filter> filters_;
};

class Note {
 public:
  using Chains = std::array<Chain, 6>;

  Note(const Chains& chains, double volume, double ratio, int32_t rate, std::size_t channels)
      : chains_(chains), channels_(channels) {
    for (const Chain& chain : chains) {
      voices_.emplace_back();
      histories_.emplace_back(channels, std::vector<double>(kHistory));
      if (!chain.isEnabled) continue;
      const bool isModulator = chain.mode == 2 && hasVoice_;
      voices_.back().emplace_back(chain, isModulator ? 1 : volume, ratio, rate);
      hasVoice_ = true;
    }
  }

  // The next block, and whether the note has ended.
  std::pair<Sound, bool> Compute(std::size_t samples, Random& random) {
    Sound out(channels_, std::vector<double>(samples));
    std::size_t base = 0;
    while (base < 6 && voices_[base].empty()) ++base;
    if (base < 6 && voices_[base][0].HasFinished()) {
      base = 0;
      while (base < 6 && (voices_[base].empty() || chains_[base].mode != 0 || voices_[base][0].HasFinished()))
        ++base;
    }
    if (base == 6) return {out, true};
    out = Work(base, samples, random);
    for (std::size_t k = base + 1; k < 6; ++k)
      if (!voices_[k].empty()) Mix(out, k, samples, random);
    const bool hasEnded = std::all_of(voices_.begin(), voices_.end(), [](const std::vector<Voice>& voice) {
      return voice.empty() || voice[0].HasFinished();
    });
    return {out, hasEnded};
  }

 private:
  static constexpr std::size_t kHistory = 412;

  // A chain's block with its volume and pan.
  Sound Work(std::size_t k, std::size_t samples, Random& random) {
    Sound work(channels_, voices_[k][0].Compute(samples, random));
    const double v = chains_[k].volume, p = std::clamp(chains_[k].pan, -1.0, 1.0);
    const bool isPanned = channels_ == 2 && std::abs(p) > 1e-20;
    for (std::size_t i = 0; i < samples; ++i) {
      if (!isPanned) {
        for (std::vector<double>& channel : work) channel[i] *= v;
        continue;
      }
      const double left = work[0][i], right = work[1][i];
      work[0][i] = p > 0 ? left * (1 - p) * v : left * v + right * -p * v;
      work[1][i] = p > 0 ? right * v + left * p * v : right * (1 + p) * v;
    }
    return work;
  }

  void Mix(Sound& out, std::size_t k, std::size_t samples, Random& random) {
    const Chain& chain = chains_[k];
    const bool isActive = !voices_[k][0].HasFinished();
    Sound work(channels_, std::vector<double>(samples));
    if (isActive) work = Work(k, samples, random);
    for (std::size_t c = 0; c < channels_; ++c) {
      if (chain.mode == 0)
        for (std::size_t i = 0; i < samples; ++i) out[c][i] += work[c][i];
      if (chain.mode == 1)
        for (std::size_t i = 0; i < samples; ++i) out[c][i] *= work[c][i] + 1 - chain.volume;
      if (chain.mode == 2) Modulate(out[c], work[c], histories_[k][c], chain.volume);
    }
  }

  // All that went in so far stands in front of the block.
  static void Modulate(std::vector<double>& out, const std::vector<double>& work, std::vector<double>& signal,
                       double volume) {
    const auto start = static_cast<double>(signal.size());
    signal.insert(signal.end(), out.begin(), out.end());
    const double depth = std::clamp(std::trunc(volume * 200), 0.0, 200.0);
    for (std::size_t i = 0; i < out.size(); ++i) {
      const double position = std::clamp(work[i], -1.0, 1.0) * depth + static_cast<double>(i) - depth - 4;
      const double p = std::floor(position), t = position - p;
      const double* const y = signal.data() + static_cast<std::ptrdiff_t>(start + p);
      out[i] = y[0] + t * (0.5 * (y[1] - y[-1]) + t * (2 * y[1] + y[-1] - 0.5 * (5 * y[0] + y[2]) +
                                                       0.5 * t * (3 * (y[0] - y[1]) - y[-1] + y[2])));
    }
  }

  const Chains& chains_;
  std::size_t channels_;
  bool hasVoice_ = false;
  std::vector<std::vector<Voice>> voices_;  // one or none of each chain
  std::vector<Sound> histories_;
};

}  // namespace ToneloomModel
