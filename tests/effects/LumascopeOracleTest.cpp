// Lumascope beside a plain model of it in doubles, over random scenarios.

#include <gtest/gtest.h>

#include <complex>
#include <numbers>

#include "tests/common/TestRandom.h"
#include "tests/effects/LumascopeUnderTest.h"

namespace {

constexpr double kPi = std::numbers::pi;
constexpr std::size_t kPoints = 1024;
using Doubles = std::vector<double>;
using Complex = std::complex<double>;

// A section as it is designed and run, in double, with its output as a float.
class SectionModel {
 public:
  static SectionModel HighPass(double angle, double inverseTwoQ, double rate) {
    const double cs = std::cos(angle / rate), alpha = std::sin(angle / rate) * inverseTwoQ;
    return SectionModel((1 + cs) / 2, -(1 + cs), (1 + cs) / 2, 1 + alpha, -2 * cs, 1 - alpha);
  }
  // `side` is 1 for the low shelf and -1 for the high one.
  static SectionModel Shelf(int32_t side, double gain, double frequency, double q, double rate) {
    const double used = frequency < rate / 2 ? frequency : 0.4999 * rate;
    const double a = std::pow(10, gain / 40), w = 2 * kPi * used / rate;
    const double c = side * std::cos(w), b = 2 * std::sqrt(a) * std::sin(w) / (2 * q);
    return SectionModel(a * (a + 1 - (a - 1) * c + b), side * 2 * a * (a - 1 - (a + 1) * c),
                        a * (a + 1 - (a - 1) * c - b), a + 1 + (a - 1) * c + b,
                        side * -2 * (a - 1 + (a + 1) * c), a + 1 + (a - 1) * c - b);
  }
  float Step(float x) {
    const double y = b0_ * x + b1_ * x1_ + b2_ * x2_ - a1_ * y1_ - a2_ * y2_;
    x2_ = x1_, x1_ = x, y2_ = y1_, y1_ = y;
    return static_cast<float>(y);
  }
  void Reset() { x1_ = x2_ = y1_ = y2_ = 0; }

 private:
  SectionModel(double b0, double b1, double b2, double a0, double a1, double a2)
      : b0_(b0 / a0), b1_(b1 / a0), b2_(b2 / a0), a1_(a1 / a0), a2_(a2 / a0) {}

  double b0_, b1_, b2_, a1_, a2_;
  double x1_ = 0, x2_ = 0, y1_ = 0, y2_ = 0;
};

Doubles MakeWindow(std::size_t size, int32_t type) {
  Doubles window(size);
  const double last = static_cast<double>(size) - 1;
  for (std::size_t i = 0; i < size; ++i) {
    const double x = static_cast<double>(i) / last, t = 2 * x - 1;
    const double gauss = (static_cast<double>(i) - last / 2) / (0.4 * last / 2);
    const double shapes[] = {1,
                             0.53836 - 0.46164 * std::cos(2 * kPi * x),
                             (1 - std::cos(2 * kPi * x)) * 0.5,
                             std::sin(kPi * x),
                             std::sin(t) / t,
                             0,
                             std::exp(-0.5 * gauss * gauss)};
    window[i] = shapes[type];
  }
  for (std::size_t i = 0; type == 5 && i <= size / 2; ++i)
    window[i] = window[size - 1 - i] = 2 * static_cast<double>(i) / static_cast<double>(size);
  return window;
}

class LumascopeModel {
 public:
  enum {
    kMode,
    kAverage,
    kSmooth,
    kSlope,
    kSize,
    kOverlap,
    kWindow,
    kChannelMode,
    kGain,
    kSimulation,
    kRows
  };
  double values[kRows] = {};
  bool isMeasuring = true;

  void Prepare(int32_t channels, int32_t sampleRate) {
    channels_ = channels;
    rate_ = sampleRate;
    Update();
    Reset();
  }

