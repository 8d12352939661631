#include "instruments/generators/SlotterAudioFilter.h"

#include <gtest/gtest.h>

#include "tests/instruments/generators/Pumped.h"
#include "tests/instruments/generators/SoundModel.h"

namespace {

Signal Noise(int32_t length, TestRandom& random) {
  Signal signal(static_cast<std::size_t>(length));
  for (double& sample : signal) sample = static_cast<float>(random.Real(-1, 1));
  return signal;
}

TEST(SlotterAudioFilter, StartsWithBothFiltersOff) {
  Written written;
  const SlotterAudioFilter filter(written);
  EXPECT_FALSE(filter.hasLowPass || filter.hasHighPass);
  EXPECT_EQ(filter.lowPassHz, 2000);
  EXPECT_EQ(filter.highPassHz, 1000);
  EXPECT_EQ(filter.displayName, MString("band-pass filter"));
}

TEST(SlotterAudioFilter, WithBothFiltersOffTheSoundPassesToTheBit) {
  TestRandom random;
  Written written(Noise(2000, random));
  written.samples[5] = 1e-30;
  SlotterAudioFilter filter(written);
  filter.SetFormat(2, 44100);
  EXPECT_TRUE(Pump(filter, 2, 3000, {256}) == Pump(written, 2, 3000, {256}));
}

TEST(SlotterAudioFilter, IsTheModelForAllSwitchesRatiosAndRates) {
  TestRandom random;
  Written written(Noise(3000, random));
  SlotterAudioFilter filter(written);
  for (int32_t round = 0; round < 60; ++round) {
    filter.hasLowPass = random.OneIn(2);
    filter.hasHighPass = random.OneIn(2);
    filter.lowPassHz = random.OneOf<double>({20, 500, 2000, 20000});
    filter.highPassHz = random.OneOf<double>({20, 100, 1000, 5000});
    const double ratio = random.OneOf<double>({1e-6, 0.25, 0.5, 1, 2, 1e6});
    const int32_t rate = random.OneOf<int32_t>({8000, 22050, 44100, 96000});
    filter.SetFormat(1, rate);
    Signal expected = written.samples;
    if (filter.hasLowPass) SoundModel::LowPass(filter.lowPassHz, ratio, rate).Run(expected);
    if (filter.hasHighPass) SoundModel::HighPass(filter.highPassHz, ratio, rate).Run(expected);
    const Sizes sizes = random.OneOf(kSplits);
    ASSERT_LE(SoundModel::GetDistance(Pump(filter, 1, 3000, sizes, 1, ratio)[0], expected), 1e-6)
        << filter.hasLowPass << filter.hasHighPass << " " << filter.lowPassHz << " " << filter.highPassHz
        << " " << ratio << " " << rate;
  }
}

TEST(SlotterAudioFilter, CutOffsFollowTheRatioAndStayFromTwentyToTwentyThousandHertz) {
  TestRandom random;
  Written written(Noise(500, random));
  SlotterAudioFilter filter(written);
  filter.SetFormat(1, 96000);
  filter.hasLowPass = true;
  const auto sound = [&](double hertz, double ratio) {
    filter.lowPassHz = hertz;
    return Pump(filter, 1, 500, {}, 1, ratio);
  };
  EXPECT_TRUE(sound(1000, 2) == sound(2000, 1));
  EXPECT_TRUE(sound(1000, 1e-3) == sound(20, 1));
  EXPECT_TRUE(sound(-5, 1) == sound(20, 1));
  EXPECT_TRUE(sound(1000, 1000) == sound(20000, 1));
  EXPECT_TRUE(sound(NAN, 1) == sound(2000, 1));
  EXPECT_FALSE(sound(1000, 1) == sound(2000, 1));
}

TEST(SlotterAudioFilter, ChannelsHaveMemoriesOfTheirOwn) {
  TestRandom random;
  Written written(Noise(2000, random));
  SlotterAudioFilter filter(written);
  filter.SetFormat(8, 44100);
  filter.hasLowPass = filter.hasHighPass = true;
  const AudioBlock out = Pump(filter, 8, 2000, {256});
  for (int32_t c = 0; c < 8; ++c) {
    Signal expected = written.samples;
    for (double& sample : expected) sample *= 1 - c / 4.0;
    SoundModel::LowPass(2000, 1, 44100).Run(expected);
    SoundModel::HighPass(1000, 1, 44100).Run(expected);
    EXPECT_LE(SoundModel::GetDistance(out[c], expected), 1e-6) << c;
  }
}

TEST(SlotterAudioFilter, EditsDoNotReachASound) {
  TestRandom random;
  Written written(Noise(2000, random));
  SlotterAudioFilter filter(written);
  filter.SetFormat(1, 44100);
  filter.hasLowPass = true;
  const AudioBlock expected = Pump(filter, 1, 2000);
  const MGeneratorStatePointer state = filter.CreateState(1, 1);
  filter.hasLowPass = false;
  filter.hasHighPass = true;
  filter.lowPassHz = 20;
  EXPECT_TRUE(Pump(filter, *state, 1, 2000) == expected);
}

}  // namespace
