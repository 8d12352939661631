#include "instruments/Playbox.h"

#include <gtest/gtest.h>

#include "core/MAudioBuffer.h"
#include "instruments/Vinylrake.h"
#include "tests/common/ReportedTexts.h"
#include "tests/common/TestRandom.h"
#include "tests/instruments/ContentFolder.h"
#include "tests/instruments/RecordingModel.h"
#include "tests/instruments/StreamPlayer.h"

namespace {

using Player = StreamPlayer<PlayboxAudioStreamPlugin>;
using Channels = std::vector<std::vector<float>>;

Channels Noise(std::size_t channels, std::size_t length) {
  TestRandom random(11);
  Channels noise(channels, std::vector<float>(length));
  for (std::vector<float>& channel : noise)
    for (float& sample : channel) sample = static_cast<float>(random.Real(-1, 1));
  return noise;
}

class PlayboxTest : public testing::Test {
 protected:
  ContentFolder content;
  ReportedTexts reported;
};

TEST_F(PlayboxTest, WithoutASampleMakesNoStream) {
  Player player;
  EXPECT_EQ(player.Create(), 0);
  EXPECT_TRUE(reported.Get().empty());
}

TEST_F(PlayboxTest, PlaysTheSamplesThemselvesAtTheirOwnRate) {
  const Channels noise = Noise(2, 1000);
  content.WriteSample("Samples/a.wav", noise);
  Player player;
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  MWord note = player.Create();
  const Player::Block block = player.Compute(note, 1024);
  EXPECT_EQ(player.GetResult(), MStreamResult::kEnded);
  for (std::size_t c = 0; c < 2; ++c)
    for (std::size_t i = 0; i < 1024; ++i) ASSERT_EQ(block[c][i], i < 1000 ? noise[c][i] : 0);
  player.Compute(note, 64);
  EXPECT_EQ(player.GetResult(), MStreamResult::kEnded);
  player.Close(note);
}

TEST_F(PlayboxTest, VolumeIsLinear) {
  content.WriteSample("Samples/a.wav", {{0.5f, -0.25f}});
  Player player(1);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  EXPECT_EQ(player.Play(3, 0.5)[0], (std::vector<float>{0.25f, -0.125f, 0}));
}

TEST_F(PlayboxTest, DelayIsAPlaceInTheSample) {
  content.WriteSample("Samples/a.wav", Noise(1, 400), 1000);
  for (const double ratio : {0.5, 1.0, 2.0})
    for (const double delay : {-0.2, 0.0, 0.2}) {
      Player player(1, 1000);
      ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
      player.Set(0, delay);
      const Player::Block block = player.Play(2000, 1, ratio);
      const auto silent = static_cast<std::size_t>(std::max(delay * 1000 / ratio, 0.0));
      for (std::size_t i = 0; i < silent; ++i) ASSERT_EQ(block[0][i], 0);
      EXPECT_EQ(block[0][silent], Noise(1, 400)[0][delay < 0 ? 200 : 0]) << ratio << " " << delay;
    }
}

TEST_F(PlayboxTest, OtherSpeedsReadTheCubicUpToBothEndsOfTheSample) {
  const Channels noise = Noise(2, 1001);
  // Rate of the sample, rate of the output, ratio.
  const std::tuple<int32_t, int32_t, double> notes[] = {{44100, 44100, 0.5}, {44100, 44100, 1.5},
                                                        {44100, 44100, 2},   {48000, 44100, 1},
                                                        {44100, 48000, 1},   {48000, 44100, 1.5}};
  for (const auto& [recorded, rate, ratio] : notes) {
    content.WriteSample("Samples/a.wav", noise, recorded);
    Player player(2, rate);
    ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
    const double speed = recorded * ratio / rate;
    const auto length = static_cast<int32_t>(std::ceil(1001 / speed));
    MWord note = player.Create(0.5, ratio);
    const Player::Block block = player.Compute(note, length, {length - 1, 1});
    EXPECT_EQ(player.GetResult(), MStreamResult::kEnded) << speed;
    for (std::size_t c = 0; c < 2; ++c)
      for (std::size_t i = 0; i < block[c].size(); ++i)
        ASSERT_NEAR(block[c][i], 0.5 * RecordingModel::Hear(noise[c], static_cast<double>(i) * speed, speed),
                    1e-6)
            << speed << " at " << i;
    player.Close(note);
    note = player.Create(0.5, ratio);
    player.Compute(note, length - 1);
    EXPECT_EQ(player.GetResult(), MStreamResult::kSounds) << speed;
    player.Close(note);
  }
}

TEST_F(PlayboxTest, DelayCountsSamplesOfTheOutputAndIsTruncated) {
  const Channels noise = Noise(1, 400);
  content.WriteSample("Samples/a.wav", noise, 1000);
  for (const int32_t rate : {500, 1000, 1600})
    for (const double ratio : {0.5, 1.0, 2.0})
      for (const double delay : {-0.2, -0.0999, 0.0, 0.0999, 0.2}) {
        Player player(1, rate);
        ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
        player.Set(0, delay);
        const double speed = 1000 * ratio / rate;
        const double start = -std::trunc(delay * rate);
        const Player::Block block = player.Play(2500, 1, ratio);
        for (std::size_t i = 0; i < 2500; ++i)
          ASSERT_NEAR(block[0][i],
                      RecordingModel::Hear(noise[0], start + static_cast<double>(i) * speed, speed), 2e-6)
              << rate << " " << ratio << " " << delay << " at " << i;
      }
}

TEST_F(PlayboxTest, StreamOutlivesTheReplacementOfItsSample) {
  content.WriteSample("Samples/a.wav", {std::vector<float>(600, 0.5f)});
  content.WriteSample("Samples/b.wav", {std::vector<float>(600, 0.25f)});
  Player player(1);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  MWord first = player.Create();
  player.Compute(first, 100);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "b.wav"));
  MWord second = player.Create();
  EXPECT_EQ(player.Compute(second, 1)[0][0], 0.25f);
  EXPECT_EQ(player.Compute(first, 1)[0][0], 0.5f);
  EXPECT_EQ(SonvelleConfiguration::Get()->sampleCache.GetCount(), 2);
  player.Close(first);
  EXPECT_EQ(SonvelleConfiguration::Get()->sampleCache.GetCount(), 1);
  player.Close(second);
}