  void Update() {
    const auto size = static_cast<std::size_t>(std::exp2(values[kSize]));
    const double perSecond = rate_ / static_cast<double>(size) / (1 - values[kOverlap]);
    const double fitting = std::floor(values[kAverage] * perSecond);
    const auto frames = static_cast<std::size_t>(std::clamp(fitting, 1.0, 256.0));
    const bool isReset =
        size != size_ || frames != frames_ || values[kOverlap] != overlap_ || rate_ != placedRate_;
    size_ = size, frames_ = frames, overlap_ = values[kOverlap], placedRate_ = rate_;
    window_ = MakeWindow(size, static_cast<int32_t>(values[kWindow]));
    if (isReset) Reset();
    sections_ = {SectionModel::HighPass(464.9557127312894, 1.1363636363636365, rate_),
                 SectionModel::HighPass(125.66370614359172, 0.6666666666666666, rate_),
                 SectionModel::Shelf(1, -14.399999618530273, 135, 0.42, rate_),
                 SectionModel::Shelf(-1, 15.410499572753906, 3964, 0.43, rate_),
                 SectionModel::Shelf(-1, 2.0336999893188477, 15500, 0.48, rate_)};
  }

  void Process(const AudioBlock& in) {
    if (!isMeasuring) return;
    for (int32_t i = 0; i < in.GetLength(); ++i) {
      const int32_t other = channels_ > 1 ? 1 : 0;
      float x = in[values[kChannelMode] == 1 ? other : 0][i];
      if (values[kChannelMode] == 2) x = static_cast<float>((double{in[0][i]} + in[other][i]) * 0.5);
      if (values[kGain] != 0) x = static_cast<float>(x * std::pow(10, values[kGain] * 0.05));
      for (std::size_t s = 0; values[kSimulation] != 0 && s < sections_.size(); ++s) x = sections_[s].Step(x);
      Feed(x);
    }
  }
  void Skip(int32_t samples) {
    for (int32_t i = 0; isMeasuring && i < samples; ++i) Feed(0);
  }

  // Linear, as many as the mode has.
  Doubles GetCurrent() const {
    Doubles mean = sum_;
    for (double& point : mean) point /= static_cast<double>(frames_);
    return Group(Shape(mean));
  }
  Doubles GetPeaks() const { return Group(Shape(peaks_)); }

 private:
  void Reset() {
    ring_.assign(frames_, Doubles(kPoints));
    position_ = 0;
    sum_.assign(kPoints, 0);
    peaks_.assign(kPoints, 0);
    waiting_.clear();
    for (SectionModel& section : sections_) section.Reset();
  }

  void Feed(float x) {
    waiting_.push_back(x);
    if (waiting_.size() < size_) return;
    AddFrame(Reduce(GetBins()));
    const auto kept = static_cast<std::ptrdiff_t>(static_cast<double>(size_) * overlap_);
    waiting_.erase(waiting_.begin(), waiting_.end() - kept);
  }

  // The sums over x[n] e^(2 pi i k n / N), those of the even and the odd n apart while there are many.
  static std::vector<Complex> Sums(const std::vector<Complex>& x) {
    const std::size_t size = x.size(), half = size / 2;
    const auto turn = [&](std::size_t n) {
      return std::polar(1.0, 2 * kPi * static_cast<double>(n % size) / static_cast<double>(size));
    };
    std::vector<Complex> sums(size);
    if (size <= 16) {
      for (std::size_t k = 0; k < size; ++k)
        for (std::size_t n = 0; n < size; ++n) sums[k] += x[n] * turn(n * k);
      return sums;
    }
    std::vector<Complex> parts[2];
    for (std::size_t n = 0; n < size; ++n) parts[n % 2].push_back(x[n]);
    for (std::vector<Complex>& part : parts) part = Sums(part);
    for (std::size_t k = 0; k < size; ++k) sums[k] = parts[0][k % half] + turn(k) * parts[1][k % half];
    return sums;
  }

  Doubles GetBins() const {
    std::vector<Complex> windowed(size_);
    double sum = 0;
    for (std::size_t i = 0; i < size_; ++i) {
      windowed[i] = waiting_[i] * window_[i];
      sum += window_[i];
    }
    const std::vector<Complex> sums = Sums(windowed);
    Doubles bins(size_ / 2);
    for (std::size_t k = 0; k < size_ / 2; ++k) bins[k] = std::abs(sums[k]) / sum;
    bins[0] = std::hypot(sums[0].real(), sums[size_ / 2].real()) / sum;  // one pair holds both ends
    return bins;
  }

