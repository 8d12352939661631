// Slotter's rows, and states in which a resonance is kept as its opposite.

#include <gtest/gtest.h>

#include "plugin/MParameterText.h"
#include "tests/common/Texts.h"
#include "tests/effects/OldStates.h"

extern "C" MPluginEntryPoint SlotterAudioEffectPluginInterface;

namespace {

class SlotterState : public testing::Test {
 protected:
  double Get(const char* key) {
    for (int32_t i = 0; i < slotter_.GetRowCount(); ++i)
      if (slotter_.GetRow(i).key == MString::Literal(key)) return slotter_.Get(i);
    throw std::invalid_argument(key);
  }
  std::string Show(int32_t row, double value) { return Utf8(MParameterText(slotter_.GetRow(row), value)); }

  EffectUnderTest slotter_{{"Slotter", "AudioEffect", SlotterAudioEffectPluginInterface}};
};

TEST_F(SlotterState, OldResonancesAreTurned) {
  LoadOldState(slotter_, "SlotterOldResonances.xml");
  EXPECT_DOUBLE_EQ(Get("highresonance"), 0.8);
  EXPECT_NEAR(Get("lowresonance"), 0.1, 1e-9);
  EXPECT_EQ(Get("highenable"), 1);
  EXPECT_EQ(Get("highfreq"), 2.5);
  EXPECT_EQ(Get("lowenable"), 1);
  EXPECT_EQ(Get("lowfreq"), 3.5);
}

TEST_F(SlotterState, AnOldResonanceWinsOverACurrentOneAndKeepsNineDigits) {
  LoadOldState(slotter_, "SlotterOldLowResonance.xml");
  EXPECT_NEAR(Get("lowresonance"), 1 - 0.123456789, 1e-9);
  EXPECT_EQ(Get("highresonance"), 0.7);
  EXPECT_EQ(Get("highenable"), 0);
}

TEST_F(SlotterState, OldResonancesAreFoundWhateverTheirCase) {
  MXMLItem item;
  item.SetAttribute("ParameterHighRes", "0.25");
  slotter_.Call(MService::kLoadState, MAsWord(&item));
  EXPECT_EQ(Get("highresonance"), 0.75);
  EXPECT_EQ(Get("lowresonance"), 0.5);
}

TEST_F(SlotterState, HasTwoPanelsOfThreeRows) {
  ASSERT_EQ(slotter_.GetRowCount(), 8);
  EXPECT_EQ(Utf8(slotter_.GetRow(0).name), "High-pass filter");
  EXPECT_EQ(Utf8(slotter_.GetRow(4).name), "Low-pass filter");
  for (const int32_t row : {0, 4}) {
    EXPECT_EQ(slotter_.GetRow(row).kind, MParameterKind::kPanel);
    EXPECT_EQ(slotter_.GetRow(row).panel.open, nullptr);
  }
  EXPECT_EQ(slotter_.GetBlock().pluginFlag, 0);
}

TEST_F(SlotterState, FrequenciesAreShownInHertzAndResonancesInPercent) {
  EXPECT_EQ(Show(2, 3), "1000Hz");
  EXPECT_EQ(Show(6, std::log10(20)), "20.0Hz");
  EXPECT_EQ(Show(6, std::log10(20000)), "20.0kHz");
  EXPECT_EQ(Show(3, 0.5), "50.00%");
  EXPECT_EQ(Show(7, 1), "100.00%");
  EXPECT_EQ(Show(1, 1), "1");
}

}  // namespace