TEST_F(PlayboxTest, TwoPluginsShareOneBufferAndOneMayGo) {
  content.WriteSample("Samples/a.wav", {std::vector<float>(10, 0.5f)});
  Player player(1);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  {
    StreamPlayer<VinylrakeAudioStreamPlugin> other;
    ASSERT_TRUE(other.Import(content.Text("Samples"), "A.wav"));  // the same path but for case
    EXPECT_EQ(other.GetPlugin().GetSample(), player.GetPlugin().GetSample());
    EXPECT_EQ(SonvelleConfiguration::Get()->sampleCache.GetCount(), 1);
  }
  EXPECT_EQ(player.Play(1)[0][0], 0.5f);
}

TEST_F(PlayboxTest, TwoFilesWhoseNamesDifferInCaseAreTwo) {
  content.WriteSample("Samples/a.wav", {{0.5f}});
  content.WriteSample("Samples/A.wav", {{0.25f}});
  Player player(1), other(1);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  ASSERT_TRUE(other.Import(content.Text("Samples"), "A.wav"));
  EXPECT_EQ(player.Play(1)[0][0], 0.5f);
  EXPECT_EQ(other.Play(1)[0][0], 0.25f);
}

TEST_F(PlayboxTest, ReloadByTheOnlyHolderReadsTheChangedFile) {
  content.WriteSample("Samples/a.wav", {{0.5f}});
  Player player(1);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  content.WriteSample("Samples/a.wav", {{0.75f}});
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  EXPECT_EQ(player.Play(1)[0][0], 0.75f);
}

