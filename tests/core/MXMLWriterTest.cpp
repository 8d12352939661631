#include "core/MXMLWriter.h"

#include "tests/common/TestRandom.h"
#include "tests/core/Balanced.h"
#include "tests/core/Encodings.h"
#include "tests/core/XMLTexts.h"

namespace {

class MXMLWriterTest : public Balanced {};

TEST_F(MXMLWriterTest, CompactTextHasNoWhiteSpaceBetweenElements) {
  MXMLItem item("state");
  item.SetAttribute("parametermix", "0.4000");
  item.SetAttribute("name", "A \"B\"");
  MXMLItem& graph = item.AddSubItem("graph");
  graph.SetText("x<y");
  graph.AddSubItem("point").SetAttribute("x", "1");
  graph.AddSubItem("point").SetText("t");
  EXPECT_EQ(
      SaveText(item),
      "<?xml version=\"1.0\" encoding=\"utf-8\"?><state name=\"A &quot;B&quot;\" parametermix=\"0.4000\">"
      "<graph>x&lt;y<point x=\"1\"/><point>t</point></graph></state>");
}

TEST_F(MXMLWriterTest, IndentedTextHasALineForEachElement) {
  MXMLItem item("a");
  MXMLItem& b = item.AddSubItem("b");
  b.SetText("t");
  b.AddSubItem("c");
  item.AddSubItem("d").SetText("u");
  EXPECT_EQ(SaveText(item, false),
            std::string(kHead) + "\n<a>\n  <b>t\n    <c/>\n  </b>\n  <d>u</d>\n</a>\n");
  EXPECT_EQ(SaveText(b, false), std::string(kHead) + "\n<b>t\n  <c/>\n</b>\n");
}

TEST_F(MXMLWriterTest, AnItemIsWrittenWithoutItsSiblings) {
  MXMLItem item("a");
  MXMLItem& b = item.AddSubItem("b");
  item.AddSubItem("c");
  EXPECT_EQ(Body(b), "<b/>");
  b.AddSubItem("d");
  EXPECT_EQ(Body(b), "<b><d/></b>");
}

TEST_F(MXMLWriterTest, SpecialCharactersAreEntitiesInTextAndValues) {
  MXMLItem item("a");
  item.SetAttribute("v", "&<>'\"\n\t\r");
  item.SetText("&<>'\"\n\t\r");
  EXPECT_EQ(Body(item), "<a v=\"&amp;&lt;&gt;&apos;&quot;&#10;\t\r\">&amp;&lt;&gt;&apos;&quot;&#10;\t\r</a>");
  MXMLItem zero("a");
  zero.SetAttribute("v", MString(u'\0'));
  EXPECT_EQ(Body(zero), "<a v=\"&#0;\"/>");
}

TEST_F(MXMLWriterTest, WhatNamesCannotHoldIsAnUnderscore) {
  MXMLItem item("?a b<c>d\"e/f!g=h\n");
  item.SetAttribute("?x y", "1");
  item.SetAttribute("", "2");
  item.AddSubItem("");
  EXPECT_EQ(Body(item), "<_a_b_c_d_e_f_g_h_ _=\"2\" ?x_y=\"1\"><_/></_a_b_c_d_e_f_g_h_>");
  MXMLItem wide(MString(u"\u20AC\u0159\U0001F39B\uFEFF"));
  EXPECT_EQ(Body(wide), "<\xE2\x82\xAC\xC5\x99\xF0\x9F\x8E\x9B_/>");
  EXPECT_EQ(SaveText(wide, true, "latin2").substr(39), "<_\xF8__/>");
}

TEST_F(MXMLWriterTest, LiteralsOfNamesAndValuesAreWrittenAsBuffersAre) {
  MXMLItem literal("a"), buffer(Buffer("a"));
  literal.SetAttribute("b", "<x>");
  buffer.SetAttribute(Buffer("b"), Buffer("<x>"));
  EXPECT_EQ(Body(literal), Body(buffer));
}

// Random trees: names that can be read, texts without blanks at their ends, some of everything else.
class RandomTree {
 public:
  explicit RandomTree(TestRandom& random) : random_(random) {}

  void Fill(MXMLItem& item, int32_t depth) {
    item.SetName(Name());
    if (random_.OneIn(3)) item.SetText(Text(true));
    for (int32_t i = random_.Below(6); i > 0; --i) item.SetAttribute(Name(), Text(false));
    if (depth == 0) return;
    for (int32_t i = random_.Below(5); i > 0; --i) Fill(item.AddSubItem("x"), depth - 1);
  }

 private:
  MString Name() {
    static const std::vector<MString> kPieces = {"parameter", "x", "Y", "-1", "_", ".", "&", "'", "long"};
    MString name;
    for (int32_t i = random_.Integer(1, random_.OneIn(50) ? 400 : 3); i > 0; --i)
      name.Append(random_.OneOf(kPieces));
    return name;
  }
  MString Text(bool isTrimmed) {
    MString text;
    for (int32_t i = random_.OneIn(40) ? random_.Below(3000) : random_.Below(9); i > 0; --i) {
      switch (random_.Below(6)) {
        case 0:
          text.Append("&<>'\"\n&amp;");
          break;
        case 1:
          text.Append(static_cast<MChar>(random_.Below(0x10000)));
          break;
        case 2:
          text.Append(static_cast<MChar>(random_.Below(0x100)));
          break;
        default:
          text.Append(static_cast<MChar>(random_.Integer('!', '~')));
      }
    }
    if (!isTrimmed || text.IsEmpty()) return text;
    MString framed("[");
    framed.Append(text);
    framed.Append(u']');
    return framed;
  }

  TestRandom& random_;
};

TEST_F(MXMLWriterTest, WhatIsWrittenIsReadAsTheSameTreeInEveryEncoding) {
  for (uint32_t seed = 1; seed <= 12; ++seed) {
    TestRandom random(seed);
    MXMLItem item;
    RandomTree(random).Fill(item, 4);
    for (const MString& name : CodecNames()) {
      for (const bool compact : {false, true}) {
        MXMLItem read;
        LoadText(read, SaveText(item, compact, name));
        ASSERT_NO_FATAL_FAILURE(ExpectSameTree(item, read)) << "seed " << seed << ", " << Utf8(name);
      }
    }
  }
}

TEST_F(MXMLWriterTest, WhatIsReadIsTheSameHoweverTheStreamCutsIt) {
  TestRandom random;
  MXMLItem item;
  RandomTree(random).Fill(item, 5);
  const std::string text = SaveText(item, false);
  for (int round = 0; round < 20; ++round) {
    MXMLItem read;
    TricklingStream stream(text, random);
    read.Load(stream);
    ASSERT_NO_FATAL_FAILURE(ExpectSameTree(item, read));
  }
}

TEST_F(MXMLWriterTest, BlanksAtTheEndsOfTextAreAllThatIsLost) {
  MXMLItem item("a"), read;
  item.SetText(" \n x \n y \t");
  item.AddSubItem("b").SetText("  ");
  LoadText(read, SaveText(item, false));
  EXPECT_EQ(read.GetText(), "x \n y");
  EXPECT_EQ(read.GetChildren()[0]->GetText(), "");
}

}  // namespace
