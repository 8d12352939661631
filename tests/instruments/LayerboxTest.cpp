#include "instruments/Layerbox.h"

#include <gtest/gtest.h>

#include "audiofiles/MMultiSample.h"
#include "dsp/MRandomSequence.h"
#include "tests/audiofiles/MultiSampleInTest.h"
#include "tests/common/ReportedTexts.h"
#include "tests/instruments/ContentFolder.h"
#include "tests/instruments/StreamPlayer.h"

namespace {

using Player = StreamPlayer<LayerboxAudioStreamPlugin>;

std::vector<float> Ramp(int32_t length) {
  std::vector<float> ramp;
  for (int32_t i = 0; i < length; ++i) ramp.push_back(static_cast<float>(i + 1) / 8192);
  return ramp;
}

class LayerboxTest : public testing::Test {
 protected:
  void Write(const MultiSampleInTest& file, uint32_t flags = 0) {
    content.GetFolder().WriteFile("MultiSamples/a.qxMultiSample", file.Make(flags));
  }
  // Loads the file, with further attributes of the state.
  void Load(Player& player, const std::vector<std::pair<const char*, const char*>>& attributes = {}) {
    MXMLItem state("state");
    state.SetAttribute("filename", "a.qxMultiSample");
    for (const auto& [name, value] : attributes)
      state.SetAttribute(MString::Literal(name), MString::Literal(value));
    player.Load(state);
    ASSERT_NE(player.GetPlugin().GetMultiSample(), nullptr);
  }
  static bool FinishLoading(Player& player) {
    return player.Call(MService::kCommand, MAsWord("FinishLoading")) == 0;
  }

