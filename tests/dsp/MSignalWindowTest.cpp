#include "dsp/MSignalWindow.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>

#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"

namespace {

constexpr double kPi = std::numbers::pi;

std::vector<float> Samples(const MSignalWindow& window) {
  return std::vector<float>(window.GetSamples(), window.GetSamples() + window.GetSize());
}

std::vector<float> Window(int32_t size, int32_t type, bool halfComplement = false) {
  MSignalWindow window;
  window.Set(size, type, halfComplement);
  EXPECT_EQ(window.GetSize(), size);
  EXPECT_EQ(window.GetType(), type);
  return Samples(window);
}

double Formula(int32_t type, double i, double n) {
  const double x = i / (n - 1), t = 2 * x - 1, middle = (n - 1) / 2;
  switch (type) {
    case 0:
      return 1;
    case 1:
      return 0.53836 - 0.46164 * std::cos(2 * kPi * x);
    case 2:
      return (1 - std::cos(2 * kPi * x)) * 0.5;
    case 3:
      return std::sin(kPi * x);
    case 4:
      return t == 0 ? 1 : std::sin(t) / t;
    case 5:
      return 2 * (i <= middle ? i : n - 1 - i) / n;  // without the middle of an even size
    default:
      return std::exp(-0.5 * std::pow((i - middle) / (0.4 * middle), 2));
  }
}

TEST(MSignalWindow, EachTypeIsItsFormulaAtEvenAndOddSizes) {
  for (int32_t type = 0; type < MSignalWindow::kTypeCount; ++type) {
    for (const int32_t size : {2, 3, 4, 5, 16, 63, 4095, 4096, 32768}) {
      const std::vector<float> window = Window(size, type);
      for (int32_t i = 0; i < size; ++i) {
        const bool isCentre =
            type == MSignalWindow::kBartlett && size % 2 == 0 && (i == size / 2 || i == size / 2 - 1);
        const double expected = isCentre ? 1 : Formula(type, i, size);
        ASSERT_NEAR(window[static_cast<std::size_t>(i)], expected, 1e-7)
            << type << ": " << i << " of " << size;
      }
    }
  }
}

TEST(MSignalWindow, LanczosHasNoPiInside) {
  const std::vector<float> window = Window(5, MSignalWindow::kLanczos);
  EXPECT_FLOAT_EQ(window[0], 0.84147098f);  // sin 1
  EXPECT_FLOAT_EQ(window[1], 0.95885108f);  // sin 0.5 / 0.5
  EXPECT_EQ(window[2], 1);
}

TEST(MSignalWindow, BartlettWritesTheMiddleOfAnOddSizeOnceAndBothOfAnEvenOne) {
  EXPECT_EQ(Window(5, MSignalWindow::kBartlett), (std::vector<float>{0, 0.4f, 0.8f, 0.4f, 0}));
  EXPECT_EQ(Window(4, MSignalWindow::kBartlett), (std::vector<float>{0, 1, 1, 0}));
  EXPECT_EQ(Window(8, MSignalWindow::kBartlett), (std::vector<float>{0, 0.25f, 0.5f, 1, 1, 0.5f, 0.25f, 0}));
  EXPECT_EQ(Window(2, MSignalWindow::kBartlett), (std::vector<float>{1, 1}));
}

TEST(MSignalWindow, OneSampleIsOneAndForBartlettZero) {
  for (int32_t type = 0; type < MSignalWindow::kTypeCount; ++type)
    EXPECT_EQ(Window(1, type)[0], type == MSignalWindow::kBartlett ? 0 : 1) << type;
}

TEST(MSignalWindow, SizesBelowOneGiveNoSamples) {
  MSignalWindow window;
  for (const int32_t size : {0, -1, INT32_MIN}) {
    for (int32_t type = 0; type < MSignalWindow::kTypeCount; ++type) {
      window.Set(size, type, true);
      EXPECT_EQ(window.GetSize(), 0);
      EXPECT_EQ(window.GetSum(), 0);
      EXPECT_EQ(window.GetSquareSum(), 0);
    }
  }
}

TEST(MSignalWindow, SumsAreThoseOfTheSamples) {
  for (int32_t type = 0; type < MSignalWindow::kTypeCount; ++type) {
    for (const bool halfComplement : {false, true}) {
      MSignalWindow window;
      window.Set(4096, type, halfComplement);
      double sum = 0, squareSum = 0;
      for (const double sample : Samples(window)) {
        sum += sample;
        squareSum += sample * sample;
      }
      EXPECT_EQ(window.GetSum(), static_cast<float>(sum));
      EXPECT_EQ(window.GetSquareSum(), static_cast<float>(squareSum));
    }
  }
  MSignalWindow hann;
  hann.Set(4096, MSignalWindow::kHann);
  EXPECT_FLOAT_EQ(hann.GetSum(), 4095 * 0.5f);
  EXPECT_FLOAT_EQ(hann.GetSquareSum(), 4095 * 0.375f);
}

TEST(MSignalWindow, HalfComplementMakesTheFirstHalfOfTheSecond) {
  for (int32_t type = 0; type < MSignalWindow::kTypeCount; ++type) {
    for (const int32_t size : {1, 2, 7, 16, 1001}) {
      const std::vector<float> plain = Window(size, type), window = Window(size, type, true);
      const auto half = static_cast<std::size_t>(size / 2);
      for (std::size_t i = 0; i < plain.size(); ++i)
        ASSERT_EQ(window[i], i < half ? 1 - plain[i + half] : plain[i])
            << type << ": " << i << " of " << size;
    }
  }
}

TEST(MSignalWindow, AnotherTypeRaisesAndLeavesTheWindow) {
  MSignalWindow window;
  window.Set(16, MSignalWindow::kGauss);
  const std::vector<float> before = Samples(window);
  for (const int32_t type : {-1, 7, INT32_MIN, INT32_MAX})
    EXPECT_RAISES(window.Set(8, type), "Unknown signal window type.", 0);
  EXPECT_EQ(Samples(window), before);
  EXPECT_EQ(window.GetType(), MSignalWindow::kGauss);
}

TEST(MSignalWindow, MissingMemoryRaisesAndLeavesTheWindow) {
  const CountingFunctions table;
  MSignalWindow window;
  window.Set(16, MSignalWindow::kHann);
  const std::vector<float> before = Samples(window);
  table.FailAfter(0);
  EXPECT_RAISES(window.Set(32768, MSignalWindow::kGauss), "Out of memory.", 0);
  EXPECT_EQ(Samples(window), before);
  EXPECT_EQ(window.GetType(), MSignalWindow::kHann);
}

TEST(MSignalWindow, SmallerWindowKeepsTheMemoryOfALargerOne) {
  MSignalWindow window;
  window.Set(4096, MSignalWindow::kHann);
  const CountingFunctions table;
  window.Set(16, MSignalWindow::kBartlett, true);
  window.Set(4096, MSignalWindow::kCosine);
  EXPECT_EQ(table.GetCalls(), 0);
}

TEST(MSignalWindow, TypesHaveTheirNames) {
  const std::string names[] = {"Rectangular", "Hamming", "Hann", "Cosine", "Lanczos", "Bartlett", "Gauss"};
  for (int32_t type = 0; type < MSignalWindow::kTypeCount; ++type)
    EXPECT_EQ(MSignalWindow::GetTypeName(type), names[type]);
  EXPECT_EQ(MSignalWindow::GetTypeName(-1), nullptr);
  EXPECT_EQ(MSignalWindow::GetTypeName(7), nullptr);
}

}  // namespace
