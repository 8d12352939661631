#include "core/MStream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "core/MFileStream.h"
#include "tests/common/Texts.h"
#include "tests/core/StreamDoubles.h"

namespace {

using testing::ElementsAre;

constexpr int64_t kLowest = std::numeric_limits<int64_t>::min();
constexpr int64_t kHighest = std::numeric_limits<int64_t>::max();

TEST(MStream, DefaultOperationsNameTheServiceThatIsNotImplemented) {
  BareStream stream;
  char byte = 0;
  EXPECT_RAISES(stream.Read(&byte, 1), "Service \"read from stream\" is not implemented.", 1);
  EXPECT_RAISES(stream.GetPosition(), "Service \"get stream position\" is not implemented.", 1);
  EXPECT_RAISES(stream.Flush(), "Service \"flush stream\" is not implemented.", 1);
  EXPECT_RAISES(stream.IsEnd(), "Service \"end of stream test\" is not implemented.", 1);
  EXPECT_RAISES(stream.Truncate(), "Service \"truncate stream\" is not implemented.", 1);
  EXPECT_RAISES(stream.GetSize(), "Service \"stream size detection\" is not implemented.", 1);
  EXPECT_TRUE(stream.IsValid());
}

// The place in the table of virtual functions that a pointer to a member holds, in the Itanium ABI.
template <typename Member>
std::ptrdiff_t Slot(Member member) {
  std::ptrdiff_t words[2];
  static_assert(sizeof words == sizeof member);
  std::memcpy(words, &member, sizeof words);
  return (words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(MStream, VirtualOperationsStandInTheirOrderBehindTheTwoEntriesOfTheDestructor) {
  EXPECT_THAT((std::vector{Slot(&MStream::Write), Slot(&MStream::WriteFiller), Slot(&MStream::Read),
                           Slot(&MStream::ReadLine), Slot(&MStream::WriteText), Slot(&MStream::WriteTextLine),
                           Slot(&MStream::Seek), Slot(&MStream::GetPosition), Slot(&MStream::Flush),
                           Slot(&MStream::IsEnd), Slot(&MStream::Truncate), Slot(&MStream::GetSize),
                           Slot(&MStream::IsValid), Slot(&MFileStream::Close)}),
              ElementsAre(2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
  EXPECT_EQ(Slot(&MMemoryStream::GetCurrentData), 15);
}

TEST(MStream, FillerIsZerosInChunksOfAtMost1024) {
  BareStream stream;
  stream.WriteFiller(2500);
  EXPECT_THAT(stream.writes, ElementsAre(1024, 1024, 452));
  EXPECT_EQ(stream.written, std::string(2500, '\0'));
}

TEST(MStream, FillerBelowOneByteWritesNothing) {
  BareStream stream;
  stream.WriteFiller(0);
  stream.WriteFiller(-5);
  EXPECT_TRUE(stream.writes.empty());
}

TEST(MStream, LinesEndAtALineFeedAndDropCarriageReturns) {
  ForwardStream stream("one\r\n\rt\rwo\n\nlast");
  EXPECT_EQ(Line(stream, 80), "0:one");
  EXPECT_EQ(Line(stream, 80), "0:two");
  EXPECT_EQ(Line(stream, 80), "0:");
  EXPECT_EQ(Line(stream, 80), "0:last");
  EXPECT_EQ(Line(stream, 80), "2:");
}

TEST(MStream, LinesEndAtAZeroByte) {
  ForwardStream stream(std::string("a\0b\n", 4));
  EXPECT_EQ(Line(stream, 80), "0:a");
  EXPECT_EQ(Line(stream, 80), "0:b");
  EXPECT_EQ(Line(stream, 80), "2:");
}

TEST(MStream, LineThatFillsTheBufferGoesOnInTheNextCall) {
  ForwardStream stream("abcde\nxyz\n");
  EXPECT_EQ(Line(stream, 4), "1:abc");
  EXPECT_EQ(Line(stream, 4), "0:de");
  EXPECT_EQ(Line(stream, 4), "1:xyz");
  EXPECT_EQ(Line(stream, 4), "0:");
  EXPECT_EQ(Line(stream, 4), "2:");
}

TEST(MStream, CarriageReturnsAloneAreNoLine) {
  ForwardStream stream("\r\r");
  EXPECT_EQ(Line(stream, 80), "2:");
}

TEST(MStream, LineBufferOfOneByteHoldsTheTerminatorOnly) {
  ForwardStream stream("a\n");
  EXPECT_EQ(Line(stream, 1), "1:");
  EXPECT_EQ(Line(stream, 0), "1:");
  EXPECT_TRUE(stream.reads.empty());
}

TEST(MStream, LineIsTerminatedWhenTheReadRaises) {
  BareStream stream;
  char text[] = "old";
  EXPECT_THROW(stream.ReadLine(text, sizeof text), MException);
  EXPECT_STREQ(text, "");
}

TEST(MStream, TextIsCutToAsManyBytesAsItHasCharacters) {
  BareStream stream;
  stream.WriteText("plain");
  stream.WriteText(MString(u"Ü"));
  stream.WriteText(MString(u"aÜb"));
  stream.WriteText(MString());
  EXPECT_EQ(stream.written,
            "plain\xC3"
            "a\xC3\x9C");
}

TEST(MStream, TextOfLoneSurrogatesWritesNoByteBeyondItsEncoding) {
  constexpr MChar kLow[] = {0xDC00, 0xDC01, 0xDC02, 'x', 0};
  BareStream stream;
  stream.WriteText(MString(kLow));
  EXPECT_EQ(stream.written, "x");
}

TEST(MStream, TextLineEndsWithOneLineFeed) {
  BareStream stream;
  stream.WriteTextLine("a");
  stream.WriteTextLine(MString());
  EXPECT_EQ(stream.written, "a\n\n");
}

TEST(MStream, SeekReadsForwardInChunksOfAtMost1024) {
  ForwardStream stream(Pattern(5000));
  stream.Seek(2100, MSeekOrigin::kStart);
  EXPECT_THAT(stream.reads, ElementsAre(1024, 1024, 52));
  stream.Seek(100, MSeekOrigin::kCurrent);
  EXPECT_EQ(stream.GetPosition(), 2200);
  stream.Seek(-800, MSeekOrigin::kEnd);
  EXPECT_EQ(stream.GetPosition(), 4200);
  stream.Seek(4200, MSeekOrigin::kStart);
  EXPECT_EQ(Take(stream, 800), Pattern(5000).substr(4200));
}

TEST(MStream, SeekPastTheEndStopsThereSilently) {
  ForwardStream stream(Pattern(1500));
  stream.Seek(kHighest, MSeekOrigin::kEnd);
  EXPECT_EQ(stream.GetPosition(), 1500);
  stream.Seek(kHighest, MSeekOrigin::kCurrent);
  stream.Seek(kHighest, MSeekOrigin::kStart);
  EXPECT_EQ(stream.GetPosition(), 1500);
}

TEST(MStream, SeekBackwardIsNotImplemented) {
  ForwardStream stream(Pattern(100));
  stream.Seek(50, MSeekOrigin::kStart);
  const char* const text = "Service \"backward seek in a stream\" is not implemented.";
  EXPECT_RAISES(stream.Seek(49, MSeekOrigin::kStart), text, 1);
  EXPECT_RAISES(stream.Seek(-1, MSeekOrigin::kCurrent), text, 1);
  EXPECT_RAISES(stream.Seek(-51, MSeekOrigin::kEnd), text, 1);
  EXPECT_RAISES(stream.Seek(kLowest, MSeekOrigin::kStart), text, 1);
  EXPECT_RAISES(stream.Seek(kLowest, MSeekOrigin::kEnd), text, 1);
  EXPECT_EQ(stream.GetPosition(), 50);
}

TEST(MStream, SeekRefusesOtherOrigins) {
  ForwardStream stream(Pattern(100));
  EXPECT_RAISES(stream.Seek(0, kBadOrigin), "Invalid seek origin.", 2);
}

TEST(MStream, RequiredReadRaisesWhenDataIsMissing) {
  ForwardStream stream("abcd");
  char bytes[4] = {};
  stream.ReadRequired(bytes, 3);
  EXPECT_EQ(std::string(bytes, 3), "abc");
  EXPECT_RAISES(stream.ReadRequired(bytes, 2), "Could not read required data from stream.", 256);
  EXPECT_NO_THROW(stream.ReadRequired(bytes, 0));
}

}  // namespace
