// Squeezel beside a plain model of it, over random scenarios.

#include "tests/effects/SqueezelOracle.h"

#include <gtest/gtest.h>

#include "effects/Squeezel.h"
#include "tests/common/Texts.h"
#include "tests/effects/NamedEffect.h"

namespace {

class Scenario {
 public:
  explicit Scenario(TestRandom& random) : random_(random) {
    while (sampleRate_ < 1) Prepare();
    Load();
  }

  void Step() {
    if (random_.OneIn(15)) Prepare();
    if (sampleRate_ > 0 && random_.OneIn(12)) Load();
    if (sampleRate_ > 0 && random_.OneIn(2)) SetRow(random_.Below(squeezel_.GetRowCount()));
    if (random_.OneIn(8)) Skip();
    if (random_.OneIn(12)) OpenEditor();
    Process();
  }

 private:
  void Prepare() {
    channels_ = random_.OneIn(3) ? random_.Integer(0, 10) : 2;
    sampleRate_ = random_.OneOf<int32_t>({0, 8000, 22050, 32000, 44100, 48000, 96000, 192000});
    squeezel_.Prepare(channels_, sampleRate_);
    model_.Prepare(channels_, sampleRate_);
  }

  // Somewhere in a row's range, often at an end of it.
  double RandomValue(const MPluginParameter& row) {
    if (row.kind == MParameterKind::kEnumeration) return random_.Below(row.enumeration.count);
    if (row.kind == MParameterKind::kSwitch) return random_.Below(2);
    if (random_.OneIn(4)) return random_.OneIn(2) ? row.real.minimum : row.real.maximum;
    return random_.Real(row.real.minimum, row.real.maximum);
  }
  void SetRow(int32_t index) {
    const MPluginParameter& row = squeezel_.GetRow(index);
    const double value = RandomValue(row);
    model_.rows[Utf8(row.key)] = value;
    model_.Update();
    squeezel_.Set(index, value);
  }
  // A state of any age, in which some rows may be missing.
  void Load() {
    MXMLItem item("state");
    model_.rows = SqueezelOracle().rows;
    for (int32_t i = 0; i < squeezel_.GetRowCount(); ++i) {
      const MPluginParameter& row = squeezel_.GetRow(i);
      if (random_.OneIn(6)) continue;
      const MString text = MString::FromDouble(RandomValue(row), 4);
      item.SetAttribute(MString::FromNarrow(("parameter" + Utf8(row.key)).c_str()), text);
      model_.rows[Utf8(row.key)] = text.ToDouble();
    }
    LoadSideChain(item);
    if (random_.OneIn(2)) {
      const MEnvelopeData curve = RandomCurve(random_, 0, 1);
      curve.Save(item.AddSubItem("graph"));
      model_.graph.Load(item.SubItem("graph"));
    }
    model_.Update();
    LoadMarks(item);
    model_.Update();
    squeezel_.Call(MService::kLoadState, MAsWord(&item));
    ASSERT_NEAR(squeezel_.Get(0), model_.rows["gain"], 1e-9);
    ASSERT_NEAR(squeezel_.Get(6), model_.rows["ratio"], 1e-9 * model_.rows["ratio"]);
    model_.rows["ratio"] = squeezel_.Get(6);  // 1 to the last bit, or not
    model_.Update();
  }

  void LoadSideChain(MXMLItem& item) {
    const auto draw = [&](const char* key, double missing, double value) {
      if (random_.OneIn(5)) return missing;
      const MString text = MString::FromDouble(value, 4);
      item.SetAttribute(MString::Literal(key), text);
      return text.ToDouble();
    };
    model_.isFiltered = draw("SideChainEnable", 0, random_.Below(2)) != 0;
    model_.plays = draw("SideChainPlay", 0, random_.Below(2)) != 0;
    // Mostly where single precision does little harm.
    const bool isAnywhere = random_.OneIn(4);
    const double least = isAnywhere ? 16 : 0.01 * sampleRate_, most = isAnywhere ? 25000 : 0.4 * sampleRate_;
    const auto anyFrequency = [&] { return least * std::pow(most / least, random_.Real(0, 1)); };
    const double first = anyFrequency(), second = anyFrequency();
    model_.lowest = draw("SideChainMinFrequency", 20, isAnywhere ? first : std::min(first, second));
    model_.highest = draw("SideChainMaxFrequency", 20000, isAnywhere ? second : std::max(first, second));
  }

