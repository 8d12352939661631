#include "dsp/MDelayLine.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/common/CountingFunctions.h"

namespace {

// A line of one channel that holds 1, 2, 3, ..., and whose position is `position`.
void Fill(MDelayLine& line, int32_t length, int32_t position, int32_t capacity = 100) {
  line.Set(1, 1000, length, capacity);
  for (int32_t i = 0; i < length; ++i) line.GetChannel(0)[i] = static_cast<float>(i + 1);
  line.Advance(position);
}

std::vector<float> GetSamples(MDelayLine& line) {
  return std::vector<float>(line.GetChannel(0), line.GetChannel(0) + line.GetLength());
}

TEST(MDelayLine, LengthIsTruncatedAtLeastOneAndAtMostEightMillion) {
  EXPECT_EQ(MDelayLine::GetLength(44100, 0), 1);
  EXPECT_EQ(MDelayLine::GetLength(44100, -1), 1);
  EXPECT_EQ(MDelayLine::GetLength(44100, 2.999 / 44100), 2);
  EXPECT_EQ(MDelayLine::GetLength(44100, 0.5), 22050);
  EXPECT_EQ(MDelayLine::GetLength(1000000, 60), 1 << 23);
}

TEST(MDelayLine, IsEmptyAtItsStartWhenItIsSet) {
  MDelayLine line;
  Fill(line, 4, 3);
  line.Set(2, 1000, 4, 10);
  EXPECT_EQ(line.GetPosition(), 0);
  EXPECT_EQ(line.GetChannelCount(), 2);
  EXPECT_TRUE(line.IsAllBelow(0));
}

TEST(MDelayLine, PositionRunsInACircle) {
  MDelayLine line;
  Fill(line, 4, 1);
  EXPECT_EQ(line.GetRun(), 3);
  line.Advance(3);
  EXPECT_EQ(line.GetPosition(), 0);
  EXPECT_EQ(line.GetRun(), 4);
}

TEST(MDelayLine, AnotherLengthBeginsWithTheNextSampleAndFadesToItsEnd) {
  MDelayLine line;
  Fill(line, 4, 1);
  line.Fit(6);
  EXPECT_EQ(GetSamples(line), (std::vector<float>{2, 3 * 0.75f, 4 * 0.5f, 1 * 0.25f, 0, 0}));
  EXPECT_EQ(line.GetPosition(), 1);
  Fill(line, 6, 5);
  line.Fit(3);
  EXPECT_EQ(GetSamples(line),
            (std::vector<float>{6, 1 * static_cast<float>(2.0 / 3), 2 * static_cast<float>(1.0 / 3)}));
  EXPECT_EQ(line.GetPosition(), 0);
}

TEST(MDelayLine, TheSameLengthChangesNothing) {
  MDelayLine line;
  Fill(line, 4, 2);
  line.Fit(4);
  EXPECT_EQ(GetSamples(line), (std::vector<float>{1, 2, 3, 4}));
  EXPECT_EQ(line.GetPosition(), 2);
}

TEST(MDelayLine, StaysAsItIsWithoutSamplesOrWithoutMemory) {
  MDelayLine none;
  none.Fit(5);
  EXPECT_EQ(none.GetLength(), 0);
  const CountingFunctions table;
  MDelayLine line;
  Fill(line, 4, 2, 10);
  table.FailAfter(0);
  line.Fit(11);
  EXPECT_EQ(GetSamples(line), (std::vector<float>{1, 2, 3, 4}));
  line.Fit(10);  // within its capacity
  EXPECT_EQ(line.GetLength(), 10);
}

}  // namespace
