#include "core/MAudioBuffer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"
#include "tests/core/AudioBuffers.h"

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

using Floats = std::vector<float>;

Floats Samples(const MAudioBuffer& buffer, int32_t channel = 0) {
  const float* const first = buffer.GetChannel(channel);
  return Floats(first, first + buffer.GetLength());
}

TEST(MAudioBuffer, IsEmptyAtFirst) {
  const MAudioBuffer buffer;
  EXPECT_EQ(buffer.GetChannelCount(), 0);
  EXPECT_EQ(buffer.GetLength(), 0);
  EXPECT_EQ(buffer.GetChannel(0), nullptr);
  EXPECT_EQ(buffer.sampleRate, 44100);
  EXPECT_EQ(buffer.bitDepth, 16);
}

TEST(MAudioBuffer, MakesSamplesAsZerosBetweenZeroGuards) {
  MAudioBuffer buffer;
  FillByNumber(buffer, 3, 50);
  buffer.SetSize(3, 40);
  ASSERT_EQ(buffer.GetChannelCount(), 3);
  for (int32_t c = 0; c < 3; ++c) EXPECT_EQ(Samples(buffer, c), Floats(40, 0.0f));
  ExpectGuards(buffer);
}

TEST(MAudioBuffer, SameFormatKeepsTheSamplesAndAllocatesNothing) {
  MAudioBuffer buffer;
  FillByNumber(buffer, 2, 5);
  const CountingFunctions table;
  buffer.SetSize(2, 5);
  EXPECT_EQ(Samples(buffer, 1), (Floats{101, 102, 103, 104, 105}));
  EXPECT_EQ(table.GetCalls(), 0);
}

TEST(MAudioBuffer, OtherChannelCountOfTheSameLengthMakesTheSamplesAnew) {
  MAudioBuffer buffer;
  FillByNumber(buffer, 2, 3);
  buffer.SetSize(1, 3);
  EXPECT_EQ(Samples(buffer), Floats(3, 0.0f));
}

TEST(MAudioBuffer, ChannelsAreLimitedToEightAndNegativeNumbersAreNone) {
  MAudioBuffer buffer;
  buffer.SetSize(9, 4);
  EXPECT_EQ(buffer.GetChannelCount(), 8);
  EXPECT_EQ(Samples(buffer, 7), Floats(4, 0.0f));
  buffer.SetSize(INT32_MAX, 4);
  EXPECT_EQ(buffer.GetChannelCount(), 8);
  buffer.SetSize(-1, -1);
  EXPECT_EQ(buffer.GetChannelCount(), 0);
  EXPECT_EQ(buffer.GetLength(), 0);
}

