#include "audiofiles/MWAVReader.h"

#include <cmath>
#include <limits>

#include "tests/audiofiles/SampleFiles.h"
#include "tests/common/CountingFunctions.h"

namespace {

void Load(MAudioBuffer& buffer, const std::string& bytes) {
  MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
  LoadWAV(buffer, stream);
}

std::vector<float> LoadMono(int bits, int tag, const std::string& data) {
  MAudioBuffer buffer;
  Load(buffer, Wav(Form(1, bits, tag), data));
  EXPECT_EQ(buffer.bitDepth, bits);
  return Samples(buffer);
}

// The rule for each depth, written out: one product in double, rounded once.
float Expected(int bits, int64_t sample) {
  const double value = static_cast<double>(sample);
  if (bits == 8) return static_cast<float>((value - 127) * 0.007874015718698502);
  if (bits == 16) return static_cast<float>(value * 3.0518509447574615e-05);
  if (bits == 24) return static_cast<float>(value * 1.1920930376163597e-07);
  return static_cast<float>(value * 4.656613150633165e-10);
}

int64_t Lowest(int bits) {
  return bits == 8 ? 0 : -(int64_t{1} << (bits - 1));
}

int64_t Highest(int bits) {
  return bits == 8 ? 255 : (int64_t{1} << (bits - 1)) - 1;
}

TEST(MWAVReader, ReadsTheExtremesOfEachDepth) {
  EXPECT_EQ(
      LoadMono(8, 1, std::string("\0\x7F\x80\xFF", 4)),
      (std::vector<float>{-1.0f, 0, 0.007874015718698502f, static_cast<float>(128 * 0.007874015718698502)}));
  EXPECT_EQ(LoadMono(16, 1, Little(0x8000, 2) + Little(0x7FFF, 2) + Little(0, 2) + Little(0xFFFF, 2)),
            (std::vector<float>{Expected(16, -32768), 1.0f, 0, -3.0518509447574615e-05f}));
  EXPECT_EQ(
      LoadMono(24, 1, Little(0x800000, 3) + Little(0x7FFFFF, 3) + Little(1, 3) + Little(0xFFFFFF, 3)),
      (std::vector<float>{Expected(24, -8388608), 1.0f, 1.1920930376163597e-07f, -1.1920930376163597e-07f}));
  EXPECT_EQ(LoadMono(32, 1, Little(0x80000000, 4) + Little(0x7FFFFFFF, 4) + Little(1, 4)),
            (std::vector<float>{Expected(32, -2147483648), Expected(32, 2147483647), Expected(32, 1)}));
  EXPECT_EQ(Expected(32, 2147483520), 1.0f);
}

TEST(MWAVReader, CopiesFloatsBitForBit) {
  const float values[] = {0, -0.0f, 1.5f, -1e30f, 1e-40f, std::numeric_limits<float>::infinity(), NAN};
  std::string data;
  for (const float value : values) data += FloatBytes(value);
  const std::vector<float> samples = LoadMono(32, 3, data);
  ASSERT_EQ(samples.size(), std::size(values));
  EXPECT_EQ(std::memcmp(samples.data(), values, sizeof values), 0);
}

TEST(MWAVReader, TakesTheFloatTagWithAnotherDepthForIntegers) {
  EXPECT_EQ(LoadMono(16, 3, Little(0x7FFF, 2)), std::vector<float>{1.0f});
  EXPECT_EQ(LoadMono(24, 3, Little(0x7FFFFF, 3)), std::vector<float>{1.0f});
}

TEST(MWAVReader, ReadsEveryDepthWithOneToEightChannels) {
  TestRandom random;
  for (const int bits : {8, 16, 24, 32})
    for (int channels = 1; channels <= 8; ++channels) {
      const int frames = random.Integer(1, 20000);
      std::vector<std::vector<float>> expected(static_cast<std::size_t>(channels));
      std::string data;
      for (int i = 0; i < frames * channels; ++i) {
        const auto range = static_cast<uint64_t>(Highest(bits) - Lowest(bits)) + 1;
        const int64_t sample = Lowest(bits) + static_cast<int64_t>(random.Bits() % range);
        data += Little(static_cast<uint64_t>(sample), bits / 8);
        expected[static_cast<std::size_t>(i % channels)].push_back(Expected(bits, sample));
      }
      MAudioBuffer buffer;
      Load(buffer, Wav(Form(channels, bits, 1, 48000), data));
      ASSERT_EQ(buffer.GetChannelCount(), channels);
      EXPECT_EQ(buffer.sampleRate, 48000);
      for (int c = 0; c < channels; ++c)
        EXPECT_EQ(Samples(buffer, c), expected[static_cast<std::size_t>(c)]) << bits << " " << channels;
    }
}

TEST(MWAVReader, DropsWhatIsNoWholeFrame) {
  MAudioBuffer buffer;
  Load(buffer, Wav(Form(2, 16), Little(0x7FFF, 2) + Little(0x8001, 2) + "abc"));
  EXPECT_EQ(Samples(buffer, 0), std::vector<float>{1.0f});
  EXPECT_EQ(Samples(buffer, 1), std::vector<float>{-1.0f});
  Load(buffer, Wav(Form(2, 16), "abc"));
  EXPECT_EQ(buffer.GetChannelCount(), 2);
  EXPECT_EQ(buffer.GetLength(), 0);
}

TEST(MWAVReader, GivesTheSameFromAnyStream) {
  TestRandom random;
  const std::string bytes = Wav(Form(3, 24, 1, 8000), Pattern(3 * 3 * 30000 + 5));
  MAudioBuffer whole, pieces, forward;
  Load(whole, bytes);
  ShortPieces shortPieces(bytes);
  LoadWAV(pieces, shortPieces);
  ExpectSame(whole, pieces);
  ForwardStream forwardStream(bytes);
  LoadWAV(forward, forwardStream);
  ExpectSame(whole, forward);
}

TEST(MWAVReader, BeginsWhereTheStreamStands) {
  const std::string bytes = "before" + Wav(Form(1, 8), "\xFE");
  MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
  stream.Seek(6, MSeekOrigin::kStart);
  MAudioBuffer buffer;
  LoadWAV(buffer, stream);
  EXPECT_EQ(Samples(buffer), std::vector<float>{1.0f});
}

TEST(MWAVReader, KeepsTheRateAsItStands) {
  for (const uint32_t rate : {0u, 1u, 44100u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    MAudioBuffer buffer;
    Load(buffer, Wav(Form(1, 8, 1, rate), "x"));
    EXPECT_EQ(buffer.sampleRate, static_cast<int32_t>(rate));
    EXPECT_EQ(buffer.GetLength(), 1);
  }
}

TEST(MWAVReader, PassesOtherChunksAndLongFormats) {
  const std::string data = Chunk("data", "\xFE\x7F");
  const std::vector<float> expected = {1.0f, 0};
  MAudioBuffer buffer;
  for (const std::size_t more : {0u, 2u, 24u}) {
    Load(buffer, Riff(Chunk("fmt ", Form(1, 8) + std::string(more, 'x')) + data));
    EXPECT_EQ(Samples(buffer), expected) << more;
  }
  Load(buffer, Riff(Chunk("LIST", "four") + Chunk("fmt ", Form(1, 8)) + Chunk("bext", "") + data +
                    Chunk("LIST", "end")));
  EXPECT_EQ(Samples(buffer), expected);
}

// Its contents are read all the same, and then the way back is made: they are the next chunk, whose length is
// what the sample rate was.
TEST(MWAVReader, GoesBackBehindAShortFormat) {
  const std::string form = Form(1, 8, 1, 8);
  const std::string data = Chunk("data", "\xFE");
  MAudioBuffer buffer;
  Load(buffer, Riff("fmt " + Little(0, 4) + form + data));
  EXPECT_EQ(Samples(buffer), std::vector<float>{1.0f});
}

TEST(MWAVReader, ReadsInPartsOfAnyLength) {
  const std::string bytes = Wav(Form(2, 16), Pattern(4 * 1000 + 3));
  MAudioBuffer whole;
  Load(whole, bytes);
  for (const bool pieces : {false, true})
    for (const int32_t length : {1, 7, 100, 999, 1000, 5000}) {
      MMemoryStream memory(bytes.data(), static_cast<int32_t>(bytes.size()));
      ShortPieces forward(bytes);
      MWAVReader reader;
      reader.Open(pieces ? static_cast<MStream&>(forward) : memory);
      EXPECT_EQ(reader.GetDataBytes(), 4003);
      std::vector<float> left, right;
      MAudioBuffer part;
      while (reader.GetBytesLeft() > 0) {
        const int32_t before = reader.GetBytesLeft();
        part.SetSize(2, length);
        EXPECT_EQ(reader.Read(part), before < length) << before;
        EXPECT_EQ(reader.GetBytesLeft(), std::max(before - 4 * length, 0));
        for (const float sample : Samples(part, 0)) left.push_back(sample);
        for (const float sample : Samples(part, 1)) right.push_back(sample);
      }
      EXPECT_EQ(left, Samples(whole, 0)) << length;
      EXPECT_EQ(right, Samples(whole, 1)) << length;
      part.SetSize(2, length);
      EXPECT_TRUE(reader.Read(part));
      EXPECT_EQ(part.GetChannelCount(), 0);
    }
}

TEST(MWAVReader, FlagOfAPartComparesBytesLeftWithSamples) {
  const std::string bytes = Wav(Form(2, 16), Pattern(4 * 100));
  const auto read = [&](int32_t length) {
    MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
    MWAVReader reader;
    reader.Open(stream);
    MAudioBuffer part;
    part.SetSize(2, length);
    const bool flag = reader.Read(part);
    EXPECT_EQ(part.GetLength(), std::min(length, 100));
    return flag;
  };
  EXPECT_FALSE(read(99));
  EXPECT_FALSE(read(100));  // all of them, and nothing is left
  EXPECT_FALSE(read(400));
  EXPECT_TRUE(read(401));
}

// 2^30 frames of four bytes are nothing in 32 bits.
TEST(MWAVReader, LengthOfAPartCountsIn64Bits) {
  for (const int32_t length : {1 << 30, 1 << 29, INT32_MAX}) {
    const std::string bytes = Wav(Form(2, 16), Pattern(8));
    MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
    MWAVReader reader;
    reader.Open(stream);
    MAudioBuffer part;
    part.SetView(nullptr, 0, length);
    EXPECT_TRUE(reader.Read(part));
    EXPECT_EQ(part.GetLength(), 2);
    EXPECT_EQ(reader.GetBytesLeft(), 0);
  }
}

TEST(MWAVReader, HasNothingToReadBeforeItIsOpened) {
  MWAVReader reader;
  MAudioBuffer buffer;
  buffer.SetSize(1, 5);
  EXPECT_TRUE(reader.Read(buffer));
  EXPECT_EQ(buffer.GetLength(), 0);
}

TEST(MWAVReader, RoundTripsOneMillionFramesWithinItsMemory) {
  const CountingFunctions counting;
  {
    const std::string bytes = Wav(Form(2, 16), Pattern(4000000));
    MAudioBuffer buffer;
    Load(buffer, bytes);
    EXPECT_EQ(buffer.GetLength(), 1000000);
    EXPECT_EQ(buffer.GetCapacity(), 1000000);
  }
  EXPECT_EQ(CountingFunctions::GetBalance(), 0);
}

}  // namespace
