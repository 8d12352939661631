#include "dsp/MEnvelopeData.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/common/Texts.h"
#include "tests/core/Balanced.h"
#include "tests/dsp/Curves.h"

namespace {

class MEnvelopeDataTest : public Balanced {};

std::vector<double> XsOf(const MEnvelopeData& data) {
  std::vector<double> xs;
  for (int32_t i = 0; i < data.GetCount(); ++i) xs.push_back(data[i].x);
  return xs;
}

std::vector<double> Normalized(std::initializer_list<double> xs) {
  MEnvelopeData data;
  for (const double x : xs) data.Add(x, 0.5);
  data.Normalize();
  return XsOf(data);
}

TEST_F(MEnvelopeDataTest, AFreshCurveHasNoPointsAndTheRangeOfTheUnit) {
  const MEnvelopeData data;
  EXPECT_EQ(data.GetCount(), 0);
  EXPECT_EQ(data.xMinimum, 0);
  EXPECT_EQ(data.xMaximum, 1);
  EXPECT_EQ(data.yMinimum, 0);
  EXPECT_EQ(data.yMaximum, 1);
}

TEST_F(MEnvelopeDataTest, AFreshPointIsLinkedSymmetricAndOfMode2) {
  MEnvelopeData data;
  const MEnvelopePoint& point = data.Add(0.25, 0.5);
  EXPECT_EQ(point.x, 0.25);
  EXPECT_EQ(point.y, 0.5);
  EXPECT_EQ(point.flags, 12);
  EXPECT_EQ(point.tensionX, 0);
  EXPECT_EQ(point.tension, 0);
  EXPECT_EQ(point.smooth1, 0);
  EXPECT_EQ(point.smooth2, 0);
  EXPECT_EQ(point.type, 1);
  EXPECT_EQ(point.smoothingType, 0);
}

TEST_F(MEnvelopeDataTest, PointsKeepTheirAddress) {
  MEnvelopeData data;
  const MEnvelopePoint* const first = &data.Add(0.5, 0);
  for (int32_t i = 0; i < 100; ++i) data.Insert(0, Point(0.1, 0));
  EXPECT_EQ(&data[100], first);
  data.Remove(3);
  EXPECT_EQ(&data[99], first);
}

TEST_F(MEnvelopeDataTest, PlacesOutsideOfTheListRaise) {
  MEnvelopeData data = Curve({Point(0, 0)});
  EXPECT_RAISES(data[-1], "Index out of range.", 0);
  EXPECT_RAISES(data[1], "Index out of range.", 0);
  EXPECT_RAISES(data.Remove(1), "Index out of range.", 0);
  EXPECT_RAISES(data.Insert(2, Point(0, 0)), "Index out of range.", 0);
  EXPECT_EQ(data.GetCount(), 1);
}

TEST_F(MEnvelopeDataTest, CopiesHavePointsOfTheirOwn) {
  MEnvelopeData data = Curve({Point(0, 0.25)});
  data.yMaximum = 3;
  MEnvelopeData copy(data), assigned;
  assigned = data;
  data[0].y = 0.75;
  EXPECT_EQ(copy[0].y, 0.25);
  EXPECT_EQ(assigned[0].y, 0.25);
  EXPECT_EQ(assigned.yMaximum, 3);
  const MEnvelopeData& self = assigned;
  assigned = self;
  EXPECT_EQ(assigned.GetCount(), 1);
}

TEST_F(MEnvelopeDataTest, FindsTheLastPointAtOrBeforeAPlace) {
  const MEnvelopeData data = Curve({Point(0.25, 0), Point(0.5, 0), Point(0.5, 1), Point(0.75, 0)});
  EXPECT_EQ(data.FindIndex(0.2), -1);
  EXPECT_EQ(data.FindIndex(0.25), 0);
  EXPECT_EQ(data.FindIndex(0.4), 0);
  EXPECT_EQ(data.FindIndex(0.5), 2);
  EXPECT_EQ(data.FindIndex(9), 3);
  EXPECT_EQ(data.FindIndex(NAN), -1);
  EXPECT_EQ(MEnvelopeData().FindIndex(0), -1);
}

TEST_F(MEnvelopeDataTest, SelectionsAreSetCountedAndCleared) {
  MEnvelopeData data = Curve({Point(0, 0), Point(0.5, 0), Point(1, 0)});
  EXPECT_EQ(data.CountSelected(), 0);
  data.SelectAll();
  EXPECT_EQ(data.CountSelected(), 3);
  EXPECT_EQ(data[1].flags, 12 | 16);
  data[1].Set(MEnvelopeFlag::kSelected, false);
  EXPECT_EQ(data.CountSelected(), 2);
  data.ClearSelection();
  EXPECT_EQ(data.CountSelected(), 0);
  EXPECT_EQ(data[0].flags, 12);
}

TEST_F(MEnvelopeDataTest, DeletingTheSelectionLeavesFixedPoints) {
  MEnvelopeData data = Curve({Point(0, 0), Point(0.25, 0), Point(0.5, 0), Point(0.75, 0), Point(1, 0)});
  data.SelectAll();
  data[0].Set(MEnvelopeFlag::kFixedX, true);
  data[2].Set(MEnvelopeFlag::kFixedY, true);
  data[4].Set(MEnvelopeFlag::kSelected, false);
  data.DeleteSelected();
  EXPECT_EQ(XsOf(data), (std::vector<double>{0, 0.5, 1}));
}

TEST_F(MEnvelopeDataTest, ScalingTakesTheRangeAlongWhenAsked) {
  MEnvelopeData data = Curve({Point(0.25, 0.5), Point(1, 0.75)});
  data.yMinimum = -1;
  data.ScaleX(8, true);
  data.ScaleY(4, false);
  EXPECT_EQ(XsOf(data), (std::vector<double>{2, 8}));
  EXPECT_EQ(data[0].y, 2);
  EXPECT_EQ(data[1].y, 3);
  EXPECT_EQ(data.xMaximum, 8);
  EXPECT_EQ(data.yMinimum, -1);
  EXPECT_EQ(data.yMaximum, 1);
  data.ScaleY(2, true);
  data.ScaleX(0.5, false);
  EXPECT_EQ(XsOf(data), (std::vector<double>{1, 4}));
  EXPECT_EQ(data.xMaximum, 8);
  EXPECT_EQ(data.yMinimum, -2);
  EXPECT_EQ(data.yMaximum, 2);
}

TEST_F(MEnvelopeDataTest, NormalizingBringsPointsIntoTheRanges) {
  MEnvelopeData data = Curve({Point(-3, -3), Point(0.5, 0.5), Point(3, 3)});
  data.yMinimum = -1;
  data.Normalize();
  EXPECT_EQ(XsOf(data), (std::vector<double>{0, 0.5, 1}));
  EXPECT_EQ(data[0].y, -1);
  EXPECT_EQ(data[1].y, 0.5);
  EXPECT_EQ(data[2].y, 1);
}

TEST_F(MEnvelopeDataTest, NormalizingPartsEqualPlaces) {
  EXPECT_EQ(Normalized({0.25, 0.5, 0.5, 0.75}), (std::vector<double>{0.25, 0.5, 0.5 + 1e-10, 0.75}));
  EXPECT_EQ(Normalized({0.5, 0.5, 0.5}), (std::vector<double>{0.5, 0.5 + 1e-10, 0.5 + 1e-10 + 1e-10}));
  EXPECT_EQ(Normalized({0, 0.5, 1}), (std::vector<double>{0, 0.5, 1}));
}

TEST_F(MEnvelopeDataTest, NormalizingPullsAPointThatIsOutOfOrderUpToItsPredecessor) {
  EXPECT_EQ(Normalized({0.5, 0.25}), (std::vector<double>{0.5, 0.5 + 1e-10}));
  EXPECT_EQ(Normalized({0.75, 0.5, 0.25}), (std::vector<double>{0.75, 0.75 + 1e-10, 0.75 + 1e-10 + 1e-10}));
  EXPECT_EQ(Normalized({0.25, 0.75, 0.5, 1}), (std::vector<double>{0.25, 0.75, 0.75 + 1e-10, 1}));
}

// 2^20 plus 1e-10 is 2^20 in double; less 1e-10 it is the next smaller number.
TEST_F(MEnvelopeDataTest, NormalizingPartsFarPlacesDownwardsWhereRoundingHinders) {
  MEnvelopeData data;
  data.xMaximum = 1 << 21;
  data.Add(1 << 20, 0);
  data.Add(1 << 20, 0);
  data.Normalize();
  EXPECT_EQ(data[1].x, 1 << 20);
  EXPECT_LT(data[0].x, 1 << 20);
}

TEST_F(MEnvelopeDataTest, NormalizingCountsWhatIsNoNumberAsZero) {
  MEnvelopeData data = Curve({Point(NAN, INFINITY), Point(0.5, -INFINITY), Point(INFINITY, NAN)});
  data.yMinimum = -1;
  data.Normalize();
  for (int32_t i = 0; i < 3; ++i) {
    EXPECT_TRUE(std::isfinite(data[i].x)) << i;
    EXPECT_EQ(data[i].y, 0) << i;
  }
}

TEST_F(MEnvelopeDataTest, NormalizingManyPointsOutOfOrderEndsInOrder) {
  MEnvelopeData data;
  for (int32_t i = 0; i < 1000; ++i) data.Add((i * 7919 % 1000) / 1000.0, 0.5);
  data.Normalize();
  for (int32_t i = 1; i < 1000; ++i) ASSERT_LE(data[i - 1].x, data[i].x);
}

TEST_F(MEnvelopeDataTest, TypesHaveNamesHelpAndTensions) {
  namespace Type = MEnvelopeType;
  EXPECT_EQ(Type::GetName(0), "Mode 1");
  EXPECT_EQ(Type::GetName(1), "Mode 2");
  EXPECT_EQ(Type::GetName(2), "Mode 3");
  EXPECT_EQ(Type::GetName(3), "Free 1");
  EXPECT_EQ(Type::GetName(4), "Smooth 1");
  EXPECT_EQ(Type::GetHelp(0), "Fastest, minimal curvature freedom.");
  EXPECT_EQ(Type::GetHelp(1), "Fast, average curvature freedom.");
  EXPECT_EQ(Type::GetHelp(2), "Very slow, very high curvature freedom.");
  EXPECT_EQ(Type::GetHelp(3), "Normal speed, curvature adjustable in both axes.");
  EXPECT_EQ(Type::GetHelp(4),
            "Fast, no curvature, provides smooth connection between neighbouring segments.");
  for (const int32_t unknown : {-1, 5, 1 << 30}) {
    EXPECT_EQ(Type::GetName(unknown), "");
    EXPECT_EQ(Type::GetHelp(unknown), "");
    EXPECT_EQ(MEnvelopeSmoothing::GetName(unknown), "");
    EXPECT_FALSE(Type::UsesTension(unknown) || Type::UsesTensionX(unknown) ||
                 Type::HasSingleTension(unknown));
  }
  const int32_t bits[] = {6, 6, 6, 3, 4};
  for (int32_t type = 0; type < Type::kCount; ++type)
    EXPECT_EQ(Type::UsesTensionX(type) + 2 * Type::UsesTension(type) + 4 * Type::HasSingleTension(type),
              bits[type]);
  EXPECT_EQ(MEnvelopeSmoothing::GetName(1), "Mode 2");
  EXPECT_EQ(MEnvelopeSmoothing::GetHelp(0), "Slower, but usually gives less unnecessary curving.");
  EXPECT_EQ(MEnvelopeSmoothing::GetHelp(1), "Faster, but can give unnecessary curving.");
}

}  // namespace
