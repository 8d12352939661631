#pragma once
// An effect and a plain model of it in doubles, taken through the same random calls. A Model has
//   void Prepare(int32_t channels, int32_t sampleRate);
//   void Set(int32_t row, double value);
//   AudioBlock Process(const AudioBlock& in);
//   double GetInnerPeak() const;          of the floats on the way to the output, at any time so far
//   bool IsSilent(bool& isClose) const;   isClose: rounding may decide
//
// Both may differ by the tolerance times the largest sample so far, also one inside: what is rounded there is
// a part of the output, however little of its signal is. A low-pass whose corner falls from 4 kHz to 20 Hz
// rings up to a hundred times its input, of which a high-pass behind it lets hardly anything through but the
// rounding.

#include <gtest/gtest.h>

#include "tests/common/TestRandom.h"
#include "tests/effects/NamedEffect.h"

template <typename Model>
class OracleScenario {
 public:
  // `usual` is the number of channels that most formats have.
  OracleScenario(std::string_view name, TestRandom& random, int32_t usual, double tolerance)
      : random_(random), effect_(name), usual_(usual), tolerance_(tolerance) {
    for (int32_t i = 0; i < effect_.GetRowCount(); ++i) model_.Set(i, effect_.Get(i));
    Prepare();
  }

  void Step() {
    switch (random_.Below(6)) {
      case 0:
        if (random_.OneIn(4)) Prepare();
        break;
      case 1:
      case 2:
        return SetRow(random_.Below(effect_.GetRowCount()));
      default:
        Process();
    }
  }

 private:
  void Prepare() {
    channels_ = random_.OneIn(4) ? random_.OneOf<int32_t>({0, 1, 2, 3, 5, 8, 10}) : usual_;
    const int32_t rate = random_.OneOf<int32_t>({8000, 22050, 32000, 44100, 48000, 96000, 192000});
    effect_.Prepare(channels_, rate);
    model_.Prepare(channels_, rate);
  }

  void SetRow(int32_t index) {
    const MPluginParameter& row = effect_.GetRow(index);
    double value = random_.Below(2);
    if (row.kind == MParameterKind::kPanel) return;
    if (row.kind == MParameterKind::kReal)
      value = random_.OneIn(4)
                  ? random_.OneOf<double>({row.real.minimum, row.real.maximum, row.real.defaultValue})
                  : random_.Real(row.real.minimum, row.real.maximum);
    effect_.Set(index, value);
    model_.Set(index, value);
  }

  AudioBlock MakeSignal(int32_t samples) {
    if (random_.OneIn(5)) return AudioBlock(channels_, samples);
    if (random_.OneIn(5)) return AudioBlock::Impulse(channels_, samples);
    return AudioBlock::Noise(channels_, samples, random_);
  }

  void Process() {
    AudioBlock in = MakeSignal(random_.Integer(0, random_.OneOf<int32_t>({0, 10, 300, 3000})));
    const AudioBlock expected = model_.Process(in);
    AudioBlock out = AudioBlock::Constant(channels_, in.GetLength(), NAN);
    const bool inPlace = random_.OneIn(2);
    effect_.Process(in.From(), inPlace ? in.From() : out.From(), in.GetLength());
    const AudioBlock& result = inPlace ? in : out;
    peak_ = std::max({peak_, expected.GetPeak(), model_.GetInnerPeak()});
    ASSERT_LE(result.GetDistance(expected), tolerance_ * peak_);
    ASSERT_TRUE(in.GuardsHold() && out.GuardsHold());
    bool isClose = false;
    const bool isSilent = model_.IsSilent(isClose);
    ASSERT_TRUE(isClose || effect_.IsSilent() == isSilent);
  }

  TestRandom& random_;
  NamedEffect effect_;
  Model model_;
  int32_t usual_;
  double tolerance_;
  int32_t channels_ = 0;
  double peak_ = 0;
};

template <typename Model>
void ExpectAgreement(std::string_view name, int32_t usualChannels, double tolerance) {
  TestRandom random;
  for (int32_t scenario = 0; scenario < 60 && !testing::Test::HasFailure(); ++scenario) {
    SCOPED_TRACE("scenario " + std::to_string(scenario));
    OracleScenario<Model> both(name, random, usualChannels, tolerance);
    for (int32_t step = 0; step < 50 && !testing::Test::HasFatalFailure(); ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      both.Step();
    }
  }
}
