// Layerbox beside a plain model, over random multisamples, settings, notes and blocks.

#include <gtest/gtest.h>

#include "dsp/MRandomSequence.h"
#include "instruments/Layerbox.h"
#include "tests/audiofiles/MultiSampleInTest.h"
#include "tests/instruments/ContentFolder.h"
#include "tests/instruments/LayerboxModel.h"
#include "tests/instruments/StreamPlayer.h"

namespace {

using namespace LayerboxModel;
using Player = StreamPlayer<LayerboxAudioStreamPlugin>;

constexpr const char* kFile = "MultiSamples/Kit/a.qxMultiSample";

// A track of floats or of 16 bits; then the recording is what these say.
TrackInTest MakeTrack(Recording& recording, bool isFloat) {
  TrackInTest track;
  track.channels = static_cast<int32_t>(recording.size());
  track.length = static_cast<int32_t>(recording[0].size());
  track.bits = isFloat ? 32 : 16;
  for (std::size_t i = 0; i < recording[0].size(); ++i)
    for (auto& channel : recording) {
      const auto whole = static_cast<int16_t>(channel[i] * 32767);
      if (!isFloat) channel[i] = static_cast<float>(whole * 3.0518509447574615e-05);
      if (isFloat)
        track.bytes.append(reinterpret_cast<const char*>(&channel[i]), sizeof(float));
      else
        track.bytes.append(reinterpret_cast<const char*>(&whole), sizeof whole);
    }
  return track;
}

// Everything of one round.
struct Round {
  TestRandom& random;
  const ContentFolder& content;
  MultiSampleInTest file;
  std::vector<LayerboxModel::Take> takes;
  Setting setting;
  int32_t channels = 2;
  double maximalSeconds = 20;
  MXMLItem state = MXMLItem("state");

  double Write(const char* key, const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    state.SetAttribute(Buffer(key), Buffer(text));
    return std::strtod(text, nullptr);
  }

  void MakeFile() {
    file.rate = random.OneOf<int32_t>({150, 400, 1000});
    file.tracks.clear();
    const int32_t tracks = random.OneIn(8) ? 16 : random.Integer(1, 4);
    for (int32_t t = 0; t < tracks; ++t) {
      setting.tracks.push_back({random.Integer(0, 1500) / 1000.0, random.Integer(-10, 10) / 10.0, true});
      file.tracks.push_back("<track name=\"t\" volume=\"" + std::to_string(setting.tracks.back().volume) +
                            "\" pan=\"" + std::to_string(setting.tracks.back().pan) + "\"/>");
    }
    double loudness = random.Integer(1, 50) / 1000.0;
    const int32_t layers = random.Integer(1, 4);
    for (int32_t layer = 0; layer < layers; ++layer)
      for (int32_t take = random.Integer(1, 4); take > 0; --take) {
        MakeTake(loudness, 3 * layer);
        loudness += random.Integer(0, 400) / 1000.0;
      }
    content.GetFolder().WriteFile(kFile, file.Make(random.OneOf<uint32_t>({0, 0, 1, 2, 3, 5, 6, 7})));
  }
  void MakeTake(double loudness, int32_t group) {
    LayerboxModel::Take take;
    take.loudness = loudness;
    take.group = group;
    TakeInTest written{loudness, group, {}};
    const int32_t length = RecordingModel::RandomLength(random, 2000);
    for (std::size_t t = 0; t < setting.tracks.size(); ++t) {
      const int32_t own = random.OneIn(4) ? RecordingModel::RandomLength(random, 2000) : length;
      take.tracks.push_back(
          RecordingModel::RandomRecording(random, random.Integer(1, random.OneIn(4) ? 8 : 2), own));
      written.tracks.push_back(MakeTrack(take.tracks.back(), !random.OneIn(4)));
    }
    takes.push_back(take);
    file.takes.push_back(written);
  }

