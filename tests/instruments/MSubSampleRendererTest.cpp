#include "instruments/MSubSampleRenderer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "tests/instruments/SubSampleLibraryInTest.h"

namespace {

using Sound = SubSampleFile::Sound;

// One sound of one channel in band 0, with the same bins in each frame.
SubSampleFile OneSound(int32_t firstBin, const std::vector<float>& bins, int32_t frames, int32_t length) {
  SubSampleFile file;
  Sound sound{frames, length, 1, {}};
  for (int32_t f = 0; f < frames; ++f) sound.values.insert(sound.values.end(), bins.begin(), bins.end());
  file.bands[0] = {firstBin, static_cast<int32_t>(bins.size()), {sound}};
  return file;
}

double Angle(int32_t cycles, std::size_t n) {
  return 2 * std::numbers::pi * cycles * static_cast<double>(n) / 8192;
}

// What a wave of amplitude 1 in one frame becomes.
double Shaped(double wave, std::size_t n, std::size_t length) {
  if (n < 4096) wave *= static_cast<double>(n) / 4096;
  return n + 200 < length ? wave : wave * (static_cast<double>(length - 1 - n) / 199);
}

double PeakOf(const std::vector<float>& samples) {
  double peak = 0;
  for (const float sample : samples) peak = std::max(peak, std::abs(double{sample}));
  return peak;
}

TEST(MSubSampleRenderer, EvenBinIsACosineAndOddBinASine) {
  for (const bool isOdd : {false, true}) {
    SubSampleLibraryInTest library(OneSound(2 * 16 + isOdd, {0.25f}, 1, 8192));
    const auto channels = library.Render();
    ASSERT_EQ(channels.size(), 1u);
    ASSERT_EQ(channels[0].size(), 8192u);
    for (std::size_t n = 0; n < 8192; ++n) {
      const double wave = isOdd ? std::sin(Angle(16, n)) : std::cos(Angle(16, n));
      ASSERT_NEAR(channels[0][n], Shaped(wave, n, 8192), 2e-6) << n;
    }
  }
}

TEST(MSubSampleRenderer, FirstTwoBinsAreConstantAndHighestFrequency) {
  SubSampleLibraryInTest constant(OneSound(0, {3}, 1, 8192));
  EXPECT_NEAR(constant.Render()[0][5000], 1, 1e-6);
  EXPECT_NEAR(constant.Render()[0][5001], 1, 1e-6);
  SubSampleLibraryInTest highest(OneSound(1, {3}, 1, 8192));
  EXPECT_NEAR(highest.Render()[0][5000], 1, 1e-6);
  EXPECT_NEAR(highest.Render()[0][5001], -1, 1e-6);
}

TEST(MSubSampleRenderer, FramesMoveOnByHalfTheirLengthAndCrossFade) {
  SubSampleFile file = OneSound(0, {1}, 3, 16384);
  file.bands[0].sounds[0].values = {1, 0.5f, -1};  // constants
  SubSampleLibraryInTest library(file);
  const std::vector<float> samples = library.Render()[0];
  EXPECT_NEAR(samples[2048], 0.5, 1e-6);
  EXPECT_NEAR(samples[4096], 1, 1e-3);
  EXPECT_NEAR(samples[4096 + 2048], 0.75, 1e-3);
  EXPECT_NEAR(samples[8192], 0.5, 1e-3);
  EXPECT_NEAR(samples[8192 + 1024], 0.125, 1e-3);
  EXPECT_NEAR(samples[8192 + 4095], -1, 1e-3);
  EXPECT_NEAR(samples[12288 + 3000], -1, 1e-3) << "the last second half stands as it is";
}

TEST(MSubSampleRenderer, SoundThatIsLongerThanItsFramesEndsInSilence) {
  SubSampleLibraryInTest library(OneSound(0, {1}, 1, 20000));
  const std::vector<float> samples = library.Render()[0];
  ASSERT_EQ(samples.size(), 20000u);
  EXPECT_NEAR(samples[4095], 1, 1e-3);
  for (std::size_t n = 4096; n < samples.size(); ++n) ASSERT_EQ(samples[n], 0) << "the kept half is dropped";
}

TEST(MSubSampleRenderer, SoundThatIsShorterThanItsFramesIsCut) {
  SubSampleLibraryInTest library(OneSound(0, {1}, 5, 6000));
  const std::vector<float> samples = library.Render()[0];
  ASSERT_EQ(samples.size(), 6000u);
  EXPECT_NEAR(samples[5000], 1, 1e-6);
}

TEST(MSubSampleRenderer, LastTwoHundredSamplesFadeOut) {
  SubSampleLibraryInTest library(OneSound(0, {1}, 2, 8000));
  const std::vector<float> samples = library.Render()[0];
  EXPECT_NEAR(samples[7800], 1, 1e-6);
  EXPECT_NEAR(samples[7801], 1 - 1.0 / 199, 1e-6);
  EXPECT_EQ(samples[7999], 0);
  // In 150 samples the line has begun 50 before them.
  SubSampleLibraryInTest brief(OneSound(0, {1}, 1, 150));
  const std::vector<float> few = brief.Render()[0];
  EXPECT_NEAR(few[50], 50.0 / 149 * (99.0 / 199), 1e-6);
  EXPECT_EQ(few[149], 0);
}

TEST(MSubSampleRenderer, PeakIsOneWhateverTheVolumeAndNothingStaysNothing) {
  for (const float volume : {1e-30f, 0.01f, 1.0f, -3.0f, 1e6f}) {
    SubSampleLibraryInTest library(OneSound(0, {1}, 3, 12000));
    EXPECT_FLOAT_EQ(static_cast<float>(PeakOf(library.Render({{{.volume = volume}}})[0])), 1) << volume;
  }
  SubSampleLibraryInTest library(OneSound(0, {1}, 3, 12000));
  for (const float volume : {0.0f, std::numeric_limits<float>::infinity(), NAN})
    EXPECT_EQ(PeakOf(library.Render({{{.volume = volume}}})[0]), 0) << volume;
}

TEST(MSubSampleRenderer, SumsBeyondAFloatAreSilent) {
  SubSampleLibraryInTest library(OneSound(0, {3e38f, 3e38f, 3e38f, 3e38f}, 2, 9000));
  const std::vector<float> samples = library.Render({{{.volume = 3e38f}}})[0];
  for (const float sample : samples) ASSERT_TRUE(std::isfinite(sample));
}

// Band 0 (even) or 1 (odd) with sounds that are constants.
SubSampleFile Constants(std::size_t band, const std::vector<float>& values, int32_t channels = 1) {
  SubSampleFile file;
  file.bands[band].binCount = 1;
  for (const float value : values)
    file.bands[band].sounds.push_back(
        {1, 8192, channels, std::vector<float>(static_cast<std::size_t>(channels), value)});
  // A reference in the highest frequency, so that the peak does not hide the gains.
  file.bands[9] = {1, 1, {{1, 8192, 1, {100}}}};
  return file;
}

// The constant of each channel, against the reference.
std::vector<double> ConstantsOf(SubSampleLibraryInTest& library, const MSubSampleBands& bands,
                                double colorOffset) {
  std::vector<double> found;
  for (const std::vector<float>& samples : library.Render(bands, colorOffset)) {
    const double sum = double{samples[5000]} + samples[5001],
                 difference = double{samples[5000]} - samples[5001];
    found.push_back(100 * sum / difference);
  }
  return found;
}

TEST(MSubSampleRenderer, IndexBetweenTwoSoundsMixesThem) {
  SubSampleLibraryInTest library(Constants(0, {10, 20, 40}));
  const auto at = [&](float index) {
    MSubSampleBands bands;
    bands[0].index = index;
    return ConstantsOf(library, bands, 0)[0];
  };
  EXPECT_NEAR(at(0), 10, 1e-3);
  EXPECT_NEAR(at(0.25f), 12.5, 1e-3);
  EXPECT_NEAR(at(1.5f), 30, 1e-3);
  EXPECT_NEAR(at(2), 40, 1e-3) << "the last sound alone";
  EXPECT_NEAR(at(99), 40, 1e-3);
  EXPECT_NEAR(at(-3), 10, 1e-3);
  EXPECT_NEAR(at(NAN), 10, 1e-3);
}

TEST(MSubSampleRenderer, IndexIsStoredWithinItsLimits) {
  SubSampleLibraryInTest library(Constants(0, {10, 20, 40}));
  MSubSampleBands bands;
  bands[0].index = 7;
  bands[1].index = 3;
  bands[9].index = std::numeric_limits<float>::infinity();
  MAudioBuffer target;
  MRenderSubSamples(target, *library, bands, 0);
  EXPECT_EQ(bands[0].index, 2);
  EXPECT_EQ(bands[1].index, 0) << "an empty band";
  EXPECT_EQ(bands[9].index, 0);
}

TEST(MSubSampleRenderer, ColorOffsetMovesEvenAndOddBandsInOppositeDirections) {
  MSubSampleBands bands;
  bands[0].index = bands[1].index = 0.3f;
  SubSampleLibraryInTest even(Constants(0, {10, 20}, 3));
  SubSampleLibraryInTest odd(Constants(1, {10, 20}, 3));
  const auto expect = [](const std::vector<double>& found, const std::vector<double>& expected) {
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t c = 0; c < found.size(); ++c) EXPECT_NEAR(found[c], expected[c], 2e-3) << c;
  };
  bands[9].index = 0;
  // The reference in band 9 is turned down by 1 - a there, and is all gone with an offset of 1.
  expect(ConstantsOf(even, bands, 0), {13, 13, 13});
  expect(ConstantsOf(odd, bands, 0), {13, 13, 13});
  expect(ConstantsOf(even, bands, 0.2), {13, 11 / 0.8, 11 / 0.6});
  expect(ConstantsOf(odd, bands, 0.2), {13, 15 / 0.8, 17 / 0.6});
  EXPECT_NEAR(ConstantsOf(even, bands, 0.4)[1], 11 / 0.6, 2e-3) << "m is 1.9, and goes back";
}

