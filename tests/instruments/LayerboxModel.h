#pragma once
// A multisample and the notes of Layerbox, as plain as they are told: which samples of which take are in
// memory, and what a note makes of them, in double.

#include <algorithm>
#include <array>
#include <memory>

#include "tests/instruments/RecordingModel.h"

namespace LayerboxModel {

using RecordingModel::Curve;
using RecordingModel::Recording;

// The common random numbers.
struct Random {
  uint32_t x = 0;
  uint32_t Next() {
    x = x * 214013 + 2531011;
    return x >> 16;
  }
};

struct Take {
  double loudness = 1;
  int32_t group = 0;
  std::vector<Recording> tracks;  // as in the file
  // What is in memory; empty where nothing is.
  std::vector<Recording> whole, head;
  bool isLoaded = false;

  int32_t GetLength() const {
    std::size_t length = 0;
    for (const Recording& track : tracks) length = std::max(length, track[0].size());
    return static_cast<int32_t>(length);
  }
};

class MultiSample {
 public:
  struct Layer {
    double loudness;
    int32_t first, last;
  };

  MultiSample(std::vector<Take> takes, int32_t rate, double maximalSeconds, bool isSingle)
      : takes_(std::move(takes)), rate_(rate), isSingle_(isSingle) {
    if (maximalSeconds < 20) maximum_ = static_cast<int32_t>(maximalSeconds * rate);
    for (const Take& take : takes_) longest_ = std::max(longest_, take.GetLength());
    longest_ = std::min(longest_, maximum_);
    const double loudest = takes_.back().loudness;
    for (std::size_t i = 0; i < takes_.size(); ++i) {
      const auto number = static_cast<int32_t>(i);
      takes_[i].loudness /= loudest;
      takes_[i].whole.resize(takes_[i].tracks.size());
      takes_[i].head.resize(takes_[i].tracks.size());
      if (i == 0 || takes_[i].group != takes_[i - 1].group) layers_.push_back({0, number, number});
      layers_.back().last = number;
      layers_.back().loudness = takes_[i].loudness;
    }
    for (const Layer& layer : layers_)
      if (!GetTake(layer.first).isLoaded) ReadTake(layer.first, true, rate * 2500 / 1000);
  }

  const Take& GetTake(int32_t take) const { return takes_[static_cast<std::size_t>(take)]; }
  const std::vector<Layer>& GetLayers() const { return layers_; }
  int32_t GetLongest() const { return longest_; }
  int32_t GetRate() const { return rate_; }

  int32_t FindLayer(double v) const {
    for (std::size_t i = 0; i < layers_.size(); ++i)
      if (layers_[i].loudness >= v - 1e-50) return static_cast<int32_t>(i);
    return static_cast<int32_t>(layers_.size()) - 1;
  }
  // What the thread does for a request.
  void Serve(int32_t layer) {
    if (isSingle_) {
      if (layer < static_cast<int32_t>(takes_.size())) ReadTake(layer, false, INT32_MAX);
      return;
    }
    const Layer& from = layers_[static_cast<std::size_t>(layer)];
    for (int32_t take = from.first; take <= from.last; ++take) ReadTake(take, false, INT32_MAX);
  }

 private:
  void ReadTake(int32_t number, bool isHead, int32_t limit) {
    Take& take = takes_[static_cast<std::size_t>(number)];
    limit = std::min(limit, maximum_);
    bool isComplete = true;
    for (std::size_t t = 0; t < take.tracks.size(); ++t) {
      if (!take.whole[t].empty()) continue;
      Recording samples = take.tracks[t];
      const bool isCut = static_cast<int32_t>(samples[0].size()) > limit;
      if (isCut)
        for (auto& channel : samples) channel.resize(static_cast<std::size_t>(limit));
      if (isHead && isCut) {
        isComplete = false;
        take.head[t] = samples;
      } else {
        if (isCut) Fade(samples, limit);
        take.whole[t] = samples;
      }
    }
    take.isLoaded = isComplete;
  }

  void Fade(Recording& samples, int32_t length) const {
    const int32_t begin = std::min(length / 2, 4 * rate_);
    for (auto& channel : samples)
      for (int32_t i = begin; i < length; ++i)
        channel[static_cast<std::size_t>(i)] *= static_cast<float>(1 - double(i - begin) / (length - begin));
  }

