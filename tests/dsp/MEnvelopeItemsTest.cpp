#include <gtest/gtest.h>

#include <vector>

#include "dsp/MEnvelopeItemsSSE.h"
#include "tests/common/TestRandom.h"

namespace {

using namespace MEnvelopeItems;

constexpr double kX1 = 0.25, kY1 = -1, kX2 = 0.75, kY2 = 2;

constexpr std::size_t kCounts[] = {0,  1,  2,  3,  4,  5,  6,  7,  8,   9,  10,
                                   11, 12, 13, 14, 15, 32, 64, 65, 100, 999};

struct Twins {
  std::unique_ptr<Item> plain, fast;
};

Bezier BezierOf(double tensionX) {
  return Bezier(kX1, kY1, kX1 + (1 + tensionX) * (kX2 - kX1) / 2, 1.5, kX2, kY2);
}

template <typename Plain, typename Fast, typename Shape>
Twins Make(const Shape& shape) {
  return {std::unique_ptr<Item>(new Plain(kX2, shape)), std::unique_ptr<Item>(new Fast(kX2, shape))};
}

std::vector<Twins> AllTwins() {
  std::vector<Twins> all;
  all.push_back(Make<ItemQuadratic, ItemQuadraticSSE>(MakeQuadratic(kX1, kY1, kX2, kY2, 0.7)));
  all.push_back(Make<ItemCubic, ItemCubicSSE>(MakeCubic(kX1, kY1, 5, kX2, kY2, -3)));
  all.push_back(Make<ItemFourthOrder, ItemFourthOrderSSE>(MakeFourthOrder(kX1, kY1, kX2, kY2, -0.6)));
  all.push_back(Make<ItemFourthOrder, ItemFourthOrderSSE>(MakeFourthOrder(kX1, kY1, kX2, kY2, 0.6)));
  for (const double tensionX : {-1.0, -0.4, 0.0, 0.4, 1.0})
    all.push_back(Make<ItemBezier, ItemBezierSSE>(BezierOf(tensionX)));
  return all;
}

TEST(MEnvelopeItems, FastItemsAgreeWithTheirPlainTwins) {
  const auto twins = AllTwins();
  for (std::size_t kind = 0; kind < twins.size(); ++kind) {
    const auto& [plain, fast] = twins[kind];
    EXPECT_EQ(fast->GetEnd(), kX2);
    for (const std::size_t count : kCounts)
      for (std::size_t offset = 0; offset < 4; ++offset) {
        const double step = (kX2 - kX1) / 1000;
        std::vector<double> a(count + offset + 1, 99), b(a);
        std::vector<float> c(a.begin(), a.end()), d(c);
        plain->FillDouble(&a[offset], kX1, step, static_cast<int32_t>(count));
        fast->FillDouble(&b[offset], kX1, step, static_cast<int32_t>(count));
        plain->FillFloat(&c[offset], kX1, step, static_cast<int32_t>(count));
        fast->FillFloat(&d[offset], kX1, step, static_cast<int32_t>(count));
        for (std::size_t i = 0; i < a.size(); ++i) {
          ASSERT_NEAR(a[i], b[i], 1e-13) << "item " << kind << ", " << count << " samples, sample " << i;
          ASSERT_NEAR(c[i], d[i], 3e-7);
        }
        EXPECT_EQ(b.back(), 99) << "nothing is written behind the last sample";
        EXPECT_EQ(d.back(), 99);
      }
  }
}

TEST(MEnvelopeItems, FillsAreTheValuesOfEveryStep) {
  for (const auto& twins : AllTwins())
    for (const Item* item : {twins.plain.get(), twins.fast.get()}) {
      double values[37];
      item->FillDouble(values, kX1, 1.0 / 128, 37);
      for (int32_t i = 0; i < 37; ++i) EXPECT_NEAR(values[i], item->GetValue(kX1 + i / 128.0), 1e-14);
    }
}

TEST(MEnvelopeItems, SlopesOfPolynomialsAreExactButForTheFastCubic) {
  const double x = 0.4, u = (x - kX1) / 0.5, dy = kY2 - kY1;
  const double quadratic = (dy * 0.3 + 2 * dy * 0.7 * u) / 0.5;
  const double t = -0.6;
  const double fourth = dy * (4 * t * u * u * u - 12 * t * u * u + 12 * t * u + 1 - 3 * t) / 0.5;
  // Derivative of Hermite's basis.
  const double cubic =
      ((6 * u * u - 6 * u) * (kY1 - kY2) / 0.5) + (3 * u * u - 4 * u + 1) * 5 + (3 * u * u - 2 * u) * -3;
  const double expected[] = {quadratic, cubic, fourth};
  const auto twins = AllTwins();
  for (std::size_t kind = 0; kind < 3; ++kind) {
    for (const double slope : {twins[kind].plain->GetLeftSlope(x), twins[kind].plain->GetRightSlope(x)})
      EXPECT_NEAR(slope, expected[kind], 1e-13);
    for (const double slope : {twins[kind].fast->GetLeftSlope(x), twins[kind].fast->GetRightSlope(x)})
      EXPECT_NEAR(slope, expected[kind], kind == 1 ? 2e-5 : 1e-13);
  }
  const ItemCubicSSE fast(kX2, MakeCubic(kX1, kY1, 5, kX2, kY2, -3));
  EXPECT_EQ(fast.GetLeftSlope(x), (fast.GetValue(x) - fast.GetValue(x - 1e-10)) * (1 / 1e-10));
  EXPECT_EQ(fast.GetRightSlope(x), (fast.GetValue(x + 1e-10) - fast.GetValue(x)) * (1 / 1e-10));
}

TEST(MEnvelopeItems, BezierCurvesHaveMeasuredSlopes) {
  const ItemBezierSSE item(kX2, BezierOf(0.4));
  EXPECT_EQ(item.GetRightSlope(0.5), (item.GetValue(0.5 + 1e-10) - item.GetValue(0.5)) * (1 / 1e-10));
  EXPECT_NEAR(item.GetRightSlope(0.5), (item.GetValue(0.5001) - item.GetValue(0.4999)) / 0.0002, 1e-3);
}

TEST(MEnvelopeItems, OnlyThePlainBezierValueIsNoNumberWhereTheCurveIsNot) {
  const Bezier bezier = BezierOf(-0.8);  // e is above 0, so the radicand is below 0 far to the left
  const ItemBezier plain(kX2, bezier);
  const ItemBezierSSE fast(kX2, bezier);
  EXPECT_TRUE(std::isnan(plain.GetValue(-5)));
  EXPECT_TRUE(std::isfinite(fast.GetValue(-5)));
  EXPECT_EQ(plain.GetLeftSlope(-5), 0) << "a slope that is no number counts as 0";
  for (const Item* item : {static_cast<const Item*>(&plain), static_cast<const Item*>(&fast)}) {
    double values[5];
    float floats[5];
    item->FillDouble(values, -5, 0.1, 5);
    item->FillFloat(floats, -5, 0.1, 5);
    for (int32_t i = 0; i < 5; ++i) {
      EXPECT_NEAR(values[i], fast.GetValue(-5), 1e-12);
      EXPECT_NEAR(floats[i], fast.GetValue(-5), 1e-6);
    }
  }
}

TEST(MEnvelopeItems, TheBaseProducesNothing) {
  const Item item(0.5);
  double value = 7;
  float number = 7;
  item.FillDouble(&value, 0, 1, 1);
  item.FillFloat(&number, 0, 1, 1);
  EXPECT_EQ(value, 7);
  EXPECT_EQ(number, 7);
  EXPECT_EQ(item.GetValue(0.1), 0);
  EXPECT_EQ(item.GetLeftSlope(0.1), 0);
  EXPECT_EQ(item.GetRightSlope(0.1), 0);
  EXPECT_EQ(item.GetEnd(), 0.5);
}

TEST(MEnvelopeItems, ASuperEllipseIsFlatLeftOfItsStart) {
  const ItemExponencial item(kX1, kY1, kX2, kY2, 0.3);
  EXPECT_EQ(item.GetValue(kX1 - 1), kY1);
  EXPECT_EQ(item.GetValue(kX2 + 1), kY2);
  float values[3];
  item.FillFloat(values, kX1 - 0.5, 0.25, 3);
  EXPECT_EQ(values[0], -1.0f);
}

}  // namespace
