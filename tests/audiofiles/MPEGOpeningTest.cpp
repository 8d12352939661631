#include "audiofiles/MMPEGFile.h"
#include "tests/audiofiles/MPEGFiles.h"

namespace {

// Twelve frames of layer I, of a size that is a multiple of 32 bytes.
const std::string& Frames() {
  static const std::string frames = [] {
    TestRandom random(3);
    std::string bytes;
    for (int i = 0; i < 12; ++i) bytes += LayerIFrame(random, 0xFF, 0, 12, 0, 416);
    return bytes;
  }();
  return frames;
}

void Load(MAudioBuffer& buffer, const std::string& bytes) {
  MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
  LoadMPEG(buffer, stream);
}

void ExpectOpens(const std::string& bytes, const std::string& frames = Frames()) {
  MAudioBuffer plain;
  Load(plain, frames);
  ASSERT_EQ(plain.GetLength(), static_cast<int32_t>(frames.size() / 416 * 384));
  for (const bool pieces : {false, true}) {
    MMemoryStream memory(bytes.data(), static_cast<int32_t>(bytes.size()));
    ShortPieces forward(bytes);
    MAudioBuffer buffer;
    LoadMPEG(buffer, pieces ? static_cast<MStream&>(forward) : memory);
    ExpectSame(buffer, plain);
  }
}

void ExpectFailure(const std::string& bytes, const std::string& message, const std::string& place) {
  ExpectInvalid(LoadMPEG, bytes, message, place);
}

void ExpectNoHeader(const std::string& bytes, const std::string& place) {
  ExpectFailure(bytes, "MPEG stream header error.", place);
}

std::string Info(const std::string& contents) {
  return "INFO" + Little(contents.size(), 4) + contents;
}

std::string MPEGForm(int tag = 0x55) {
  return Form(2, 0, tag) + Little(0, 2);
}

TEST(MPEGOpening, PassesTagsInFront) {
  ExpectOpens(Frames());
  ExpectOpens(ID3v2("") + Frames());
  ExpectOpens(ID3v2(Pattern(300001)) + Frames());
  ExpectOpens(ID3v2(Frames()) + Frames());
  ExpectOpens(Info("odd") + Frames());
  ExpectOpens(Info("") + ID3v2("x") + Info(Pattern(70000)) + Frames());
  ExpectOpens(APETag() + Frames());
  std::string eight;
  for (int i = 0; i < 4; ++i) eight += ID3v2("abc") + Info("x");
  ExpectOpens(eight + Frames());
  ExpectNoHeader(eight + ID3v2("") + Frames(), "byte 98");
}

TEST(MPEGOpening, PassesGarbageOfEvenLength) {
  for (const std::size_t length : {2u, 4u, 1000u, 2046u, 2048u})
    ExpectOpens(std::string(length, 'x') + Frames());
  ExpectOpens(ID3v2("tag") + std::string(2048, '\0') + Frames());
  ExpectNoHeader(std::string(2050, 'x') + Frames(), "byte 2050");
}

// Layer I, and an empty frame of layer III.
TEST(MPEGOpening, PassesGarbageOfEvenLengthInFrontOfMPEG2) {
  TestRandom random(4);
  std::string layerI;
  for (int i = 0; i < 6; ++i) layerI += LayerIFrame(random, 0xF7, 0, 8, 1, 276);
  const std::string layerIII = std::string("\xFF\xF3\x50\xC0") + std::string(257, '\0');
  for (const std::string& frames : {layerI, layerIII}) {
    MAudioBuffer plain;
    Load(plain, frames);
    EXPECT_EQ(plain.sampleRate, 22050);
    EXPECT_GE(plain.GetLength(), 576);
    for (const std::size_t length : {2u, 1000u, 2048u}) {
      MAudioBuffer buffer;
      Load(buffer, std::string(length, 'x') + frames);
      EXPECT_EQ(buffer.sampleRate, 22050);
      ExpectSame(buffer, plain);
    }
    ExpectNoHeader(std::string(2050, 'x') + frames, "byte 2050");
  }
}

TEST(MPEGOpening, FindsNoFrameBehindGarbageOfOddLength) {
  const std::string bytes = "x" + Frames().substr(0, 100);
  ExpectNoHeader(bytes + "x", "byte 102");
}

TEST(MPEGOpening, GivesUpWithoutASync) {
  ExpectNoHeader("", "byte 0");
  ExpectNoHeader("\xFF", "byte 0");
  ExpectNoHeader("\xFF\xFB", "byte 0");
  ExpectNoHeader("\xFF\xFB\x90", "byte 0");
  ExpectNoHeader(ID3v2("only a tag"), "byte 20");
  ExpectNoHeader(std::string(4, 'x'), "byte 4");
  ExpectNoHeader(std::string(5000, 'x'), "byte 2050");
}

TEST(MPEGOpening, GivesUpBehindATagThatLies) {
  ExpectNoHeader("ID3\3", "byte 4");
  ExpectNoHeader("ID3\3\1\1\1\1", "byte 8");
  ExpectNoHeader(std::string("ID3\3\0\0", 6) + SyncsafeSize(1000) + "short", "byte 15");
  ExpectNoHeader("INFO" + Little(0xFFFFFFFF, 4) + Frames(), "byte 5000");
  ExpectNoHeader("INFO12", "byte 6");
}

std::string Syncs(const std::string& word) {
  return word + "\x50\xC0" + std::string(3000, '\0');
}

TEST(MPEGOpening, TakesTheSyncOfLowRatesAtTheFirstPlaceOnly) {
  for (const char* const word : {"\xFF\xE2", "\xFF\xE3"}) {
    MAudioBuffer buffer;
    Load(buffer, Syncs(word));
    EXPECT_GE(buffer.GetLength(), 576);
    EXPECT_EQ(buffer.sampleRate, 11025);
    Load(buffer, ID3v2("tag") + Syncs(word));
    EXPECT_GE(buffer.GetLength(), 576);
    ExpectNoHeader("xx" + Syncs(word), "byte 2050");
    ExpectOpens("xx" + std::string(word) + Frames());
  }
  for (const char* const word : {"\xFF\xE0", "\xFF\xE1", "\xFF\xE4", "\xFF\xE5", "\xFF\xEF"}) {
    ExpectNoHeader(Syncs(word), "byte 2050");
    ExpectOpens(word + Frames());
  }
}

TEST(MPEGOpening, RefusesHeadsThatNoFrameHas) {
  const std::string rest(2000, '\0');
  for (const std::string& head : {
           std::string("\xFF\xFB\x00\xC0", 4),  // free format
           std::string("\xFF\xFF\x02\x00", 4),  // free format of layer I, padded
           std::string("\xFF\xFB\xF0\xC0"),     // reserved bit rate
           std::string("\xFF\xFB\x9C\xC0"),     // reserved sample rate
           std::string("\xFF\xF9\x90\xC0"),     // reserved layer
           std::string("\xFF\xFF\xFF\xFF"),
           std::string("\xFF\xF1\x90\xC0"),
       })
    ExpectFailure(head + rest, "Error initializing MPEG decoder.", "byte 0");
  ExpectFailure(ID3v2("x") + "\xFF\xFB\xF0\xC0", "Error initializing MPEG decoder.", "byte 11");
  ExpectFailure("xx\xFF\xFB", "Error initializing MPEG decoder.", "byte 2");
}

TEST(MPEGOpening, FailsWithoutOneWholeFrame) {
  ExpectFailure(Frames().substr(0, 415), "Error decompressing MPEG stream.", "byte 0");
  ExpectFailure("xx" + Frames().substr(0, 4), "Error decompressing MPEG stream.", "byte 2");
  MAudioBuffer buffer;
  buffer.SetSize(1, 100);
  EXPECT_THROW(Load(buffer, Frames().substr(0, 415)), MException);
  EXPECT_EQ(buffer.GetLength(), 0);
}

TEST(MPEGOpening, ReadsTheFramesInAWavFile) {
  for (const int tag : {0x50, 0x55})
    ExpectOpens(Riff(Chunk("fmt ", MPEGForm(tag)) + Chunk("data", Frames())));
  const std::string form = Chunk("fmt ", MPEGForm() + "extended");
  ExpectOpens(Riff(Chunk("LIST", "even") + form + Chunk("LIST", "odd") + std::string(1, '\0') +
                   Chunk("data", Frames()) + Chunk("LIST", Frames())));
  ExpectOpens(Riff(Chunk("fmt ", MPEGForm() + "odd") + std::string(1, '\0') + Chunk("data", Frames())));
  ExpectOpens(ID3v2("tag") + Riff(form + Chunk("data", Frames())));
  ExpectOpens(Riff(form + "data" + Little(0xFFFFFFFF, 4) + Frames()));
  // The samples end with their chunk, whatever follows.
  ExpectOpens(Riff(form + Chunk("data", Frames().substr(0, 832)) + Frames()), Frames().substr(0, 832));
}

TEST(MPEGOpening, RefusesOtherWavFiles) {
  const std::string data = Chunk("data", Frames());
  const auto expect = [](const std::string& bytes, const std::string& place) {
    ExpectFailure(bytes, "Invalid MPEG header in WAVe file.", place);
  };
  expect("RIFF1234WAVF" + data, "byte 12");
  expect("RIFF", "byte 4");
  expect("RIFF1234WAVE", "byte 12");
  expect(Riff(data), "byte 20");
  expect(Riff(Chunk("fmt ", Form(2, 16)) + data), "byte 36");
  expect(Riff(Chunk("fmt ", Form(2, 16, 0x56)) + data), "byte 36");
  expect(Riff(Chunk("fmt ", MPEGForm().substr(0, 14)) + data), "byte 20");
  expect(Riff(Chunk("fmt ", MPEGForm())), "byte 38");
  expect(Riff("LIST" + Little(0xFFFFFFFF, 4) + data), "byte 5020");
  ExpectNoHeader(Riff(Chunk("fmt ", MPEGForm()) + Chunk("data", "") + Frames()), "byte 46");
}

}  // namespace
