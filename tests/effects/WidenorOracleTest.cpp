// Widenor beside a plain model of it in doubles, over random scenarios. The model's line holds floats.

#include "tests/effects/OracleScenario.h"
#include "tests/effects/ResonantModel.h"

namespace {

class WidenorModel {
 public:
  void Prepare(int32_t channels, int32_t sampleRate) {
    channels_ = channels;
    sampleRate_ = sampleRate;
    Update();
    for (int32_t c = 0; c < 2; ++c) lines_[c].assign(c < channels ? GetWantedLength() : 0, 0.0f);
    position_ = 0;
  }
  void Set(int32_t row, double value) {
    values_[row] = value;
    Update();
  }
  AudioBlock Process(const AudioBlock& in) {
    AudioBlock out = in;
    if (channels_ != 2) return out;
    const bool isDelayed = std::abs(values_[kDelayDepth]) >= 1e-20;
    if (isDelayed) FitLines();
    for (int32_t i = 0; i < in.GetLength(); ++i) {
      double band[2];
      for (int32_t c = 0; c < 2; ++c) band[c] = low_[c].Run(lowPass_, high_[c].Run(highPass_, in[c][i]));
      double sum = (band[0] - band[1]) * values_[kDepth];
      if (isDelayed) {
        const double x = double{lines_[0][position_]} - double{lines_[1][position_]};
        for (int32_t c = 0; c < 2; ++c) lines_[c][position_] = static_cast<float>(band[c]);
        innerPeak_ = std::max({innerPeak_, std::abs(band[0]), std::abs(band[1])});
        position_ = (position_ + 1) % lines_[0].size();
        sum += x * static_cast<float>(values_[kDelayDepth]);
      }
      out[0][i] = static_cast<float>(in[0][i] + sum);
      out[1][i] = static_cast<float>(in[1][i] - sum);
    }
    return out;
  }
  double GetInnerPeak() const { return innerPeak_; }
  bool IsSilent(bool& isClose) const {
    bool isSilent = true;
    for (const std::vector<float>& line : lines_) {
      for (const float value : line) {
        if (std::abs(std::abs(value) - 0.0001f) < 1e-9f) isClose = true;
        if (std::abs(value) > 0.0001f) isSilent = false;
      }
    }
    return isSilent;
  }

 private:
  enum { kDepth, kHighPass, kLowPass, kResonance, kDelay, kDelayDepth, kRows };

  std::size_t GetWantedLength() const {
    return std::max<std::size_t>(1, static_cast<std::size_t>(sampleRate_ * values_[kDelay]));
  }
  void Update() {
    if (sampleRate_ < 1) return;
    lowPass_.SetLowPass(values_[kLowPass], values_[kResonance], sampleRate_);
    highPass_.SetHighPass(values_[kHighPass], values_[kResonance], sampleRate_);
  }
  // Rotates the sample that would be read next to the front, cuts or lengthens with zeros, and fades out.
  void FitLines() {
    const std::size_t before = lines_[0].size(), length = GetWantedLength();
    if (before == length) return;
    const std::size_t faded = std::min(before, length);
    for (std::vector<float>& line : lines_) {
      std::vector<float> changed(length, 0.0f);
      for (std::size_t i = 0; i < faded; ++i)
        changed[i] = static_cast<float>(line[(position_ + i) % before] *
                                        (1 - static_cast<double>(i) / static_cast<double>(faded)));
      line = changed;
    }
    if (position_ >= length) position_ = 0;
  }

  int32_t channels_ = 0;
  int32_t sampleRate_ = 0;
  double values_[kRows] = {};
  ResonantModel lowPass_, highPass_;
  ResonantModelState low_[2], high_[2];
  std::vector<float> lines_[2];
  std::size_t position_ = 0;
  double innerPeak_ = 0;
};

TEST(Widenor, AgreesWithAPlainModelInRandomScenarios) {
  ExpectAgreement<WidenorModel>("Widenor", 2, 2e-6);
}

}  // namespace
