// Swirlo's loop on each kind of processor beside the formula, one channel and one stage after the other.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "dsp/MProcessor.h"
#include "effects/SwirloPasses.h"
#include "tests/common/AudioBlock.h"

namespace {

std::vector<const SwirloKernel*> GetKernels() {
  std::vector<const SwirloKernel*> kernels = {&kSwirloBaseline};
  if (MHasAVX2()) kernels.push_back(&kSwirloWide);
  return kernels;
}

void RunPlain(const SwirloStretch& at, int32_t side, int32_t stages, int32_t samples) {
  SwirloChannel& channel = *at.channels[side];
  for (int32_t i = 0; i < samples; ++i) {
    const double x = at.in[side][i] + at.bias;
    const double d = std::max(at.waves[side][i] * at.scale + at.offset, 0.0), a = (1 - d) / (1 + d);
    double y = at.feedback * channel.feedback + x;
    for (int32_t k = 0; k < stages; ++k) {
      const double t = channel.stages[k] - a * y;
      channel.stages[k] = t * a + y;
      y = t;
    }
    channel.feedback = y;
    at.out[side][i] = MLimitToFloat(y * at.depth + x * (1 - at.depth));
  }
}

// A stretch of noise, from an odd address on, in the middle of a signal.
struct Buffers {
  AudioBlock in, out;
  std::vector<double> waves[2];
  SwirloChannel channels[2];

  Buffers(int32_t samples, TestRandom& random)
      : in(AudioBlock::Noise(2, samples + 1, random)), out(AudioBlock::Constant(2, samples + 1, 7)) {
    for (std::vector<double>& wave : waves)
      for (int32_t i = 0; i <= samples; ++i) wave.push_back(random.Real(-1, 1));
    for (SwirloChannel& channel : channels) {
      for (double& stage : channel.stages) stage = random.Real(-1, 1);
      channel.feedback = random.Real(-1, 1);
    }
  }
  SwirloStretch Get(const double (&numbers)[4], int32_t right, bool inPlace) {
    AudioBlock& to = inPlace ? in : out;
    return {{&channels[0], &channels[right]},
            {waves[0].data() + 1, waves[right].data() + 1},
            {in[0] + 1, in[right] + 1},
            {to[0] + 1, to[right] + 1},
            numbers[0],
            numbers[1],
            numbers[2],
            numbers[3],
            1e-25};
  }
};

TEST(SwirloKernel, FollowsTheFormulaForEveryNumberOfStages) {
  TestRandom random;
  for (const SwirloKernel* const kernel : GetKernels()) {
    for (int32_t stages = 1; stages <= 10; ++stages) {
      for (const int32_t samples : {0, 1, 2, 3, 7, 256, 1000}) {
        const int32_t right = random.Below(2);  // else one channel on both sides
        const bool inPlace = random.OneIn(2);
        const double scale = random.Real(-0.4, 0.4);  // d may be below 0
        const double numbers[] = {scale, random.Real(0, 0.4), random.Real(0, 0.9), random.Real(0, 1)};
        Buffers fast(samples, random), plain = fast;
        kernel->passes[stages - 1](fast.Get(numbers, right, inPlace), samples);
        const SwirloStretch at = plain.Get(numbers, right, inPlace);
        for (int32_t side = 0; side <= right; ++side) RunPlain(at, side, stages, samples);
        const double peak = std::max({1.0, plain.out.GetPeak(), plain.in.GetPeak()});
        ASSERT_LE(fast.out.GetDistance(plain.out), 1e-7 * peak) << stages << ", " << samples;
        ASSERT_LE(fast.in.GetDistance(plain.in), 1e-7 * peak) << stages << ", " << samples;
        ASSERT_TRUE(fast.in.GuardsHold() && fast.out.GuardsHold());
        for (int32_t side = 0; side <= right; ++side) {
          // With d below 0 a stage swells, beyond what the output holds.
          const SwirloChannel& channel = plain.channels[side];
          double largest = std::max(peak, std::abs(channel.feedback));
          for (const double stage : channel.stages) largest = std::max(largest, std::abs(stage));
          ASSERT_NEAR(fast.channels[side].feedback, channel.feedback, 1e-11 * largest);
          for (int32_t k = 0; k < 10; ++k)
            ASSERT_NEAR(fast.channels[side].stages[k], channel.stages[k], 1e-11 * largest);
        }
      }
    }
  }
}

TEST(SwirloKernel, TakesASampleThatIsNotFiniteForZeroAndStaysInTheRangeOfFloat) {
  for (const SwirloKernel* const kernel : GetKernels()) {
    for (int32_t stages = 1; stages <= 10; ++stages) {
      const float in[] = {NAN, INFINITY, -INFINITY, 3.4e38f, -3.4e38f, 3.4e38f};
      const double wave[6] = {};
      float out[2][6];
      SwirloChannel channels[2] = {};
      kernel->passes[stages - 1](
          {{&channels[0], &channels[1]}, {wave, wave}, {in, in}, {out[0], out[1]}, 0, 0.3, 1, 1000, 0}, 6);
      for (int32_t i = 0; i < 3; ++i) ASSERT_EQ(out[0][i], 0);
      for (const auto& side : out)
        for (const float sample : side) ASSERT_TRUE(std::isfinite(sample));
      ASSERT_EQ(std::abs(out[1][4]), std::numeric_limits<float>::max()) << stages;
    }
  }
}

}  // namespace
