// What Lumascope's editor shows and a state keeps, and the curve to compare with.

#include <gtest/gtest.h>

#include "core/MXMLItem.h"
#include "tests/effects/LumascopeUnderTest.h"

namespace {

using Mode = LumascopeDisplay::Mode;
using View = LumascopeAudioEffectPlugin::View;
using Picture = LumascopeAudioEffectPlugin::Picture;
using ClipboardData = LumascopeAudioEffectPlugin::ClipboardData;

double Highest(const LumascopeDisplay::Levels& levels) {
  return *std::max_element(levels.begin(), levels.end());
}

class LumascopePicture : public testing::Test {
 protected:
  void Measure(double amplitude = 0.5) { effect_.Answer(SineBlock(2, 20000, amplitude, 93, 4096), {512}); }
  Picture Show(const View& view, int32_t mode = Mode::kCurve) {
    effect_.Set("mode", mode);
    effect_.GetPlugin().SetView(view);
    return effect_.GetPlugin().GetPicture();
  }
  void Save(MXMLItem& item) { effect_.Call(MService::kSaveState, MAsWord(&item)); }
  static void Load(LumascopeUnderTest& effect, MXMLItem& item) {
    effect.Call(MService::kLoadState, MAsWord(&item));
  }
  // The current curve becomes the comparison.
  void Compare() {
    const ClipboardData data = effect_.GetPlugin().CopyCurve();
    EXPECT_TRUE(effect_.GetPlugin().PasteComparison(data.data(), data.size()));
  }

  LumascopeUnderTest effect_{{{"smooth", 0}, {"average", 0}}};
  const View all_ = {true, false, true};
};

TEST_F(LumascopePicture, ThePictureHasAsManyLevelsAsTheModeAndNoneOfWhatIsNotShown) {
  for (const auto& [mode, count] : {std::pair{0, 64u}, {1, 1024u}, {2, 31u}}) {
    const Picture everything = Show(all_, mode);
    EXPECT_EQ(everything.mode, mode);
    EXPECT_EQ(everything.current.size(), count);
    EXPECT_EQ(everything.peaks.size(), count);
    EXPECT_EQ(everything.comparison.size(), count);
    const Picture little = Show({false, false, false}, mode);
    EXPECT_EQ(little.current.size(), count);
    EXPECT_TRUE(little.peaks.empty() && little.comparison.empty());
  }
}

TEST_F(LumascopePicture, TheCurrentCurveIsShownInDecibelsAndPeaksStayAboveIt) {
  Measure(0.5);
  const Picture loud = Show(all_);
  const LumascopeDisplay::Points curve = effect_.GetCurve();
  for (std::size_t i = 400; i < 500; ++i) ASSERT_NEAR(loud.current[i], 20 * std::log10(curve[i]), 1e-5);
  EXPECT_GT(Highest(loud.current), -15);
  const double peak = Highest(Show(all_).peaks);
  EXPECT_NEAR(peak, Highest(Show(all_).current), 1e-9);
  Measure(0.005);
  EXPECT_NEAR(Highest(Show(all_).current), Highest(loud.current) - 40, 1e-3);
  EXPECT_NEAR(Highest(Show(all_).peaks), peak + 9 * 20 * std::log10(0.99), 0.2);
}

TEST_F(LumascopePicture, NormalizedCurvesAreRelativeToTheirHighestLevel) {
  Measure(0.5);
  Compare();
  Measure(0.01);
  const Picture plain = Show(all_), normalized = Show({true, true, true});
  EXPECT_NEAR(Highest(normalized.current), 0, 1e-12);
  EXPECT_NEAR(Highest(normalized.comparison), 0, 1e-12);
  EXPECT_NEAR(Highest(normalized.peaks), Highest(plain.peaks) - Highest(plain.current), 1e-9);
  EXPECT_NEAR(normalized.current[500], plain.current[500] - Highest(plain.current), 1e-9);
}

TEST_F(LumascopePicture, ThirdOctavesAlwaysHaveASlopeOfThreeDecibels) {
  Measure();
  Compare();
  const double flat = Highest(Show(all_, Mode::kThirdOctaves).comparison);
  effect_.Set("slope", 6);
  const double tilted = Highest(Show(all_, Mode::kThirdOctaves).current);
  const double octaves = std::log2(93 * 44100 / 4096.0 / 20);
  EXPECT_NEAR(tilted - flat, 3 * octaves, 0.2);
  const double steep = Highest(Show(all_, Mode::kCurve).current);
  EXPECT_NEAR(steep - Highest(Show(all_, Mode::kCurve).comparison), 6 * octaves, 0.2);
}

TEST_F(LumascopePicture, TheComparisonIsTheCurveThatWasPasted) {
  Measure(0.5);
  const Picture before = Show(all_);
  Compare();
  Measure(0.001);
  const Picture after = Show(all_);
  for (std::size_t i = 0; i < 1024; ++i) ASSERT_NEAR(after.comparison[i], before.current[i], 1e-4) << i;
}

TEST_F(LumascopePicture, DataOfAnotherSizeIsNotPasted) {
  Measure();
  Compare();
  const Picture before = Show(all_);
  const std::vector<uint8_t> data(5000, 1);
  for (const std::size_t size : {0u, 4095u, 4097u, 5000u})
    EXPECT_FALSE(effect_.GetPlugin().PasteComparison(data.data(), size));
  EXPECT_EQ(Show(all_).comparison, before.comparison);
}

TEST_F(LumascopePicture, AStateKeepsTheViewAndTheComparisonButNotTheFreeze) {
  Measure();
  Compare();
  Show({false, true, true});
  effect_.GetPlugin().SetFrozen(true);
  MXMLItem item("state");
  Save(item);
  LumascopeUnderTest other;
  Load(other, item);
  const View view = other.GetPlugin().GetView();
  EXPECT_FALSE(view.showsPeaks);
  EXPECT_TRUE(view.normalizes && view.showsComparison);
  EXPECT_FALSE(other.GetPlugin().IsFrozen());
  EXPECT_EQ(other.GetPlugin().GetPicture().comparison, effect_.GetPlugin().GetPicture().comparison);
}

TEST_F(LumascopePicture, AnEmptyStateGivesTheUsualViewAndNoComparison) {
  Measure();
  Compare();
  Show({false, true, true});
  MXMLItem item("state");
  Load(effect_, item);
  const View view = effect_.GetPlugin().GetView();
  EXPECT_TRUE(view.showsPeaks);
  EXPECT_FALSE(view.normalizes || view.showsComparison);
  for (const double level : Show(all_).comparison) EXPECT_NEAR(level, -200, 1e-9);
}

TEST_F(LumascopePicture, AComparisonThatCannotBeReadLeavesTheOneThatIsThere) {
  Measure();
  Compare();
  const Picture before = Show(all_);
  MXMLItem item("state");
  Save(item);
  MString cut = item.GetAttribute("Comparison");
  cut = cut.Substring(0, 8190);
  for (const MString& text : {MString(), MString("00"), cut}) {
    item.SetAttribute("Comparison", text);
    Load(effect_, item);
    EXPECT_EQ(Show(all_).comparison, before.comparison);
  }
}

}  // namespace
