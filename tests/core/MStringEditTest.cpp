// Appending, inserting, searching and cutting out, in both modes.

#include "tests/core/Balanced.h"
#include "tests/core/MStringRecord.h"

namespace {

using MStringEdit = Balanced;

TEST_F(MStringEdit, AppendTakesTextsOfBothModesUnitsAndNarrowText) {
  for (MString text : {MString("ab"), Buffer("ab")}) {
    text.Append(MString("cd"));
    text.Append(Buffer("ef"));
    text.Append("gh");
    text.Append(u'\u0159');
    text.AppendUnits(u"ijk", 2);
    text.AppendNarrow("lm\xFFo", 3);
    text.AppendRepeated(u'p', 3);
    EXPECT_EQ(text, MString(u"abcdefgh\u0159ijlm\xFFFFppp"));
    EXPECT_EQ(text.Units()[text.GetLength()], 0);
  }
}

TEST_F(MStringEdit, AppendingNothingChangesNothing) {
  MString text("ab");
  text.Append(MString());
  text.Append(static_cast<const char*>(nullptr));
  text.Append("");
  text.AppendUnits(u"x", 0);
  text.AppendNarrow("x", -1);
  text.AppendRepeated(u'x', 0);
  text.AppendRepeated(u'x', INT32_MIN);
  EXPECT_EQ(text, "ab");
}

TEST_F(MStringEdit, ATextMayBeAppendedToItself) {
  for (MString text : {MString("ab"), Buffer("ab")}) {
    for (int i = 0; i < 6; ++i) text.Append(text);
    ASSERT_EQ(text.GetLength(), 128);
    EXPECT_EQ(text.Substring(124), "abab");
    EXPECT_EQ(ReferencesOf(text), 1);
  }
}

TEST_F(MStringEdit, APartOfATextMayBeAppendedToOrInsertedIntoItself) {
  MString text = Buffer("0123456789");
  text.AppendUnits(text.Units() + 7, 3);
  EXPECT_EQ(text, "0123456789789");
  text.InsertUnits(1, text.Units() + 8, 2);
  EXPECT_EQ(text,
            "0891234567"
            "89789");
  MString other = text;
  other.InsertUnits(0, text.Units(), 2);
  EXPECT_EQ(other,
            "080891234567"
            "89789");
  EXPECT_EQ(text,
            "0891234567"
            "89789");
}

TEST_F(MStringEdit, ATextMayBeInsertedIntoItself) {
  for (MString text : {MString("abc"), Buffer("abc")}) {
    text.Insert(1, text);
    EXPECT_EQ(text, "aabcbc");
    text.Insert(6, text);
    EXPECT_EQ(text, "aabcbcaabcbc");
  }
}

TEST_F(MStringEdit, InsertLimitsItsPositionToTheText) {
  for (const MString& text : {MString("abc"), Buffer("abc")}) {
    const std::pair<int32_t, const char*> cases[] = {{-1, "xabc"},        {INT32_MIN, "xabc"}, {0, "xabc"},
                                                     {2, "abxc"},         {3, "abcx"},         {4, "abcx"},
                                                     {0x7FFFFFFF, "abcx"}};
    for (const auto& [position, expected] : cases) {
      MString unit = text;
      unit.Insert(position, u'x');
      EXPECT_EQ(unit, MString::Literal(expected)) << position;
      MString whole = text;
      whole.Insert(position, Buffer("x"));
      EXPECT_EQ(whole, MString::Literal(expected)) << position;
      MString literal = text;
      literal.Insert(position, "x");
      EXPECT_EQ(literal, MString::Literal(expected)) << position;
    }
    EXPECT_EQ(text, "abc");
  }
}

TEST_F(MStringEdit, InsertingNothingChangesNothing) {
  MString text("ab");
  text.Insert(1, MString());
  text.InsertUnits(1, u"x", 0);
  text.InsertNarrow(1, "x", -1);
  EXPECT_TRUE(text.IsLiteral());
  EXPECT_EQ(text, "ab");
}

TEST_F(MStringEdit, FindSearchesUpwardsFromItsStart) {
  for (const MString& text : {MString("abcabc"), Buffer("abcabc")}) {
    EXPECT_EQ(text.Find(u'b'), 1);
    EXPECT_EQ(text.Find(u'b', 1), 1);
    EXPECT_EQ(text.Find(u'b', 2), 4);
    EXPECT_EQ(text.Find(u'b', 5), -1);
    EXPECT_EQ(text.Find(u'a', 6), -1);
    EXPECT_EQ(text.Find(u'a', 0x7FFFFFFF), -1);
    EXPECT_EQ(text.Find(u'a', -5), 0);
    EXPECT_EQ(text.Find(u'x'), -1);
    EXPECT_EQ(text.Find(0), -1);  // the terminator is not part of the text
  }
  EXPECT_EQ(MString().Find(u'a'), -1);
}

TEST_F(MStringEdit, FindLastSearchesDownwardsFromItsStart) {
  for (const MString& text : {MString("abcabc"), Buffer("abcabc")}) {
    EXPECT_EQ(text.FindLast(u'b'), 4);
    EXPECT_EQ(text.FindLast(u'b', 0x7FFFFFFF), 4);
    EXPECT_EQ(text.FindLast(u'b', 4), 4);
    EXPECT_EQ(text.FindLast(u'b', 3), 1);
    EXPECT_EQ(text.FindLast(u'b', 0), -1);
    EXPECT_EQ(text.FindLast(u'a', 0), 0);
    EXPECT_EQ(text.FindLast(u'a', -1), -1);
    EXPECT_EQ(text.FindLast(u'a', INT32_MIN), -1);
    EXPECT_EQ(text.FindLast(u'x'), -1);
  }
  EXPECT_EQ(MString().FindLast(u'a'), -1);
}

TEST_F(MStringEdit, SubstringCutsItsCountAtTheEnd) {
  for (const MString& text : {MString("abcdef"), Buffer("abcdef")}) {
    EXPECT_EQ(text.Substring(2, 3), "cde");
    EXPECT_EQ(text.Substring(2, 100), "cdef");
    EXPECT_EQ(text.Substring(2), "cdef");
    EXPECT_EQ(text.Substring(0, 1), "a");
    EXPECT_EQ(text.Substring(5, 0x7FFFFFFF), "f");
  }
}

TEST_F(MStringEdit, SubstringOutsideOfTheTextIsEmpty) {
  for (const MString& text : {MString("abcdef"), Buffer("abcdef")}) {
    EXPECT_EQ(text.Substring(-1), "");
    EXPECT_EQ(text.Substring(-1, 3), "");
    EXPECT_EQ(text.Substring(INT32_MIN, 0x7FFFFFFF), "");
    EXPECT_EQ(text.Substring(6), "");
    EXPECT_EQ(text.Substring(0x7FFFFFFF, 0x7FFFFFFF), "");
    EXPECT_EQ(text.Substring(2, 0), "");
    EXPECT_EQ(text.Substring(2, -3), "");
    EXPECT_EQ(text.Substring(2, INT32_MIN), "");
  }
}

TEST_F(MStringEdit, SubstringOfTheWholeSharesItsBuffer) {
  const MString text = Buffer("abc");
  for (const int32_t count : {3, 4, 0x7FFFFFFF}) {
    const MString whole = text.Substring(0, count);
    EXPECT_EQ(whole.GetData(), text.GetData());
    EXPECT_EQ(ReferencesOf(text), 2);
  }
  const MString literal("abc");
  EXPECT_EQ(literal.Substring(0).GetData(), literal.GetData());
}

TEST_F(MStringEdit, EqualityLooksAtEveryUnitInBothModes) {
  for (const MString& text : {MString("abc"), Buffer("abc")}) {
    EXPECT_TRUE(text == MString("abc") && text == Buffer("abc") && text == text);
    EXPECT_FALSE(text == "abC" || text == "ab" || text == "abcd" || text == MString(u"ab\u0107"));
    EXPECT_TRUE(text != Buffer("abd"));
  }
  EXPECT_TRUE(MString("\x80") == MString(u"\xFF80"));
  EXPECT_TRUE(MString(std::u16string_view(u"a\0b", 3)) != MString(std::u16string_view(u"a\0c", 3)));
}

}  // namespace
