#include "plugin/MAudioEffectPlugin.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/MAudioBuffer.h"
#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"

namespace {

// Whether this thread's arithmetic keeps denormal numbers.
bool HasDenormals() {
  volatile float small = 1e-38f;
  const float smaller = small * 0.01f;
  return smaller > 0;
}

// Delays the signal by four samples, as an effect with a memory does it, and notes its calls.
class FourSamples final : public MAudioEffectPlugin {
 public:
  FourSamples() {
    AddRealParameter(rows_[0], "Gain", "gain", "", 0, 2, 1);
    SetParameters(rows_);
  }

  MWord Serve(int32_t service, MWord a = 0, MWord b = 0, MWord c = 0) {
    MServiceArguments arguments(a, b, c);
    return Service(service, &arguments);
  }
  MWord ProcessBlock(std::vector<float*> in, std::vector<float*> out, MWord samples) {
    return Serve(MService::kProcess, MAsWord(in.data()), MAsWord(out.data()), samples);
  }

  void Update() override {
    log += "Update(" + std::to_string(channels_) + ", " + std::to_string(sampleRate_) + ") ";
    gain_ = MLimitedValue(rows_[0], 0, 2);
  }
  int32_t Prepare(int32_t channels, int32_t sampleRate) override {
    MAudioEffectPlugin::Prepare(channels, sampleRate);
    if (sampleRate < 1) return 0;
    line.SetSize(channels_, 4);
    line.Clear();
    position_ = 0;
    return -3;
  }
  void Process(float** in, float** out, int32_t samples) override {
    processed = samples;
    sawDenormals = HasDenormals();
    if (fails) throw MException("a block fails");
    const int32_t served = std::min(channels_, line.GetChannelCount());
    for (int32_t i = 0; i < samples && runs; ++i) {
      for (int32_t c = 0; c < served; ++c) {
        float& place = line.GetChannel(c)[position_];
        const float delayed = static_cast<float>(place * gain_);
        place = in[c][i];
        out[c][i] = delayed;
      }
      position_ = (position_ + 1) % 4;
    }
  }
  int32_t IsSilent() override { return line.IsAllBelow(kSilence); }
  int32_t GetLatency() override { return latency; }
  void Skip(int32_t samples) override { skipped = samples; }

  using MAudioEffectPlugin::CopyChannels;

  std::string log;
  MAudioBuffer line;
  bool fails = false;
  bool runs = true;
  bool sawDenormals = true;
  int32_t processed = -1;
  int32_t skipped = -1;
  int32_t latency = -4;

