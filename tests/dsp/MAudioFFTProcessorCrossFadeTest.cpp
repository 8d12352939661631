#include "dsp/MAudioFFTProcessorCrossFade.h"

#include <gtest/gtest.h>

#include "tests/common/CountingFunctions.h"
#include "tests/dsp/FFTModel.h"

namespace {

using Callback = MAudioFFTProcessorCrossFade::Callback;
using Channels = std::vector<std::vector<float>>;

// A processor with its queues, driven as a plug-in drives it: as many samples come out as go in.
class Chain {
 public:
  Chain(int32_t channels, int32_t blockSize, Callback* callback, void* user = nullptr)
      : processor(source, destination, blockSize, callback, user), channels_(channels) {
    source.Prepare(channels, 48000, 10000 + 3 * blockSize);
    destination.Prepare(channels, 48000, 10000 + 3 * blockSize);
    processor.Prepare();
  }

  void Run(const float* const* in, float* const* out, int32_t samples) {
    source.Append(in, samples);
    processor.Run();
    EXPECT_GE(destination.GetLength(), samples);
    destination.Read(out, samples);
  }

  Channels Run(const Channels& in, int32_t block) {
    Channels out = in;
    const auto length = static_cast<int32_t>(in[0].size());
    for (int32_t done = 0; done < length; done += block) {
      std::vector<const float*> from;
      std::vector<float*> to;
      for (std::size_t c = 0; c < in.size(); ++c) {
        from.push_back(in[c].data() + done);
        to.push_back(out[c].data() + done);
      }
      Run(from.data(), to.data(), std::min(block, length - done));
    }
    EXPECT_EQ(static_cast<int32_t>(in.size()), channels_);
    return out;
  }

  MAudioQueue source, destination;
  MAudioFFTProcessorCrossFade processor;

