// Vinylrake beside a plain model, over random recordings, curves, notes and blocks.

#include <gtest/gtest.h>

#include "instruments/Vinylrake.h"
#include "tests/instruments/ContentFolder.h"
#include "tests/instruments/RecordingModel.h"
#include "tests/instruments/StreamPlayer.h"

namespace {

using namespace RecordingModel;
using Player = StreamPlayer<VinylrakeAudioStreamPlugin>;

struct Setting {
  Recording recording;
  int32_t rate, channels;
  double length;
  MEnvelopeData volume, scratch;
};

// A note as it is made: the volume's curve may cut the length, over which the places run then.
class Scratch {
 public:
  Scratch(const Setting& setting, double volume, double ratio, int32_t delay)
      : recording_(setting.recording), delay_(delay), step_(ratio) {
    length_ = static_cast<double>(static_cast<int64_t>(setting.rate * setting.length)) / ratio;
    volume_.emplace_back(setting.volume, length_, volume);
    if (volume_[0].GetEnd() < length_) length_ = std::trunc(volume_[0].GetEnd());
    places_.emplace_back(setting.scratch, length_, static_cast<double>(recording_[0].size()));
  }

  MWord CompareBlock(const Player::Block& block, Distance& distance) {
    const auto samples = static_cast<int32_t>(block[0].size());
    if (delay_ >= samples) {
      delay_ -= samples;
      return MStreamResult::kNotStarted;
    }
    const int32_t first = std::exchange(delay_, 0);
    for (int32_t i = 0; i < samples; ++i) {
      const double time = time_ + (i - first) * step_;
      if (i >= first && step_ != 1 && IsNear(time, length_)) continue;
      const bool isSilent = i < first || time >= length_;
      const double place = isSilent ? 0 : std::min(places_[0].GetValue(time), recorded() - 1);
      const double gain = isSilent ? 0 : volume_[0].GetValue(time);
      // In front of the recording a step from one sample to the next is a jump.
      if (place < kRounding && IsNear(place, std::round(place)) && place != 0) continue;
      const auto whole = static_cast<int64_t>(std::min(std::trunc(place), recorded() - 2));
      distance.AddGain(gain);
      for (std::size_t c = 0; c < block.size(); ++c) {
        const Channel& channel = recording_[c % recording_.size()];
        const double expected = gain * Cubic(channel, whole, place - static_cast<double>(whole));
        const double found = block[c][static_cast<std::size_t>(i)];
        distance.Add(found, expected);
      }
    }
    time_ += (samples - first) * step_;
    return time_ >= length_ ? MStreamResult::kEnded : MStreamResult::kSounds;
  }

 private:
  double recorded() const { return static_cast<double>(recording_[0].size()); }

  const Recording& recording_;
  int32_t delay_;
  double time_ = 0, step_, length_;
  std::vector<Curve> volume_, places_;  // one each
};

bool Compare(Player& player, const Setting& setting, TestRandom& random) {
  const double volume = random.Real(-1, 2), ratio = RandomRatio(random);
  const int32_t delay = random.OneIn(2) ? 0 : random.Below(900);
  const std::vector<int32_t> sizes = RandomBlocks(random);
  Scratch note(setting, volume, ratio, delay);
  MWord handle = player.Create(volume, ratio, delay);
  EXPECT_NE(handle, 0);
  int32_t behind = 0;
  Distance distance;
  for (std::size_t done = 0, next = 0; done < 6000 && behind < 3; ++next) {
    const int32_t size = sizes[std::min(next, sizes.size() - 1)];
    const Player::Block block = player.Compute(handle, size, {size});
    const MWord result = note.CompareBlock(block, distance);
    EXPECT_EQ(player.GetResult(), result);
    behind += result == MStreamResult::kEnded;
    done += static_cast<std::size_t>(size);
  }
  player.Close(handle);
  EXPECT_LT(distance.GetShare(), 5e-6) << "ratio " << ratio;
  return behind > 0;
}

TEST(VinylrakeOracle, SoundsAsTheModelSounds) {
  TestRandom random;
  const ContentFolder content;
  int32_t ended = 0;
  for (int32_t round = 0; round < 70; ++round) {
    SCOPED_TRACE(round);
    Setting setting = {RandomRecording(random, random.Integer(1, 8), RandomLength(random, 4000)),
                       RandomRate(random),
                       random.Integer(1, 10),
                       random.Real(0.01, 0.1),
                       {},
                       {}};
    content.WriteSample("Samples/a.wav", setting.recording, RandomRate(random));
    Player player(setting.channels, setting.rate);
    ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
    player.Set(0, setting.length);
    setting.volume = player.GetPlugin().GetEnvelope();
    setting.scratch = player.GetPlugin().GetScratch();
    if (!random.OneIn(3)) setting.volume = RandomCurve(random, 0, 1);
    if (!random.OneIn(4))
      setting.scratch = RandomCurve(random, random.OneIn(3) ? -0.3 : 0, random.OneIn(3) ? 1.3 : 1);
    player.GetPlugin().GetEnvelope() = setting.volume;
    player.GetPlugin().GetScratch() = setting.scratch;
    for (int32_t note = 0; note < 2; ++note) ended += Compare(player, setting, random);
    if (HasFailure()) return;
  }
  EXPECT_GT(ended, 40);
}

}  // namespace
