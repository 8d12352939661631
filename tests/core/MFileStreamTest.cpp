#include "core/MFileStream.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/common/TemporaryFolder.h"
#include "tests/common/Texts.h"
#include "tests/core/StreamDoubles.h"

namespace {

constexpr uint32_t kRead = MFileStream::kRead;
constexpr uint32_t kWrite = MFileStream::kWrite;
constexpr uint32_t kCreate = MFileStream::kCreate;

class MFileStreamTest : public testing::Test {
 protected:
  void Open(const std::string& content, uint32_t flags) {
    stream.Open(Buffer(folder.WriteFile("file", content).c_str()), flags);
  }
  const TemporaryFolder folder;
  MFileStream stream;
};

TEST_F(MFileStreamTest, ReadAtTheEndIsShortWithoutAnError) {
  Open("abc", kRead);
  EXPECT_EQ(Take(stream, 2), "ab");
  EXPECT_EQ(Take(stream, 10), "c");
  EXPECT_EQ(Take(stream, 10), "");
  EXPECT_TRUE(stream.IsEnd());
}

TEST_F(MFileStreamTest, ReadGoesOnWhenTheFileHasGrown) {
  Open("abc", kRead);
  EXPECT_EQ(Take(stream, 10), "abc");
  std::ofstream(folder.Path("file"), std::ios::app) << "def";
  EXPECT_EQ(Take(stream, 10), "def");
}

TEST_F(MFileStreamTest, TransfersOfNothingDoNothing) {
  Open("abc", kWrite);
  char byte = 'x';
  stream.Write(&byte, 0);
  stream.Write(&byte, -1);
  EXPECT_EQ(stream.Read(&byte, 0), 0);
  EXPECT_EQ(stream.Read(&byte, -1), 0);
  EXPECT_EQ(stream.GetPosition(), 0);
  stream.Close();
  EXPECT_EQ(folder.ReadFile("file"), "abc");
}

TEST_F(MFileStreamTest, ReadAndWriteAlternateWithoutSeeking) {
  Open("abcdefghij", kWrite);
  EXPECT_EQ(Take(stream, 2), "ab");
  Put(stream, "CD");
  EXPECT_EQ(Take(stream, 2), "ef");
  Put(stream, "GHI");
  EXPECT_EQ(Take(stream, 10), "j");
  Put(stream, "KL");
  EXPECT_EQ(stream.GetPosition(), 12);
  stream.Close();
  EXPECT_EQ(folder.ReadFile("file"), "abCDefGHIjKL");
}

TEST_F(MFileStreamTest, SizeAndPositionCountWhatIsStillInTheBuffer) {
  Open("", kWrite | kCreate);
  Put(stream, "abc");
  EXPECT_EQ(stream.GetPosition(), 3);
  EXPECT_EQ(stream.GetSize(), 3);
  EXPECT_EQ(stream.GetPosition(), 3);
  Put(stream, "de");
  EXPECT_EQ(stream.GetSize(), 5);
  stream.Seek(1, MSeekOrigin::kStart);
  EXPECT_EQ(stream.GetSize(), 5);
  EXPECT_EQ(Take(stream, 2), "bc");
}

TEST_F(MFileStreamTest, FlushPutsTheBytesIntoTheFile) {
  Open("", kWrite | kCreate);
  Put(stream, "abc");
  EXPECT_EQ(folder.ReadFile("file"), "");
  stream.Flush();
  EXPECT_EQ(folder.ReadFile("file"), "abc");
}

TEST_F(MFileStreamTest, EndIsTheSizeThatTheFileHadWhenItWasOpened) {
  Open("abc", kWrite);
  EXPECT_FALSE(stream.IsEnd());
  stream.Seek(0, MSeekOrigin::kEnd);
  Put(stream, "defg");
  stream.Seek(3, MSeekOrigin::kStart);
  EXPECT_TRUE(stream.IsEnd());
  EXPECT_EQ(Take(stream, 10), "defg");
  stream.Seek(2, MSeekOrigin::kStart);
  EXPECT_FALSE(stream.IsEnd());
  stream.Truncate();
  EXPECT_FALSE(stream.IsEnd());
}

TEST_F(MFileStreamTest, TruncateCutsAtThePosition) {
  Open(Pattern(10000), kWrite);
  EXPECT_EQ(Take(stream, 10), Pattern(10));
  stream.Truncate();
  EXPECT_EQ(stream.GetSize(), 10);
  EXPECT_EQ(Take(stream, 10), "") << "bytes that were read ahead";
  Put(stream, "x");
  stream.Truncate();
  stream.Close();
  EXPECT_EQ(folder.ReadFile("file"), Pattern(10) + "x");
}

TEST_F(MFileStreamTest, TruncateBehindTheEndFillsWithZeros) {
  Open("abc", kWrite);
  stream.Seek(2, MSeekOrigin::kEnd);
  stream.Truncate();
  EXPECT_EQ(folder.ReadFile("file"), std::string("abc\0\0", 5));
}

TEST_F(MFileStreamTest, SeekGoesByAllThreeOrigins) {
  Open(Pattern(100), kRead);
  stream.Seek(40, MSeekOrigin::kStart);
  stream.Seek(-5, MSeekOrigin::kCurrent);
  EXPECT_EQ(stream.GetPosition(), 35);
  EXPECT_EQ(Take(stream, 3), Pattern(100).substr(35, 3));
  stream.Seek(-1, MSeekOrigin::kEnd);
  EXPECT_EQ(Take(stream, 3), Pattern(100).substr(99));
  stream.Seek(200, MSeekOrigin::kStart);
  EXPECT_EQ(Take(stream, 3), "");
  EXPECT_EQ(stream.GetPosition(), 200);
}

TEST_F(MFileStreamTest, PositionsAbove2GiBWork) {
  constexpr int64_t kFar = int64_t{3} << 30;
  Open("", kWrite | kCreate);
  stream.Seek(kFar, MSeekOrigin::kStart);
  Put(stream, "far");
  EXPECT_EQ(stream.GetPosition(), kFar + 3);
  EXPECT_EQ(stream.GetSize(), kFar + 3);
  stream.Open(MString(), kRead);
  stream.Seek(-3, MSeekOrigin::kEnd);
  EXPECT_EQ(stream.GetPosition(), kFar);
  EXPECT_EQ(Take(stream, 10), "far");
  EXPECT_TRUE(stream.IsEnd());
  EXPECT_FALSE((stream.Seek(-4, MSeekOrigin::kCurrent), stream.IsEnd()));
}

TEST_F(MFileStreamTest, LineEndsAtAZeroByte) {
  Open(std::string("a\0b\r\nlast", 9), kRead);
  EXPECT_EQ(Line(stream, 80), "0:a");
  EXPECT_EQ(Line(stream, 80), "0:b");
  EXPECT_EQ(Line(stream, 5), "1:last");
  EXPECT_EQ(Line(stream, 5), "2:");
}

TEST_F(MFileStreamTest, LastLineWithoutALineFeedIsALine) {
  Open("one\nlast", kRead);
  EXPECT_EQ(Line(stream, 80), "0:one");
  EXPECT_EQ(Line(stream, 80), "0:last");
  EXPECT_EQ(Line(stream, 80), "2:");
}

TEST_F(MFileStreamTest, TextIsWrittenByTheDefault) {
  Open("", kWrite | kCreate);
  stream.WriteTextLine("abc");
  stream.WriteText(MString(u"Ü"));
  stream.WriteFiller(2);
  stream.Close();
  EXPECT_EQ(folder.ReadFile("file"), std::string("abc\n\xC3\0\0", 7));
}

TEST_F(MFileStreamTest, DestructionWritesAndClosesAndRaisesNothing) {
  {
    MFileStream other(Buffer(folder.Path("other").c_str()), kWrite | kCreate);
    Put(other, "abc");
  }
  EXPECT_EQ(folder.ReadFile("other"), "abc");
  EXPECT_TRUE(std::is_nothrow_destructible_v<MFileStream>);
}

TEST_F(MFileStreamTest, ClosedStreamCanBeClosedAgain) {
  Open("abc", kRead);
  EXPECT_TRUE(stream.IsValid());
  stream.Close();
  EXPECT_FALSE(stream.IsValid());
  EXPECT_NO_THROW(stream.Close());
  EXPECT_EQ(Utf8(stream.GetPath()), folder.Path("file"));
}

}  // namespace
