// The table of Slidebench's gains, and what the numbers of a spectrum become by it.

#include <gtest/gtest.h>

#include <functional>

#include "tests/dsp/FFTModel.h"
#include "tests/effects/SlidebenchUnderTest.h"

namespace {

constexpr int32_t kSize = SlidebenchUnderTest::kSize;
constexpr int32_t kHalf = SlidebenchUnderTest::kHalf;
constexpr int32_t kLatency = SlidebenchUnderTest::kLatency;
constexpr double kLowest = SlidebenchUnderTest::kLowest;

using Height = std::function<double(double x)>;

std::vector<double> GainsOf(const Height& height, double depth, double sampleRate) {
  std::vector<double> gains;
  for (int32_t k = 0; k < kSize; ++k) {
    const double frequency = std::max(1.0, k * sampleRate * 0.0001220703125);
    gains.push_back(std::pow((height(std::log10(frequency)) - 1) * depth + 1, 2));
  }
  return gains;
}

void ExpectGains(SlidebenchUnderTest& slidebench, const Height& height, double depth, double sampleRate) {
  const std::vector<double> gains = slidebench.GetGains(), expected = GainsOf(height, depth, sampleRate);
  ASSERT_EQ(gains.size(), expected.size());
  for (std::size_t k = 0; k < gains.size(); ++k) ASSERT_NEAR(gains[k], expected[k], 4e-7) << k;
}

TEST(SlidebenchGains, AreOneForANewCurve) {
  SlidebenchUnderTest slidebench({});
  EXPECT_EQ(slidebench.GetGains(), std::vector<double>(kSize, 1));
}

TEST(SlidebenchGains, AreThoseOfTheCurveAtTheLogarithmOfTheFrequency) {
  for (const int32_t rate : {8000, 44100, 96000, 192000}) {
    for (const double depth : {1.0, 0.37}) {
      SlidebenchUnderTest slidebench({Point(3.02, 0.25), Point(3.5, 1.9), Point(3.51, 0.1),
                                      Point(4.3, 1.2, MEnvelopeType::kMode1, 0.5), Point(5, 0.3)},
                                     depth, 1, rate);
      const auto height = [](double x) {
        if (x < 3.02) return 0.25;
        if (x < 3.5) return Oracle::Line({3.02, 0.25}, {3.5, 1.9}, x);
        if (x < 3.51) return Oracle::Line({3.5, 1.9}, {3.51, 0.1}, x);
        if (x < 4.3) return Oracle::Line({3.51, 0.1}, {4.3, 1.2}, x);
        return Oracle::Quadratic({4.3, 1.2}, {5, 0.3}, 0.5, x);
      };
      ExpectGains(slidebench, height, depth, rate);
    }
  }
}

TEST(SlidebenchGains, AreTheFirstPointsBelow1024Hertz) {
  SlidebenchUnderTest slidebench({Point(kLowest, 0.5), Point(kLowest + 0.0001, 2)}, 1, 1, 96000);
  const std::vector<double> gains = slidebench.GetGains();
  for (int32_t k = 0; k < kSize; ++k)
    EXPECT_EQ(gains[static_cast<std::size_t>(k)], k * 96000.0 / 8192 < 1024 ? 0.25 : 4) << k;
}

TEST(SlidebenchGains, FollowTheCurveTheDepthAndTheSampleRateInAnyOrder) {
  const Height first = [](double x) { return x < kLowest ? 0 : Oracle::Line({kLowest, 0}, {4.4, 2}, x); };
  const Height second = [](double x) { return x < kLowest ? 2 : Oracle::Line({kLowest, 2}, {4.4, 1}, x); };
  SlidebenchUnderTest slidebench({Point(kLowest, 0), Point(4.4, 2)}, 1, 1, 44100);
  ExpectGains(slidebench, first, 1, 44100);
  slidebench.Set("depth", 0.5);
  ExpectGains(slidebench, first, 0.5, 44100);
  slidebench.Prepare(1, 48000);
  ExpectGains(slidebench, first, 0.5, 48000);
  slidebench.SetCurve({Point(kLowest, 2), Point(4.4, 1)});
  ExpectGains(slidebench, second, 0.5, 48000);
  slidebench.Prepare(1, 0);
  slidebench.Set("depth", 1);
  ExpectGains(slidebench, second, 0.5, 48000);
  slidebench.Prepare(1, 44100);
  ExpectGains(slidebench, second, 1, 44100);
}

TEST(SlidebenchGains, StayWithAStateThatHasNoCurveAndComeBackWithASavedOne) {
  SlidebenchUnderTest slidebench(
      {Point(3.1, 0.3), Point(3.9, 1.6, MEnvelopeType::kMode2, -0.4), Point(4.2, 0)});
  const std::vector<double> gains = slidebench.GetGains();
  MXMLItem empty("state"), saved("state");
  slidebench.Call(MService::kSaveState, MAsWord(&saved));
  slidebench.Call(MService::kLoadState, MAsWord(&empty));
  EXPECT_EQ(slidebench.GetGains(), gains);
  slidebench.SetCurve({Point(3.1, 1)});
  EXPECT_NE(slidebench.GetGains(), gains);
  slidebench.Call(MService::kLoadState, MAsWord(&saved));
  EXPECT_EQ(slidebench.GetGains(), gains);
}

// What comes out at last for a wave that every spectrum sees in the same phase.
std::vector<double> AnswerToWave(SlidebenchUnderTest& slidebench, const Height& wave) {
  const AudioBlock in = AudioBlock(1, 5 * kSize).Fill([&](int32_t i) { return wave(i); });
  const AudioBlock out = slidebench.Answer(in, {512});
  return std::vector<double>(out[0] + 4 * kSize, out[0] + 5 * kSize);
}

void ExpectScaled(const std::vector<double>& out, const Height& wave, double gain) {
  for (int32_t i = 0; i < kSize; ++i)
    ASSERT_NEAR(out[static_cast<std::size_t>(i)], gain * wave(i), 2e-6 * (1 + gain)) << i;
}

TEST(SlidebenchGains, ABandTakesTheGainOfItsFrequency) {
  SlidebenchUnderTest slidebench({Point(3.02, 0.25), Point(3.5, 1.9), Point(4.3, 0.4)});
  for (const int32_t bin : {20, 100, 150, 270, 512, 1024, 1700, 2000}) {
    const double x = std::log10(bin * 48000.0 / kSize);
    const double height = x < 3.02  ? 0.25
                          : x < 3.5 ? Oracle::Line({3.02, 0.25}, {3.5, 1.9}, x)
                          : x < 4.3 ? Oracle::Line({3.5, 1.9}, {4.3, 0.4}, x)
                                    : 0.4;
    const Height wave = [bin](double i) { return std::cos(2 * std::numbers::pi * bin * i / kSize); };
    slidebench.Prepare(1, 48000);
    SCOPED_TRACE(bin);
    ExpectScaled(AnswerToWave(slidebench, wave), wave, height * height);
  }
}

TEST(SlidebenchGains, RealAndImaginaryMembersOfABinHaveAGainEach) {
  constexpr int32_t kBin = 300;
  const double between = std::log10((2 * kBin + 0.5) * 48000 / 8192);
  SlidebenchUnderTest slidebench({Point(between - 1e-6, 0.5), Point(between + 1e-6, 2)});
  const Height cosine = [](double i) { return std::cos(2 * std::numbers::pi * kBin * i / kSize); };
  const Height sine = [](double i) { return std::sin(2 * std::numbers::pi * kBin * i / kSize); };
  ExpectScaled(AnswerToWave(slidebench, cosine), cosine, 0.25);
  slidebench.Prepare(1, 48000);
  ExpectScaled(AnswerToWave(slidebench, sine), sine, 4);
}

// So Nyquist hears the first point alone.
TEST(SlidebenchGains, TheMeanAndTheHighestFrequencyTakeTheFirstTwoGains) {
  SlidebenchUnderTest slidebench({Point(kLowest, 0.5), Point(kLowest + 0.1, 2)});
  const Height mean = [](double) { return 1; };
  const Height highest = [](double i) { return std::fmod(i, 2) == 0 ? 1 : -1; };
  ExpectScaled(AnswerToWave(slidebench, mean), mean, 0.25);
  slidebench.Prepare(1, 48000);
  ExpectScaled(AnswerToWave(slidebench, highest), highest, 0.25);
}

// The output from the definition: frames half of their size apart, each through the table, that fade over.
std::vector<double> Model(const std::vector<double>& in, const std::vector<double>& gains) {
  std::vector<double> out(in.size());
  for (std::size_t begin = 0; begin + kSize <= in.size(); begin += kHalf) {
    const auto from = in.begin() + static_cast<int64_t>(begin);
    std::vector<double> frame = ModelForward({from, from + kSize});
    for (std::size_t k = 0; k < frame.size(); ++k) frame[k] *= gains[k];
    frame = ModelInverse(frame);
    for (std::size_t i = 0; i < kSize; ++i) {
      const std::size_t place = begin + kLatency + i;
      const double sample = frame[i] * 2 / kSize;
      const double weight = begin > 0 && i < kHalf ? static_cast<double>(i) / kHalf : 1;
      if (place < out.size()) out[place] = sample * weight + out[place] * (1 - weight);
    }
  }
  return out;
}

TEST(SlidebenchGains, NoiseComesOutAsTheDefinitionSays) {
  TestRandom random;
  for (const int32_t rate : {44100, 96000}) {
    SlidebenchUnderTest slidebench(
        {Point(kLowest, 0.2), Point(3.4, 2), Point(3.4001, 0), Point(3.8, 0.1), Point(4.3, 1.9)}, 0.9, 1,
        rate);
    const AudioBlock in = AudioBlock::Noise(1, 40000, random);
    const AudioBlock out = slidebench.Answer(in, {441});
    const std::vector<double> expected = Model({in[0], in[0] + 40000}, slidebench.GetGains());
    EXPECT_LE(RelativeError(std::vector<double>(out[0], out[0] + 40000), expected), 1e-6) << rate;
    for (int32_t i = 0; i < 40000; ++i)
      ASSERT_NEAR(out[0][i], expected[static_cast<std::size_t>(i)], 1e-5) << i << " at " << rate;
  }
}

}  // namespace
