#include "audiofiles/abinfile.h"
#include "audiofiles/binfileMStream.h"
#include "tests/audiofiles/SampleFiles.h"

namespace {

using namespace mp3dec;

std::string Read(binfile& file, int32_t count) {
  std::string got(static_cast<std::size_t>(count), '\0');
  got.resize(static_cast<std::size_t>(file.RawRead(got.data(), count)));
  return got;
}

std::string Peek(binfile& file, int32_t count) {
  std::string got(static_cast<std::size_t>(count), '\0');
  got.resize(static_cast<std::size_t>(file.RawPeek(got.data(), count)));
  return got;
}

TEST(binfile, ReadsNumbersWithTheHighestByteFirst) {
  MMemoryStream stream("\1\2\1\2\3\4\1\2\3\xFF\5", 11);
  binfileMStream file(stream);
  uint32_t value = 0;
  EXPECT_TRUE(file.Peek16(value));
  EXPECT_EQ(value, 0x0102u);
  EXPECT_TRUE(file.Read16(value));
  EXPECT_EQ(value, 0x0102u);
  EXPECT_TRUE(file.Read32(value));
  EXPECT_EQ(value, 0x01020304u);
  EXPECT_TRUE(file.Read28(value));
  EXPECT_EQ(value, 1u << 21 | 2u << 14 | 3u << 7 | 127u);
  EXPECT_FALSE(file.Peek16(value));
  EXPECT_FALSE(file.Skip(2));
  EXPECT_FALSE(file.Read16(value));
  EXPECT_FALSE(file.Read32(value));
  EXPECT_FALSE(file.Read28(value));
}

TEST(binfile, TransfersNothingForACountOfZeroOrLess) {
  MMemoryStream stream("abc", 3);
  binfileMStream file(stream);
  abinfile window(file);
  for (binfile* const each : {static_cast<binfile*>(&file), static_cast<binfile*>(&window)}) {
    EXPECT_EQ(each->RawRead(nullptr, 0), 0);
    EXPECT_EQ(each->RawRead(nullptr, -1), 0);
    EXPECT_EQ(each->RawPeek(nullptr, -1), 0);
    EXPECT_EQ(each->RawIoctl(1000, 0, 0), -1);
  }
}

// What a string does is what a file does, forward and, where it can, backward.
void CompareWithString(binfile& file, const std::string& bytes, bool canSeek, TestRandom& random) {
  const auto size = static_cast<int64_t>(bytes.size());
  int64_t position = 0;
  for (int i = 0; i < 300; ++i) {
    const int32_t count = random.OneIn(4) ? random.Below(40000) : random.Below(50);
    const auto rest = [&](int32_t most) {
      return bytes.substr(static_cast<std::size_t>(position), static_cast<std::size_t>(most));
    };
    if (random.OneIn(3)) {
      ASSERT_TRUE(Peek(file, count) == rest(std::min(count, binfile::kMostPeeked)));
    } else if (random.OneIn(3)) {
      const int64_t wanted = random.OneIn(2) ? random.Integer(-10, static_cast<int32_t>(size) + 10)
                                             : position + random.Integer(-300, 300);
      const int64_t reached = file.RawSeek(wanted);
      if (reached >= 0) {
        ASSERT_EQ(reached, std::clamp<int64_t>(wanted, 0, size));
        position = reached;
      } else {
        ASSERT_FALSE(canSeek);
        ASSERT_LT(wanted, position);
      }
    } else {
      const std::string got = Read(file, count);
      ASSERT_TRUE(got == rest(count));
      position += static_cast<int64_t>(got.size());
    }
    ASSERT_EQ(file.Ioctl(kGetPosition), position);
    ASSERT_EQ(file.Ioctl(kHasEnded), position == size);
  }
}

TEST(binfileMStream, IsTheRestOfItsStream) {
  TestRandom random;
  const std::string bytes = Pattern(100000);
  const std::string all = "before" + bytes;
  MMemoryStream memory(all.data(), static_cast<int32_t>(all.size()));
  memory.Seek(6, MSeekOrigin::kStart);
  binfileMStream file(memory);
  EXPECT_EQ(file.Ioctl(kCanSeek), 1);
  EXPECT_EQ(file.Ioctl(kGetSize), 100000);
  CompareWithString(file, bytes, true, random);
}

TEST(binfileMStream, GoesForwardInAStreamThatCannotSeek) {
  TestRandom random;
  const std::string bytes = Pattern(100000);
  for (const bool knowsSize : {true, false}) {
    ForwardStream sized(bytes);
    ShortPieces unsized(bytes);
    binfileMStream file(knowsSize ? static_cast<MStream&>(sized) : unsized);
    EXPECT_EQ(file.Ioctl(kCanSeek), 0);
    EXPECT_EQ(file.Ioctl(kGetSize), knowsSize ? 100000 : -1);
    CompareWithString(file, bytes, false, random);
  }
}

TEST(binfileMStream, EndsWhereItIsTold) {
  const std::string bytes = Pattern(50000);
  for (const int64_t end : {0, 100, 16384, 40000}) {
    MMemoryStream memory(bytes.data(), 50000);
    binfileMStream file(memory);
    Peek(file, 10);
    file.SetEnd(end);
    TestRandom random(1);
    EXPECT_EQ(file.Ioctl(kGetSize), end);
    CompareWithString(file, bytes.substr(0, static_cast<std::size_t>(end)), true, random);
    file.Close();
    EXPECT_EQ(Read(file, 1), "");
  }
}

TEST(binfileMStream, GivesNothingBehindAnEndThatLiesInFrontOfItsPlace) {
  const std::string bytes = Pattern(50000);
  for (const bool canSeek : {true, false}) {
    MMemoryStream memory(bytes.data(), 50000);
    ForwardStream forward(bytes);
    binfileMStream file(canSeek ? static_cast<MStream&>(memory) : forward);
    Read(file, 200);
    file.SetEnd(100);
    file.RawSeek(90);
    EXPECT_EQ(Read(file, 100), canSeek ? bytes.substr(90, 10) : "");
    EXPECT_EQ(file.Ioctl(kHasEnded), 1);
    file.Close();
    file.RawSeek(0);
    EXPECT_EQ(Read(file, 1), "");
    EXPECT_EQ(file.Ioctl(kHasEnded), 1);
  }
}

TEST(abinfile, IsACopyOfWhatComesNext) {
  TestRandom random;
  const std::string bytes = Pattern(20000);
  MMemoryStream memory(bytes.data(), 20000);
  binfileMStream file(memory);
  Read(file, 1000);
  abinfile window(file);
  EXPECT_EQ(file.Ioctl(kGetPosition), 1000);
  EXPECT_EQ(window.Ioctl(kGetSize), binfile::kMostPeeked);
  EXPECT_EQ(window.Ioctl(kCanSeek), 1);
  CompareWithString(window, bytes.substr(1000, binfile::kMostPeeked), true, random);
  window.Close();
  EXPECT_EQ(Read(window, 1), "");
}

}  // namespace
