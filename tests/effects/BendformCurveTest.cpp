// Bendform's loops for all processors beside the computer of the curve.

#include "effects/BendformCurve.h"

#include <gtest/gtest.h>

#include "dsp/MProcessor.h"
#include "tests/common/AudioBlock.h"

namespace {

std::vector<const BendformKernel*> GetKernels() {
  std::vector<const BendformKernel*> kernels = {&kBendformBaseline};
  if (MHasAVX2()) kernels.push_back(&kBendformWide);
  return kernels;
}

MEnvelopeData RandomCurve(TestRandom& random) {
  MEnvelopeData data;
  const int32_t count = random.Integer(0, 12);
  for (int32_t i = 0; i < count; ++i) {
    MEnvelopePoint point;
    point.x = random.OneIn(4) ? random.Below(3) * 0.5 : random.Real(0, 1);
    point.y = random.Real(0, 1);
    point.type = random.Below(MEnvelopeType::kCount);
    point.tension = random.Real(-1, 1);
    point.tensionX = random.Real(-1, 1);
    if (random.OneIn(2)) point.smooth1 = point.smooth2 = random.Real(0, 1);
    point.smoothingType = random.Below(2);
    data.Insert(data.FindIndex(point.x) + 1, point);
  }
  data.Normalize();
  return data;
}

TEST(BendformCurve, IsTheComputersCurveForEveryLengthAndStart) {
  TestRandom random;
  for (const BendformKernel* const kernel : GetKernels()) {
    for (int32_t round = 0; round < 200; ++round) {
      const MEnvelopeData data = RandomCurve(random);
      BendformCurve curve;
      curve.Build(data);
      MEnvelopeComputer computer;
      computer.Build(data);
      const int32_t samples = random.OneOf<int32_t>({0, 1, 2, 3, 5, 15, 16, 17, 33, 100});
      const int32_t start = random.Below(4);
      const double depth = random.Real(0, 1);
      const AudioBlock in = AudioBlock::Noise(1, start + samples, random, 1.1);
      AudioBlock out(1, start + samples);
      kernel->run(curve.GetView(), depth, in[0] + start, out[0] + start, samples);
      ASSERT_TRUE(out.GuardsHold());
      for (int32_t i = start; i < start + samples; ++i) {
        const double u = std::sqrt(std::abs(double{in[0][i]}));
        computer.Seek(u);
        const double v = computer.GetValue(u);
        const double wet = in[0][i] < 0 ? -v * v : v * v;
        const double expected = wet * depth + in[0][i] * (1 - depth);
        ASSERT_NEAR(out[0][i], expected, 1.5e-7 * std::max(1.0, std::abs(expected)))
            << round << ", " << in[0][i];
      }
    }
  }
}

TEST(BendformCurve, KnowsTheIdentityAndCurvesOfOneSegment) {
  MEnvelopeData data;
  data.Add(0, 0);
  data.Add(1, 1);
  BendformCurve curve;
  EXPECT_EQ(curve.GetView().pieces, nullptr);
  curve.Build(data);
  EXPECT_TRUE(curve.GetView().isIdentity);
  data[0].tension = 0.3;
  curve.Build(data);
  EXPECT_TRUE(curve.GetView().isSingle && !curve.GetView().isIdentity);
  data.Insert(1, MEnvelopePoint(data[0])).x = 0.5;
  curve.Build(data);
  EXPECT_FALSE(curve.GetView().isSingle);
}

}  // namespace
