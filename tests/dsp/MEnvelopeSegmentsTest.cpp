#include <gtest/gtest.h>

#include "tests/common/Texts.h"
#include "tests/dsp/Curves.h"

namespace {

constexpr Oracle::End kP{0.25, -0.5};
constexpr Oracle::End kQ{0.875, 0.75};
constexpr double kTensions[] = {-1, -0.5, 0.5, 1};

// Expects the segment from kP to kQ to run as `expected` does, on a grid of 1/64.
template <typename F>
void ExpectSegment(int32_t type, double tension, double tensionX, double tolerance, F&& expected) {
  const MEnvelopeData data = Curve({Point(kP.x, kP.y, type, tension, tensionX), Point(kQ.x, kQ.y)});
  for (double x = kP.x; x <= kQ.x; x += 1.0 / 64)
    ASSERT_NEAR(ValueOf(data, x), expected(x), tolerance)
        << "type " << type << ", tensions " << tension << " and " << tensionX << " at " << x;
}

TEST(MEnvelopeSegments, Mode1IsAQuadratic) {
  for (const double t : kTensions)
    ExpectSegment(MEnvelopeType::kMode1, t, 0, 1e-14,
                  [t](double x) { return Oracle::Quadratic(kP, kQ, t, x); });
}

TEST(MEnvelopeSegments, Mode2IsOfFourthOrder) {
  for (const double t : kTensions)
    ExpectSegment(MEnvelopeType::kMode2, t, 0, 1e-14,
                  [t](double x) { return Oracle::FourthOrder(kP, kQ, t, x); });
}

TEST(MEnvelopeSegments, Mode3IsASuperEllipse) {
  for (const double t : kTensions)
    ExpectSegment(MEnvelopeType::kMode3, t, 0, 1e-14,
                  [t](double x) { return Oracle::Exponential(kP, kQ, t, x); });
}

TEST(MEnvelopeSegments, Free1IsABezierCurve) {
  for (const double t : kTensions)
    for (const double tx : {-1.0, -0.5, 0.0, 1e-11, 0.5, 1.0})
      ExpectSegment(MEnvelopeType::kFree1, t, tx, 1e-7, [t, tx](double x) {
        return Oracle::Bezier(kP, Oracle::ControlPoint(kP, kQ, tx, t), kQ, x);
      });
}

TEST(MEnvelopeSegments, WithoutTensionAllShapesAreLines) {
  for (const int32_t type :
       {MEnvelopeType::kMode1, MEnvelopeType::kMode2, MEnvelopeType::kMode3, MEnvelopeType::kFree1})
    ExpectSegment(type, 0, 0, 1e-15, [](double x) { return Oracle::Line(kP, kQ, x); });
}

TEST(MEnvelopeSegments, OnlyFree1LooksAtTheTensionInX) {
  for (const int32_t type : {MEnvelopeType::kMode1, MEnvelopeType::kMode2, MEnvelopeType::kMode3})
    ExpectSegment(type, 0, 1, 1e-15, [](double x) { return Oracle::Line(kP, kQ, x); });
  const double bent = ValueOf(Curve({Point(kP.x, kP.y, MEnvelopeType::kFree1, 0, 0.5), Point(kQ.x, kQ.y)}),
                              0.5 * (kP.x + kQ.x));
  EXPECT_GT(std::abs(bent - 0.5 * (kP.y + kQ.y)), 0.01);
}

TEST(MEnvelopeSegments, EqualHeightsGiveAConstantWhateverTheTension) {
  for (const int32_t type :
       {MEnvelopeType::kMode1, MEnvelopeType::kMode2, MEnvelopeType::kMode3, MEnvelopeType::kFree1}) {
    const MEnvelopeData data = Curve({Point(0, 0.3, type, 0.9, -0.9), Point(1, 0.3)});
    for (double x = 0; x <= 1; x += 1.0 / 64) ASSERT_EQ(ValueOf(data, x), 0.3);
  }
}

TEST(MEnvelopeSegments, Smooth1ContinuesTheSlopesOfItsNeighbours) {
  const MEnvelopeData data =
      Curve({Point(0, 0), Point(0.25, 0.5, MEnvelopeType::kSmooth1), Point(0.75, 0.7), Point(1, 0)});
  for (double x = 0.25; x <= 0.75; x += 1.0 / 64)
    ASSERT_NEAR(ValueOf(data, x), Oracle::Hermite({0.25, 0.5}, 2, {0.75, 0.7}, -2.8, x), 1e-14);
}

TEST(MEnvelopeSegments, TheFlatEndsGiveSmooth1ASlopeOfZero) {
  const MEnvelopeData data = Curve({Point(0, 0.2, MEnvelopeType::kSmooth1), Point(1, 0.9)});
  for (double x = 0; x <= 1; x += 1.0 / 64)
    ASSERT_NEAR(ValueOf(data, x), Oracle::Hermite({0, 0.2}, 0, {1, 0.9}, 0, x), 1e-14);
}

TEST(MEnvelopeSegments, TheFirstOfTwoSmoothSegmentsEndsFlatAndTheSecondGoesOnFromThere) {
  const MEnvelopeData data = Curve({Point(0, 0), Point(0.25, 0.5, MEnvelopeType::kSmooth1),
                                    Point(0.5, 0.2, MEnvelopeType::kSmooth1), Point(0.75, 0.6), Point(1, 0)});
  for (double x = 0.25; x < 0.5; x += 1.0 / 64)
    ASSERT_NEAR(ValueOf(data, x), Oracle::Hermite({0.25, 0.5}, 2, {0.5, 0.2}, 0, x), 1e-14);
  // The slope at 0.5 is measured, good to about 1e-6.
  for (double x = 0.5; x < 0.75; x += 1.0 / 64)
    ASSERT_NEAR(ValueOf(data, x), Oracle::Hermite({0.5, 0.2}, 0, {0.75, 0.6}, -2.4, x), 1e-6);
}

TEST(MEnvelopeSegments, Smooth1BesideASuperEllipseTakesItsMeasuredSlope) {
  const double t = -0.2;
  const MEnvelopeData data =
      Curve({Point(0, 0, MEnvelopeType::kMode1, 0.5), Point(0.25, 0.5, MEnvelopeType::kSmooth1),
             Point(0.5, 0.2, MEnvelopeType::kMode3, t), Point(1, 0.8)});
  const auto ellipse = [t](double x) { return Oracle::Exponential({0.5, 0.2}, {1, 0.8}, t, x); };
  // At u = 0 the ellipse with k below 1 is steep, so the distance of the measurement counts.
  const double s2 = (ellipse(0.5 + 1e-10) - ellipse(0.5)) * 1e10;
  const double s1 = 2 * (0.5 + 1);  // (dy/dx)(1 - t) + 2 q dx, which is (dy/dx)(1 + t)
  for (double x = 0.25; x < 0.5; x += 1.0 / 64)
    ASSERT_NEAR(ValueOf(data, x), Oracle::Hermite({0.25, 0.5}, s1, {0.5, 0.2}, s2, x), 1e-5 * std::abs(s2));
}

TEST(MEnvelopeSegments, NarrowSegmentsFarFromTheOriginKeepTheirShape) {
  const Oracle::End p{0.5, 0}, q{0.5 + 1e-9, 1};
  for (const int32_t type : {MEnvelopeType::kMode1, MEnvelopeType::kMode2}) {
    const MEnvelopeData data = Curve({Point(p.x, p.y, type, 0.75), Point(q.x, q.y)});
    for (int32_t i = 0; i <= 8; ++i) {
      const double x = p.x + 1e-9 * i / 8;
      const double expected = type == MEnvelopeType::kMode1 ? Oracle::Quadratic(p, q, 0.75, x)
                                                            : Oracle::FourthOrder(p, q, 0.75, x);
      EXPECT_NEAR(ValueOf(data, x), expected, 1e-5) << type << " at " << i;
    }
  }
}

TEST(MEnvelopeSegments, AnUnknownTypeRaises) {
  for (const int32_t type : {5, -1, 1000000}) {
    MEnvelopeComputer computer;
    computer.Build(Curve({Point(0, 0.25)}));
    EXPECT_RAISES(computer.Build(Curve({Point(0, 0, type), Point(1, 1)})), "Invalid control point type.", 0);
    EXPECT_EQ(computer.GetValue(0.5), 0.25) << "the curve before stays";
  }
}

}  // namespace
