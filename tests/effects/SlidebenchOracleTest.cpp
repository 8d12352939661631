// Slidebench beside a plain model of it in doubles, over random scenarios: the gains out of the curve, and
// the blocks that fade over, with transforms from their definition.

#include <gtest/gtest.h>

#include "tests/dsp/FFTModel.h"
#include "tests/effects/NamedEffect.h"
#include "tests/effects/OracleCurve.h"

namespace {

constexpr int32_t kServed = 8;
constexpr int32_t kSize = 4096;
constexpr int32_t kHalf = kSize / 2;

using Samples = std::vector<double>;

// Takes the first samples away, and gives them.
Samples TakeFirst(Samples& samples, int32_t count) {
  Samples first(samples.begin(), samples.begin() + count);
  samples.erase(samples.begin(), samples.begin() + count);
  return first;
}

// A spectral process of one channel, with the buffers as long as what they hold.
class CrossFadeModel {
 public:
  void Run(const Samples& gains) {
    if (!isStarted_) destination.assign(kSize + kHalf, 0);
    isStarted_ = true;
    while (source.size() >= kSize) {
      const bool isFirst = history_.empty();
      const Samples moved = TakeFirst(source, kSize);
      history_.insert(history_.end(), moved.begin(), moved.end());
      if (isFirst)
        tail_ = Transform(0, gains);
      else
        for (const int32_t start : {0, kHalf}) FadeOver(start, Transform(start, gains));
      const int32_t done = isFirst ? kHalf : kSize;
      const Samples out = TakeFirst(tail_, done);
      destination.insert(destination.end(), out.begin(), out.end());
      TakeFirst(history_, done);
    }
  }
  double GetPeak() const {
    double peak = 0;
    for (const Samples* const samples : {&source, &destination, &history_, &tail_})
      for (const double sample : *samples) peak = std::max(peak, std::abs(sample));
    return peak;
  }

  Samples source, destination;

 private:
  Samples Transform(int32_t start, const Samples& gains) const {
    Samples spectrum(history_.begin() + start, history_.begin() + start + kSize);
    if (std::count(spectrum.begin(), spectrum.end(), 0.0) == kSize) return spectrum;  // to save time
    spectrum = ModelForward(spectrum);
    for (std::size_t i = 0; i < kSize; ++i) spectrum[i] *= gains[i];
    Samples frame = ModelInverse(spectrum);
    for (double& sample : frame) sample *= 2.0 / kSize;
    return frame;
  }
  void FadeOver(int32_t start, const Samples& frame) {
    tail_.resize(static_cast<std::size_t>(start + kSize));
    for (int32_t i = 0; i < kSize; ++i) {
      const double w = i < kHalf ? static_cast<double>(i) / kHalf : 1;
      double& to = tail_[static_cast<std::size_t>(start + i)];
      to = frame[static_cast<std::size_t>(i)] * w + to * (1 - w);
    }
  }

  Samples history_, tail_;
  bool isStarted_ = false;
};

class SlidebenchModel {
 public:
  double depth = 1;
  MEnvelopeData curve;

  SlidebenchModel() {
    curve.xMinimum = 10 * std::log10(2);
    curve.xMaximum = 20000 * std::log10(2);
    curve.yMaximum = 2;
    curve.Add(curve.xMinimum, 1);
    curve.Add(curve.xMaximum, 1);
  }

  // A rate of 0 leaves everything alone.
  void Prepare(int32_t sampleRate) {
    sampleRate_ = sampleRate;
    if (sampleRate < 1) return;
    for (CrossFadeModel& channel : channels_) channel = {};
    Update();
  }
  void Update() {
    if (sampleRate_ < 1) return;
    MEnvelopeComputer computer;
    computer.Build(curve);
    gains_.clear();
    for (int32_t k = 0; k < kSize; ++k) {
      const double f = std::max(1.0, k * 0.0001220703125 * sampleRate_);
      const double v = (computer.GetValue(std::log10(f)) - 1) * depth + 1;
      gains_.push_back(static_cast<float>(v * v));
    }
  }
  AudioBlock Process(const AudioBlock& in) {
    AudioBlock out = in;
    const int32_t samples = in.GetLength();
    if (gains_.empty() || samples == 0) return out;
    for (int32_t c = 0; c < std::min(in.GetChannelCount(), kServed); ++c) {
      CrossFadeModel& channel = channels_[c];
      channel.source.insert(channel.source.end(), in[c], in[c] + samples);
      channel.Run(gains_);
      const Samples next = TakeFirst(channel.destination, samples);
      std::transform(next.begin(), next.end(), out[c], [](double y) { return static_cast<float>(y); });
    }
    return out;
  }
  double GetPeak() const {
    double peak = 0;
    for (const CrossFadeModel& channel : channels_) peak = std::max(peak, channel.GetPeak());
    return peak;
  }

