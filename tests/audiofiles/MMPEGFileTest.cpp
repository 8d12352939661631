#include "audiofiles/MMPEGFile.h"

#include "tests/audiofiles/MPEGFiles.h"
#include "tests/audiofiles/MadDecoder.h"
#include "tests/common/CountingFunctions.h"

namespace {

MAudioBuffer& Load(MAudioBuffer& buffer, const std::string& bytes) {
  MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
  LoadMPEG(buffer, stream);
  return buffer;
}

// The other decoder gives the same number of samples, within rounding: in the mean one step of 16 bits at
// most, and no sample by more than a few.
void ExpectAsMad(const std::string& bytes) {
  const MadSound expected = DecodeWithMad(bytes);
  ASSERT_GT(expected.frames, 0);
  MAudioBuffer buffer;
  Load(buffer, bytes);
  EXPECT_EQ(buffer.sampleRate, expected.rate);
  EXPECT_EQ(buffer.bitDepth, 16);
  ASSERT_EQ(buffer.GetChannelCount(), static_cast<int32_t>(expected.channels.size()));
  for (int32_t c = 0; c < buffer.GetChannelCount(); ++c) {
    const std::vector<double>& wanted = expected.channels[static_cast<std::size_t>(c)];
    const std::vector<float> samples = Samples(buffer, c);
    ASSERT_EQ(samples.size(), wanted.size());
    double squares = 0, loudness = 0, most = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
      const double error = samples[i] * 32767.0 / 32768 - wanted[i];
      squares += error * error;
      loudness += wanted[i] * wanted[i];
      most = std::max(most, std::abs(error));
    }
    const auto count = static_cast<double>(samples.size());
    EXPECT_GT(std::sqrt(loudness / count), 0.001) << "silence would prove nothing";
    EXPECT_LT(std::sqrt(squares / count), 1.0 / 32768) << "channel " << c;
    EXPECT_LT(most, 4.0 / 32768) << "channel " << c;
  }
}

class MMPEGFileEncodings : public testing::TestWithParam<Encoding> {};

TEST_P(MMPEGFileEncodings, DecodeAsWithAnotherDecoder) {
  REQUIRE_ENCODER(GetParam().encoder);
  ExpectAsMad(Encode(GetParam()));
}

constexpr Encoding kLayerIII[] = {
    {"lame", "--silent -b 128 -m j", 44100, 2},
    {"lame", "--silent -b 320 -m s", 48000, 2},
    {"lame", "--silent -b 32 -m j", 32000, 2},
    {"lame", "--silent -V 4", 44100, 2},
    {"lame", "--silent -V 9 -m m", 32000, 1},
    {"lame", "--silent --abr 100 -p", 48000, 2},
    {"lame", "--silent -V 0 -t", 44100, 2},
    {"lame", "--silent -b 64 -m d", 44100, 2},
    {"lame", "--silent -b 64 --nores -m f", 44100, 2},
};
constexpr Encoding kLowRates[] = {
    {"lame", "--silent -b 56", 22050, 2},     {"lame", "--silent -V 6", 24000, 2},
    {"lame", "--silent -b 8 -m m", 16000, 1}, {"lame", "--silent -b 160 -p", 16000, 2},
    {"lame", "--silent -b 16", 11025, 2},     {"lame", "--silent -V 3", 12000, 2},
    {"lame", "--silent -b 8 -m m", 8000, 1},  {"lame", "--silent -b 64 -m j", 8000, 2},
};
constexpr Encoding kLayerII[] = {
    {"twolame", "-b 192", 44100, 2},         {"twolame", "-b 384 -m s", 48000, 2},
    {"twolame", "-b 96 -m j", 32000, 2},     {"twolame", "-b 64 -m m", 44100, 1},
    {"twolame", "-b 128 -m d -p", 48000, 2}, {"twolame", "-v -V 5", 44100, 2},
    {"twolame", "-b 32 -m m", 48000, 1},     {"twolame", "-b 64", 22050, 2},
    {"twolame", "-b 160 -m s", 24000, 2},    {"twolame", "-b 8 -m m", 16000, 1},
};
INSTANTIATE_TEST_SUITE_P(LayerIII, MMPEGFileEncodings, testing::ValuesIn(kLayerIII));
INSTANTIATE_TEST_SUITE_P(LayerIIIOfLowRates, MMPEGFileEncodings, testing::ValuesIn(kLowRates));
INSTANTIATE_TEST_SUITE_P(LayerII, MMPEGFileEncodings, testing::ValuesIn(kLayerII));

TEST(MMPEGFile, DecodesLayerIAsAnotherDecoder) {
  TestRandom random;
  struct Setting {
    uint8_t second;
    int rateIndex, bitRateIndex, mode, frameBytes;
  };
  // 384 kbit/s at 44.1 kHz, 256 at 48, 448 at 32, 32 at 44.1; 128 kbit/s at 22.05 and 32 at 16 kHz.
  for (const Setting& s :
       {Setting{0xFF, 0, 12, 0, 416}, Setting{0xFF, 1, 8, 1, 256}, Setting{0xFF, 2, 14, 3, 672},
        Setting{0xFF, 0, 1, 3, 32}, Setting{0xF7, 0, 8, 1, 276}, Setting{0xF7, 2, 1, 2, 96}}) {
    SCOPED_TRACE(testing::Message() << int{s.second} << " " << s.rateIndex << " " << s.bitRateIndex << " "
                                    << s.mode);
    std::string bytes;
    for (int i = 0; i < 40; ++i)
      bytes += LayerIFrame(random, s.second, s.rateIndex, s.bitRateIndex, s.mode, s.frameBytes);
    ExpectAsMad(bytes);
    MAudioBuffer buffer;
    EXPECT_EQ(Load(buffer, bytes).GetLength(), 40 * 384);
  }
}

