#include "core/MStreamTools.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

#include "core/MSizeStream.h"
#include "tests/common/Texts.h"
#include "tests/core/StreamDoubles.h"

namespace {

using testing::ElementsAre;

std::string HexOf(const std::string& bytes) {
  std::string text;
  for (const char c : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned>(static_cast<uint8_t>(c)));
    text += digits;
  }
  return text;
}

TEST(MCopyStream, CopiesWhatLiesBehindThePositionWhateverTheLength) {
  for (const std::size_t size : {0, 1, 4095, 4096, 4097, 8192, 20000}) {
    ForwardStream source("xy" + Pattern(size));
    source.Seek(2, MSeekOrigin::kStart);
    MMemoryStream target;
    MCopyStream(source, target);
    EXPECT_EQ(All(target), Pattern(size)) << size;
  }
}

TEST(MCopyStream, MovesPiecesOf4096AndStopsAtTheFirstShortOne) {
  ForwardStream source(Pattern(8192));
  BareStream target;
  MCopyStream(source, target);
  EXPECT_THAT(source.reads, ElementsAre(4096, 4096, 4096));
  EXPECT_EQ(target.written, Pattern(8192));
}

// Gives less than asked for before it is at its end.
class HaltingStream : public BareStream {
 public:
  int32_t Read(void* bytes, int32_t count) override {
    const int32_t found = ++reads == 1 ? 100 : count;
    std::memset(bytes, 'x', static_cast<std::size_t>(found));
    return found;
  }
  int reads = 0;
};

TEST(MCopyStream, AsksNoMoreAfterAShortRead) {
  HaltingStream source;
  BareStream target;
  MCopyStream(source, target);
  EXPECT_EQ(source.reads, 1);
  EXPECT_EQ(target.written, std::string(100, 'x'));
}

TEST(MCopyStream, PassesOnTheFailureOfTheTarget) {
  ForwardStream source(Pattern(100));
  MMemoryStream memory;
  MSizeStream target(&memory, 10, false, false);
  EXPECT_RAISES(MCopyStream(source, target),
                "The stream cannot be written, because its size is out of range.", 256);
  EXPECT_EQ(All(memory), Pattern(10));
}

TEST(MHexadecimalText, HasTwoUpperCaseDigitsForEachByte) {
  for (const std::size_t size : {0, 1, 127, 128, 129, 256, 3000}) {
    ForwardStream stream(Pattern(size));
    EXPECT_EQ(Utf8(MHexadecimalText(stream, false)), HexOf(Pattern(size))) << size;
    EXPECT_EQ(stream.reads.front(), 128);
  }
}

TEST(MHexadecimalText, BeginsAtThePositionUnlessItRewinds) {
  MMemoryStream stream;
  Put(stream, "\x01\xAB\x7F");
  stream.Seek(1, MSeekOrigin::kStart);
  EXPECT_EQ(MHexadecimalText(stream, false), "AB7F");
  EXPECT_EQ(MHexadecimalText(stream, false), "");
  EXPECT_EQ(MHexadecimalText(stream, true), "01AB7F");
}

}  // namespace