 private:
  int32_t sampleRate_ = 0;
  Samples gains_;
  CrossFadeModel channels_[kServed];
};

// Most points are where audible frequencies are read.
MEnvelopeData DrawCurve(TestRandom& random, MEnvelopeData curve) {
  curve.Clear();
  for (int32_t i = random.Below(8); i > 0; --i) {
    MEnvelopePoint point;
    point.x = random.OneIn(8) ? random.Real(4.5, 7000) : random.Real(2.9, 4.4);
    point.y = random.OneIn(4) ? random.OneOf<double>({0, 1, 2}) : random.Real(0, 2);
    point.type = random.Below(4);
    point.tension = random.Real(-0.9, 0.9);
    point.tensionX = random.Real(-0.9, 0.9);
    curve.Add(point);
  }
  curve.Normalize();
  return curve;
}

class Scenario {
 public:
  explicit Scenario(TestRandom& random) : random_(random) { Prepare(); }

  void Step() {
    switch (random_.Below(10)) {
      case 0:
        if (random_.OneIn(4)) Prepare();
        break;
      case 1:
        SetDepth();
        break;
      case 2:
        LoadCurveAndDepth();
        break;
      case 3:
        slidebench_.Skip(random_.Below(10000));
        break;
      default:
        Process();
    }
  }

 private:
  void Prepare() {
    const int32_t rate = random_.OneIn(5) ? 0 : random_.OneOf<int32_t>({8000, 44100, 48000, 96000, 192000});
    if (rate > 0 || channels_ == 0) channels_ = random_.OneIn(12) ? 10 : random_.Integer(1, 2);
    isPrepared_ = rate > 0;
    if (isPrepared_) peak_ = 0;
    slidebench_.Prepare(channels_, rate);
    model_.Prepare(rate);
  }
  void SetDepth() {
    if (!isPrepared_) return;
    double value = random_.OneIn(3) ? random_.OneOf<double>({0, 1, 2.5, -1.25}) : random_.Real(0, 1);
    model_.depth = value;
    if (random_.OneIn(10)) value = random_.OneOf<double>({NAN, INFINITY}), model_.depth = 1;
    slidebench_.Set("depth", value);
    model_.Update();
  }
  void LoadCurveAndDepth() {
    if (!isPrepared_) return;
    const MString depth = MString::FromDouble(random_.Real(0, 1), 4);
    model_.curve = LoadCurve(slidebench_, DrawCurve(random_, model_.curve), "parameterdepth", depth);
    model_.depth = slidebench_.Get(0);
    model_.Update();
  }
  void Process() {
    int32_t samples = random_.Integer(0, random_.OneOf<int32_t>({0, 64, 1000, 9000}));
    const bool isSilence = random_.OneIn(3);
    if (isSilence && random_.OneIn(2)) samples += 3 * kSize;
    AudioBlock in =
        isSilence ? AudioBlock(channels_, samples) : AudioBlock::Noise(channels_, samples, random_);
    const AudioBlock expected = model_.Process(in);
    AudioBlock out = AudioBlock::Constant(channels_, samples, NAN);
    const bool inPlace = random_.OneIn(2);
    slidebench_.Process(in.From(), inPlace ? in.From() : out.From(), samples);
    const AudioBlock& result = inPlace ? in : out;
    peak_ = std::max(peak_, expected.GetPeak());  // also of what is gone: its rounding stays in the tail
    ASSERT_LE(result.GetDistance(expected), 2e-6 * std::max(peak_, 1.0));
    ASSERT_TRUE(in.GuardsHold() && out.GuardsHold());
    const double left = model_.GetPeak();
    if (std::abs(left - 0.0001) > 1e-5) {
      ASSERT_EQ(slidebench_.IsSilent(), left < 0.0001) << left;
    }
    ASSERT_EQ(slidebench_.Call(MService::kGetLatency), kSize + kHalf);
  }

  TestRandom& random_;
  NamedEffect slidebench_{"Slidebench"};
  SlidebenchModel model_;
  int32_t channels_ = 0;
  bool isPrepared_ = false;
  double peak_ = 0;
};

TEST(Slidebench, AgreesWithAPlainModelInRandomScenarios) {
  TestRandom random;
  for (int32_t scenario = 0; scenario < 4 && !HasFailure(); ++scenario) {
    SCOPED_TRACE("scenario " + std::to_string(scenario));
    Scenario both(random);
    for (int32_t step = 0; step < 30 && !HasFatalFailure(); ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      both.Step();
    }
  }
}

}  // namespace