 private:
  MPluginParameter rows_[1];
  double gain_ = 0;
  int32_t position_ = 0;
};

// An effect that has nothing but a block function.
class Plain final : public MAudioEffectPlugin {
 public:
  void Process(float** in, float** out, int32_t samples) override {
    CopyChannels(in, out, 0, channels_, samples);
  }
};

TEST(MAudioEffectPlugin, PrepareStoresTheFormatBeforeTheUpdateAndGivesItsResult) {
  FourSamples effect;
  EXPECT_EQ(effect.Serve(MService::kPrepare, 2, 48000), -3);
  EXPECT_EQ(effect.log, "Update(2, 48000) ");
  Plain plain;
  MServiceArguments arguments(2, 48000);
  EXPECT_EQ(plain.Service(MService::kPrepare, &arguments), 0);
}

TEST(MAudioEffectPlugin, BeforePrepareThereAreNoChannelsAndTheRateIsOne) {
  FourSamples effect;
  effect.Serve(MService::kParameterChanged, 0);
  EXPECT_EQ(effect.log, "Update(0, 1) ");
}

TEST(MAudioEffectPlugin, BlockBeforePrepareTouchesNothing) {
  FourSamples effect;
  float in[3] = {1, 2, 3}, out[3] = {7, 8, 9};
  EXPECT_EQ(effect.ProcessBlock({in}, {out}, 3), 0);
  EXPECT_EQ(effect.ProcessBlock({nullptr}, {nullptr}, 3), 0);
  EXPECT_EQ(effect.Serve(MService::kProcess, 0, 0, 3), 0);
  EXPECT_EQ(out[0] + out[1] + out[2], 24);
}

TEST(MAudioEffectPlugin, SampleRateBelowOneIsStoredAndChangesNoBuffer) {
  FourSamples effect;
  effect.Serve(MService::kPrepare, 2, 48000);
  effect.line.GetChannel(1)[3] = 5;
  effect.log.clear();
  EXPECT_EQ(effect.Serve(MService::kPrepare, 1, 0), 0);
  EXPECT_EQ(effect.Serve(MService::kPrepare, 1, -44100), 0);
  EXPECT_EQ(effect.log, "Update(1, 0) Update(1, -44100) ");
  EXPECT_EQ(effect.line.GetChannelCount(), 2);
  EXPECT_EQ(effect.line.GetChannel(1)[3], 5);
}

TEST(MAudioEffectPlugin, NegativeNumberOfChannelsIsNone) {
  FourSamples effect;
  effect.Serve(MService::kPrepare, -1, 44100);
  EXPECT_EQ(effect.log, "Update(0, 44100) ");
  float in[1] = {1}, out[1] = {7};
  effect.ProcessBlock({in}, {out}, 1);
  EXPECT_EQ(out[0], 7);
}

TEST(MAudioEffectPlugin, MoreThanEightChannelsAreStoredAndSafe) {
  FourSamples effect;
  effect.Serve(MService::kPrepare, 16, 44100);
  EXPECT_EQ(effect.log, "Update(16, 44100) ");
  float in[1] = {1}, out[1] = {7};
  effect.ProcessBlock(std::vector<float*>(16, in), std::vector<float*>(16, out), 1);
  EXPECT_EQ(effect.processed, 1);
  EXPECT_EQ(out[0], 0);
}

TEST(MAudioEffectPlugin, WordsBeyond32BitsAreLimited) {
  FourSamples effect;
  effect.Serve(MService::kPrepare, INTPTR_MIN, INTPTR_MAX);
  effect.Serve(MService::kPrepare, 0, INTPTR_MIN);
  EXPECT_EQ(effect.log, "Update(0, 2147483647) Update(0, -2147483648) ");
  effect.runs = false;
  effect.ProcessBlock({nullptr}, {nullptr}, INTPTR_MAX);
  EXPECT_EQ(effect.processed, INT32_MAX);
  effect.Serve(MService::kSkip, INTPTR_MAX);
  EXPECT_EQ(effect.skipped, INT32_MAX);
}

TEST(MAudioEffectPlugin, BlockOfNoSamplesStillLetsTheEffectFollowItsParameters) {
  FourSamples effect;
  effect.Serve(MService::kPrepare, 1, 44100);
  float in[1] = {1}, out[1] = {7};
  for (const MWord samples : {MWord{0}, MWord{-1}, INTPTR_MIN}) {
    effect.processed = -1;
    EXPECT_EQ(effect.ProcessBlock({in}, {out}, samples), 0);
    EXPECT_EQ(effect.processed, 0);
    EXPECT_EQ(out[0], 7);
  }
  effect.processed = -1;
  EXPECT_EQ(effect.Serve(MService::kProcess, 0, 0, 0), 0);  // no arrays are needed for it
  EXPECT_EQ(effect.processed, 0);
}

TEST(MAudioEffectPlugin, BlockWithANullAddressIsLeftAlone) {
  FourSamples effect;
  effect.Serve(MService::kPrepare, 2, 44100);
  float in[1] = {1}, out[1] = {7};
  effect.ProcessBlock({in, nullptr}, {out, out}, 1);
  effect.ProcessBlock({in, in}, {nullptr, out}, 1);
  float* both[] = {in, in};
  effect.Serve(MService::kProcess, MAsWord(both), 0, 1);
  effect.Serve(MService::kProcess, 0, MAsWord(both), 1);
  EXPECT_EQ(effect.processed, -1);
  EXPECT_EQ(out[0], 7);
  EXPECT_EQ(in[0], 1);
}

TEST(MAudioEffectPlugin, NullRecordReadsAsZeros) {
  FourSamples effect;
  EXPECT_EQ(effect.Service(MService::kPrepare, nullptr), 0);
  EXPECT_EQ(effect.log, "Update(0, 0) ");
  EXPECT_EQ(effect.Service(MService::kProcess, nullptr), 0);
  EXPECT_EQ(effect.processed, 0);
  EXPECT_EQ(effect.Service(MService::kSkip, nullptr), 0);
  EXPECT_EQ(effect.skipped, 0);
}

TEST(MAudioEffectPlugin, SameArraysInAndOutGiveWhatSeparateOnesGive) {
  FourSamples separate, inPlace;
  separate.Serve(MService::kPrepare, 1, 44100);
  inPlace.Serve(MService::kPrepare, 1, 44100);
  float in[6] = {1, 2, 3, 4, 5, 6}, out[6] = {};
  separate.ProcessBlock({in}, {out}, 6);
  inPlace.ProcessBlock({in}, {in}, 6);
  EXPECT_EQ(std::vector<float>(in, in + 6), std::vector<float>(out, out + 6));
  EXPECT_EQ(std::vector<float>(out, out + 6), (std::vector<float>{0, 0, 0, 0, 1, 2}));
}

TEST(MAudioEffectPlugin, ChangedParameterIsInForceInTheNextBlock) {
  FourSamples effect;
  effect.Serve(MService::kPrepare, 1, 44100);
  auto& row = MAsAddress<MPluginPublicBlock>(effect.Serve(MService::kPublicBlock))->parameters[0];
  float block[8] = {1};
  MStoreShared(row.real.value, 0.5);
  effect.Serve(MService::kParameterChanged, 0);
  effect.ProcessBlock({block}, {block}, 8);
  EXPECT_EQ(block[4], 0.5f);
}

TEST(MAudioEffectPlugin, PrepareClearsTheMemoryAndSilenceIsTold) {
  FourSamples effect;
  EXPECT_EQ(effect.Serve(MService::kIsSilent), 1);
  effect.Serve(MService::kPrepare, 1, 44100);
  EXPECT_EQ(effect.Serve(MService::kIsSilent), 1);
  float block[4] = {0.0001f, 0, 0, 0};
  effect.ProcessBlock({block}, {block}, 4);
  EXPECT_EQ(effect.Serve(MService::kIsSilent), 1);  // at the threshold
  block[0] = 0.00011f;
  effect.ProcessBlock({block}, {block}, 4);
  EXPECT_EQ(effect.Serve(MService::kIsSilent), 0);
  effect.Serve(MService::kPrepare, 1, 44100);
  EXPECT_EQ(effect.Serve(MService::kIsSilent), 1);
}

TEST(MAudioEffectPlugin, EffectWithoutMemoryIsSilentWithoutLatencyAndLetsTimePass) {
  Plain effect;
  MServiceArguments arguments(1000);
  EXPECT_EQ(effect.Service(MService::kIsSilent, &arguments), 1);
  EXPECT_EQ(effect.Service(MService::kGetLatency, &arguments), 0);
  EXPECT_EQ(effect.Service(MService::kSkip, &arguments), 0);
}

TEST(MAudioEffectPlugin, LatencyAndSkippedTimePass) {
  FourSamples effect;
  EXPECT_EQ(effect.Serve(MService::kGetLatency), -4);
  effect.latency = INT32_MAX;
  EXPECT_EQ(effect.Serve(MService::kGetLatency), INT32_MAX);
  EXPECT_EQ(effect.Serve(MService::kSkip, 441), 0);
  EXPECT_EQ(effect.skipped, 441);
  effect.Serve(MService::kSkip, -441);
  EXPECT_EQ(effect.skipped, 0);
}

TEST(MAudioEffectPlugin, OtherServicesAreThoseOfEveryPluginAndStreamServicesAreUnknown) {
  FourSamples effect;
  EXPECT_EQ(effect.Serve(MService::kAttach), MAsWord(static_cast<MPlugin*>(&effect)));
  EXPECT_NE(effect.Serve(MService::kPublicBlock), 0);
  for (const int32_t service : {7, 21, 99, 105, 199, 200, 201, 202, 203, 204, 205, -5, -100, INT32_MAX})
    EXPECT_EQ(effect.Serve(service, 1, 1, 1), -1) << service;
  EXPECT_EQ(effect.log, "");
}

TEST(MAudioEffectPlugin, DenormalsAreFlushedWithinABlockAndNotBehindIt) {
  FourSamples effect;
  float block[1] = {};
  effect.ProcessBlock({block}, {block}, 0);
  EXPECT_FALSE(effect.sawDenormals);
  EXPECT_TRUE(HasDenormals());
}

TEST(MAudioEffectPlugin, FailureOfABlockPassesAndTheArithmeticIsAsBefore) {
  FourSamples effect;
  effect.fails = true;
  EXPECT_RAISES(effect.Serve(MService::kProcess), "a block fails", 0);
  EXPECT_TRUE(HasDenormals());
}

TEST(MAudioEffectPlugin, MemoryThatPrepareCannotHaveIsToldToTheHost) {
  const CountingFunctions table;
  FourSamples effect;
  table.FailAfter(1);
  EXPECT_RAISES(effect.Prepare(2, 44100), "Out of memory.", 0);
  float in[1] = {1}, out[1] = {7};
  effect.ProcessBlock({in, in}, {out, out}, 1);  // safe, though it can do nothing
  EXPECT_EQ(effect.Serve(MService::kPrepare, 2, 44100), -3);
}

TEST(MAudioEffectPlugin, BlocksAllocateNothingOnTheirWayThroughTheServices) {
  FourSamples effect;
  effect.Serve(MService::kPrepare, 1, 44100);
  float block[64] = {1};
  float* address = block;
  MServiceArguments arguments(MAsWord(&address), MAsWord(&address), 64);
  const CountingFunctions table;
  for (const int32_t service :
       {MService::kProcess, MService::kIsSilent, MService::kGetLatency, MService::kSkip})
    effect.Service(service, &arguments);
  EXPECT_EQ(table.GetCalls(), 0);
}

TEST(MAudioEffectPlugin, ChannelsThatAnEffectDoesNotServeAreCopied) {
  float in[3][2] = {{1, 2}, {3, 4}, {5, 6}}, out[3][2] = {};
  float* from[] = {in[0], in[1], in[2]};
  float* to[] = {out[0], out[1], in[2]};
  FourSamples::CopyChannels(from, to, 1, 3, 2);
  EXPECT_EQ(out[0][0] + out[0][1], 0);
  EXPECT_EQ(out[1][0], 3);
  EXPECT_EQ(out[1][1], 4);
  EXPECT_EQ(in[2][1], 6);
  FourSamples::CopyChannels(from, to, 0, 1, 0);
  FourSamples::CopyChannels(from, to, 0, 1, -1);
  FourSamples::CopyChannels(from, to, 3, 2, 2);
  EXPECT_EQ(out[0][0], 0);
}

}  // namespace
