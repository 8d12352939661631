// Points and places as no editor makes them: nothing may be read or written outside, and a curve that could
// be drawn is finite.

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "tests/common/TestRandom.h"
#include "tests/dsp/Curves.h"

namespace {

MEnvelopePoint RandomPoint(TestRandom& random, double x, double y) {
  MEnvelopePoint point = Point(x, y, random.Below(5), random.Real(-1, 1), random.Real(-1, 1));
  if (random.OneIn(4)) point.tension = 0;
  const double sizes[] = {0, 1, random.Real(0, 1), random.Real(0, 1)};
  return Rounded(point, static_cast<uint8_t>(random.Below(32)), sizes[random.Below(4)],
                 sizes[random.Below(4)], random.Below(3));
}

void ExpectFinite(const MEnvelopeData& data, double from, double to) {
  MEnvelopeComputer computer;
  computer.Build(data);
  constexpr int32_t kCount = 10000;
  const double step = (to - from) / (kCount - 1);
  std::vector<double> doubles(kCount);
  std::vector<float> floats(kCount);
  computer.FillDouble(doubles.data(), from, step, kCount);
  computer.Seek(from);
  computer.FillFloat(floats.data(), from, step, kCount);
  computer.Seek(from);
  for (std::size_t i = 0; i < kCount; ++i) {
    ASSERT_TRUE(std::isfinite(doubles[i])) << i;
    ASSERT_TRUE(std::isfinite(floats[i])) << i;
    ASSERT_TRUE(std::isfinite(computer.GetValue(from + static_cast<double>(i) * step))) << i;
  }
}

TEST(MEnvelopeHostile, RandomCurvesOf4096PointsAreFinite) {
  TestRandom random;
  for (int32_t round = 0; round < 3; ++round) {
    MEnvelopeData data;
    const double scale = round == 2 ? 44100.0 * 60 : 1;
    data.xMaximum = scale;
    for (int32_t i = 0; i < 4096; ++i)
      data.Add(RandomPoint(random, random.Real(-0.1, 1.1) * scale, random.Real(-0.1, 1.1)));
    ExpectFinite(data, -0.2 * scale, 1.2 * scale);  // as they came
    data.Normalize();
    ExpectFinite(data, -0.2 * scale, 1.2 * scale);
  }
}

TEST(MEnvelopeHostile, StepsAtOnePlaceAreFiniteEverywhere) {
  TestRandom random;
  MEnvelopeData data;
  for (int32_t i = 0; i < 4096; ++i) data.Add(RandomPoint(random, random.Below(8) / 8.0, random.Real(0, 1)));
  ExpectFinite(data, -0.25, 1.25);
  data.Normalize();
  ExpectFinite(data, -0.25, 1.25);
  ExpectFinite(data, 0.5 - 1e-6, 0.5 + 1e-6);
}

TEST(MEnvelopeHostile, NumbersThatAreNoneAndHugeOnesAreFinite) {
  TestRandom random;
  const std::vector<double> extremes = {0,      -0.0, NAN,    INFINITY, -INFINITY, 1e308,
                                        -1e308, 1e30, -1e-30, 5e-324,   -5e-324,   1.7e308,
                                        1,      0.5,  -1,     1e-300,   2.2e-308,  1e16};
  for (int32_t round = 0; round < 2000; ++round) {
    MEnvelopeData data;
    for (int32_t i = random.Below(12); i > 0; --i) {
      MEnvelopePoint point = RandomPoint(random, random.OneOf(extremes), random.OneOf(extremes));
      if (random.OneIn(2)) point.tension = random.OneOf(extremes);
      if (random.OneIn(2)) point.tensionX = random.OneOf(extremes);
      if (random.OneIn(2)) point.smooth1 = random.OneOf(extremes);
      if (random.OneIn(2)) point.smooth2 = random.OneOf(extremes);
      data.Add(point);
    }
    if (random.OneIn(3)) data.yMinimum = random.OneOf(extremes);
    if (random.OneIn(3)) data.xMaximum = random.OneOf(extremes);
    MEnvelopeComputer computer;
    computer.Build(data);
    for (int32_t i = 0; i < computer.GetItemCount(); ++i) computer.GetItem(i).GetEnd();
    data.Normalize();
    for (int32_t i = 0; i < data.GetCount(); ++i) {
      ASSERT_FALSE(std::isnan(data[i].x));
      ASSERT_FALSE(std::isnan(data[i].y));
    }
    computer.Build(data);
    for (const double x : {-0.5, 0.0, 0.25, 0.5, 0.75, 1.0, 1.5})
      ASSERT_TRUE(std::isfinite(computer.GetValue(x))) << x << " in round " << round;
  }
}

TEST(MEnvelopeHostile, PlacesAndStepsOfAnyKindReadInsideTheList) {
  TestRandom random;
  MEnvelopeData data;
  for (int32_t i = 0; i < 64; ++i) data.Add(RandomPoint(random, i / 64.0, random.Real(0, 1)));
  MEnvelopeComputer computer;
  computer.Build(data);
  const std::vector<double> extremes = {0,     NAN,     INFINITY, -INFINITY, 1e308,  -1e308, 1.7e308,
                                        1e-30, -1e-300, 5e-324,   0.5,       0.0123, -0.01,  1e9};
  std::vector<double> doubles(100);
  std::vector<float> floats(100);
  for (int32_t round = 0; round < 20000; ++round) {
    const double x = random.OneOf(extremes), step = random.OneOf(extremes);
    switch (random.Below(4)) {
      case 0:
        computer.FillDouble(doubles.data(), x, step, random.Integer(-2, 100));
        break;
      case 1:
        computer.FillFloat(floats.data(), x, step, random.Integer(-2, 100));
        break;
      case 2:
        computer.Seek(x);
        break;
      default:
        computer.GetValue(x);
    }
    ASSERT_GE(computer.GetCurrentIndex(), 0);
    ASSERT_LT(computer.GetCurrentIndex(), computer.GetItemCount());
  }
}

}  // namespace
