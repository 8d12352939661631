#include "dsp/MWaveShapes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>
#include <vector>

#include "tests/common/Texts.h"

namespace {

constexpr int32_t kLength = 8192;

double Theta(int32_t i) {
  return 2 * std::numbers::pi * i / 8192;
}

using Formula = std::function<double(int32_t)>;

void ExpectTable(int32_t index, const Formula& formula) {
  const float* const table = MWaveShapes::GetTable(index);
  for (int32_t i = 0; i < kLength; ++i)
    ASSERT_NEAR(table[i], formula(i), 6e-8) << "table " << index << " at " << i;
}

// Which of the first 2048 samples stands at i, and with which sign.
void ExpectQuarters(int32_t index, const Formula& quarter) {
  ExpectTable(index, [&quarter](int32_t i) {
    const double sign = i < 4096 ? 1 : -1;
    const int32_t half = i % 4096;
    return sign * quarter(half < 2048 ? half : 4095 - half);
  });
}

TEST(MWaveShapes, TablesOfFourQuarters) {
  ExpectQuarters(0, [](int32_t i) { return std::pow(i / 2048.0, 4); });
  ExpectQuarters(1, [](int32_t i) { return i / 2048.0; });
  ExpectQuarters(2, [](int32_t i) { return std::pow(std::sin(Theta(i)), 8); });
  ExpectQuarters(3, [](int32_t i) { return std::pow(std::sin(Theta(i)), 4); });
  ExpectQuarters(4, [](int32_t i) { return std::pow(std::sin(Theta(i)), 2); });
  ExpectQuarters(5, [](int32_t i) { return std::sin(Theta(i)); });
  ExpectQuarters(9, [](int32_t i) { return std::sqrt(std::sin(Theta(i))); });
  ExpectQuarters(10, [](int32_t i) { return std::pow(std::sin(Theta(i)), 0.2); });
  ExpectQuarters(11, [](int32_t i) { return i <= 31 ? i / 31.0 : 1.0; });
}

TEST(MWaveShapes, TheHalvesMirrorEachOther) {
  for (const int32_t index : {0, 1, 2, 3, 4, 5, 9, 10, 11}) {
    const float* const table = MWaveShapes::GetTable(index);
    for (int32_t i = 0; i < 2048; ++i) {
      ASSERT_EQ(table[4095 - i], table[i]);
      ASSERT_EQ(table[4096 + i], -table[i]);
      ASSERT_EQ(table[8191 - i], -table[i]);
    }
  }
}

TEST(MWaveShapes, TablesOfHarmonics) {
  const auto harmonics = [](int32_t i) {
    return 0.5 * std::sin(Theta(i)) + 0.3 * std::sin(2 * Theta(i)) + 0.1 * std::sin(4 * Theta(i));
  };
  ExpectTable(6, harmonics);
  ExpectTable(7, [&](int32_t i) {
    return harmonics(i) + 0.02 * std::sin(16 * Theta(i)) + 0.05 * std::sin(8 * Theta(i));
  });
}

TEST(MWaveShapes, DisharmonicsAreFadedAtBothEnds) {
  std::vector<double> expected(kLength);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const double a = Theta(static_cast<int32_t>(i));
    expected[i] = 0.2 * (std::sin(1.1 * a) + std::sin(1.2 * a) + std::sin(1.3 * a)) +
                  0.1 * std::sin(1.4 * a) + 0.3 * std::sin(a);
  }
  for (std::size_t j = 0; j < 1024; ++j) {
    expected[j] *= static_cast<double>(j) / 1023;
    expected[8191 - j] *= static_cast<double>(j) / 1023;
  }
  ExpectTable(8, [&](int32_t i) { return expected[static_cast<std::size_t>(i)]; });
  EXPECT_EQ(MWaveShapes::GetTable(8)[0], 0);
  EXPECT_EQ(MWaveShapes::GetTable(8)[8191], 0);
}