TEST(MSubSampleRenderer, ColorOffsetOfOneTurnsEverySecondChannelRound) {
  MSubSampleBands bands;
  bands[0].index = bands[1].index = 0.3f;
  bands[9].index = 0.5f;
  for (const std::size_t band : {std::size_t{0}, std::size_t{1}}) {
    SubSampleFile file = Constants(band, {10, 20}, 3);
    // Between two equal sounds a band is the same whatever the offset.
    file.bands[9].sounds.push_back(file.bands[9].sounds[0]);
    SubSampleLibraryInTest library(file);
    for (const auto& [offset, expected] :
         {std::pair<double, std::vector<double>>{1, {13, 17, 13}},
          {0.2, band == 0 ? std::vector<double>{13, 11, 11} : std::vector<double>{13, 15, 17}}}) {
      const std::vector<double> found = ConstantsOf(library, bands, offset);
      ASSERT_EQ(found.size(), 3u);
      for (std::size_t c = 0; c < 3; ++c)
        EXPECT_NEAR(found[c], expected[c], 2e-3) << "band " << band << ", " << offset << ", channel " << c;
    }
  }
}

TEST(MSubSampleRenderer, WithoutAnUpperSoundTheLowerStillCountsOnlyItsPart) {
  MSubSampleBands bands;
  SubSampleLibraryInTest library(Constants(0, {10}, 2));
  EXPECT_NEAR(ConstantsOf(library, bands, 0.25)[1], 10, 1e-3) << "both at 0.75";
  bands[0].index = 5;
  EXPECT_NEAR(ConstantsOf(library, bands, 0.25)[1], 10, 1e-3);
  const auto silent = library.Render(bands, 1);
  EXPECT_EQ(PeakOf(silent[1]), 0);
  EXPECT_GT(PeakOf(silent[0]), 0.5);
}

