#include <gtest/gtest.h>

#include "tests/dsp/Curves.h"

namespace {

using namespace MEnvelopeFlag;

// The three points of most tests: slopes 2.5 and -4/3 meet at (0.4, 1); the midpoints are 0.2 and 0.7.
constexpr Oracle::End kLeft{0, 0};
constexpr Oracle::End kTop{0.4, 1};
constexpr Oracle::End kRight{1, 0.2};
constexpr double kRise = 2.5;
constexpr double kFall = -0.8 / 0.6;

MEnvelopeData Peak(uint8_t flags, double smooth1, double smooth2, int32_t smoothingType = 0) {
  return Curve({Point(kLeft.x, kLeft.y),
                Rounded(Point(kTop.x, kTop.y), flags, smooth1, smooth2, smoothingType),
                Point(kRight.x, kRight.y)});
}

double Straight(double x) {
  return x < kTop.x ? Oracle::Line(kLeft, kTop, x) : Oracle::Line(kTop, kRight, x);
}

// Expects `rounded` between x1 and x2, and the straight curve outside.
template <typename F>
void ExpectPeak(const MEnvelopeData& data, double x1, double x2, F&& rounded) {
  for (double x = 0; x < 1; x += 1.0 / 256)
    ASSERT_NEAR(ValueOf(data, x), x >= x1 && x < x2 ? rounded(x) : Straight(x), 1e-8) << x;
}

void ExpectBezierPeak(const MEnvelopeData& data, double x1, double x2) {
  ExpectPeak(data, x1, x2, [=](double x) {
    return Oracle::Bezier({x1, Straight(x1)}, kTop, {x2, Straight(x2)}, x);
  });
}

void ExpectCubicPeak(const MEnvelopeData& data, double x1, double x2) {
  ExpectPeak(data, x1, x2, [=](double x) {
    return Oracle::Hermite({x1, Straight(x1)}, kRise, {x2, Straight(x2)}, kFall, x);
  });
}

TEST(MEnvelopeCorners, ASymmetricLinkedCornerReachesEquallyFar) {
  ExpectBezierPeak(Peak(kLinked | kSymmetric, 0.5, 0), 0.3, 0.5);
}

TEST(MEnvelopeCorners, ASizeOf1ReachesTheNearerMidpointOnBothSides) {
  ExpectBezierPeak(Peak(kLinked | kSymmetric, 1, 0), 0.2, 0.6);
}

TEST(MEnvelopeCorners, ACornerThatIsNotSymmetricReachesForItsOwnMidpoints) {
  ExpectBezierPeak(Peak(kLinked, 1, 0), 0.2, 0.7);
  ExpectBezierPeak(Peak(kLinked, 0.5, 0), 0.3, 0.55);
}

TEST(MEnvelopeCorners, UnlinkedSizesServeASideEach) {
  ExpectBezierPeak(Peak(kSymmetric, 0.25, 0.75), 0.35, 0.55);
  ExpectBezierPeak(Peak(0, 0.25, 1), 0.35, 0.7);
}

TEST(MEnvelopeCorners, SmoothingMode2IsACubic) {
  ExpectCubicPeak(Peak(kLinked, 0.5, 0, MEnvelopeSmoothing::kMode2), 0.3, 0.55);
}

TEST(MEnvelopeCorners, WhereTheTangentsMeetNearAnEndACubicServes) {
  ExpectCubicPeak(Peak(0, 0.0049, 0.5), 0.4 - 0.0049 * 0.2, 0.55);  // 0.00098 from the left end
  ExpectBezierPeak(Peak(0, 0.0051, 0.5), 0.4 - 0.0051 * 0.2, 0.55);
  ExpectCubicPeak(Peak(0, 0.5, 0.0033), 0.3, 0.4 + 0.0033 * 0.3);  // 0.00099 from the right end
  ExpectBezierPeak(Peak(0, 0.5, 0.0034), 0.3, 0.4 + 0.0034 * 0.3);
}

TEST(MEnvelopeCorners, AnUnknownSmoothingTypeRoundsNothing) {
  ExpectPeak(Peak(kLinked, 0.5, 0, 2), 2, 2, Straight);
  ExpectPeak(Peak(kLinked, 0.5, 0, -1), 2, 2, Straight);
}

TEST(MEnvelopeCorners, TinySizesRoundNothing) {
  EXPECT_EQ(Peak(kLinked, 0.000009, 0.000009).GetCount(), 3);
  MEnvelopeComputer computer;
  computer.Build(Peak(kLinked, 0.000009, 0.000009));
  EXPECT_EQ(computer.GetItemCount(), 4);
  computer.Build(Peak(kLinked, 0.00001, 0));
  EXPECT_EQ(computer.GetItemCount(), 5);
}

TEST(MEnvelopeCorners, TheSecondSizeCountsInThatTestEvenWhenItIsLinked) {
  MEnvelopeComputer computer;
  computer.Build(Peak(kLinked, 0.000009, 0.5));
  EXPECT_EQ(computer.GetItemCount(), 5);
}

TEST(MEnvelopeCorners, TheBoundOfTheFirstAndTheLastPointMirrorsTheOther) {
  const auto corner = [](uint8_t flags) {
    return Curve({Rounded(Point(0.25, 0), flags, 0.5, 0), Rounded(Point(0.75, 1), flags, 0.5, 0)});
  };
  for (const uint8_t flags : {kLinked, static_cast<uint8_t>(kLinked | kSymmetric)}) {
    const MEnvelopeData data = corner(flags);
    for (double x = 0; x < 1; x += 1.0 / 256) {
      double expected = x < 0.25 ? 0 : x < 0.75 ? Oracle::Line({0.25, 0}, {0.75, 1}, x) : 1;
      if (x >= 0.125 && x < 0.375) expected = Oracle::Bezier({0.125, 0}, {0.25, 0}, {0.375, 0.25}, x);
      if (x >= 0.625 && x < 0.875) expected = Oracle::Bezier({0.625, 0.75}, {0.75, 1}, {0.875, 1}, x);
      ASSERT_NEAR(ValueOf(data, x), expected, 1e-8) << x;
    }
  }
}

TEST(MEnvelopeCorners, AStraightCornerIsACubicThatIsTheLine) {
  const MEnvelopeData data = Curve({Point(0, 0), Rounded(Point(0.5, 0.5), kDefault, 0.5, 0), Point(1, 1)});
  MEnvelopeComputer computer;
  computer.Build(data);
  EXPECT_EQ(computer.GetItemCount(), 5);
  for (double x = 0; x < 1; x += 1.0 / 64) EXPECT_NEAR(ValueOf(data, x), x, 1e-15);
}

TEST(MEnvelopeCorners, AFlatCornerNeedsNothing) {
  MEnvelopeComputer computer;
  computer.Build(Curve({Point(0, 0.5), Rounded(Point(0.5, 0.5), kDefault, 0.5, 0), Point(1, 0.5)}));
  EXPECT_EQ(computer.GetItemCount(), 4);
}

TEST(MEnvelopeCorners, NeighbouringCornersOfSize1MeetAtTheMidpoint) {
  MEnvelopeComputer computer;
  computer.Build(Curve({Point(0, 0), Rounded(Point(0.25, 1), kLinked, 1, 0),
                        Rounded(Point(0.75, -1), kLinked, 1, 0), Point(1, 0)}));
  double end = -1;
  for (int32_t i = 0; i < computer.GetItemCount(); ++i) {
    EXPECT_GE(computer.GetItem(i).GetEnd(), end) << "the items stay in order";
    end = computer.GetItem(i).GetEnd();
  }
  EXPECT_NEAR(computer.GetValue(0.5), 0, 1e-12);
}

TEST(MEnvelopeCorners, SizesBeyond1AreLimitedWhenTheyAreUsed) {
  ExpectBezierPeak(Peak(kLinked, 7, 0), 0.2, 0.7);
  ExpectPeak(Peak(kLinked, -7, 0), 2, 2, Straight);
}

// An ellipse may end upright. Then the distance of the measurement counts, and the corner reaches far beyond
// the points.
TEST(MEnvelopeCorners, ACornerAtTheUprightEndOfASuperEllipseTakesItsMeasuredSlope) {
  const double t = 0.2;
  const MEnvelopeData data =
      Curve({Point(0, 0, MEnvelopeType::kMode3, t), Rounded(Point(0.5, 1), 0, 0, 1), Point(1, 0.2)});
  const auto ellipse = [t](double x) { return Oracle::Exponential({0, 0}, {0.5, 1}, t, x); };
  const double slope = (ellipse(0.5) - ellipse(0.5 - 1e-10)) * 1e10;
  EXPECT_GT(slope, 1e4);
  double peak = 0;
  for (double x = 0.5; x < 0.75; x += 1.0 / 256) {
    ASSERT_NEAR(ValueOf(data, x), Oracle::Hermite({0.5, 1}, slope, {0.75, 0.6}, -1.6, x), 1e-5 * slope);
    peak = std::max(peak, ValueOf(data, x));
  }
  EXPECT_GT(peak, 1000);
}

}  // namespace
