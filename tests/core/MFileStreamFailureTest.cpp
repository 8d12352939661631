#include <gtest/gtest.h>
#include <sys/stat.h>

#include <limits>

#include "core/MFileStream.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/Texts.h"
#include "tests/core/StreamDoubles.h"

namespace {

const char* const kDiskFull = "Error writing to file \"/dev/full\". Probably disk full.";
const char* const kSeekFailed = "Could not perform file seek.";

// A device on which every write fails for want of room.
class MFileStreamDiskFull : public testing::Test {
 protected:
  MFileStream stream{"/dev/full", MFileStream::kWrite};
};

TEST_F(MFileStreamDiskFull, WriteThatLeavesTheBufferRaises) {
  EXPECT_RAISES(Put(stream, Pattern(1 << 20)), kDiskFull, 256);
}

TEST_F(MFileStreamDiskFull, BufferedWriteRaisesInFlush) {
  Put(stream, "abc");
  EXPECT_RAISES(stream.Flush(), kDiskFull, 256);
}

TEST_F(MFileStreamDiskFull, BufferedWriteRaisesInCloseWhichClosesAllTheSame) {
  Put(stream, "abc");
  EXPECT_RAISES(stream.Close(), kDiskFull, 256);
  EXPECT_FALSE(stream.IsValid());
  EXPECT_NO_THROW(stream.Close());
}

TEST_F(MFileStreamDiskFull, BufferedWriteRaisesInWhateverMovesTheFile) {
  const auto expectWriteError = [this](auto use) {
    Put(stream, "abc");
    EXPECT_RAISES(use(), kDiskFull, 256);
  };
  expectWriteError([this] { stream.Seek(0, MSeekOrigin::kStart); });
  expectWriteError([this] { stream.GetSize(); });
  expectWriteError([this] { stream.Truncate(); });
  expectWriteError([this] { Take(stream, 1); });
}

TEST_F(MFileStreamDiskFull, BufferedWriteRaisesInOpenOfAnotherFile) {
  Put(stream, "abc");
  EXPECT_RAISES(stream.Open("/dev/null", MFileStream::kWrite), kDiskFull, 256);
  EXPECT_FALSE(stream.IsValid());
  EXPECT_EQ(stream.GetPath(), "/dev/full");
}

TEST_F(MFileStreamDiskFull, DestructionStaysSilent) {
  EXPECT_NO_THROW({
    MFileStream other("/dev/full", MFileStream::kWrite);
    Put(other, "abc");
  });
}

// The C library forgets what it could not write, so a lost error would never come back.
TEST_F(MFileStreamDiskFull, NoSizeOfWriteLosesTheError) {
  for (std::size_t size = 1; size < 20000; size += size / 7 + 1) {
    bool raised = false;
    try {
      stream.Open(MString(), MFileStream::kWrite);
      Put(stream, Pattern(size));
      Put(stream, Pattern(size));
      stream.Close();
    } catch (const MException&) {
      raised = true;
    }
    EXPECT_TRUE(raised) << size;
  }
}

TEST(MFileStreamFailure, WriteToAFileOpenedForReadingRaises) {
  const TemporaryFolder folder;
  const std::string path = folder.WriteFile("file", "abcdef");
  const std::string text = "Error writing to file \"" + path + "\". Probably disk full.";
  MFileStream stream(Buffer(path.c_str()), MFileStream::kRead);
  EXPECT_EQ(Take(stream, 2), "ab");
  EXPECT_RAISES(Put(stream, "x"), text, 256);
  EXPECT_EQ(Take(stream, 10), "cdef");
  EXPECT_RAISES(stream.Truncate(), text, 256);
  stream.Close();
  EXPECT_EQ(folder.ReadFile("file"), "abcdef");
}

TEST(MFileStreamFailure, ReadErrorRaises) {
  MFileStream stream("/proc/self/mem", MFileStream::kRead);  // nothing is mapped at address 0
  EXPECT_RAISES(Take(stream, 10), "Error reading from file \"/proc/self/mem\".", 256);
}

TEST(MFileStreamFailure, SeekBeforeTheStartRaisesAndStays) {
  const TemporaryFolder folder;
  MFileStream stream(Buffer(folder.WriteFile("file", "abcdef").c_str()), MFileStream::kRead);
  EXPECT_EQ(Take(stream, 2), "ab");
  EXPECT_RAISES(stream.Seek(-1, MSeekOrigin::kStart), kSeekFailed, 256);
  EXPECT_RAISES(stream.Seek(-7, MSeekOrigin::kEnd), kSeekFailed, 256);
  EXPECT_RAISES(stream.Seek(std::numeric_limits<int64_t>::min(), MSeekOrigin::kCurrent), kSeekFailed, 256);
  EXPECT_RAISES(stream.Seek(std::numeric_limits<int64_t>::max(), MSeekOrigin::kEnd), kSeekFailed, 256);
  EXPECT_EQ(Take(stream, 2), "cd");
}

TEST(MFileStreamFailure, SeekRefusesOtherOrigins) {
  const TemporaryFolder folder;
  MFileStream stream(Buffer(folder.WriteFile("file", "abcdef").c_str()), MFileStream::kRead);
  EXPECT_RAISES(stream.Seek(0, kBadOrigin), "Invalid seek origin.", 2);
  EXPECT_RAISES(stream.Seek(0, static_cast<MSeekOrigin>(-1)), "Invalid seek origin.", 2);
}

TEST(MFileStreamFailure, PipeCanBeWrittenButNotSought) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("pipe");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  MFileStream stream(Buffer(path.c_str()), MFileStream::kWrite);
  Put(stream, "abc");
  EXPECT_NO_THROW(stream.Flush());
  EXPECT_RAISES(stream.Seek(0, MSeekOrigin::kStart), kSeekFailed, 256);
  EXPECT_RAISES(stream.GetPosition(), kSeekFailed, 256);
  EXPECT_RAISES(stream.GetSize(), kSeekFailed, 256);
  EXPECT_RAISES(stream.IsEnd(), kSeekFailed, 256);
}

void ExpectClosed(MFileStream& stream) {
  const char* const text = "File stream is not initialized.";
  char bytes[8];
  EXPECT_FALSE(stream.IsValid());
  EXPECT_RAISES(stream.Write(bytes, 0), text, 258);
  EXPECT_RAISES(stream.WriteFiller(1), text, 258);
  EXPECT_RAISES(stream.Read(bytes, 0), text, 258);
  EXPECT_RAISES(stream.ReadLine(bytes, sizeof bytes), text, 258);
  EXPECT_RAISES(stream.WriteText("a"), text, 258);
  EXPECT_RAISES(stream.WriteTextLine("a"), text, 258);
  EXPECT_RAISES(stream.Seek(0, MSeekOrigin::kStart), text, 258);
  EXPECT_RAISES(stream.Seek(0, kBadOrigin), text, 258);
  EXPECT_RAISES(stream.GetPosition(), text, 258);
  EXPECT_RAISES(stream.Flush(), text, 258);
  EXPECT_RAISES(stream.IsEnd(), text, 258);
  EXPECT_RAISES(stream.Truncate(), text, 258);
  EXPECT_RAISES(stream.GetSize(), text, 258);
}

TEST(MFileStreamFailure, ServicesOfAClosedStreamRaise) {
  MFileStream stream;
  ExpectClosed(stream);
  stream.Open("/dev/null", MFileStream::kRead);
  EXPECT_NO_THROW(stream.GetPosition());
  stream.Close();
  ExpectClosed(stream);
}

}  // namespace