 private:
  int32_t channels_;
};

// Any change that is not the same in each block: a gain per index that falls with each call.
void Fall(float* spectrum, int32_t size, void* user) {
  double& gain = *static_cast<double*>(user);
  for (int32_t i = 0; i < size; ++i) spectrum[i] = static_cast<float>(spectrum[i] * gain * (i % 3));
  gain *= 0.9;
}

// The whole output from the definition, in double: blocks, chain, fades.
std::vector<double> Model(const std::vector<float>& in, std::size_t size, double gain) {
  const std::size_t half = size / 2;
  std::vector<double> out(size + half), tail;
  for (std::size_t begin = 0, blocks = in.size() / size * 2 - 1; blocks > 0; --blocks, begin += half) {
    std::vector<double> frame(in.begin() + static_cast<int64_t>(begin),
                              in.begin() + static_cast<int64_t>(begin + size));
    frame = ModelForward(frame);
    for (std::size_t i = 0; i < size; ++i) frame[i] *= gain * static_cast<double>(i % 3);
    gain *= 0.9;
    frame = ModelInverse(frame);
    for (std::size_t i = 0; i < half; ++i) {
      const double weight = begin == 0 ? 1 : static_cast<double>(i) / static_cast<double>(half);
      const double fresh = frame[i] * 2 / static_cast<double>(size);
      out.push_back(fresh * weight + (begin == 0 ? 0 : tail[i] * (1 - weight)));
    }
    tail.assign(frame.begin() + static_cast<int64_t>(half), frame.end());
    for (double& sample : tail) sample *= 2 / static_cast<double>(size);
  }
  out.resize(in.size());
  return out;
}

TEST(MAudioFFTProcessorCrossFade, UntouchedSpectraDelayByTheLatencyAndAreElseTransparent) {
  for (const int32_t size : {4, 64, 4096}) {
    for (const int32_t block : {1, 64, 4096, 10000}) {
      Chain chain(2, size, nullptr);
      const int32_t latency = size + size / 2;
      EXPECT_EQ(chain.processor.GetLatency(), latency);
      const int32_t length = block == 1 ? 3 * latency : 30000;
      const Channels in = {NoiseSamples(length, 1), NoiseSamples(length, 2)};
      const Channels out = chain.Run(in, block);
      for (std::size_t c = 0; c < 2; ++c) {
        for (int32_t i = 0; i < length; ++i) {
          const float expected = i < latency ? 0 : in[c][static_cast<std::size_t>(i - latency)];
          ASSERT_NEAR(out[c][static_cast<std::size_t>(i)], expected, 1e-6)
              << i << " of " << size << "/" << block;
        }
      }
    }
  }
}

TEST(MAudioFFTProcessorCrossFade, OutputIsThatOfTheDefinition) {
  for (const int32_t size : {4, 16, 256}) {
    double gain = 1;
    Chain chain(1, size, Fall, &gain);
    const std::vector<float> in = NoiseSamples(size * 12);
    const std::vector<float> out = chain.Run({in}, 100)[0];
    EXPECT_LT(RelativeError(out, Model(in, static_cast<std::size_t>(size), 1)), 1e-6) << size;
  }
}

TEST(MAudioFFTProcessorCrossFade, AnySplitOfTheInputGivesTheSameSamples) {
  const Channels in = {NoiseSamples(3000, 1), NoiseSamples(3000, 2)};
  const auto run = [&in](int32_t block) {
    double gain = 1;
    return Chain(2, 64, Fall, &gain).Run(in, block);
  };
  for (const int32_t block : {1, 7, 63, 64, 65, 96, 1000}) EXPECT_EQ(run(block), run(3000)) << block;
}

TEST(MAudioFFTProcessorCrossFade, GainZeroIsSilent) {
  Chain chain(1, 256, [](float* spectrum, int32_t size, void*) { std::fill_n(spectrum, size, 0.0f); });
  EXPECT_EQ(chain.Run({NoiseSamples(5000)}, 64)[0], std::vector<float>(5000));
}

// The order in which a callback sees the blocks, told by what they hold.
TEST(MAudioFFTProcessorCrossFade, CallbacksComeOnceThenTwiceForEachChannelInTurn) {
  std::vector<float> means;
  const auto noteMean = [](float* spectrum, int32_t size, void* user) {
    static_cast<std::vector<float>*>(user)->push_back(spectrum[0] / static_cast<float>(size));
  };
  Chain chain(2, 8, noteMean, &means);
  std::vector<float> left, right;
  for (int32_t i = 0; i < 24; ++i) {
    left.push_back(static_cast<float>(i / 4));  // half blocks 0, 0, 0, 0, 1, 1, ...
    right.push_back(static_cast<float>(100 + i / 4));
  }
  const float* const in[] = {left.data(), right.data()};
  chain.source.Append(in, 24);
  chain.processor.Run();
  EXPECT_EQ(means, (std::vector<float>{0.5, 100.5, 1.5, 2.5, 101.5, 102.5, 3.5, 4.5, 103.5, 104.5}));
}

TEST(MAudioFFTProcessorCrossFade, FirstCallPadsTheDestinationAlsoWithoutSamples) {
  Chain chain(1, 64, nullptr);
  chain.processor.Run();
  EXPECT_EQ(chain.destination.GetLength(), 96);
  chain.processor.Run();
  EXPECT_EQ(chain.destination.GetLength(), 96);
  chain.source.Append(nullptr, 63);
  chain.processor.Run();
  EXPECT_EQ(chain.destination.GetLength(), 96);
  chain.source.Append(nullptr, 1);
  chain.processor.Run();
  EXPECT_EQ(chain.destination.GetLength(), 96 + 32);  // half of the first block
  EXPECT_EQ(chain.source.GetLength(), 0);
  chain.source.Append(nullptr, 130);
  chain.processor.Run();
  EXPECT_EQ(chain.destination.GetLength(), 96 + 32 + 128);
  EXPECT_EQ(chain.source.GetLength(), 2);
}

TEST(MAudioFFTProcessorCrossFade, BuffersTakeTheFormatOfTheSource) {
  Chain chain(3, 64, nullptr);
  for (const MAudioBuffer* buffer : {&chain.processor.GetHistory(), &chain.processor.GetTail()}) {
    EXPECT_EQ(buffer->GetChannelCount(), 3);
    EXPECT_EQ(buffer->GetLength(), 96);
    EXPECT_EQ(buffer->sampleRate, 48000);
  }
  chain.source.Prepare(2, 96000, 200);
  chain.processor.Reset();
  chain.source.Append(nullptr, 64);
  chain.processor.Run();
  for (const MAudioBuffer* buffer : {&chain.processor.GetHistory(), &chain.processor.GetTail()}) {
    EXPECT_EQ(buffer->GetChannelCount(), 2);
    EXPECT_EQ(buffer->sampleRate, 96000);
  }
}

TEST(MAudioFFTProcessorCrossFade, TailIsSilentWhenNothingAboveTheThresholdIsLeft) {
  Chain chain(1, 64, nullptr);
  EXPECT_TRUE(chain.processor.IsTailSilent());
  const auto run = [&chain](float value) { chain.Run({std::vector<float>(32, value)}, 32); };
  run(0.5f);
  EXPECT_FALSE(chain.processor.IsTailSilent());  // in the source
  run(0);
  EXPECT_FALSE(chain.processor.IsTailSilent());  // in the destination
  int32_t blocks = 2;
  for (; blocks < 20 && !chain.processor.IsTailSilent(); ++blocks) run(0);
  EXPECT_EQ(blocks, 4);  // the 96 samples of the latency and the loud ones themselves
  for (int32_t i = 0; i < 8; ++i) run(0.00009f);
  EXPECT_TRUE(chain.processor.IsTailSilent());
}

TEST(MAudioFFTProcessorCrossFade, HistoryAndTailCountAsLoudOnTheirOwn) {
  Chain chain(1, 64, nullptr);
  chain.source.Append(nullptr, 32);
  const std::vector<float> loud(32, 0.5f);
  const float* const in[] = {loud.data()};
  chain.source.Append(in, 32);
  chain.processor.Run();
  chain.destination.Clear();
  EXPECT_EQ(chain.source.GetLength(), 0);
  EXPECT_FALSE(chain.processor.IsTailSilent());
  EXPECT_FALSE(chain.processor.GetHistory().IsAllBelow(0.4));
  EXPECT_FALSE(chain.processor.GetTail().IsAllBelow(0.4));
  chain.processor.Reset();
  EXPECT_TRUE(chain.processor.IsTailSilent());
}

TEST(MAudioFFTProcessorCrossFade, SamplesThatAreNotUsedAgainDoNotCountAsLoud) {
  Chain chain(1, 64, nullptr);
  const std::vector<float> loud(32, 0.5f);
  const float* const in[] = {loud.data()};
  chain.source.Append(nullptr, 64);
  chain.source.Append(in, 32);
  chain.source.Append(nullptr, 32);
  chain.processor.Run();
  EXPECT_FALSE(chain.processor.IsTailSilent());
  chain.destination.Clear();
  EXPECT_TRUE(chain.processor.IsTailSilent());
}

TEST(MAudioFFTProcessorCrossFade, AfterAResetItRunsAsANewOne) {
  const std::vector<float> in = NoiseSamples(1000);
  Chain chain(1, 64, nullptr);
  const Channels first = chain.Run({in}, 50);
  chain.source.Clear();
  chain.destination.Clear();
  chain.processor.Reset();
  EXPECT_TRUE(chain.processor.IsTailSilent());
  EXPECT_EQ(chain.Run({in}, 50), first);
}

TEST(MAudioFFTProcessorCrossFade, QueuesWithOtherNumbersOfChannelsGetWhatTheyCanHold) {
  for (const int32_t given : {0, 1, 2, 8}) {
    for (const int32_t taken : {0, 1, 2, 8}) {
      MAudioQueue source, destination;
      source.Prepare(given, 48000, 200);
      destination.Prepare(taken, 48000, 400);
      MAudioFFTProcessorCrossFade processor(source, destination, 64, nullptr, nullptr);
      const std::vector<float> ones(192, 1);
      const std::vector<const float*> in(8, ones.data());
      source.Append(in.data(), 192);
      processor.Run();
      ASSERT_EQ(destination.GetLength(), 96 + 32 + 128);
      for (int32_t c = 0; c < taken; ++c)
        EXPECT_NEAR(destination.GetChannel(c)[255], c < given ? 1 : 0, 1e-6);
    }
  }
}

TEST(MAudioFFTProcessorCrossFade, SourceWithOtherChannelsThanBeforeStartsAnew) {
  Chain chain(2, 64, nullptr);
  chain.Run({NoiseSamples(300), NoiseSamples(300)}, 300);
  chain.source.Prepare(5, 48000, 200);
  chain.source.Append(nullptr, 200);
  chain.processor.Run();
  EXPECT_EQ(chain.processor.GetHistory().GetChannelCount(), 5);
  EXPECT_TRUE(chain.processor.GetTail().IsAllBelow(0));
}

TEST(MAudioFFTProcessorCrossFade, RunningAllocatesNothing) {
  Chain chain(2, 4096, [](float* spectrum, int32_t, void*) { spectrum[0] = 0; });
  const Channels in = {NoiseSamples(10000), NoiseSamples(10000)};
  Channels out = in;
  const float* const from[] = {in[0].data(), in[1].data()};
  float* const to[] = {out[0].data(), out[1].data()};
  const CountingFunctions table;
  for (const int32_t block : {1, 64, 4096, 10000, 10000, 5000, 3}) chain.Run(from, to, block);
  EXPECT_FALSE(chain.processor.IsTailSilent());
  chain.processor.Reset();
  EXPECT_EQ(table.GetCalls(), 0);
}

TEST(MAudioFFTProcessorCrossFadeDeathTest, BlockSizeThatIsNoneIsAssertedAndElseDoesNothing) {
  const auto run = [](int32_t size) {
    MAudioQueue source, destination;
    source.Prepare(1, 48000, 100);
    destination.Prepare(1, 48000, 100);
    MAudioFFTProcessorCrossFade processor(source, destination, size, nullptr, nullptr);
    source.Append(nullptr, 100);
    processor.Run();
    EXPECT_EQ(destination.GetLength(), 0);
  };
  for (const int32_t size : {-1, 0, 100, 65536})
    EXPECT_DEBUG_DEATH(run(size), "power of two from 4 to 32768");
}

}  // namespace