  // Positions are floats.
  float Position(std::size_t i) const {
    const double low = std::log10(20.0), step = (std::log10(20000.0) - low) * 0.0009765625;
    const double f = std::min(std::pow(10, low + (static_cast<double>(i) + 0.5) * step), (rate_ - 2) / 2);
    return static_cast<float>(f * static_cast<double>(size_) / rate_);
  }

  Doubles Reduce(const Doubles& bins) const {
    Doubles points(kPoints);
    bool isMean = false;
    for (std::size_t i = 0; i < kPoints; ++i) {
      const auto own = std::min(static_cast<std::size_t>(Position(i)), size_ / 2 - 1);
      isMean = isMean || (i > 0 && Position(i) - Position(i - 1) >= 1);
      if (!isMean) {
        const double t = Position(i) - static_cast<double>(own);
        points[i] = bins[own] * (1 - t) + bins[std::min(own + 1, size_ / 2 - 1)] * t;
        continue;
      }
      const auto previous = std::min(static_cast<std::size_t>(Position(i - 1)), size_ / 2 - 1);
      if (own == previous) break;
      for (std::size_t k = previous; k < own; ++k) points[i] += bins[k] / static_cast<double>(own - previous);
    }
    return points;
  }

  void AddFrame(const Doubles& frame) {
    ring_[position_] = frame;
    position_ = (position_ + 1) % frames_;
    sum_.assign(kPoints, 0);
    for (const Doubles& each : ring_)
      for (std::size_t i = 0; i < kPoints; ++i) sum_[i] += each[i];
    for (std::size_t i = 0; i < kPoints; ++i) peaks_[i] = std::max(peaks_[i] * 0.99, frame[i]);
  }

  Doubles Shape(const Doubles& points) const {
    const double w = std::nearbyint(values[kSmooth] * 1024);
    const int32_t reach = w < 3 ? 1 : static_cast<int32_t>(w);
    const double slope = values[kMode] == 2 ? 3 : values[kSlope] < 0.01 ? 0 : values[kSlope];
    Doubles shaped(kPoints);
    double sum = 0;
    for (int32_t k = -reach; k <= reach; ++k) {
      const double tap = w < 3 ? std::exp(-4.0 * std::abs(k)) : std::exp(-std::pow(2 * k / w, 2));
      sum += tap;
      for (int32_t i = 0; i < 1024; ++i)
        shaped[static_cast<std::size_t>(i)] +=
            tap * points[static_cast<std::size_t>(std::clamp(i + k, 0, 1023))];
    }
    const double factor = std::pow(10, slope * 0.0097322265625 * 0.05);
    for (std::size_t i = 0; i < kPoints; ++i) shaped[i] *= std::pow(factor, static_cast<double>(i)) / sum;
    return shaped;
  }

  Doubles Group(const Doubles& points) const {
    if (values[kMode] == 1) return points;
    Doubles groups;
    for (int32_t group = 0; group < (values[kMode] == 0 ? 64 : 31); ++group) {
      double sum = 0, count = 0;
      for (int32_t i = 0; i < 1024; ++i) {
        const double octaves = std::log2(20 * std::pow(1000, (i + 0.5) / 1024) / 1000) - (group - 17) / 3.0;
        const bool isIn = values[kMode] == 0 ? i / 16 == group : octaves >= -1 / 6.0 && octaves < 1 / 6.0;
        if (isIn) sum += points[static_cast<std::size_t>(i)], ++count;
      }
      groups.push_back(sum / count);
    }
    return groups;
  }

  int32_t channels_ = 0;
  double rate_ = 0, placedRate_ = 0, overlap_ = -1;
  std::size_t size_ = 0, frames_ = 0, position_ = 0;
  Doubles window_, sum_, peaks_;
  std::vector<Doubles> ring_;
  std::vector<float> waiting_;
  std::vector<SectionModel> sections_;
};

class Scenario {
 public:
  explicit Scenario(TestRandom& random) : random_(random) {
    for (int32_t i = 0; i < LumascopeModel::kRows; ++i) model_.values[i] = effect_.Get(i);
    SetRow(LumascopeModel::kSize, 10);
    Prepare();
  }

  void Step() {
    switch (random_.Below(8)) {
      case 0:
        if (random_.OneIn(4)) Prepare();
        break;
      case 1:
      case 2:
        return SetAnyRow();
      case 3:
        return Switch();
      case 4:
        return Skip(random_.OneOf<int32_t>({0, 1, 400, 3000}));
      default:
        return Process();
    }
  }