// An encoder's delay and padding stay, and the info frame is silence.
TEST(MMPEGFile, HasAllSamplesOfAllItsFrames) {
  REQUIRE_ENCODER("lame");
  const std::string bytes = Encode({"lame", "--silent -b 128", 44100, 2});
  ASSERT_NE(bytes.find("Info"), bytes.npos);
  MAudioBuffer buffer;
  Load(buffer, bytes);
  EXPECT_EQ(buffer.GetLength(), 1152 * DecodeWithMad(bytes).frames);
  EXPECT_EQ(buffer.GetCapacity(), buffer.GetLength());
  const std::vector<float> samples = Samples(buffer);
  EXPECT_EQ(std::vector<float>(samples.begin(), samples.begin() + 1152), std::vector<float>(1152, 0.0f));
}

TEST(MMPEGFile, IsTheSameFromAnyStream) {
  REQUIRE_ENCODER("lame");
  const std::string bytes = Encode({"lame", "--silent -V 4", 44100, 2});
  MAudioBuffer whole, pieces, forward;
  Load(whole, bytes);
  ShortPieces shortPieces(bytes);
  LoadMPEG(pieces, shortPieces);
  ExpectSame(whole, pieces);
  ForwardStream forwardStream(bytes);
  LoadMPEG(forward, forwardStream);
  ExpectSame(whole, forward);
}

TEST(MMPEGFile, BeginsWhereTheStreamStands) {
  REQUIRE_ENCODER("lame");
  const std::string bytes = Encode({"lame", "--silent -b 64", 44100, 2});
  const std::string later = "before it" + bytes;
  MMemoryStream stream(later.data(), static_cast<int32_t>(later.size()));
  stream.Seek(9, MSeekOrigin::kStart);
  MAudioBuffer buffer, expected;
  LoadMPEG(buffer, stream);
  ExpectSame(buffer, Load(expected, bytes));
}

TEST(MMPEGFile, EndsQuietlyWithWhatIsNoWholeFrame) {
  REQUIRE_ENCODER("twolame");
  const std::string bytes = Encode({"twolame", "-b 128", 32000, 2});  // frames of 576 bytes
  MAudioBuffer whole;
  Load(whole, bytes);
  const std::string other = Encode({"twolame", "-b 128", 48000, 2}),
                    mono = Encode({"twolame", "-b 64 -m m", 32000, 1});
  for (const std::string& tail :
       {ID3v1(), APETag(), APETag() + ID3v1(), ID3v2("late"), std::string(5000, '\0'), bytes.substr(0, 575),
        bytes.substr(0, 3), std::string("\xFF"), other, mono}) {
    MAudioBuffer buffer;
    Load(buffer, bytes + tail);
    ExpectSame(buffer, whole);
    EXPECT_EQ(buffer.GetCapacity(), whole.GetCapacity());
  }
  MAudioBuffer cut;
  Load(cut, bytes.substr(0, bytes.size() - 1));
  EXPECT_EQ(cut.GetLength(), whole.GetLength() - 1152);
}

TEST(MMPEGFile, TakesMemoryForItsFramesOnly) {
  REQUIRE_ENCODER("lame");
  const std::string bytes = Encode({"lame", "--silent -b 8 -m m -t", 8000, 1});  // frames of 72 bytes
  const CountingFunctions counting;
  MAudioBuffer buffer;
  Load(buffer, bytes.substr(0, 3 * 72) + std::string(1000000, 'x'));
  EXPECT_LE(CountingFunctions::GetLargest(), 3 * 576 * 4 + 64);
  EXPECT_EQ(buffer.GetLength(), 3 * 576);
  EXPECT_EQ(buffer.GetCapacity(), 3 * 576);
}

// Nobody tells how many frames come: room doubles.
TEST(MMPEGFile, OfAStreamThatOnlyGoesForwardTakesAtMostTwiceTheMemoryOfItsFrames) {
  TestRandom random;
  std::string bytes;
  for (int i = 0; i < 33; ++i) bytes += LayerIFrame(random, 0xFF, 0, 12, 0, 416);
  ForwardStream forward(bytes + std::string(1000000, 'x'));
  const CountingFunctions counting;
  MAudioBuffer buffer;
  LoadMPEG(buffer, forward);
  EXPECT_EQ(buffer.GetLength(), 33 * 384);
  EXPECT_LE(buffer.GetCapacity(), 2 * 33 * 384);
  EXPECT_LE(CountingFunctions::GetLargest(), int64_t{2} * 33 * 384 * 4 + 64);
}

}  // namespace
