#pragma once
// Squeezel as its tests use it, and the formulas of its curve and detector in double, sample by sample.

#include "effects/Squeezel.h"
#include "tests/common/EffectUnderTest.h"

extern "C" MPluginEntryPoint SqueezelAudioEffectPluginInterface;

class SqueezelUnderTest : public EffectUnderTest {
 public:
  using Values = std::vector<std::pair<const char*, double>>;

  explicit SqueezelUnderTest(const Values& values = {}, int32_t channels = 1, int32_t sampleRate = 48000)
      : EffectUnderTest({"Squeezel", "AudioEffect", SqueezelAudioEffectPluginInterface}) {
    for (const auto& [key, value] : values) Set(key, value);
    Prepare(channels, sampleRate);
  }
  SqueezelAudioEffectPlugin& GetPlugin() {
    return *static_cast<SqueezelAudioEffectPlugin*>(
        static_cast<MPlugin*>(MAsAddress<void>(Call(MService::kAttach))));
  }
  // The detector jumps to every sample.
  static Values Instant(Values values) {
    for (const char* const key : {"attack", "release", "rmslength"}) values.push_back({key, 0});
    return values;
  }
};

struct SqueezelModel {
  double t = 0.25, ratio = 1.8, kneeSize = 0.25, inputGain = 1, outputGain = 1;
  int32_t knee = 0;
  bool maximizes = true;

  double Top() const { return std::pow(t, 1 / ratio); }
  double Slope() const { return t == 1 ? 1 : (Top() - t) / (1 - t); }
  double MakeUp() const { return maximizes ? 1 / Top() : 1; }
  double Gain() const { return inputGain * outputGain * MakeUp(); }
  double Line(double x) const { return x > t ? t + Slope() * (x - t) : x; }
  double Start() const { return std::max(t - kneeSize * 0.25 * std::sqrt(0.5), 1e-20); }
  double End() const { return t + (t - Start()) * std::sqrt(2.0) / std::hypot(Slope(), 1); }

  double GainOf(double x) const {
    const double a = Start(), b = End();
    const double outside = Gain() * Line(x) / x;
    if (knee == 0 || t == 1 || kneeSize == 0 || x <= a || x >= b) return outside;
    if (knee == 1) {
      const double chord = Line(a) + (x - a) / (b - a) * (Line(b) - Line(a));
      return MakeUp() * chord / x * inputGain;
    }
    // The centre of the arc lies below A on the normal of the first line, as far as B needs.
    const double way = (b - a + Line(b) - Line(a)) / (1 - Slope()) + Line(a) - Line(b);
    const double cx = a + way, cy = Line(a) - way;
    return Gain() * (cy + std::sqrt(2 * way * way - (x - cx) * (x - cx))) / x;
  }
};

struct SqueezelDetectorModel {
  double attack, release, rms;  // coefficients
  double power = 0, envelope = 0;

  SqueezelDetectorModel(double rate, double attackTime, double releaseTime, double rmsTime)
      : attack(Of(rate * attackTime)), release(Of(rate * releaseTime)), rms(Of(rate * rmsTime)) {}
  static double Of(double constant) { return constant == 0 ? 0 : std::exp(-1 / constant); }
  double Step(double input) {
    power = (1 - rms) * input + rms * power + 1e-25;
    const double level = std::sqrt(power);
    const double c = level <= envelope ? release : attack;
    return envelope = c * envelope + (1 - c) * level + 1e-25;
  }
};
