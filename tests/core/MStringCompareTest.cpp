// Folding, comparing and hashing.

#include <algorithm>

#include "core/MFoldDiacritics.h"
#include "tests/common/TestRandom.h"
#include "tests/core/Balanced.h"
#include "tests/core/MStringRecord.h"

namespace {

using MStringCompare = Balanced;
using MStringHash = Balanced;

constexpr int32_t kWhole = MString::kWhole;

// The result of comparing 8-bit texts, which all four combinations of the modes must give.
int32_t Compare(const char* left, int32_t offset, const char* right, int32_t otherOffset,
                int32_t maximum = kWhole) {
  const int32_t result =
      MString::Compare(MString::Literal(left), offset, MString::Literal(right), otherOffset, maximum);
  for (const MString& a : {MString::Literal(left), Buffer(left)})
    for (const MString& b : {MString::Literal(right), Buffer(right)})
      EXPECT_EQ(MString::Compare(a, offset, b, otherOffset, maximum), result) << left << " | " << right;
  return result;
}

int32_t Compare(const char* left, const char* right) {
  return Compare(left, 0, right, 0);
}

TEST(FoldDiacritics, TakesTheBaseLetterAndKeepsItsCase) {
  EXPECT_EQ(FoldDiacritics(192), 65);
  EXPECT_EQ(FoldDiacritics(224), 97);
  EXPECT_EQ(FoldDiacritics(311), 107);
  EXPECT_EQ(FoldDiacritics(313), 76);
  EXPECT_EQ(FoldDiacritics(64334), 1508);
  EXPECT_EQ(FoldDiacritics(0x1EA4), 'A');  // two marks
}

TEST(FoldDiacritics, LeavesUnitsThatAreNotInTheTable) {
  for (int32_t unit = 0; unit < 192; ++unit) EXPECT_EQ(FoldDiacritics(static_cast<MChar>(unit)), unit);
  for (const int32_t unit : {0xC6, 0xD7, 0xDF, 0x2ADC, 0xAC00, 0xD800, 64335, 0xFF80, 0xFFFF})
    EXPECT_EQ(FoldDiacritics(static_cast<MChar>(unit)), unit);
}

TEST(FoldDiacritics, TableHas988SortedRowsWhoseBasesNeedNoSecondLook) {
  const MFoldRow* const end = kFoldRows + kFoldRowCount;
  EXPECT_EQ(kFoldRowCount, 988);
  EXPECT_EQ(kFoldRows[0].accented, 192);
  EXPECT_EQ(end[-1].accented, 64334);
  EXPECT_TRUE(std::is_sorted(kFoldRows, end, [](auto& a, auto& b) { return a.accented <= b.accented; }));
  for (const MFoldRow* row = kFoldRows; row != end; ++row) {
    EXPECT_NE(row->base, row->accented);
    EXPECT_EQ(FoldDiacritics(row->accented), row->base);
    EXPECT_EQ(FoldDiacritics(row->base), row->base);
  }
}

TEST_F(MStringCompare, IsZeroForTextsThatDifferInCaseOnly) {
  EXPECT_EQ(Compare("Feedback", "fEEDBACK"), 0);
  EXPECT_EQ(Compare("", ""), 0);
  EXPECT_EQ(Compare("@[`{", "@[`{"), 0);
}

TEST_F(MStringCompare, GivesTheDifferenceOfTheFirstFoldedUnitsThatDiffer) {
  EXPECT_EQ(Compare("abc", "abd"), -1);
  EXPECT_EQ(Compare("abD", "abc"), 1);
  EXPECT_EQ(Compare("aBz", "aa"), 1);
  EXPECT_EQ(Compare("ab", "abC"), -'c');
  EXPECT_EQ(Compare("abC", "ab"), 'c');
  EXPECT_EQ(Compare("a_", "aB"), '_' - 'b');
  EXPECT_EQ(Compare("\xFF", "a"), 0xFFFF - 'a');
}

TEST_F(MStringCompare, FoldsDiacriticsOnBothSides) {
  const MString accented(u"\u00C1\u0159");
  for (const MString& plain : {MString("ar"), Buffer("AR"), MString(u"\u0226\u0154")}) {
    EXPECT_EQ(accented.Compare(plain), 0);
    EXPECT_EQ(plain.Compare(accented), 0);
  }
  EXPECT_EQ(MString(u"\u00DF").Compare(MString("s")), 0xDF - 's');
}

TEST_F(MStringCompare, EndsAtItsMaximum) {
  EXPECT_EQ(Compare("abcd", 0, "abxy", 0, 2), 0);
  EXPECT_EQ(Compare("abcd", 0, "abxy", 0, 3), 'c' - 'x');
  EXPECT_EQ(Compare("a", 0, "b", 0, 0), 0);
  EXPECT_EQ(Compare("a", 0, "b", 0, -1), 0);
  EXPECT_EQ(Compare("a", 0, "b", 0, INT32_MIN), 0);
}

TEST_F(MStringCompare, EndsAtAZeroOfTheLeftText) {
  MString left = Buffer("ab"), right = Buffer("ab");
  left.Append(MChar(0));
  right.Append(MChar(0));
  left.Append(u'x');
  right.Append(u'y');
  EXPECT_EQ(left.Compare(right), 0);
  EXPECT_EQ(left.Compare("ab"), 0);
  EXPECT_EQ(left.Compare("abc"), -'c');
}

TEST_F(MStringCompare, BeginsAtItsOffsets) {
  EXPECT_EQ(Compare("xxabc", 2, "ABC", 0), 0);
  EXPECT_EQ(Compare("abc", 0, "yABd", 1), -1);
  EXPECT_EQ(Compare("xabcx", 1, "yabcy", 1, 3), 0);
}

TEST_F(MStringCompare, TakesAnOffsetBehindTheEndForAnEmptyRest) {
  EXPECT_EQ(Compare("abc", 3, "", 0), 0);
  EXPECT_EQ(Compare("abc", 100, "abc", 0x7FFFFFFF), 0);
  EXPECT_EQ(Compare("abc", 3, "abc", 2), -'c');
  EXPECT_EQ(Compare("abc", 2, "abc", 3), 'c');
  EXPECT_EQ(Compare("abc", -1, "abc", INT32_MIN), 0);
}

// The rule, step by step.
int32_t SlowCompare(const MString& left, int32_t offset, const MString& right, int32_t otherOffset,
                    int32_t maximum) {
  const auto fold = [](MChar unit) {
    unit = FoldDiacritics(unit);
    return unit >= u'A' && unit <= u'Z' ? unit + 32 : static_cast<int32_t>(unit);
  };
  for (int32_t i = 0; i < maximum; ++i) {
    const MChar a = left.At(offset + i);
    const int32_t difference = fold(a) - fold(right.At(otherOffset + i));
    if (difference != 0) return difference;
    if (a == 0) return 0;
  }
  return 0;
}

TEST_F(MStringCompare, RandomTextsCompareAsTheRuleSays) {
  TestRandom random(6);
  const std::vector<MChar> units = {u'a', u'A', u'b', u'\u00E1', u'\u00C1', u'_', u'\u0159', u'R', 0};
  for (int i = 0; i < 20000; ++i) {
    MString texts[2];
    for (MString& text : texts)
      for (int k = random.Below(6); k > 0; --k) text.Append(random.OneOf(units));
    const int32_t offset = random.Below(4), other = random.Below(4);
    const int32_t maximum = random.OneIn(2) ? kWhole : random.Integer(-1, 6);
    ASSERT_EQ(MString::Compare(texts[0], offset, texts[1], other, maximum),
              SlowCompare(texts[0], offset, texts[1], other, maximum));
  }
}

TEST_F(MStringCompare, LongTextsWithAnEqualStartCompareAsTheRuleSays) {
  TestRandom random(7);
  const std::vector<MChar> units = {u'a', u'A', u'b', u'\u00E1', u'\uFFFF', u'\u8000', u'\u0159', 0};
  for (int i = 0; i < 20000; ++i) {
    MString left;
    for (int k = random.Below(24); k > 0; --k) left.Append(random.OneIn(10) ? random.OneOf(units) : u'p');
    MString right = left;
    if (random.OneIn(2)) right = right.Substring(0, random.Below(24));
    for (int k = random.Below(3); k > 0; --k) right.Insert(random.Below(24), random.OneOf(units));
    const int32_t offset = random.OneIn(2) ? 0 : random.Below(6);
    const int32_t maximum = random.OneIn(2) ? kWhole : random.Integer(-1, 24);
    ASSERT_EQ(MString::Compare(left, offset, right, offset, maximum),
              SlowCompare(left, offset, right, offset, maximum));
    ASSERT_EQ(MString::Compare(left, offset, left, offset, maximum), 0);
    ASSERT_EQ(MString::Compare(left, offset, left, 1, maximum), SlowCompare(left, offset, left, 1, maximum));
  }
}

TEST_F(MStringHash, OfNothingIsZero) {
  EXPECT_EQ(MString().Hash(), 0u);
  EXPECT_EQ(Buffer("").Hash(), 0u);
}

TEST_F(MStringHash, OfShortTextsJoinsEveryUnitShiftedByItsIndex) {
  EXPECT_EQ(MString("a").Hash(), 0x61u);
  EXPECT_EQ(MString("ab").Hash(), 0x61u ^ 0x62u << 1);
  uint32_t expected = 0;
  for (uint32_t i = 0; i < 15; ++i) expected ^= ('a' + i) << i;
  EXPECT_EQ(MString("abcdefghijklmno").Hash(), expected);
}

TEST_F(MStringHash, OfLongTextsJoinsTheFirstUnitAndFrom20UnitsOnTheFifth) {
  EXPECT_EQ(MString("abcdefghijklmnop").Hash(), 0x61u);
  EXPECT_EQ(MString("abcdefghijklmnopqrs").Hash(), 0x61u);
  EXPECT_EQ(MString("abcdefghijklmnopqrst").Hash(), 0x61u ^ 0x65u << 4);
  MString longText("abcdefghijklmnopqrst");
  longText.AppendRepeated(u'x', 1000);
  EXPECT_EQ(longText.Hash(), 0x61u ^ 0x65u << 4);
}

TEST_F(MStringHash, TellsTextsOf15ApartByTheirNinthUnit) {
  EXPECT_NE(MString("abcdefghijklmno").Hash(), MString("abcdefghXjklmno").Hash());
}

TEST_F(MStringHash, OfTextsOf16DependsOnTheFirstUnitOnly) {
  EXPECT_EQ(MString("abcdefghijklmnop").Hash(), MString("aXXXXXXXXXXXXXXX").Hash());
  EXPECT_NE(MString("abcdefghijklmnop").Hash(), MString("bbcdefghijklmnop").Hash());
}

TEST_F(MStringHash, OfTextsOf20DependsOnTheFirstAndTheFifthUnitOnly) {
  EXPECT_EQ(MString("abcdefghijklmnopqrst").Hash(), MString("aXXXeXXXXXXXXXXXXXXXXXX").Hash());
  EXPECT_NE(MString("abcdefghijklmnopqrst").Hash(), MString("abcdXfghijklmnopqrst").Hash());
}

TEST_F(MStringHash, IsBlindForCaseAndTheSameInBothModes) {
  for (const char* const text : {"FeedBack", "A RATHER LONG TEXT OF MANY UNITS", "\x80\xFF"})
    EXPECT_EQ(MString::Literal(text).Hash(), Buffer(text).Hash());
  EXPECT_EQ(MString("FeedBack").Hash(), MString("fEEDbACK").Hash());
  EXPECT_NE(MString(u"\u00E1").Hash(), MString("a").Hash());
}

TEST_F(MStringHash, TakesUnitsAsSigned8BitValues) {
  EXPECT_EQ(MString("\xFF").Hash(), 0xFFFFFFFFu);
  EXPECT_EQ(MString("a\x80").Hash(), 0x61u ^ 0xFFFFFF00u);
  EXPECT_EQ(MString(u"\u0141").Hash(), 0x41u);  // its low byte, which is not folded
  EXPECT_EQ(MString(u"\u0180").Hash(), 0xFFFFFF80u);
}

}  // namespace
