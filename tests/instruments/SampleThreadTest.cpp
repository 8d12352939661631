// For ThreadSanitizer: instruments that play files, while other threads load, import and read. Whatever the
// threads touch has to be atomic or locked.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "audiofiles/MMultiSample.h"
#include "instruments/Layerbox.h"
#include "instruments/Playbox.h"
#include "instruments/Vinylrake.h"
#include "tests/audiofiles/MultiSampleInTest.h"
#include "tests/common/ReportedTexts.h"
#include "tests/instruments/ContentFolder.h"
#include "tests/instruments/StreamPlayer.h"

namespace {

constexpr int32_t kRounds = 30;

// Plays notes on a thread of its own until it is stopped.
template <typename Plugin>
class Playing {
 public:
  explicit Playing(StreamPlayer<Plugin>& player)
      : thread_([&player, this] {
          for (int32_t i = 0; !isDone_ || notes_ == 0; ++i) {
            MWord note = player.Create(0.2 * (i % 6), i % 2 == 0 ? 1 : 1.3, i % 100);
            for (const auto& channel : player.Compute(note, 900, {64, 300}))
              for (const float sample : channel) areFinite_ = areFinite_ && std::isfinite(sample);
            notes_ += note != 0;
            player.Close(note);
          }
        }) {}
  ~Playing() {
    isDone_ = true;
    thread_.join();
    EXPECT_TRUE(areFinite_);
    EXPECT_GT(notes_, 0);
  }

 private:
  std::atomic<bool> isDone_ = false;
  bool areFinite_ = true;
  int32_t notes_ = 0;
  std::thread thread_;
};

class SampleThreadTest : public testing::Test {
 protected:
  // Layers of long takes.
  void WriteMultiSample(const std::string& name, uint32_t flags) {
    MultiSampleInTest file;
    file.tracks.resize(2, file.tracks[0]);
    for (int32_t i = 0; i < 8; ++i) {
      const TrackInTest track = TrackInTest::Constant(0.1f, 4000 + i);
      file.takes.push_back({0.1 + 0.1 * i, i / 2, {track, track}});
    }
    content.GetFolder().WriteFile("MultiSamples/" + name, file.Make(flags));
  }
  static void LoadFile(StreamPlayer<LayerboxAudioStreamPlugin>& player, const char* name) {
    MXMLItem state("state");
    state.SetAttribute("filename", MString::Literal(name));
    player.Load(state);
  }

  ContentFolder content;
  ReportedTexts reported;
};

template <typename Plugin>
class SamplePluginThreadTest : public SampleThreadTest {};

using SamplePlugins = testing::Types<PlayboxAudioStreamPlugin, VinylrakeAudioStreamPlugin>;
TYPED_TEST_SUITE(SamplePluginThreadTest, SamplePlugins);

TYPED_TEST(SamplePluginThreadTest, NotesPlayWhileAnotherThreadLoadsAndImports) {
  this->content.WriteSample("Samples/a.wav", {std::vector<float>(700, 0.5f)});
  this->content.WriteSample("own/b.wav", {std::vector<float>(300, 0.25f), std::vector<float>(300, 0.5f)});
  StreamPlayer<TypeParam> player(2, 1000), other(2, 1000);
  ASSERT_TRUE(player.Import(this->content.Text("Samples"), "a.wav"));
  const Playing<TypeParam> playing(player);
  for (int32_t i = 0; i < kRounds; ++i) {
    player.Import(this->content.Text("own"), "b.wav");
    player.Set(0, 0.01 * i);
    MXMLItem& state = player.Save();
    player.Import(this->content.Text("Samples"), MString::Literal(i % 3 == 0 ? "missing.wav" : "a.wav"));
    other.Load(state);  // shares the sample
    player.Load(state);
    MCollectedFiles files;
    player.Call(MService::kCollectFiles, MAsWord(&files));
  }
  player.Import(this->content.Text("Samples"), "a.wav");
  ReportedTexts::Clear();
}

TEST_F(SampleThreadTest, LayerboxPlaysWhileAnotherThreadLoadsAndChangesRows) {
  WriteMultiSample("a", 0);
  WriteMultiSample("b", MLargeResourceFile::kItemsCompressed);
  StreamPlayer<LayerboxAudioStreamPlugin> player(2, 1000);
  LoadFile(player, "a");
  const Playing<LayerboxAudioStreamPlugin> playing(player);
  for (int32_t i = 0; i < kRounds; ++i) {
    LoadFile(player, i % 2 == 0 ? "b" : "a");
    for (const int32_t row : {0, 1, 2}) player.Set(row, row == 1 ? 1 + i % 3 : i % 2);
    player.Load(player.Save());
    player.Call(MService::kCommand, MAsWord("FinishLoading"));
  }
}

TEST_F(SampleThreadTest, LayerboxPlaysTheBeginningWhileTheRestIsRead) {
  WriteMultiSample("a", MLargeResourceFile::kItemsCompressed);
  for (int32_t round = 0; round < 5; ++round) {
    StreamPlayer<LayerboxAudioStreamPlugin> player(2, 1000);
    LoadFile(player, "a");
    for (int32_t i = 1; i <= 8; ++i) {
      MWord note = player.Create(0.125 * i);
      const auto block = player.Compute(note, 1000, {64});
      EXPECT_GT(block[0][999], 0);
      EXPECT_EQ(block[0][999], block[0][0]);
      player.Close(note);
    }
    if (round % 2 == 0) continue;  // is destroyed while it reads
    EXPECT_EQ(player.Call(MService::kCommand, MAsWord("FinishLoading")), 0);
  }
}

TEST_F(SampleThreadTest, OneOfTwoThatShareAMultiSampleMayGo) {
  WriteMultiSample("a", 0);
  StreamPlayer<LayerboxAudioStreamPlugin> player(2, 1000);
  LoadFile(player, "a");
  const Playing<LayerboxAudioStreamPlugin> playing(player);
  for (int32_t round = 0; round < kRounds; ++round) {
    StreamPlayer<LayerboxAudioStreamPlugin> other(2, 1000);
    LoadFile(other, "a");
    EXPECT_EQ(other.GetPlugin().GetMultiSample(), player.GetPlugin().GetMultiSample());
    other.Play(300, 0.1 * (round % 10));
  }
}

TEST_F(SampleThreadTest, ManyThreadsWaitForOneMultiSample) {
  WriteMultiSample("a", MLargeResourceFile::kItemsCompressed);
  StreamPlayer<LayerboxAudioStreamPlugin> player(1, 1000), other(1, 1000);
  LoadFile(player, "a");
  LoadFile(other, "a");
  std::vector<std::thread> threads;
  for (auto* const each : {&player, &other})
    threads.emplace_back([each] {
      for (int32_t i = 0; i < 8; ++i) {
        each->Play(10, 0.125 * i);
        EXPECT_EQ(each->Call(MService::kCommand, MAsWord("FinishLoading")), 0);
      }
    });
  for (std::thread& thread : threads) thread.join();
  const MMultiSample* const shared = player.GetPlugin().GetMultiSample();
  for (int32_t take = 0; take < 8; ++take) EXPECT_TRUE(shared->GetTake(take).IsLoaded()) << take;
}

}  // namespace
