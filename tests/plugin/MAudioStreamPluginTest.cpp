#include "plugin/MAudioStreamPlugin.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "core/MException.h"
#include "core/MGuard.h"
#include "tests/common/CountingFunctions.h"
#include "tests/common/ReportedTexts.h"
#include "tests/common/Texts.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A stream counts 1, 2, 3 and so on, up to 300.
struct Count : MAudioStream {
  int32_t done = 0;
};

class Counter final : public MAudioStreamPlugin {
 public:
  Counter() : MAudioStreamPlugin("Counter::CreateStream") {}

  MWord Serve(int32_t service, MWord a = 0, MWord b = 0, MWord c = 0) {
    MServiceArguments arguments(a, b, c);
    return Service(service, &arguments);
  }
  MWord Create(int32_t delay, double volume = 1, double ratio = 1) {
    MWord handle = 0;
    MStreamRequest request;
    request.delay = delay;
    request.volume = volume;
    request.ratio = ratio;
    request.result = &handle;
    EXPECT_EQ(Serve(MService::kCreateStream, MAsWord(&request)), 0);
    return handle;
  }
  // A block of one channel, in which -1 stands at first.
  std::vector<float> Compute(MWord& handle, int32_t samples, MWord expected) {
    std::vector<float> block(static_cast<std::size_t>(samples), -1.0f);
    float* out[] = {block.data()};
    EXPECT_EQ(Serve(MService::kComputeStream, MAsWord(out), samples, MAsWord(&handle)), expected);
    return block;
  }

  void Update() override { ++updates; }
  MAudioStream* NewStream(const MStreamRequest& request) override {
    if (fails) throw MException("no stream today");
    last = request;
    return empty ? nullptr : new Count;
  }
  int32_t Render(MAudioStream& stream, float** out, int32_t first, int32_t samples) override {
    auto& count = static_cast<Count&>(stream);
    for (int32_t i = first; i < samples; ++i) {
      ++count.done;
      for (int32_t c = 0; c < channels_; ++c)
        out[c][i] = count.done <= 300 ? static_cast<float>(count.done) : 0;
    }
    return count.done >= 300;
  }
  void FreeStream(MAudioStream* stream) override {
    ++freed;
    delete static_cast<Count*>(stream);
  }
  int32_t CollectFiles(MCollectedFiles* files) override {
    files->path[files->count++] = "a.wav";
    return 7;
  }

  using MAudioStreamPlugin::GetRate;

  MStreamRequest last;
  bool fails = false;
  bool empty = false;
  int32_t updates = 0;
  int32_t freed = 0;
};

TEST(MAudioStreamPlugin, ServicesAndResultsHaveTheirNumbers) {
  EXPECT_EQ(MService::kPrepareStreams, 200);
  EXPECT_EQ(MService::kCreateStream, 201);
  EXPECT_EQ(MService::kComputeStream, 202);
  EXPECT_EQ(MService::kStreamQuery, 203);
  EXPECT_EQ(MService::kCloseStream, 204);
  EXPECT_EQ(MService::kCollectFiles, 205);
  EXPECT_EQ(MStreamResult::kSounds, 0);
  EXPECT_EQ(MStreamResult::kEnded, 1);
  EXPECT_EQ(MStreamResult::kNotStarted, 2);
}

TEST(MAudioStreamPlugin, PrepareStoresTheFormatAndUpdates) {
  Counter plugin;
  EXPECT_EQ(plugin.Serve(MService::kPrepareStreams, 2, 48000), 0);
  EXPECT_EQ(plugin.updates, 1);
  EXPECT_EQ(plugin.GetRate(), 48000);
  plugin.Serve(MService::kPrepareStreams, 2, -5);
  EXPECT_EQ(plugin.GetRate(), 1);
}

TEST(MAudioStreamPlugin, DelayOfThousandTakesThreeBlocksAndPartOfTheFourth) {
  Counter plugin;
  plugin.Serve(MService::kPrepareStreams, 1, 48000);
  MWord stream = plugin.Create(1000);
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(plugin.Compute(stream, 256, MStreamResult::kNotStarted), std::vector<float>(256, -1.0f));
  const std::vector<float> block = plugin.Compute(stream, 256, MStreamResult::kSounds);
  for (std::size_t i = 0; i < 232; ++i) EXPECT_EQ(block[i], 0);
  EXPECT_EQ(block[232], 1);
  EXPECT_EQ(block[255], 24);
  plugin.Serve(MService::kCloseStream, MAsWord(&stream));
}

