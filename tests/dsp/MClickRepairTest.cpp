#include "dsp/MClickRepair.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/common/AudioBlock.h"
#include "tests/common/CountingFunctions.h"

namespace {

// A repair that has seen a block ending with p1, p0 in every channel.
void Feed(MClickRepair& repair, int32_t channels, float p1, float p0) {
  AudioBlock block(channels, 2);
  for (int32_t c = 0; c < channels; ++c) block[c][0] = p1, block[c][1] = p0;
  repair.Run(block.From(), channels, 2);
}

TEST(MClickRepair, DrawsAStepBackOverHalfTheBlock) {
  for (const int32_t samples : {32, 33, 64, 128, 255, 256, 1000}) {
    const int32_t length = std::clamp(samples / 2, 16, 128);
    for (int32_t channels = 1; channels <= 8; ++channels) {
      MClickRepair repair;
      Feed(repair, channels, 0.5f, 0.75f);
      repair.Request();
      AudioBlock block = AudioBlock::Constant(channels, samples, -0.25);
      repair.Run(block.From(), channels, samples);
      const double d = 2 * 0.75 - 0.5 + 0.25;
      for (int32_t c = 0; c < channels; ++c)
        for (int32_t i = 0; i < samples; ++i)
          ASSERT_EQ(block[c][i], float(i < length ? -0.25 + d * (1 - double(i) / length) : -0.25)) << i;
      EXPECT_TRUE(block.GuardsHold());
    }
  }
}

TEST(MClickRepair, ServesEightChannelsAndLeavesFurtherOnes) {
  MClickRepair repair;
  repair.Request();
  AudioBlock block = AudioBlock::Constant(9, 40, 1);
  repair.Run(block.From(), 9, 40);
  EXPECT_EQ(block[7][0], 0);
  EXPECT_EQ(block[8][0], 1);
}

TEST(MClickRepair, WithoutARequestABlockStays) {
  MClickRepair repair;
  AudioBlock block = AudioBlock::Constant(2, 64, 1), before = block;
  repair.Run(block.From(), 2, 64);
  EXPECT_TRUE(block == before);
}

TEST(MClickRepair, ARequestServesOnce) {
  MClickRepair repair;
  repair.Request();
  AudioBlock first = AudioBlock::Constant(1, 64, 1), second = AudioBlock::Constant(1, 64, 0.5),
             before = second;
  repair.Run(first.From(), 1, 64);
  repair.Run(second.From(), 1, 64);
  EXPECT_EQ(first[0][0], 0);
  EXPECT_TRUE(second == before);
}

TEST(MClickRepair, AShortBlockDropsTheRequestAndAnEmptyOneKeepsIt) {
  for (const int32_t samples : {1, 2, 31}) {
    MClickRepair repair;
    repair.Request();
    AudioBlock block = AudioBlock::Constant(1, samples, 1), before = block;
    repair.Run(block.From(), 1, samples);
    EXPECT_TRUE(block == before);
    AudioBlock next = AudioBlock::Constant(1, 64, 0), zeros = next;
    repair.Run(next.From(), 1, 64);
    EXPECT_TRUE(next == zeros);
  }
  for (const int32_t samples : {0, -1, INT32_MIN}) {
    MClickRepair repair;
    repair.Request();
    repair.Run(nullptr, 1, samples);
    AudioBlock next = AudioBlock::Constant(1, 64, 1);
    repair.Run(next.From(), 1, 64);
    EXPECT_EQ(next[0][0], 0);
  }
}

TEST(MClickRepair, RemembersWhatItPutOutAndCountsSingleSamples) {
  MClickRepair repair;
  Feed(repair, 1, 9, 1);
  float sample = 2;
  float* channel = &sample;
  repair.Run(&channel, 1, 1);  // p1 = 1, p0 = 2
  repair.Request();
  AudioBlock block = AudioBlock::Constant(1, 32, 0);
  repair.Run(block.From(), 1, 32);
  EXPECT_EQ(block[0][0], 3);
  EXPECT_EQ(block[0][8], 1.5f);
  EXPECT_EQ(block[0][16], 0);
}

TEST(MClickRepair, WhatIsNotFiniteMakesNoRepair) {
  for (const float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
    MClickRepair repair;
    Feed(repair, 1, 0, bad);
    repair.Request();
    AudioBlock block = AudioBlock::Constant(1, 64, 1), before = block;
    repair.Run(block.From(), 1, 64);
    EXPECT_TRUE(block == before);
  }
}

TEST(MClickRepair, NothingAllocates) {
  AudioBlock block = AudioBlock::Constant(2, 64, 1);
  float** const channels = block.From();
  const CountingFunctions counting;
  MClickRepair repair;
  repair.Request();
  repair.Run(channels, 2, 64);
  EXPECT_EQ(CountingFunctions::GetCalls(), 0);
}

}  // namespace
