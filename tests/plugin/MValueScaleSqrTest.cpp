#include "plugin/MValueScaleSqr.h"

#include <gtest/gtest.h>

#include <limits>

#include "plugin/MValueUnits.h"
#include "tests/plugin/ValueTexts.h"

namespace {

TEST(MValueScaleSqr, MovesInASquareLaw) {
  MValueDouble inner(25, 0, 100);
  MValueScaleSqr value(inner);
  EXPECT_EQ(value.GetPosition(), 0.5);
  EXPECT_TRUE(value.SetPosition(0.9));
  EXPECT_DOUBLE_EQ(inner.GetValue(), 81);
  EXPECT_EQ(value.FormatAt(0.5), "25.0000");
  EXPECT_EQ(value.FormatAt(0.5), inner.FormatAt(0.25));
}

TEST(MValueScaleSqr, EndsWhereTheInnerValueEnds) {
  MValueDouble inner(25, 0, 100);
  MValueScaleSqr value(inner);
  value.SetPosition(-0.5);
  EXPECT_EQ(inner.GetValue(), 0);
  EXPECT_EQ(value.FormatAt(-0.5), "0.0000");
  value.SetPosition(3);
  EXPECT_EQ(inner.GetValue(), 100);
  EXPECT_EQ(value.FormatAt(3), "100.0000");
  EXPECT_FALSE(value.SetPosition(std::nan("")));
  EXPECT_EQ(inner.GetValue(), 100);
}

TEST(MValueScaleSqr, ComesBackFromEveryPosition) {
  MValueDouble inner(0, -3, 7);
  MValueScaleSqr value(inner);
  for (int i = 0; i <= 1000; ++i) {
    value.SetPosition(i / 1000.0);
    EXPECT_NEAR(value.GetPosition(), i / 1000.0, 1e-7);
  }
}

TEST(MValueScaleSqr, PassesEverythingElseOn) {
  MValuePercents inner(0.5, 0, 2);
  inner.SetKey("depth");
  MValueScaleSqr value(inner);
  EXPECT_EQ(TextOf(value), "50%");
  EXPECT_EQ(RawTextOf(value), "0.5000");
  EXPECT_EQ(ShortTextOf(value), "50%");
  EXPECT_EQ(IndexTextOf(value, 1), "1.0000");
  EXPECT_EQ(value.GetIndexCount(), 3);
  EXPECT_EQ(value.GetFlags(), inner.GetFlags());
  EXPECT_EQ(SavedText(value, "depth"), "0.5000");
  MString text;
  value.ToText(text);
  EXPECT_EQ(text, "50%");
  value.FormatValue(text);
  EXPECT_EQ(text, "50%");
  EXPECT_TRUE(value.SetText("80%"));
  EXPECT_EQ(inner.GetValue(), 0.8);
  EXPECT_TRUE(value.ParseValue("90"));
  EXPECT_EQ(inner.GetValue(), 0.9);
  EXPECT_TRUE(value.SetIndex(9));
  EXPECT_EQ(inner.GetValue(), 9);
  value.Validate();
  EXPECT_EQ(inner.GetValue(), 2);
  EXPECT_TRUE(value.StepBy(-1, 0));
  EXPECT_TRUE(value.StepSmall(-1));
  EXPECT_DOUBLE_EQ(inner.GetValue(), 1.996);
  value.FromRawText("7");
  EXPECT_EQ(inner.GetValue(), 7);
  EXPECT_TRUE(value.Reset());
  EXPECT_EQ(inner.GetValue(), 0.5);
  MXMLItem item("item");
  item.SetAttribute("depth", "0.25");
  value.Load(item);
  EXPECT_EQ(inner.GetValue(), 0.25);
  item.SetAttribute("mmax", "0.125");
  value.LoadFromXml(item);
  EXPECT_EQ(inner.GetValue(), 0.125);
}

TEST(MValueScaleSqr, OwnsNothing) {
  MValueDouble inner(25, 0, 100);
  { const MValueScaleSqr value(inner); }
  EXPECT_EQ(inner.GetValue(), 25);  // the sanitizer would see a second end
}

}  // namespace
