#include <gtest/gtest.h>

#include "tests/instruments/generators/MixerInTest.h"

namespace {

Signal Noise(int32_t length, TestRandom& random, double peak = 1) {
  Signal signal(static_cast<std::size_t>(length));
  for (double& sample : signal) sample = static_cast<float>(random.Real(-peak, peak));
  return signal;
}

// A block model cannot be asked with the same samples on both sides of a curve's end, so all sounds are long.
TEST(MMixerFreq, DepthsOfNothingAHundredAndTwoHundredSamplesAreTheModelInAnyBlocks) {
  TestRandom random;
  for (const double volume : {0.0, 0.0049, 0.5, 1.0, 1.7, -0.5}) {
    MixerInTest both(
        {{.signal = Noise(1500, random)}, {.signal = Noise(1500, random), .mode = 2, .volume = volume}});
    for (const Sizes& sizes : kSplits) both.ExpectModel(sizes);
  }
}

TEST(MMixerFreq, WithoutDepthIsADelayOfFourSamples) {
  TestRandom random;
  MixerInTest both({{.signal = Noise(500, random)}, {.signal = Noise(500, random), .mode = 2, .volume = 0}});
  const AudioBlock out = Pump(both.mixer, 2, 500, {7});
  for (int32_t i = 0; i < 500; ++i)
    ASSERT_EQ(out[0][i],
              i < 4 ? 0 : static_cast<float>(both.objects[0].samples[static_cast<std::size_t>(i - 4)]));
}

TEST(MMixerFreq, ModulatorOfAConstantMovesTheMixByWholeSamples) {
  TestRandom random;
  // D = 100; x is the volume times 1, so the place is i - 100 - 4 + 50.
  MixerInTest both({{.signal = Noise(500, random)}, {.signal = Signal(500, 1.0), .mode = 2, .volume = 0.5}},
                   1);
  const AudioBlock out = Pump(both.mixer, 1, 500, {64});
  for (int32_t i = 0; i < 500; ++i)
    ASSERT_NEAR(out[0][i], i < 54 ? 0 : both.objects[0].samples[static_cast<std::size_t>(i - 54)], 1e-6);
}

TEST(MMixerFreq, ModulatorThatIsOverLeavesTheDelay) {
  TestRandom random;
  MixerInTest both({{.signal = Noise(1500, random)}, {.signal = Noise(300, random), .mode = 2}});
  for (const Sizes& sizes : {Sizes{100}, {300}, {64}}) both.ExpectModel(sizes);
}

TEST(MMixerFreq, ModulatorBeyondItsRangeIsLimited) {
  TestRandom random;
  MixerInTest both(
      {{.signal = Noise(1500, random)}, {.signal = Noise(1500, random, 9), .mode = 2, .pan = 0.5}});
  both.ExpectModel({64});
}

TEST(MMixerFreq, NumbersWithoutSenseAreHarmless) {
  TestRandom random;
  MixerInTest both({{.signal = Signal(500, 3e38)},
                    {.signal = Noise(500, random), .mode = 2},
                    {.signal = Signal(500, 3e38)}});
  for (const double volume : {1e300, -1e300, double{NAN}, double{INFINITY}}) {
    for (Written& object : both.objects) object.volume = volume;
    EXPECT_TRUE(Pump(both.mixer, 2, 500, {64}).IsFinite()) << volume;
  }
}

TEST(MMixerFreq, ManyModesAtRandomAreTheModel) {
  TestRandom random;
  for (int32_t round = 0; round < 100 && !testing::Test::HasFailure(); ++round) {
    std::vector<MixerModel::Object> plan;
    for (int32_t i = random.Integer(1, 6); i > 0; --i)
      plan.push_back({.signal = Noise(random.Integer(1, 2000), random, 0.7),
                      .isEnabled = !random.OneIn(4),
                      .mode = random.Below(3),
                      .volume = random.OneIn(3) ? 1 : random.Real(0, 1.2),
                      .pan = random.OneIn(3) ? 0 : random.Real(-1, 1)});
    MixerInTest(plan, random.Integer(1, 3)).ExpectModel(random.OneOf(kSplits));
  }
}

}  // namespace
