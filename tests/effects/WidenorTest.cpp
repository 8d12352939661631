#include <gtest/gtest.h>

#include "plugin/MParameterText.h"
#include "tests/common/AudioThreadWatch.h"
#include "tests/common/EffectUnderTest.h"
#include "tests/common/Texts.h"
#include "tests/dsp/Filters.h"

extern "C" MPluginEntryPoint WidenorAudioEffectPluginInterface;

namespace {

class WidenorUnderTest : public EffectUnderTest {
 public:
  WidenorUnderTest() : EffectUnderTest({"Widenor", "AudioEffect", WidenorAudioEffectPluginInterface}) {}

  void SetBand(double lowHertz, double highHertz, double resonance) {
    Set("highpassfrequency", std::log10(lowHertz));
    Set("lowpassfrequency", std::log10(highHertz));
    Set("resonance", resonance);
  }
  void SetDelay(double seconds, double depth) {
    Set("delay", seconds);
    Set("delaydepth", depth);
  }
};

// The band of one channel of a block, unrounded, from fresh states.
std::vector<double> GetBand(const AudioBlock& in, int32_t channel, double lowHertz, double highHertz,
                            double resonance, double rate) {
  ModelSection high = ModelHighPass(lowHertz, resonance, rate);
  ModelSection low = ModelLowPass(highHertz, resonance, rate);
  std::vector<double> band;
  for (int32_t i = 0; i < in.GetLength(); ++i) band.push_back(low.Step(high.Step(double{in[channel][i]})));
  return band;
}

void ExpectClose(const AudioBlock& out, const AudioBlock& expected) {
  EXPECT_LE(out.GetDistance(expected), 1e-6 * expected.GetPeak());
}

struct Setting {
  double depth, lowHertz, highHertz, resonance, delaySeconds, delayDepth;
};

AudioBlock Model(const AudioBlock& in, const Setting& at, double rate) {
  const std::vector<double> left = GetBand(in, 0, at.lowHertz, at.highHertz, at.resonance, rate);
  const std::vector<double> right = GetBand(in, 1, at.lowHertz, at.highHertz, at.resonance, rate);
  const auto length = std::max<std::size_t>(1, static_cast<std::size_t>(rate * at.delaySeconds));
  AudioBlock out(2, in.GetLength());
  for (std::size_t i = 0; i < left.size(); ++i) {
    double sum = (left[i] - right[i]) * at.depth;
    if (i >= length) sum += (left[i - length] - right[i - length]) * at.delayDepth;
    const auto at32 = static_cast<int32_t>(i);
    out[0][at32] = static_cast<float>(in[0][at32] + sum);
    out[1][at32] = static_cast<float>(in[1][at32] - sum);
  }
  return out;
}

TEST(Widenor, AddsTheDifferenceOfTheBandsWithOppositeSigns) {
  TestRandom random;
  for (const double depth : {-1.0, 0.3, 1.0}) {
    for (const double resonance : {0.0, 0.5, 1.0}) {
      for (const auto& [delaySeconds, delayDepth] :
           {std::pair(0.002, 0.0), {0.002, 0.5}, {0.0, 1.0}, {0.01, 0.25}, {0.0001, 1.0}}) {
        const Setting at = {depth, 100, 10000, resonance, delaySeconds, delayDepth};
        WidenorUnderTest widenor;
        widenor.Set("depth", depth);
        widenor.SetBand(at.lowHertz, at.highHertz, resonance);
        widenor.SetDelay(delaySeconds, delayDepth);
        widenor.Prepare(2, 48000);
        const AudioBlock in = AudioBlock::Noise(2, 4000, random);
        ExpectClose(widenor.Answer(in, {700, 1, 300}), Model(in, at, 48000));
      }
    }
  }
}

TEST(Widenor, ReturnsTheInputWithoutDepths) {
  TestRandom random;
  WidenorUnderTest widenor;
  widenor.Set("depth", 0);
  widenor.Prepare(2, 44100);
  const AudioBlock in = AudioBlock::Noise(2, 3000, random);
  EXPECT_TRUE(widenor.Answer(in, {512}) == in);
}

TEST(Widenor, LeavesEqualChannelsAsTheyAre) {
  TestRandom random;
  AudioBlock in = AudioBlock::Noise(2, 3000, random);
  std::copy_n(in[0], 3000, in[1]);
  for (int32_t run = 0; run < 20; ++run) {
    WidenorUnderTest widenor;
    widenor.SetAllAtRandom(random);
    widenor.Prepare(2, 44100);
    EXPECT_TRUE(widenor.Answer(in, {512}) == in);
  }
}

TEST(Widenor, KeepsTheSumOfBothChannels) {
  TestRandom random;
  WidenorUnderTest widenor;
  widenor.Set("depth", 1);
  widenor.SetDelay(0.005, 1);
  widenor.Prepare(2, 44100);
  const AudioBlock in = AudioBlock::Noise(2, 3000, random), out = widenor.Answer(in, {512});
  EXPECT_GT(out.GetDistance(in), 0.1);
  for (int32_t i = 0; i < 3000; ++i) ASSERT_NEAR(out[0][i] + out[1][i], in[0][i] + in[1][i], 1e-6);
}

TEST(Widenor, CopiesAnyOtherNumberOfChannels) {
  TestRandom random;
  for (const int32_t channels : {1, 3, 8, 11}) {
    WidenorUnderTest widenor;
    widenor.SetDelay(0.002, 1);
    widenor.Prepare(channels, 44100);
    const AudioBlock in = AudioBlock::Noise(channels, 500, random);
    EXPECT_TRUE(widenor.Answer(in, {64}) == in) << channels;
    EXPECT_EQ(widenor.IsSilent(), 1);
  }
}

TEST(Widenor, CopiesTheInputWithoutALineOfTwoChannels) {
  TestRandom random;
  WidenorUnderTest never, mono;
  never.Prepare(2, 0);
  mono.Prepare(1, 44100);
  mono.Prepare(2, 0);
  const AudioBlock in = AudioBlock::Noise(2, 500, random);
  for (WidenorUnderTest* widenor : {&never, &mono}) {
    widenor->SetDelay(0.002, 1);
    EXPECT_TRUE(widenor->Answer(in, {64}) == in);
  }
}

TEST(Widenor, AnotherDelayFadesTheLineAndKeepsItsPosition) {
  // The line's samples are heard alone: no direct depth, a delay depth of one.
  WidenorUnderTest widenor;
  widenor.Set("depth", 0);
  widenor.SetDelay(0.004, 1);
  widenor.Prepare(2, 1000);
  AudioBlock in(2, 4);
  in[0][1] = 1;
  widenor.Answer(in);
  const std::vector<double> band = GetBand(in, 0, 100, 499.9, 1, 1000);
  widenor.SetDelay(0.003, 1);
  const AudioBlock out = widenor.Answer(AudioBlock(2, 3));
  for (int32_t i = 0; i < 3; ++i)
    EXPECT_NEAR(out[0][i], static_cast<float>(band[static_cast<std::size_t>(i)]) * (1 - i / 3.0), 1e-6) << i;
}

TEST(Widenor, ABlockOfNoSamplesAppliesTheDelayAndALineAtRestStaysAsItIs) {
  TestRandom random;
  const AudioBlock noise = AudioBlock::Noise(2, 1000, random), silence(2, 400);
  const auto answer = [&](const std::vector<std::pair<double, double>>& delays) {
    WidenorUnderTest widenor;
    widenor.SetDelay(0.01, 1);
    widenor.Prepare(2, 8000);
    widenor.Answer(noise);
    for (const auto& [seconds, depth] : delays) {
      widenor.SetDelay(seconds, depth);
      widenor.Process(nullptr, nullptr, 0);
    }
    widenor.SetDelay(0.01, 1);
    return widenor.Answer(silence);
  };
  const AudioBlock untouched = answer({});
  EXPECT_TRUE(answer({{0.001, 0.0}}) == untouched);
  EXPECT_TRUE(answer({{0.001, 1e-21}}) == untouched);
  EXPECT_FALSE(answer({{0.001, 1.0}}) == untouched);
}

TEST(Widenor, IsSilentWhenItsLineHoldsNothingAboveATenThousandth) {
  TestRandom random;
  WidenorUnderTest widenor;
  EXPECT_EQ(widenor.IsSilent(), 1);
  widenor.SetDelay(0.01, 0.5);
  widenor.Prepare(2, 8000);
  EXPECT_EQ(widenor.IsSilent(), 1);
  widenor.Answer(AudioBlock::Noise(2, 1000, random));
  EXPECT_EQ(widenor.IsSilent(), 0);
  widenor.Set("delaydepth", 0);  // the line rests with its samples
  widenor.AnswerToSilence(2, 8000);
  EXPECT_EQ(widenor.IsSilent(), 0);
  widenor.Set("delaydepth", 0.5);
  widenor.AnswerToSilence(2, 8000);
  EXPECT_EQ(widenor.IsSilent(), 1);
  widenor.Answer(AudioBlock::Noise(2, 1000, random));
  widenor.Prepare(2, 8000);
  EXPECT_EQ(widenor.IsSilent(), 1);
}

TEST(Widenor, StaysFiniteWithFrequenciesAboveHalfTheSampleRate) {
  TestRandom random;
  for (const int32_t rate : {22050, 32000}) {
    WidenorUnderTest widenor;
    widenor.Set("depth", 1);
    widenor.SetBand(20000, 20000, 0);
    widenor.SetDelay(0.01, 1);
    widenor.Prepare(2, rate);
    const AudioBlock in = AudioBlock::Noise(2, rate, random);
    const Setting at = {1, 0.4999 * rate, 0.4999 * rate, 0, 0.01, 1};
    const AudioBlock out = widenor.Answer(in, {512}), expected = Model(in, at, rate);
    EXPECT_LE(out.GetDistance(expected), 1e-5 * expected.GetPeak());
  }
}

TEST(Widenor, AllocatesNothingWithinTheRangeOfTheDelay) {
  WidenorUnderTest widenor;
  widenor.SetDelay(0, 1);
  widenor.Prepare(2, 96000);
  AudioBlock block = AudioBlock::Constant(2, 500, 0.5);
  float** const addresses = block.From();
  MPluginParameter& delay = widenor.GetRow(4);
  const AudioThreadWatch watch;
  for (const double seconds : {0.01, 0.0, 0.005, 0.01, 0.002}) {
    MStoreShared(delay.real.value, seconds);
    widenor.Process(addresses, addresses, 500);
  }
  EXPECT_EQ(watch.GetAllocations(), 0);
  EXPECT_EQ(watch.GetWaits(), 0);
}

TEST(Widenor, ShowsPercentHertzAndMilliseconds) {
  WidenorUnderTest widenor;
  ASSERT_EQ(widenor.GetRowCount(), 6);
  EXPECT_EQ(widenor.GetBlock().pluginFlag, 1);
  const auto show = [&](int32_t row, double value) {
    return Utf8(MParameterText(widenor.GetRow(row), value));
  };
  EXPECT_EQ(show(0, -0.5), "-50.00%");
  EXPECT_EQ(show(1, 2), "100Hz");
  EXPECT_EQ(show(2, 4), "10.0kHz");
  EXPECT_EQ(show(3, 1), "100.00%");
  EXPECT_EQ(show(4, 0.002), "2.0 ms");
  EXPECT_EQ(show(5, 0.25), "25.00%");
}

}  // namespace