TEST(MAudioBuffer, ChannelOutsideOfTheCountIsNull) {
  MAudioBuffer buffer;
  buffer.SetSize(2, 4);
  for (const int32_t channel : {-1, 2, 7, 8, 1000, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(buffer.GetChannel(channel), nullptr) << channel;
    EXPECT_EQ(std::as_const(buffer).GetChannel(channel), nullptr) << channel;
  }
}

TEST(MAudioBuffer, GrowthKeepsTheSamplesAndClearsTheNewOnes) {
  MAudioBuffer buffer;
  FillByNumber(buffer, 2, 3);
  buffer.Resize(6, true);
  EXPECT_EQ(Samples(buffer), (Floats{1, 2, 3, 0, 0, 0}));
  EXPECT_EQ(Samples(buffer, 1), (Floats{101, 102, 103, 0, 0, 0}));
  ExpectGuards(buffer);
}

TEST(MAudioBuffer, GrowthWithoutTheFlagKeepsTheSamplesAndSetsTheGuards) {
  MAudioBuffer buffer;
  FillByNumber(buffer, 2, 3);
  buffer.Resize(200, false);
  ASSERT_EQ(buffer.GetLength(), 200);
  for (int32_t c = 0; c < 2; ++c)
    for (int32_t i = 0; i < 3; ++i) EXPECT_EQ(buffer.GetChannel(c)[i], static_cast<float>(100 * c + i + 1));
  ExpectGuards(buffer);
}

TEST(MAudioBuffer, ShrinkKeepsTheMemoryAndSetsTheGuardBehind) {
  MAudioBuffer buffer;
  FillByNumber(buffer, 2, 8);
  const CountingFunctions table;
  const float* const before = buffer.GetChannel(1);
  buffer.Resize(2, true);
  EXPECT_EQ(Samples(buffer, 1), (Floats{101, 102}));
  EXPECT_EQ(buffer.GetChannel(1), before);
  EXPECT_EQ(buffer.GetCapacity(), 8);
  ExpectGuards(buffer);
  EXPECT_EQ(table.GetCalls(), 0);
}

TEST(MAudioBuffer, ShrinkAndGrowthAgainShowZerosInsteadOfOldSamples) {
  MAudioBuffer buffer;
  FillByNumber(buffer, 1, 6);
  buffer.Resize(2, true);
  buffer.Resize(6, true);
  EXPECT_EQ(Samples(buffer), (Floats{1, 2, 0, 0, 0, 0}));
  ExpectGuards(buffer);
}

TEST(MAudioBuffer, LengthZeroFreesTheBuffer) {
  const CountingFunctions table;
  MAudioBuffer buffer;
  for (const int32_t length : {0, -5}) {
    FillByNumber(buffer, 8, 6);
    EXPECT_EQ(table.GetBalance(), 8);
    buffer.Resize(length, true);
    EXPECT_EQ(table.GetBalance(), 0);
    EXPECT_EQ(buffer.GetChannelCount(), 0);
    EXPECT_EQ(buffer.GetLength(), 0);
    EXPECT_EQ(buffer.GetCapacity(), 0);
    EXPECT_EQ(buffer.GetChannel(0), nullptr);
  }
}

TEST(MAudioBuffer, ReservedRoomKeepsTheSamplesAndLaterGrowthNeedsNoMemory) {
  MAudioBuffer buffer;
  FillByNumber(buffer, 2, 3);
  buffer.Reserve(50);
  EXPECT_EQ(buffer.GetCapacity(), 50);
  EXPECT_EQ(Samples(buffer, 1), (Floats{101, 102, 103}));
  ExpectGuards(buffer);
  const CountingFunctions table;
  buffer.Reserve(-1);
  buffer.Resize(50, true);
  EXPECT_EQ(Samples(buffer)[49], 0);
  EXPECT_EQ(table.GetCalls(), 0);
  ExpectGuards(buffer);
}

TEST(MAudioBuffer, FormatWithRoomMakesRoomAlsoWhenTheFormatIsTheSame) {
  MAudioBuffer buffer;
  buffer.SetSize(1, 3, 20);
  EXPECT_EQ(buffer.GetLength(), 3);
  EXPECT_EQ(buffer.GetCapacity(), 20);
  buffer.GetChannel(0)[2] = 7;
  buffer.SetSize(1, 3, 30);
  EXPECT_EQ(buffer.GetCapacity(), 30);
  EXPECT_EQ(Samples(buffer), (Floats{0, 0, 7}));
  buffer.SetSize(1, 4, 2);
  EXPECT_EQ(buffer.GetCapacity(), 4);
}

TEST(MAudioBuffer, BufferWithoutChannelsTakesEveryOperation) {
  MAudioBuffer buffer;
  buffer.Reserve(10);
  buffer.Resize(5, true);
  buffer.Clear();
  buffer.Rotate(3);
  buffer.Fade(0, 1, 4, 0);
  EXPECT_TRUE(buffer.IsAllBelow(-1));
  EXPECT_EQ(buffer.GetChannelCount(), 0);
}

TEST(MAudioBuffer, RotateMovesTowardsHigherIndicesModuloTheLength) {
  struct Case {
    int32_t offset;
    Floats expected;
  };
  const Case cases[] = {{0, {1, 2, 3, 4, 5}},  {1, {5, 1, 2, 3, 4}},         {5, {1, 2, 3, 4, 5}},
                        {-1, {2, 3, 4, 5, 1}}, {8, {3, 4, 5, 1, 2}},         {-5, {1, 2, 3, 4, 5}},
                        {-8, {4, 5, 1, 2, 3}}, {INT32_MAX, {4, 5, 1, 2, 3}}, {INT32_MIN, {4, 5, 1, 2, 3}}};
  for (const Case& test : cases) {
    MAudioBuffer buffer;
    FillByNumber(buffer, 2, 5);
    buffer.Rotate(test.offset);
    EXPECT_EQ(Samples(buffer), test.expected) << test.offset;
    for (const float sample : Samples(buffer, 1)) EXPECT_GT(sample, 100);  // channels stay apart
    ExpectGuards(buffer);
  }
}

TEST(MAudioBuffer, FadeInsideLeavesTheRestAndEndsAtTheEndGain) {
  MAudioBuffer buffer;
  buffer.SetSize(1, 6);
  for (int32_t i = 0; i < 6; ++i) buffer.GetChannel(0)[i] = 8;
  buffer.Fade(1, 1.0, 5, 0.0);
  EXPECT_EQ(Samples(buffer), (Floats{8, 8, 6, 4, 2, 0}));
  ExpectGuards(buffer);
}

TEST(MAudioBuffer, FadeReachesItsEndGainExactlyForEveryLength) {
  MAudioBuffer buffer;
  for (int32_t last = 1; last < 300; ++last) {
    FillByNumber(buffer, 1, last + 1);
    buffer.Fade(0, 1.0, last, 0.0);
    EXPECT_EQ(buffer.GetChannel(0)[last], 0) << last;
    EXPECT_EQ(buffer.GetChannel(0)[0], 1) << last;
  }
}

TEST(MAudioBuffer, FadeThatEndsBehindTheBufferIsCutAndKeepsItsSlope) {
  MAudioBuffer buffer;
  FillByNumber(buffer, 2, 4);
  buffer.Fade(0, 1.0, 4, 0.0);
  EXPECT_EQ(Samples(buffer), (Floats{1, 1.5, 1.5, 1}));
  EXPECT_EQ(Samples(buffer, 1), (Floats{101, 76.5, 51.5, 26}));
  ExpectGuards(buffer);
}

TEST(MAudioBuffer, FadeThatBeginsInFrontOfTheBufferIsCutAndKeepsItsSlope) {
  MAudioBuffer buffer;
  FillByNumber(buffer, 1, 3);
  buffer.Fade(-2, 0.0, 2, 1.0);
  EXPECT_EQ(Samples(buffer), (Floats{0.5, 1.5, 3}));
  FillByNumber(buffer, 1, 2);
  buffer.Fade(INT32_MIN, 1.0, INT32_MAX, 1.0);
  EXPECT_EQ(Samples(buffer), (Floats{1, 2}));
}

TEST(MAudioBuffer, FadeOutsideOrOfOneSampleLeavesTheBuffer) {
  MAudioBuffer buffer;
  FillByNumber(buffer, 1, 3);
  buffer.Fade(-5, 0.0, -1, 0.0);
  buffer.Fade(3, 0.0, 9, 0.0);
  buffer.Fade(1, 0.0, 1, 0.0);
  EXPECT_EQ(Samples(buffer), (Floats{1, 2, 3}));
}

TEST(MAudioBuffer, FadeThatBeginsBehindItsEndIsRefused) {
  MAudioBuffer buffer;
  FillByNumber(buffer, 1, 3);
  EXPECT_RAISES(buffer.Fade(2, 1.0, 1, 0.0), "Begin cannot follow the end in fade-in/out processing.", 0);
  EXPECT_RAISES(buffer.Fade(9, 1.0, -9, 0.0), "Begin cannot follow the end in fade-in/out processing.", 0);
  EXPECT_EQ(Samples(buffer), (Floats{1, 2, 3}));
}

TEST(MAudioBuffer, SampleAtTheThresholdCountsAsBelowAndTheNextFloatDoesNot) {
  constexpr float kThreshold = 0.0001f;
  MAudioBuffer buffer;
  buffer.SetSize(2, 3000);
  EXPECT_TRUE(buffer.IsAllBelow(0));
  for (const int32_t place : {0, 1023, 1024, 2999}) {
    for (const float sign : {1.0f, -1.0f}) {
      float& sample = buffer.GetChannel(1)[place];
      sample = sign * kThreshold;
      EXPECT_TRUE(buffer.IsAllBelow(kThreshold)) << place;
      sample = sign * std::nextafter(kThreshold, 1.0f);
      EXPECT_FALSE(buffer.IsAllBelow(kThreshold)) << place;
      sample = 0;
    }
  }
}

TEST(MAudioBuffer, ThresholdIsComparedInDouble) {
  using Float = std::numeric_limits<float>;
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  std::vector<double> thresholds = {0.0, -0.0, -1.0, 1e300, -1e300, 1e-300, kInfinity, -kInfinity};
  const Floats samples = {
      0.0f, 1.0f, 0.0001f, 0.3f, Float::min(), Float::denorm_min(), Float::max(), Float::infinity()};
  for (const float sample : samples)
    for (const double target : {-kInfinity, kInfinity})
      for (const double step : {double{sample}, double{std::nextafter(sample, static_cast<float>(target))}})
        thresholds.insert(thresholds.end(), {step, std::nextafter(step, target), (sample + step) / 2});
  MAudioBuffer buffer;
  buffer.SetSize(1, 1);
  for (const double threshold : thresholds)
    for (const float sample : samples)
      for (const float signedSample : {sample, -sample}) {
        buffer.GetChannel(0)[0] = signedSample;
        EXPECT_EQ(buffer.IsAllBelow(threshold), double{sample} <= threshold) << sample << " at " << threshold;
      }
}

TEST(MAudioBuffer, NaNIsNotAboveTheThresholdAndInfinityIs) {
  MAudioBuffer buffer;
  buffer.SetSize(1, 2);
  buffer.GetChannel(0)[0] = kNaN;
  EXPECT_TRUE(buffer.IsAllBelow(0));
  buffer.GetChannel(0)[1] = -std::numeric_limits<float>::infinity();
  EXPECT_FALSE(buffer.IsAllBelow(1e300));
}

TEST(MAudioBuffer, ViewShowsForeignSamplesAndTouchesNothingAroundThem) {
  float left[] = {9, 1, 2, 3, 9};
  float right[] = {9, 4, 5, 6, 9};
  float* const channels[] = {left + 1, right + 1};
  MAudioBuffer buffer;
  FillByNumber(buffer, 3, 50);
  buffer.SetView(channels, 2, 3);
  ASSERT_EQ(buffer.GetChannelCount(), 2);
  EXPECT_EQ(Samples(buffer, 1), (Floats{4, 5, 6}));
  buffer.Rotate(1);
  EXPECT_EQ(Floats(left, left + 5), (Floats{9, 3, 1, 2, 9}));
  buffer.Clear();
  EXPECT_EQ(Floats(right, right + 5), (Floats{9, 0, 0, 0, 9}));
}

TEST(MAudioBuffer, ViewIsNotResizedAndEndsWithoutATrace) {
  float samples[] = {1, 2, 3};
  float* const channels[] = {samples};
  MAudioBuffer buffer;
  buffer.SetView(channels, 1, 3);
  EXPECT_RAISES(buffer.Resize(2, true), "Service \"MAudioBuffer::Reserve\" is not implemented.",
                MErrorCode::kNotImplemented);
  buffer.Detach();
  EXPECT_EQ(buffer.GetChannelCount(), 0);
  buffer.SetView(channels, 1, 3);
  buffer.SetSize(1, 3);
  buffer.GetChannel(0)[0] = 7;
  buffer.Detach();
  EXPECT_EQ(Samples(buffer), (Floats{7, 0, 0}));
  EXPECT_EQ(samples[0], 1);
}

TEST(MAudioBuffer, ViewTakesEightChannels) {
  float sample = 1;
  float* const channels[] = {&sample, &sample, &sample, &sample, &sample, &sample, &sample, &sample, nullptr};
  MAudioBuffer buffer;
  buffer.SetView(channels, 9, 1);
  EXPECT_EQ(buffer.GetChannelCount(), 8);
  buffer.SetView(channels, -1, -1);
  EXPECT_EQ(buffer.GetChannelCount(), 0);
  EXPECT_EQ(buffer.GetLength(), 0);
}

}  // namespace
