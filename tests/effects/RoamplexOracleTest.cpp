// Roamplex beside a plain model of it in doubles, over random scenarios.

#include "tests/effects/ModulationScenario.h"

namespace {

class RoamplexModel {
 public:
  static constexpr const char* kName = "Roamplex";
  static constexpr double kTolerance = 1e-6;

  void Prepare(int32_t channels, int32_t sampleRate) {
    channels_ = channels;
    sampleRate_ = sampleRate;
    Update();
  }
  void Set(int32_t row, double value) {
    values_[row] = value;
    if (row == kShape) wave_.shape = value;
    wave_.Build();
    Update();
  }
  // The row of the shape is set behind it.
  void SetWave(int32_t, double, double customDepth, const MEnvelopeData& curve) {
    wave_.customDepth = customDepth;
    wave_.curve = curve;
  }
  AudioBlock Process(const AudioBlock& in) {
    AudioBlock out = in;
    if (channels_ < 2 || !isRunning_) return out;
    for (int32_t i = 0; i < in.GetLength(); ++i) {
      const double m = wave_.Read(phase_) * values_[kDepth];
      phase_ += step_;
      const double ll = m >= 0 ? 1 - m : 1, rl = m >= 0 ? 0 : -m;
      const double lr = m >= 0 ? m : 0, rr = m >= 0 ? 1 : m + 1;
      const double l = in[0][i] + 1e-25, r = in[1][i] + 1e-25;
      out[0][i] = static_cast<float>(l * ll + r * rl);
      out[1][i] = static_cast<float>(l * lr + r * rr);
    }
    phase_ -= std::floor(phase_);
    return out;
  }
  void Skip(int32_t samples) {
    phase_ += samples * step_;
    phase_ -= std::floor(phase_);
  }

 private:
  enum { kDepth, kRate, kShape, kRows };

  void Update() {
    if (sampleRate_ < 1) return;
    isRunning_ = true;
    step_ = std::pow(10, values_[kRate]) / sampleRate_;
  }

  int32_t channels_ = 0;
  int32_t sampleRate_ = 0;
  bool isRunning_ = false;
  double values_[kRows] = {};
  double step_ = 0;
  double phase_ = 0;
  WaveModel wave_;
};

TEST(Roamplex, AgreesWithAPlainModelInRandomScenarios) {
  ExpectModulationAgrees<RoamplexModel>();
}

}  // namespace
