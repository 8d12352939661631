#include <cmath>
#include <limits>

#include "tests/core/Balanced.h"

namespace {

using MStringNumbers = Balanced;

// The value of `text` in both modes, which must agree, and how much of it was read.
int64_t Integer(const char* text, int32_t base, int32_t expectedConsumed, int32_t start = 0) {
  int32_t consumed = -1, consumedOfBuffer = -1;
  const int64_t value = MString::Literal(text).ToInteger(base, &consumed, start);
  EXPECT_EQ(Buffer(text).ToInteger(base, &consumedOfBuffer, start), value) << text;
  EXPECT_EQ(consumed, expectedConsumed) << text;
  EXPECT_EQ(consumedOfBuffer, expectedConsumed) << text;
  return value;
}

TEST_F(MStringNumbers, ToIntegerReadsDigitsAndSaysHowMany) {
  EXPECT_EQ(Integer("12abc", 10, 2), 12);
  EXPECT_EQ(Integer("-12abc", 10, 3), -12);
  EXPECT_EQ(Integer("-", 10, 1), 0);
  EXPECT_EQ(Integer("--5", 10, 1), 0);
  EXPECT_EQ(Integer("", 10, 0), 0);
  EXPECT_EQ(Integer("abc", 10, 0), 0);
  EXPECT_EQ(Integer(" 5", 10, 0), 0);
  EXPECT_EQ(Integer("+5", 10, 0), 0);
  EXPECT_EQ(Integer("007", 10, 3), 7);
  EXPECT_EQ(MString("42").ToInteger(), 42);  // the count is not wanted
}

TEST_F(MStringNumbers, ToIntegerReadsDigitsBelowTheBaseInEitherCase) {
  EXPECT_EQ(Integer("1F", 16, 2), 31);
  EXPECT_EQ(Integer("1f", 16, 2), 31);
  EXPECT_EQ(Integer("1g", 16, 1), 1);
  EXPECT_EQ(Integer("1F", 10, 1), 1);
  EXPECT_EQ(Integer("19", 8, 1), 1);
  EXPECT_EQ(Integer("1012", 2, 3), 5);
  EXPECT_EQ(Integer("aB", 12, 2), 131);
  EXPECT_EQ(Integer("F0", 36, 2), 15 * 36);  // the base is taken as it is, digits end at F
  EXPECT_EQ(Integer("10", 1, 0), 0);
  EXPECT_EQ(Integer("10", 0, 0), 0);
  EXPECT_EQ(Integer("10", -10, 0), 0);
  EXPECT_EQ(MString(u"1\u0662").ToInteger(), 1);  // digits of other scripts are none
}

TEST_F(MStringNumbers, ToIntegerWrapsOnOverflow) {
  EXPECT_EQ(Integer("18446744073709551616", 10, 20), 0);
  EXPECT_EQ(Integer("18446744073709551621", 10, 20), 5);
  EXPECT_EQ(Integer("9223372036854775808", 10, 19), INT64_MIN);
  EXPECT_EQ(Integer("-9223372036854775808", 10, 20), INT64_MIN);
  EXPECT_EQ(Integer("-18446744073709551615", 10, 21), 1);
}

TEST_F(MStringNumbers, ToIntegerMayBeginInsideOfTheText) {
  EXPECT_EQ(Integer("a-12b", 10, 3, 1), -12);
  EXPECT_EQ(Integer("12", 10, 0, 2), 0);
  EXPECT_EQ(Integer("12", 10, 0, 0x7FFFFFFF), 0);
  EXPECT_EQ(Integer("12", 10, 2, -1), 12);
}

TEST_F(MStringNumbers, FromIntegerPadsTheDigitsAndPutsTheSignInFront) {
  EXPECT_EQ(MString::FromInteger(-5, 10, 4, u'0'), "-0005");
  EXPECT_EQ(MString::FromInteger(-5, 10, 4, u' '), "-   5");
  EXPECT_EQ(MString::FromInteger(5, 10, 4), "   5");
  EXPECT_EQ(MString::FromInteger(12345, 10, 4), "12345");
  EXPECT_EQ(MString::FromInteger(0), "0");
  EXPECT_EQ(MString::FromInteger(7, 10, -3), "7");
  EXPECT_EQ(MString::FromInteger(7, 10, 3, u'\u2007'), MString(u"\u2007\u20077"));
}

TEST_F(MStringNumbers, FromIntegerWritesUpperCaseDigitsOfTheBase) {
  EXPECT_EQ(MString::FromInteger(0xBEEF, 16), "BEEF");
  EXPECT_EQ(MString::FromInteger(-0xBEEF, 16), "-BEEF");
  EXPECT_EQ(MString::FromInteger(10, 2), "1010");
  EXPECT_EQ(MString::FromUnsigned(~uint64_t{0}, 16), "FFFFFFFFFFFFFFFF");
  EXPECT_EQ(MString::FromUnsigned(~uint64_t{0}), "18446744073709551615");
  for (const int32_t base : {-1, 0, 1, 17, 36}) EXPECT_EQ(MString::FromInteger(12, base), "12") << base;
}

TEST_F(MStringNumbers, FromIntegerWritesTheSmallestNumber) {
  EXPECT_EQ(MString::FromInteger(INT64_MIN), "-9223372036854775808");
  EXPECT_EQ(MString::FromInteger(INT64_MIN, 16), "-8000000000000000");
  EXPECT_EQ(MString::FromInteger(INT64_MAX), "9223372036854775807");
}

TEST_F(MStringNumbers, FromIntegerWritesAtMost62Digits) {
  EXPECT_EQ(MString::FromInteger(5, 10, 100, u'0').GetLength(), 62);
  EXPECT_EQ(MString::FromInteger(-5, 10, 0x7FFFFFFF, u'0').GetLength(), 63);
  MString lowest;
  lowest.AppendRepeated(u'1', 62);
  EXPECT_EQ(MString::FromUnsigned(~uint64_t{0}, 2), lowest);
  EXPECT_EQ(MString::FromUnsigned(uint64_t{1} << 63 | 1, 2).Substring(60), "01");
}

TEST_F(MStringNumbers, FromDoubleIsFixedAndKeepsTrailingZeros) {
  EXPECT_EQ(MString::FromDouble(0.5, 4), "0.5000");
  EXPECT_EQ(MString::FromDouble(-0.5, 0), "-0");
  EXPECT_EQ(MString::FromDouble(1.0 / 3, 12), "0.333333333333");
  EXPECT_EQ(MString::FromDouble(1e300, 1).GetLength(), 303);
  EXPECT_EQ(MString::FromDouble(1e300, 1).Find(u'e'), -1);
  EXPECT_EQ(MString::FromDouble(1e-300, 3), "0.000");
}

TEST_F(MStringNumbers, FromDoubleLimitsItsPrecision) {
  EXPECT_EQ(MString::FromDouble(1.5, -1), "2");
  EXPECT_EQ(MString::FromDouble(1.5, 99).GetLength(), 101);
  EXPECT_EQ(MString::FromDouble(1.5, 100).GetLength(), 101);
  EXPECT_EQ(MString::FromDouble(-std::numeric_limits<double>::max(), 0x7FFFFFFF).GetLength(),
            1 + 309 + 1 + 99);
}

TEST_F(MStringNumbers, FromDoubleWritesWhatIsNoNumber) {
  EXPECT_EQ(MString::FromDouble(NAN, 2), "nan");
  EXPECT_EQ(MString::FromDouble(-NAN, 2), "-nan");
  EXPECT_EQ(MString::FromDouble(INFINITY, 2), "inf");
  EXPECT_EQ(MString::FromDouble(-INFINITY, 2), "-inf");
}

TEST_F(MStringNumbers, ToDoubleSkipsLeadingBlanksAndTrailingGarbage) {
  for (const bool literal : {true, false}) {
    const auto value = [literal](const char* text) {
      return literal ? MString::Literal(text).ToDouble() : Buffer(text).ToDouble();
    };
    EXPECT_EQ(value(" 1.5xyz"), 1.5);
    EXPECT_EQ(value("\t-2e3"), -2000);
    EXPECT_EQ(value("1,5"), 1);
    EXPECT_EQ(value("1.5\xE9"), 1.5);
    EXPECT_EQ(value(""), 0);
    EXPECT_EQ(value("abc"), 0);
    EXPECT_EQ(value("inf"), INFINITY);
    EXPECT_TRUE(std::isnan(value("nan")));
  }
}

TEST_F(MStringNumbers, ToDoubleReadsNumbersOfAnyLength) {
  for (const int32_t length : {20, 510, 511, 512, 513, 5000}) {
    MString text("0.");
    text.AppendRepeated(u'0', length - 10);
    text.Append("125e");
    text.Append(MString::FromInteger(length - 10));
    EXPECT_EQ(text.ToDouble(), 0.125) << length;
    MString padded("-2.5");
    padded.AppendRepeated(u'x', length - 4);
    EXPECT_EQ(padded.ToDouble(), -2.5) << length;
  }
}

TEST_F(MStringNumbers, ToDoubleEndsAtUnitsThatAreNoASCII) {
  EXPECT_EQ(MString(u"1\u0132").ToDouble(), 1);  // its low byte would be a digit
  EXPECT_EQ(MString(u"1\uFF12").ToDouble(), 1);
}

TEST_F(MStringNumbers, PrintfFormatsIntoABuffer) {
  const MString text = MString::Printf("%s %d %5.2f|%c", "abc", -7, 1.5, 'x');
  EXPECT_EQ(text, "abc -7  1.50|x");
  EXPECT_FALSE(text.IsLiteral());
  EXPECT_FALSE(MString::Printf("%s", "").IsLiteral());
}

TEST_F(MStringNumbers, PrintfCutsAtItsBuffer) {
  EXPECT_EQ(MString::Printf("%8189sx", "").GetLength(), 8190);
  const MString cut = MString::Printf("%9000sx", "a");
  EXPECT_EQ(cut.GetLength(), 8190);
  EXPECT_EQ(cut.Units()[8190], 0);
  EXPECT_EQ(cut.Find(u'x'), -1);
}

}  // namespace
