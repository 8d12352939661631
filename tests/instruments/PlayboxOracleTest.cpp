// Playbox beside a plain model, over random recordings, settings, notes and blocks.

#include <gtest/gtest.h>

#include "instruments/Playbox.h"
#include "tests/instruments/ContentFolder.h"
#include "tests/instruments/RecordingModel.h"
#include "tests/instruments/StreamPlayer.h"

namespace {

using namespace RecordingModel;
using Player = StreamPlayer<PlayboxAudioStreamPlugin>;

struct Setting {
  Recording recording;
  int32_t recordedRate, rate, channels;
  double delay;
  MEnvelopeData envelope;
};

Note MakeNote(const Setting& setting, double volume, double ratio, int32_t delay) {
  Note note;
  note.delay = delay;
  note.position = static_cast<double>(-static_cast<int64_t>(setting.delay * setting.rate));
  note.speed = setting.recordedRate * ratio / setting.rate;
  note.volume = volume;
  note.length = static_cast<int32_t>(setting.recording[0].size());
  note.SetEnvelope(setting.envelope);
  return note;
}

// The next block of the model against that of the plug-in. Returns the model's result.
MWord CompareBlock(Note& note, const Recording& recording, const Player::Block& block, Distance& distance) {
  const auto samples = static_cast<int32_t>(block[0].size());
  if (note.delay >= samples) {
    note.delay -= samples;
    return MStreamResult::kNotStarted;
  }
  const int32_t first = std::exchange(note.delay, 0);
  for (int32_t i = 0; i < samples; ++i) {
    const double place = note.position + (i - first) * note.speed;
    const double gain = i < first ? 0 : note.GetGain(place);
    if (i >= first && note.IsAtABorder(place, static_cast<double>(recording[0].size()))) continue;
    distance.AddGain(gain);
    for (std::size_t c = 0; c < block.size(); ++c) {
      const double expected = i < first ? 0 : gain * Hear(recording[c % recording.size()], place, note.speed);
      const double found = block[c][static_cast<std::size_t>(i)];
      distance.Add(found, expected);
    }
  }
  note.position += (samples - first) * note.speed;
  return note.position >= note.length ? MStreamResult::kEnded : MStreamResult::kSounds;
}

// Plays one note in both until some blocks behind its end; whether that was reached.
bool Compare(Player& player, const Setting& setting, TestRandom& random) {
  const double volume = random.Real(-1, 2), ratio = RandomRatio(random);
  const int32_t delay = random.OneIn(2) ? 0 : random.Below(900);
  const std::vector<int32_t> sizes = RandomBlocks(random);
  Note note = MakeNote(setting, volume, ratio, delay);
  MWord handle = player.Create(volume, ratio, delay);
  EXPECT_NE(handle, 0);
  int32_t behind = 0;
  Distance distance;
  for (std::size_t done = 0, next = 0; done < 6000 && behind < 3; ++next) {
    const int32_t size = sizes[std::min(next, sizes.size() - 1)];
    const Player::Block block = player.Compute(handle, size, {size});
    const MWord result = CompareBlock(note, setting.recording, block, distance);
    EXPECT_EQ(player.GetResult(), result);
    behind += result == MStreamResult::kEnded;
    done += static_cast<std::size_t>(size);
  }
  player.Close(handle);
  EXPECT_LT(distance.GetShare(), 2e-6) << "ratio " << ratio;
  return behind > 0;
}

TEST(PlayboxOracle, SoundsAsTheModelSounds) {
  TestRandom random;
  const ContentFolder content;
  int32_t ended = 0;
  for (int32_t round = 0; round < 70; ++round) {
    SCOPED_TRACE(round);
    Setting setting = {RandomRecording(random, random.Integer(1, 8), RandomLength(random, 4000)),
                       RandomRate(random),
                       RandomRate(random),
                       random.Integer(1, 10),
                       random.OneIn(3)   ? 0
                       : random.OneIn(2) ? random.Real(-0.2, 0.2)
                                         : random.Real(-0.02, 0.02),
                       {}};
    content.WriteSample("Samples/a.wav", setting.recording, setting.recordedRate);
    Player player(setting.channels, setting.rate);
    ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
    player.Set(0, setting.delay);
    setting.envelope = player.GetPlugin().GetEnvelope();
    if (!random.OneIn(3)) setting.envelope = RandomCurve(random, 0, 1);
    player.GetPlugin().GetEnvelope() = setting.envelope;
    for (int32_t note = 0; note < 2; ++note) ended += Compare(player, setting, random);
    if (HasFailure()) return;
  }
  EXPECT_GT(ended, 40);
}

}  // namespace