TEST(MAudioStreamPlugin, DelayOfOneBlockSoundsFromTheFirstSampleOfTheNext) {
  Counter plugin;
  plugin.Serve(MService::kPrepareStreams, 1, 48000);
  MWord stream = plugin.Create(64);
  plugin.Compute(stream, 64, MStreamResult::kNotStarted);
  EXPECT_EQ(plugin.Compute(stream, 64, MStreamResult::kSounds)[0], 1);
  plugin.Serve(MService::kCloseStream, MAsWord(&stream));
}

TEST(MAudioStreamPlugin, BlockWithoutSamplesHasNotStarted) {
  Counter plugin;
  plugin.Serve(MService::kPrepareStreams, 1, 48000);
  MWord stream = plugin.Create(0);
  plugin.Compute(stream, 0, MStreamResult::kNotStarted);
  plugin.Serve(MService::kCloseStream, MAsWord(&stream));
}

TEST(MAudioStreamPlugin, BlockWithANullAddressIsLeftAloneAndDoesNotMoveTheStream) {
  Counter plugin;
  plugin.Serve(MService::kPrepareStreams, 2, 48000);
  MWord stream = plugin.Create(3);
  float block[8] = {-1};
  float* out[] = {block, nullptr};
  EXPECT_EQ(plugin.Serve(MService::kComputeStream, MAsWord(out), 8, MAsWord(&stream)),
            MStreamResult::kNotStarted);
  EXPECT_EQ(plugin.Serve(MService::kComputeStream, 0, 8, MAsWord(&stream)), MStreamResult::kNotStarted);
  EXPECT_EQ(block[0], -1);
  out[1] = block;
  EXPECT_EQ(plugin.Serve(MService::kComputeStream, MAsWord(out), 8, MAsWord(&stream)),
            MStreamResult::kSounds);
  EXPECT_EQ(block[3], 1);
  plugin.Serve(MService::kCloseStream, MAsWord(&stream));
}

TEST(MAudioStreamPlugin, NullHandleClearsTheBlockAndHasEnded) {
  Counter plugin;
  plugin.Serve(MService::kPrepareStreams, 1, 48000);
  MWord none = 0;
  EXPECT_EQ(plugin.Compute(none, 16, MStreamResult::kEnded), std::vector<float>(16, 0.0f));
  float block[2] = {5, 5};
  float* out[] = {block};
  EXPECT_EQ(plugin.Serve(MService::kComputeStream, MAsWord(out), 2, 0), MStreamResult::kEnded);
  EXPECT_EQ(block[0] + block[1], 0);
}

TEST(MAudioStreamPlugin, ClosingTwiceFreesOnce) {
  Counter plugin;
  MWord stream = plugin.Create(0);
  EXPECT_EQ(plugin.Serve(MService::kCloseStream, MAsWord(&stream)), 0);
  EXPECT_EQ(stream, 0);
  EXPECT_EQ(plugin.Serve(MService::kCloseStream, MAsWord(&stream)), 0);
  EXPECT_EQ(plugin.Serve(MService::kCloseStream, 0), 0);
  EXPECT_EQ(plugin.freed, 1);
}

TEST(MAudioStreamPlugin, WithoutASoundNothingIsStored) {
  Counter plugin;
  plugin.empty = true;
  MWord handle = 77;
  MStreamRequest request;
  EXPECT_EQ(plugin.Serve(MService::kCreateStream, MAsWord(&request)), 1);
  request.result = &handle;
  EXPECT_EQ(plugin.Serve(MService::kCreateStream, MAsWord(&request)), 1);
  EXPECT_EQ(plugin.Serve(MService::kCreateStream, 0), 1);
  EXPECT_EQ(handle, 77);
}

TEST(MAudioStreamPlugin, FailureIsReportedWithItsPlaceAndGivesNoStream) {
  Counter plugin;
  plugin.fails = true;
  MWord handle = 77;
  MStreamRequest request;
  request.result = &handle;
  const ReportedTexts reported;
  EXPECT_EQ(plugin.Serve(MService::kCreateStream, MAsWord(&request)), 1);
  EXPECT_EQ(handle, 77);
  ASSERT_EQ(reported.Get().size(), 1u);
  EXPECT_EQ(reported.Get()[0],
            "Structured exception from '' catched at 'Counter::CreateStream' ('no stream today')");
}

