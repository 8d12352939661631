// What Layerbox makes of its file and of its rows as they change.

#include <gtest/gtest.h>

#include <limits>

#include "audiofiles/MMultiSample.h"
#include "instruments/Layerbox.h"
#include "tests/audiofiles/MultiSampleInTest.h"
#include "tests/common/ReportedTexts.h"
#include "tests/instruments/ContentFolder.h"
#include "tests/instruments/StreamPlayer.h"

namespace {

using Player = StreamPlayer<LayerboxAudioStreamPlugin>;
constexpr int32_t kMaximalLength = 1;
constexpr int32_t kSingleSample = 2;

class LayerboxFilesTest : public testing::Test {
 protected:
  void Write(std::size_t tracks, int32_t length = 10) {
    MultiSampleInTest file;
    file.tracks.resize(tracks, "<track name=\"x\" volume=\"0.5\" pan=\"0\"/>");
    file.takes = {{1, 0, std::vector<TrackInTest>(tracks, TrackInTest::Constant(0.25f, length))}};
    content.GetFolder().WriteFile("MultiSamples/a", file.Make());
  }
  static void Load(Player& player,
                   std::initializer_list<std::pair<const char*, const char*>> attributes = {}) {
    MXMLItem state("state");
    state.SetAttribute("filename", "a");
    for (const auto& [name, value] : attributes)
      state.SetAttribute(MString::Literal(name), MString::Literal(value));
    player.Load(state);
  }

