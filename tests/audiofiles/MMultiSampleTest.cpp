#include "audiofiles/MMultiSample.h"

#include <gtest/gtest.h>

#include <cmath>

#include "audiofiles/MMultiSampleCache.h"
#include "tests/audiofiles/MultiSampleInTest.h"
#include "tests/common/ReportedTexts.h"

namespace {

class MMultiSampleTest : public testing::Test {
 protected:
  MString Write(const std::string& bytes, const char* name = "a.qxMultiSample") {
    return Buffer(folder.WriteFile(name, bytes).c_str());
  }
  MString Write(const MultiSampleInTest& file, uint32_t flags = 0) { return Write(file.Make(flags)); }

  TemporaryFolder folder;
  ReportedTexts reported;
};

std::vector<float> Ramp(int32_t length) {
  std::vector<float> ramp;
  for (int32_t i = 0; i < length; ++i) ramp.push_back(static_cast<float>(i + 1) / 8192);
  return ramp;
}

std::vector<float> Samples(const MAudioBuffer* buffer, int32_t channel = 0) {
  if (!buffer) return {};
  return std::vector<float>(buffer->GetChannel(channel), buffer->GetChannel(channel) + buffer->GetLength());
}

MultiSampleInTest OneTake(int32_t length) {
  MultiSampleInTest file;
  file.takes = {{1, 0, {TrackInTest::Of(Ramp(length))}}};
  return file;
}

TEST_F(MMultiSampleTest, IndexTellsTracksTakesAndLayers) {
  MultiSampleInTest file;
  file.rate = 48000;
  file.tracks.push_back("<track name=\"room\" volume=\"0.5\" pan=\"-0.25\"/>");
  const TrackInTest track = TrackInTest::Constant(0.5f, 10);
  file.takes = {{0.1, 1, {track, track}}, {0.2, 1, {track, track}}, {0.5, 7, {track, track}, 5}};
  const MMultiSampleFile read(Write(file));
  EXPECT_EQ(read.GetSampleRate(), 48000);
  ASSERT_EQ(read.GetTracks().size(), 2u);
  EXPECT_EQ(read.GetTracks()[1].name, "room");
  EXPECT_EQ(read.GetTracks()[1].volume, 0.5);
  EXPECT_EQ(read.GetTracks()[1].pan, -0.25);
  ASSERT_EQ(read.GetTakes().size(), 3u);
  EXPECT_DOUBLE_EQ(read.GetTakes()[0].loudness, 0.2);
  EXPECT_EQ(read.GetTakes()[2].loudness, 1);
  ASSERT_EQ(read.GetLayers().size(), 2u);
  EXPECT_EQ(read.GetLayers()[0].first, 0);
  EXPECT_EQ(read.GetLayers()[0].last, 1);
  EXPECT_DOUBLE_EQ(read.GetLayers()[0].loudness, 0.4);
  EXPECT_EQ(read.GetLayers()[1].first, 2);
  EXPECT_EQ(read.GetLongest(), 10);
}

TEST_F(MMultiSampleTest, AllCompressionsGiveTheSameSamples) {
  for (const uint32_t flags : {0u, 1u, 2u, 3u, 5u, 6u, 7u}) {
    MultiSampleInTest file = OneTake(3000);
    file.takes.push_back({2, 1, {TrackInTest::Constant(0.25f, 2000)}});
    const MMultiSampleFile read(Write(file, flags));
    MAudioBuffer buffer;
    read.Read(buffer, 1, 0, 3000);
    EXPECT_EQ(Samples(&buffer), std::vector<float>(2000, 0.25f)) << flags;
    read.Read(buffer, 0, 0, 100000);
    EXPECT_EQ(Samples(&buffer), Ramp(3000)) << flags;
    read.Read(buffer, 0, 0, 10);
    EXPECT_EQ(Samples(&buffer), Ramp(10)) << flags;
    EXPECT_EQ(buffer.sampleRate, 1000);
    MMultiSampleFile{Write(OneTake(3000), flags)}.Read(buffer, 0, 0, 100000);
    EXPECT_EQ(Samples(&buffer), Ramp(3000)) << flags << ", one item";
  }
}

TEST_F(MMultiSampleTest, IntegersOfAllDepthsAndChannelsAreConverted) {
  MultiSampleInTest file;
  TrackInTest track;
  track.channels = 2;
  track.bits = 16;
  track.length = 2;
  track.bytes = std::string("\x00\x00\xFF\x7F\x01\x80\x00\x40", 8);
  file.takes = {{1, 0, {track}}};
  MAudioBuffer buffer;
  MMultiSampleFile{Write(file)}.Read(buffer, 0, 0, 9);
  EXPECT_EQ(Samples(&buffer, 0), (std::vector<float>{0, -1}));
  EXPECT_EQ(Samples(&buffer, 1)[0], 1);
}

TEST_F(MMultiSampleTest, FilesThatAreNoneAreRefusedWithTheirName) {
  EXPECT_RAISES(MMultiSampleFile{Write(MultiSampleInTest())}, "Empty multisample.", 0);
  try {
    MMultiSampleFile{Write(MultiSampleInTest())};
  } catch (const MException& raised) {
    EXPECT_EQ(Utf8(raised.source), folder.Path("a.qxMultiSample"));
  }
  EXPECT_RAISES(MMultiSampleFile{Write("short")}, kShort, MErrorCode::kTransferFailed);
  std::string bytes = OneTake(10).Make();
  bytes[bytes.size() - 28] ^= 1;
  EXPECT_RAISES(MMultiSampleFile{Write(bytes)}, "Resource library file is corrupt.",
                MErrorCode::kTransferFailed);
}

TEST_F(MMultiSampleTest, TracksThatCannotBeReadRaiseTheirTexts) {
  MultiSampleInTest file = OneTake(10);
  file.takes[0].tracks.resize(5, file.takes[0].tracks[0]);
  file.takes[0].tracks[0].channels = 9;
  file.takes[0].tracks[1].channels = 0;
  file.takes[0].tracks[2].length = -1;
  file.takes[0].tracks[3].bits = 12;
  file.takes[0].tracks[4].length = 2000000000;
  for (const uint32_t flags : {0u, 1u}) {
    const MMultiSampleFile read(Write(file, flags));
    MAudioBuffer buffer;
    for (const int32_t track : {-1, 0, 1, 2, 5, 17})
      EXPECT_RAISES(read.Read(buffer, 0, track, INT32_MAX), "Sample is not available.", 0);
    EXPECT_RAISES(read.Read(buffer, 0, 3, INT32_MAX), "Invalid source bitrate.", MErrorCode::kTransferFailed);
    EXPECT_RAISES(read.Read(buffer, 0, 4, INT32_MAX), kShort, MErrorCode::kTransferFailed);
    EXPECT_EQ(buffer.GetLength(), 0);
  }
}

TEST_F(MMultiSampleTest, FurtherTracksAndFilesThanSixteenAreNotRead) {
  MultiSampleInTest file = OneTake(10);
  file.tracks.resize(17, file.tracks[0]);
  file.takes[0].tracks.resize(17, file.takes[0].tracks[0]);
  const MMultiSampleFile read(Write(file));
  EXPECT_EQ(read.GetTracks().size(), 16u);
  EXPECT_EQ(read.GetTakes()[0].files.size(), 16u);
}

TEST_F(MMultiSampleTest, LoudnessOfAQuietLastTakeIsLeftAlone) {
  MultiSampleInTest file;
  file.takes = {{0.5, 0, {TrackInTest::Constant(1, 1)}}, {0, 1, {TrackInTest::Constant(1, 1)}}};
  const MMultiSampleFile read(Write(file));
  EXPECT_EQ(read.GetTakes()[0].loudness, 0.5);
  EXPECT_EQ(read.GetTakes()[1].loudness, 0);
}

TEST_F(MMultiSampleTest, ShortTakeIsCompleteBehindTheHeadPass) {
  MMultiSample read(Write(OneTake(2500)), MMultiSample::kNoLimit, false);
  EXPECT_TRUE(read.GetTake(0).IsLoaded());
  EXPECT_EQ(Samples(read.GetTake(0).GetWhole(0)), Ramp(2500));
  EXPECT_EQ(read.GetTake(0).GetHead(0), nullptr);
  std::filesystem::resize_file(folder.Path("a.qxMultiSample"), 0);
  read.Request(0);
  EXPECT_TRUE(read.FinishLoading()) << "nothing is read any more";
  EXPECT_EQ(Samples(read.GetTake(0).GetWhole(0)), Ramp(2500));
}

TEST_F(MMultiSampleTest, LongTakeHasItsHeadAndIsReadByRequest) {
  MultiSampleInTest file = OneTake(2501);
  file.takes.push_back({2, 0, {TrackInTest::Of(Ramp(4000))}});
  MMultiSample read(Write(file), MMultiSample::kNoLimit, false);
  EXPECT_FALSE(read.GetTake(0).IsLoaded());
  EXPECT_EQ(read.GetTake(0).GetWhole(0), nullptr);
  EXPECT_EQ(Samples(read.GetTake(0).GetHead(0)), Ramp(2500));
  EXPECT_EQ(read.GetTake(1).GetHead(0), nullptr);
  EXPECT_EQ(read.GetLoudest(), read.GetTake(0).GetHead(0));
  read.Request(0);
  read.Request(0);
  EXPECT_TRUE(read.FinishLoading());
  EXPECT_EQ(Samples(read.GetTake(0).GetWhole(0)), Ramp(2501));
  EXPECT_EQ(Samples(read.GetTake(1).GetWhole(0)), Ramp(4000));
  EXPECT_TRUE(read.GetTake(1).IsLoaded());
  EXPECT_EQ(Samples(read.GetTake(0).GetHead(0)), Ramp(2500));
}

TEST_F(MMultiSampleTest, MaximalLengthCutsAndFadesFromHalfOrFourSeconds) {
  MultiSampleInTest file;
  file.takes = {{1, 0, {TrackInTest::Constant(1, 20000)}}};
  for (const double seconds : {1.0, 12.0}) {
    MMultiSample read(Write(file), seconds, false);
    EXPECT_EQ(read.GetLongest(), 1000 * seconds);
    EXPECT_FALSE(read.GetTake(0).IsLoaded());
    read.Request(0);
    ASSERT_TRUE(read.FinishLoading());
    const std::vector<float> samples = Samples(read.GetTake(0).GetWhole(0));
    const double length = 1000 * seconds, begin = std::min(length / 2, 4000.0);
    ASSERT_EQ(samples.size(), static_cast<std::size_t>(length));
    for (std::size_t i = 0; i < samples.size(); ++i)
      ASSERT_NEAR(samples[i], std::min(1.0, 1 - (static_cast<double>(i) - begin) / (length - begin)), 1e-6);
  }
}

TEST_F(MMultiSampleTest, TracksWithoutAFileAreNotAvailable) {
  MultiSampleInTest file = OneTake(10);
  file.tracks.push_back(file.tracks[0]);
  EXPECT_RAISES(MMultiSample(Write(file), MMultiSample::kNoLimit, false), "Sample is not available.", 0);
}

TEST_F(MMultiSampleTest, FailureEndsTheRequestAndTheThreadGoesOn) {
  MultiSampleInTest file = OneTake(3000);
  file.takes.push_back({2, 1, {TrackInTest::Of(Ramp(3000))}});
  const MString path = Write(file);
  MMultiSample read(path, MMultiSample::kNoLimit, false);
  std::filesystem::resize_file(folder.Path("a.qxMultiSample"), 11900);
  read.Request(0);
  EXPECT_FALSE(read.FinishLoading());
  EXPECT_FALSE(read.GetTake(0).IsLoaded());
  ASSERT_EQ(reported.Get().size(), 1u);
  EXPECT_NE(reported.Get()[0].find("'MMultiSample::Run'"), std::string::npos);
  folder.WriteFile("b", file.Make());
  std::filesystem::copy_file(folder.Path("b"), folder.Path("a.qxMultiSample"),
                             std::filesystem::copy_options::overwrite_existing);
  read.Request(0);
  EXPECT_TRUE(read.FinishLoading());
  EXPECT_EQ(Samples(read.GetTake(0).GetWhole(0)), Ramp(3000));
}

TEST_F(MMultiSampleTest, SingleSampleReadsTheTakeOfTheRequestsNumber) {
  MultiSampleInTest file = OneTake(3000);
  file.takes.push_back({2, 1, {TrackInTest::Of(Ramp(3100))}});
  file.takes.push_back({3, 1, {TrackInTest::Of(Ramp(3200))}});
  MMultiSample read(Write(file), MMultiSample::kNoLimit, true);
  read.Request(1);
  read.Request(9);
  EXPECT_TRUE(read.FinishLoading());
  EXPECT_TRUE(read.GetTake(1).IsLoaded());
  EXPECT_FALSE(read.GetTake(2).IsLoaded());
  read.ReadLayers();
  for (const int32_t layer : {-1, 1, 2, 9}) read.Request(layer);
  EXPECT_TRUE(read.FinishLoading());
  EXPECT_TRUE(read.GetTake(2).IsLoaded());
}

TEST_F(MMultiSampleTest, LayerIsTheFirstAtOrAboveALoudness) {
  MultiSampleInTest file;
  const TrackInTest track = TrackInTest::Constant(1, 1);
  file.takes = {{0.25, 0, {track}}, {0.5, 1, {track}}, {1, 2, {track}}};
  const MMultiSample read(Write(file), MMultiSample::kNoLimit, false);
  EXPECT_EQ(read.FindLayer(-1), 0);
  EXPECT_EQ(read.FindLayer(0.25), 0);
  EXPECT_EQ(read.FindLayer(0.25001), 1);
  EXPECT_EQ(read.FindLayer(0.5), 1);
  EXPECT_EQ(read.FindLayer(0.75), 2);
  EXPECT_EQ(read.FindLayer(1), 2);
  EXPECT_EQ(read.FindLayer(1.5), 2);
}

TEST_F(MMultiSampleTest, LoudestTrackIsThatOfTheTakeThatWasReadLast) {
  MultiSampleInTest file = OneTake(10);
  file.tracks.push_back(file.tracks[0]);
  const TrackInTest track = TrackInTest::Constant(0.5f, 10);
  file.takes = {{1, 0, {track, track}, 1}, {2, 0, {track, track}, 2}, {3, 1, {track, track}, 0}};
  MMultiSample read(Write(file), MMultiSample::kNoLimit, false);
  EXPECT_EQ(read.GetLoudest(), read.GetTake(2).GetWhole(0));
  read.Request(0);
  ASSERT_TRUE(read.FinishLoading());
  EXPECT_TRUE(read.GetTake(1).IsLoaded());
  EXPECT_EQ(read.GetLoudest(), nullptr);  // its index names no track
}

TEST_F(MMultiSampleTest, MayBeDestroyedWhileItReads) {
  MultiSampleInTest file;
  for (int32_t i = 0; i < 20; ++i) file.takes.push_back({1.0 + i, i, {TrackInTest::Constant(1, 20000)}});
  const MString path = Write(file, MLargeResourceFile::kItemsCompressed);
  for (int round = 0; round < 5; ++round) {
    MMultiSample read(path, MMultiSample::kNoLimit, false);
    for (int32_t layer = 0; layer < 20; ++layer) read.Request(layer);
  }
}

TEST_F(MMultiSampleTest, CacheTellsMaximalLengthsApartAndTurnsSinglesIntoLayers) {
  MMultiSampleCache cache;
  const MString path = Write(OneTake(10));
  MMultiSample* const single = cache.Acquire(path, MMultiSample::kNoLimit, true);
  EXPECT_TRUE(single->IsSingle());
  EXPECT_EQ(cache.Acquire(path, MMultiSample::kNoLimit, true), single);
  EXPECT_TRUE(single->IsSingle());
  EXPECT_EQ(cache.Acquire(path, MMultiSample::kNoLimit, false), single);
  EXPECT_FALSE(single->IsSingle());
  EXPECT_EQ(cache.Acquire(path, MMultiSample::kNoLimit, true), single);
  EXPECT_FALSE(single->IsSingle());
  MMultiSample* const shorter = cache.Acquire(path, 1, true);
  EXPECT_NE(shorter, single);
  cache.Release(shorter);
  EXPECT_RAISES(cache.Release(shorter), "Invalid subsample library to release.", 0);
  for (int i = 0; i < 4; ++i) cache.Release(single);
  EXPECT_EQ(cache.GetCount(), 0);
}

}  // namespace
