#include <gtest/gtest.h>

#include "tests/common/Texts.h"
#include "tests/dsp/Filters.h"
#include "tests/effects/TonebenchUnderTest.h"

namespace {

constexpr int32_t kRate = 48000;

// Cascades multiply what a rounding between two sections differs by.
void ExpectClose(const AudioBlock& out, const AudioBlock& expected) {
  EXPECT_LE(out.GetDistance(expected), 1e-5 * expected.GetPeak());
}

TEST(Tonebench, StartsWithSixPeaksOfWhichAFlatOneIsOn) {
  TonebenchUnderTest tone;
  EXPECT_EQ(tone.GetRowCount(), 0);
  EXPECT_EQ(tone.GetBlock().pluginFlag, 0);
  const double gains[] = {6, -6, 6, 0, 6, -6};
  for (int32_t i = 0; i < 6; ++i) {
    const BandPoint point = tone.GetBand(i);
    EXPECT_NEAR(point.x, std::log10(20.0) + (i + 1) * 3 / 8.0, 1e-12) << i;
    EXPECT_EQ(point.y, gains[i]) << i;
    EXPECT_EQ(point.enabled, i == 3) << i;
    EXPECT_NEAR(20 - 19.95 * std::pow(point.width, 0.25), 0.6, 1e-12) << i;
    EXPECT_EQ(point.type, MBiquadType::kPeak) << i;
  }
}

TEST(Tonebench, EachTypeAloneIsItsCookbookSection) {
  TestRandom random;
  for (int32_t type = 0; type < MBiquadType::kCount; ++type) {
    for (const double quality : {0.05, 0.6, 20.0}) {
      TonebenchUnderTest tone;
      const int32_t channels = random.Integer(1, 8);
      const double hertz = random.Real(100, 20000), gain = random.Real(-24, 24);
      tone.Enable(3, false);
      tone.SetBand(5, hertz, gain, quality, type);
      tone.Prepare(channels, kRate);
      const AudioBlock in = AudioBlock::Noise(channels, 3000, random);
      SCOPED_TRACE(testing::Message()
                   << type << ", Q " << quality << ", " << hertz << " Hz, " << gain << " dB");
      ExpectClose(tone.Answer(in, {100, 1, 33}),
                  RunModel({ModelBiquad(type, gain, hertz, kRate, quality)}, in));
    }
  }
}

TEST(Tonebench, SixBandsRunInTheirOrder) {
  TestRandom random;
  for (int32_t run = 0; run < 10; ++run) {
    TonebenchUnderTest tone;
    std::vector<ModelSection> sections;
    for (int32_t i = 0; i < 6; ++i) {
      const double hertz = random.Real(100, 15000), gain = random.Real(-12, 12),
                   quality = random.Real(0.2, 4);
      tone.SetBand(i, hertz, gain, quality, i % 3);
      sections.push_back(ModelBiquad(i % 3, gain, hertz, kRate, quality));
    }
    tone.Prepare(2, kRate);
    const AudioBlock in = AudioBlock::Noise(2, 3000, random);
    ExpectClose(tone.Answer(in, {100, 1, 33}), RunModel(sections, in));
  }
}

TEST(Tonebench, IsACopyWithoutAnEnabledBand) {
  TestRandom random;
  TonebenchUnderTest tone;
  tone.Enable(3, false);
  tone.Prepare(10, kRate);
  const AudioBlock in = AudioBlock::Noise(10, 500, random);
  EXPECT_TRUE(tone.Answer(in, {64}) == in);
}

TEST(Tonebench, CopiesTheInputUntilItHasASampleRate) {
  TestRandom random;
  TonebenchUnderTest tone;
  tone.Prepare(2, 0);
  tone.SetBand(0, 1000, 12, 1, MBiquadType::kPeak);
  const AudioBlock in = AudioBlock::Noise(2, 500, random);
  EXPECT_TRUE(tone.Answer(in, {64}) == in);
  EXPECT_EQ(tone.GetPlugin().GetShape(3), 0);
}

TEST(Tonebench, ABandThatIsSwitchedMovesLaterOnesToAnotherState) {
  TestRandom random;
  TonebenchUnderTest tone;
  tone.Enable(3, false);
  tone.Prepare(1, kRate);
  const double hertz[] = {300, 700, 1500, 3000, 6000, 9000};
  bool isOn[6] = {};
  for (int32_t i = 0; i < 6; ++i) tone.SetBand(i, hertz[i], 6, 1, MBiquadType::kPeak, false);
  struct {
    double x2, y2, x1, y1;
  } states[6] = {};
  constexpr int32_t kBlock = 64, kBlocks = 100;
  AudioBlock in = AudioBlock::Noise(1, kBlock * kBlocks, random), expected = in, out(1, kBlock * kBlocks);
  for (int32_t block = 0; block < kBlocks; ++block) {
    const int32_t switched = random.Below(6);
    isOn[switched] = !isOn[switched];
    tone.Enable(switched, isOn[switched]);
    tone.Process(in.From(block * kBlock), out.From(block * kBlock), kBlock);
    for (int32_t i = 0, place = 0; i < 6; ++i) {
      if (!isOn[i]) continue;
      auto& [x2, y2, x1, y1] = states[place++];
      ModelSection section = ModelBiquad(MBiquadType::kPeak, 6, hertz[i], kRate, 1);
      section.x1 = x1, section.x2 = x2, section.y1 = y1, section.y2 = y2;
      for (int32_t k = block * kBlock; k < (block + 1) * kBlock; ++k)
        expected[0][k] = static_cast<float>(section.Step(double{expected[0][k]}));
      x1 = section.x1, x2 = section.x2, y1 = section.y1, y2 = section.y2;
    }
  }
  ExpectClose(out, expected);
}

TEST(Tonebench, KeepsItsStatesWhenPrepared) {
  TonebenchUnderTest tone;
  tone.SetBand(3, 1000, 12, 4, MBiquadType::kPeak);
  tone.Prepare(1, kRate);
  const AudioBlock impulse = AudioBlock::Impulse(1, 500);
  const AudioBlock expected = RunModel({ModelBiquad(MBiquadType::kPeak, 12, 1000, kRate, 4)}, impulse);
  tone.Answer(AudioBlock::Impulse(1, 200));
  tone.Prepare(1, kRate);
  const AudioBlock out = tone.Answer(AudioBlock(1, 300));
  for (int32_t i = 0; i < 300; ++i) ASSERT_NEAR(out[0][i], expected[0][i + 200], 1e-6) << i;
}

TEST(Tonebench, TheShapeIsTheProductOfAllResponsesInDecibels) {
  TonebenchUnderTest tone;
  tone.SetBand(0, 200, 9, 0.7, MBiquadType::kLowShelf);
  tone.SetBand(1, 1000, -12, 2, MBiquadType::kPeak);
  tone.SetBand(2, 1100, 5, 2, MBiquadType::kPeak, false);
  tone.SetBand(4, 5000, 0, 1, MBiquadType::kLowPass);
  tone.Prepare(1, kRate);
  for (const double hertz : {24.0, 240.0, 960.0, 1800.0, 4800.0, 14400.0}) {
    TonebenchUnderTest fresh;
    for (int32_t i = 0; i < 6; ++i) fresh.SetBand(i, tone.GetBand(i));
    fresh.Prepare(1, kRate);
    const double gain = MeasureMagnitude(
        [&](float* in, float* out, int32_t samples) { fresh.Process(&in, &out, samples); }, hertz, kRate);
    EXPECT_NEAR(tone.GetPlugin().GetShape(std::log10(hertz)), 20 * std::log10(gain), 1e-3) << hertz;
  }
  for (int32_t i = 0; i < 6; ++i) tone.Enable(i, false);
  EXPECT_EQ(tone.GetPlugin().GetShape(3), 0);
}

TEST(Tonebench, TheShapeOfANotchHasNoHole) {
  TonebenchUnderTest tone;
  tone.SetBand(3, 12000, 0, 1, MBiquadType::kNotch);
  tone.Prepare(1, kRate);
  const double shape = tone.GetPlugin().GetShape(std::log10(12000.0));
  EXPECT_TRUE(std::isfinite(shape));
  EXPECT_LT(shape, -100);
}

TEST(Tonebench, SurvivesAnyBand) {
  TestRandom random;
  const std::vector<double> numbers = {NAN, INFINITY, -INFINITY, 1e300, -1e300, 0,
                                       -1,  1,        1e-300,    4.5,   60,     -60};
  TonebenchUnderTest tone;
  tone.Prepare(2, kRate);
  for (int32_t run = 0; run < 500; ++run) {
    BandPoint point;
    point.x = random.OneOf(numbers);
    point.y = random.OneOf(numbers);
    point.width = random.OneOf(numbers);
    point.enabled = !random.OneIn(4);
    point.type = random.OneOf<int32_t>({0, 1, 2, 3, 4, 5, 6, 7, -1, INT32_MAX, INT32_MIN});
    tone.SetBand(random.Below(6), point);
    EXPECT_TRUE(tone.Answer(AudioBlock::Noise(2, 100, random)).IsFinite());
    EXPECT_FALSE(std::isnan(tone.GetPlugin().GetShape(random.Real(-6, 6))));
  }
}

TEST(Tonebench, AFrequencyAtOrAboveHalfTheSampleRateIsJustBelowIt) {
  TestRandom random;
  TonebenchUnderTest tone;
  tone.SetBand(3, 20000, 12, 0.7, MBiquadType::kPeak);
  tone.Prepare(1, 22050);
  const AudioBlock in = AudioBlock::Noise(1, 3000, random);
  ExpectClose(tone.Answer(in),
              RunModel({ModelBiquad(MBiquadType::kPeak, 12, 0.4999 * 22050, 22050, 0.7)}, in));
}

TEST(Tonebench, TheWidthIsEditedAsQuality) {
  alignas(8) double width = 1;
  TonebenchAudioEffectPlugin::ValueQ value(MBind(width));
  MString text;
  value.GetText(text);
  EXPECT_EQ(Utf8(text), "0.05");
  EXPECT_TRUE(value.SetText("20"));
  EXPECT_EQ(width, 0);
  value.GetText(text);
  EXPECT_EQ(Utf8(text), "20.00");
  EXPECT_TRUE(value.SetText("0.6"));
  EXPECT_NEAR(width, 0.8942013467698493, 1e-12);
  EXPECT_FALSE(value.SetText("0.6"));
  EXPECT_FALSE(value.SetText("wide"));
  EXPECT_TRUE(value.SetText("25"));
  EXPECT_EQ(width, 0);
}

}  // namespace
