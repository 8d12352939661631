// Clampet beside a plain model of its curves in doubles, over random scenarios.

#include <gtest/gtest.h>

#include <numbers>

#include "tests/effects/NamedEffect.h"

namespace {

constexpr double kPi = std::numbers::pi;

struct ClampetModel {
  double gain = 0, threshold = 0.8, harmonics = 0;
  int32_t mode = 0;

  double Knee(double x) const {
    const double T = threshold * threshold;
    double k = T == 1 ? 1 : 1 / (1 - T), A = 1 - T;
    switch (mode) {
      case 0:
        k *= kPi / 2, A *= 2 / kPi;
        return std::sin(k * x) * A;
      case 1: {
        k *= 1.1941918983186133, A = (1 - T) * 0.837386354243376;
        const double u = k * x;
        return (u + (u + 1) * u * u * -0.15) * A;
      }
      case 2:
        A *= 0.5;
        return (1 - (k * x - 1) * (k * x - 1)) * A;
      case 3:
        return x / (k * x * k * x + 1);
      case 4:
        k *= kPi, A /= kPi;
        return std::tanh(k * x) * A;
      case 5: {
        k *= 3, A /= 3;
        const double u = k * x;
        return (u * u + 27) * u / (9 * u * u + 27) * A;
      }
      default:
        k *= 2 * kPi, A /= 2 * kPi;
        return std::atan(k * x) * A;
    }
  }

  double At(double input) const {
    const double T = threshold * threshold;
    const double N = 1 / (Knee(1 - T) + T);
    const double x = input * std::pow(10, gain / 20), a = std::abs(x);
    double y = a < T ? a * N : a >= 1 ? 1 : (Knee(a - T) + T) * N;
    if (x < 0) y = -y;
    if (harmonics > 1e-5) y = std::min(1.0, (y - x) * (y - x) * harmonics + y);
    return y;
  }
};

class Scenario {
 public:
  explicit Scenario(TestRandom& random) : random_(random) { Prepare(); }

  void Step() {
    switch (random_.Below(7)) {
      case 0:
        return Prepare();
      case 1:
        model_.gain = random_.OneIn(3) ? random_.OneOf<double>({-24, 0, 24}) : random_.Real(-24, 24);
        return clampet_.Set("gain", model_.gain);
      case 2:
        model_.threshold =
            random_.OneIn(3) ? random_.OneOf<double>({0, 1e-40, 0.01, 0.999, 1}) : random_.Real(0, 1);
        return clampet_.Set("threshold", model_.threshold);
      case 3:
        model_.harmonics =
            random_.OneIn(3) ? random_.OneOf<double>({0, 1e-5, 1.1e-5, 1}) : random_.Real(0, 1);
        return clampet_.Set("evenharmonics", model_.harmonics);
      case 4:
        model_.mode = random_.Below(7);
        return clampet_.Set("mode", model_.mode);
      default:
        Process();
    }
  }

 private:
  void Prepare() {
    channels_ = random_.Integer(1, 10);
    clampet_.Prepare(channels_, random_.Integer(1, 192000));
  }

  void Process() {
    const double peak = random_.OneOf<double>({1e-3, 0.5, 1, 2, 20});
    AudioBlock in = AudioBlock::Noise(channels_, random_.Integer(0, 700), random_, peak);
    for (int32_t i = 0; i < in.GetLength(); i += 7)
      in[random_.Below(channels_)][i] = random_.OneOf<float>({0, 1, -1, 0.64f, -0.64f, 0.25f});
    AudioBlock expected = in, out = AudioBlock::Constant(channels_, in.GetLength(), NAN);
    for (int32_t c = 0; c < channels_; ++c)
      for (int32_t i = 0; i < in.GetLength(); ++i)
        expected[c][i] = static_cast<float>(model_.At(double{in[c][i]}));
    const bool inPlace = random_.OneIn(2);
    clampet_.Process(in.From(), inPlace ? in.From() : out.From(), in.GetLength());
    const AudioBlock& result = inPlace ? in : out;
    ASSERT_LE(result.GetDistance(expected), 1e-6 * std::max(1.0, expected.GetPeak()))
        << "mode " << model_.mode << ", gain " << model_.gain << ", threshold " << model_.threshold
        << ", harmonics " << model_.harmonics;
    ASSERT_TRUE(in.GuardsHold() && out.GuardsHold());
  }

  TestRandom& random_;
  NamedEffect clampet_{"Clampet"};
  ClampetModel model_;
  int32_t channels_ = 0;
};

TEST(Clampet, AgreesWithAPlainModelInRandomScenarios) {
  TestRandom random;
  for (int32_t scenario = 0; scenario < 100 && !HasFailure(); ++scenario) {
    SCOPED_TRACE("scenario " + std::to_string(scenario));
    Scenario both(random);
    for (int32_t step = 0; step < 60 && !HasFatalFailure(); ++step) both.Step();
  }
}

}  // namespace
