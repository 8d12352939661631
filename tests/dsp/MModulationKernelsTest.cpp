#include "dsp/MModulationKernels.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/common/AudioBlock.h"

namespace {

constexpr float kLargest = std::numeric_limits<float>::max();
constexpr int32_t kCounts[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 32, 64, 65, 100, 999};

class MModulationKernels : public testing::TestWithParam<const ::MModulationKernels*> {
 protected:
  std::vector<double> RandomWave(int32_t count) {
    std::vector<double> wave(static_cast<std::size_t>(count));
    for (double& value : wave) value = random_.Real(-1, 1);
    return wave;
  }

  TestRandom random_;
};

void ExpectClose(double value, double expected) {
  ASSERT_NEAR(value, expected, 1e-7 * (1 + std::abs(expected)));
}

TEST_P(MModulationKernels, MultiplyByAWave) {
  for (const int32_t count : kCounts) {
    const AudioBlock in = AudioBlock::Noise(1, count, random_);
    const std::vector<double> wave = RandomWave(count);
    AudioBlock out(1, count);
    GetParam()->multiply(in[0], out[0], wave.data(), -0.75, 1.25, 0.5, count);
    for (int32_t i = 0; i < count; ++i)
      ExpectClose(out[0][i], (in[0][i] + 0.5) * (1.25 - 0.75 * wave[static_cast<std::size_t>(i)]));
    EXPECT_TRUE(out.GuardsHold());
  }
}

TEST_P(MModulationKernels, MoveAPartOfOneChannelToTheOther) {
  for (const int32_t count : kCounts) {
    AudioBlock in = AudioBlock::Noise(2, count, random_), out(2, count);
    const std::vector<double> wave = RandomWave(count);
    GetParam()->pan(in.From(), out.From(), wave.data(), 0.8, 0.5, count);
    for (int32_t i = 0; i < count; ++i) {
      const double l = in[0][i] + 0.5, r = in[1][i] + 0.5, m = 0.8 * wave[static_cast<std::size_t>(i)];
      ExpectClose(out[0][i], m >= 0 ? l * (1 - m) : l - r * m);
      ExpectClose(out[1][i], m >= 0 ? l * m + r : r * (m + 1));
    }
    EXPECT_TRUE(out.GuardsHold());
  }
}

TEST_P(MModulationKernels, TakeSamplesForALine) {
  for (const int32_t count : kCounts) {
    AudioBlock in = AudioBlock::Noise(1, count, random_);
    if (count > 2) in[0][random_.Below(count)] = random_.OneOf(std::vector<float>{NAN, INFINITY, -INFINITY});
    std::vector<double> line(static_cast<std::size_t>(count) + 1, 7);
    GetParam()->widen(in[0], line.data(), count);
    for (int32_t i = 0; i < count; ++i)
      ASSERT_EQ(line[static_cast<std::size_t>(i)], std::isfinite(in[0][i]) ? in[0][i] : 0) << i;
    EXPECT_EQ(line.back(), 7);
  }
}

TEST_P(MModulationKernels, InterpolateBetweenFourSamples) {
  for (const int32_t count : kCounts) {
    const AudioBlock line = AudioBlock::Noise(1, count + 40, random_);
    const std::vector<double> wave = RandomWave(count);
    AudioBlock out(1, count);
    const std::vector<double> numbers(line[0], line[0] + line.GetLength());
    GetParam()->interpolate(numbers.data(), out[0], wave.data(), 17.5, 19, count);
    for (int32_t i = 0; i < count; ++i) {
      const double x = 19 + i + 17.5 * wave[static_cast<std::size_t>(i)], t = x - std::floor(x);
      const float* const at = line[0] + static_cast<int32_t>(std::floor(x)) - 1;
      const double c = ((at[1] - at[2]) * 3.0 - at[0] + at[3]) * 0.5;
      const double b = 2.0 * at[2] + at[0] - (5.0 * at[1] + at[3]) * 0.5;
      ExpectClose(out[0][i], at[1] + ((c * t + b) * t + (double{at[2]} - at[0]) * 0.5) * t);
    }
    EXPECT_TRUE(out.GuardsHold());
  }
}

TEST_P(MModulationKernels, WorkInPlace) {
  AudioBlock in = AudioBlock::Noise(2, 103, random_), out(2, 103);
  const std::vector<double> wave = RandomWave(103);
  GetParam()->pan(in.From(), out.From(), wave.data(), 0.8, 0, 103);
  GetParam()->multiply(out[0], out[0], wave.data(), 0.5, 0.5, 0, 103);
  AudioBlock both = in;
  GetParam()->pan(both.From(), both.From(), wave.data(), 0.8, 0, 103);
  GetParam()->multiply(both[0], both[0], wave.data(), 0.5, 0.5, 0, 103);
  EXPECT_TRUE(both == out);
}

TEST_P(MModulationKernels, TakeWhatIsNotFiniteAsZeroAndLimitToTheRangeOfFloat) {
  const std::vector<double> wave(8, 1.0);
  const float bad[] = {NAN, INFINITY, -INFINITY, kLargest, -kLargest, NAN, 0.5f, -0.5f};
  AudioBlock in(2, 8), out(2, 8);
  std::copy_n(bad, 8, in[0]);
  std::copy_n(bad, 8, in[1]);
  GetParam()->multiply(in[0], out[0], wave.data(), 1e6, 0, 0, 8);
  const float expected[] = {0, 0, 0, kLargest, -kLargest, 0, 5e5f, -5e5f};
  for (int32_t i = 0; i < 8; ++i) EXPECT_EQ(out[0][i], expected[i]) << i;
  GetParam()->pan(in.From(), out.From(), wave.data(), 1, 0, 8);
  for (int32_t i = 0; i < 8; ++i) {
    EXPECT_EQ(out[0][i], 0) << i;
    EXPECT_EQ(out[1][i], i < 6 ? expected[i] : 2 * bad[i]) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Paths, MModulationKernels,
                         testing::Values(&kModulationPlain, &MGetModulationKernels()),
                         [](const auto& path) { return path.index == 0 ? "Plain" : "Best"; });

}  // namespace