  ContentFolder content;
  ReportedTexts reported;
};

TEST_F(LayerboxFilesTest, FileThatComesLaterBringsItsTracks) {
  Player player(1, 1000);
  Load(player, {{"volume0", "2"}});
  EXPECT_EQ(player.GetPlugin().GetTrackCount(), 1);
  EXPECT_EQ(player.Create(), 0);
  Write(3);
  player.Set(kMaximalLength, 5);
  EXPECT_EQ(player.GetPlugin().GetTrackCount(), 3);
  EXPECT_EQ(player.Play(1)[0][0], 0.25f * (2 + 0.5f + 0.5f));
}

TEST_F(LayerboxFilesTest, MissingBrokenAndEmptyFilesAreReportedAndSilent) {
  Player player(1, 1000);
  MultiSampleInTest none;
  for (const auto& [bytes, text] : {std::pair<std::string, std::string>{"", "Could not read required data"},
                                    {std::string(500, 'x'), ""},
                                    {none.Make(), "Empty multisample."}}) {
    Write(1);
    Load(player);
    ASSERT_NE(player.GetPlugin().GetMultiSample(), nullptr);
    content.GetFolder().WriteFile("MultiSamples/a", bytes);
    ReportedTexts::Clear();
    Load(player);
    EXPECT_EQ(player.GetPlugin().GetMultiSample(), nullptr);
    EXPECT_EQ(player.Create(), 0);
    ASSERT_EQ(reported.Get().size(), 1u);
    EXPECT_NE(reported.Get()[0].find("LayerboxAudioStreamPlugin::LoadState"), std::string::npos);
    EXPECT_NE(reported.Get()[0].find(text), std::string::npos) << reported.Get()[0];
    EXPECT_EQ(SonvelleConfiguration::Get()->multiSampleCache.GetCount(), 0);
  }
  ReportedTexts::Clear();
}

TEST(Layerbox, WithoutAConfigurationIsSilentWithoutAReport) {
  const ReportedTexts reported;
  Player player;
  MXMLItem state("state");
  state.SetAttribute("filename", "a");
  player.Load(state);
  EXPECT_EQ(player.Create(), 0);
  player.Set(kSingleSample, 1);
  EXPECT_TRUE(reported.Get().empty());
}

TEST_F(LayerboxFilesTest, FileThatGoesKeepsTheTracksForTheState) {
  Write(2);
  Player player(1, 1000);
  Load(player);
  player.GetPlugin().GetTrack(1).volume = 0.75;
  std::filesystem::remove(content.Path("MultiSamples/a"));
  player.Set(kMaximalLength, 5);
  EXPECT_EQ(player.Create(), 0);
  EXPECT_EQ(player.Save().GetAttribute("volume1").ToDouble(), 0.75);
}

TEST_F(LayerboxFilesTest, RowThatDoesNotChangeKeepsTheFile) {
  Write(1);
  Player player(1, 1000);
  Load(player);
  Write(2);
  player.Set(kMaximalLength, 30);
  player.Set(kSingleSample, 0);
  EXPECT_EQ(player.GetPlugin().GetTrackCount(), 1);
  player.Set(kMaximalLength, 3);
  EXPECT_EQ(player.GetPlugin().GetTrackCount(), 2);
}

TEST_F(LayerboxFilesTest, SoloBeyondTheTracksIsNone) {
  Write(2);
  Player player(1, 1000);
  for (const char* const solo : {"2", "15", "16", "-2", "99999999999", "-99999999999"}) {
    Load(player, {{"solo", solo}});
    EXPECT_EQ(player.Save().GetAttribute("solo"), "-1") << solo;
    EXPECT_EQ(player.Play(1)[0][0], 0.375f) << solo;
  }
  Load(player, {{"solo", "1"}});
  EXPECT_EQ(player.Save().GetAttribute("solo"), "1");
}

TEST_F(LayerboxFilesTest, LoudestNotesStayFinite) {
  Write(16);
  Player player(2, 1000);
  Load(player, {{"volume0", "1e308"}, {"volume1", "-1e308"}, {"pan0", "1e308"}, {"pan1", "-inf"}});
  for (std::size_t i = 0; i < 16; ++i) player.GetPlugin().GetTrack(static_cast<int32_t>(i)).volume = 1e308;
  for (const double volume : {1e300, -1e300, 1.0, 0.0}) {
    const Player::Block block = player.Play(12, volume, 1.3);
    for (const float sample : block[0]) ASSERT_TRUE(std::isfinite(sample)) << volume;
  }
}

TEST_F(LayerboxFilesTest, AnyMaximalLengthIsSafe) {
  Write(1, 30000);
  Player player(1, 1000);
  Load(player);
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double seconds : {0.0, -5.0, 1e-9, 0.0015, 1e308, double{NAN}, kInfinity, -kInfinity}) {
    player.Set(kMaximalLength, seconds);
    ASSERT_NE(player.GetPlugin().GetMultiSample(), nullptr) << seconds;
    MWord note = player.Create();
    EXPECT_EQ(player.Call(MService::kCommand, MAsWord("FinishLoading")), 0) << seconds;
    const Player::Block block = player.Compute(note, 200);
    for (const float sample : block[0]) ASSERT_TRUE(std::isfinite(sample)) << seconds;
    player.Close(note);
  }
  EXPECT_TRUE(reported.Get().empty());
}

TEST_F(LayerboxFilesTest, SingleSampleOfAnotherPluginTurnsIntoLayersForBoth) {
  Write(1, 10);
  Player single(1, 1000), normal(1, 1000);
  Load(single, {{"parametersinglesample", "1"}});
  EXPECT_TRUE(single.GetPlugin().GetMultiSample()->IsSingle());
  Load(normal);
  EXPECT_EQ(single.GetPlugin().GetMultiSample(), normal.GetPlugin().GetMultiSample());
  EXPECT_FALSE(single.GetPlugin().GetMultiSample()->IsSingle());
}

TEST_F(LayerboxFilesTest, TracksThatAreNotCompleteSoundAsTheTakeIsRead) {
  MultiSampleInTest file;
  file.tracks.resize(2, file.tracks[0]);
  file.takes = {{1, 0, {TrackInTest::Constant(0.25f, 10), TrackInTest::Constant(0.5f, 3000)}}};
  content.GetFolder().WriteFile("MultiSamples/a", file.Make());
  Player player(1, 1000);
  Load(player);
  // At its own rate a take that is not there as a whole sounds as far as its beginning was kept apart.
  std::filesystem::resize_file(content.Path("MultiSamples/a"), 11000);
  EXPECT_EQ(player.Play(1)[0][0], 0.5f);
  EXPECT_NEAR(player.Play(2, 1, 1.5)[0][1], 0.75, 1e-6);
}

}  // namespace
