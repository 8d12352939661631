// Squeezel's states, the older forms too.

#include <gtest/gtest.h>

#include "tests/effects/OldStates.h"
#include "tests/effects/SqueezelUnderTest.h"

namespace {

constexpr int32_t kGain = 0, kOutputGain = 1, kThreshold = 5, kRatio = 6;

double RatioOfSlope(double stored, double threshold) {
  const double t = threshold * threshold;
  return 1 / (1 - std::log10((1 - t) / stored + t) / std::log10(t));
}

void ExpectPoint(const MEnvelopeData& curve, int32_t index, double x, double y) {
  ASSERT_LT(index, curve.GetCount());
  EXPECT_NEAR(curve[index].x, x, 1e-8);
  EXPECT_NEAR(curve[index].y, y, 1e-8);
}

TEST(SqueezelState, TheOldestOneHoldsHalfOfTheGainAndASlope) {
  SqueezelUnderTest squeezel;
  LoadOldState(squeezel, "SqueezelOldest.xml");
  EXPECT_EQ(squeezel.Get(kGain), -7);
  EXPECT_EQ(squeezel.Get(kOutputGain), 4);
  EXPECT_NEAR(squeezel.Get(kRatio), RatioOfSlope(1.5, 0.5), 1e-12);
  EXPECT_NEAR(squeezel.Get(kRatio), 1.26, 0.01);
  // What is heard is what the rows say.
  SqueezelUnderTest same({{"gain", -7}, {"outputgain", 4}, {"ratio", squeezel.Get(kRatio)}});
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(1, 500, random);
  EXPECT_TRUE(squeezel.Answer(in) == same.Answer(in));
}

TEST(SqueezelState, EachMarkStandsForItself) {
  SqueezelUnderTest half, slope;
  LoadOldState(half, "SqueezelHalfGain.xml");
  EXPECT_EQ(half.Get(kGain), -7);
  EXPECT_EQ(half.Get(kRatio), 1.5);
  LoadOldState(slope, "SqueezelSlope.xml");
  EXPECT_EQ(slope.Get(kGain), -3.5);
  EXPECT_NEAR(slope.Get(kRatio), RatioOfSlope(1.5, 0.5), 1e-12);
  const auto sideChain = slope.GetPlugin().GetSideChain();
  EXPECT_TRUE(sideChain.isOn && sideChain.plays);
  EXPECT_EQ(sideChain.minimumFrequency, 150.5);
  EXPECT_EQ(sideChain.maximumFrequency, 4000);
}

TEST(SqueezelState, AnEmptyOneHasASlopeAndNoSideChain) {
  SqueezelUnderTest squeezel;
  squeezel.GetPlugin().SetSideChain({true, true, 100, 200});
  MXMLItem item;
  squeezel.Call(MService::kLoadState, MAsWord(&item));
  EXPECT_NEAR(squeezel.Get(kRatio), 1.4134, 1e-4);
  const auto sideChain = squeezel.GetPlugin().GetSideChain();
  EXPECT_FALSE(sideChain.isOn || sideChain.plays);
  EXPECT_EQ(sideChain.minimumFrequency, 20);
  EXPECT_EQ(sideChain.maximumFrequency, 20000);
}

TEST(SqueezelState, ASlopeThatHasNoRatioStays) {
  for (const auto& [threshold, ratio] : {std::pair("1", "3"), {"0.5", "-0.2"}, {"0", "2"}}) {
    SqueezelUnderTest squeezel;
    MXMLItem item;
    item.SetAttribute("halfgain", "0");
    item.SetAttribute("parameterthreshold", MString::Literal(threshold));
    item.SetAttribute("parameterratio", MString::Literal(ratio));
    squeezel.Call(MService::kLoadState, MAsWord(&item));
    if (std::isfinite(RatioOfSlope(std::atof(ratio), std::atof(threshold)))) continue;
    EXPECT_EQ(squeezel.Get(kRatio), std::atof(ratio)) << threshold;
    EXPECT_EQ(squeezel.Get(kThreshold), std::atof(threshold));
  }
}

TEST(SqueezelState, KeepsCurveAndSideChainAndLeavesTheCurveWithoutAGraph) {
  SqueezelUnderTest squeezel, loaded;
  MEnvelopeData curve;
  curve.Add(0, 0.25);
  curve.Add(1, 0.75);
  squeezel.GetPlugin().SetCurve(curve);
  squeezel.GetPlugin().SetSideChain({true, false, 123.4567, 4321});
  MXMLItem item("state"), bare("state");
  squeezel.Call(MService::kSaveState, MAsWord(&item));
  squeezel.Call(MService::kSaveState, MAsWord(&item));  // into the same item
  EXPECT_EQ(item.GetChildren().GetCount(), 1);
  loaded.Call(MService::kLoadState, MAsWord(&item));
  EXPECT_EQ(loaded.GetPlugin().GetSideChain().minimumFrequency, 123.4567);
  EXPECT_TRUE(loaded.GetPlugin().GetSideChain().isOn);
  loaded.Call(MService::kLoadState, MAsWord(&bare));
  ASSERT_EQ(loaded.GetPlugin().GetCurve().GetCount(), 2);
  ExpectPoint(loaded.GetPlugin().GetCurve(), 0, 0, 0.25);
  ExpectPoint(loaded.GetPlugin().GetCurve(), 1, 1, 0.75);
}

TEST(SqueezelState, TheDrawnCurveFollowsTheStaticOneOnlyInAnEditor) {
  SqueezelUnderTest squeezel;
  squeezel.Set("ratio", 4);
  const MEnvelopeData fresh = squeezel.GetPlugin().GetCurve();
  ASSERT_EQ(fresh.GetCount(), 3);
  for (int32_t i = 0; i < 3; ++i) ExpectPoint(fresh, i, i * 0.5, i * 0.5);
  squeezel.GetPlugin().SetEditorOpen(true);
  for (const int32_t maximizes : {1, 0}) {
    squeezel.Set("maximize", maximizes);
    squeezel.Set("threshold", 0.6);
    const SqueezelModel model{0.36, 4, 0, 1, 1, 0, maximizes != 0};
    const MEnvelopeData curve = squeezel.GetPlugin().GetCurve();
    ASSERT_EQ(curve.GetCount(), 3);
    ExpectPoint(curve, 0, 0, 0);
    EXPECT_TRUE(curve[0].Has(MEnvelopeFlag::kFixedY));
    ExpectPoint(curve, 1, 0.6, std::sqrt(0.36 * model.MakeUp()));
    ExpectPoint(curve, 2, 1, std::sqrt(model.Top() * model.MakeUp()));
  }
  squeezel.Set("customshape", 1);
  squeezel.Set("threshold", 0.2);
  ExpectPoint(squeezel.GetPlugin().GetCurve(), 1, 0.6, 0.6);
}

}  // namespace
