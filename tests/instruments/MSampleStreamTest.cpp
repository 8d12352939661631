#include "instruments/MSampleStream.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/MAudioBuffer.h"
#include "tests/common/TestRandom.h"

namespace {

MEnvelopeData Curve(std::initializer_list<std::pair<double, double>> points) {
  MEnvelopeData curve;
  for (const auto& [x, y] : points) curve.Add(x, y);
  return curve;
}

void FillWithNoise(MAudioBuffer& buffer, int32_t channels, int32_t length) {
  TestRandom random(3);
  buffer.SetSize(channels, length);
  for (int32_t c = 0; c < channels; ++c)
    for (int32_t i = 0; i < length; ++i) buffer.GetChannel(c)[i] = static_cast<float>(random.Real(-1, 1));
}

// All of a note, in blocks; a sample that no block writes is no number.
std::vector<std::vector<float>> Play(MSampleStream& stream, const MAudioBuffer& recording, int32_t channels,
                                     int32_t samples, int32_t block) {
  std::vector<std::vector<float>> out(static_cast<std::size_t>(channels),
                                      std::vector<float>(static_cast<std::size_t>(samples), NAN));
  for (int32_t done = 0; done < samples; done += block) {
    std::vector<float*> at;
    for (std::vector<float>& channel : out) at.push_back(channel.data() + done);
    stream.Play(recording, at.data(), channels, 0, std::min(block, samples - done));
  }
  return out;
}

TEST(MSampleStream, SpeedIsTheRatioOfTheRates) {
  MSampleStream stream;
  stream.SetSpeed(44100, 2, 48000);
  EXPECT_DOUBLE_EQ(stream.speed, 88200.0 / 48000);
  stream.SetSpeed(48000, 1, 48000);
  EXPECT_EQ(stream.speed, 1);
  stream.SetSpeed(0, 1, -5);
  EXPECT_EQ(stream.speed, 1);
}

TEST(MSampleStream, CurveOfOnesIsNoEnvelope) {
  MSampleStream stream;
  stream.length = 100;
  stream.SetEnvelope(Curve({{0, 1}, {0.5, 1}, {1, 1}}));
  EXPECT_FALSE(stream.hasEnvelope);
  stream.SetEnvelope(Curve({{0, 1}, {1, 1 - 1e-15}}));
  EXPECT_TRUE(stream.hasEnvelope);
}

TEST(MSampleStream, CurveThatEndsEarlyCutsTheLength) {
  MSampleStream stream;
  stream.length = 101;
  stream.SetEnvelope(Curve({{0, 1}, {0.5, 0}, {1, 0}}));
  EXPECT_EQ(stream.length, 50);
}

TEST(MSampleStream, CopiesTheSamplesAtTheirOwnRate) {
  MAudioBuffer recording;
  FillWithNoise(recording, 2, 300);
  for (const int32_t block : {1, 63, 64, 300, 512}) {
    MSampleStream stream;
    stream.length = 300;
    stream.position = -10;
    const auto out = Play(stream, recording, 2, 512, block);
    for (int32_t c = 0; c < 2; ++c)
      for (int32_t i = 0; i < 512; ++i)
        ASSERT_EQ(out[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)],
                  i >= 10 && i < 310 ? recording.GetChannel(c)[i - 10] : 0);
    EXPECT_EQ(stream.position, 502);
  }
}

TEST(MSampleStream, OutputsTakeTheChannelsInTurn) {
  MAudioBuffer recording;
  FillWithNoise(recording, 3, 8);
  MSampleStream stream;
  stream.length = 8;
  const auto out = Play(stream, recording, 10, 8, 8);
  for (std::size_t c = 0; c < 10; ++c)
    for (std::size_t i = 0; i < 8; ++i)
      EXPECT_EQ(out[c][i], recording.GetChannel(static_cast<int32_t>(c) % 3)[i]);
  MSampleStream mono;
  mono.length = 8;
  EXPECT_EQ(Play(mono, recording, 1, 8, 8)[0][7], recording.GetChannel(0)[7]);
}

TEST(MSampleStream, RecordingWithoutChannelsIsSilent) {
  MSampleStream stream;
  stream.length = 4;
  EXPECT_EQ(Play(stream, MAudioBuffer(), 2, 4, 4)[1], std::vector<float>(4, 0.0f));
}

TEST(MSampleStream, EnvelopeIsReadAtThePlaceInTheRecording) {
  MAudioBuffer recording;
  recording.SetSize(1, 1000);
  std::fill_n(recording.GetChannel(0), 1000, 0.5f);
  for (const double speed : {0.5, 1.0, 2.0}) {
    MSampleStream stream;
    stream.length = 1000;
    stream.speed = speed;
    stream.volume = 2;
    stream.position = -20;
    stream.SetEnvelope(Curve({{0, 1}, {1, 0.5}}));
    const auto out = Play(stream, recording, 1, 1200, 77);
    for (int32_t i = 0; i < 1200; ++i) {
      const double place = -20 + i * speed;
      const float sample = out[0][static_cast<std::size_t>(i)];
      if (place < 0 || place >= 1000) {
        ASSERT_EQ(sample, 0);
      } else if (place > 1 && place < 998) {  // the cubic reads zeros beside the recording
        ASSERT_NEAR(sample, 1 - place / 2000, 1e-6);
      }
    }
  }
}

TEST(MSampleStream, WhatLiesBehindTheEndIsSilent) {
  MAudioBuffer recording;
  FillWithNoise(recording, 1, 1000);
  MSampleStream stream;
  stream.length = 100;
  stream.speed = 0.75;
  float block[256];
  float* out[] = {block};
  EXPECT_TRUE(stream.Play(recording, out, 1, 0, 256));
  for (int32_t i = 134; i < 256; ++i) ASSERT_EQ(block[i], 0);
  EXPECT_NE(block[133], 0);
  EXPECT_TRUE(stream.Play(recording, out, 1, 0, 256));
  EXPECT_EQ(block[0], 0);
}

TEST(MSampleStream, BlockThatEndsWithTheLastSampleReportsTheEnd) {
  MAudioBuffer recording;
  FillWithNoise(recording, 1, 64);
  MSampleStream stream;
  stream.length = 64;
  float block[64];
  float* out[] = {block};
  EXPECT_FALSE(stream.Play(recording, out, 1, 0, 63));
  EXPECT_TRUE(stream.Play(recording, out, 1, 0, 1));
}

}  // namespace
