#include "dsp/MFirFilter.h"

#include <gtest/gtest.h>

#include "dsp/MProcessor.h"
#include "tests/common/AudioBlock.h"

namespace {

TEST(MFirFilter, SumsSamplesTimesTapsInEveryWidthForEveryLength) {
  TestRandom random;
  std::vector<const MFirKernel*> kernels = {&kFirBaseline};
  if (MHasAVX2()) kernels.push_back(&kFirWide);
  for (const MFirKernel* const kernel : kernels) {
    for (const int32_t length : {1, 2, 7, 31, 32, 33, 64, 100, 512}) {
      for (const int32_t count : {0, 1, 3, 8, 15, 16, 17, 31, 63, 64, 65, 200}) {
        const AudioBlock taps = AudioBlock::Noise(1, length, random);
        const AudioBlock in = AudioBlock::Noise(1, length - 1 + count + MFirKernel::kPadding, random);
        AudioBlock out(1, count);
        kernel->run(taps[0], length, 0.5f, in[0], out[0], count);
        ASSERT_TRUE(out.GuardsHold());
        for (int32_t i = 0; i < count; ++i) {
          double sum = 0;
          for (int32_t k = 0; k < length; ++k) sum += double{taps[0][k]} * in[0][length - 1 + i - k];
          ASSERT_NEAR(out[0][i], 0.5 * sum, 1e-6 * length) << length << ", " << count << ", " << i;
        }
      }
    }
  }
}

AudioBlock RunBlock(MFirFilter& filter, AudioBlock block) {
  filter.Run(block.From(), block.From(), block.GetChannelCount(), block.GetLength());
  return block;
}

TEST(MFirFilter, ServesChannelsWithTheKernelsByTurns) {
  MFirFilter filter;
  filter.SetFormat(2, 4, 5);
  for (int32_t kernel = 0; kernel < 2; ++kernel)
    for (int32_t k = 0; k < 4; ++k) filter.GetKernel(kernel)[k] = static_cast<float>(10 * kernel + k + 1);
  const AudioBlock out = RunBlock(filter, AudioBlock::Impulse(5, 8));
  for (int32_t c = 0; c < 5; ++c)
    for (int32_t k = 0; k < 8; ++k) EXPECT_EQ(out[c][k], k < 4 ? c % 2 * 10 + k + 1 : 0) << c << ", " << k;
}

TEST(MFirFilter, NormalizesBySumsOfMagnitudes) {
  MFirFilter filter;
  filter.SetFormat(3, 2, 3);
  const float taps[3][2] = {{3, -1}, {0, 0}, {1e-22f, 2e-22f}};
  for (int32_t kernel = 0; kernel < 3; ++kernel) std::copy_n(taps[kernel], 2, filter.GetKernel(kernel));
  filter.Normalize();
  const AudioBlock out = RunBlock(filter, AudioBlock::Impulse(3, 2));
  EXPECT_EQ(out[0][0], 0.75f);
  EXPECT_EQ(out[0][1], -0.25f);
  EXPECT_EQ(out[1][0], 0);
  EXPECT_EQ(out[2][1], 2e-22f);
}

TEST(MFirFilter, KeepsEverythingWithTheSameFormatAndNothingWithAnother) {
  MFirFilter filter;
  filter.SetFormat(1, 3, 1);
  std::fill_n(filter.GetKernel(0), 3, 1.0f);
  RunBlock(filter, AudioBlock::Constant(1, 3, 1));
  filter.SetFormat(1, 3, 1);
  EXPECT_EQ(RunBlock(filter, AudioBlock(1, 1))[0][0], 2);
  filter.SetFormat(1, 3, 2);
  EXPECT_EQ(filter.GetKernel(0)[0], 0);
}

TEST(MFirFilter, LimitsItsFormat) {
  MFirFilter filter;
  filter.SetFormat(99, -5, 0);
  EXPECT_EQ(filter.GetLength(), 1);
  filter.GetKernel(MFirFilter::kMaximumKernels - 1)[0] = 2;
  EXPECT_EQ(RunBlock(filter, AudioBlock::Constant(8, 1, 1))[7][0], 2);
}

TEST(MFirFilter, CopiesChannelsThatItHasNotAndAllWithoutAFormat) {
  TestRandom random;
  MFirFilter filter;
  const AudioBlock in = AudioBlock::Noise(3, 50, random);
  filter.Skip(3, 10);
  EXPECT_TRUE(RunBlock(filter, in) == in);
  filter.SetFormat(1, 2, 2);
  const AudioBlock out = RunBlock(filter, in);
  EXPECT_EQ(out[1][30], 0);
  EXPECT_TRUE(std::equal(in[2], in[2] + 50, out[2]));
}

TEST(MFirFilter, TakesWhatIsNotFiniteAsZeroAndStaysInTheRangeOfFloat) {
  MFirFilter filter;
  filter.SetFormat(1, 2, 1);
  std::fill_n(filter.GetKernel(0), 2, 1.0f);
  AudioBlock in(1, 6);
  in[0][0] = NAN;
  in[0][2] = INFINITY;
  in[0][4] = in[0][5] = std::numeric_limits<float>::max();
  const AudioBlock out = RunBlock(filter, in);
  for (int32_t i = 0; i < 4; ++i) EXPECT_EQ(out[0][i], 0) << i;
  EXPECT_EQ(out[0][5], std::numeric_limits<float>::max());
}

}  // namespace
