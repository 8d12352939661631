// The running spectrum: where its points come from, frames, peaks.

#include <gtest/gtest.h>

#include <memory>
#include <numbers>

#include "effects/LumascopeSpectrum.h"
#include "tests/common/TestRandom.h"

namespace {

constexpr int32_t kPoints = LumascopeSpectrum::kPoints;
using Samples = std::vector<float>;

class LumascopeSpectrumTest : public testing::Test {
 protected:
  void Set(int32_t size, double averageSeconds = 0, double overlap = 0, int32_t sampleRate = 44100,
           int32_t window = MSignalWindow::kRectangular) {
    spectrum_->Set({size, window, overlap, averageSeconds, sampleRate});
  }
  void Feed(const Samples& samples) {
    spectrum_->Feed(samples.data(), static_cast<int32_t>(samples.size()));
    Read();
  }
  void Read() { spectrum_->Read(mean_, peaks_); }
  double Highest() { return *std::max_element(mean_, mean_ + kPoints); }

  MLock lock_;
  const std::unique_ptr<LumascopeSpectrum> spectrum_{new LumascopeSpectrum(lock_)};
  double mean_[kPoints] = {}, peaks_[kPoints] = {};
};

Samples Sine(int32_t size, int32_t bin, double amplitude = 1) {
  Samples samples(static_cast<std::size_t>(size));
  for (int32_t i = 0; i < size; ++i)
    samples[static_cast<std::size_t>(i)] = static_cast<float>(
        amplitude * std::sin(2 * std::numbers::pi * static_cast<double>(int64_t{i} * bin % size) / size));
  return samples;
}

Samples Noise(int32_t size, TestRandom& random) {
  Samples samples(static_cast<std::size_t>(size));
  for (float& sample : samples) sample = static_cast<float>(random.Real(-1, 1));
  return samples;
}

TEST_F(LumascopeSpectrumTest, PointsLieOnALogarithmicAxisOfBins) {
  Set(4096);
  EXPECT_NEAR(LumascopeSpectrum::GetFrequency(0), 20 * std::pow(1000, 0.5 / 1024), 1e-9);
  EXPECT_NEAR(LumascopeSpectrum::GetFrequency(1023), 20 * std::pow(1000, 1023.5 / 1024), 1e-6);
  for (const int32_t i : {0, 1, 500, 1023})
    EXPECT_NEAR(spectrum_->GetPosition(i), 20 * std::pow(1000, (i + 0.5) / 1024) * 4096 / 44100, 1e-3) << i;
  Set(1024, 0, 0, 8000);
  EXPECT_FLOAT_EQ(spectrum_->GetPosition(1023), 3999.0f * 1024 / 8000);
  EXPECT_EQ(spectrum_->GetPosition(1022), spectrum_->GetPosition(1023));
}

TEST_F(LumascopeSpectrumTest, LowPointsInterpolateBetweenTheirTwoBins) {
  Set(4096);
  int32_t i = 0;
  while (spectrum_->GetPosition(i) < 93) ++i;
  Feed(Sine(4096, 93));
  ASSERT_LT(spectrum_->GetPosition(i) - spectrum_->GetPosition(i - 1), 1);
  EXPECT_NEAR(mean_[i], 0.5 * (94 - spectrum_->GetPosition(i)), 1e-4);
  EXPECT_NEAR(mean_[i - 1], 0.5 * (spectrum_->GetPosition(i - 1) - 92), 1e-4);
}

TEST_F(LumascopeSpectrumTest, HighPointsAreTheMeanOfTheBinsSinceTheOneBefore) {
  Set(16384);
  const int32_t i = 1000;
  const auto from = static_cast<int32_t>(spectrum_->GetPosition(i - 1));
  const auto to = static_cast<int32_t>(spectrum_->GetPosition(i));
  ASSERT_GT(to - from, 2);
  for (const int32_t bin : {from, from + 1, to - 1}) {
    Feed(Sine(16384, bin));
    EXPECT_NEAR(mean_[i], 0.5 / (to - from), 1e-5) << bin;
    EXPECT_NEAR(mean_[i + 1], 0, 1e-5);
  }
  Feed(Sine(16384, to));
  EXPECT_NEAR(mean_[i], 0, 1e-5);
}

TEST_F(LumascopeSpectrumTest, PointsAboveHalfOfALowRateAreZero) {
  TestRandom random;
  Set(1024, 0, 0, 8000);
  Feed(Noise(1024, random));
  int32_t last = kPoints - 1;
  while (last > 0 && mean_[last] == 0) --last;
  // The first point that is limited still has bins of its own.
  EXPECT_GT(LumascopeSpectrum::GetFrequency(last), 3999 * 0.98);
  EXPECT_LT(LumascopeSpectrum::GetFrequency(last), 3999 * 1.02);
  for (int32_t i = 0; i < last; ++i) EXPECT_GT(mean_[i], 0) << i;
}

TEST_F(LumascopeSpectrumTest, AnyRateAndSizeReadOnlyWhatIsThere) {
  TestRandom random;
  for (const int32_t rate : {1, 2, 3, 10, 40, 100, 1000, 44100, 192000, 2000000000}) {
    for (const int32_t size : {1024, 16384}) {
      Set(size, 5, 0.8, rate);
      Feed(Noise(size, random));
      EXPECT_TRUE(std::isfinite(Highest())) << rate;
    }
  }
}

TEST_F(LumascopeSpectrumTest, FramesAreAsManyAsFitIntoTheTime) {
  struct {
    int32_t size;
    double seconds, overlap;
    int32_t frames;
  } const kCases[] = {{4096, 0, 0.5, 1},   {4096, 0.1, 0.5, 2},   {4096, 0.1, 0, 1},
                      {1024, 0.1, 0.5, 8}, {1024, 5, 0.8, 256},   {16384, 5, 0.5, 26},
                      {4096, 1, 0.75, 43}, {1024, 60, 0.95, 256}, {16384, 0.01, 0, 1}};
  for (const auto& each : kCases) {
    Set(each.size, each.seconds, each.overlap);
    EXPECT_EQ(spectrum_->GetFrameCount(), each.frames) << each.size << " " << each.seconds;
  }
}

TEST_F(LumascopeSpectrumTest, TheMeanOverTheRingIsThePlainMeanAlsoAfterManyFrames) {
  TestRandom random;
  for (const double seconds : {0.1, 10.0}) {
    Set(1024, seconds);
    const int32_t frames = spectrum_->GetFrameCount();
    MLock lock;
    const std::unique_ptr<LumascopeSpectrum> single(new LumascopeSpectrum(lock));
    single->Set({1024, MSignalWindow::kRectangular, 0, 0, 44100});
    std::vector<std::vector<double>> all;
    for (int32_t i = 0; i < 600; ++i) {
      const Samples noise = Noise(1024, random);
      Feed(noise);
      single->Feed(noise.data(), 1024);
      double frame[kPoints], unused[kPoints];
      single->Read(frame, unused);
      all.emplace_back(frame, frame + kPoints);
    }
    for (std::size_t i = 0; i < kPoints; ++i) {
      double sum = 0;
      for (std::size_t k = all.size() - static_cast<std::size_t>(frames); k < all.size(); ++k)
        sum += all[k][i];
      EXPECT_NEAR(mean_[i], sum / frames, 1e-6 * mean_[i]);
    }
  }
}

TEST_F(LumascopeSpectrumTest, NothingOfALoudFrameStaysBehindItsTime) {
  Set(1024, 0.1);
  const int32_t frames = spectrum_->GetFrameCount();
  ASSERT_EQ(frames, 4);
  Feed(Sine(1024, 40, 1000));
  EXPECT_NEAR(Highest(), 500.0 / frames, 10);
  for (int32_t i = 0; i < frames; ++i) Feed(Samples(1024));
  EXPECT_EQ(Highest(), 0);
}

TEST_F(LumascopeSpectrumTest, PeaksHoldAndFallByAHundredthAFrame) {
  Set(1024);
  Feed(Sine(1024, 40));
  const double peak = *std::max_element(peaks_, peaks_ + kPoints);
  EXPECT_EQ(peak, Highest());
  Feed(Sine(1024, 40, 0.5));
  EXPECT_NEAR(*std::max_element(peaks_, peaks_ + kPoints), 0.99 * peak, 1e-7);
  Feed(Samples(1024));
  EXPECT_NEAR(*std::max_element(peaks_, peaks_ + kPoints), 0.99 * 0.99 * peak, 1e-7);
}

TEST_F(LumascopeSpectrumTest, ForgetsWhenTheFormatChangesAndOnlyThen) {
  TestRandom random;
  const auto fill = [&] {
    Set(1024, 0.1, 0.5);
    Feed(Noise(3000, random));
    EXPECT_GT(Highest(), 0);
  };
  const auto isForgotten = [&] {
    Read();
    return Highest() == 0 && *std::max_element(peaks_, peaks_ + kPoints) == 0 && spectrum_->GetFill() == 0;
  };
  fill();
  Set(1024, 0.1, 0.5);
  EXPECT_FALSE(isForgotten());
  Set(1024, 0.1, 0.5, 44100, MSignalWindow::kGauss);
  EXPECT_FALSE(isForgotten());
  fill();
  Set(2048, 0.1, 0.5);
  EXPECT_TRUE(isForgotten());
  fill();
  Set(1024, 0.2, 0.5);
  EXPECT_TRUE(isForgotten());
  fill();
  Set(1024, 0.1, 0.51);
  EXPECT_TRUE(isForgotten());
  fill();
  Set(1024, 0.1, 0.5, 44101);
  EXPECT_TRUE(isForgotten());
}

TEST_F(LumascopeSpectrumTest, AChangeOfTheSizeKeepsTheWindow) {
  Set(1024, 0, 0, 44100, MSignalWindow::kBartlett);
  Set(2048, 0, 0, 44100, MSignalWindow::kBartlett);
  EXPECT_EQ(spectrum_->GetWindow().GetType(), MSignalWindow::kBartlett);
  EXPECT_EQ(spectrum_->GetWindow().GetSize(), 2048);
}

TEST_F(LumascopeSpectrumTest, SkippingIsFeedingZeros) {
  TestRandom random;
  for (const int32_t samples : {1, 300, 1024, 5000, 40000, 300000}) {
    for (const double overlap : {0.0, 0.3, 0.8}) {
      MLock lock;
      const std::unique_ptr<LumascopeSpectrum> other(new LumascopeSpectrum(lock));
      for (LumascopeSpectrum* const each : {spectrum_.get(), other.get()}) {
        each->Set({1024, MSignalWindow::kHann, overlap, 0.3, 44100});
        each->Reset();
      }
      const Samples noise = Noise(random.Integer(0, 30000), random), after = Noise(1500, random);
      const auto feed = [](LumascopeSpectrum& to, const Samples& from) {
        to.Feed(from.data(), static_cast<int32_t>(from.size()));
      };
      feed(*spectrum_, noise);
      feed(*other, noise);
      spectrum_->Skip(samples);
      other->FeedSilence(samples);
      EXPECT_EQ(spectrum_->GetFill(), other->GetFill());
      feed(*spectrum_, after);
      feed(*other, after);
      Read();
      double mean[kPoints], peaks[kPoints];
      other->Read(mean, peaks);
      for (int32_t i = 0; i < kPoints; ++i) {
        ASSERT_NEAR(mean_[i], mean[i], 1e-9) << samples;
        ASSERT_NEAR(peaks_[i], peaks[i], 1e-6) << samples;
      }
    }
  }
}

TEST_F(LumascopeSpectrumTest, YearsOfSilenceAreSkippedAtOnce) {
  Set(16384, 5, 0.8);
  Feed(Sine(16384, 100));
  for (int32_t i = 0; i < 5; ++i) spectrum_->Skip(INT32_MAX);
  Read();
  EXPECT_EQ(Highest(), 0);
  EXPECT_EQ(*std::max_element(peaks_, peaks_ + kPoints), 0);
}

TEST_F(LumascopeSpectrumTest, ASampleThatIsNoNumberSpoilsOnlyItsOwnFrames) {
  TestRandom random;
  Set(1024, 0.1);
  for (const float bad : {NAN, INFINITY, -INFINITY, 3e38f}) {
    Samples noise = Noise(1024, random);
    noise[500] = bad;
    noise[501] = bad;
    Feed(noise);
    EXPECT_TRUE(std::isfinite(Highest()));
    for (int32_t i = 0; i < 4; ++i) Feed(Sine(1024, 40));
    EXPECT_NEAR(Highest(), 0.5, 0.05);
  }
}

}  // namespace