  void LoadMarks(MXMLItem& item) {
    const auto isOld = [&](const char* mark) {
      const int32_t value = random_.Integer(-3, 2);
      if (value < 2) item.SetAttribute(MString::Literal(mark), MString::FromInteger(std::max(value, 0)));
      return value > 0;
    };
    if (isOld("halfgain")) model_.rows["gain"] *= 2;
    if (!isOld("amplituderatio")) return;
    const double T = std::pow(model_.rows["threshold"], 2);
    double& r = model_.rows["ratio"];
    const double ratio = 1 / (1 - 20 * std::log10((1 - T) / r + T) / (20 * std::log10(T)));
    if (std::isfinite(ratio)) r = ratio;
  }

  SqueezelAudioEffectPlugin& GetPlugin() {
    return *static_cast<SqueezelAudioEffectPlugin*>(
        static_cast<MPlugin*>(MAsAddress<void>(squeezel_.Call(MService::kAttach))));
  }
  void OpenEditor() {
    model_.isEditorOpen = random_.OneIn(2);
    GetPlugin().SetEditorOpen(model_.isEditorOpen);
  }
  void ExpectSameMeters() {
    const auto meters = GetPlugin().GetMeters();
    ASSERT_NEAR(meters.fastLevel, model_.fastLevel, 1e-9 * std::abs(model_.fastLevel));
    ASSERT_NEAR(meters.slowLevel, model_.slowLevel, 1e-9 * std::abs(model_.slowLevel));
    ASSERT_GE(meters.reduction, model_.lowReduction);
    ASSERT_LE(meters.reduction, model_.highReduction);
  }

  void Skip() {
    const int32_t samples = random_.Integer(0, random_.OneOf<int32_t>({1, 500, 20000}));
    squeezel_.Skip(samples);
    model_.Skip(samples);
    ExpectSameMeters();
  }

  AudioBlock MakeSignal(int32_t samples) {
    if (random_.OneIn(6)) return AudioBlock(channels_, samples);
    const double from = random_.OneOf<double>({1e-4, 0.1, 0.5, 1, 4});
    const double to = random_.OneOf<double>({1e-4, 0.1, 0.5, 1, 4});
    if (random_.OneIn(3))
      return AudioBlock(channels_, samples).Fill([&](int32_t i) { return from + (to - from) * i / samples; });
    return AudioBlock(channels_, samples).Fill([&](int32_t i) {
      return (from + (to - from) * i / samples) * random_.Real(-1, 1);
    });
  }

  void Process() {
    AudioBlock in = MakeSignal(random_.Integer(0, random_.OneOf<int32_t>({0, 10, 130, 1500})));
    const SqueezelOracle::Range range = model_.Process(in);
    AudioBlock out = AudioBlock::Constant(channels_, in.GetLength(), NAN);
    const bool inPlace = random_.OneIn(2);
    squeezel_.Process(in.From(), inPlace ? in.From() : out.From(), in.GetLength());
    ASSERT_TRUE(in.GuardsHold() && out.GuardsHold());
    const AudioBlock& result = inPlace ? in : out;
    for (int32_t c = 0; c < channels_; ++c) {
      for (int32_t i = 0; i < in.GetLength(); ++i) {
        const double low = range.low[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)];
        const double high = range.high[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)];
        const double rounding = 2e-7 * std::max(std::abs(low), std::abs(high)) + 1e-30;
        ASSERT_GE(result[c][i], low - rounding) << c << ", " << i << " of " << in.GetLength();
        ASSERT_LE(result[c][i], high + rounding) << c << ", " << i << " of " << in.GetLength();
      }
    }
    if (channels_ < 1 || in.GetLength() < 1) return;
    const float* const first = result[0];
    model_.Measure(double{*std::max_element(first, first + in.GetLength())}, in.GetLength());
    ExpectSameMeters();
  }

  TestRandom& random_;
  NamedEffect squeezel_{"Squeezel"};
  SqueezelOracle model_;
  int32_t channels_ = 0, sampleRate_ = 0;
};

TEST(Squeezel, AgreesWithAPlainModelInRandomScenarios) {
  TestRandom random;
  for (int32_t scenario = 0; scenario < 25 && !HasFailure(); ++scenario) {
    SCOPED_TRACE("scenario " + std::to_string(scenario));
    Scenario both(random);
    for (int32_t step = 0; step < 40 && !HasFatalFailure(); ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      both.Step();
    }
  }
}

}  // namespace
