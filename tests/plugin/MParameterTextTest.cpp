// The texts of rows, and the way back.

#include "plugin/MParameterText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/MFormat.h"
#include "plugin/MParameterFormatters.h"
#include "plugin/MPlugin.h"
#include "plugin/MValueNumber.h"
#include "tests/common/CommaLocale.h"
#include "tests/common/TestRandom.h"
#include "tests/common/Texts.h"

namespace {

MPluginParameter RealRow(double minimum, double maximum, MParameterFormatter* formatter = nullptr,
                         const MString& unit = MString()) {
  MPluginParameter row;
  AddRealParameter(row, "Row", "row", "", minimum, maximum, minimum, unit, formatter);
  return row;
}

MPluginParameter IntegerRow(int32_t minimum, int32_t maximum, MParameterFormatter* formatter = nullptr,
                            const MString& unit = MString()) {
  MPluginParameter row;
  row.kind = MParameterKind::kInteger;
  row.integer = {minimum, maximum, minimum, minimum};
  row.formatter = formatter;
  row.unit = unit;
  return row;
}

constexpr const char* kModes[] = {"Soft 1", "Soft 2", "Clip", "7"};

MPluginParameter ListRow() {
  MPluginParameter row;
  row.kind = MParameterKind::kEnumeration;
  row.enumeration = {kModes, 4, 0, 0};
  return row;
}

MPluginParameter SwitchRow() {
  MPluginParameter row;
  row.kind = MParameterKind::kSwitch;
  row.onOff = {0, 0};
  return row;
}

std::string Show(const MPluginParameter& row, double value) {
  return Utf8(MParameterText(row, value));
}

// NaN if the text is refused.
double Read(const MPluginParameter& row, const char* text) {
  return ParseParameterText(row, Buffer(text)).value_or(std::nan(""));
}

bool Refuses(const MPluginParameter& row, const char* text) {
  return !ParseParameterText(row, Buffer(text));
}

// Formatters that only the row's table knows.
void M_CALL ShowPeak(MString& text, double value, const MPluginParameter& row) {
  if (value <= 1e-5)
    text = "Peak";
  else
    MShowMilliseconds(text, value, row);
}
void M_CALL ShowPower(MString& text, double value, const MPluginParameter&) {
  text = Format("{0}").Arg(int64_t{1} << static_cast<int>(value)).Text();
}
void M_CALL ShowRatio(MString& text, double value, const MPluginParameter&) {
  text = Format("{0;.2} : 1").Arg(1 / value).Text();
}
void M_CALL ShowConstant(MString& text, double, const MPluginParameter&) {
  text = "5 apples";
}

TEST(MParameterText, OfARowWithoutFormatterIsPlain) {
  EXPECT_EQ(Show(RealRow(0, 1), 0.12345), "0.1235");
  EXPECT_EQ(Show(IntegerRow(-5, 5), -3), "-3");
  EXPECT_EQ(Show(IntegerRow(-5, 5), -0.25), "0");
  EXPECT_EQ(Show(ListRow(), 1), "Soft 2");
  EXPECT_EQ(Show(ListRow(), 4), "4");
  EXPECT_EQ(Show(ListRow(), -1), "-1");
  EXPECT_EQ(Show(ListRow(), 1e300).substr(0, 4), "1000");
  EXPECT_EQ(Show(SwitchRow(), 1), "1");
  EXPECT_EQ(Show(SwitchRow(), 0), "0");
}

TEST(MParameterText, IsTheFormatters) {
  EXPECT_EQ(Show(RealRow(0, 1, MShowPercent), 0.5), "50.00%");
  EXPECT_EQ(Show(RealRow(0, 1, MShowSquaredDecibels), 0.4), "-15.9 dB");
  EXPECT_EQ(Show(RealRow(0, 1, MShowMilliseconds), 0.1), "100 ms");
  EXPECT_EQ(Show(RealRow(20, 20000, MShowFrequency), 440), "440Hz");
  EXPECT_EQ(Show(RealRow(1, 4, MShowFrequencyLog10), 3), "1000Hz");
  EXPECT_EQ(Show(RealRow(-24, 24, MShowInUnit, "{0.2} dB"), -6), "-6.00 dB");
  EXPECT_EQ(Show(IntegerRow(2, 512, MShowInUnit, "{0} samples"), 16), "16 samples");
}

TEST(ParseParameterText, ReadsNumbersWithAndWithoutTheirUnit) {
  const MPluginParameter percent = RealRow(0, 1, MShowPercent);
  for (const char* const text : {"50%", "50", " 50 % ", "50.00%"})
    EXPECT_EQ(Read(percent, text), 0.5) << text;
  const MPluginParameter decibels = RealRow(0, 1, MShowSquaredDecibels);
  for (const char* const text : {"-6 dB", "-6", "-6db"})
    EXPECT_EQ(Read(decibels, text), std::sqrt(std::pow(10, -6 * 0.05))) << text;
  EXPECT_EQ(Read(decibels, "Silence"), 0);
  const MPluginParameter time = RealRow(0, 0.5, MShowMilliseconds);
  EXPECT_EQ(Read(time, "120 ms"), 120 * 0.001);
  EXPECT_EQ(Read(time, "120"), 120 * 0.001);
  EXPECT_EQ(Read(time, "0.12 s"), 0.12);
  EXPECT_EQ(Read(RealRow(20, 20000, MShowFrequency), "440 Hz"), 440);
  EXPECT_EQ(Read(RealRow(1, 5, MShowFrequencyLog10), "1 kHz"), 3);
  EXPECT_EQ(Read(RealRow(1, 5, MShowFrequencyLog10), "1000"), 3);
  EXPECT_EQ(Read(RealRow(-24, 24, MShowInUnit, "{0.2} dB"), "-6 dB"), -6);
  EXPECT_EQ(Read(RealRow(-24, 24, MShowInUnit, "{0.2} dB"), "-6.125"), -6.125);
  EXPECT_EQ(Read(IntegerRow(2, 512, MShowInUnit, "{0} samples"), "16 Samples"), 16);
  EXPECT_EQ(Read(IntegerRow(2, 512, MShowInUnit, "{0} samples"), "16"), 16);
}

TEST(ParseParameterText, ReadsPlainRowsAsPlainNumbers) {
  EXPECT_EQ(Read(RealRow(0, 1), "0.123456789"), 0.123456789);
  EXPECT_EQ(Read(IntegerRow(-5, 5), " -3 "), -3);
  EXPECT_EQ(Read(RealRow(0, 1), "1e-3"), 1e-3);
}

TEST(ParseParameterText, MayGiveAValueOutsideOfTheRange) {
  EXPECT_EQ(Read(RealRow(0, 1, MShowPercent), "250%"), 2.5);
  EXPECT_EQ(Read(IntegerRow(-5, 5), "70"), 70);
  EXPECT_EQ(Read(RealRow(0, 1), "-2"), -2);
}

TEST(ParseParameterText, ReadsChoicesByNameInAnyCaseAndByNumber) {
  EXPECT_EQ(Read(ListRow(), "Soft 2"), 1);
  EXPECT_EQ(Read(ListRow(), " sOFT 2 "), 1);
  EXPECT_EQ(Read(ListRow(), "2"), 2);
  EXPECT_EQ(Read(ListRow(), "7"), 3);  // a choice's name
  EXPECT_EQ(Read(ListRow(), "9"), 9);  // as it would be shown
  for (const char* const text : {"Soft", "Soft 3", "1.5", "", "1 x"})
    EXPECT_TRUE(Refuses(ListRow(), text)) << text;
  MPluginParameter empty = ListRow();
  empty.enumeration = {nullptr, 0, 0, 0};
  EXPECT_TRUE(Refuses(empty, "Soft 1"));
}

TEST(ParseParameterText, ReadsSwitchesAsPeopleTypeThem) {
  for (const char* const text : {"on", "On", "1", "yes", "TRUE", " on "})
    EXPECT_EQ(Read(SwitchRow(), text), 1) << text;
  for (const char* const text : {"off", "OFF", "0", "no", "false"})
    EXPECT_EQ(Read(SwitchRow(), text), 0) << text;
  for (const char* const text : {"", "2", "-1", "onn", "0.5"})
    EXPECT_TRUE(Refuses(SwitchRow(), text)) << text;
}

TEST(ParseParameterText, RefusesWhatItCannotRead) {
  const MPluginParameter rows[] = {RealRow(0, 1, MShowPercent),
                                   RealRow(0, 1, MShowSquaredDecibels),
                                   RealRow(0, 1, MShowMilliseconds),
                                   RealRow(20, 20000, MShowFrequency),
                                   RealRow(1, 4, MShowFrequencyLog10),
                                   RealRow(0, 1),
                                   IntegerRow(0, 9),
                                   RealRow(-9, 9, MShowInUnit, "{0.2} dB"),
                                   RealRow(0, 1, ShowConstant),
                                   ListRow(),
                                   SwitchRow()};
  for (const MPluginParameter& row : rows)
    for (const char* const text : {"", " ", "x", "nan", "inf", "1e999", "1,5", "1 2", "5 parsec", "--1"})
      EXPECT_TRUE(Refuses(row, text)) << text;
  EXPECT_TRUE(Refuses(IntegerRow(0, 9), "1.5"));
  EXPECT_TRUE(Refuses(IntegerRow(2, 512, MShowInUnit, "{0} samples"), "1.5 samples"));
  EXPECT_TRUE(Refuses(RealRow(1, 4, MShowFrequencyLog10), "0 Hz"));
  EXPECT_TRUE(Refuses(RealRow(0, 1, MShowPercent), "5 dB"));
  EXPECT_TRUE(Refuses(MPluginParameter(), "1"));
  MString huge;
  huge.AppendRepeated(u'9', 100000);
  for (const MPluginParameter& row : rows) EXPECT_FALSE(ParseParameterText(row, huge));
}

TEST(ParseParameterText, ReadsNamesThatAFormatterGives) {
  const MPluginParameter row = RealRow(0, 0.1, ShowPeak);
  EXPECT_EQ(Read(row, "peak"), 0);
  EXPECT_EQ(Read(row, "5 ms"), 5 * 0.001);
  EXPECT_EQ(Read(row, "0.0 ms"), 0);  // shown just above the peak
  EXPECT_TRUE(Refuses(row, "valley"));
}

TEST(ParseParameterText, SearchesWhatAnyOtherFormatterShows) {
  EXPECT_EQ(Read(IntegerRow(10, 14, ShowPower), "4096"), 12);
  EXPECT_TRUE(Refuses(IntegerRow(10, 14, ShowPower), "4097"));
  const MPluginParameter ratio = RealRow(0.05, 1, ShowRatio);
  EXPECT_EQ(Show(ratio, Read(ratio, "4.00 : 1")), "4.00 : 1");
  EXPECT_EQ(Show(ratio, Read(ratio, "4")), "4.00 : 1");
  EXPECT_NEAR(Read(ratio, "4"), 0.25, 1e-4);
  EXPECT_EQ(Show(ratio, Read(ratio, "1")), "1.00 : 1");
  EXPECT_EQ(Show(ratio, Read(ratio, "20 : 1")), "20.00 : 1");
  for (const char* const text : {"0.5", "21", "4 dB"}) EXPECT_TRUE(Refuses(ratio, text)) << text;
}

TEST(ParseParameterText, SurvivesRangesThatAreNone) {
  const double nan = std::nan("");
  const double infinity = std::numeric_limits<double>::infinity();
  for (const auto& [low, high] :
       {std::pair(1.0, 1.0), {1.0, 0.1}, {nan, nan}, {-infinity, infinity}, {-1e308, 1e308}})
    for (const char* const text : {"3", "3 : 1", "x", "Peak"})
      ParseParameterText(RealRow(low, high, ShowRatio), Buffer(text));
  EXPECT_TRUE(Refuses(IntegerRow(5, 1, ShowConstant), "7"));
  EXPECT_TRUE(Refuses(
      IntegerRow(std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max(), ShowConstant),
      "7"));
}

TEST(ParseParameterText, ReadsWhatAnyRowShows) {
  TestRandom random;
  const std::vector<MPluginParameter> rows = {RealRow(0, 1, MShowPercent),
                                              RealRow(-1, 1, MShowPercent),
                                              RealRow(0, 0.8, MShowSquaredDecibels),
                                              RealRow(0, 0.5, MShowMilliseconds),
                                              RealRow(0.01, 20000, MShowFrequency),
                                              RealRow(-2, 4.3, MShowFrequencyLog10),
                                              RealRow(-24, 24, MShowInUnit, "{0.2} dB"),
                                              RealRow(0, 0.1, ShowPeak),
                                              RealRow(-3, 9)};
  for (int i = 0; i < 100000; ++i) {
    const MPluginParameter& row = rows[static_cast<std::size_t>(i) % rows.size()];
    const double value = random.Real(row.real.minimum, row.real.maximum);
    const MString text = MParameterText(row, value);
    const std::optional<double> read = ParseParameterText(row, text);
    ASSERT_TRUE(read) << Utf8(text);
    ASSERT_NEAR(*read, value, 0.006 * std::abs(value) + 0.0051) << Utf8(text);  // half of the last decimal
    const MString again = MParameterText(row, *read);
    if (again == text) continue;
    // At a limit of two precisions the text may gain or lose a decimal, but its value stays.
    const std::optional<double> readAgain = ParseParameterText(row, again);
    ASSERT_TRUE(readAgain) << Utf8(again);
    ASSERT_NEAR(*readAgain, *read, 1e-9 * std::abs(*read) + 1e-12) << Utf8(text) << " became " << Utf8(again);
  }
}

TEST(ParseParameterText, ReadsEveryWholeNumberThatARowShows) {
  for (int32_t value = 2; value <= 512; ++value) {
    const MPluginParameter row = IntegerRow(2, 512, MShowInUnit, "{0} samples");
    EXPECT_EQ(ParseParameterText(row, MParameterText(row, value)), value);
    EXPECT_EQ(ParseParameterText(IntegerRow(2, 512), MParameterText(IntegerRow(2, 512), value)), value);
  }
}

TEST(ParseParameterText, IsBlindForTheLocale) {
  const CommaLocale locale;
  if (!CommaLocale::IsInForce()) GTEST_SKIP() << "no locale with a comma";
  EXPECT_EQ(Show(RealRow(0, 1, MShowPercent), 0.125), "12.50%");
  EXPECT_EQ(Read(RealRow(0, 1, MShowPercent), "12.5%"), 0.125);
  EXPECT_EQ(Show(RealRow(0, 1), 0.5), "0.5000");
  EXPECT_EQ(Read(RealRow(0, 1), "0.5"), 0.5);
}

TEST(MRowTextFunctions, LetAValueSpeakTheTextsOfItsRow) {
  MPluginParameter row = RealRow(0, 0.5, MShowMilliseconds);
  MValueDouble value(MBind(row.real.value), row.real.minimum, row.real.maximum);
  value.SetFunctions(MRowTextFunctions(row));
  EXPECT_TRUE(value.SetText("0.25 s"));
  EXPECT_EQ(row.real.value, 0.25);
  MString text;
  value.GetText(text);
  EXPECT_EQ(text, "250 ms");
  EXPECT_EQ(value.FormatAt(1), "500 ms");
  EXPECT_TRUE(value.SetText("9 s"));
  EXPECT_EQ(row.real.value, 0.5);
  EXPECT_FALSE(value.SetText("a while"));
  EXPECT_EQ(row.real.value, 0.5);
}

}  // namespace
