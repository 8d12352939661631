#include "audiofiles/MZSDFile.h"

#include <cmath>

#include "tests/audiofiles/SampleFiles.h"
#include "tests/common/CountingFunctions.h"

namespace {

void Load(MAudioBuffer& buffer, const std::string& bytes) {
  MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
  LoadZSD(buffer, stream);
}

std::string Integers(const std::vector<int32_t>& values) {
  std::string bytes;
  for (const int32_t value : values) bytes += Little(static_cast<uint32_t>(value), 4);
  return bytes;
}

void ExpectFailure(const std::string& bytes, const std::string& message, const std::string& place) {
  ExpectInvalid(LoadZSD, bytes, message, place);
}

TEST(MZSDFile, HasOneChannelBehindTheOther) {
  for (const int32_t channels : {1, 2, 8}) {
    std::vector<int32_t> values;
    for (int32_t i = 0; i < channels * 5000; ++i) values.push_back(i * 50021);
    MAudioBuffer buffer;
    Load(buffer, Zsd(channels, 5000, 96000, 0.5f, Integers(values)));
    ASSERT_EQ(buffer.GetChannelCount(), channels);
    ASSERT_EQ(buffer.GetLength(), 5000);
    EXPECT_EQ(buffer.sampleRate, 96000);
    EXPECT_EQ(buffer.bitDepth, 32);
    EXPECT_EQ(buffer.peakFactor, 0.5f);
    for (int32_t c = 0; c < channels; ++c) {
      const std::vector<float> samples = Samples(buffer, c);
      for (int32_t i = 0; i < 5000; ++i) {
        const double value = values[static_cast<std::size_t>(c * 5000 + i)];
        ASSERT_EQ(samples[static_cast<std::size_t>(i)],
                  static_cast<float>(value * 0.5 * 4.656612875245797e-10));
      }
    }
  }
}

TEST(MZSDFile, RestoresTheLevelByThePeakFactor) {
  const std::vector<int32_t> extremes = {INT32_MIN, INT32_MAX, 0, 1};
  for (const float peak : {1.0f, 0.5f, 0.0f, -2.0f}) {
    MAudioBuffer buffer;
    Load(buffer, Zsd(1, 4, 1, peak, Integers(extremes)));
    EXPECT_EQ(Samples(buffer)[0], -peak);
    EXPECT_EQ(Samples(buffer)[1], peak);
    EXPECT_EQ(Samples(buffer)[3], static_cast<float>(peak * 4.656612875245797e-10));
    EXPECT_EQ(buffer.sampleRate, 1);
  }
}

TEST(MZSDFile, TakesAPeakFactorThatIsNoNumberAsItStands) {
  MAudioBuffer buffer;
  Load(buffer, Zsd(1, 1, 44100, NAN, Integers({5})));
  EXPECT_TRUE(std::isnan(Samples(buffer)[0]));
  EXPECT_TRUE(std::isnan(buffer.peakFactor));
}

TEST(MZSDFile, GivesTheSameFromAnyStream) {
  const std::string bytes = Zsd(3, 7000, 44100, 0.3f, Pattern(3 * 7000 * 4));
  MAudioBuffer whole, pieces, forward;
  Load(whole, bytes);
  ShortPieces shortPieces(bytes);
  LoadZSD(pieces, shortPieces);
  ExpectSame(whole, pieces);
  ForwardStream forwardStream(bytes);
  LoadZSD(forward, forwardStream);
  ExpectSame(whole, forward);
}

TEST(MZSDFile, WithAShortHeadHasNoHeader) {
  const std::string head = Zsd(1, 1, 44100, 1, "");
  for (const std::size_t size : {0u, 4u, 59u})
    ExpectFailure(head.substr(0, size), "No ZSD header found.", "byte 0");
}

TEST(MZSDFile, WithAWrongHeadIsInvalid) {
  const std::string samples = Integers({1, 2, 3, 4});
  std::string bytes = Zsd(1, 4, 44100, 1, samples);
  bytes[3] = '2';
  ExpectFailure(bytes, "Invalid ZSD header.", "byte 0");
  for (const int32_t channels : {0, -1, 9, INT32_MAX, INT32_MIN})
    ExpectFailure(Zsd(channels, 4, 44100, 1, samples), "Invalid ZSD header.", "byte 40");
  for (const int32_t length : {0, -1, INT32_MIN})
    ExpectFailure(Zsd(1, length, 44100, 1, samples), "Invalid ZSD header.", "byte 44");
  for (const int32_t rate : {0, -1, INT32_MIN})
    ExpectFailure(Zsd(1, 4, rate, 1, samples), "Invalid ZSD header.", "byte 36");
}

TEST(MZSDFile, IsCheckedForItsMagicThenChannelsThenLengthThenRate) {
  std::string bytes = Zsd(0, 0, 0, 1, "");
  bytes[0] = 'z';
  ExpectFailure(bytes, "Invalid ZSD header.", "byte 0");
  ExpectFailure(Zsd(0, 0, 0, 1, ""), "Invalid ZSD header.", "byte 40");
  ExpectFailure(Zsd(1, 0, 0, 1, ""), "Invalid ZSD header.", "byte 44");
  ExpectFailure(Zsd(1, 1, 0, 1, ""), "Invalid ZSD header.", "byte 36");
  ExpectFailure(Zsd(1, 1, 1, 1, ""), "Could not load samples.", "byte 60");
}

TEST(MZSDFile, WithARateOfZeroIsRefusedBeforeAnySampleIsRead) {
  ForwardStream stream(Zsd(1, 1000, 0, 1, Pattern(4000)));
  MAudioBuffer buffer;
  EXPECT_RAISES(LoadZSD(buffer, stream), "Invalid file contents. Invalid ZSD header.", 256);
  EXPECT_EQ(stream.reads, std::vector<int32_t>{60});
  EXPECT_EQ(buffer.GetLength(), 0);
}

TEST(MZSDFile, WithoutAllOfItsSamplesIsRefused) {
  const std::string bytes = Zsd(2, 100, 44100, 1, Pattern(800));
  for (const std::size_t missing : {1u, 4u, 400u, 800u})
    ExpectFailure(bytes.substr(0, bytes.size() - missing), "Could not load samples.", "byte 60");
}

TEST(MZSDFile, WithALengthThatLiesTakesNoMemory) {
  for (const int32_t channels : {1, 8}) {
    const std::string bytes = Zsd(channels, INT32_MAX, 44100, 1, Pattern(100));
    const CountingFunctions counting;
    MAudioBuffer buffer;
    EXPECT_RAISES(Load(buffer, bytes), "Invalid file contents. Could not load samples.", 256);
    EXPECT_LT(CountingFunctions::GetLargest(), 500);
    EXPECT_EQ(buffer.GetCapacity(), 0);
  }
}

// A file that shrinks behind our back.
class Shrinking final : public MMemoryStream {
 public:
  using MMemoryStream::MMemoryStream;
  int64_t GetSize() override { return MMemoryStream::GetSize() + 1000000; }
};

TEST(MZSDFile, ThatShrinksKeepsTheSamplesThatCame) {
  const std::string bytes =
      Zsd(2, 3, 44100, 1, Integers({INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX}) + "ab");
  Shrinking stream(bytes.data(), static_cast<int32_t>(bytes.size()));
  MAudioBuffer buffer;
  try {
    LoadZSD(buffer, stream);
    ADD_FAILURE();
  } catch (const MException& raised) {
    EXPECT_EQ(raised.message, "Invalid file contents. Could not load samples.");
    EXPECT_EQ(raised.source, "byte 78");
  }
  EXPECT_EQ(Samples(buffer, 0), (std::vector<float>{1, 1, 1}));
  EXPECT_EQ(Samples(buffer, 1), (std::vector<float>{1, 0, 0}));
}

}  // namespace
