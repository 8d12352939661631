#include "core/MString.h"

#include "tests/core/Balanced.h"
#include "tests/core/MStringRecord.h"

namespace {

using MStringTest = Balanced;

TEST_F(MStringTest, LiteralAllocatesNothingAndKeepsItsPointer) {
  static const char kText[] = "feedback";
  const MString text(kText);
  const MString copy(text);
  EXPECT_TRUE(copy.IsLiteral());
  EXPECT_EQ(copy.GetData(), kText);
  EXPECT_EQ(copy.GetLength(), 8);
  EXPECT_EQ(table.GetCalls(), 0);
}

TEST_F(MStringTest, NullLiteralIsTheEmptyText) {
  const MString text = MString::Literal(nullptr);
  EXPECT_TRUE(text.IsLiteral());
  EXPECT_STREQ(text.Narrow(), "");
  EXPECT_EQ(text, "");
}

TEST_F(MStringTest, AllEmptyTextsAreOneLiteral) {
  EXPECT_EQ(MString().GetData(), MString::Literal(nullptr).GetData());
  EXPECT_EQ(RecordOf(MString()).flags, 1u);
  EXPECT_EQ(RecordOf(MString()).length, 0);
}

TEST_F(MStringTest, LiteralBytesFrom128OnAreWidenedWithTheirSign) {
  const MString text("a\x7F\x80\xFF");
  EXPECT_EQ(text.At(0), u'a');
  EXPECT_EQ(text.At(1), 0x7F);
  EXPECT_EQ(text.At(2), 0xFF80);
  EXPECT_EQ(text.At(3), 0xFFFF);
  MString buffer = text;
  buffer.Reserve(10);
  EXPECT_FALSE(buffer.IsLiteral());
  EXPECT_EQ(buffer.At(2), 0xFF80);
  EXPECT_EQ(text.Find(0xFF80), 2);
  EXPECT_EQ(text.FindLast(0xFFFF), 3);
}

TEST_F(MStringTest, NarrowTextIsCopiedAndWidened) {
  char source[] = "ab\xE9";
  const MString text = MString::FromNarrow(source);
  source[0] = 'x';
  EXPECT_FALSE(text.IsLiteral());
  EXPECT_EQ(text, MString(u"ab\xFFE9"));
  EXPECT_EQ(MString::FromNarrow("abcdef", 3), "abc");
}

TEST_F(MStringTest, MissingOrEmptySourcesGiveTheEmptyText) {
  for (const MString& text :
       {MString::FromNarrow(nullptr), MString::FromNarrow(nullptr, 3), MString::FromNarrow("abc", 0),
        MString::FromNarrow("abc", -1), MString(static_cast<const MChar*>(nullptr)), MString(u""),
        MString(std::u16string_view())}) {
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(text, "");
  }
}

TEST_F(MStringTest, WideTextIsCopiedInto16BitUnitsAndTerminated) {
  MChar source[] = u"a\u0159b";
  const MString text(source);
  source[0] = u'x';
  EXPECT_FALSE(text.IsLiteral());
  EXPECT_EQ(text.GetLength(), 3);
  EXPECT_EQ(text.Units()[1], u'\u0159');
  EXPECT_EQ(text.Units()[3], 0);
  EXPECT_EQ(MString(u'\u0159').GetLength(), 1);
  EXPECT_EQ(MString(u'\u0159').At(0), u'\u0159');
}

TEST_F(MStringTest, ReadingOutsideOfTheTextGivesZero) {
  for (const MString& text : {MString("abc"), Buffer("abc")}) {
    EXPECT_EQ(text.At(-1), 0);
    EXPECT_EQ(text.At(3), 0);
    EXPECT_EQ(text.At(0x7FFFFFFF), 0);
    EXPECT_EQ(text.At(INT32_MIN), 0);
  }
}

TEST_F(MStringTest, CopyingABufferRaisesItsReferencesAndSharesIt) {
  const MString text = Buffer("abc");
  EXPECT_EQ(ReferencesOf(text), 1);
  {
    const MString copy = text;
    EXPECT_EQ(copy.GetData(), text.GetData());
    EXPECT_EQ(ReferencesOf(text), 2);
    MString assigned;
    assigned = copy;
    EXPECT_EQ(ReferencesOf(text), 3);
  }
  EXPECT_EQ(ReferencesOf(text), 1);
  EXPECT_EQ(table.GetReleased(), 0);
}

TEST_F(MStringTest, TheLastHolderReleasesTheBlockOnce) {
  {
    const MString text = Buffer("abc");
    const MString copies[] = {text, text, text};
  }
  EXPECT_EQ(table.GetAllocated(), 1);
  EXPECT_EQ(table.GetReleased(), 1);
}

TEST_F(MStringTest, AssignmentDropsTheOldTextAndSharesTheNewOne) {
  MString text = Buffer("old");
  const MString other = Buffer("new");
  text = other;
  EXPECT_EQ(table.GetReleased(), 1);
  EXPECT_EQ(text.GetData(), other.GetData());
  text = "literal";
  EXPECT_TRUE(text.IsLiteral());
  EXPECT_EQ(ReferencesOf(other), 1);
}

TEST_F(MStringTest, AssignmentToItselfChangesNothing) {
  MString text = Buffer("abc");
  text = *&text;
  EXPECT_EQ(text, "abc");
  EXPECT_EQ(ReferencesOf(text), 1);
  MString& same = text;
  text = std::move(same);
  EXPECT_EQ(text, "abc");
}

TEST_F(MStringTest, MovingTakesTheTextWithoutCounting) {
  MString text = Buffer("abc");
  const void* const data = text.GetData();
  const MString moved = std::move(text);
  EXPECT_EQ(moved.GetData(), data);
  EXPECT_EQ(ReferencesOf(moved), 1);
  EXPECT_EQ(text, "");  // a moved text is empty
  MString assigned;
  assigned = MString(moved);
  EXPECT_EQ(ReferencesOf(moved), 2);
}

TEST_F(MStringTest, ClearGoesBackToTheEmptyLiteral) {
  MString text = Buffer("abc");
  text.Clear();
  EXPECT_TRUE(text.IsLiteral());
  EXPECT_EQ(text, "");
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST_F(MStringTest, AppendingToACopyOfALiteralLeavesTheLiteral) {
  const MString literal("ab");
  MString copy = literal;
  copy.Append("c");
  EXPECT_EQ(literal, "ab");
  EXPECT_TRUE(literal.IsLiteral());
  EXPECT_EQ(copy, "abc");
  EXPECT_FALSE(copy.IsLiteral());
  EXPECT_EQ(copy.GetLength(), 3);
}

TEST_F(MStringTest, AppendingToASharedBufferLeavesTheOtherHolder) {
  const MString other = Buffer("ab");
  MString text = other;
  ASSERT_EQ(ReferencesOf(other), 2);
  text.Append("c");
  EXPECT_EQ(text, "abc");
  EXPECT_EQ(other, "ab");
  EXPECT_EQ(ReferencesOf(other), 1);
  EXPECT_EQ(ReferencesOf(text), 1);
}

TEST_F(MStringTest, ConstantTextsNeedNoCodeAtStart) {
  static constinit const MString text("constant");
  EXPECT_EQ(text, "constant");
}

}  // namespace
