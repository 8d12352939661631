#include <gtest/gtest.h>

#include "plugin/MParameterText.h"
#include "tests/common/Texts.h"
#include "tests/effects/SlidebenchUnderTest.h"

namespace {

constexpr int32_t kSize = SlidebenchUnderTest::kSize;
constexpr int32_t kHalf = SlidebenchUnderTest::kHalf;
constexpr int32_t kLatency = SlidebenchUnderTest::kLatency;
constexpr double kLowest = SlidebenchUnderTest::kLowest;

TEST(Slidebench, DelaysBy6144SamplesAndIsElseTransparentWhenNewOrWithoutDepth) {
  TestRandom random;
  for (const int32_t block : {1, 100, 4096, 9000}) {
    const AudioBlock in = AudioBlock::Noise(2, block == 1 ? 14000 : 30000, random);
    SlidebenchUnderTest fresh({}, 1, 2);
    EXPECT_LE(fresh.Answer(in, {block}).GetDistance(Delayed(in, kLatency)), 1e-6) << block;
    SlidebenchUnderTest drawn({Point(kLowest, 2), Point(3.5, 0), Point(4, 1.7)}, 0, 2);
    EXPECT_LE(drawn.Answer(in, {block}).GetDistance(Delayed(in, kLatency)), 1e-6) << block;
  }
}

TEST(Slidebench, LetsAnImpulseComeOutAtItsLatencyAndNowhereElse) {
  for (const int32_t place : {0, 1, 2047, 2048, 4095, 4096, 5000, 10239}) {
    AudioBlock in(1, 20000);
    in[0][place] = 1;
    const AudioBlock out = SlidebenchUnderTest({}).Answer(in, {512});
    EXPECT_NEAR(out[0][place + kLatency], 1, 1e-6) << place;
    EXPECT_LE(out.GetDistance(Delayed(in, kLatency)), 1e-6) << place;
  }
}

TEST(Slidebench, TellsItsLatencyAtAnyTimeAndRate) {
  SlidebenchUnderTest slidebench;
  EXPECT_EQ(slidebench.Call(MService::kGetLatency), 6144);
  for (const int32_t rate : {0, 8000, 44100, 192000}) {
    slidebench.Prepare(2, rate);
    EXPECT_EQ(slidebench.Call(MService::kGetLatency), 6144);
  }
}

TEST(Slidebench, TakesTheSquareOfTheDrawnHeightAsGain) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(1, 30000, random);
  for (const double height : {0.0, 0.5, 1.0, 1.3, 2.0}) {
    SlidebenchUnderTest slidebench({Point(kLowest, height)});
    AudioBlock expected = Delayed(in, kLatency);
    for (int32_t i = 0; i < in.GetLength(); ++i)
      expected[0][i] = static_cast<float>(expected[0][i] * height * height);
    const AudioBlock out = slidebench.Answer(in, {512});
    EXPECT_LE(out.GetDistance(expected), 4e-6) << height;
    EXPECT_EQ(out.IsZero(), height == 0);
  }
}

TEST(Slidebench, MovesTheHeightTowardsOneBeforeItIsSquared) {
  for (const double depth : {0.0, 0.25, 0.6, 1.0}) {
    for (const double height : {0.0, 0.5, 2.0}) {
      SlidebenchUnderTest slidebench({Point(kLowest, height)}, depth);
      const double gain = std::pow((height - 1) * depth + 1, 2);
      const AudioBlock out = slidebench.Answer(AudioBlock::Constant(1, 20000, 1), {512});
      EXPECT_NEAR(out[0][19999], gain, 2e-6) << depth << ", " << height;
    }
  }
}

// The new table is read from the next spectrum on; adjacent spectra fade in a straight line.
TEST(Slidebench, FadesFromOneTableToTheNextOverHalfASpectrum) {
  SlidebenchUnderTest slidebench({Point(kLowest, 2)});
  const AudioBlock before = slidebench.Answer(AudioBlock::Constant(1, 5 * kSize, 1), {512});
  EXPECT_NEAR(before[0][5 * kSize - 1], 4, 2e-6);
  slidebench.Set("depth", 0);
  const AudioBlock after = slidebench.Answer(AudioBlock::Constant(1, 5 * kSize, 1), {512});
  // The first frames after the change lie N and 1.5 N in front of what comes out last.
  const int32_t begin = kLatency - kHalf;
  for (int32_t i = 0; i < after.GetLength(); ++i) {
    const double position = std::clamp((i - begin) / static_cast<double>(kHalf), 0.0, 1.0);
    ASSERT_NEAR(after[0][i], 4 - 3 * position, 4e-6) << i;
  }
}

TEST(Slidebench, IsSilentOnceAllThatItHasHeardIsOut) {
  TestRandom random;
  SlidebenchUnderTest slidebench({}, 1, 2);
  EXPECT_EQ(slidebench.IsSilent(), 1);
  AudioBlock one(2, 1);
  one[1][0] = 0.01f;
  slidebench.Process(one.From(), one.From(), 1);
  EXPECT_EQ(slidebench.IsSilent(), 0) << "what waits for the first spectrum";
  slidebench.AnswerToSilence(2, kLatency - 1);
  EXPECT_EQ(slidebench.IsSilent(), 0) << "what comes out next";
  AudioBlock next = slidebench.AnswerToSilence(2, 1);
  EXPECT_NEAR(next[1][0], 0.01, 1e-7);
  slidebench.AnswerToSilence(2, kSize);
  EXPECT_EQ(slidebench.IsSilent(), 1);
  slidebench.Answer(AudioBlock::Constant(2, 9000, 0.00009), {512});
  EXPECT_EQ(slidebench.IsSilent(), 1) << "what is as good as nothing";
}