TEST_F(PlayboxTest, EnvelopeFollowsThePlaceAndAnEarlyEndCutsTheNote) {
  content.WriteSample("Samples/a.wav", {std::vector<float>(1001, 0.5f)});
  Player player(1);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  MEnvelopeData& envelope = player.GetPlugin().GetEnvelope();
  envelope.Clear();
  envelope.Add(0, 1);
  envelope.Add(0.5, 0);
  envelope.Add(1, 0);
  MWord note = player.Create(1, 2);
  envelope.Clear();  // reaches later notes only
  const Player::Block block = player.Compute(note, 250, {250});
  EXPECT_EQ(player.GetResult(), MStreamResult::kEnded);
  for (std::size_t i = 1; i < 250; ++i)
    ASSERT_NEAR(block[0][i], 0.5 * (1 - 2.0 * static_cast<double>(i) / 500.5), 1e-5);
  player.Close(note);
}

TEST_F(PlayboxTest, ImportFromBelowTheRootCopiesNothing) {
  content.WriteSample("Samples/Drums/Loud/a.wav", {{0.5f}});
  content.WriteSample("Samples2/a.wav", {{0.25f}});
  Player player(1);
  ASSERT_TRUE(player.Import(content.Text("Samples/Drums/Loud"), "a.wav"));
  MXMLItem& state = player.Save();
  EXPECT_EQ(state.GetAttribute("subpath"), "Drums/Loud");
  EXPECT_EQ(state.GetAttribute("CustomSamplePath"), "0");
  EXPECT_EQ(state.GetAttribute("filename"), "a.wav");
  EXPECT_FALSE(content.Has("Samples/Imported"));
  ASSERT_TRUE(player.Import(content.Text("Samples2"), "a.wav"));
  const std::string copy = "Imported" + content.Path("Samples2");
  EXPECT_EQ(Utf8(player.Save().GetAttribute("subpath")), copy);
  EXPECT_TRUE(content.Has("Samples/" + copy + "/a.wav"));
  EXPECT_EQ(player.Play(1)[0][0], 0.25f);
}

TEST_F(PlayboxTest, FailedImportIsReportedAndTheStateKeepsTheName) {
  Player player;
  EXPECT_FALSE(player.Import(content.Text("Samples/none"), "a.wav"));
  EXPECT_EQ(player.Create(), 0);
  MXMLItem& state = player.Save();
  EXPECT_EQ(state.GetAttribute("subpath"), "none");
  EXPECT_EQ(state.GetAttribute("filename"), "a.wav");
  ASSERT_EQ(reported.Get().size(), 1u);
  EXPECT_NE(reported.Get()[0].find("'PlayboxAudioStreamPlugin::LoadState'"), std::string::npos);
  EXPECT_FALSE(player.Import(content.Text("nowhere"), "a.wav"));
  content.WriteSample("Samples/none/a.wav", {{0.5f}});
  player.Load(state);
  EXPECT_EQ(player.Play(1)[0][0], 0.5f);
}

TEST_F(PlayboxTest, OtherCommandsAreUnknown) {
  Player player;
  EXPECT_EQ(player.Call(MService::kCommand, MAsWord("importsample")), -1);
  EXPECT_EQ(player.Call(MService::kCommand, MAsWord("ImportSample")), 1);
}

