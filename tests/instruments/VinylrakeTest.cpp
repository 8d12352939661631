#include "instruments/Vinylrake.h"

#include <gtest/gtest.h>

#include "core/MAudioBuffer.h"
#include "dsp/MEnvelopeComputer.h"
#include "tests/common/ReportedTexts.h"
#include "tests/common/TestRandom.h"
#include "tests/instruments/ContentFolder.h"
#include "tests/instruments/RecordingModel.h"
#include "tests/instruments/StreamPlayer.h"

namespace {

using Player = StreamPlayer<VinylrakeAudioStreamPlugin>;

class VinylrakeTest : public testing::Test {
 protected:
  void Write(const std::vector<float>& samples) { content.WriteSample("Samples/a.wav", {samples}, 1000); }

  ContentFolder content;
};

void Draw(MEnvelopeData& curve, std::initializer_list<std::pair<double, double>> points) {
  curve.Clear();
  for (const auto& [x, y] : points) curve.Add(x, y);
}

std::vector<float> Ramp(int32_t length) {
  std::vector<float> ramp;
  for (int32_t i = 0; i < length; ++i) ramp.push_back(static_cast<float>(i) / static_cast<float>(length));
  return ramp;
}

TEST_F(VinylrakeTest, StraightScratchStretchesTheSampleToTheLength) {
  Write(Ramp(500));
  Player player(1, 1000);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  MWord note = player.Create();
  const Player::Block block = player.Compute(note, 1000, {1000});
  EXPECT_EQ(player.GetResult(), MStreamResult::kEnded);
  for (std::size_t i = 4; i < 990; ++i) ASSERT_NEAR(block[0][i], static_cast<double>(i) / 1000, 1e-5);
  player.Close(note);
}

TEST_F(VinylrakeTest, ReversedScratchPlaysBackwards) {
  Write(Ramp(500));
  Player player(1, 1000);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  Draw(player.GetPlugin().GetScratch(), {{0, 1}, {1, 0}});
  const Player::Block block = player.Play(1000);
  for (std::size_t i = 10; i < 990; ++i) ASSERT_NEAR(block[0][i], 1 - static_cast<double>(i) / 1000, 1e-5);
}

TEST_F(VinylrakeTest, ZigzagScratchPlaysForwardAndBack) {
  Write(Ramp(500));
  Player player(1, 1000);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  Draw(player.GetPlugin().GetScratch(), {{0, 0.1}, {0.25, 0.9}, {0.5, 0.3}, {0.8, 0.6}, {1, 0.1}});
  const Player::Block block = player.Play(1000);
  for (std::size_t i = 0; i < 1000; ++i) {
    const double x = static_cast<double>(i) / 1000;
    const double place = x < 0.25  ? 0.1 + x * 3.2
                         : x < 0.5 ? 0.9 - (x - 0.25) * 2.4
                         : x < 0.8 ? 0.3 + (x - 0.5)
                                   : 0.6 - (x - 0.8) * 2.5;
    ASSERT_NEAR(block[0][i], place, 1e-5) << i;
  }
}

TEST_F(VinylrakeTest, RatioActsTwice) {
  Write(Ramp(500));
  for (const double ratio : {0.5, 1.0, 2.0}) {
    Player player(1, 1000);
    ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
    const auto length = static_cast<int32_t>(1000 / (ratio * ratio));
    MWord note = player.Create(1, ratio);
    const Player::Block block = player.Compute(note, length - 1);
    EXPECT_EQ(player.GetResult(), MStreamResult::kSounds) << ratio;
    player.Compute(note, 1);
    EXPECT_EQ(player.GetResult(), MStreamResult::kEnded) << ratio;
    // The cubic bends within two samples of the sample's ends.
    for (int32_t i = length / 200; i < length - length / 100; ++i)
      ASSERT_NEAR(block[0][static_cast<std::size_t>(i)], static_cast<double>(i) / length, 1e-5) << ratio;
    player.Close(note);
  }
}

TEST_F(VinylrakeTest, VolumeThatEndsBehindTheLengthDoesNotExtendIt) {
  Write(Ramp(500));
  Player player(1, 1000);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  Draw(player.GetPlugin().GetEnvelope(), {{0, 1}, {2, 0}, {3, 0}});
  MWord note = player.Create();
  const Player::Block block = player.Compute(note, 1100, {999, 1, 100});
  EXPECT_EQ(player.GetResult(), MStreamResult::kEnded);
  for (std::size_t i = 4; i < 990; ++i) {
    const double x = static_cast<double>(i) / 1000;
    ASSERT_NEAR(block[0][i], x * (1 - x / 2), 1e-5);
  }
  EXPECT_NE(block[0][999], 0);
  for (std::size_t i = 1000; i < 1100; ++i) ASSERT_EQ(block[0][i], 0);
  player.Close(note);
}

TEST_F(VinylrakeTest, VolumeThatEndsEarlyCutsTheLengthAndCompressesTheScratch) {
  Write(Ramp(500));
  Player player(1, 1000);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  Draw(player.GetPlugin().GetEnvelope(), {{0, 1}, {0.4999, 1}, {0.5, 0}, {1, 0}});
  MWord note = player.Create(0.5);
  const Player::Block block = player.Compute(note, 600, {600});
  EXPECT_EQ(player.GetResult(), MStreamResult::kEnded);
  for (std::size_t i = 4; i < 490; ++i) ASSERT_NEAR(block[0][i], 0.5 * static_cast<double>(i) / 500, 1e-5);
  for (std::size_t i = 500; i < 600; ++i) ASSERT_EQ(block[0][i], 0);
  player.Close(note);
}

TEST_F(VinylrakeTest, PlacesAreLimitedAtTheEndAndSilentInFrontOfTheSample) {
  Write(std::vector<float>(100, 0.5f));
  Player player(1, 1000);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  MEnvelopeData& scratch = player.GetPlugin().GetScratch();
  Draw(scratch, {{0, 3}, {0.5, 3}, {0.5001, -3}, {1, -3}});
  const Player::Block block = player.Play(1000);
  EXPECT_EQ(block[0][100], 0.5f);
  EXPECT_EQ(block[0][900], 0);
}

TEST_F(VinylrakeTest, RecordingOfOneSampleIsAConstant) {
  Write({0.5f});
  Player player(1, 1000);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  const Player::Block block = player.Play(1100);
  for (std::size_t i = 0; i < 1100; ++i) ASSERT_EQ(block[0][i], i < 1000 ? 0.5f : 0) << i;
}

TEST_F(VinylrakeTest, RecordingOfTwoSamplesIsTheCubicBetweenThem) {
  const std::vector<float> samples = {0.5f, -0.25f};
  Write(samples);
  Player player(1, 1000);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  const Player::Block block = player.Play(1100);
  for (std::size_t i = 0; i < 1000; ++i) {
    const double place = std::min(static_cast<double>(i) / 500, 1.0);
    ASSERT_NEAR(block[0][i], RecordingModel::Cubic(samples, 0, place), 1e-6) << i;
  }
}

TEST_F(VinylrakeTest, OutputsTakeTheChannelsInTurn) {
  for (int32_t recorded = 1; recorded <= 3; ++recorded) {
    std::vector<std::vector<float>> channels;
    for (int32_t c = 1; c <= recorded; ++c) channels.emplace_back(100, static_cast<float>(c) / 4);
    content.WriteSample("Samples/a.wav", channels, 1000);
    for (int32_t outputs = 1; outputs <= 3; ++outputs) {
      Player player(outputs, 1000);
      ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
      const Player::Block block = player.Play(600);
      for (int32_t c = 0; c < outputs; ++c)
        EXPECT_EQ(block[static_cast<std::size_t>(c)][500], static_cast<float>(c % recorded + 1) / 4)
            << recorded << " to " << outputs;
    }
  }
}

TEST_F(VinylrakeTest, BlocksSplitWithoutATrace) {
  TestRandom random(5);
  std::vector<float> noise(700);
  for (float& sample : noise) sample = static_cast<float>(random.Real(-1, 1));
  Write(noise);
  Player player(2, 1000);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  Draw(player.GetPlugin().GetScratch(), {{0, 0}, {0.3, 0.8}, {0.6, 0.1}, {1, 1}});
  Draw(player.GetPlugin().GetEnvelope(), {{0, 0.2}, {0.4, 1}, {1, 0.5}});
  const Player::Block whole = player.Play(1200, 0.7, 1.1, 37, {1200});
  for (const int32_t size : {1, 63, 64, 441, 512}) {
    const Player::Block split = player.Play(1200, 0.7, 1.1, 37, {size});
    for (std::size_t i = 0; i < 1200; ++i) ASSERT_NEAR(split[1][i], whole[1][i], 1e-6) << size << " " << i;
  }
}

TEST_F(VinylrakeTest, StateHasItsOwnSpelling) {
  Write(Ramp(500));
  Player player(1, 1000), other(1, 1000);
  ASSERT_TRUE(player.Import(content.Text("Samples"), "a.wav"));
  player.Set(0, 0.25);
  Draw(player.GetPlugin().GetScratch(), {{0, 1}, {1, 0}});
  MXMLItem& state = player.Save();
  bool hasName = false;
  for (const auto& attribute : state.GetAttributes()) hasName |= attribute.name == "FileName";
  EXPECT_TRUE(hasName);
  EXPECT_EQ(state.GetAttribute("parameterlength"), "0.2500");
  EXPECT_TRUE(state.HasSubItem("Envelope"));
  EXPECT_TRUE(state.HasSubItem("Scratch"));
  other.Load(state);
  EXPECT_EQ(other.Play(300), player.Play(300));
  MXMLItem empty("state");
  other.Load(empty);
  EXPECT_EQ(other.GetPlugin().GetScratch()[1].y, 1);
}

}  // namespace
