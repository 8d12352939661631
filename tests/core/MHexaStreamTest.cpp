#include "core/MHexaStream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/common/Texts.h"
#include "tests/core/StreamDoubles.h"

namespace {

using testing::ElementsAre;

TEST(MHexaStream, WritesUpperCaseDigitsHighNibbleFirst) {
  BareStream target;
  MHexaStream stream(&target);
  Put(stream, std::string("\x00\x01\x9A\xBC\xDE\xF0\xFF", 7));
  EXPECT_EQ(target.written, "00019ABCDEF0FF");
}

TEST(MHexaStream, WritesChunksOf128BytesInOneWriteEach) {
  BareStream target;
  MHexaStream stream(&target);
  Put(stream, Pattern(300));
  EXPECT_THAT(target.writes, ElementsAre(256, 256, 88));
}

TEST(MHexaStream, WriteOfNothingDoesNotReachTheTarget) {
  BareStream target;
  MHexaStream stream(&target);
  stream.Write("a", 0);
  stream.Write("a", -1);
  EXPECT_TRUE(target.writes.empty());
}

TEST(MHexaStream, ReadsBackWhatItWrote) {
  for (const int32_t size : {0, 1, 127, 128, 129, 256, 1000}) {
    const std::string bytes = Pattern(static_cast<std::size_t>(size));
    MMemoryStream target;
    MHexaStream stream(&target);
    Put(stream, bytes);
    stream.Seek(0, MSeekOrigin::kStart);
    EXPECT_EQ(Take(stream, size), bytes) << size;
    EXPECT_TRUE(stream.IsEnd());
  }
}

TEST(MHexaStream, ReadAcceptsBothCases) {
  ForwardStream target("aBFf09");
  MHexaStream stream(&target);
  EXPECT_EQ(Take(stream, 10), "\xAB\xFF\x09");
}

TEST(MHexaStream, ReadAsksForTwiceTheCountInChunks) {
  ForwardStream target(std::string(2000, '0'));
  MHexaStream stream(&target);
  EXPECT_EQ(Take(stream, 300).size(), 300u);
  EXPECT_THAT(target.reads, ElementsAre(256, 256, 88));
}

TEST(MHexaStream, ReadDropsASingleDigitAtTheEndAndStopsThere) {
  ForwardStream target("4142434");
  MHexaStream stream(&target);
  EXPECT_EQ(Take(stream, 100), "ABC");
  EXPECT_THAT(target.reads, ElementsAre(200));
}

TEST(MHexaStream, ReadOfNothingGivesNothing) {
  ForwardStream target("4142");
  MHexaStream stream(&target);
  char byte = 'x';
  EXPECT_EQ(stream.Read(&byte, 0), 0);
  EXPECT_EQ(stream.Read(&byte, -1), 0);
  EXPECT_TRUE(target.reads.empty());
}

TEST(MHexaStream, OtherCharactersRaise) {
  for (const char* const text : {"4G", "G4", "4 ", "@1", "1`", "/0", ":0", "4\xC1"}) {
    ForwardStream target(text);
    MHexaStream stream(&target);
    EXPECT_RAISES(Take(stream, 1), "Could not read required data from stream.", 256);
  }
}

TEST(MHexaStream, PositionAndSizeAreHalfOfTheTargets) {
  MMemoryStream target;
  Put(target, "1234567");
  MHexaStream stream(&target);
  EXPECT_EQ(stream.GetSize(), 3);
  EXPECT_EQ(stream.GetPosition(), 3);
}

TEST(MHexaStream, SeekPassesTheOffsetOnUnchanged) {
  MMemoryStream target;
  Put(target, "123456789A");
  MHexaStream stream(&target);
  stream.Seek(4, MSeekOrigin::kStart);
  EXPECT_EQ(target.GetPosition(), 4);
  EXPECT_EQ(stream.GetPosition(), 2);
  stream.Seek(-2, MSeekOrigin::kEnd);
  EXPECT_EQ(Take(stream, 1), "\x9A");
  EXPECT_RAISES(stream.Seek(0, kBadOrigin), "Invalid seek origin.", 2);
}

TEST(MHexaStream, FlushForwardsAndTruncateIsNotImplemented) {
  BareStream target;
  MHexaStream stream(&target);
  EXPECT_TRUE(stream.IsValid());
  EXPECT_RAISES(stream.Flush(), "Service \"flush stream\" is not implemented.", 1);
  EXPECT_RAISES(stream.IsEnd(), "Service \"end of stream test\" is not implemented.", 1);
  MMemoryStream memory;
  MHexaStream overMemory(&memory);
  EXPECT_NO_THROW(overMemory.Flush());
  EXPECT_RAISES(overMemory.Truncate(), "Service \"truncate stream\" is not implemented.", 1);
}

TEST(MHexaStream, WithoutATargetItIsNotValidAndRaises) {
  MHexaStream stream(nullptr);
  char byte = 'x';
  EXPECT_FALSE(stream.IsValid());
  EXPECT_RAISES(stream.Write(&byte, 1), "File stream is not initialized.", 258);
  EXPECT_RAISES(stream.Read(&byte, 1), "File stream is not initialized.", 258);
  EXPECT_RAISES(stream.Seek(0, MSeekOrigin::kStart), "File stream is not initialized.", 258);
  EXPECT_RAISES(stream.GetPosition(), "File stream is not initialized.", 258);
  EXPECT_RAISES(stream.GetSize(), "File stream is not initialized.", 258);
  EXPECT_RAISES(stream.IsEnd(), "File stream is not initialized.", 258);
  EXPECT_RAISES(stream.Flush(), "File stream is not initialized.", 258);
}

}  // namespace
