#include <gtest/gtest.h>

#include "tests/common/CommaLocale.h"
#include "tests/common/TestRandom.h"
#include "tests/core/Balanced.h"
#include "tests/core/XMLTexts.h"
#include "tests/dsp/Curves.h"

namespace {

class MEnvelopeDataXML : public Balanced {};

std::string Saved(const MEnvelopeData& data) {
  MXMLItem item("graph");
  data.Save(item);
  return Body(item);
}

// The only point of "<graph><Point ATTRIBUTES/></graph>".
MEnvelopePoint Loaded(const std::string& attributes) {
  MXMLItem item;
  LoadText(item, "<graph><Point " + attributes + "/></graph>");
  MEnvelopeData data;
  data.xMinimum = data.yMinimum = -1e9;
  data.xMaximum = data.yMaximum = 1e9;
  data.Load(item);
  return data[0];
}

double Reloaded(double value) {
  MXMLItem item("graph");
  Curve({Point(value, 0)}).Save(item);
  MEnvelopeData data;
  data.xMinimum = -1e9;
  data.xMaximum = 1e9;
  data.Load(item);
  return data[0].x;
}

TEST_F(MEnvelopeDataXML, APlainPointHasItsTypesAndFlagsAlone) {
  EXPECT_EQ(Saved(Curve({MEnvelopePoint()})),
            "<graph><Point Flags=\"12\" SmoothingType=\"Mode 1\" Type=\"Mode 2\"/></graph>");
}

TEST_F(MEnvelopeDataXML, EveryNumberThatCountsIsWritten) {
  MEnvelopePoint point = Point(0.5, 0.25, MEnvelopeType::kFree1, -0.125, 0.75);
  point.flags = 0;
  point.smooth1 = 0.5;
  point.smooth2 = 1;
  point.smoothingType = MEnvelopeSmoothing::kMode2;
  EXPECT_EQ(Saved(Curve({point})),
            "<graph><Point c=\"-0.125000000\" cx=\"0.750000000\" SmoothingType=\"Mode 2\" "
            "SmoothX1=\"0.500000000\" SmoothX2=\"1.00000000\" Type=\"Free 1\" x=\"0.500000000\" "
            "y=\"0.250000000\"/></graph>");
}

TEST_F(MEnvelopeDataXML, NumbersHaveNineDigitsAndAtLeastFourDecimals) {
  EXPECT_NE(Saved(Curve({Point(12345.678, 1e-9)})).find("x=\"12345.6780\" y=\"0.00000000100000000\""),
            std::string::npos);
  EXPECT_NE(Saved(Curve({Point(123456789, 9e-51)})).find("x=\"123456789.0000\"/>"), std::string::npos);
  EXPECT_NE(Saved(Curve({Point(1e-50, -1e300)}))
                .find("x=\"0.0000000000000000000000000000000000000000"
                      "0000000001"),
            std::string::npos);
  EXPECT_EQ(Saved(Curve({Point(NAN, INFINITY)})).find("x="), std::string::npos);
}

TEST_F(MEnvelopeDataXML, NumbersComeBackAsTheSameFloat) {
  TestRandom random;
  for (const double value : {0.1f + 1.0 / 3, 1e-9, 12345.678, -2.0 / 3, 1e-30})
    EXPECT_EQ(static_cast<float>(Reloaded(value)), static_cast<float>(value)) << value;
  for (int32_t i = 0; i < 1000; ++i) {
    const auto value = static_cast<float>(std::pow(10, random.Real(-40, 8)) * (random.OneIn(2) ? 1 : -1));
    ASSERT_EQ(static_cast<float>(Reloaded(value)), value);
  }
}

TEST_F(MEnvelopeDataXML, WhatIsMissingIsZero) {
  const MEnvelopePoint point = Loaded("");
  EXPECT_EQ(point.x, 0);
  EXPECT_EQ(point.y, 0);
  EXPECT_EQ(point.tension, 0);
  EXPECT_EQ(point.tensionX, 0);
  EXPECT_EQ(point.smooth1, 0);
  EXPECT_EQ(point.smooth2, 0);
  EXPECT_EQ(point.type, 0);
  EXPECT_EQ(point.smoothingType, 0);
  EXPECT_EQ(point.flags, 0);
}

TEST_F(MEnvelopeDataXML, FlagsOfOldFilesAreUnderstood) {
  EXPECT_EQ(Loaded("Flags=\"17\"").flags, 17);
  EXPECT_EQ(Loaded("Flags=\"0\" fixed=\"1\"").flags, 0);
  EXPECT_EQ(Loaded("fixed=\"1\"").flags, 12);
  EXPECT_EQ(Loaded("fixed=\"0\"").flags, 0);
}

TEST_F(MEnvelopeDataXML, KeywordsMatchExactly) {
  EXPECT_EQ(Loaded("Type=\"Mode 3\"").type, 2);
  EXPECT_EQ(Loaded("Type=\"Smooth 1\" SmoothingType=\"Mode 2\"").type, 4);
  EXPECT_EQ(Loaded("Type=\"Smooth 1\" SmoothingType=\"Mode 2\"").smoothingType, 1);
  EXPECT_EQ(Loaded("Type=\"mode 3\" SmoothingType=\"Mode 3\"").type, 0);
  EXPECT_EQ(Loaded("Type=\"mode 3\" SmoothingType=\"Mode 3\"").smoothingType, 0);
}

TEST_F(MEnvelopeDataXML, TensionsAreLimitedAndWhatIsNoNumberIsZero) {
  EXPECT_EQ(Loaded("c=\"7\" cx=\"-3\"").tension, 1);
  EXPECT_EQ(Loaded("c=\"7\" cx=\"-3\"").tensionX, -1);
  EXPECT_EQ(Loaded("c=\"inf\" x=\"nan\" y=\"-1e999\"").tension, 0);
  EXPECT_EQ(Loaded("c=\"inf\" x=\"nan\" y=\"-1e999\"").x, 0);
  EXPECT_EQ(Loaded("c=\"inf\" x=\"nan\" y=\"-1e999\"").y, 0);
  EXPECT_EQ(Loaded("x=\"half\"").x, 0);
}

TEST_F(MEnvelopeDataXML, LoadingNormalizes) {
  MXMLItem item;
  LoadText(item, "<graph><Point x=\"-1\"/><Point x=\"0.5\" y=\"9\"/><Point x=\"0.5\"/></graph>");
  MEnvelopeData data;
  data.Load(item);
  ASSERT_EQ(data.GetCount(), 3);
  EXPECT_EQ(data[0].x, 0);
  EXPECT_EQ(data[1].x, 0.5);
  EXPECT_EQ(data[1].y, 1);
  EXPECT_EQ(data[2].x, 0.5 + 1e-10);
}

TEST_F(MEnvelopeDataXML, LoadingReplacesThePointsOrAddsToThem) {
  MXMLItem item;
  LoadText(item, "<graph><Point x=\"0.5\"/><Other/><Point x=\"0.75\"/></graph>");
  MEnvelopeData data = Curve({Point(0.25, 1)});
  data.yMaximum = 2;
  data.Load(item, false);
  EXPECT_EQ(data.GetCount(), 3);
  data.Load(item);
  EXPECT_EQ(data.GetCount(), 2);
  EXPECT_EQ(data[0].x, 0.5);
  EXPECT_EQ(data.yMaximum, 2);
  data.Load(MXMLItem("graph"));
  EXPECT_EQ(data.GetCount(), 0);
}

TEST_F(MEnvelopeDataXML, ALoadThatFindsNoMemoryLeavesThePoints) {
  MXMLItem item;
  LoadText(item, "<graph><Point x=\"0.5\"/><Point x=\"0.1\"/><Point x=\"0.75\"/></graph>");
  const int requests = FailEachRequest([] { return Curve({Point(0.25, 1)}); },
                                       [&item](MEnvelopeData& data) { data.Load(item); },
                                       [](MEnvelopeData& data) {
                                         ASSERT_EQ(data.GetCount(), 1);
                                         ASSERT_EQ(data[0].x, 0.25);
                                       });
  EXPECT_GT(requests, 3);
}

MEnvelopeData RandomCurve(TestRandom& random) {
  MEnvelopeData data;
  for (int32_t i = 0; i < 30; ++i) {
    MEnvelopePoint point = Point(i / 30.0 + random.Real(0, 0.03), random.Real(0, 1), random.Below(5),
                                 random.Real(-1, 1), random.Real(-1, 1));
    data.Add(Rounded(point, static_cast<uint8_t>(random.Below(32)), random.Real(0, 1), random.Real(0, 1),
                     random.Below(2)));
  }
  return data;
}

TEST_F(MEnvelopeDataXML, SavingWhatWasLoadedGivesTheSameText) {
  TestRandom random;
  for (int32_t round = 0; round < 20; ++round) {
    const std::string text = Saved(RandomCurve(random));
    MXMLItem item;
    LoadText(item, text);
    MEnvelopeData loaded;
    loaded.Load(item);
    ASSERT_EQ(Saved(loaded), text);
  }
}

TEST_F(MEnvelopeDataXML, ADecimalCommaOfTheProcessChangesNothing) {
  TestRandom random(7);
  const MEnvelopeData data = RandomCurve(random);
  const std::string text = Saved(data);
  const CommaLocale comma;
  if (!comma.IsInForce()) GTEST_SKIP() << "localedef (package libc-bin) could not make a locale with a comma";
  EXPECT_EQ(Saved(data), text);
  EXPECT_EQ(Loaded("x=\"0.625\"").x, 0.625);
}

}  // namespace
