// Bendform beside a plain model of it in doubles, over random scenarios.

#include <gtest/gtest.h>

#include "tests/effects/NamedEffect.h"
#include "tests/effects/OracleCurve.h"

namespace {

class BendformModel {
 public:
  double depth = 0.5;

  BendformModel() {
    MEnvelopeData identity;
    identity.Add(0, 0);
    identity.Add(1, 1);
    SetCurve(identity);
  }
  void SetCurve(const MEnvelopeData& curve) { computer_.Build(curve); }

  double At(double x) {
    const double u = std::sqrt(std::abs(x));
    computer_.Seek(0);
    const double v = computer_.GetValue(u);
    return x >= 0 ? v * v * depth + x * (1 - depth) : x * (1 - depth) - v * v * depth;
  }

 private:
  MEnvelopeComputer computer_;
};

class Scenario {
 public:
  explicit Scenario(TestRandom& random) : random_(random) { Prepare(); }

  void Step() {
    switch (random_.Below(6)) {
      case 0:
        return Prepare();
      case 1:
        model_.depth = random_.OneIn(3) ? random_.OneOf<double>({0, 1}) : random_.Real(0, 1);
        return bendform_.Set("Depth", model_.depth);
      case 2: {
        model_.depth = random_.Below(10001) / 10000.0;  // what four decimals hold
        const MEnvelopeData curve = RandomCurve(random_, 0, 1);
        return model_.SetCurve(
            LoadCurve(bendform_, curve, "parameterDepth", MString::FromDouble(model_.depth, 4)));
      }
      default:
        Process();
    }
  }

 private:
  void Prepare() {
    channels_ = random_.Integer(1, 10);
    bendform_.Prepare(channels_, random_.Integer(1, 192000));
  }

  void Process() {
    const double peak = random_.OneOf<double>({1e-3, 0.5, 1, 4});
    AudioBlock in = AudioBlock::Noise(channels_, random_.Integer(0, 500), random_, peak);
    for (int32_t i = 0; i < in.GetLength(); i += 5)
      in[random_.Below(channels_)][i] = random_.OneOf<float>({0, -0.0f, 1, -1, 0.25f, -0.25f});
    AudioBlock expected = in, out = AudioBlock::Constant(channels_, in.GetLength(), NAN);
    for (int32_t c = 0; c < channels_; ++c)
      for (int32_t i = 0; i < in.GetLength(); ++i)
        expected[c][i] = static_cast<float>(model_.At(double{in[c][i]}));
    const bool inPlace = random_.OneIn(2);
    bendform_.Process(in.From(), inPlace ? in.From() : out.From(), in.GetLength());
    const AudioBlock& result = inPlace ? in : out;
    ASSERT_LE(result.GetDistance(expected), 1e-6 * std::max(1e-3, expected.GetPeak())) << model_.depth;
    ASSERT_TRUE(in.GuardsHold() && out.GuardsHold());
  }

  TestRandom& random_;
  NamedEffect bendform_{"Bendform"};
  BendformModel model_;
  int32_t channels_ = 0;
};

TEST(Bendform, AgreesWithAPlainModelInRandomScenarios) {
  TestRandom random;
  for (int32_t scenario = 0; scenario < 80 && !HasFailure(); ++scenario) {
    SCOPED_TRACE("scenario " + std::to_string(scenario));
    Scenario both(random);
    for (int32_t step = 0; step < 50 && !HasFatalFailure(); ++step) both.Step();
  }
}

}  // namespace
