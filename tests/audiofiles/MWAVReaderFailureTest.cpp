#include <limits>

#include "audiofiles/MWAVReader.h"
#include "tests/audiofiles/SampleFiles.h"
#include "tests/common/CountingFunctions.h"

namespace {

const std::string kData = Chunk("data", "\1\2\3\4");

void ExpectFailure(const std::string& bytes, const std::string& message, const std::string& place) {
  ExpectInvalid(LoadWAV, bytes, message, place);
}

void ExpectUnknownDepth(const std::string& bytes, const std::string& place) {
  MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
  MAudioBuffer buffer;
  try {
    LoadWAV(buffer, stream);
    ADD_FAILURE();
  } catch (const MException& raised) {
    EXPECT_EQ(raised.message, "Invalid source bitrate.");
    EXPECT_EQ(raised.code, 256);
    EXPECT_EQ(Utf8(raised.source), place);
  }
}

TEST(MWAVReaderFailure, OfTheHeadTellsWhatIsMissing) {
  ExpectFailure("", "No WAVe header found.", "byte 0");
  ExpectFailure("RIFF1234WAV", "No WAVe header found.", "byte 0");
  ExpectFailure("RIFX1234WAVE", "The stream is not a RIFF standard file.", "byte 0");
  ExpectFailure("RIFF1234WAVF", "Note a WAVe file.", "byte 8");
}

TEST(MWAVReaderFailure, OfAChunkTellsItsPlace) {
  ExpectFailure("RIFF1234WAVE", "No chunk identifier found.", "byte 12");
  ExpectFailure("RIFF1234WAVEfmt", "No chunk identifier found.", "byte 12");
  ExpectFailure(Riff("fmt " + Little(16, 4) + Form(1, 16).substr(1)), "No format chunk found.", "byte 16");
  ExpectFailure(Riff("data123"), "No data chunk length found.", "byte 16");
  ExpectFailure(Riff("what123"), "No unknown chunk length found.", "byte 16");
  ExpectFailure(Riff(Chunk("fmt ", Form(1, 16)) + "data"), "No data chunk length found.", "byte 40");
}

TEST(MWAVReaderFailure, OfAFormat) {
  for (const int tag : {0, 2, 6, 7, 0x55, 0xFFFE})
    ExpectFailure(Wav(Form(1, 16, tag), "1234"), "Invalid WAVe file format tag contents.", "byte 20");
  for (const int channels : {0, 9, 0xFFFF})
    ExpectFailure(Wav(Form(channels, 16), "1234"), "Invalid WAVe file format tag contents.", "byte 20");
}

TEST(MWAVReaderFailure, OfADataLength) {
  for (const uint32_t length : {0u, 0x80000000u, 0xFFFFFFFFu})
    ExpectFailure(Riff(Chunk("fmt ", Form(1, 16)) + "data" + Little(length, 4) + "1234"),
                  "Invalid data chunk length.", "byte 40");
}

TEST(MWAVReaderFailure, OfADepthStandsAlone) {
  for (const int bits : {0, 1, 7, 12, 20, 40, 64, 0xFFFF})
    ExpectUnknownDepth(Wav(Form(1, bits), "1234"), "byte 44");
  ExpectUnknownDepth(Riff(kData), "byte 20");
  ExpectUnknownDepth(Riff(kData + Chunk("fmt ", Form(1, 16))), "byte 20");
}

TEST(MWAVReaderFailure, OfSamplesThatAreNotThere) {
  const std::string head = Riff(Chunk("fmt ", Form(2, 16)) + "data" + Little(8, 4));
  for (const std::size_t count : {0u, 1u, 4u, 7u})
    ExpectFailure(head + std::string(count, 'x'), "Could not load WAV samples.", "byte 44");
}

TEST(MWAVReaderFailure, ComesWithAnOddChunkBeforeTheData) {
  ExpectFailure(Riff(Chunk("fmt ", Form(1, 16)) + Chunk("LIST", "odd") + std::string(1, '\0') + kData),
                "No chunk identifier found.", "byte 1176");
  ExpectFailure(Riff(Chunk("fmt ", Form(1, 16)) + Chunk("LIST", "odd")), "No chunk identifier found.",
                "byte 47");
}

TEST(MWAVReaderFailure, EndsForEveryLengthOfAChunk) {
  for (const uint32_t length :
       {0u, 1u, 15u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFF0u, 0xFFFFFFF8u, 0xFFFFFFFCu, 0xFFFFFFFFu})
    for (const char* const id : {"fmt ", "LIST"}) {
      const std::string bytes = Riff(id + Little(length, 4) + Form(1, 16) + std::string(64, 'x'));
      MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
      MAudioBuffer buffer;
      EXPECT_THROW(LoadWAV(buffer, stream), MException) << id << length;
    }
}

TEST(MWAVReaderFailure, OfALengthThatLiesTakesNoMemory) {
  const std::string bytes =
      Riff(Chunk("fmt ", Form(1, 16)) + "data" + Little(0x7FFFFFFF, 4) + std::string(56, 'x'));
  ASSERT_EQ(bytes.size(), 100u);
  const CountingFunctions counting;
  MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
  const int64_t before = CountingFunctions::GetBalance();
  MAudioBuffer buffer;
  EXPECT_RAISES(LoadWAV(buffer, stream), "Invalid file contents. Could not load WAV samples.", 256);
  EXPECT_EQ(CountingFunctions::GetBalance(), before);
  EXPECT_LT(CountingFunctions::GetLargest(), 500);
  EXPECT_EQ(buffer.GetCapacity(), 0);
}

// A file that shrinks behind our back.
class Shrinking final : public MMemoryStream {
 public:
  using MMemoryStream::MMemoryStream;
  int64_t GetSize() override { return MMemoryStream::GetSize() + 1000000; }
};

TEST(MWAVReaderFailure, KeepsTheSamplesThatCame) {
  const std::string bytes = Riff(Chunk("fmt ", Form(2, 16)) + "data" + Little(800000, 4)) + Pattern(400002);
  Shrinking stream(bytes.data(), static_cast<int32_t>(bytes.size()));
  MAudioBuffer buffer;
  try {
    LoadWAV(buffer, stream);
    ADD_FAILURE();
  } catch (const MException& raised) {
    EXPECT_EQ(raised.message, "Invalid file contents. Could not load WAV samples.");
    EXPECT_EQ(raised.source, "byte 400046");
  }
  EXPECT_EQ(buffer.GetLength(), 100000);
  EXPECT_EQ(buffer.bitDepth, 16);
  EXPECT_EQ(Samples(buffer).size(), 100000u);
}

TEST(MWAVReaderFailure, LeavesNoOldSamples) {
  MAudioBuffer buffer;
  buffer.SetSize(2, 10);
  MMemoryStream stream("RIFF", 4);
  EXPECT_THROW(LoadWAV(buffer, stream), MException);
  EXPECT_EQ(buffer.GetChannelCount(), 0);
  EXPECT_EQ(buffer.GetLength(), 0);
}

TEST(MWAVReaderFailure, LetsGoOfTheStream) {
  const std::string bytes = Riff(Chunk("fmt ", Form(1, 16)) + "data" + Little(8, 4) + "1234");
  MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
  MWAVReader reader;
  reader.Open(stream);
  MAudioBuffer part;
  part.SetSize(1, 2);
  EXPECT_FALSE(reader.Read(part));
  EXPECT_EQ(part.GetLength(), 2);
  EXPECT_THROW(reader.Read(part), MException);
  EXPECT_EQ(reader.GetBytesLeft(), 0);
  EXPECT_TRUE(reader.Read(part));
  EXPECT_EQ(part.GetLength(), 0);
}

TEST(MWAVReaderFailure, OfAHeadLetsGoOfTheStreamBefore) {
  const std::string good = Wav(Form(1, 8), "\xFE\xFE"), bad = Wav(Form(1, 8, 2), "x");
  MMemoryStream first(good.data(), static_cast<int32_t>(good.size()));
  MMemoryStream second(bad.data(), static_cast<int32_t>(bad.size()));
  MWAVReader reader;
  reader.Open(first);
  EXPECT_RAISES(reader.Open(second), "Invalid file contents. Invalid WAVe file format tag contents.", 256);
  EXPECT_EQ(reader.GetBytesLeft(), 0);
  MAudioBuffer part;
  part.SetSize(1, 1);
  EXPECT_TRUE(reader.Read(part));
  EXPECT_EQ(part.GetChannelCount(), 0);
  EXPECT_EQ(first.GetPosition(), 44);
}

TEST(MWAVReaderFailure, OfMemoryLeaksNothing) {
  const std::string bytes = Wav(Form(4, 24), Pattern(1200));
  bool isDone = false;
  for (int64_t n = 0; !isDone; ++n) {
    const CountingFunctions counting;
    {
      ShortPieces stream(bytes);
      MAudioBuffer buffer;
      CountingFunctions::FailAfter(n);
      try {
        LoadWAV(buffer, stream);
        isDone = true;
      } catch (const MException& raised) {
        EXPECT_EQ(raised.message, "Out of memory.");
      }
      CountingFunctions::FailAfter(-1);
    }
    EXPECT_EQ(CountingFunctions::GetBalance(), 0) << n;
  }
}

}  // namespace