 private:
  void Prepare() {
    channels_ = random_.OneIn(2) ? 2 : random_.OneOf<int32_t>({1, 3, 10});
    const int32_t rate = random_.OneOf<int32_t>({8000, 22050, 32000, 44100, 48000, 96000, 192000});
    effect_.Prepare(channels_, rate);
    model_.Prepare(channels_, rate);
  }

  void SetRow(int32_t row, double value) {
    effect_.Set(row, value);
    model_.values[row] = effect_.Get(row);
    model_.Update();
  }

  void SetAnyRow() {
    const int32_t index = random_.Below(LumascopeModel::kRows);
    const MPluginParameter& row = effect_.GetRow(index);
    if (index == LumascopeModel::kSize) return SetRow(index, random_.OneIn(6) ? 11 : 10);
    if (index == LumascopeModel::kAverage)
      return SetRow(index, random_.OneOf<double>({0, 0.02, 0.1, 0.5, 5}));
    if (row.kind == MParameterKind::kEnumeration) return SetRow(index, random_.Below(row.enumeration.count));
    if (row.kind == MParameterKind::kSwitch) return SetRow(index, random_.Below(2));
    const double least = row.real.minimum, most = row.real.maximum;
    SetRow(index, random_.OneIn(4) ? random_.OneOf<double>({least, most, row.real.defaultValue})
                                   : random_.Real(least, most));
  }

  void Switch() {
    const bool isOpen = !random_.OneIn(6), isFrozen = random_.OneIn(6);
    effect_.GetPlugin().SetEditorOpen(isOpen);
    effect_.GetPlugin().SetFrozen(isFrozen);
    model_.isMeasuring = isOpen && !isFrozen;
  }

  void Skip(int32_t samples) {
    effect_.Skip(samples);
    model_.Skip(samples);
  }

  void Process() {
    const AudioBlock in = AudioBlock::Noise(channels_, random_.Integer(0, 2500), random_, random_.Real(0, 1));
    ASSERT_TRUE(effect_.Answer(in, {random_.Integer(1, 1500)}) == in);
    model_.Process(in);
    const LumascopeAudioEffectPlugin::Picture picture = effect_.GetPlugin().GetPicture();
    Compare(picture.current, model_.GetCurrent());
    Compare(picture.peaks, model_.GetPeaks());
  }

  static void Compare(const LumascopeDisplay::Levels& levels, const Doubles& expected) {
    ASSERT_EQ(levels.size(), expected.size());
    const double peak = *std::max_element(expected.begin(), expected.end());
    for (std::size_t i = 0; i < expected.size(); ++i)
      ASSERT_NEAR(LumascopeUnderTest::Linear(levels[i]), expected[i], 1e-5 * peak + 1.1e-10) << i;
  }

  TestRandom& random_;
  LumascopeUnderTest effect_;
  LumascopeModel model_;
  int32_t channels_ = 0;
};

TEST(Lumascope, AgreesWithAPlainModelInRandomScenarios) {
  TestRandom random;
  for (int32_t scenario = 0; scenario < 8 && !testing::Test::HasFailure(); ++scenario) {
    SCOPED_TRACE("scenario " + std::to_string(scenario));
    Scenario both(random);
    for (int32_t step = 0; step < 30 && !testing::Test::HasFatalFailure(); ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      both.Step();
    }
  }
}

TEST(Lumascope, AgreesWithAPlainModelInItsLargestSize) {
  TestRandom random;
  LumascopeUnderTest effect({{"fftsize", 14}, {"mode", 1}}, 1);
  LumascopeModel model;
  for (int32_t i = 0; i < LumascopeModel::kRows; ++i) model.values[i] = effect.Get(i);
  model.Prepare(1, 44100);
  const AudioBlock noise = AudioBlock::Noise(1, 16384, random);
  effect.Answer(noise, {1000});
  model.Process(noise);
  const LumascopeDisplay::Levels levels = effect.GetPlugin().GetPicture().current;
  const Doubles expected = model.GetCurrent();
  for (std::size_t i = 0; i < kPoints; ++i)
    ASSERT_NEAR(LumascopeUnderTest::Linear(levels[i]), expected[i], 1e-5 * expected[i]) << i;
}

}  // namespace
