// Quaverly beside a plain model of it in doubles, over random scenarios.

#include "tests/effects/ModulationScenario.h"

namespace {

class QuaverlyModel {
 public:
  static constexpr const char* kName = "Quaverly";
  static constexpr double kTolerance = 5e-6;

  void Prepare(int32_t channels, int32_t sampleRate) {
    channels_ = channels;
    sampleRate_ = sampleRate;
    Update();
    if (sampleRate < 1) return;
    for (Line& line : lines_) line.assign(kLength, 0);
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
    if (!isRunning_ || in.GetLength() == 0) return out;
    const double base = phase_;
    double offset = offset_ < 0 ? -8 * offset_ : 0;
    for (int32_t c = 0; c < std::min(channels_, kChannels); ++c) {
      // Offsets of slow rates are millions of cycles, of which the fraction counts.
      Delay(lines_[c], in[c], out[c], base + (offset - std::floor(offset)), in.GetLength());
      Repair(c, out[c], in.GetLength());
      offset += offset_;
    }
    isRepairWanted_ = false;
    phase_ = base + in.GetLength() * step_;
    phase_ -= std::floor(phase_);
    return out;
  }
  // The phase moves by as many whole cycles.
  void Skip(int32_t) {}

  int32_t GetLatency() const { return reach_; }
  bool IsSilent() const { return GetPeak() <= 0.0001f; }
  double GetPeak() const {
    double peak = 0;
    for (const Line& line : lines_)
      for (const double sample : line) peak = std::max(peak, std::abs(sample));
    return peak;
  }

 private:
  enum { kDepth, kRate, kPhaseDifference, kShape, kRows };
  static constexpr int32_t kChannels = 8;
  static constexpr int32_t kLength = 412;  // of a line: what came before the block, and four of its samples
  static constexpr int32_t kBefore = kLength - 4;
  using Line = std::vector<double>;

  void Update() {
    if (sampleRate_ < 1) return;
    isRunning_ = true;
    const double hertz = std::pow(10, values_[kRate]);
    step_ = hertz / sampleRate_;
    reach_ = static_cast<int32_t>(std::clamp(std::trunc(values_[kDepth] * 200), 1.0, 200.0));
    offset_ = sampleRate_ / hertz * values_[kPhaseDifference];
    isRepairWanted_ = true;
  }

  // No sum may gather rounding in the phase: where the wave jumps, the place moves by up to two million
  // samples per cycle, so that 4e-12 of a cycle are heard in the sixth digit.
  void Delay(Line& line, const float* in, float* out, double phase, int32_t samples) const {
    const auto at = [&](int32_t index) -> double& { return line[static_cast<std::size_t>(index)]; };
    for (int32_t i = 0; i < 4; ++i) at(kBefore + i) = i < samples ? in[i] : 0;
    for (int32_t i = 0; i < samples; ++i) {
      const double v = wave_.Read(phase + i * step_) * reach_ + i - 200 - 4;
      const auto whole = static_cast<int32_t>(std::floor(v));
      double p[4];
      for (int32_t j = 0; j < 4; ++j)
        p[j] = whole < 1 ? at(whole - 1 + j + kBefore) : double{in[whole - 1 + j]};
      out[i] = static_cast<float>(Interpolate(p, v - whole));
    }
    Line all(line.begin(), line.begin() + kBefore);
    all.insert(all.end(), in, in + samples);
    std::copy(all.end() - kBefore, all.end(), line.begin());
  }

  static double Interpolate(const double (&p)[4], double t) {
    const double c = ((p[1] - p[2]) * 3 - p[0] + p[3]) * 0.5;
    const double b = 2 * p[2] + p[0] - (5 * p[1] + p[3]) * 0.5;
    return p[1] + ((c * t + b) * t + (p[2] - p[0]) * 0.5) * t;
  }

  // Draws the block to where the last two samples before it were heading.
  void Repair(int32_t channel, float* out, int32_t samples) {
    double(&last)[2] = last_[channel];
    if (isRepairWanted_ && samples >= 32) {
      const double distance = 2 * last[0] - last[1] - out[0];
      const int32_t count = std::clamp(samples / 2, 16, 128);
      for (int32_t i = 0; i < count; ++i)
        out[i] = static_cast<float>(out[i] + distance * (1 - static_cast<double>(i) / count));
    }
    last[1] = samples > 1 ? out[samples - 2] : last[0];
    last[0] = out[samples - 1];
  }

  int32_t channels_ = 0;
  int32_t sampleRate_ = 0;
  bool isRunning_ = false;
  bool isRepairWanted_ = false;
  double values_[kRows] = {};
  double step_ = 0;
  double offset_ = 0;
  int32_t reach_ = 80;
  double phase_ = 0;
  Line lines_[kChannels] = {};
  double last_[kChannels][2] = {};
  WaveModel wave_;
};

TEST(Quaverly, AgreesWithAPlainModelInRandomScenarios) {
  ExpectModulationAgrees<QuaverlyModel>();
}

}  // namespace