TEST(Slidebench, StartsAfreshWhenItIsPrepared) {
  TestRandom random;
  const AudioBlock first = AudioBlock::Noise(2, 11111, random), second = AudioBlock::Noise(2, 20000, random);
  SlidebenchUnderTest used({Point(kLowest, 1.5), Point(4, 0.2)}, 1, 2);
  SlidebenchUnderTest fresh({Point(kLowest, 1.5), Point(4, 0.2)}, 1, 2);
  used.Answer(first, {300});
  used.Prepare(2, 48000);
  EXPECT_EQ(used.IsSilent(), 1);
  EXPECT_TRUE(used.Answer(second, {512}) == fresh.Answer(second, {512}));
}

TEST(Slidebench, KeepsItsMemoryWhenItIsPreparedWithoutASampleRate) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(2, 10000, random);
  SlidebenchUnderTest slidebench({}, 1, 2);
  slidebench.Answer(in, {512});
  slidebench.Prepare(1, 0);
  slidebench.Answer(AudioBlock(1, 100));
  slidebench.Prepare(2, -1);
  const AudioBlock out = slidebench.AnswerToSilence(2, 5000);
  for (int32_t c = 0; c < 2; ++c)
    for (int32_t i = 0; i < 5000; ++i)
      ASSERT_NEAR(out[c][i], in[c][10000 - kLatency + 100 + i], 1e-6) << c << ", " << i;
}

TEST(Slidebench, CopiesWithoutASampleRateAndChannelsBeyondTheEighth) {
  TestRandom random;
  SlidebenchUnderTest slidebench;
  const AudioBlock in = AudioBlock::Noise(10, 9000, random);
  slidebench.Prepare(10, 0);
  EXPECT_TRUE(slidebench.Answer(in, {100}) == in);
  slidebench.Prepare(10, 48000);
  const AudioBlock out = slidebench.Answer(in, {100});
  const AudioBlock delayed = Delayed(in, kLatency);
  for (int32_t c = 0; c < 10; ++c) {
    const float* const expected = c < 8 ? delayed[c] : in[c];
    for (int32_t i = 0; i < 9000; ++i) ASSERT_NEAR(out[c][i], expected[i], c < 8 ? 1e-6 : 0) << c;
  }
}

TEST(Slidebench, KeepsOneHugeSampleFromSpoilingTheSpectrumAroundIt) {
  SlidebenchUnderTest slidebench({Point(kLowest, 2)}, 1e6);
  AudioBlock in = AudioBlock::Constant(1, 20000, 1e20);
  for (int32_t i = 0; i < 20000; i += 3) in[0][i] = i % 2 == 0 ? 3e38f : -3e38f;
  EXPECT_TRUE(slidebench.Answer(in, {512}).IsFinite());
  SlidebenchUnderTest hurt({}), clean({});
  AudioBlock signal = AudioBlock::Constant(1, 20000, 0.5);
  signal[0][7000] = 0;
  const AudioBlock expected = clean.Answer(signal, {512});
  signal[0][7000] = 3e38f;
  EXPECT_TRUE(hurt.Answer(signal, {512}) == expected);
}

// A smooth segment goes on from an upright slope, hundreds of millions above its points.
TEST(Slidebench, KeepsACurveThatOvershootsFromSpoilingAnything) {
  const auto curve = {Point(kLowest, 0, MEnvelopeType::kSmooth1), Point(4, 0, MEnvelopeType::kMode3, -1),
                      Point(4.3, 2)};
  for (const double depth : {1.0, 1e6}) {
    SlidebenchUnderTest slidebench(curve, depth);
    const std::vector<double> gains = slidebench.GetGains();
    EXPECT_FLOAT_EQ(static_cast<float>(*std::max_element(gains.begin(), gains.end())), 1e13f);
    AudioBlock in = AudioBlock(1, 20000).Fill([](int32_t i) { return i % 8 < 4 ? 1e20 : -1e20; });
    EXPECT_TRUE(slidebench.Answer(in, {512}).IsFinite());
    slidebench.Set("depth", 0);
    slidebench.AnswerToSilence(1, 20000);
    EXPECT_TRUE(slidebench.AnswerToSilence(1, 100).IsZero());
  }
}

TEST(Slidebench, DoesNotHearTimeThatIsSkipped) {
  TestRandom random;
  SlidebenchUnderTest left({}), skipped({});
  const AudioBlock in = AudioBlock::Noise(1, 5000, random);
  left.Answer(in);
  skipped.Answer(in);
  skipped.Skip(100000);
  EXPECT_EQ(skipped.IsSilent(), 0);
  EXPECT_TRUE(left.Answer(in) == skipped.Answer(in));
}

TEST(Slidebench, ShowsItsDepthInPercentAndIsFlagged) {
  SlidebenchUnderTest slidebench;
  EXPECT_EQ(Utf8(MParameterText(slidebench.GetRow(0), 1)), "100.00%");
  EXPECT_EQ(Utf8(MParameterText(slidebench.GetRow(0), 0.25)), "25.00%");
  EXPECT_EQ(Utf8(slidebench.GetRow(0).help).find("<name>Depth</name> defines how powerful the effect is"),
            0u);
  EXPECT_EQ(slidebench.GetBlock().pluginFlag, 1);
}

}  // namespace
