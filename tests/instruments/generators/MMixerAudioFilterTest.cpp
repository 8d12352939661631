#include "instruments/generators/MMixerAudioFilter.h"

#include <gtest/gtest.h>

#include "dsp/MRandomSequence.h"
#include "instruments/generators/MNoiseGeneratorAudioSource.h"
#include "tests/instruments/generators/MixerInTest.h"

namespace {

TEST(MMixerAudioFilter, WithoutObjectsIsSilentAndOver) {
  MMixerAudioFilter mixer;
  mixer.SetFormat(2, 44100);
  EXPECT_EQ(mixer.GetLength(false), 0);
  EXPECT_EQ(mixer.GetLength(true), 0);
  const MGeneratorStatePointer state = mixer.CreateState(1, 1);
  std::vector<bool> calls;
  EXPECT_TRUE(Pump(mixer, *state, 2, 64, {}, &calls).IsZero());
  EXPECT_EQ(calls, std::vector<bool>{true});
}

TEST(MMixerAudioFilter, WithAllObjectsDisabledIsSilentAndOverWithTheFirstBlock) {
  MixerInTest both({{.signal = Ramp(100), .isEnabled = false}, {.signal = Ramp(50), .isEnabled = false}});
  const MGeneratorStatePointer state = both.mixer.CreateState(1, 1);
  std::vector<bool> calls;
  EXPECT_TRUE(Pump(both.mixer, *state, 2, 64, {}, &calls).IsZero());
  EXPECT_EQ(calls, std::vector<bool>{true});
  EXPECT_EQ(both.mixer.GetLength(false), 100);
}

TEST(MMixerAudioFilter, ObjectsStartEnabledAsTheyAreAddedInModeAddAndWithoutEditors) {
  Written written;
  EXPECT_EQ(written.GetFlag("IHTI", -1), 1);
  EXPECT_EQ(written.GetFlag("IHTM", -1), 1);
  EXPECT_TRUE(written.isEnabled);
  EXPECT_EQ(written.volume, 1);
  EXPECT_EQ(written.pan, 0);
  MMixerAudioFilter mixer;
  mixer.Add(written, false);
  EXPECT_EQ(written.GetFlag("IHTI", -1), 0);
  EXPECT_EQ(written.GetFlag("IHTM", -1), 0);
  EXPECT_FALSE(written.isEnabled);
}

TEST(MMixerAudioFilter, NamesAreJoined) {
  MixerInTest both({{}, {.isEnabled = false}});
  EXPECT_EQ(both.mixer.GetDisplayName(), MString("Written & Written"));
}

TEST(MMixerAudioFilter, ObjectsBehindTheBaseInModeFreqStartAtFullVolume) {
  MixerInTest four({{.isEnabled = false}, {.mode = 2}, {.mode = 2}, {.mode = 1}});
  four.mixer.CreateState(0.25, 1.5);
  EXPECT_EQ(four.objects[0].lastRatio, 0);
  EXPECT_EQ(four.objects[1].lastGain, 0.25);
  EXPECT_EQ(four.objects[2].lastGain, 1);
  EXPECT_EQ(four.objects[2].lastRatio, 1.5);
  EXPECT_EQ(four.objects[3].lastGain, 0.25);
}

TEST(MMixerAudioFilter, PanMovesTheOtherSideAcross) {
  for (const double pan : {-1.0, -0.25, 0.0, 1e-21, 0.5, 1.0}) {
    for (const int32_t channels : {1, 2, 3, 8}) {
      SCOPED_TRACE(std::to_string(pan) + ", " + std::to_string(channels) + " channels");
      MixerInTest({{.signal = Ramp(600), .volume = 0.7, .pan = pan}}, channels).ExpectModel({256});
      MixerInTest({{.signal = Ramp(600)}, {.signal = Ramp(500), .volume = 0.7, .pan = pan}}, channels)
          .ExpectModel({256});
    }
  }
}

TEST(MMixerAudioFilter, PanIsLimitedAndCountsAsNoneWhenItIsSwitchedOff) {
  const auto sound = [](double pan, bool usesPan) {
    MixerInTest one({{.signal = Ramp(100), .pan = pan}});
    one.mixer.usesPan = usesPan;
    return Pump(one.mixer, 2, 100);
  };
  EXPECT_TRUE(sound(7, true) == sound(1, true));
  EXPECT_TRUE(sound(-7, true) == sound(-1, true));
  EXPECT_TRUE(sound(NAN, true) == sound(0, true));
  EXPECT_TRUE(sound(0.5, false) == sound(0, true));
  EXPECT_FALSE(sound(0.5, true) == sound(0, true));
}

TEST(MMixerAudioFilter, ObjectThatEndsEarlierStopsAdding) {
  MixerInTest both({{.signal = Ramp(1000)}, {.signal = Ramp(300), .volume = 0.5}});
  for (const Sizes& sizes : kSplits) both.ExpectModel(sizes);
}

TEST(MMixerAudioFilter, RingThatEndsEarlierKeepsAttenuating) {
  MixerInTest both({{.signal = Signal(1000, 1.0)}, {.signal = Signal(300, 0.5), .mode = 1, .volume = 0.75}});
  for (const Sizes& sizes : kSplits) both.ExpectModel(sizes);
  const AudioBlock out = Pump(both.mixer, 1, 1000, {64});
  EXPECT_FLOAT_EQ(out[0][299], 0.375 + 0.25);
  EXPECT_FLOAT_EQ(out[0][300], 0.25);
  EXPECT_FLOAT_EQ(out[0][999], 0.25);
}

TEST(MMixerAudioFilter, RingAndFreqNeverTakeOver) {
  for (const int32_t mode : {1, 2}) {
    MixerInTest both({{.signal = Ramp(100)}, {.signal = Ramp(1000), .mode = mode}});
    const MGeneratorStatePointer state = both.mixer.CreateState(1, 1);
    std::vector<bool> calls;
    const AudioBlock out = Pump(both.mixer, *state, 1, 300, {100}, &calls);
    EXPECT_EQ(calls, (std::vector<bool>{false, true, true}));
    for (int32_t i = 100; i < 300; ++i) ASSERT_EQ(out[0][i], 0);
  }
}

TEST(MMixerAudioFilter, NextAddTakesOverAndWhatStandsInFrontOfItRests) {
  MixerInTest three({{.signal = Ramp(128)},
                     {.signal = Ramp(1000), .mode = 1, .volume = 0.5},
                     {.signal = Ramp(640), .volume = 0.5}});
  for (const Sizes& sizes : {Sizes{64}, {128}, {100}, {1}}) three.ExpectModel(sizes);
  const MGeneratorStatePointer state = three.mixer.CreateState(1, 1);
  three.objects[1].calls = 0;
  Pump(three.mixer, *state, 1, 640, {64});
  EXPECT_EQ(three.objects[1].calls, 2);
}

TEST(MMixerAudioFilter, BaseIsTheFirstEnabledObjectWhateverItsMode) {
  for (const int32_t mode : {1, 2})
    MixerInTest(
        {{.isEnabled = false}, {.signal = Ramp(500), .mode = mode, .volume = 0.5}, {.signal = Ramp(700)}})
        .ExpectModel({64});
}

TEST(MMixerAudioFilter, TwoNoisesDrawBlockByBlock) {
  MNoiseGeneratorAudioSource noises[2];
  MMixerAudioFilter mixer;
  for (MNoiseGeneratorAudioSource& noise : noises) mixer.Add(noise, true);
  noises[0].pan = 1;
  noises[1].pan = -1;
  mixer.SetFormat(2, 1000);
  MRandomSequence::Set(99);
  uint32_t x = 99;
  const AudioBlock out = Pump(mixer, 2, 100, {60, 40});
  const auto draw = [&] {
    x = x * 214013 + 2531011;
    return (x >> 16 & 0x7fff) / 32767.0 - 0.5;
  };
  for (const auto& [first, end] : {std::pair{0, 60}, {60, 100}}) {
    // Panned hard, a mono sound comes out twice as loud on its side.
    for (int32_t i = first; i < end; ++i) ASSERT_NEAR(out[1][i], 2 * draw(), 1e-6);
    for (int32_t i = first; i < end; ++i) ASSERT_NEAR(out[0][i], 2 * draw(), 1e-6);
  }
}

TEST(MMixerAudioFilter, EditsDoNotReachASound) {
  MixerInTest three({{.signal = Ramp(500)}, {.signal = Ramp(400), .volume = 0.5}, {.isEnabled = false}});
  const MGeneratorStatePointer state = three.mixer.CreateState(1, 1);
  const AudioBlock expected = Pump(three.mixer, 2, 500, {64});
  three.objects[0].volume = 3;
  three.objects[0].isEnabled = false;
  three.objects[1].pan = 1;
  three.objects[1].SetFlag(MAudioGeneratorObject::kMode, 2);
  three.objects[2].isEnabled = true;
  three.mixer.usesPan = false;
  EXPECT_TRUE(Pump(three.mixer, *state, 2, 500, {64}) == expected);
}

TEST(MMixerAudioFilter, LongBlockIsOneBlockThoughAnObjectEndsInIt) {
  MixerInTest three({{.signal = Ramp(5000)},
                     {.signal = Ramp(9000), .mode = 1, .volume = 0.5},
                     {.signal = Ramp(3000), .mode = 2, .volume = 0.25},
                     {.signal = Ramp(20000), .volume = 0.5}});
  for (const Sizes& sizes : {Sizes{30000}, {8192}, {8193}, {20000}}) three.ExpectModel(sizes, 30000);
}

TEST(MMixerAudioFilter, OtherFormatUnderASoundIsHarmless) {
  MixerInTest three(
      {{.signal = Ramp(5000)}, {.signal = Ramp(900), .mode = 2}, {.signal = Ramp(900), .mode = 1}});
  const MGeneratorStatePointer state = three.mixer.CreateState(1, 1);
  for (const int32_t channels : {2, 8, 1, 0, 5}) {
    three.mixer.SetFormat(channels, 48000);
    EXPECT_TRUE(Pump(three.mixer, *state, channels, 300, {64}).IsFinite());
    EXPECT_TRUE(Pump(three.mixer, *state, 8, 300, {64}).IsFinite());
  }
}

}  // namespace
