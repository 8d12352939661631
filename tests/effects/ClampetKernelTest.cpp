// Clampet's loops in all widths beside the plain curve.

#include <gtest/gtest.h>

#include "dsp/MProcessor.h"
#include "effects/ClampetCurve.h"
#include "tests/common/AudioBlock.h"

namespace {

std::vector<const ClampetKernel*> GetKernels() {
  std::vector<const ClampetKernel*> kernels = {&kClampetBaseline};
  if (MHasAVX2()) kernels.push_back(&kClampetWide);
  return kernels;
}

TEST(ClampetKernel, FollowsThePlainCurveForEveryLengthAndStart) {
  TestRandom random;
  for (const ClampetKernel* const kernel : GetKernels()) {
    for (int32_t mode = 0; mode < ClampetCurve::kModeCount; ++mode) {
      for (const int32_t samples : {0, 1, 2, 3, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 64, 65, 100, 999}) {
        const ClampetCurve curve(mode, random.Real(0, 1), random.Real(0.5, 2),
                                 random.OneIn(2) ? random.Real(0, 1) : 0);
        const int32_t start = random.Below(4);
        AudioBlock in = AudioBlock::Noise(1, start + samples, random, 1.5);
        AudioBlock out(1, start + samples);
        kernel->modes[mode](curve, in[0] + start, out[0] + start, samples);
        ASSERT_TRUE(out.GuardsHold());
        for (int32_t i = start; i < start + samples; ++i) {
          const double expected = curve.GetOutput(in[0][i]);
          ASSERT_NEAR(out[0][i], expected, 6.1e-8 * std::abs(expected) + 1e-12) << mode << ", " << in[0][i];
        }
      }
    }
  }
}

// The relative error of a quiet sample is that of its float, with the whole curve a knee.
TEST(ClampetKernel, IsExactForQuietSamplesInTheKnee) {
  for (const ClampetKernel* const kernel : GetKernels()) {
    for (int32_t mode = 0; mode < ClampetCurve::kModeCount; ++mode) {
      const ClampetCurve curve(mode, 0, 1, 0);
      for (const float quiet : {1e-30f, 1e-12f, 1e-6f, 1e-3f}) {
        float out = 0;
        kernel->modes[mode](curve, &quiet, &out, 1);
        const double expected = curve.GetOutput(quiet);
        ASSERT_NEAR(out, expected, 6.1e-8 * expected) << mode << ", " << quiet;
      }
    }
  }
}

}  // namespace
