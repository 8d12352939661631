#include "core/MNumberScanner.h"

#include <gtest/gtest.h>

#include "core/MFormat.h"
#include "tests/common/CommaLocale.h"
#include "tests/common/TestRandom.h"
#include "tests/common/Texts.h"

namespace {

std::vector<double> Scan(const char* format, const char* text) {
  const MScannedNumbers scanned = MScanFormat(Buffer(format), Buffer(text));
  std::vector<double> numbers;
  for (int32_t i = 0; i < std::min(scanned.count, MScannedNumbers::kMaximum); ++i)
    numbers.push_back(scanned.numbers[i].value);
  return numbers;
}

using Numbers = std::vector<double>;

TEST(MScanFormat, FindsTheNumbersAtThePlacesOfTheArguments) {
  EXPECT_EQ(Scan("{0}", "1.5"), Numbers({1.5}));
  EXPECT_EQ(Scan("Gain {0;.2} dB", "Gain -6.02 dB"), Numbers({-6.02}));
  EXPECT_EQ(Scan("{0} x {1}", "3 x 4"), Numbers({3, 4}));
  EXPECT_EQ(Scan("{0;+.02}", "+1.00"), Numbers({1}));
  EXPECT_EQ(Scan("{0:04}", "-0005"), Numbers({-5}));
  EXPECT_EQ(Scan("{{{0}}}", "{7}"), Numbers({7}));
}

TEST(MScanFormat, ReadsNumbersAsToDoubleDoes) {
  EXPECT_EQ(Scan("{0}", " 1e3 "), Numbers({1000}));
  EXPECT_EQ(Scan("{0}", "-.5E-1"), Numbers({-0.05}));
  EXPECT_EQ(Scan("{0}", "5."), Numbers({5}));
  EXPECT_EQ(Scan("{0}", "+2"), Numbers({2}));
  EXPECT_EQ(Scan("{0}", "1e-999"), Numbers({0}));
}

TEST(MScanFormat, ReadsHexadecimalNumbersWhereTheFormatWritesThem) {
  EXPECT_EQ(Scan("{0x;02}", "FF"), Numbers({255}));
  EXPECT_EQ(Scan("#{0x;02}{1x}", "#-1f"), Numbers({-31}));
  EXPECT_EQ(Scan("{0x}", "-"), Numbers());
  EXPECT_EQ(Scan("{0x}", "g"), Numbers());
  EXPECT_EQ(Scan("{0x}", ""), Numbers());
}

TEST(MScanFormat, MindsNeitherCaseNorBlanksNorMissingWords) {
  EXPECT_EQ(Scan("{0} dB", "5DB"), Numbers({5}));
  EXPECT_EQ(Scan("{0} dB", "  5  d b "), Numbers({5}));
  EXPECT_EQ(Scan("Gain {0} dB", "5"), Numbers({5}));
  EXPECT_EQ(Scan("Gain {0} dB", "gain5"), Numbers({5}));
  EXPECT_EQ(Scan("{0}, {1}", "1 2"), Numbers({1, 2}));
}

TEST(MScanFormat, FindsNothingInATextThatDoesNotFit) {
  for (const char* const text :
       {"", " ", "abc", "5 kHz", "1.5.2", "1,5", "5 5", "--5", "+", ".", "e5", "5 d", "dB"})
    EXPECT_EQ(Scan("{0} dB", text), Numbers()) << text;
}

TEST(MScanFormat, RefusesNumbersThatAreNotFinite) {
  for (const char* const text : {"nan", "inf", "-inf", "infinity", "1e999", "-1e999"})
    EXPECT_EQ(Scan("{0}", text), Numbers()) << text;
}

TEST(MScanFormat, FindsNothingForABrokenFormat) {
  for (const char* const format : {"{0", "{", "{0;.2", "x {1} {"})
    EXPECT_EQ(Scan(format, "1"), Numbers()) << format;
  EXPECT_EQ(Scan("no place", "no place"), Numbers());
}

TEST(MScanFormat, TakesAnIndexThatIsNamedAgainAtItsLastPlace) {
  EXPECT_EQ(Scan("{0} of {0}", "of 5"), Numbers({5}));
  EXPECT_EQ(Scan("{40} {0}", "5"), Numbers({5}));
  EXPECT_EQ(Scan("{99999999999} {0}", "5"), Numbers({5}));
}

TEST(MScanFormat, CountsNumbersBeyondThoseThatItKeeps) {
  MString format, text;
  for (int32_t i = 0; i < 12; ++i) {
    format.Append(Format("{{{0}}} ").Arg(i).Text());
    text.Append(Format("{0} ").Arg(i).Text());
  }
  const MScannedNumbers scanned = MScanFormat(format, text);
  EXPECT_EQ(scanned.count, 12);
  EXPECT_EQ(scanned.numbers[7].value, 7);
}

TEST(MScanFormat, TellsWhereANumberStands) {
  const MScannedNumbers scanned = MScanFormat("Gain {0} dB", "gain  -12.5 dB");
  ASSERT_EQ(scanned.count, 1);
  EXPECT_EQ(scanned.numbers[0].start, 6);
  EXPECT_EQ(scanned.numbers[0].length, 5);
}

TEST(MScanFormat, ReadsTextsOfAnyLength) {
  MString text;
  text.AppendRepeated(u' ', 100000);
  text.Append("1");
  text.AppendRepeated(u'0', 300);
  text.Append(".");
  text.AppendRepeated(u'0', 100000);
  EXPECT_EQ(MScanFormat("{0}", text).numbers[0].value, 1e300);
  text.AppendRepeated(u'x', 100000);
  EXPECT_EQ(MScanFormat("{0}", text).count, 0);
}

TEST(MScanFormat, ReversesWhatMFormatWrites) {
  TestRandom random;
  const std::vector<MString> formats = {"{0;.4}", "{0;+.4} dB", "a{{{0;.4}}}", "<{0}> %", "x2 {0;.4}"};
  for (int i = 0; i < 20000; ++i) {
    const double value = random.Real(-1, 1) * std::pow(10, random.Integer(-3, 9));
    const MString& format = random.OneOf(formats);
    const MString text = Format(format).Arg(value).Text();
    const MScannedNumbers scanned = MScanFormat(format, text);
    ASSERT_EQ(scanned.count, 1) << Utf8(text);
    ASSERT_NEAR(scanned.numbers[0].value, value, 5.1e-5) << Utf8(text);
  }
}

TEST(MScanFormat, IsBlindForTheLocale) {
  const CommaLocale locale;
  if (!CommaLocale::IsInForce()) GTEST_SKIP() << "no locale with a comma";
  EXPECT_EQ(Scan("{0} dB", "1.5 dB"), Numbers({1.5}));
  EXPECT_EQ(Scan("{0} dB", "1,5 dB"), Numbers());
}

TEST(MReadQuantity, SplitsNumberAndUnit) {
  const std::optional<MQuantity> quantity = MReadQuantity("  -1.25e2  kHz ");
  ASSERT_TRUE(quantity);
  EXPECT_EQ(quantity->number, -125);
  EXPECT_EQ(quantity->unit, "kHz");
  EXPECT_EQ(MReadQuantity("5")->unit, "");
  EXPECT_EQ(MReadQuantity("5 e")->unit, "e");
  EXPECT_EQ(MReadQuantity("5em")->unit, "em");
  EXPECT_FALSE(MReadQuantity("kHz 5"));
  EXPECT_FALSE(MReadQuantity(""));
}

TEST(MTrimmed, CutsBlanksAtBothEnds) {
  EXPECT_EQ(MTrimmed(" \t a b \n"), "a b");
  EXPECT_EQ(MTrimmed("   "), "");
  EXPECT_EQ(MTrimmed(""), "");
  EXPECT_EQ(MTrimmed(MString(u"\u00A05\u00A0")), "5");
}

}  // namespace
