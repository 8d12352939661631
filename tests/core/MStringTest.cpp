#include "core/MString.h"

#include <gtest/gtest.h>

#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"

namespace {

TEST(MString, LiteralAllocatesNothingAndKeepsItsPointer) {
  const CountingFunctions table;
  static const char kText[] = "feedback";
  const MString text(kText);
  const MString copy(text);
  EXPECT_TRUE(copy.IsLiteral());
  EXPECT_EQ(copy.GetData(), kText);
  EXPECT_EQ(copy.GetLength(), 8);
  EXPECT_EQ(table.GetCalls(), 0);
}

TEST(MString, NullLiteralIsTheEmptyText) {
  const MString text = MString::Literal(nullptr);
  EXPECT_TRUE(text.IsLiteral());
  EXPECT_EQ(text, "");
}

TEST(MString, AppendingToACopyOfALiteralLeavesTheLiteral) {
  const MString literal("ab");
  MString copy = literal;
  copy.Append("c");
  EXPECT_EQ(literal, "ab");
  EXPECT_TRUE(literal.IsLiteral());
  EXPECT_EQ(copy, "abc");
  EXPECT_FALSE(copy.IsLiteral());
  EXPECT_EQ(copy.GetLength(), 3);
}

}  // namespace
