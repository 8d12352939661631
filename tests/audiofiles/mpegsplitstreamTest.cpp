#include "audiofiles/mpegsplitstream.h"

#include "audiofiles/MMPEGFile.h"
#include "audiofiles/binfileMStream.h"
#include "tests/audiofiles/MPEGFiles.h"
#include "tests/common/CountingFunctions.h"

namespace {

using mp3dec::binfileMStream;
using mp3dec::mpegsplitstream;

const std::string kStart("\0\0\1", 3);
const std::string kEnd = kStart + "\xB9";
const std::string kPack1 = kStart + "\xBA\x21" + std::string(7, '\1');  // MPEG-1
std::string Pack2(int stuffing) {
  return kStart + "\xBA\x44" + std::string(8, '\1') + static_cast<char>(0xF8 | stuffing) +
         std::string(static_cast<std::size_t>(stuffing), '\xFF');
}

std::string Packet(uint8_t id, const std::string& contents) {
  return kStart + static_cast<char>(id) + static_cast<char>(contents.size() >> 8) +
         static_cast<char>(contents.size()) + contents;
}

const std::string kSystem = Packet(0xBB, "system");
const std::string kNoStamp = "\x0F";

std::string ReadAll(const std::string& bytes) {
  MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
  binfileMStream file(stream);
  mpegsplitstream split(file);
  std::string all(100000, '\0');
  all.resize(static_cast<std::size_t>(split.RawRead(all.data(), 100000)));
  EXPECT_EQ(split.Ioctl(mp3dec::kHasEnded), 1);
  return all;
}

TEST(mpegsplitstream, GivesTheFirstAudioStreamOfBothKinds) {
  const std::string video = Packet(0xE0, kNoStamp + "video"), other = Packet(0xC1, kNoStamp + "other");
  EXPECT_EQ(ReadAll(kPack1 + kSystem + video + Packet(0xC0, kNoStamp + "one ") + other + kPack1 + video +
                    Packet(0xC0, kNoStamp + "two") + kEnd + Packet(0xC0, kNoStamp + "late")),
            "one two");
  const std::string head("\x80\0\0", 3);
  EXPECT_EQ(ReadAll(Pack2(0) + kSystem + Packet(0xDF, head + "one ") + Pack2(7) + Packet(0xC0, head + "x") +
                    Packet(0xBE, "padding") + Packet(0xDF, std::string("\x84\x80\5", 3) + "stamp" + "two")),
            "one two");
}

TEST(mpegsplitstream, PassesWhatStandsInAPacketsHead) {
  for (const std::string& head :
       {std::string("\x0F"), "\x21" + std::string(4, 's'), "\x31" + std::string(9, 's'),
        std::string("\x60\x20\x0F"), std::string(16, '\xFF') + "\x0F",
        std::string(3, '\xFF') + "\x40\1\x31" + std::string(9, 's')})
    EXPECT_EQ(ReadAll(kPack1 + Packet(0xC0, head + "audio") + Packet(0xC0, head)), "audio");
}

TEST(mpegsplitstream, EndsWithABrokenPacket) {
  const std::string good = kPack1 + Packet(0xC0, kNoStamp + "good");
  for (const std::string& bad :
       {std::string("garbage"), std::string("\0\0\1", 3), kStart + "\xB8", kStart + "\xC0", kStart + "\xC0\1",
        Packet(0xC0, ""), Packet(0xC0, "\xF0"), Packet(0xC0, std::string(17, '\xFF')), Packet(0xC0, "\x21ss"),
        Packet(0xC0, std::string("\x80\0\xFF", 3)), kStart + "\xBA",
        kStart + "\xBA\x99" + std::string(9, 'x'), kStart + "\xE0" + std::string("\xFF\xFF", 2)})
    EXPECT_EQ(ReadAll(good + bad + Packet(0xC0, kNoStamp + "!")), "good") << bad.size();
  EXPECT_EQ(ReadAll(good + Packet(0xC0, kNoStamp + "cut off").substr(0, 10)), "goodcut");
}

TEST(mpegsplitstream, GoesToAnyPlace) {
  std::string bytes = kPack1, contents;
  for (int i = 0; i < 40; ++i) {
    const std::string piece = Pattern(static_cast<std::size_t>(1 + i * 61));
    bytes += Packet(0xC0, kNoStamp + piece) + Packet(0xE0, kNoStamp + "video");
    contents += piece;
  }
  MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
  binfileMStream file(stream);
  mpegsplitstream split(file);
  EXPECT_EQ(split.Ioctl(mp3dec::kGetSize), -1);
  EXPECT_EQ(split.Ioctl(mp3dec::kCanSeek), 1);
  TestRandom random;
  const auto size = static_cast<int32_t>(contents.size());
  for (int i = 0; i < 300; ++i) {
    const int32_t position = random.Integer(-5, size + 5);
    const int32_t reached = std::clamp(position, 0, size);
    ASSERT_EQ(split.RawSeek(position), reached);
    ASSERT_EQ(split.Ioctl(mp3dec::kGetPosition), reached);
    std::string got(static_cast<std::size_t>(random.Below(20000)), '\0');
    got.resize(static_cast<std::size_t>(split.RawRead(got.data(), static_cast<int32_t>(got.size()))));
    ASSERT_EQ(got, contents.substr(static_cast<std::size_t>(reached), got.size()));
  }
}

TEST(mpegsplitstream, GivesNothingOnceItIsClosed) {
  for (const std::string& before : {std::string(), std::string("four")}) {
    const std::string bytes = before + kPack1 + Packet(0xC0, kNoStamp + "audio");
    MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
    binfileMStream file(stream);
    file.Skip(static_cast<int64_t>(before.size()));
    mpegsplitstream split(file);
    char piece[10];
    EXPECT_EQ(split.RawRead(piece, 3), 3);
    split.Close();
    EXPECT_EQ(split.RawRead(piece, 1), 0);
    EXPECT_EQ(split.Ioctl(mp3dec::kHasEnded), 1);
    split.RawSeek(0);
    EXPECT_EQ(split.RawRead(piece, 1), 0);
    EXPECT_EQ(split.Ioctl(mp3dec::kHasEnded), 1);
  }
}

TEST(mpegsplitstream, IsLoadedAsItsAudioWithoutALeak) {
  TestRandom random(3);
  std::string frames, system1 = kPack1 + kSystem, system2 = Pack2(3) + kSystem;
  for (int i = 0; i < 30; ++i) frames += LayerIFrame(random, 0xFF, 0, 12, 0, 416);
  for (std::size_t at = 0; at < frames.size(); at += 1001) {
    const std::string piece = frames.substr(at, 1001);
    system1 += Packet(0xC0, kNoStamp + piece) + Packet(0xE0, kNoStamp + "video");
    system2 += Packet(0xC3, std::string("\x80\0\2xx", 5) + piece) + Pack2(0);
  }
  MAudioBuffer plain;
  MMemoryStream stream(frames.data(), static_cast<int32_t>(frames.size()));
  LoadMPEG(plain, stream);
  ASSERT_EQ(plain.GetLength(), 30 * 384);
  for (const std::string& system : {system1 + kEnd, system2, ID3v2("tag") + system1}) {
    MAudioBuffer buffer;
    MMemoryStream whole(system.data(), static_cast<int32_t>(system.size()));
    LoadMPEG(buffer, whole);
    ExpectSame(buffer, plain);
    ShortPieces pieces(system);
    LoadMPEG(buffer, pieces);
    ExpectSame(buffer, plain);
  }
  bool isDone = false;
  for (int64_t n = 0; !isDone; ++n) {
    const CountingFunctions counting;
    {
      MMemoryStream whole(system1.data(), static_cast<int32_t>(system1.size()));
      MAudioBuffer buffer;
      CountingFunctions::FailAfter(n);
      try {
        LoadMPEG(buffer, whole);
        isDone = true;
      } catch (const MException& raised) {
        EXPECT_EQ(raised.message, "Out of memory.");
      }
      CountingFunctions::FailAfter(-1);
    }
    EXPECT_EQ(CountingFunctions::GetBalance(), 0) << n;
  }
}

TEST(mpegsplitstream, WithoutAudioIsRefused) {
  const std::string frames(3000, '\xFF');
  ExpectInvalid(LoadMPEG, kPack1 + kEnd + frames, "MPEG stream header error.", "byte 0");
}

}  // namespace
