#pragma once
// Reading of recordings and curves as it is written in formulas, sample by sample and in double, for the
// plain models of instruments that play files; and random settings for them.

#include <cmath>
#include <vector>

#include "dsp/MEnvelopeComputer.h"
#include "tests/common/TestRandom.h"

namespace RecordingModel {

using Channel = std::vector<float>;
using Recording = std::vector<Channel>;

// Ends of recordings and notes within this distance of a place may be met on either side of it.
constexpr double kRounding = 1e-7;

inline bool IsNear(double place, double border) {
  return std::abs(place - border) < kRounding;
}

inline double At(const Channel& samples, int64_t i) {
  return i >= 0 && i < static_cast<int64_t>(samples.size()) ? double{samples[static_cast<std::size_t>(i)]}
                                                            : 0;
}

// Between samples i and i + 1, at i + t.
inline double Cubic(const Channel& samples, int64_t i, double t) {
  const double y0 = At(samples, i - 1), y1 = At(samples, i), y2 = At(samples, i + 1), y3 = At(samples, i + 2);
  return y1 + t * (0.5 * (y2 - y0) +
                   t * (2 * y2 + y0 - 0.5 * (5 * y1 + y3) + 0.5 * t * (3 * (y1 - y2) - y0 + y3)));
}

// What a note of this speed hears at a place.
inline double Hear(const Channel& samples, double place, double speed) {
  if (speed == 1) return At(samples, static_cast<int64_t>(place));
  if (place < 0 || place >= static_cast<double>(samples.size())) return 0;
  const double whole = std::floor(place);
  return Cubic(samples, static_cast<int64_t>(whole), place - whole);
}

// How far a sound is from its model, beside the greatest gain that was used.
class Distance {
 public:
  void Add(double found, double expected) {
    distance_ = std::isfinite(found) ? std::max(distance_, std::abs(found - expected)) : INFINITY;
  }
  void AddGain(double gain) { gain_ = std::max(gain_, std::abs(gain)); }
  // For samples of up to 1.
  double GetShare() const { return distance_ == 0 ? 0 : distance_ / gain_; }

 private:
  double distance_ = 0, gain_ = 0;
};

// A curve, stretched to a length and a height, read forwards.
class Curve {
 public:
  Curve(MEnvelopeData data, double length, double height) {
    data.ScaleX(length, true);
    data.ScaleY(height, true);
    computer_.Build(data);
    isRounded_ = false;
    for (int32_t i = 0; i < data.GetCount(); ++i) {
      isRounded_ = isRounded_ || data[i].smooth1 > 0 || data[i].smooth2 > 0;
      if (std::abs(data[i].y) >= 1e-50)
        end_ = i + 1 < data.GetCount() ? data[i + 1].x : MEnvelopeComputer::kNever;
    }
    if (isRounded_) end_ = computer_.GetTailStart();
  }
  double GetValue(double x) { return computer_.GetValue(x); }
  // From where on it stays at zero.
  double GetEnd() const { return end_; }

 private:
  MEnvelopeComputer computer_;
  bool isRounded_ = false;
  double end_ = 0;
};

inline bool IsFlatAtOne(const MEnvelopeData& data) {
  for (int32_t i = 0; i < data.GetCount(); ++i)
    if (std::abs(data[i].y - 1) >= 1e-50) return false;
  return true;
}

// A note that plays a recording forwards, without its channels.
struct Note {
  int32_t delay = 0;
  double position = 0, speed = 1, volume = 1;
  int32_t length = 0;
  std::vector<Curve> envelope;  // one or none

  void SetEnvelope(const MEnvelopeData& data) {
    if (IsFlatAtOne(data)) return;
    envelope.emplace_back(data, length, 1);
    if (envelope[0].GetEnd() < length) length = static_cast<int32_t>(envelope[0].GetEnd());
  }
  double GetGain(double place) {
    const double gain = envelope.empty() ? 1 : envelope[0].GetValue(place);
    return place < length ? gain * volume : 0;
  }
  bool IsAtABorder(double place, double recorded) const {
    return speed != 1 && (IsNear(place, 0) || IsNear(place, length) || IsNear(place, recorded));
  }
};

inline Recording RandomRecording(TestRandom& random, int32_t channels, int32_t length) {
  Recording recording(static_cast<std::size_t>(channels), Channel(static_cast<std::size_t>(length)));
  for (Channel& channel : recording)
    for (float& sample : channel) sample = static_cast<float>(random.Real(-1, 1));
  return recording;
}

inline int32_t RandomLength(TestRandom& random, int32_t most) {
  return random.OneIn(4) ? random.Integer(1, 5) : random.Integer(1, most);
}

// A curve over 0..1 with points of all types, some of them rounded; often it ends at zero early. Smooth
// segments and corners have no super-ellipses beside them: those may end upright, and what continues that
// reaches far beyond the points.
inline MEnvelopeData RandomCurve(TestRandom& random, double low, double high) {
  MEnvelopeData curve;
  const int32_t inner = random.Below(5);
  const bool isUpright = random.OneIn(2);
  const int32_t zeros = low <= 0 && random.OneIn(2) ? random.Integer(1, inner + 1) : 0;
  for (int32_t i = 0; i < inner + 2; ++i) {
    MEnvelopePoint point;
    point.x = i == 0 ? 0 : i > inner ? 1 : (i + random.Real(0.05, 0.95)) / (inner + 2);
    point.y = i >= inner + 2 - zeros ? 0 : random.Real(low, high);
    point.type = random.Below(MEnvelopeType::kSmooth1);
    if (!isUpright && point.type == MEnvelopeType::kMode3) point.type = MEnvelopeType::kSmooth1;
    point.tension = random.Real(-0.9, 0.9);
    point.tensionX = random.Real(-0.9, 0.9);
    if (!isUpright && random.OneIn(5)) point.smooth1 = point.smooth2 = random.Real(0.05, 1);
    curve.Add(point);
  }
  return curve;
}

// Sizes of blocks, the last one again and again.
inline std::vector<int32_t> RandomBlocks(TestRandom& random) {
  if (random.OneIn(2)) return {random.OneOf<int32_t>({1, 63, 64, 256, 441, 512, 4096})};
  std::vector<int32_t> sizes;
  for (int32_t i = 0; i < 20; ++i) sizes.push_back(random.Integer(1, 700));
  return sizes;
}

inline int32_t RandomRate(TestRandom& random) {
  return random.OneOf<int32_t>({22050, 44100, 44100, 48000, 96000});
}

inline double RandomRatio(TestRandom& random) {
  return random.OneIn(3) ? random.OneOf<double>({0.5, 1, 1, 2}) : std::pow(2, random.Real(-2.5, 2.5));
}

}  // namespace RecordingModel
