#include "core/MUnitText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/common/CommaLocale.h"
#include "tests/common/TestRandom.h"
#include "tests/common/Texts.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::string Show(const MUnitText& unit, double value) {
  return Utf8(unit.show(value));
}

double Read(const MUnitText& unit, const char* text) {
  return unit.read(Buffer(text)).value_or(std::nan(""));
}

bool Refuses(const MUnitText& unit, const char* text) {
  return !unit.read(Buffer(text));
}

const MUnitText* const kAll[] = {
    &MUnits::kPercent,           &MUnits::kWholePercent, &MUnits::kVolume,
    &MUnits::kSquaredDecibels,   &MUnits::kPan,          &MUnits::kMilliseconds,
    &MUnits::kWholeMilliseconds, &MUnits::kFrequency,    &MUnits::kFrequencyLog10,
};

TEST(MUnitText, PercentHasTwoDecimalsOrNone) {
  EXPECT_EQ(Show(MUnits::kPercent, 0.125), "12.50%");
  EXPECT_EQ(Show(MUnits::kPercent, -1), "-100.00%");
  EXPECT_EQ(Show(MUnits::kWholePercent, 0.125), "12%");  // halves to even
  EXPECT_EQ(Show(MUnits::kWholePercent, 0.375), "38%");
  EXPECT_EQ(Show(MUnits::kWholePercent, -0.001), "0%");
  EXPECT_EQ(Read(MUnits::kPercent, "50%"), 0.5);
  EXPECT_EQ(Read(MUnits::kPercent, " 50 percent"), 0.5);
  EXPECT_EQ(Read(MUnits::kWholePercent, "50"), 0.5);
  EXPECT_TRUE(Refuses(MUnits::kPercent, "50 dB"));
}

TEST(MUnitText, VolumeIsShownInDecibels) {
  EXPECT_EQ(Show(MUnits::kVolume, 1), "0.00 dB");
  EXPECT_EQ(Show(MUnits::kVolume, 0), "silence");
  EXPECT_EQ(Show(MUnits::kVolume, 0.99e-50), "silence");
  EXPECT_EQ(Show(MUnits::kVolume, 1.01e-50), "-999.9 dB");
  EXPECT_EQ(Show(MUnits::kVolume, 0.1), "-20.0 dB");
  EXPECT_EQ(Show(MUnits::kVolume, 0.5), "-6.02 dB");
  EXPECT_EQ(Show(MUnits::kVolume, -0.5), "-6.02 dB");  // inverted
  EXPECT_EQ(Show(MUnits::kVolume, std::pow(10, -0.49995)), "-10.00 dB");
  EXPECT_EQ(Show(MUnits::kVolume, std::pow(10, -0.50001)), "-10.0 dB");
  EXPECT_DOUBLE_EQ(Read(MUnits::kVolume, "-20"), 0.1);
  EXPECT_DOUBLE_EQ(Read(MUnits::kVolume, "6 DB"), std::pow(10, 0.3));
  for (const char* const text : {"silence", "Silence ", "-inf", "-Inf dB"})
    EXPECT_EQ(Read(MUnits::kVolume, text), 0);
  for (const char* const text : {"inf", "99999 dB", "quiet", "5%"})
    EXPECT_TRUE(Refuses(MUnits::kVolume, text));
}

TEST(MUnitText, SquaredGainIsShownInDecibelsOfTheSquare) {
  EXPECT_EQ(Show(MUnits::kSquaredDecibels, 0.4), "-15.9 dB");
  EXPECT_EQ(Show(MUnits::kSquaredDecibels, 0), "silence");
  EXPECT_EQ(Show(MUnits::kSquaredDecibels, 1e-40), "silence");
  EXPECT_EQ(Show(MUnits::kSquaredDecibels, 1), "0.0 dB");
  EXPECT_EQ(Read(MUnits::kSquaredDecibels, "-6"), std::sqrt(std::pow(10, -6 * 0.05)));
  EXPECT_EQ(Read(MUnits::kSquaredDecibels, "silence"), 0);
}

TEST(MUnitText, PanHasSides) {
  EXPECT_EQ(Show(MUnits::kPan, 0), "center");
  EXPECT_EQ(Show(MUnits::kPan, -0.5), "50% left");
  EXPECT_EQ(Show(MUnits::kPan, 0.25), "25% right");
  EXPECT_EQ(Show(MUnits::kPan, 1e-51), "center");
  for (const char* const text : {"50% left", "50 left", "50L", "-50%", "-50", "50 % Left"})
    EXPECT_EQ(Read(MUnits::kPan, text), -0.5) << text;
  for (const char* const text : {"50% right", "50r", "50", "+50%"})
    EXPECT_EQ(Read(MUnits::kPan, text), 0.5) << text;
  EXPECT_EQ(Read(MUnits::kPan, "Center"), 0);
  EXPECT_TRUE(Refuses(MUnits::kPan, "up"));
}

TEST(MUnitText, TimesAreShownInMilliseconds) {
  EXPECT_EQ(Show(MUnits::kWholeMilliseconds, 0.0005), "1 ms");  // halves up
  EXPECT_EQ(Show(MUnits::kWholeMilliseconds, 0.00049), "0 ms");
  EXPECT_EQ(Show(MUnits::kWholeMilliseconds, -0.0017), "-2 ms");
  EXPECT_EQ(Show(MUnits::kWholeMilliseconds, -0.0001), "0 ms");
  EXPECT_EQ(Show(MUnits::kMilliseconds, 0.01), "10.0 ms");
  EXPECT_EQ(Show(MUnits::kMilliseconds, 0.0101), "10 ms");
  EXPECT_EQ(Show(MUnits::kMilliseconds, 0.1), "100 ms");
  EXPECT_EQ(Show(MUnits::kMilliseconds, 0.1005), "101 ms");
  EXPECT_EQ(Show(MUnits::kMilliseconds, -0.2), "-200 ms");
  EXPECT_EQ(Read(MUnits::kMilliseconds, "120 ms"), 120 * 0.001);
  EXPECT_EQ(Read(MUnits::kMilliseconds, "120"), 120 * 0.001);
  EXPECT_EQ(Read(MUnits::kMilliseconds, "0.5 s"), 0.5);
  EXPECT_EQ(Read(MUnits::kWholeMilliseconds, "500us"), 0.0005);
  EXPECT_TRUE(Refuses(MUnits::kMilliseconds, "5 Hz"));
}

