#include <gtest/gtest.h>

#include "core/MXMLItem.h"
#include "plugin/MParameterText.h"
#include "tests/common/Texts.h"
#include "tests/effects/ModulationUnderTest.h"

namespace {

constexpr int32_t kRate = 48000;

struct Setting {
  double depth = 0.4, hertz = 4, difference = 0.5, shape = 5;
};

class QuaverlyUnderTest : public ModulationUnderTest {
 public:
  QuaverlyUnderTest() : ModulationUnderTest("Quaverly") {}

  // Prepared, with the first repair used up by a block of silence, which moves the phase by its length.
  void Start(const Setting& at, int32_t channels) {
    Set("depth", at.depth);
    SetRate(at.hertz);
    Set("phasediff", at.difference);
    SetShape(at.shape);
    Prepare(channels, kRate);
    AnswerToSilence(channels, kSettle);
  }
  static constexpr int32_t kSettle = 512;
};

// The formula over a signal that silence precedes.
AudioBlock Model(const AudioBlock& in, const Setting& at) {
  const TestWave wave(at.shape);
  const double rate = std::pow(10, std::log10(at.hertz)), step = rate / kRate;
  const double reach = std::clamp(std::trunc(at.depth * 200), 1.0, 200.0),
               offset = kRate / rate * at.difference;
  AudioBlock out = in;
  double own = offset < 0 ? -8 * offset : 0;
  for (int32_t c = 0; c < in.GetChannelCount(); ++c) {
    // Millions of cycles at the lowest rates, so the fraction comes first.
    const double phase = QuaverlyUnderTest::kSettle * step + (own - std::floor(own));
    own += offset;
    const auto read = [&](int32_t i) { return i < 0 ? 0.0 : in[c][i]; };
    for (int32_t i = 0; i < in.GetLength(); ++i) {
      const double v = wave.Read(phase + i * step) * reach + i - 204;
      const auto p = static_cast<int32_t>(std::floor(v));
      const double t = v - p, p0 = read(p - 1), p1 = read(p), p2 = read(p + 1), p3 = read(p + 2);
      const double k = ((p1 - p2) * 3 - p0 + p3) * 0.5;
      out[c][i] =
          static_cast<float>(p1 + ((k * t + (2 * p2 + p0 - (5 * p1 + p3) * 0.5)) * t + (p2 - p0) * 0.5) * t);
    }
  }
  return out;
}

void ExpectClose(const AudioBlock& out, const AudioBlock& expected) {
  EXPECT_LE(out.GetDistance(expected), 1e-6 * expected.GetPeak());
}

TEST(Quaverly, ReadsTheSignalAtAMovingPlace) {
  TestRandom random;
  for (const double depth : {0.0, 0.4, 1.0}) {
    for (const double hertz : {0.01, 4.0, 20.0}) {
      for (const double difference : {-1.0, -0.3, 0.0, 0.5}) {
        const Setting at = {depth, hertz, difference};
        const int32_t channels = random.Integer(2, 3);
        QuaverlyUnderTest quaverly;
        quaverly.Start(at, channels);
        const AudioBlock in = AudioBlock::Noise(channels, 4000, random);
        ExpectClose(quaverly.Answer(in, {1, 2, 3, 4, 5, 409, 700, 512}), Model(in, at));
      }
    }
  }
}

TEST(Quaverly, EveryShapeMovesThePlace) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(2, 3000, random);
  for (double shape = 0; shape <= 15; shape += 1.25) {
    const Setting at = {1, 20, 0.25, shape};
    QuaverlyUnderTest quaverly;
    quaverly.Start(at, 2);
    const AudioBlock out = quaverly.Answer(in, {512}), expected = Model(in, at);
    EXPECT_LE(out.GetDistance(expected), 1e-5 * expected.GetPeak()) << shape;
  }
}

TEST(Quaverly, BlocksOfAnySizeGiveTheSameAudioWithoutARepair) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(2, 4000, random);
  const Setting at = {1, 7, 0.3};
  for (const int32_t size : {1, 2, 3, 4, 5, 255, 256, 257, 409, 512, 4000}) {
    QuaverlyUnderTest quaverly;
    quaverly.Start(at, 2);
    ExpectClose(quaverly.Answer(in, {size}), Model(in, at));
  }
}