  std::vector<Take> takes_;
  std::vector<Layer> layers_;
  int32_t rate_, maximum_ = INT32_MAX, longest_ = 0;
  bool isSingle_;
};

// What the plug-in is set to.
struct Setting {
  struct Track {
    double volume = 1, pan = 0;
    bool isEnabled = true;
  };
  std::vector<Track> tracks;
  int32_t solo = -1, rate = 44100;
  double delay = 0;
  bool isSingle = false;
  MEnvelopeData velocities, envelope;
};

class Note {
 public:
  // `request` is the layer that is requested then, or -1.
  Note(const Setting& setting, const MultiSample& file, double volume, double ratio, int32_t delay,
       Random& random, int32_t& request)
      : setting_(setting), file_(file) {
    note_.delay = delay;
    note_.position = static_cast<double>(-static_cast<int64_t>(setting.delay * setting.rate));
    note_.speed = file.GetRate() * ratio / setting.rate;
    const double velocity = setting.isSingle ? 1 : volume;
    const int32_t number = file.FindLayer(Curve(setting.velocities, 1, 1).GetValue(velocity));
    const MultiSample::Layer layer = file.GetLayers()[static_cast<std::size_t>(number)];
    take_ = layer.first;
    if (!setting.isSingle)
      take_ += static_cast<int32_t>(random.Next() % static_cast<uint32_t>(layer.last - layer.first + 1));
    request = -1;
    if (!file.GetTake(take_).isLoaded) {
      request = number;
      take_ = layer.first;
    }
    gain_ = velocity / std::max(file.GetTake(take_).loudness, 0.05) * volume;
    note_.length = file.GetLongest();
    note_.SetEnvelope(setting.envelope);
  }

  bool HasStartedBehind(int32_t samples) {
    if (note_.delay < samples) return true;
    note_.delay -= samples;
    return false;
  }
  // The next block; places where rounding decides are no numbers.
  std::vector<std::vector<double>> Compute(int32_t channels, int32_t samples) {
    std::vector<std::vector<double>> out(static_cast<std::size_t>(channels),
                                         std::vector<double>(static_cast<std::size_t>(samples)));
    const int32_t first = std::exchange(note_.delay, 0);
    for (int32_t i = first; i < samples; ++i) {
      const double place = note_.position + (i - first) * note_.speed;
      const double envelope = note_.GetGain(place);
      const std::vector<double> frame = ComputeFrame(place, envelope, channels);
      for (std::size_t c = 0; c < out.size(); ++c) out[c][static_cast<std::size_t>(i)] = frame[c];
    }
    note_.position += samples * note_.speed;
    return out;
  }
  bool HasEnded() const { return note_.position >= note_.length; }
  double GetLoudestGain() const { return loudest_; }

 private:
  std::vector<double> ComputeFrame(double place, double envelope, int32_t channels) {
    std::vector<double> frame(static_cast<std::size_t>(channels));
    double gains = 0;
    for (std::size_t t = 0; t < setting_.tracks.size(); ++t) {
      const Setting::Track& track = setting_.tracks[t];
      if (setting_.solo >= 0 ? static_cast<int32_t>(t) != setting_.solo : !track.isEnabled) continue;
      const double gain = gain_ * track.volume * envelope;
      gains += std::abs(gain);
      const Recording& buffer = FindBuffer(t);
      if (buffer.empty()) continue;
      if (note_.IsAtABorder(place, static_cast<double>(buffer[0].size())))
        return std::vector<double>(frame.size(), NAN);
      std::vector<double> heard;
      for (std::size_t c = 0; c < frame.size(); ++c)
        heard.push_back(RecordingModel::Hear(buffer[c % buffer.size()], place, note_.speed));
      if (channels == 2) Pan(heard, track.pan);
      for (std::size_t c = 0; c < frame.size(); ++c) frame[c] += heard[c] * gain;
    }
    loudest_ = std::max(loudest_, gains);
    return frame;
  }
  const Recording& FindBuffer(std::size_t track) const {
    const Take& take = file_.GetTake(take_);
    if (take.isLoaded) return take.whole[track];
    return note_.speed != 1 && take.head[track].empty() ? take.whole[track] : take.head[track];
  }
  static void Pan(std::vector<double>& stereo, double pan) {
    const double left = stereo[0], right = stereo[1];
    if (pan > 0) stereo = {left * (1 - pan), right + left * pan};
    if (pan < 0) stereo = {left + right * -pan, right * (1 + pan)};
  }

  const Setting& setting_;
  const MultiSample& file_;
  RecordingModel::Note note_;
  int32_t take_ = 0;
  double gain_ = 1, loudest_ = 0;
};

}  // namespace LayerboxModel