  ContentFolder content;
  ReportedTexts reported;
};

// Layers of the loudnesses 0.25, 0.5 and 1, whose samples are 0.1, 0.2 and 0.4 throughout.
MultiSampleInTest ThreeLayers() {
  MultiSampleInTest file;
  file.takes = {{0.25, 0, {TrackInTest::Constant(0.1f, 10)}},
                {0.5, 1, {TrackInTest::Constant(0.2f, 10)}},
                {1, 2, {TrackInTest::Constant(0.4f, 10)}}};
  return file;
}

MultiSampleInTest TwoTracks() {
  MultiSampleInTest file;
  file.tracks = {"<track name=\"a\" volume=\"1\" pan=\"0\"/>",
                 "<track name=\"b\" volume=\"0.5\" pan=\"0\"/>"};
  file.takes = {{1, 0, {TrackInTest::Constant(0.25f, 10), TrackInTest::Constant(0.5f, 10)}}};
  return file;
}

TEST_F(LayerboxTest, WithoutAMultiSampleMakesNoStream) {
  Player player;
  EXPECT_EQ(player.Create(), 0);
  EXPECT_TRUE(FinishLoading(player));
  EXPECT_EQ(player.Call(MService::kCommand, MAsWord("ImportSample")), -1);
}

TEST_F(LayerboxTest, VolumeActsAsVelocityAndAsGain) {
  Write(ThreeLayers());
  Player player(1, 1000);
  Load(player);
  // velocity, sample of its layer, loudness of its take
  const std::tuple<double, double, double> notes[] = {{0.1, 0.1, 0.25}, {0.25, 0.1, 0.25}, {0.3, 0.2, 0.5},
                                                      {0.5, 0.2, 0.5},  {0.6, 0.4, 1},     {1, 0.4, 1},
                                                      {2, 0.4, 1}};
  for (const auto& [v, sample, loudness] : notes)
    EXPECT_NEAR(player.Play(1, v)[0][0], sample * v / loudness * v, 1e-6) << v;
}

TEST_F(LayerboxTest, TakesSofterThanATwentiethAreNotLiftedMore) {
  MultiSampleInTest file = ThreeLayers();
  file.takes[0].loudness = 0.01;
  Write(file);
  Player player(1, 1000);
  Load(player);
  EXPECT_NEAR(player.Play(1, 0.01)[0][0], 0.1 * 0.01 / 0.05 * 0.01, 1e-9);
}

TEST_F(LayerboxTest, VelocityCurveMapsToLayersAndOneLayerPlaysWhateverItSays) {
  Write(ThreeLayers());
  Player player(1, 1000);
  Load(player);
  MEnvelopeData& curve = player.GetPlugin().GetVelocityCurve();
  curve.Clear();
  curve.Add(0, 1);
  curve.Add(1, 0);
  EXPECT_NEAR(player.Play(1, 1)[0][0], 0.1 / 0.25, 1e-6);
  EXPECT_NEAR(player.Play(1, 0.6)[0][0], 0.2 * 0.6 / 0.5 * 0.6, 1e-6);
  EXPECT_NEAR(player.Play(1, 0.1)[0][0], 0.4 * 0.1 * 0.1, 1e-7);
  MultiSampleInTest one = ThreeLayers();
  one.takes.resize(1);
  Write(one);
  Load(player);
  EXPECT_NEAR(player.Play(1, 1)[0][0], 0.1, 1e-7);
  EXPECT_NEAR(player.Play(1, 0.5)[0][0], 0.1 * 0.25, 1e-7);
}

TEST_F(LayerboxTest, TakesAreDrawnFromTheCommonSequence) {
  MultiSampleInTest file;
  for (int32_t i = 0; i < 3; ++i)
    file.takes.push_back({1, 0, {TrackInTest::Constant(0.1f * static_cast<float>(i + 1), 10)}});
  Write(file);
  Player player(1, 1000);
  Load(player);
  MRandomSequence::Set(77);
  player.Play(1);  // draws the third take, and so asks for the layer's other takes
  ASSERT_TRUE(FinishLoading(player));
  MRandomSequence::Set(77);
  uint32_t x = 77;
  for (int i = 0; i < 20; ++i) {
    x = x * 214013 + 2531011;
    ASSERT_NEAR(player.Play(1)[0][0], 0.1 * ((x >> 16) % 3 + 1), 1e-6);
  }
}

TEST_F(LayerboxTest, FirstNoteOfALayerPlaysItsFirstTake) {
  MultiSampleInTest file;
  for (int32_t i = 0; i < 3; ++i)
    file.takes.push_back({1, 0, {TrackInTest::Constant(0.1f * static_cast<float>(i + 1), 10)}});
  Write(file);
  for (uint32_t seed = 0; seed < 10; ++seed) {
    Player player(1, 1000);
    Load(player);
    MRandomSequence::Set(seed * 12345);
    EXPECT_NEAR(player.Play(1)[0][0], 0.1, 1e-6);
    FinishLoading(player);
  }
}

TEST_F(LayerboxTest, LongTakePlaysItsHeadAndGoesOnFromTheWholeTrack) {
  MultiSampleInTest file;
  file.takes = {{1, 0, {TrackInTest::Of(Ramp(6000))}}};
  Write(file);
  Player player(1, 1000);
  Load(player);
  MWord note = player.Create();
  const Player::Block head = player.Compute(note, 1000);
  ASSERT_TRUE(FinishLoading(player));
  const Player::Block rest = player.Compute(note, 5100);
  EXPECT_EQ(player.GetResult(), MStreamResult::kEnded);
  player.Close(note);
  const std::vector<float> ramp = Ramp(6000);
  for (std::size_t i = 0; i < 6100; ++i)
    ASSERT_EQ(i < 1000 ? head[0][i] : rest[0][i - 1000], i < 6000 ? ramp[i] : 0) << i;
}

TEST_F(LayerboxTest, BehindTheHeadIsSilenceUntilTheTakeIsRead) {
  MultiSampleInTest file;
  file.takes = {{1, 0, {TrackInTest::Of(Ramp(3000))}}, {1, 0, {TrackInTest::Of(Ramp(3000))}}};
  Write(file);
  Player player(1, 1000);
  Load(player);
  // What the thread would read is gone.
  std::filesystem::resize_file(content.Path("MultiSamples/a.qxMultiSample"), 11000);
  MWord note = player.Create();
  EXPECT_FALSE(FinishLoading(player));
  const Player::Block block = player.Compute(note, 3000);
  player.Close(note);
  const std::vector<float> ramp = Ramp(3000);
  for (std::size_t i = 0; i < 3000; ++i) ASSERT_EQ(block[0][i], i < 2500 ? ramp[i] : 0);
}

TEST_F(LayerboxTest, TracksAddUpWithTheVolumesOfTheFile) {
  Write(TwoTracks());
  Player player(2, 1000);
  Load(player);
  EXPECT_EQ(player.GetPlugin().GetTrackCount(), 2);
  const Player::Block block = player.Play(1);
  EXPECT_EQ(block[0][0], 0.5f);
  EXPECT_EQ(block[1][0], 0.5f);
}

TEST_F(LayerboxTest, PanMovesTheOtherSideAcross) {
  MultiSampleInTest file;
  TrackInTest stereo = TrackInTest::Of({0.5f, 0.25f});
  stereo.channels = 2;
  stereo.length = 1;
  file.takes = {{1, 0, {stereo}}};
  Write(file);
  for (const double pan : {-1.0, -0.5, 0.0, 0.25, 1.0}) {
    Player player(2, 1000), mono(1, 1000);
    Load(player);
    Load(mono);
    player.GetPlugin().GetTrack(0).pan = pan;
    mono.GetPlugin().GetTrack(0).pan = pan;
    const Player::Block block = player.Play(1);
    const double right = std::max(pan, 0.0), left = std::max(-pan, 0.0);
    EXPECT_NEAR(block[0][0], 0.5 * (1 - right) + 0.25 * left, 1e-7) << pan;
    EXPECT_NEAR(block[1][0], 0.25 * (1 - left) + 0.5 * right, 1e-7) << pan;
    EXPECT_EQ(mono.Play(1)[0][0], 0.5f);
  }
}

TEST_F(LayerboxTest, SoloTrackPlaysAloneEvenIfItIsDisabled) {
  Write(TwoTracks());
  Player player(1, 1000);
  Load(player);
  LayerboxAudioStreamPlugin& plugin = player.GetPlugin();
  plugin.GetTrack(1).isEnabled = false;
  EXPECT_EQ(player.Play(1)[0][0], 0.25f);
  plugin.SetSolo(1);
  EXPECT_EQ(player.Play(1)[0][0], 0.25f);
  plugin.SetSolo(0);
  plugin.GetTrack(0).isEnabled = false;
  EXPECT_EQ(player.Play(1)[0][0], 0.25f);
  plugin.SetSolo(-1);
  EXPECT_EQ(player.Play(1)[0][0], 0);
  plugin.SetSolo(15);  // no track of this file: none
  plugin.GetTrack(1).isEnabled = true;
  EXPECT_EQ(player.Play(1)[0][0], 0.25f);
}

TEST_F(LayerboxTest, TrackOfFiveChannelsFillsTheOutputsInTurn) {
  MultiSampleInTest file;
  TrackInTest track = TrackInTest::Of({0.1f, 0.2f, 0.3f, 0.4f, 0.5f});
  track.channels = 5;
  track.length = 1;
  file.takes = {{1, 0, {track}}};
  Write(file);
  Player player(8, 1000);
  Load(player);
  const Player::Block block = player.Play(1);
  for (std::size_t c = 0; c < 8; ++c) EXPECT_NEAR(block[c][0], 0.1 * static_cast<double>(c % 5 + 1), 1e-7);
}

TEST_F(LayerboxTest, NoteThatStartsInsideABlockSkipsItsDelayedPart) {
  MultiSampleInTest file;
  file.takes = {{1, 0, {TrackInTest::Of(Ramp(100))}}};
  Write(file);
  Player player(1, 1000);
  Load(player);
  const Player::Block block = player.Play(64, 1, 1, 20, {32});
  const std::vector<float> ramp = Ramp(100);
  for (std::size_t i = 0; i < 20; ++i) ASSERT_EQ(block[0][i], 0);
  for (std::size_t i = 20; i < 32; ++i) ASSERT_EQ(block[0][i], ramp[i - 20]);
  for (std::size_t i = 32; i < 64; ++i) ASSERT_EQ(block[0][i], ramp[i]);
}

TEST_F(LayerboxTest, RatioResamplesAndTheDelayIsAPlace) {
  MultiSampleInTest file;
  file.takes = {{1, 0, {TrackInTest::Of(Ramp(1000))}}};
  Write(file);
  Player player(1, 500);
  Load(player, {{"parameterdelay", "-0.1"}});
  const Player::Block block = player.Play(300, 1, 0.75);
  for (std::size_t i = 0; i < 300; ++i)
    ASSERT_NEAR(block[0][i] * 8192, 50 + 1.5 * static_cast<double>(i) + 1, 1e-2) << i;
}

TEST_F(LayerboxTest, SingleSamplePlaysTheLoudestLayersFirstTakeAtFullVelocity) {
  MultiSampleInTest file = ThreeLayers();
  file.takes.push_back({1, 2, {TrackInTest::Constant(0.8f, 10)}});
  Write(file);
  Player player(1, 1000);
  Load(player, {{"parametersinglesample", "1"}});
  EXPECT_TRUE(player.GetPlugin().GetMultiSample()->IsSingle());
  for (int i = 0; i < 8; ++i) EXPECT_NEAR(player.Play(1, 0.1)[0][0], 0.4 * 0.1, 1e-7);
}

TEST_F(LayerboxTest, MaximalLengthAcquiresTheFileAnew) {
  MultiSampleInTest file;
  file.takes = {{1, 0, {TrackInTest::Constant(0.5f, 30000)}}};
  Write(file);
  Player player(1, 1000), other(1, 1000);
  Load(player);
  Load(other);
  EXPECT_EQ(player.GetPlugin().GetMultiSample(), other.GetPlugin().GetMultiSample());
  EXPECT_EQ(player.GetPlugin().GetMultiSample()->GetLongest(), 30000);
  player.GetPlugin().GetTrack(0).volume = 0.5;
  player.Set(1, 1.0);
  EXPECT_NE(player.GetPlugin().GetMultiSample(), other.GetPlugin().GetMultiSample());
  EXPECT_EQ(player.GetPlugin().GetMultiSample()->GetLongest(), 1000);
  EXPECT_EQ(player.GetPlugin().GetTrack(0).volume, 0.5);
  MWord note = player.Create();
  player.Compute(note, 999);
  EXPECT_EQ(player.GetResult(), MStreamResult::kSounds);
  player.Compute(note, 1);
  EXPECT_EQ(player.GetResult(), MStreamResult::kEnded);
  player.Close(note);
  player.Set(1, 25.0);
  EXPECT_EQ(player.GetPlugin().GetMultiSample(), other.GetPlugin().GetMultiSample());
}

TEST_F(LayerboxTest, StreamOutlivesTheReplacementOfItsFile) {
  Write(ThreeLayers());
  Player player(1, 1000);
  Load(player);
  MWord note = player.Create();
  MXMLItem empty("state");
  player.Load(empty);
  EXPECT_EQ(player.Create(), 0);
  EXPECT_NEAR(player.Compute(note, 1)[0][0], 0.4, 1e-7);
  EXPECT_EQ(SonvelleConfiguration::Get()->multiSampleCache.GetCount(), 1);
  player.Close(note);
  EXPECT_EQ(SonvelleConfiguration::Get()->multiSampleCache.GetCount(), 0);
}

TEST_F(LayerboxTest, StateOverridesTheFilesTracks) {
  Write(TwoTracks());
  Player player(2, 1000), other(2, 1000);
  Load(player, {{"volume1", "0.123456789"}, {"PAN0", "-0.5"}, {"enabling1", "1"}, {"solo", "1"}});
  LayerboxAudioStreamPlugin& plugin = player.GetPlugin();
  EXPECT_EQ(plugin.GetTrack(0).volume, 1);
  EXPECT_EQ(plugin.GetTrack(0).pan, -0.5);
  EXPECT_NEAR(plugin.GetTrack(1).volume, 0.123456789, 1e-12);
  MXMLItem& state = player.Save();
  EXPECT_EQ(state.GetAttribute("solo"), "1");
  EXPECT_EQ(state.GetAttribute("volume1"), "0.123456789");
  EXPECT_EQ(state.GetAttribute("enabling0"), "1");
  EXPECT_FALSE(state.HasAttribute("pan2"));
  EXPECT_TRUE(state.HasSubItem("velocity"));
  other.Load(state);
  EXPECT_EQ(other.Play(12, 0.8, 1.2), player.Play(12, 0.8, 1.2));
}

TEST_F(LayerboxTest, StateOfAMissingFileIsReportedAndLosesNothing) {
  Player player;
  MXMLItem state("state");
  state.SetAttribute("subpath", "Drums");
  state.SetAttribute("filename", "none.qxMultiSample");
  state.SetAttribute("solo", "2");
  for (const char* const name : {"volume0", "volume1", "volume2"})
    state.SetAttribute(MString::Literal(name), "0.25");
  state.SetAttribute("pan1", "0.5");
  state.SetAttribute("enabling2", "0");
  player.Load(state);
  EXPECT_EQ(player.Create(), 0);
  EXPECT_EQ(reported.Get().size(), 1u);
  MXMLItem& saved = player.Save();
  EXPECT_EQ(saved.GetAttribute("subpath"), "Drums");
  EXPECT_EQ(saved.GetAttribute("filename"), "none.qxMultiSample");
  EXPECT_EQ(saved.GetAttribute("solo"), "2");
  EXPECT_EQ(saved.GetAttribute("volume2").ToDouble(), 0.25);
  EXPECT_EQ(saved.GetAttribute("pan1").ToDouble(), 0.5);
  EXPECT_EQ(saved.GetAttribute("enabling2"), "0");
}

TEST_F(LayerboxTest, MissingCurvesLeaveTheirsAlone) {
  Write(ThreeLayers());
  Player player(1, 1000);
  Load(player);
  player.GetPlugin().GetVelocityCurve()[1].y = 0.5;
  Load(player);
  EXPECT_EQ(player.GetPlugin().GetVelocityCurve()[1].y, 0.5);
}

TEST_F(LayerboxTest, HostIsToldOfAnotherNumberOfTracks) {
  static int32_t codes[4];
  std::fill(codes, codes + 4, 0);
  const auto callback = [](void*, int32_t code, MServiceArguments*) -> MWord { return ++codes[code & 3]; };
  MHostCallback* const listener = callback;
  Player player(1, 1000);
  player.Call(MService::kAttach, 0, reinterpret_cast<MWord>(listener));
  Write(TwoTracks());
  Load(player);
  EXPECT_EQ(codes[MHostCode::kLayoutChanged], 1);
  Load(player);
  EXPECT_EQ(codes[MHostCode::kLayoutChanged], 1);
}

}  // namespace
