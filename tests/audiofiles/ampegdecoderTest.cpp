#include "audiofiles/ampegdecoder.h"

#include "audiofiles/binfileMStream.h"
#include "tests/audiofiles/MPEGFiles.h"
#include "tests/common/CountingFunctions.h"

namespace {

using mp3dec::ampegdecoder;
using mp3dec::binfileMStream;

// A decoder with what it reads from.
struct Decoding {
  explicit Decoding(const std::string& contents)
      : bytes(contents),
        stream(bytes.data(), static_cast<int32_t>(bytes.size())),
        file(stream),
        decoder(file),
        frameBytes(decoder.GetFrameBytes()),
        size(static_cast<int32_t>(decoder.Ioctl(mp3dec::kGetSize))) {}

  std::string Read(int32_t count) {
    std::string got(static_cast<std::size_t>(count), '\0');
    got.resize(static_cast<std::size_t>(decoder.RawRead(got.data(), count)));
    return got;
  }

  std::string bytes;
  MMemoryStream stream;
  binfileMStream file;
  ampegdecoder decoder;
  int32_t frameBytes;
  int32_t size;
};

std::string LayerI(int frames) {
  TestRandom random(5);
  std::string bytes;
  for (int i = 0; i < frames; ++i) bytes += LayerIFrame(random, 0xFF, 0, 12, 0, 416);
  return bytes;
}

// All kinds whose frames depend on others: low bit rates reach back for their bytes, changing ones too.
class ampegdecoderEncodings : public testing::TestWithParam<Encoding> {};

TEST_P(ampegdecoderEncodings, GiveTheSameBehindASeekAsFromTheStart) {
  REQUIRE_ENCODER(GetParam().encoder);
  Decoding d(Encode(GetParam(), 1.5));
  const std::string all = d.Read(d.size + 1);
  ASSERT_EQ(all.size(), static_cast<std::size_t>(d.size));
  const auto expectAt = [&](int32_t position, int32_t count) {
    const int32_t reached = std::clamp(position, 0, d.size);
    ASSERT_EQ(d.decoder.RawSeek(position), reached);
    ASSERT_EQ(d.decoder.Ioctl(mp3dec::kGetPosition), reached);
    ASSERT_TRUE(d.Read(count) ==
                all.substr(static_cast<std::size_t>(reached), static_cast<std::size_t>(count)))
        << position << " " << count;
  };
  // The start, a place inside of a frame, its borders, the end, and places outside.
  const int32_t frame = d.size / 2 / d.frameBytes * d.frameBytes;
  for (const int32_t position : {0, frame + 5, frame, frame + d.frameBytes, d.size - 1, 0, d.size, frame + 7,
                                 frame + 3, -1, d.size + 1, d.size - d.frameBytes})
    for (const int32_t count : {1, 1000, d.frameBytes, 3 * d.frameBytes})
      ASSERT_NO_FATAL_FAILURE(expectAt(position, count));
  TestRandom random;
  for (int i = 0; i < 150; ++i) {
    const int32_t start = random.Below(d.size / d.frameBytes + 1) * d.frameBytes;
    const int32_t position = start + (random.OneIn(2) ? 0 : random.Below(d.frameBytes));
    ASSERT_NO_FATAL_FAILURE(expectAt(position, random.Below(3 * d.frameBytes)));
  }
}

constexpr Encoding kEncodings[] = {
    {"lame", "--silent -b 128", 44100, 2},     {"lame", "--silent -V 2", 44100, 2},
    {"lame", "--silent -b 32 -m j", 32000, 2}, {"lame", "--silent -V 9", 22050, 2},
    {"lame", "--silent -b 8 -m m", 8000, 1},   {"lame", "--silent -b 8 -m m", 24000, 1},
    {"twolame", "-b 192", 44100, 2},           {"twolame", "-b 8 -m m", 16000, 1},
};
INSTANTIATE_TEST_SUITE_P(All, ampegdecoderEncodings, testing::ValuesIn(kEncodings));

TEST(ampegdecoder, GivesTheSameBehindASeekInLayerI) {
  Decoding d(LayerI(50));
  const std::string all = d.Read(d.size);
  for (int32_t position = 0; position <= d.size; position += 777) {
    const int32_t back = d.size - position;
    ASSERT_EQ(d.decoder.RawSeek(back), back);
    ASSERT_TRUE(d.Read(d.size) == all.substr(static_cast<std::size_t>(back))) << back;
  }
}

TEST(ampegdecoder, ReadsInPiecesOfAnySize) {
  const std::string bytes = LayerI(20);
  Decoding whole(bytes);
  ASSERT_EQ(whole.size, 20 * 384 * 4);
  const std::string all = whole.Read(whole.size);
  for (const int32_t piece : {1, 1000, whole.frameBytes - 1, whole.frameBytes, whole.frameBytes + 1, 5000}) {
    Decoding d(bytes);
    std::string got;
    for (std::string next; !(next = d.Read(piece)).empty();) got += next;
    EXPECT_TRUE(got == all) << piece;
    EXPECT_EQ(d.decoder.Ioctl(mp3dec::kHasEnded), 1);
    EXPECT_EQ(d.decoder.Ioctl(mp3dec::kGetPosition), d.size);
  }
}

TEST(ampegdecoder, TakesNoMemoryForAFrame) {
  const CountingFunctions counting;
  Decoding d(LayerI(20));
  const int64_t calls = CountingFunctions::GetCalls();
  char pcm[5000];
  while (d.decoder.RawRead(pcm, sizeof pcm) > 0) {
  }
  d.decoder.RawSeek(0);
  EXPECT_EQ(d.decoder.RawRead(pcm, sizeof pcm), 5000);
  EXPECT_EQ(CountingFunctions::GetCalls(), calls);
}

TEST(ampegdecoder, CountsItsFrames) {
  Decoding d(LayerI(20) + "tag");
  EXPECT_EQ(d.decoder.GetFrameCount(), 20);
  EXPECT_EQ(d.decoder.GetFrameNumber(), 0);
  d.Read(1);
  EXPECT_EQ(d.decoder.GetFrameNumber(), 1);
  d.Read(d.frameBytes - 1);
  EXPECT_EQ(d.decoder.GetFrameNumber(), 1);
  d.Read(d.frameBytes);
  EXPECT_EQ(d.decoder.GetFrameNumber(), 2);
}

TEST(ampegdecoder, LimitsASeekToItsFrames) {
  Decoding d(LayerI(9));
  EXPECT_EQ(d.decoder.RawSeek(-1), 0);
  EXPECT_EQ(d.decoder.RawSeek(int64_t{1} << 40), d.size);
  EXPECT_EQ(d.Read(1), "");
  EXPECT_EQ(d.decoder.RawSeek(d.size - 1), d.size - 1);
  EXPECT_EQ(d.Read(10).size(), 1u);
}

TEST(ampegdecoder, CanBePeekedUpToTheEndOfAFrame) {
  Decoding d(LayerI(3));
  const std::string all = d.Read(d.size);
  d.decoder.RawSeek(d.frameBytes - 4);
  char peeked[100];
  EXPECT_EQ(d.decoder.RawPeek(peeked, 100), 4);
  EXPECT_EQ(d.Read(2), std::string(peeked, 2));
  EXPECT_EQ(d.decoder.RawPeek(peeked, 100), 2);
  EXPECT_EQ(d.decoder.RawPeek(peeked, 0), 0);
}

TEST(ampegdecoder, GivesNothingOnceItIsClosed) {
  Decoding d(LayerI(3));
  d.Read(d.frameBytes + 4);
  d.decoder.Close();
  char byte;
  EXPECT_EQ(d.decoder.RawPeek(&byte, 1), 0);
  EXPECT_EQ(d.Read(1), "");
  for (const int32_t position : {0, 4, d.frameBytes, d.frameBytes + 8, d.size}) {
    d.decoder.RawSeek(position);
    EXPECT_EQ(d.decoder.RawPeek(&byte, 1), 0) << position;
    EXPECT_EQ(d.Read(1), "") << position;
    EXPECT_EQ(d.decoder.Ioctl(mp3dec::kHasEnded), 1) << position;
  }
}

TEST(ampegdecoder, EstimatesItsLengthFromTheBitRate) {
  Decoding d(LayerI(20));
  EXPECT_EQ(d.decoder.GetBitRate(), 384000);
  EXPECT_EQ(d.decoder.GetEstimatedLength(), int64_t{20} * 416 * 8 * 44100 / 384000);
}

// Frames of layer III of 128, 64, 32 ... kbit/s with nothing in them.
std::string Silence(const std::vector<int>& bitRateIndices) {
  std::string bytes;
  for (const int index : bitRateIndices) {
    const int rates[] = {0, 32, 40, 48, 56, 64, 80, 96, 112, 128};
    std::string frame(static_cast<std::size_t>(144000 * rates[index] / 44100), '\0');
    frame.replace(0, 4, std::string("\xFF\xFB") + static_cast<char>(index << 4) + '\0');
    bytes += frame;
  }
  return bytes;
}

TEST(ampegdecoder, AveragesTheBitRateOfUpToEightFramesOfLayerIII) {
  EXPECT_EQ(Decoding(Silence({9, 1})).decoder.GetBitRate(), 80000);
  EXPECT_EQ(Decoding(Silence({9, 1, 5, 5, 5, 5, 5, 5, 9, 9, 9, 9})).decoder.GetBitRate(), 68000);
  EXPECT_EQ(Decoding(Silence({9, 1}) + LayerI(3)).decoder.GetBitRate(), 80000);
  ForwardStream forward(Silence({9, 1}));
  binfileMStream file(forward);
  const ampegdecoder decoder(file);
  EXPECT_EQ(decoder.GetBitRate(), 128000);
  EXPECT_EQ(decoder.GetFrameCount(), -1);
}

TEST(ampegdecoder, DoesNotAverageTheBitRateOfLayersIAndII) {
  TestRandom random(5);
  const std::string layerI =
      LayerIFrame(random, 0xFF, 0, 12, 0, 416) + LayerIFrame(random, 0xFF, 0, 8, 0, 276);
  const Decoding first(layerI);
  EXPECT_EQ(first.decoder.GetFrameCount(), 2);
  EXPECT_EQ(first.decoder.GetBitRate(), 384000);
  const std::string layerII = std::string("\xFF\xFD\xA0\0", 4) + std::string(622, '\0') +
                              std::string("\xFF\xFD\x80\0", 4) + std::string(413, '\0');
  const Decoding second(layerII);
  EXPECT_EQ(second.decoder.GetFrameCount(), 2);
  EXPECT_EQ(second.decoder.GetBitRate(), 192000);
  EXPECT_EQ(second.decoder.GetEstimatedLength(), int64_t{626 + 417} * 8 * 44100 / 192000);
}

TEST(ampegdecoder, OverASourceThatOnlyGoesForwardCannotSeek) {
  const std::string bytes = LayerI(3);
  ForwardStream forward(bytes);
  binfileMStream file(forward);
  ampegdecoder decoder(file);
  EXPECT_EQ(decoder.RawSeek(0), -1);
  EXPECT_EQ(decoder.Ioctl(mp3dec::kCanSeek), 0);
  EXPECT_EQ(decoder.Ioctl(mp3dec::kGetSize), -1);
  std::string got(10000, '\0');
  EXPECT_EQ(decoder.RawRead(got.data(), 10000), 3 * 384 * 4);
}

TEST(ampegdecoder, RefusesWhatIsNoFrame) {
  MMemoryStream stream("\xFF\xFB\xF0\xC0", 4);
  binfileMStream file(stream);
  EXPECT_RAISES(ampegdecoder{file}, "Invalid file contents. Error initializing MPEG decoder.", 256);
}

}  // namespace
