// Imprinta beside a plain model of it in doubles, over random scenarios. The position that all channels share
// and the repair behind a change are parts of the model, so blocks of any size have to agree.

#include <gtest/gtest.h>

#include "tests/effects/NamedEffect.h"
#include "tests/effects/OracleCurve.h"

namespace {

constexpr int32_t kServed = 8;

class ImprintaModel {
 public:
  int32_t length = 16;

  ImprintaModel() {
    curve_.yMinimum = -1;
    curve_.Add(0, 1);
    curve_.Add(1, -1);
  }

  void SetCurve(const MEnvelopeData& curve) { curve_ = curve; }

  void Update() {
    const auto taps = static_cast<std::size_t>(length);
    if (kernel_.size() != taps) {
      for (std::vector<double>& history : histories_) history.assign(taps, 0.0);
      position_ = 0;
    }
    kernel_.assign(taps, 0.0);
    MEnvelopeComputer computer;
    computer.Build(curve_);
    double sum = 0;
    for (std::size_t i = 0; i < taps; ++i) {
      const double x = (static_cast<double>(i) + 0.5) / length;
      kernel_[taps - 1 - i] = double{static_cast<float>(computer.GetValue(x))};
      sum += std::abs(kernel_[taps - 1 - i]);
    }
    gain_ = sum < 1e-20 ? 1 : 1 / sum;
    isRepairWanted_ = true;
  }

  AudioBlock Process(const AudioBlock& in) {
    AudioBlock out = in;
    const int32_t served = std::min(in.GetChannelCount(), kServed), samples = in.GetLength();
    if (samples == 0) return out;
    for (int32_t c = 0; c < served; ++c)
      for (int32_t i = 0; i < samples; ++i) out[c][i] = static_cast<float>(Filter(c, double{in[c][i]}));
    for (int32_t c = 0; c < served; ++c) {
      double& p0 = last_[c];
      double& p1 = beforeLast_[c];
      const double d = 2 * p0 - p1 - double{out[c][0]};
      const int32_t m = std::clamp(samples / 2, 16, 128);
      for (int32_t i = 0; i < m && isRepairWanted_ && samples >= 32; ++i)
        out[c][i] = static_cast<float>(out[c][i] + d * (1 - i / double(m)));
      p1 = samples == 1 ? p0 : double{out[c][samples - 2]};
      p0 = double{out[c][samples - 1]};
    }
    isRepairWanted_ = false;
    return out;
  }

  void Skip(int32_t channels, int32_t samples) {
    for (int32_t c = 0; c < std::min(channels, kServed); ++c)
      for (int32_t i = 0; i < samples; ++i) Filter(c, 0);
  }

 private:
  double Filter(int32_t channel, double x) {
    std::vector<double>& history = histories_[channel];
    const std::size_t n = kernel_.size();
    history[position_] = x;
    double y = 0;
    for (std::size_t k = 0; k < n; ++k) y += history[(position_ + k) % n] * kernel_[k];
    position_ = position_ == 0 ? n - 1 : position_ - 1;
    return y * gain_;
  }

  MEnvelopeData curve_;
  std::vector<double> kernel_;
  double gain_ = 1;
  std::vector<double> histories_[kServed];
  std::size_t position_ = 0;  // of all channels, one behind the other
  bool isRepairWanted_ = false;
  double last_[kServed] = {}, beforeLast_[kServed] = {};
};

class Scenario {
 public:
  explicit Scenario(TestRandom& random) : random_(random) { Prepare(); }

  void Step() {
    switch (random_.Below(12)) {
      case 0:
        if (random_.OneIn(2)) Prepare();
        break;
      case 1:
        model_.length = random_.OneIn(3) ? random_.OneOf<int32_t>({2, 3, 5, 100}) : random_.Integer(2, 40);
        imprinta_.Set("length", model_.length);
        model_.Update();
        break;
      case 2: {
        const MEnvelopeData curve = RandomCurve(random_, -1, 1);
        model_.SetCurve(LoadCurve(imprinta_, curve, "parameterlength", MString::FromInteger(model_.length)));
        model_.Update();
        break;
      }
      case 3: {
        const int32_t samples = random_.Integer(0, 2 * model_.length);
        imprinta_.Skip(samples);
        model_.Skip(channels_, samples);
        break;
      }
      default:
        Process();
    }
  }

 private:
  void Prepare() {
    channels_ = random_.Integer(1, 10);
    imprinta_.Prepare(channels_, random_.Integer(1, 192000));
    model_.Update();
  }

  void Process() {
    const int32_t limit = random_.OneOf<int32_t>({1, 31, 40, 600});
    AudioBlock in = AudioBlock::Noise(channels_, random_.Integer(0, limit), random_);
    const AudioBlock expected = model_.Process(in);
    AudioBlock out = AudioBlock::Constant(channels_, in.GetLength(), NAN);
    const bool inPlace = random_.OneIn(2);
    imprinta_.Process(in.From(), inPlace ? in.From() : out.From(), in.GetLength());
    const AudioBlock& result = inPlace ? in : out;
    peak_ = std::max(peak_, expected.GetPeak());
    ASSERT_LE(result.GetDistance(expected), 2e-6 * peak_) << in.GetLength() << " samples";
    ASSERT_TRUE(in.GuardsHold() && out.GuardsHold());
  }

  TestRandom& random_;
  NamedEffect imprinta_{"Imprinta"};
  ImprintaModel model_;
  int32_t channels_ = 0;
  double peak_ = 0;
};

TEST(Imprinta, AgreesWithAPlainModelInRandomScenarios) {
  TestRandom random;
  for (int32_t scenario = 0; scenario < 60 && !HasFailure(); ++scenario) {
    SCOPED_TRACE("scenario " + std::to_string(scenario));
    Scenario both(random);
    for (int32_t step = 0; step < 50 && !HasFatalFailure(); ++step) both.Step();
  }
}

}  // namespace