TEST(MSubSampleRenderer, NoColorOffsetGivesEqualChannels) {
  TestRandom random;
  SubSampleFile file;
  for (SubSampleFile::Band& band : file.bands) {
    band.firstBin = random.Below(8000);
    band.binCount = 20;
    for (int i = 0; i < 3; ++i) {
      band.sounds.push_back(NoiseSound(2, 9000, 2, 20, random));
      std::vector<float>& values = band.sounds.back().values;
      std::copy_n(values.begin(), values.size() / 2,
                  values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2));
    }
  }
  SubSampleLibraryInTest library(file);
  MSubSampleBands bands;
  for (MSubSampleBand& band : bands) band.index = static_cast<float>(random.Real(0, 2));
  const auto channels = library.Render(bands, 0);
  EXPECT_EQ(channels[0], channels[1]);
  EXPECT_NE(library.Render(bands, 0.2)[0], library.Render(bands, 0.2)[1]);
}

TEST(MSubSampleRenderer, EmptyBandsAddNothingAndEmptyLibrariesGiveNothing) {
  SubSampleLibraryInTest empty{SubSampleFile()};
  EXPECT_TRUE(empty.Render().empty());
  SubSampleFile file;
  file.bands[4].sounds = {{0, 500, 2, {}}};
  SubSampleLibraryInTest silent(file);
  const auto channels = silent.Render();
  ASSERT_EQ(channels.size(), 2u);
  EXPECT_EQ(channels[1], std::vector<float>(500, 0.0f)) << "no frames, but a length";
}