TEST(MWaveShapes, Saws) {
  ExpectTable(12, [](int32_t i) { return 1 - i / 8192.0; });
  ExpectTable(13, [](int32_t i) { return 1 - i / 4096.0; });
}

TEST(MWaveShapes, NoiseTakesItsValueBehindTheStep) {
  std::vector<double> expected;
  for (uint64_t i = 0, x = 0; i < kLength; ++i) {
    x = (x * 214013 + 2531011) % (uint64_t{1} << 32);
    expected.push_back(static_cast<double>((x >> 16) & 0x7FFF) / 32767);
  }
  ExpectTable(14, [&](int32_t i) { return expected[static_cast<std::size_t>(i)]; });
  EXPECT_FLOAT_EQ(MWaveShapes::GetTable(14)[0], 38 / 32767.0f);
  EXPECT_FLOAT_EQ(MWaveShapes::GetTable(14)[1], 7719 / 32767.0f);
}

TEST(MWaveShapes, MessTakesItsValueBeforeTheStep) {
  std::vector<double> expected;
  for (uint64_t i = 0, c = 0; i < kLength; ++i, c = (c + 1111917978) % (uint64_t{1} << 32))
    expected.push_back(static_cast<double>((c ^ 0xCCDD1122) % 1000000) * 0.000001);
  ExpectTable(15, [&](int32_t i) { return expected[static_cast<std::size_t>(i)]; });
  EXPECT_FLOAT_EQ(MWaveShapes::GetTable(15)[0], 0.039906f);  // 3437039906 modulo a million
}

TEST(MWaveShapes, Names) {
  const char* const names[] = {"Exponencial",  "Triangle",
                               "Sine power 8", "Sine power 4",
                               "Sine square",  "Sine",
                               "Harmonics",    "More harmonics",
                               "Disharmonics", "Sine square root",
                               "Sine 4-root",  "Rectangle",
                               "Saw",          "Full saw",
                               "Noise",        "Mess"};
  for (int32_t i = 0; i < 16; ++i) EXPECT_EQ(Utf8(MWaveShapes::GetName(i)), names[i]);
  EXPECT_EQ(MWaveShapes::GetName(static_cast<int32_t>(MWaveShapes::kTriangle)), "Triangle");
  EXPECT_EQ(MWaveShapes::GetName(static_cast<int32_t>(MWaveShapes::kSine)), "Sine");
  EXPECT_EQ(MWaveShapes::GetName(static_cast<int32_t>(MWaveShapes::kRectangle)), "Rectangle");
}

TEST(MWaveShapes, ThereIsNoTable16) {
  EXPECT_RAISES(MWaveShapes::GetTable(16), "Index out of range.", 0);
  EXPECT_RAISES(MWaveShapes::GetTable(-1), "Index out of range.", 0);
  EXPECT_RAISES(MWaveShapes::GetName(16), "Index out of range.", 0);
}

TEST(MWaveShapes, TextsOfShapeValues) {
  EXPECT_EQ(MWaveShapes::GetText(5), "Sine");
  EXPECT_EQ(MWaveShapes::GetText(5.5), "50% Sine, 50% Harmonics");
  EXPECT_EQ(MWaveShapes::GetText(5.25), "75% Sine, 25% Harmonics");
  EXPECT_EQ(MWaveShapes::GetText(5.004), "Sine");
  EXPECT_EQ(MWaveShapes::GetText(5.996), "Harmonics");
  EXPECT_EQ(MWaveShapes::GetText(0.125), "87% Exponencial, 13% Triangle") << "half rounds up";
  EXPECT_EQ(MWaveShapes::GetText(15), "Mess");
  EXPECT_EQ(MWaveShapes::GetText(15.9), "Mess");
  EXPECT_EQ(MWaveShapes::GetText(-1), "Exponencial");
  EXPECT_EQ(MWaveShapes::GetText(NAN), "Sine");
}

}  // namespace
