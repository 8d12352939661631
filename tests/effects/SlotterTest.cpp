#include <gtest/gtest.h>

#include "tests/common/EffectUnderTest.h"
#include "tests/dsp/Filters.h"

extern "C" MPluginEntryPoint SlotterAudioEffectPluginInterface;

namespace {

constexpr double kRate = 48000;

class SlotterUnderTest : public EffectUnderTest {
 public:
  SlotterUnderTest() : EffectUnderTest({"Slotter", "AudioEffect", SlotterAudioEffectPluginInterface}) {}

  void Switch(bool low, bool high) {
    Set("lowenable", low);
    Set("highenable", high);
  }
  void SetLowPass(double hertz, double resonance) {
    Set("lowfreq", std::log10(hertz));
    Set("lowresonance", resonance);
  }
  void SetHighPass(double hertz, double resonance) {
    Set("highfreq", std::log10(hertz));
    Set("highresonance", resonance);
  }
};

// `between` is for what the low-pass rounds to a float that the model rounds to the next one: a part of the
// signal's peak of 1, which a high-pass far above the low-pass leaves when it takes the signal away.
void ExpectClose(const AudioBlock& out, const AudioBlock& expected, double between = 0) {
  EXPECT_LE(out.GetDistance(expected), 1e-5 * expected.GetPeak() + between);
}

TEST(Slotter, RunsTheLowPassAndBehindItTheHighPass) {
  TestRandom random;
  for (const double resonance : {0.0, 0.5, 1.0}) {
    for (const double lowHertz : {20.0, 900.0, 20000.0}) {
      for (const double highHertz : {20.0, 2500.0, 20000.0}) {
        const int32_t channels = random.Integer(1, 8);
        const AudioBlock signal = AudioBlock::Noise(channels, 3000, random);
        for (int32_t switches = 1; switches < 4; ++switches) {
          SCOPED_TRACE(testing::Message()
                       << lowHertz << " " << highHertz << " " << resonance << " " << switches);
          SlotterUnderTest slotter;
          slotter.SetLowPass(lowHertz, resonance);
          slotter.SetHighPass(highHertz, 1 - resonance);
          slotter.Switch(switches & 1, switches & 2);
          slotter.Prepare(channels, static_cast<int32_t>(kRate));
          std::vector<ModelSection> sections;
          if (switches & 1) sections.push_back(ModelLowPass(lowHertz, resonance, kRate));
          if (switches & 2) sections.push_back(ModelHighPass(highHertz, 1 - resonance, kRate));
          ExpectClose(slotter.Answer(signal, {100, 1, 257}), RunModel(sections, signal), 1e-8);
        }
      }
    }
  }
}

TEST(Slotter, IsACopyWithBothFiltersOff) {
  TestRandom random;
  for (const int32_t channels : {1, 2, 5, 8, 11}) {
    SlotterUnderTest slotter;
    slotter.Prepare(channels, 44100);
    AudioBlock signal = AudioBlock::Noise(channels, 500, random);
    signal[0][7] = 1e-40f;
    signal[0][8] = -0.0f;
    signal[0][9] = 0;
    signal[0][10] = std::numeric_limits<float>::max();
    EXPECT_TRUE(slotter.Answer(signal, {64}) == signal) << channels;
  }
}

// A block of each channel alone, by a section that keeps its state.
void RunOn(ModelSection& section, AudioBlock& block, int32_t from, int32_t samples) {
  for (int32_t i = from; i < from + samples; ++i)
    block[0][i] = static_cast<float>(section.Step(double{block[0][i]}));
}

TEST(Slotter, AFilterThatIsOffKeepsItsState) {
  TestRandom random;
  SlotterUnderTest slotter;
  slotter.SetLowPass(700, 0.1);
  slotter.SetHighPass(300, 0.1);
  slotter.Prepare(1, static_cast<int32_t>(kRate));
  ModelSection low = ModelLowPass(700, 0.1, kRate), high = ModelHighPass(300, 0.1, kRate);
  constexpr int32_t kBlock = 50, kBlocks = 200;
  AudioBlock in = AudioBlock::Noise(1, kBlock * kBlocks, random), out(1, kBlock * kBlocks);
  AudioBlock expected = in;
  for (int32_t block = 0; block < kBlocks; ++block) {
    const bool isLow = random.OneIn(2), isHigh = random.OneIn(2);
    slotter.Switch(isLow, isHigh);
    slotter.Process(in.From(block * kBlock), out.From(block * kBlock), kBlock);
    if (isLow) RunOn(low, expected, block * kBlock, kBlock);
    if (isHigh) RunOn(high, expected, block * kBlock, kBlock);
  }
  ExpectClose(out, expected);
}

TEST(Slotter, KeepsItsStatesWhenPreparedAndWhenAFrequencyMoves) {
  TestRandom random;
  SlotterUnderTest slotter;
  slotter.Switch(true, false);
  slotter.SetLowPass(500, 0.2);
  slotter.Prepare(1, static_cast<int32_t>(kRate));
  AudioBlock in = AudioBlock::Noise(1, 300, random), expected = in, out(1, 300);
  ModelSection section = ModelLowPass(500, 0.2, kRate);
  RunOn(section, expected, 0, 100);
  slotter.Process(in.From(0), out.From(0), 100);
  const auto redesign = [&](double hertz, double rate) {
    ModelSection other = ModelLowPass(hertz, 0.2, rate);
    other.x1 = section.x1, other.x2 = section.x2, other.y1 = section.y1, other.y2 = section.y2;
    section = other;
  };
  slotter.SetLowPass(4000, 0.2);
  redesign(4000, kRate);
  RunOn(section, expected, 100, 100);
  slotter.Process(in.From(100), out.From(100), 100);
  slotter.Prepare(1, 96000);
  redesign(4000, 96000);
  RunOn(section, expected, 200, 100);
  slotter.Process(in.From(200), out.From(200), 100);
  ExpectClose(out, expected);
}

TEST(Slotter, AResonanceOfZeroIsTheSharpest) {
  for (const double resonance : {0.0, 0.5, 1.0}) {
    for (const bool isLow : {true, false}) {
      const double gain = MeasureMagnitude(
          [&](float* in, float* out, int32_t samples) {
            SlotterUnderTest slotter;
            slotter.Switch(isLow, !isLow);
            slotter.SetLowPass(2400, resonance);
            slotter.SetHighPass(2400, resonance);
            slotter.Prepare(1, static_cast<int32_t>(kRate));
            slotter.Process(&in, &out, samples);
          },
          2400, kRate);
      const double damping = isLow ? 1.3 * resonance + 0.1 : 1.38 * resonance + 0.02;
      EXPECT_NEAR(gain * damping, 1, 1e-4) << resonance << (isLow ? " low" : " high");
    }
  }
}

TEST(Slotter, AFrequencyAtOrAboveHalfTheSampleRateIsJustBelowIt) {
  TestRandom random;
  for (const int32_t rate : {1000, 22050, 32000, 40000}) {
    SlotterUnderTest slotter;
    slotter.Switch(true, true);
    slotter.SetLowPass(20000, 0);
    slotter.SetHighPass(20000, 0.3);
    slotter.Prepare(2, rate);
    const AudioBlock signal = AudioBlock::Noise(2, 20000, random);
    ExpectClose(
        slotter.Answer(signal, {512}),
        RunModel({ModelLowPass(0.4999 * rate, 0, rate), ModelHighPass(0.4999 * rate, 0.3, rate)}, signal));
  }
}

TEST(Slotter, PassesChannelsBeyondTheEighth) {
  TestRandom random;
  SlotterUnderTest slotter;
  slotter.Switch(true, true);
  slotter.Prepare(11, 44100);
  const AudioBlock signal = AudioBlock::Noise(11, 300, random);
  const AudioBlock out = slotter.Answer(signal, {64});
  for (int32_t c = 0; c < 11; ++c) EXPECT_EQ(std::equal(out[c], out[c] + 300, signal[c]), c >= 8) << c;
}

TEST(Slotter, CopiesTheInputUntilItHasASampleRate) {
  TestRandom random;
  SlotterUnderTest slotter;
  slotter.Prepare(3, 0);
  slotter.Switch(true, true);
  const AudioBlock signal = AudioBlock::Noise(3, 300, random);
  EXPECT_TRUE(slotter.Answer(signal, {64}) == signal);
}

}  // namespace
