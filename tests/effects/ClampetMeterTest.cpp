// What Clampet's editor draws.

#include <gtest/gtest.h>

#include <memory>

#include "effects/Clampet.h"
#include "tests/common/AudioBlock.h"

namespace {

class ClampetMeter : public testing::Test {
 protected:
  ClampetMeter() {
    clampet_->Prepare(2, 48000);
    clampet_->SetEditorOpen(true);
  }
  double MeterAfter(AudioBlock block) {
    clampet_->Process(block.From(), block.From(), block.GetLength());
    return clampet_->GetMeter();
  }

  const std::unique_ptr<ClampetAudioEffectPlugin> clampet_{new ClampetAudioEffectPlugin};
};

AudioBlock WithPeaks(double left, double right) {
  AudioBlock block(2, 50);
  block[0][10] = static_cast<float>(left);
  block[1][49] = static_cast<float>(right);
  return block;
}

TEST_F(ClampetMeter, FollowsTheLargestSampleOfTheInputThoughBlocksAreInPlace) {
  EXPECT_DOUBLE_EQ(MeterAfter(WithPeaks(0.25, 2)), 1.6);
  EXPECT_DOUBLE_EQ(MeterAfter(WithPeaks(0.5, 0.25)), 1.6 * 0.19999999999999996 + 0.4);
  EXPECT_DOUBLE_EQ(MeterAfter(AudioBlock(2, 50)), (1.6 * 0.19999999999999996 + 0.4) * 0.19999999999999996);
}

TEST_F(ClampetMeter, DoesNotCountNegativePeaks) {
  EXPECT_DOUBLE_EQ(MeterAfter(WithPeaks(-2, 0.5)), 0.4);
  EXPECT_DOUBLE_EQ(MeterAfter(AudioBlock::Constant(2, 50, -1)), 0.4 * 0.19999999999999996);
}

TEST_F(ClampetMeter, CountsTheGain) {
  AudioBlock block = WithPeaks(0.5, 0);
  auto& rows = *MAsAddress<MPluginPublicBlock>(clampet_->Service(MService::kPublicBlock, nullptr));
  MStoreShared(rows.parameters[0].real.value, 20.0);
  clampet_->Update();
  EXPECT_DOUBLE_EQ(MeterAfter(block), 4);
}

TEST_F(ClampetMeter, StandsStillWithoutAnEditorAndInEmptyBlocks) {
  MeterAfter(WithPeaks(1, 0));
  EXPECT_DOUBLE_EQ(MeterAfter(AudioBlock(2, 0)), 0.8);
  clampet_->SetEditorOpen(false);
  EXPECT_DOUBLE_EQ(MeterAfter(WithPeaks(5, 5)), 0.8);
}

TEST_F(ClampetMeter, IgnoresWhatIsNotFinite) {
  EXPECT_DOUBLE_EQ(MeterAfter(WithPeaks(INFINITY, 0.5)), 0.4);
  EXPECT_DOUBLE_EQ(MeterAfter(WithPeaks(NAN, -INFINITY)), 0.4 * 0.19999999999999996);
}

TEST_F(ClampetMeter, TheDrawnCurveIsTheOneThatIsHeard) {
  AudioBlock block = AudioBlock(2, 401).Fill([](int32_t i) { return i * 0.01 - 2; });
  const AudioBlock in = block;
  clampet_->Process(block.From(), block.From(), 401);
  for (int32_t i = 0; i < 401; ++i) EXPECT_NEAR(block[0][i], clampet_->GetOutput(in[0][i]), 1e-7);
}

}  // namespace