  void MakeState() {
    state.SetAttribute("subpath", "Kit");
    state.SetAttribute("filename", "a.qxMultiSample");
    if (random.OneIn(2)) maximalSeconds = Write("parametermaxlength", "%.4f", random.Real(1, 5));
    if (random.OneIn(2)) setting.delay = Write("parameterdelay", "%.4f", random.Real(-0.2, 0.2));
    setting.isSingle = Write("parametersinglesample", "%g", random.OneIn(4)) != 0;
    if (random.OneIn(4))
      setting.solo = static_cast<int32_t>(
          Write("solo", "%g", random.Below(static_cast<int32_t>(setting.tracks.size()))));
    for (std::size_t t = 0; t < setting.tracks.size(); ++t) {
      const std::string number = std::to_string(t);
      if (random.OneIn(2))
        setting.tracks[t].volume = Write(("volume" + number).c_str(), "%.9g", random.Real(-1, 2));
      if (random.OneIn(2))
        setting.tracks[t].pan = Write(("pan" + number).c_str(), "%.9g", random.Real(-1, 1));
      if (random.OneIn(3))
        setting.tracks[t].isEnabled = Write(("enabling" + number).c_str(), "%g", random.Below(2)) != 0;
    }
  }
};

struct Heard {
  int32_t ended = 0, loud = 0, requested = 0;
};

// Plays one note in both until some blocks behind its end. What it requests is read before it sounds.
void Compare(Player& player, const Round& round, MultiSample& file, Heard& heard) {
  TestRandom& random = round.random;
  const double volume = random.Real(-0.2, 1.3), ratio = RecordingModel::RandomRatio(random);
  const int32_t delay = random.OneIn(2) ? 0 : random.Below(900);
  const std::vector<int32_t> sizes = RecordingModel::RandomBlocks(random);
  Random numbers{static_cast<uint32_t>(random.Bits())};
  MRandomSequence::Set(numbers.x);
  int32_t request = -1;
  Note note(round.setting, file, volume, ratio, delay, numbers, request);
  MWord handle = player.Create(volume, ratio, delay);
  ASSERT_NE(handle, 0);
  ASSERT_EQ(MRandomSequence::Get(), numbers.x);
  ASSERT_EQ(player.Call(MService::kCommand, MAsWord("FinishLoading")), 0);
  if (request >= 0) file.Serve(request);
  heard.requested += request >= 0;
  int32_t behind = 0;
  RecordingModel::Distance distance;
  for (std::size_t done = 0, next = 0; done < 3000 && behind < 3; ++next) {
    const int32_t size = sizes[std::min(next, sizes.size() - 1)];
    done += static_cast<std::size_t>(size);
    const Player::Block block = player.Compute(handle, size, {size});
    if (!note.HasStartedBehind(size)) {
      ASSERT_EQ(player.GetResult(), MStreamResult::kNotStarted);
      continue;
    }
    const auto expected = note.Compute(round.channels, size);
    ASSERT_EQ(player.GetResult(), note.HasEnded() ? MStreamResult::kEnded : MStreamResult::kSounds);
    behind += note.HasEnded();
    for (std::size_t c = 0; c < block.size(); ++c)
      for (std::size_t i = 0; i < block[c].size(); ++i)
        if (!std::isnan(expected[c][i])) distance.Add(block[c][i], expected[c][i]);
  }
  player.Close(handle);
  distance.AddGain(note.GetLoudestGain());
  ASSERT_LT(distance.GetShare(), 2e-6) << "ratio " << ratio << " volume " << volume;
  heard.ended += behind > 0;
  heard.loud += note.GetLoudestGain() > 0.01;
}

TEST(LayerboxOracle, SoundsAsTheModelSounds) {
  TestRandom random;
  const ContentFolder content;
  std::filesystem::create_directories(content.Path("MultiSamples/Kit"));
  Heard heard;
  for (int32_t number = 0; number < 20; ++number) {
    SCOPED_TRACE(number);
    Round round{random, content, {}, {}, {}};
    round.MakeFile();
    round.MakeState();
    round.setting.rate = random.OneOf<int32_t>({150, 400, 1000, 1500});
    round.channels = random.OneOf<int32_t>({1, 2, 2, 2, 3, 5, 8, 10});
    Player player(round.channels, round.setting.rate);
    player.Load(round.state);
    LayerboxAudioStreamPlugin& plugin = player.GetPlugin();
    if (random.OneIn(2)) plugin.GetVelocityCurve() = RecordingModel::RandomCurve(random, 0, 1);
    if (random.OneIn(2)) plugin.GetEnvelope() = RecordingModel::RandomCurve(random, 0, 1);
    round.setting.velocities = plugin.GetVelocityCurve();
    round.setting.envelope = plugin.GetEnvelope();
    MultiSample file(round.takes, round.file.rate, round.maximalSeconds, round.setting.isSingle);
    for (int32_t note = 0; note < 4; ++note) {
      Compare(player, round, file, heard);
      if (HasFatalFailure()) return;
    }
  }
  EXPECT_GT(heard.ended, 30);
  EXPECT_GT(heard.loud, 30);
  EXPECT_GT(heard.requested, 4);
}

}  // namespace