TEST(MUnitText, FrequencyChangesItsDecimalsWithItsSize) {
  const std::pair<double, const char*> texts[] = {
      {440, "440Hz"},     {12000, "12.0kHz"},  {0.5, "0.5000Hz"},     {5, "5.00Hz"},      {50, "50.0Hz"},
      {99.96, "100.0Hz"}, {9999.5, "10000Hz"}, {1, "1.00Hz"},         {10, "10.0Hz"},     {100, "100Hz"},
      {10000, "10.0kHz"}, {100.5, "101Hz"},    {0.99999, "1.0000Hz"}, {9999.4, "9999Hz"}, {-3, "-3.0000Hz"},
  };
  for (const auto& [hertz, text] : texts) EXPECT_EQ(Show(MUnits::kFrequency, hertz), text);
  EXPECT_EQ(Read(MUnits::kFrequency, "440 Hz"), 440);
  EXPECT_EQ(Read(MUnits::kFrequency, "440"), 440);
  EXPECT_EQ(Read(MUnits::kFrequency, "1.2 kHz"), 1200);
  EXPECT_EQ(Read(MUnits::kFrequency, "1.2K"), 1200);
  EXPECT_TRUE(Refuses(MUnits::kFrequency, "440 ms"));
}

TEST(MUnitText, LogarithmOfAFrequencyIsShownAsTheFrequency) {
  EXPECT_EQ(Show(MUnits::kFrequencyLog10, 3), "1000Hz");
  EXPECT_EQ(Show(MUnits::kFrequencyLog10, std::log10(20)), "20.0Hz");
  EXPECT_EQ(Read(MUnits::kFrequencyLog10, "1 kHz"), 3);
  for (const char* const text : {"0", "-5 Hz", "0 kHz", ""})
    EXPECT_TRUE(Refuses(MUnits::kFrequencyLog10, text));
}

TEST(MUnitText, EveryNumberHasAText) {
  for (const MUnitText* const unit : kAll)
    for (const double value : {kInfinity, -kInfinity, std::nan(""), 1e308, -1e308, 5e-324, -0.0})
      EXPECT_FALSE(unit->show(value).IsEmpty());
}

TEST(MUnitText, WhatIsNoFiniteNumberIsRefused) {
  for (const MUnitText* const unit : kAll) {
    for (const char* const text : {"", " ", "x", "nan", "inf", "1e999", "1,5", "1 2", "..5"})
      EXPECT_TRUE(Refuses(*unit, text)) << text;
    MString huge;
    huge.AppendRepeated(u'9', 100000);
    EXPECT_FALSE(unit->read(huge));
  }
}

// How many of the last shown decimals two numbers of texts differ by is told by showing the one that was
// read.
TEST(MUnitText, IsReadAsItWasShown) {
  TestRandom random;
  struct Range {
    const MUnitText& unit;
    double low, high;
  };
  const Range ranges[] = {
      {MUnits::kPercent, -1, 1},           {MUnits::kWholePercent, -1, 1}, {MUnits::kVolume, 0, 4},
      {MUnits::kSquaredDecibels, 0, 1},    {MUnits::kPan, -1, 1},          {MUnits::kMilliseconds, -0.2, 1},
      {MUnits::kWholeMilliseconds, -1, 2}, {MUnits::kFrequency, 0, 20000}, {MUnits::kFrequencyLog10, -2, 4.4},
  };
  for (int i = 0; i < 100000; ++i) {
    const Range& range = ranges[static_cast<std::size_t>(i) % std::size(ranges)];
    const double value = random.Real(range.low, range.high);
    const MString text = range.unit.show(value);
    const std::optional<double> read = range.unit.read(text);
    ASSERT_TRUE(read) << Utf8(text);
    ASSERT_NEAR(*read, value, 0.006 * std::abs(value) + 0.0051) << Utf8(text);  // half of the last decimal
    const MString again = range.unit.show(*read);
    // At a limit of two precisions the text may gain or lose a decimal, but its value stays.
    if (again == text) continue;
    const std::optional<double> readAgain = range.unit.read(again);
    ASSERT_TRUE(readAgain) << Utf8(again);
    ASSERT_NEAR(*readAgain, *read, 1e-9 * std::abs(*read) + 1e-12) << Utf8(text) << " became " << Utf8(again);
  }
}

TEST(MUnitText, IsBlindForTheLocale) {
  const CommaLocale locale;
  if (!CommaLocale::IsInForce()) GTEST_SKIP() << "no locale with a comma";
  EXPECT_EQ(Show(MUnits::kPercent, 0.125), "12.50%");
  EXPECT_EQ(Show(MUnits::kFrequency, 12345), "12.3kHz");
  EXPECT_EQ(Show(MUnits::kVolume, 0.5), "-6.02 dB");
  EXPECT_EQ(Read(MUnits::kFrequency, "1.25 kHz"), 1250);
  EXPECT_TRUE(Refuses(MUnits::kFrequency, "1,25 kHz"));
}

}  // namespace
