// Bellwarp beside a plain model of it in doubles, over random scenarios.

#include "tests/effects/ModulationScenario.h"

namespace {

struct OscillatorModel {
  bool isEnabled = false;
  double depth = 0, frequency = 0, offset = 0, step = 0, phase = 0;
  WaveModel wave;

  double Read(int32_t channel) const { return wave.Read(phase + channel * offset); }
  void Wrap() { phase -= std::floor(phase); }
};

class BellwarpModel {
 public:
  static constexpr const char* kName = "Bellwarp";
  // Depths beyond their range make gains of up to 7.5, and each of the two multiplies the rounding of the
  // other one's table.
  static constexpr double kTolerance = 4e-6;

  BellwarpModel() {
    for (OscillatorModel& o : both_) o.wave.Build();
  }
  void Prepare(int32_t channels, int32_t sampleRate) {
    channels_ = channels;
    sampleRate_ = sampleRate;
    Update();
  }
  // "modulate", and for each oscillator a panel, "enable", "depth", "frequency", "phase".
  void Set(int32_t row, double value) {
    if (row == 0) isModulating_ = value != 0;
    if (row > 0) {
      OscillatorModel& o = both_[(row - 1) / 5];
      const int32_t kind = (row - 1) % 5;
      if (kind == 1) o.isEnabled = value != 0;
      if (kind == 2) o.depth = value;
      if (kind == 3) o.frequency = value;
      if (kind == 4) o.offset = value;
    }
    Update();
  }
  void SetWave(int32_t wave, double shape, double customDepth, const MEnvelopeData& curve) {
    both_[wave].wave.shape = shape;
    both_[wave].wave.customDepth = customDepth;
    both_[wave].wave.curve = curve;
    both_[wave].wave.Build();
  }
  AudioBlock Process(const AudioBlock& in) {
    AudioBlock out = in;
    if (!isRunning_) return out;
    if (isModulating_ && both_[0].isEnabled && both_[1].isEnabled) {
      Modulate(out);
      return out;
    }
    for (OscillatorModel& o : both_)
      if (o.isEnabled) Multiply(o, out);
    return out;
  }
  void Skip(int32_t samples) {
    for (OscillatorModel& o : both_) {
      o.phase += samples * o.step;
      o.Wrap();
    }
  }

 private:
  void Update() {
    if (sampleRate_ < 1) return;
    isRunning_ = true;
    for (OscillatorModel& o : both_) o.step = std::pow(10, o.frequency) / sampleRate_;
  }
  void Modulate(AudioBlock& out) {
    const double depth = (both_[0].depth + both_[1].depth) / 2;
    for (int32_t i = 0; i < out.GetLength(); ++i) {
      for (int32_t c = 0; c < channels_; ++c) {
        const double sum = both_[0].Read(c) + both_[1].Read(c);
        out[c][i] = static_cast<float>((out[c][i] + 1e-25) * (sum * depth + (1 - depth)));
      }
      for (OscillatorModel& o : both_) o.phase += o.step;
    }
    for (OscillatorModel& o : both_) o.Wrap();
  }
  void Multiply(OscillatorModel& o, AudioBlock& out) {
    for (int32_t i = 0; i < out.GetLength(); ++i) {
      for (int32_t c = 0; c < channels_; ++c)
        out[c][i] = static_cast<float>((out[c][i] + 1e-25) * (o.Read(c) * o.depth + (1 - o.depth)));
      o.phase += o.step;
    }
    o.Wrap();
  }

  int32_t channels_ = 0;
  int32_t sampleRate_ = 0;
  bool isRunning_ = false;
  bool isModulating_ = false;
  OscillatorModel both_[2];
};

TEST(Bellwarp, AgreesWithAPlainModelInRandomScenarios) {
  ExpectModulationAgrees<BellwarpModel>();
}

}  // namespace
