// Two samples at a time, in what the floor of processors has. Choices between values are those of registers,
// so that no branch depends on the signal.

#include <cmath>
#include <cstring>

#include "dsp/MFilter.h"
#include "effects/SqueezelCurve.h"

namespace {

typedef double Lanes __attribute__((vector_size(16)));
typedef float Floats __attribute__((vector_size(8)));
constexpr int32_t kLanes = 2;

template <typename T>
T Load(const void* from) {
  T value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

Lanes Root(Lanes a) {
  return Lanes{__builtin_sqrt(a[0]), __builtin_sqrt(a[1])};
}

Lanes LoadSamples(const float* in) {
  constexpr float kMaximum = std::numeric_limits<float>::max();
  const Lanes x = __builtin_convertvector(Load<Floats>(in), Lanes);
  const auto isFinite = (x >= -kMaximum) & (x <= kMaximum);
  return isFinite ? x : Lanes{};
}

struct Hard {
  static Lanes Gain(const SqueezelCurve& curve, Lanes x) {
    const Lanes above = curve.gain * (curve.slope * x + curve.offset) / x;
    return x > curve.settings.threshold ? above : Lanes{} + curve.gain;
  }
};

struct Linear {
  static Lanes Gain(const SqueezelCurve& curve, Lanes x) {
    const auto isAbove = x >= curve.kneeEnd;
    const Lanes u = (x - curve.kneeStart) * curve.kneeScale;
    const Lanes chord = (1 - u) * curve.startOutput + u * curve.endOutput;
    const Lanes above = curve.gain * (curve.slope * x + curve.offset);
    const Lanes bent = (isAbove ? above : chord * curve.settings.inputGain) / x;
    const auto isBelow = ~isAbove & (x <= curve.kneeStart);
    return isBelow ? Lanes{} + curve.gain : bent;
  }
};

struct Soft {
  static Lanes Gain(const SqueezelCurve& curve, Lanes x) {
    const auto isAbove = x >= curve.kneeEnd;
    const Lanes d = x + curve.minusCentreX;
    const Lanes radicand = curve.squaredRadius - d * d;
    const Lanes arc = curve.centreY + Root(radicand > 0 ? radicand : Lanes{});
    const Lanes bent = (isAbove ? curve.slope * x + curve.offset : arc) * curve.gain / x;
    const auto isBelow = ~isAbove & (x <= curve.kneeStart);
    return isBelow ? Lanes{} + curve.gain : bent;
  }
};

struct Drawn {
  static double Gain(const SqueezelCurve& curve, double x) {
    if (!(x - 1e-20 > 0)) return curve.gain;
    const double v = curve.drawn.GetValue(__builtin_sqrt(x));
    return v * v / x * curve.gain;
  }
  static Lanes Gain(const SqueezelCurve& curve, Lanes x) {
    return Lanes{Gain(curve, x[0]), Gain(curve, x[1])};
  }
};

template <typename Way>
void GetGains(const SqueezelCurve& curve, const double* levels, double* gains, int32_t count) {
  for (int32_t i = 0; i < count; i += kLanes) {
    const Lanes gain = Way::Gain(curve, Load<Lanes>(levels + i));
    std::memcpy(gains + i, &gain, sizeof gain);
  }
}

// The arguments of Detect as registers; both lanes hold the same.
struct Coefficients {
  explicit Coefficients(const SqueezelPasses::Times& times)
      : attack(Lanes{} + times.attack),
        release(Lanes{} + times.release),
        rms(Lanes{} + times.rms),
        newAttack(1 - attack),
        newRelease(1 - release),
        newRms(1 - rms) {}
  Lanes attack, release, rms, newAttack, newRelease, newRms;
};

template <bool kIsSilent>
void DetectLoop(SqueezelPasses::Detector& detector, const Coefficients& c, const double* powers, double scale,
                double* levels, int32_t count) {
  constexpr double kBias = SqueezelPasses::kBias;
  Lanes power = Lanes{} + detector.power;
  Lanes envelope = Lanes{} + detector.envelope;
  for (int32_t i = 0; i < count; ++i) {
    const Lanes input = kIsSilent ? Lanes{} : Lanes{} + powers[i] * scale;
    power = c.rms * power + (c.newRms * input + kBias);
    const Lanes level = Lanes{} + __builtin_sqrt(power[0]);
    const Lanes rising = c.attack * envelope + (c.newAttack * level + kBias);
    const Lanes falling = c.release * envelope + (c.newRelease * level + kBias);
    envelope = level <= envelope ? falling : rising;
    levels[i] = envelope[0];
  }
  detector = {power[0], envelope[0]};
}

}  // namespace

SqueezelCurve::GainFunction* SqueezelPasses::FindGains(const SqueezelCurve& curve) noexcept {
  if (curve.settings.isDrawn) return GetGains<Drawn>;
  if (curve.knee == SqueezelSettings::kLinear) return GetGains<Linear>;
  return curve.knee == SqueezelSettings::kSoft ? GetGains<Soft> : GetGains<Hard>;
}

void SqueezelPasses::AddPowers(const float* in, double gain, double* powers, int32_t count) noexcept {
  int32_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    const Lanes x = LoadSamples(in + i) * gain;
    const Lanes sum = Load<Lanes>(powers + i) + x * x;
    std::memcpy(powers + i, &sum, sizeof sum);
  }
  for (; i < count; ++i) {
    const double x = MCleanSample(in[i]) * gain;
    powers[i] += x * x;
  }
}

void SqueezelPasses::Detect(Detector& detector, const Times& times, const double* powers, double scale,
                            double* levels, int32_t count) noexcept {
  const Coefficients coefficients(times);
  if (powers)
    DetectLoop<false>(detector, coefficients, powers, scale, levels, count);
  else
    DetectLoop<true>(detector, coefficients, powers, scale, levels, count);
}

void SqueezelPasses::Scale(const float* in, const double* gains, float* out, int32_t count) noexcept {
  constexpr double kMaximum = std::numeric_limits<float>::max();
  int32_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    Lanes y = LoadSamples(in + i) * Load<Lanes>(gains + i);
    y = y < kMaximum ? y : Lanes{} + kMaximum;
    y = y > -kMaximum ? y : Lanes{} - kMaximum;
    const Floats samples = __builtin_convertvector(y, Floats);
    std::memcpy(out + i, &samples, sizeof samples);
  }
  for (; i < count; ++i) out[i] = MLimitToFloat(MCleanSample(in[i]) * gains[i]);
}
