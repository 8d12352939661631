// Pulsetta beside a plain model of it in doubles, over random scenarios.

#include "tests/effects/ModulationScenario.h"

namespace {

class PulsettaModel {
 public:
  static constexpr const char* kName = "Pulsetta";
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
    if (!isRunning_) return out;
    for (int32_t c = 0; c < std::min(channels_, 8); ++c) {
      for (int32_t i = 0; i < in.GetLength(); ++i) {
        out[c][i] = static_cast<float>((1 - wave_.Read(phases_[c]) * values_[kDepth]) * in[c][i]);
        phases_[c] += step_;
      }
      phases_[c] -= std::floor(phases_[c]);
    }
    return out;
  }
  void Skip(int32_t samples) {
    for (double& phase : phases_) {
      phase += samples * step_;
      phase -= std::floor(phase);
    }
  }

 private:
  enum { kDepth, kRate, kPhaseDifference, kShape, kRows };

  void Update() {
    if (sampleRate_ < 1) return;
    isRunning_ = true;
    step_ = std::pow(10, values_[kRate]) / sampleRate_;
    for (int32_t c = 1; c < 8; ++c) {
      phases_[c] = phases_[c - 1] + values_[kPhaseDifference];
      if (phases_[c] < 0) phases_[c] += 1;
    }
  }

  int32_t channels_ = 0;
  int32_t sampleRate_ = 0;
  bool isRunning_ = false;
  double values_[kRows] = {};
  double step_ = 0;
  double phases_[8] = {};
  WaveModel wave_;
};

TEST(Pulsetta, AgreesWithAPlainModelInRandomScenarios) {
  ExpectModulationAgrees<PulsettaModel>();
}

}  // namespace
