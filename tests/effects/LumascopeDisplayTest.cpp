// From points to what is drawn: smoothing, slope, groups, decibels, and curves as bytes.

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "effects/LumascopeDisplay.h"

namespace {

constexpr int32_t kPoints = LumascopeSpectrum::kPoints;
using Points = LumascopeDisplay::Points;
using Mode = LumascopeDisplay::Mode;

Points Only(std::size_t point, double value = 1) {
  Points points = {};
  points[point] = value;
  return points;
}

Points All(double value) {
  Points points;
  points.fill(value);
  return points;
}

Points Shape(double smooth, double slope, const Points& points) {
  LumascopeDisplay display;
  display.Set(smooth, slope);
  return display.Shape(points.data());
}

TEST(LumascopeDisplay, LittleSmoothingIsThreeTaps) {
  const double side = std::exp(-4), scale = 1 / (1 + 2 * side);
  for (const double smooth : {0.0, 0.001, 2.49 / 1024}) {
    const Points shaped = Shape(smooth, 0, Only(500));
    EXPECT_NEAR(shaped[500], scale, 1e-15);
    EXPECT_NEAR(shaped[499], side * scale, 1e-15);
    EXPECT_NEAR(shaped[501], side * scale, 1e-15);
    EXPECT_EQ(shaped[498], 0);
    EXPECT_EQ(shaped[502], 0);
  }
}

TEST(LumascopeDisplay, SmoothingIsABellOfTheGivenHalfWidth) {
  for (const int32_t w : {3, 4, 205, 500}) {
    double sum = 0;
    for (int32_t k = -w; k <= w; ++k) sum += std::exp(-4.0 * k * k / w / w);
    const Points shaped = Shape(w / 1024.0, 0, Only(510));
    for (int32_t k = -w; k <= w; ++k)
      ASSERT_NEAR(shaped[static_cast<std::size_t>(510 + k)], std::exp(-4.0 * k * k / w / w) / sum, 1e-15);
    EXPECT_EQ(shaped[static_cast<std::size_t>(510 + w + 1)], 0);
    EXPECT_EQ(shaped[static_cast<std::size_t>(510 - w - 1)], 0);
  }
}

TEST(LumascopeDisplay, TheEndsGoOnBeyondTheAxis) {
  for (const double smooth : {0.0, 0.2, 1.0}) {
    for (const double value : Shape(smooth, 0, All(0.25))) ASSERT_NEAR(value, 0.25, 1e-14);
    const Points high = Shape(smooth, 0, Only(1023));
    EXPECT_GT(high[1023], 0.5);
    EXPECT_NEAR(high[1023], Shape(smooth, 0, Only(0))[0], 1e-15);
  }
}

TEST(LumascopeDisplay, SlopeRaisesEachOctaveFromTheLowestPointUp) {
  const Points flat = All(1);
  const double octaves = 0.0097322265625;
  for (const double slope : {0.01, 3.0, 6.0}) {
    const Points shaped = Shape(0, slope, flat);
    for (const int32_t i : {0, 1, 500, 1023})
      EXPECT_NEAR(20 * std::log10(shaped[static_cast<std::size_t>(i)]), slope * octaves * i, 1e-9);
  }
  for (const double slope : {0.0, 0.0099, -3.0})
    for (const double value : Shape(0, slope, flat)) ASSERT_NEAR(value, 1, 1e-14);
}

TEST(LumascopeDisplay, TheCurveIsInDecibelsAndEndsAtMinus200) {
  Points points = All(0);
  points[3] = 1;
  points[4] = 0.1;
  points[5] = 1e-11;
  const LumascopeDisplay::Levels levels = LumascopeDisplay::GetLevels(Mode::kCurve, points);
  ASSERT_EQ(levels.size(), 1024u);
  EXPECT_EQ(levels[3], 0);
  EXPECT_NEAR(levels[4], -20, 1e-12);
  EXPECT_NEAR(levels[5], -200, 1e-12);
  EXPECT_NEAR(levels[6], -200, 1e-12);
}

TEST(LumascopeDisplay, MeterBandsAreMeansOfSixteenPoints) {
  Points points = {};
  std::iota(points.begin(), points.end(), 1);
  const LumascopeDisplay::Levels levels = LumascopeDisplay::GetLevels(Mode::kMeter, points);
  ASSERT_EQ(levels.size(), 64u);
  for (std::size_t i = 0; i < 64; ++i)
    EXPECT_NEAR(levels[i], 20 * std::log10(16 * static_cast<double>(i) + 8.5), 1e-12);
}

TEST(LumascopeDisplay, ThirdOctavesAreMeansOfThePointsWithinHalfABand) {
  ASSERT_EQ(LumascopeDisplay::kThirdOctaves, 31);
  EXPECT_EQ(LumascopeDisplay::GetThirdOctave(17), 1000);
  EXPECT_NEAR(LumascopeDisplay::GetThirdOctave(0), 19.686, 0.001);
  EXPECT_NEAR(LumascopeDisplay::GetThirdOctave(30), 20158.7, 0.1);
  Points points;
  for (int32_t i = 0; i < kPoints; ++i) points[static_cast<std::size_t>(i)] = i % 7 + 1;
  const LumascopeDisplay::Levels levels = LumascopeDisplay::GetLevels(Mode::kThirdOctaves, points);
  ASSERT_EQ(levels.size(), 31u);
  for (int32_t band = 0; band < 31; ++band) {
    double sum = 0;
    int32_t count = 0;
    for (int32_t i = 0; i < kPoints; ++i) {
      const double octaves =
          std::log2(LumascopeSpectrum::GetFrequency(i) / LumascopeDisplay::GetThirdOctave(band));
      if (octaves < -1.0 / 6 || octaves >= 1.0 / 6) continue;
      sum += points[static_cast<std::size_t>(i)];
      ++count;
    }
    ASSERT_GT(count, 10);
    EXPECT_NEAR(levels[static_cast<std::size_t>(band)], 20 * std::log10(sum / count), 1e-12) << band;
  }
}

TEST(LumascopeDisplay, PointsArePackedAsLittleEndianFloats) {
  Points points = {};
  points[0] = 1;      // 0x3f800000
  points[1023] = -2;  // 0xc0000000
  points[1] = 1e300;
  const LumascopeDisplay::Packed data = LumascopeDisplay::Pack(points);
  EXPECT_EQ(data.size(), 4096u);
  EXPECT_EQ(data[3], 0x3f);
  EXPECT_EQ(data[2], 0x80);
  EXPECT_EQ(data[4095], 0xc0);
  const Points back = LumascopeDisplay::Unpack(data.data());
  EXPECT_EQ(back[0], 1);
  EXPECT_EQ(back[1023], -2);
  EXPECT_FLOAT_EQ(static_cast<float>(back[1]), 3.4028235e38f);
}

TEST(LumascopeDisplay, UnpackingTakesWhatIsNotFiniteAsZero) {
  LumascopeDisplay::Packed data = {};
  data[2] = 0xc0, data[3] = 0x7f;    // no number
  data[6] = 0x80, data[7] = 0xff;    // minus infinity
  data[10] = 0x80, data[11] = 0x3f;  // one
  const Points points = LumascopeDisplay::Unpack(data.data());
  EXPECT_EQ(points[0], 0);
  EXPECT_EQ(points[1], 0);
  EXPECT_EQ(points[2], 1);
}

TEST(LumascopeDisplay, ATextOfPointsIsReadAsItWasWritten) {
  Points points = {};
  for (std::size_t i = 0; i < points.size(); ++i)
    points[i] = static_cast<float>(std::sin(static_cast<double>(i)));
  const MString text = LumascopeDisplay::GetText(points);
  EXPECT_EQ(text.GetLength(), 8192);
  Points read = {};
  EXPECT_TRUE(LumascopeDisplay::ReadText(text, read));
  EXPECT_EQ(read, points);
}

TEST(LumascopeDisplay, ATextThatIsNoneChangesNothing) {
  const MString text = LumascopeDisplay::GetText(Only(7));
  MString longer = text, shorter = text.Substring(0, 8191), strange = text.Substring(0, 8191);
  longer.Append(u'0');
  strange.Append(u'g');
  for (const MString& bad : {MString(), longer, shorter, strange}) {
    Points points = Only(3);
    EXPECT_FALSE(LumascopeDisplay::ReadText(bad, points));
    EXPECT_EQ(points, Only(3));
  }
}

}  // namespace