TEST(Quaverly, DelaysARampByTheSwing) {
  const Setting at = {1, 3, 0};
  QuaverlyUnderTest quaverly;
  quaverly.Start(at, 1);
  const TestWave wave(5);
  AudioBlock in(1, 16000);
  in.Fill([](int32_t i) { return i / 1024.0; });
  const AudioBlock out = quaverly.Answer(in, {512});
  for (int32_t i = 500; i < 16000; ++i) {
    const double swing = 200 * wave.Read((QuaverlyUnderTest::kSettle + i) * 3.0 / kRate);
    ASSERT_NEAR(out[0][i], (i - 204 + swing) / 1024, 1e-4) << i;
  }
}

TEST(Quaverly, RepairsTheFirstBlockBehindAChange) {
  QuaverlyUnderTest quaverly;
  quaverly.Start({}, 1);
  const AudioBlock ones = AudioBlock::Constant(1, 1000, 1);
  EXPECT_EQ(quaverly.Answer(ones)[0][999], 1);
  quaverly.Prepare(1, kRate);  // the line is empty now: the repair leads from 1 to 0
  const AudioBlock out = quaverly.AnswerToSilence(1, 256);
  for (int32_t i = 0; i < 256; ++i) ASSERT_NEAR(out[0][i], std::max(0.0, 1 - i / 128.0), 1e-6) << i;
}

TEST(Quaverly, TheLatencyIsTheReach) {
  QuaverlyUnderTest quaverly;
  EXPECT_EQ(quaverly.Call(MService::kGetLatency), 80);
  quaverly.Prepare(2, kRate);
  for (const auto& [depth, latency] :
       {std::pair(0.0, 1), {0.001, 1}, {0.5, 100}, {0.5049, 100}, {1.0, 200}, {7.0, 200}, {-3.0, 1}}) {
    quaverly.Set("depth", depth);
    EXPECT_EQ(quaverly.Call(MService::kGetLatency), latency) << depth;
  }
}

TEST(Quaverly, IsSilentWhenItsLinesHoldNothingAboveATenThousandth) {
  QuaverlyUnderTest quaverly;
  quaverly.Start({}, 2);
  EXPECT_EQ(quaverly.IsSilent(), 1);
  quaverly.Answer(AudioBlock::Constant(2, 500, 0.0001));
  EXPECT_EQ(quaverly.IsSilent(), 1);
  quaverly.Answer(AudioBlock::Impulse(2, 408));
  EXPECT_EQ(quaverly.IsSilent(), 0);
  quaverly.Answer(AudioBlock(2, 407));
  EXPECT_EQ(quaverly.IsSilent(), 1);
  quaverly.Answer(AudioBlock::Impulse(2, 1000));
  EXPECT_EQ(quaverly.IsSilent(), 0) << "the start of the last block counts";
  quaverly.Answer(AudioBlock(2, 1));
  EXPECT_EQ(quaverly.IsSilent(), 1);
}

TEST(Quaverly, SkippingChangesNothing) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(2, 2000, random);
  QuaverlyUnderTest skipped, other;
  for (QuaverlyUnderTest* quaverly : {&skipped, &other}) quaverly->Start({}, 2);
  for (const int32_t samples : {1, 777, 1000000000}) skipped.Skip(samples);
  EXPECT_TRUE(skipped.Answer(in, {512}) == other.Answer(in, {512}));
}

TEST(Quaverly, StaysFiniteWithHugeOffsets) {
  TestRandom random;
  for (const double difference : {1e6, -1e6, 1e300}) {
    QuaverlyUnderTest quaverly;
    quaverly.Start({1, 1e-6, difference}, 8);
    EXPECT_TRUE(quaverly.Answer(AudioBlock::Noise(8, 2000, random), {512}).IsFinite());
  }
}

TEST(Quaverly, PassesChannelsFromTheNinthOn) {
  TestRandom random;
  QuaverlyUnderTest quaverly;
  quaverly.Start({}, 10);
  const AudioBlock in = AudioBlock::Noise(10, 500, random), out = quaverly.Answer(in, {64});
  for (int32_t c = 0; c < 10; ++c)
    EXPECT_EQ(std::equal(in[c], in[c] + 500, out[c]), c >= 8) << "channel " << c;
}

TEST(Quaverly, ShowsPercentAndHertz) {
  QuaverlyUnderTest quaverly;
  ASSERT_EQ(quaverly.GetRowCount(), 4);
  EXPECT_EQ(quaverly.GetBlock().pluginFlag, 1);
  EXPECT_EQ(Utf8(MParameterText(quaverly.GetRow(0), 0.4)), "40.00%");
  EXPECT_EQ(Utf8(MParameterText(quaverly.GetRow(1), std::log10(4))), "4.00Hz");
  EXPECT_EQ(Utf8(MParameterText(quaverly.GetRow(2), -1)), "-100.00%");
}

}  // namespace
