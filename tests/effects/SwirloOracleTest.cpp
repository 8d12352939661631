// Swirlo beside a plain model of it in doubles, over random scenarios. The repair behind a change of the
// stages is a part of the model, so blocks of any size have to agree.

#include "tests/effects/ModulationScenario.h"

namespace {

class SwirloModel {
 public:
  static constexpr const char* kName = "Swirlo";
  static constexpr double kTolerance = 5e-6;

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
  // A sweep at a loop gain of 1 may swell.
  static double Limit(int32_t row, double value) {
    return row == kFeedback ? std::clamp(value, -0.95, 0.95) : value;
  }
  // The row of the shape is set behind it.
  void SetWave(int32_t, double, double customDepth, const MEnvelopeData& curve) {
    wave_.customDepth = customDepth;
    wave_.curve = curve;
  }
  AudioBlock Process(const AudioBlock& in) {
    AudioBlock out = in;
    for (int32_t c = 0; stages_ > 0 && c < std::min(channels_, kChannels); ++c) {
      for (int32_t i = 0; i < in.GetLength(); ++i) out[c][i] = static_cast<float>(Step(c, in[c][i]));
      Repair(c, out[c], in.GetLength());
    }
    if (stages_ > 0 && in.GetLength() > 0) isRepairWanted_ = false;
    return out;
  }
  void Skip(int32_t samples) {
    for (int32_t c = 0; c < kChannels; ++c) {
      phases_[c] = std::fmod(phases_[c] + samples * step_, kTurn);
      last_[c] = 0;
      std::fill_n(memory_[c], kMaximumStages, 0.0);
    }
  }

 private:
  static constexpr int32_t kChannels = 8, kMaximumStages = 10;
  static constexpr double kTurn = 2 * std::numbers::pi;
  enum { kDepth, kMinFreq, kMaxFreq, kRate, kFeedback, kDelays, kPhaseDifference, kShape, kRows };

  void Update() {
    if (sampleRate_ < 1) return;
    dmin_ = 2 * std::pow(10, values_[kMinFreq]) / sampleRate_;
    dmax_ = 2 * std::pow(10, values_[kMaxFreq]) / sampleRate_;
    step_ = kTurn * std::pow(10, values_[kRate]) / sampleRate_;
    const double feedback = std::clamp(values_[kFeedback], -1.0, 1.0);
    feedback_ = feedback * feedback;
    const int32_t stages = std::clamp(static_cast<int32_t>(values_[kDelays]), 1, kMaximumStages);
    for (auto& memory : memory_)
      for (int32_t k = stages_; k < stages; ++k) memory[k] = 0;
    if (stages != stages_) isRepairWanted_ = true;
    stages_ = stages;
    for (int32_t c = 1; c < kChannels; ++c) {
      phases_[c] = std::fmod(phases_[c - 1] + kTurn * values_[kPhaseDifference], kTurn);
      if (phases_[c] < 0) phases_[c] += kTurn;
    }
  }

  double Step(int32_t c, double sample) {
    const double x = sample + 1e-25;
    const double d = std::max((dmax_ - dmin_) * (wave_.Read(phases_[c] / kTurn) + 1) * 0.5 + dmin_, 0.0);
    phases_[c] += step_;
    if (phases_[c] >= kTurn) phases_[c] -= kTurn;
    const double a = (1 - d) / (1 + d);
    double y = feedback_ * last_[c] + x;
    for (int32_t k = 0; k < stages_; ++k) {
      double& s = memory_[c][k];
      const double t = s - a * y;
      s = t * a + y;
      y = t;
    }
    last_[c] = y;
    return y * values_[kDepth] + x * (1 - values_[kDepth]);
  }

  void Repair(int32_t c, float* out, int32_t samples) {
    if (isRepairWanted_ && samples >= 32) {
      const int32_t m = std::clamp(samples / 2, 16, 128);
      const double d = 2 * double{newest_[c]} - beforeNewest_[c] - out[0];
      for (int32_t i = 0; i < m; ++i)
        out[i] = static_cast<float>(out[i] + d * (1 - static_cast<double>(i) / m));
    }
    for (int32_t i = 0; i < samples; ++i) {
      beforeNewest_[c] = newest_[c];
      newest_[c] = out[i];
    }
  }

  int32_t channels_ = 0;
  int32_t sampleRate_ = 0;
  double values_[kRows] = {};
  double dmin_ = 0, dmax_ = 0, step_ = 0, feedback_ = 0;
  int32_t stages_ = 0;  // none before the first update with a rate
  double phases_[kChannels] = {};
  double memory_[kChannels][kMaximumStages] = {};
  double last_[kChannels] = {};
  float newest_[kChannels] = {}, beforeNewest_[kChannels] = {};
  bool isRepairWanted_ = false;
  WaveModel wave_;
};

TEST(Swirlo, AgreesWithAPlainModelInRandomScenarios) {
  ExpectModulationAgrees<SwirloModel>();
}

}  // namespace