TEST(MAudioStreamPlugin, RequestIsLimited) {
  Counter plugin;
  const auto create = [&](int32_t delay, double volume, double ratio) {
    MWord stream = plugin.Create(delay, volume, ratio);
    plugin.Serve(MService::kCloseStream, MAsWord(&stream));
    return plugin.last;
  };
  EXPECT_EQ(create(-5, 0.5, 2).delay, 0);
  EXPECT_EQ(create(5, -0.5, 2).volume, -0.5);
  EXPECT_EQ(create(5, kNaN, 2).volume, 0);
  EXPECT_EQ(create(5, kInfinity, 2).volume, 0);
  EXPECT_EQ(create(5, 1e300, 2).volume, 1e15);
  EXPECT_EQ(create(5, -1e300, 2).volume, -1e15);
  EXPECT_EQ(create(5, 1, kNaN).ratio, 1);
  EXPECT_EQ(create(5, 1, kInfinity).ratio, 1);
  EXPECT_EQ(create(5, 1, 0).ratio, 1);
  EXPECT_EQ(create(5, 1, -2).ratio, 1);
  EXPECT_EQ(create(5, 1, 1e-7).ratio, 1e-6);
  EXPECT_EQ(create(5, 1, 1e7).ratio, 1e6);
}

TEST(MAudioStreamPlugin, StreamQueryGivesZeroAndFilesAreCollected) {
  Counter plugin;
  EXPECT_EQ(plugin.Serve(MService::kStreamQuery, 1, 2), 0);
  MCollectedFiles files;
  EXPECT_EQ(plugin.Serve(MService::kCollectFiles, MAsWord(&files)), 7);
  EXPECT_EQ(files.count, 1);
  EXPECT_EQ(plugin.Serve(MService::kCollectFiles, 0), 0);
}

// All that an instrument must have.
class Silent final : public MAudioStreamPlugin {
 public:
  Silent() : MAudioStreamPlugin("Silent::CreateStream") {}
  MAudioStream* NewStream(const MStreamRequest&) override { return nullptr; }
  int32_t Render(MAudioStream&, float**, int32_t, int32_t) override { return MStreamResult::kEnded; }
  void FreeStream(MAudioStream*) override {}
};

TEST(MAudioStreamPlugin, CollectsNoFilesByDefault) {
  Silent plugin;
  MCollectedFiles files;
  MServiceArguments arguments(MAsWord(&files));
  EXPECT_EQ(plugin.Service(MService::kCollectFiles, &arguments), 0);
  EXPECT_EQ(files.count, 0);
}

TEST(MAudioStreamPlugin, RecordOfAStreamBeginsWithTheDelayThatIsLeft) {
  Counter plugin;
  plugin.Serve(MService::kPrepareStreams, 1, 48000);
  MWord stream = plugin.Create(100);
  const int32_t* const first = MAsAddress<int32_t>(stream);
  EXPECT_EQ(*first, 100);
  plugin.Compute(stream, 60, MStreamResult::kNotStarted);
  EXPECT_EQ(*first, 40);
  plugin.Compute(stream, 60, MStreamResult::kSounds);
  EXPECT_EQ(*first, 0);
  plugin.Serve(MService::kCloseStream, MAsWord(&stream));
}

TEST(MAudioStreamPlugin, StreamsOfOnePluginAreIndependent) {
  Counter plugin;
  plugin.Serve(MService::kPrepareStreams, 1, 48000);
  MWord early = plugin.Create(0), late = plugin.Create(5);
  EXPECT_EQ(plugin.Compute(early, 4, MStreamResult::kSounds), (std::vector<float>{1, 2, 3, 4}));
  EXPECT_EQ(plugin.Compute(late, 8, MStreamResult::kSounds), (std::vector<float>{0, 0, 0, 0, 0, 1, 2, 3}));
  EXPECT_EQ(plugin.Compute(early, 2, MStreamResult::kSounds), (std::vector<float>{5, 6}));
  plugin.Serve(MService::kCloseStream, MAsWord(&early));
  EXPECT_EQ(plugin.Compute(late, 2, MStreamResult::kSounds), (std::vector<float>{4, 5}));
  plugin.Serve(MService::kCloseStream, MAsWord(&late));
  EXPECT_EQ(plugin.freed, 2);
}

TEST(MAudioStreamPlugin, ServicesOutsideOfItsRangeGoToTheBase) {
  Counter plugin;
  EXPECT_EQ(plugin.Serve(MService::kParameterChanged), 0);
  EXPECT_EQ(plugin.updates, 1);
  EXPECT_NE(plugin.Serve(MService::kPublicBlock), 0);
  for (const int32_t service : {199, 206, 1000}) EXPECT_EQ(plugin.Serve(service), -1) << service;
}

TEST(MAudioStreamPlugin, ServicesOfEffectsAreUnknown) {
  Counter plugin;
  for (int32_t service = MService::kPrepare; service <= MService::kSkip; ++service)
    EXPECT_EQ(plugin.Serve(service), -1);
}

}  // namespace
