// Tonebench's states: the bands as points of a graph, and the older forms.

#include <gtest/gtest.h>

#include "tests/common/Texts.h"
#include "tests/effects/OldStates.h"
#include "tests/effects/TonebenchUnderTest.h"

namespace {

void Load(TonebenchUnderTest& tone, MXMLItem& item) {
  tone.Call(MService::kLoadState, MAsWord(&item));
}

void ExpectBand(const BandPoint& band, double hertz, double gain, bool isOn, double quality, int32_t type) {
  EXPECT_NEAR(band.x, std::log10(hertz), 1e-7);
  EXPECT_NEAR(band.y, gain, 1e-7);
  EXPECT_EQ(band.enabled, isOn);
  EXPECT_NEAR(band.width, std::pow((quality - 20) * 0.050125313283208024, 4), 1e-8);
  EXPECT_EQ(band.type, type);
}

void ExpectSame(const BandPoint& band, const BandPoint& expected, double gainFactor = 1) {
  ExpectBand(band, std::pow(10, expected.x), expected.y * gainFactor, expected.enabled,
             20 - 19.95 * std::pow(expected.width, 0.25), expected.type);
}

TEST(TonebenchState, HasAPointPerBand) {
  TonebenchUnderTest tone;
  tone.SetBand(1, 440, -3.25, 0.05, MBiquadType::kHighShelf);
  MXMLItem item;
  tone.Call(MService::kSaveState, MAsWord(&item));
  EXPECT_EQ(Utf8(item.GetRequiredAttribute("halfgain")), "0");
  ASSERT_TRUE(item.HasSubItem("graph"));
  const MList<MXMLItem*>& points = item.CachedSubItem().GetChildren();
  ASSERT_EQ(points.GetCount(), 6);
  const MXMLItem& point = *points[1];
  EXPECT_EQ(Utf8(point.GetName()), "point");
  EXPECT_EQ(Utf8(point.GetRequiredAttribute("x")), "2.64345268");
  EXPECT_EQ(Utf8(point.GetRequiredAttribute("y")), "-3.25000000");
  EXPECT_EQ(Utf8(point.GetRequiredAttribute("enabled")), "1");
  EXPECT_EQ(Utf8(point.GetRequiredAttribute("q")), "0.0500000000");
  EXPECT_EQ(Utf8(point.GetRequiredAttribute("type")), "HighShelf");
}

TEST(TonebenchState, ComesBackInAnotherPlugin) {
  TestRandom random;
  for (int32_t run = 0; run < 20; ++run) {
    TonebenchUnderTest first, second;
    for (int32_t i = 0; i < 6; ++i)
      first.SetBand(i, random.Real(20, 20000), random.Real(-24, 24), random.Real(0.05, 20), random.Below(7),
                    random.OneIn(2));
    MXMLItem item;
    first.Call(MService::kSaveState, MAsWord(&item));
    Load(second, item);
    for (int32_t i = 0; i < 6; ++i) {
      ExpectBand(second.GetBand(i), std::pow(10, first.GetBand(i).x), first.GetBand(i).y,
                 first.GetBand(i).enabled, 20 - 19.95 * std::pow(first.GetBand(i).width, 0.25),
                 first.GetBand(i).type);
    }
    first.Call(MService::kSaveState, MAsWord(&item));  // into the same item
    EXPECT_EQ(item.GetChildren().GetCount(), 1);
    EXPECT_EQ(item.GetChildren()[0]->GetChildren().GetCount(), 6);
  }
}

TEST(TonebenchState, TheOldestOneHoldsThreeBandsInHertzWithHalfGains) {
  TonebenchUnderTest tone, fresh;
  tone.SetBand(4, 50, 3, 1, MBiquadType::kNotch);
  LoadOldState(tone, "TonebenchOldest.xml");
  ExpectBand(tone.GetBand(0), 100, 7, true, 0.05, MBiquadType::kLowShelf);
  ExpectBand(tone.GetBand(1), 8000, -4, false, 20, MBiquadType::kHighShelf);
  ExpectBand(tone.GetBand(2), 1000, 8, true, 1, MBiquadType::kPeak);
  for (int32_t i = 3; i < 6; ++i) ExpectSame(tone.GetBand(i), fresh.GetBand(i), 2);
}

TEST(TonebenchState, TheOldestOneWithTheMarkHoldsWholeGains) {
  TonebenchUnderTest tone;
  MXMLItem item;
  item.SetAttribute("ParameterHighFreq", "4000");
  item.SetAttribute("parameterhighgain", "5");
  item.SetAttribute("halfgain", "0");
  Load(tone, item);
  ExpectBand(tone.GetBand(0), 1000, 0, false, 1, MBiquadType::kLowShelf);
  ExpectBand(tone.GetBand(1), 4000, 5, false, 1, MBiquadType::kHighShelf);
}

TEST(TonebenchState, AnOlderOneHoldsHalfGainsAndMayLackQualityAndType) {
  TonebenchUnderTest tone, fresh;
  tone.SetBand(4, 50, 3, 1, MBiquadType::kNotch);
  LoadOldState(tone, "TonebenchHalfGains.xml");
  ExpectBand(tone.GetBand(0), 100, 6, true, 2, MBiquadType::kLowPass);
  EXPECT_EQ(tone.GetBand(1).width, 0.8942013467698493);
  ExpectBand(tone.GetBand(1), 1000, -3, false, 0.6, MBiquadType::kPeak);
  for (int32_t i = 2; i < 6; ++i) ExpectSame(tone.GetBand(i), fresh.GetBand(i), 2);
}

TEST(TonebenchState, AnyMarkButZeroStandsForHalfGains) {
  for (const auto& [mark, factor] : {std::pair("1", 2), {"0", 1}, {"0.0000", 1}, {"-3", 2}, {"x", 1}}) {
    TonebenchUnderTest tone;
    MXMLItem item;
    item.AddSubItem("Graph").AddSubItem("Point").SetAttribute("y", "2.5");
    item.SetAttribute("HalfGain", MString::Literal(mark));
    Load(tone, item);
    ExpectBand(tone.GetBand(0), 1, 2.5 * factor, false, 0.6, MBiquadType::kPeak);
  }
}

TEST(TonebenchState, BandsStayWithoutAGraph) {
  TonebenchUnderTest tone;
  tone.SetBand(2, 50, 3, 1, MBiquadType::kNotch);
  MXMLItem item;
  item.SetAttribute("halfgain", "0");
  Load(tone, item);
  ExpectBand(tone.GetBand(2), 50, 3, true, 1, MBiquadType::kNotch);
}

TEST(TonebenchState, TypesMatchExactlyAndOnlySixPointsAreRead) {
  TonebenchUnderTest tone;
  MXMLItem item;
  item.SetAttribute("halfgain", "0");
  MXMLItem& graph = item.AddSubItem("graph");
  for (const char* const type :
       {"Notch", "notch", "", "Peaks", "BandPass", "HighPass", "LowPass", "LowShelf"})
    graph.AddSubItem("point").SetAttribute("type", MString::Literal(type));
  Load(tone, item);
  const int32_t expected[] = {MBiquadType::kNotch, 0, 0, 0, MBiquadType::kBandPass, MBiquadType::kHighPass};
  for (int32_t i = 0; i < 6; ++i) EXPECT_EQ(tone.GetBand(i).type, expected[i]) << i;
}

TEST(TonebenchState, AnyNumbersAreSafe) {
  TestRandom random;
  const std::vector<const char*> texts = {"nan", "inf", "-1e308", "1e308", "",
                                          "x",   "25",  "-7",     "0",     "1e-320"};
  TonebenchUnderTest tone;
  tone.Prepare(2, 8000);
  for (int32_t run = 0; run < 200; ++run) {
    MXMLItem item;
    MXMLItem& graph = item.AddSubItem("graph");
    for (int32_t i = random.Below(9); i > 0; --i) {
      MXMLItem& point = graph.AddSubItem("point");
      for (const char* const name : {"x", "y", "enabled", "q", "type"})
        if (!random.OneIn(3))
          point.SetAttribute(MString::Literal(name), MString::Literal(random.OneOf(texts)));
      if (random.OneIn(2)) point.SetAttribute("enabled", "1");
    }
    Load(tone, item);
    EXPECT_TRUE(tone.Answer(AudioBlock::Noise(2, 100, random)).IsFinite());
  }
}

}  // namespace