TEST(MSubSampleRenderer, ChannelsAndLengthAreTheLargestOfTheSoundsInUse) {
  TestRandom random;
  SubSampleFile file;
  file.bands[0] = {100, 2, {NoiseSound(1, 300, 1, 2, random), NoiseSound(1, 9000, 8, 2, random)}};
  file.bands[1] = {200, 2, {NoiseSound(1, 5000, 3, 2, random)}};
  file.rate = 22050;
  SubSampleLibraryInTest library(file);
  auto channels = library.Render();
  EXPECT_EQ(channels.size(), 3u);
  EXPECT_EQ(channels[0].size(), 5000u);
  channels = library.Render({{{.index = 0.5f}}});
  EXPECT_EQ(channels.size(), 8u);
  EXPECT_EQ(channels[0].size(), 9000u);
  MAudioBuffer target;
  MSubSampleBands bands;
  MRenderSubSamples(target, *library, bands, 0);
  EXPECT_EQ(target.sampleRate, 22050);
}

TEST(MSubSampleRenderer, ShiftMovesTheBandAndDropsWhatLeavesTheSpectrum) {
  const auto rendered = [](int32_t firstBin, const std::vector<float>& bins, int32_t shift) {
    SubSampleLibraryInTest library(OneSound(firstBin, bins, 2, 9000));
    return library.Render({{{.shift = shift}}})[0];
  };
  EXPECT_EQ(rendered(100, {1, 2}, 6), rendered(106, {1, 2}, 0));
  EXPECT_EQ(rendered(100, {1, 2}, -30), rendered(70, {1, 2}, 0));
  EXPECT_EQ(rendered(100, {1, 2}, 1), rendered(101, {1, 2}, 0)) << "real parts become imaginary ones";
  EXPECT_EQ(rendered(10, {5, 1, 2}, -11), rendered(0, {1, 2}, 0));
  EXPECT_EQ(rendered(8100, {1, 2, 5}, 90), rendered(8190, {1, 2}, 0));
  EXPECT_EQ(rendered(8191, {1, 2, 5}, 0), rendered(8191, {1}, 0)) << "a band may reach behind the spectrum";
  for (const int32_t shift : {INT32_MIN, -8192, -102, 8192, INT32_MAX})
    EXPECT_EQ(PeakOf(rendered(100, {1, 2}, shift)), 0) << shift;
}

TEST(MSubSampleRenderer, LengthIsLimitedToTenMinutes) {
  SubSampleFile file = OneSound(0, {1}, 1, INT32_MAX);
  file.rate = 22050;
  SubSampleLibraryInTest library(file);
  EXPECT_EQ(library.Render()[0].size(), 22050u * 600);
}

TEST(MSubSampleRenderer, FileThatFailsRaises) {
  SubSampleFile file = OneSound(0, {1}, 1, 100);
  file.bands[0].sounds[0].frames = 2;
  SubSampleLibraryInTest library(file);
  EXPECT_RAISES(library.Render(), "Could not read required data from stream.", 256);
}

}  // namespace
