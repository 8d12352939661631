#include "core/MMemoryStream.h"

#include <gtest/gtest.h>

#include "tests/common/Texts.h"
#include "tests/core/StreamDoubles.h"

namespace {

TEST(MMemoryStream, BeginsEmpty) {
  MMemoryStream stream;
  EXPECT_EQ(stream.GetSize(), 0);
  EXPECT_EQ(stream.GetPosition(), 0);
  EXPECT_EQ(stream.GetCapacity(), 0);
  EXPECT_EQ(stream.GetData(), nullptr);
  EXPECT_TRUE(stream.IsEnd());
  EXPECT_TRUE(stream.IsValid());
  EXPECT_EQ(Take(stream, 1), "");
  EXPECT_NO_THROW(stream.Flush());
}

TEST(MMemoryStream, WritesOverAndBehindWhatIsThere) {
  MMemoryStream stream;
  Put(stream, "abcdef");
  stream.Seek(4, MSeekOrigin::kStart);
  Put(stream, "XYZ");
  EXPECT_EQ(All(stream), "abcdXYZ");
  EXPECT_EQ(stream.GetPosition(), 7);
  stream.Seek(1, MSeekOrigin::kStart);
  Put(stream, "-");
  EXPECT_EQ(All(stream), "a-cdXYZ");
  EXPECT_EQ(stream.GetSize(), 7);
}

TEST(MMemoryStream, ReadIsLimitedToTheSize) {
  MMemoryStream stream;
  Put(stream, "abc");
  stream.Seek(1, MSeekOrigin::kStart);
  EXPECT_EQ(Take(stream, 100), "bc");
  EXPECT_EQ(stream.GetPosition(), 3);
  EXPECT_EQ(Take(stream, 1), "");
}

TEST(MMemoryStream, TransfersOfNothingDoNothing) {
  MMemoryStream stream;
  Put(stream, "abc");
  stream.Seek(-10, MSeekOrigin::kCurrent);
  char byte = 'x';
  EXPECT_NO_THROW(stream.Write(&byte, 0));
  EXPECT_NO_THROW(stream.Write(&byte, -3));
  EXPECT_EQ(stream.Read(&byte, -1), 0);
  EXPECT_EQ(stream.GetPosition(), -7);
  EXPECT_EQ(All(stream), "abc");
}

TEST(MMemoryStream, CapacityGrowsToTheExactNeedAndThenByDoubling) {
  MMemoryStream stream;
  Put(stream, Pattern(5));
  EXPECT_EQ(stream.GetCapacity(), 5);
  Put(stream, "x");
  EXPECT_EQ(stream.GetCapacity(), 10);
  Put(stream, Pattern(4));
  EXPECT_EQ(stream.GetCapacity(), 10);
  Put(stream, Pattern(31));
  EXPECT_EQ(stream.GetCapacity(), 80);
  EXPECT_EQ(All(stream), Pattern(5) + "x" + Pattern(4) + Pattern(31));
}

TEST(MMemoryStream, NothingCanBeReadBelowZeroAndThePositionStays) {
  MMemoryStream stream;
  Put(stream, "abc");
  stream.Seek(-5, MSeekOrigin::kCurrent);
  EXPECT_EQ(Take(stream, 10), "");
  EXPECT_EQ(Line(stream, 10), "2:");
  EXPECT_EQ(stream.GetCurrentData(), nullptr);
  EXPECT_FALSE(stream.IsEnd());
  EXPECT_EQ(stream.GetPosition(), -2);
  EXPECT_RAISES(Put(stream, "x"), "Index out of range.", 0);
  EXPECT_EQ(All(stream), "abc");
}

TEST(MMemoryStream, NothingCanBeReadBeyondTheSizeAndThePositionStays) {
  MMemoryStream stream;
  Put(stream, "abc");
  stream.Seek(2, MSeekOrigin::kEnd);
  EXPECT_EQ(Take(stream, 10), "");
  EXPECT_EQ(Line(stream, 10), "2:");
  EXPECT_EQ(stream.GetCurrentData(), nullptr);
  EXPECT_TRUE(stream.IsEnd());
  EXPECT_EQ(stream.GetPosition(), 5);
}

TEST(MMemoryStream, WriteBeyondTheSizeFillsTheGapWithZeros) {
  MMemoryStream stream;
  Put(stream, Pattern(100));
  stream.SetCapacity(3);  // what was behind must not come back
  stream.SetCapacity(100);
  stream.Seek(2, MSeekOrigin::kEnd);
  Put(stream, "x");
  EXPECT_EQ(All(stream), Pattern(3) + std::string("\0\0x", 3));
}

TEST(MMemoryStream, LinesKeepZeroBytesAndDropCarriageReturns) {
  MMemoryStream stream;
  Put(stream, std::string("a\0b\r\nc\n", 7));
  stream.Seek(0, MSeekOrigin::kStart);
  char text[8];
  EXPECT_EQ(stream.ReadLine(text, sizeof text), MLineStatus::kLine);
  EXPECT_EQ(std::string(text, 4), std::string("a\0b\0", 4));
  EXPECT_EQ(Line(stream, 8), "0:c");
  EXPECT_EQ(stream.GetPosition(), 7);
  EXPECT_EQ(Line(stream, 8), "2:");
}

TEST(MMemoryStream, LineThatFillsTheBufferGoesOnInTheNextCall) {
  MMemoryStream stream;
  Put(stream, "abc\nde");
  stream.Seek(0, MSeekOrigin::kStart);
  EXPECT_EQ(Line(stream, 1), "1:");
  EXPECT_EQ(stream.GetPosition(), 0);
  EXPECT_EQ(Line(stream, 4), "1:abc");
  EXPECT_EQ(stream.GetPosition(), 3);
  EXPECT_EQ(Line(stream, 4), "0:");
  EXPECT_EQ(Line(stream, 0), "1:");
  EXPECT_EQ(Line(stream, 3), "1:de");
  EXPECT_EQ(stream.GetPosition(), 6);
  EXPECT_EQ(Line(stream, 3), "2:");
}

TEST(MMemoryStream, LastLineWithoutALineFeedLeavesThePositionBehindTheSize) {
  MMemoryStream stream;
  Put(stream, "last");
  stream.Seek(0, MSeekOrigin::kStart);
  EXPECT_EQ(Line(stream, 80), "0:last");
  EXPECT_EQ(stream.GetPosition(), 5);
  EXPECT_TRUE(stream.IsEnd());
  EXPECT_EQ(Line(stream, 80), "2:");
}

TEST(MMemoryStream, CurrentDataIsTheByteAtThePosition) {
  MMemoryStream stream;
  EXPECT_EQ(stream.GetCurrentData(), nullptr);
  Put(stream, "abc");
  EXPECT_EQ(stream.GetCurrentData(), stream.GetData() + 3);
  stream.Seek(1, MSeekOrigin::kStart);
  EXPECT_EQ(stream.GetCurrentData(), stream.GetData() + 1);
  EXPECT_EQ(*stream.GetCurrentData(), 'b');
}

TEST(MMemoryStream, ClearGivesTheEmptyStream) {
  MMemoryStream stream;
  Put(stream, "abc");
  stream.Clear();
  EXPECT_EQ(stream.GetSize(), 0);
  EXPECT_EQ(stream.GetPosition(), 0);
  EXPECT_EQ(stream.GetCapacity(), 0);
  Put(stream, "de");
  EXPECT_EQ(All(stream), "de");
}

TEST(MMemoryStream, SmallerCapacityCutsSizeAndPosition) {
  MMemoryStream stream;
  Put(stream, "abcdef");
  stream.SetCapacity(20);
  EXPECT_EQ(stream.GetCapacity(), 20);
  EXPECT_EQ(stream.GetSize(), 6);
  EXPECT_EQ(stream.GetPosition(), 6);
  stream.SetCapacity(4);
  EXPECT_EQ(All(stream), "abcd");
  EXPECT_EQ(stream.GetPosition(), 4);
  stream.Seek(1, MSeekOrigin::kStart);
  stream.SetCapacity(3);
  EXPECT_EQ(stream.GetPosition(), 1);
  stream.SetCapacity(-1);
  EXPECT_EQ(stream.GetCapacity(), 0);
  EXPECT_EQ(stream.GetSize(), 0);
  EXPECT_EQ(stream.GetPosition(), 0);
}

TEST(MMemoryStream, TruncateIsNotImplemented) {
  MMemoryStream stream;
  EXPECT_RAISES(stream.Truncate(), "Service \"truncate stream\" is not implemented.", 1);
}

TEST(MMemoryStream, FirstBytesOfTheStreamItselfCanBeAppendedToIt) {
  MMemoryStream stream;
  Put(stream, Pattern(1000));
  stream.Write(stream.GetData(), 1000);
  EXPECT_EQ(All(stream), Pattern(1000) + Pattern(1000));
  MMemoryStream copy(stream);
  stream.Clear();
  const MMemoryStream other(copy);
  copy.Write(copy.GetData(), 2000);
  EXPECT_EQ(All(copy), Pattern(1000) + Pattern(1000) + Pattern(1000) + Pattern(1000));
}

}  // namespace