TEST_F(PlayboxTest, StateComesBackWithTheSameTextAndAudio) {
  content.WriteSample("own/x/a.wav", Noise(2, 500), 48000);
  MXMLItem state("state");
  state.SetAttribute("parameterdelay", "-0.0015");
  state.SetAttribute("SUBPATH", "x");
  state.SetAttribute("customsamplepath", "1");
  state.SetAttribute("FileName", "a.wav");
  MXMLItem& envelope = state.AddSubItem("envelope");
  for (const char* const x : {"0", "0.75", "1"}) {
    MXMLItem& point = envelope.AddSubItem("Point");
    point.SetAttribute("x", MString::Literal(x));
    point.SetAttribute("y", MString::Literal(x));
  }
  Player player, other;
  player.Load(state);
  MXMLItem& saved = player.Save();
  EXPECT_EQ(saved.GetAttribute("parameterdelay"), "-0.0015");
  EXPECT_EQ(saved.GetAttribute("subpath"), "x");
  EXPECT_EQ(saved.GetAttribute("CustomSamplePath"), "1");
  other.Load(saved);
  const Player::Block block = player.Play(600, 0.7, 1.3);
  EXPECT_EQ(block, other.Play(600, 0.7, 1.3));
  EXPECT_NE(block[0][200], 0);
  MXMLItem empty("state");
  player.Load(empty);
  EXPECT_EQ(player.Create(), 0);
  EXPECT_EQ(player.GetPlugin().GetEnvelope()[0].y, 1);
}

TEST_F(PlayboxTest, CollectionNamesTheFileOrCopiesItFromTheOwnFolder) {
  content.WriteSample("Samples/a.wav", {{0.5f}});
  content.WriteSample("own/x:y/b.wav", {{0.25f}});
  Player player(1);
  MCollectedFiles files;
  player.Call(MService::kCollectFiles, MAsWord(&files));
  EXPECT_EQ(files.count, 0);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  player.Call(MService::kCollectFiles, MAsWord(&files));
  ASSERT_EQ(files.count, 1);
  EXPECT_EQ(Utf8(files.path[0]), content.Path("Samples/a.wav"));
  MXMLItem state("state");
  state.SetAttribute("subpath", "../own/x:y");
  state.SetAttribute("CustomSamplePath", "1");
  state.SetAttribute("filename", "b.wav");
  player.Load(state);
  player.Call(MService::kCollectFiles, MAsWord(&files));
  ASSERT_EQ(files.count, 2);
  MXMLItem& saved = player.Save();
  const std::string subpath = Utf8(saved.GetAttribute("subpath"));
  EXPECT_EQ(subpath.substr(0, 9), "Imported/");
  EXPECT_EQ(subpath.substr(subpath.size() - 8), "/own/x-y");
  EXPECT_EQ(subpath.find(".."), std::string::npos);
  EXPECT_EQ(saved.GetAttribute("CustomSamplePath"), "0");
  EXPECT_EQ(Utf8(files.path[1]), content.Path("Samples/" + subpath + "/b.wav"));
  EXPECT_TRUE(content.Has("Samples/" + subpath + "/b.wav"));
  EXPECT_EQ(player.Save().GetAttribute("CustomSamplePath"), "1");  // once
  files.count = MCollectedFiles::kMost;
  player.Call(MService::kCollectFiles, MAsWord(&files));
  EXPECT_EQ(files.count, MCollectedFiles::kMost);
}

TEST_F(PlayboxTest, OutputsTakeTheChannelsInTurn) {
  const Channels channels = {{0.25f}, {0.5f}, {0.75f}};
  for (std::size_t recorded = 1; recorded <= 3; ++recorded) {
    content.WriteSample("Samples/a.wav", {channels.begin(), channels.begin() + static_cast<int>(recorded)});
    for (std::size_t outputs = 1; outputs <= 5; ++outputs) {
      Player player(static_cast<int32_t>(outputs));
      ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
      const Player::Block block = player.Play(1);
      for (std::size_t c = 0; c < outputs; ++c)
        EXPECT_EQ(block[c], channels[c % recorded]) << recorded << " to " << outputs;
    }
  }
}

TEST(Playbox, WithoutAConfigurationIsSilentWithoutAReport) {
  const ReportedTexts reported;
  Player player;
  EXPECT_FALSE(player.Import("/tmp", "a.wav"));
  EXPECT_EQ(player.Create(), 0);
  EXPECT_TRUE(reported.Get().empty());
}

}  // namespace
