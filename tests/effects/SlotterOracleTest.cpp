// Slotter beside a plain model of it in doubles, over random scenarios.

#include "tests/effects/OracleScenario.h"
#include "tests/effects/ResonantModel.h"

namespace {

class SlotterModel {
 public:
  void Prepare(int32_t channels, int32_t sampleRate) {
    channels_ = channels;
    sampleRate_ = sampleRate;
    Update();
  }
  void Set(int32_t row, double value) {
    values_[row] = value;
    Update();
  }
  AudioBlock Process(const AudioBlock& in) {
    AudioBlock out = in;
    for (int32_t c = 0; c < std::min(channels_, 8); ++c) {
      float* const samples = out[c];
      if (values_[kLowEnable] != 0)
        for (int32_t i = 0; i < in.GetLength(); ++i)
          samples[i] = static_cast<float>(lowStates_[c].Run(low_, samples[i]));
      for (int32_t i = 0; i < in.GetLength(); ++i)
        innerPeak_ = std::max(innerPeak_, std::abs(double{samples[i]}));
      if (values_[kHighEnable] != 0)
        for (int32_t i = 0; i < in.GetLength(); ++i)
          samples[i] = static_cast<float>(highStates_[c].Run(high_, samples[i]));
    }
    return out;
  }
  double GetInnerPeak() const { return innerPeak_; }
  bool IsSilent(bool&) const { return true; }

 private:
  enum { kHighEnable = 1, kHighFrequency, kHighResonance, kLowEnable = 5, kLowFrequency, kLowResonance };

  void Update() {
    if (sampleRate_ < 1) return;
    low_.SetLowPass(values_[kLowFrequency], values_[kLowResonance], sampleRate_);
    high_.SetHighPass(values_[kHighFrequency], values_[kHighResonance], sampleRate_);
  }

  int32_t channels_ = 0;
  int32_t sampleRate_ = 0;
  double values_[8] = {};
  ResonantModel low_, high_;
  ResonantModelState lowStates_[8], highStates_[8];
  double innerPeak_ = 0;
};

TEST(Slotter, AgreesWithAPlainModelInRandomScenarios) {
  ExpectAgreement<SlotterModel>("Slotter", 2, 2e-6);
}

}  // namespace
