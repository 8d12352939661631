// Echolan beside a plain model of it in doubles, over random scenarios.
//
// The model's line holds numbers that are rounded to float, and to zero for denormals, each time they are
// stored, because that is what the delay does: its own rounding comes back to it. So both agree to the last
// bit, until a change of the delay fades the line. There the last bit of a product depends on how the gain is
// put together, and from then on until the line is cleared they agree within a millionth of the peak.

#include <gtest/gtest.h>

#include <cfloat>

#include "tests/effects/EcholanUnderTest.h"

namespace {

double AsStored(double value) {
  const double rounded = static_cast<float>(value);
  return std::abs(rounded) < double{FLT_MIN} || !std::isfinite(rounded) ? 0 : rounded;
}

class EcholanModel {
 public:
  double feedback = 0.4;
  double delay = 0.1;
  bool hasFaded = false;  // since the line was cleared

  void Prepare(int32_t channels, int32_t sampleRate) {
    channels_ = channels;
    sampleRate_ = sampleRate;
    if (sampleRate < 1) return;
    const auto lines = static_cast<std::size_t>(std::min(channels, 8));
    lines_.assign(lines, std::vector<double>(GetWantedLength(), 0.0));
    position_ = 0;
    hasFaded = false;
  }

  AudioBlock Process(const AudioBlock& in) {
    const double gain = feedback * feedback;
    const std::size_t length = lines_.empty() || sampleRate_ < 1 ? GetLength() : GetWantedLength();
    if (length != GetLength()) {
      for (std::vector<double>& line : lines_) line = Change(line, length);
      hasFaded = true;
    }
    if (position_ >= length) position_ = 0;
    AudioBlock out = in;
    for (int32_t i = 0; i < in.GetLength() && length > 0; ++i) {
      for (std::size_t c = 0; c < lines_.size() && c < static_cast<std::size_t>(channels_); ++c) {
        const double x = AsStored(in[static_cast<int32_t>(c)][i]);
        const double y = AsStored(lines_[c][position_] * gain + x);
        lines_[c][position_] = y;
        out[static_cast<int32_t>(c)][i] = static_cast<float>(y);
      }
      position_ = (position_ + 1) % length;
    }
    return out;
  }

  bool IsSilent() const {
    for (const std::vector<double>& line : lines_)
      for (const double value : line)
        if (std::abs(value) > double{0.0001f}) return false;
    return true;
  }

 private:
  std::size_t GetLength() const { return lines_.empty() ? 0 : lines_[0].size(); }
  std::size_t GetWantedLength() const {
    return std::max<std::size_t>(1, static_cast<std::size_t>(sampleRate_ * delay));
  }
  // The line from the sample that would be read next on, faded out up to its end, or to its old end if that
  // is nearer, and zeros behind.
  std::vector<double> Change(const std::vector<double>& line, std::size_t length) const {
    const std::size_t end = std::min(line.size(), length);
    std::vector<double> changed(length, 0.0);
    for (std::size_t i = 0; i < end; ++i) {
      const double gain = 1 - static_cast<double>(i) / static_cast<double>(end);
      changed[i] = AsStored(line[(position_ + i) % line.size()] * gain);
    }
    return changed;
  }

  int32_t channels_ = 0;
  int32_t sampleRate_ = 1;
  std::vector<std::vector<double>> lines_;
  std::size_t position_ = 0;
};

// One Echolan and one model, through the same calls.
class Scenario {
 public:
  explicit Scenario(TestRandom& random) : random_(random) { Prepare(); }

  void Step() {
    switch (random_.Below(8)) {
      case 0:
        if (random_.OneIn(3)) Prepare();
        break;
      case 1:
        model_.feedback = random_.OneIn(4) ? random_.OneOf<double>({0, 0.8, 1}) : random_.Real(0, 0.8);
        echolan_.SetFeedback(model_.feedback);
        break;
      case 2:
      case 3:
        model_.delay = random_.OneIn(4) ? random_.OneOf<double>({0, 0.001, 0.5, 0.8}) : random_.Real(0, 0.5);
        echolan_.SetDelay(model_.delay);
        break;
      default:
        Process();
    }
  }

 private:
  void Prepare() {
    channels_ = random_.OneIn(10) ? random_.OneOf<int32_t>({0, 9, 11}) : random_.Integer(1, 8);
    const int32_t limit = random_.OneOf<int32_t>({10, 1000, 48000});
    const int32_t sampleRate = random_.OneIn(6) ? 0 : random_.Integer(1, limit);
    echolan_.Prepare(channels_, sampleRate);
    model_.Prepare(channels_, sampleRate);
  }

  AudioBlock MakeSignal(int32_t samples) {
    switch (random_.Below(4)) {
      case 0:
        return AudioBlock(channels_, samples);
      case 1:
        return AudioBlock::Impulse(channels_, samples);
      default:
        return AudioBlock::Noise(channels_, samples, random_, random_.OneOf<double>({1, 1e-30, 1e6}));
    }
  }

  void Process() {
    const int32_t limit = random_.OneOf<int32_t>({0, 10, 300, 5000});
    AudioBlock in = MakeSignal(random_.Integer(0, limit));
    const AudioBlock expected = model_.Process(in);
    AudioBlock out = AudioBlock::Constant(channels_, in.GetLength(), NAN);
    const bool inPlace = random_.OneIn(2);
    echolan_.Process(in.From(), inPlace ? in.From() : out.From(), in.GetLength());
    const AudioBlock& result = inPlace ? in : out;
    peak_ = std::max(peak_, expected.GetPeak());
    ASSERT_LE(result.GetDistance(expected), model_.hasFaded ? 1e-6 * peak_ : 0);
    ASSERT_TRUE(in.GuardsHold() && out.GuardsHold());
    ASSERT_TRUE(echolan_.IsSilent() == model_.IsSilent() || model_.hasFaded);
  }

  TestRandom& random_;
  EcholanUnderTest echolan_;
  EcholanModel model_;
  int32_t channels_ = 0;
  double peak_ = 0;
};

TEST(Echolan, AgreesWithAPlainModelInRandomScenarios) {
  TestRandom random;
  for (int32_t scenario = 0; scenario < 150 && !HasFailure(); ++scenario) {
    SCOPED_TRACE("scenario " + std::to_string(scenario));
    Scenario both(random);
    for (int32_t step = 0; step < 40 && !HasFatalFailure(); ++step) both.Step();
  }
}

}  // namespace
