#include "dsp/MAudioQueue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <vector>

#include "tests/common/CountingFunctions.h"
#include "tests/common/TestRandom.h"
#include "tests/common/Texts.h"

namespace {

std::vector<float> Waiting(const MAudioQueue& queue, int32_t channel) {
  const float* const samples = queue.GetChannel(channel);
  return std::vector<float>(samples, samples + queue.GetLength());
}

void Append(MAudioQueue& queue, const std::vector<float>& samples) {
  const float* const channels[] = {samples.data()};
  queue.Append(channels, static_cast<int32_t>(samples.size()));
}

TEST(MAudioQueue, SamplesComeOutInTheOrderInWhichTheyWentIn) {
  MAudioQueue queue;
  queue.Prepare(1, 48000, 4);
  Append(queue, {1, 2, 3});
  queue.Drop(1);
  Append(queue, {4, 5});
  EXPECT_EQ(Waiting(queue, 0), (std::vector<float>{2, 3, 4, 5}));
  float taken[3];
  float* const to[] = {taken};
  queue.Read(to, 3);
  EXPECT_EQ(std::vector<float>(taken, taken + 3), (std::vector<float>{2, 3, 4}));
  EXPECT_EQ(Waiting(queue, 0), (std::vector<float>{5}));
  EXPECT_EQ(queue.GetSampleRate(), 48000);
}

TEST(MAudioQueue, WhatIsMissingReadsAsZero) {
  MAudioQueue queue;
  queue.Prepare(1, 48000, 4);
  Append(queue, {1, 2});
  float taken[] = {7, 7, 7, 7};
  float* const to[] = {taken};
  queue.Read(to, 3);
  EXPECT_EQ(std::vector<float>(taken, taken + 4), (std::vector<float>{1, 2, 0, 7}));
}

TEST(MAudioQueue, RandomUseIsThatOfAPlainList) {
  TestRandom random;
  MAudioQueue queue;
  queue.Prepare(2, 44100, 100);
  std::deque<float> model[2];
  for (int32_t turn = 0; turn < 3000; ++turn) {
    const int32_t count = random.Below(150);
    std::vector<float> left(static_cast<std::size_t>(count)), right(left);
    if (random.OneIn(2)) {
      for (std::size_t i = 0; i < left.size(); ++i) {
        model[0].push_back(left[i] = static_cast<float>(random.Real(-1, 1)));
        model[1].push_back(right[i] = random.OneIn(2) ? 0.0f : 1.0f);
      }
      const float* const from[] = {left.data(), right.data()};
      queue.Append(from, count);
    } else {
      float* const to[] = {left.data(), right.data()};
      queue.Read(to, count);
      for (std::size_t i = 0; i < left.size(); ++i) {
        for (int32_t c = 0; c < 2; ++c) {
          ASSERT_EQ(to[c][i], model[c].empty() ? 0 : model[c].front());
          if (!model[c].empty()) model[c].pop_front();
        }
      }
    }
    ASSERT_EQ(queue.GetLength(), static_cast<int32_t>(model[0].size()));
  }
}

TEST(MAudioQueue, NullChannelsAreZerosWhenAppendedAndLeftOutWhenRead) {
  MAudioQueue queue;
  queue.Prepare(2, 44100, 8);
  const float samples[] = {1, 2};
  const float* const from[] = {nullptr, samples};
  queue.Append(from, 2);
  queue.Append(nullptr, 1);
  EXPECT_EQ(Waiting(queue, 0), (std::vector<float>{0, 0, 0}));
  EXPECT_EQ(Waiting(queue, 1), (std::vector<float>{1, 2, 0}));
  float taken[3];
  float* const to[] = {nullptr, taken};
  queue.Read(to, 3);
  EXPECT_EQ(taken[1], 2);
  EXPECT_EQ(queue.GetLength(), 0);
}

TEST(MAudioQueue, WithinItsCapacityItNeedsNoMemory) {
  MAudioQueue queue;
  queue.Prepare(1, 44100, 1000);
  const std::vector<float> block(300);
  float* const nowhere[] = {nullptr};
  const CountingFunctions table;
  for (int32_t turn = 0; turn < 100; ++turn) {
    for (int32_t i = 0; i < 3; ++i) Append(queue, block);
    queue.Read(nowhere, 890);
    queue.Drop(10);
  }
  queue.Prepare(1, 48000, 1000);
  queue.Prepare(1, 48000, 10);
  queue.Clear();
  EXPECT_EQ(table.GetCalls(), 0);
}

TEST(MAudioQueue, BeyondItsCapacityItGrowsAndWithoutMemoryStaysAsItWas) {
  const CountingFunctions table;
  MAudioQueue queue;
  queue.Prepare(1, 44100, 2);
  Append(queue, {1, 2, 3, 4});
  queue.Drop(1);
  table.FailAfter(0);
  EXPECT_RAISES(Append(queue, std::vector<float>(50)), "Out of memory.", 0);
  EXPECT_EQ(Waiting(queue, 0), (std::vector<float>{2, 3, 4}));
  Append(queue, {5, 6, 7});
  EXPECT_EQ(Waiting(queue, 0), (std::vector<float>{2, 3, 4, 5, 6, 7}));
  EXPECT_RAISES(queue.Append(nullptr, INT32_MAX), "Out of memory.", 0);
  EXPECT_EQ(queue.GetLength(), 6);
}

TEST(MAudioQueue, HostileNumbersAreLimited) {
  MAudioQueue queue;
  queue.Append(nullptr, 5);
  EXPECT_EQ(queue.GetChannel(0), nullptr);
  queue.Prepare(-3, 44100, INT32_MIN);
  EXPECT_EQ(queue.GetChannelCount(), 0);
  queue.Prepare(9, 44100, 1);
  EXPECT_EQ(queue.GetChannelCount(), 8);
  queue.Append(nullptr, 3);
  for (const int32_t count : {0, -1, INT32_MIN}) {
    queue.Append(nullptr, count);
    queue.Drop(count);
  }
  EXPECT_EQ(queue.GetLength(), 3);
  EXPECT_EQ(queue.GetChannel(-1), nullptr);
  EXPECT_EQ(queue.GetChannel(8), nullptr);
  queue.Drop(INT32_MAX);
  EXPECT_EQ(queue.GetLength(), 0);
}

TEST(MAudioQueue, OnlyWhatWaitsCountsAsLoud) {
  MAudioQueue queue;
  queue.Prepare(2, 44100, 8);
  const float samples[] = {0.5f, -0.25f, std::nanf("")};
  const float* const from[] = {nullptr, samples};
  queue.Append(from, 3);
  EXPECT_TRUE(queue.IsAllBelow(0.5f));
  EXPECT_FALSE(queue.IsAllBelow(0.4f));
  queue.Drop(1);
  EXPECT_TRUE(queue.IsAllBelow(0.25f));
  EXPECT_FALSE(queue.IsAllBelow(0.2f));
  queue.Clear();
  EXPECT_TRUE(queue.IsAllBelow(0));
}

}  // namespace
