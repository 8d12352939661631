#pragma once
// An effect with low-frequency oscillators and a plain model of it in doubles, taken through the same random
// calls. A Model has
//   static constexpr const char* kName;
//   static constexpr double kTolerance;                   of the peak
//   void Prepare(int32_t channels, int32_t sampleRate);   a rate of 0 keeps what runs
//   void Set(int32_t row, double value);                  within the limits of its kind
//   void SetWave(int32_t wave, double shape, double customDepth, const MEnvelopeData& curve);
//   AudioBlock Process(const AudioBlock& in);
//   void Skip(int32_t samples);
// and that of an effect with a memory
//   int32_t GetLatency() const;
//   bool IsSilent() const;
//   double GetPeak() const;                               of the memory
// and that of an effect whose sound can swell without end
//   static double Limit(int32_t row, double value);       to where it does not

#include <gtest/gtest.h>

#include "tests/effects/ModulationUnderTest.h"
#include "tests/effects/OracleCurve.h"
#include "tests/effects/WaveModel.h"

template <typename Model>
class ModulationScenario {
 public:
  explicit ModulationScenario(TestRandom& random) : random_(random) {
    for (int32_t i = 0; i < effect_.GetRowCount(); ++i) model_.Set(i, effect_.Get(i));
    Prepare();
  }

  void Step() {
    switch (random_.Below(12)) {
      case 0:
        if (random_.OneIn(3)) Prepare();
        break;
      case 1:
        if (random_.OneIn(3) && sampleRate_ > 0) LoadWaves();
        break;
      case 2:
        Skip(random_.OneOf<int32_t>({-1, 0, 1, 511, 20000}));
        break;
      case 3:
      case 4:
      case 5:
        if (sampleRate_ > 0) SetRow(random_.Below(effect_.GetRowCount()));
        break;
      default:
        Process();
    }
  }

 private:
  // Without a rate nothing but the rate changes.
  void Prepare() {
    sampleRate_ =
        random_.OneIn(8) ? 0 : random_.OneOf<int32_t>({8000, 22050, 32000, 44100, 48000, 96000, 192000});
    if (sampleRate_ > 0 || channels_ == 0)
      channels_ = random_.OneIn(3) ? random_.OneOf<int32_t>({1, 3, 4, 5, 8, 10}) : 2;
    effect_.Prepare(channels_, sampleRate_);
    model_.Prepare(channels_, sampleRate_);
  }

  void SetRow(int32_t index) {
    const MPluginParameter& row = effect_.GetRow(index);
    if (row.kind == MParameterKind::kPanel) return;
    double value = random_.Below(2), used = value;
    if (row.kind == MParameterKind::kReal) {
      const double least = row.real.minimum, most = row.real.maximum, usual = row.real.defaultValue;
      used = value =
          random_.OneIn(4) ? random_.OneOf<double>({least, most, usual}) : random_.Real(least, most);
      if (random_.OneIn(8)) used = value = random_.OneOf<double>({2.5, -3.25});  // may be out of its range
      if (random_.OneIn(12)) value = random_.OneOf<double>({NAN, INFINITY, -INFINITY}), used = usual;
    }
    if (row.kind == MParameterKind::kInteger)
      used = value = random_.Integer(row.integer.minimum - 1, row.integer.maximum + 1);
    if constexpr (requires { Model::Limit(index, value); }) {
      if (std::isfinite(value)) used = value = Model::Limit(index, value);
    }
    effect_.Set(index, value);
    model_.Set(index, used);
  }

  // Loads a state with other waves and the rows as they are, with the digits of a state.
  void LoadWaves() {
    MXMLItem item("state");
    effect_.Save(item);
    const int32_t count = item.GetChildren().GetCount();
    double shapes[2], depths[2];
    MEnvelopeData curves[2];
    for (int32_t w = 0; w < count; ++w) {
      MXMLItem& wave = *item.GetChildren()[w];
      shapes[w] = random_.Below(16) + random_.OneOf<double>({0, 0, 0.25, 0.8125});
      depths[w] = random_.OneOf<double>({0, 0, 0.25, 0.75, 1});
      wave.SetAttribute("value", MString::FromDouble(shapes[w], 4));
      wave.SetAttribute("EnvelopeDepth", MString::FromDouble(depths[w], 4));
      curves[w] = RandomCurve(random_, -1, 1);
      wave.RemoveSubItem(wave.SubItem("Envelope"));
      curves[w].Save(wave.AddSubItem("Envelope"));
      curves[w].Load(wave.SubItem("Envelope"));
    }
    effect_.Load(item);
    for (int32_t w = 0; w < count; ++w) model_.SetWave(w, shapes[w], depths[w], curves[w]);
    for (int32_t i = 0; i < effect_.GetRowCount(); ++i) {
      const MPluginParameter& row = effect_.GetRow(i);
      const double value = effect_.Get(i);
      model_.Set(i, std::isfinite(value) ? value : row.real.defaultValue);
    }
  }

  void Skip(int32_t samples) {
    effect_.Skip(samples);
    model_.Skip(std::max(samples, 0));
  }

  AudioBlock MakeSignal(int32_t samples) {
    if (random_.OneIn(8)) return AudioBlock(channels_, samples);
    if (random_.OneIn(3)) return AudioBlock::Constant(channels_, samples, 0.5);
    return AudioBlock::Noise(channels_, samples, random_);
  }

  void Process() {
    AudioBlock in = MakeSignal(random_.Integer(0, random_.OneOf<int32_t>({0, 10, 300, 3000})));
    double peak = std::max(in.GetPeak(), GetMemoryPeak());
    const AudioBlock expected = model_.Process(in);
    peak = std::max(peak, expected.GetPeak());  // a gain near 0 is a difference
    AudioBlock out = AudioBlock::Constant(channels_, in.GetLength(), NAN);
    const bool inPlace = random_.OneIn(2);
    effect_.Process(in.From(), inPlace ? in.From() : out.From(), in.GetLength());
    const AudioBlock& result = inPlace ? in : out;
    ASSERT_LE(result.GetDistance(expected), Model::kTolerance * peak);
    ASSERT_TRUE(in.GuardsHold() && out.GuardsHold());
    ExpectMemory();
  }

  void ExpectMemory() {
    if constexpr (kHasMemory) {
      EXPECT_EQ(effect_.IsSilent(), model_.IsSilent());
      EXPECT_EQ(effect_.Call(MService::kGetLatency), model_.GetLatency());
    } else {
      EXPECT_EQ(effect_.IsSilent(), 1);
      EXPECT_EQ(effect_.Call(MService::kGetLatency), 0);
    }
  }

  double GetMemoryPeak() const {
    if constexpr (kHasMemory)
      return model_.GetPeak();
    else
      return 0;
  }

  static constexpr bool kHasMemory = requires(const Model& model) { model.GetPeak(); };

  TestRandom& random_;
  ModulationUnderTest effect_{Model::kName};
  Model model_;
  int32_t channels_ = 0;
  int32_t sampleRate_ = 0;
};

template <typename Model>
void ExpectModulationAgrees() {
  TestRandom random;
  for (int32_t scenario = 0; scenario < 60 && !testing::Test::HasFailure(); ++scenario) {
    SCOPED_TRACE("scenario " + std::to_string(scenario));
    ModulationScenario<Model> both(random);
    for (int32_t step = 0; step < 60 && !testing::Test::HasFatalFailure(); ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      both.Step();
    }
  }
}
