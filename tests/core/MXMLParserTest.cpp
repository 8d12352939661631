#include "core/MXMLParser.h"

#include "core/MTranslate.h"
#include "core/MXMLItemIterator.h"
#include "tests/core/Balanced.h"
#include "tests/core/XMLTexts.h"

namespace {

using namespace std::string_literals;

class MXMLParserTest : public Balanced {};

// The failure of a syntax error: "message|256|line 1, column 4".
std::string Syntax(const char* message, int line, int column) {
  return "Invalid file contents. "s + message + "|256|line " + std::to_string(line) + ", column " +
         std::to_string(column);
}

TEST_F(MXMLParserTest, AnEmptyElementHasNothing) {
  MXMLItem item;
  LoadText(item, "<a/>");
  EXPECT_EQ(item.GetName(), "a");
  EXPECT_EQ(item.GetText(), "");
  EXPECT_TRUE(item.GetChildren().IsEmpty());
  EXPECT_TRUE(item.GetAttributes().IsEmpty());
  EXPECT_EQ(Reread("<a ></a >"), "<a/>");
}

TEST_F(MXMLParserTest, ATreeIsBuiltInTheOrderOfTheText) {
  MXMLItem item;
  LoadText(item, "<a>\n <b x=\"1\">\n  <c/>t</b>\n <d\ty = \"2\"\r\nz=\"3\"w=\"\"/>\n</a>");
  EXPECT_EQ(Body(item), "<a><b x=\"1\">t<c/></b><d w=\"\" y=\"2\" z=\"3\"/></a>");
  const MXMLItem& c = *item.GetChildren()[0]->GetChildren()[0];
  EXPECT_EQ(c.GetDepth(), 2);
  EXPECT_EQ(c.GetOwner()->GetNext(), item.GetChildren()[1]);
}

TEST_F(MXMLParserTest, TextThatChildrenSplitIsJoinedByLineFeeds) {
  MXMLItem item;
  LoadText(item, "<a>x<b/>y</a>");
  EXPECT_EQ(item.GetText(), "x\ny");
  LoadText(item, "<a>x<!-- c --> y <b/> \n <b/>z<![CDATA[w]]></a>");
  EXPECT_EQ(item.GetText(), "x\ny\nz\nw");
}

TEST_F(MXMLParserTest, BlanksAndControlCharactersAreCutAtTheEndsOfTextOnly) {
  MXMLItem item;
  LoadText(item, "<a>\x01\t\n \0x \x1F\r y\n\0 </a>"s);
  EXPECT_EQ(Utf8(item.GetText()), "x \x1F\r y");
  LoadText(item, "<a> &#10; x &#9;</a>");
  EXPECT_EQ(item.GetText(), "x");
  LoadText(item, "<a>!</a>");
  EXPECT_EQ(item.GetText(), "!");
}

TEST_F(MXMLParserTest, NamesOfClosingElementsAreComparedAsNamesAre) {
  EXPECT_EQ(Reread("<A></a>"), "<A/>");
  EXPECT_EQ(Reread("<\xC3\xA9></E>"), "<\xC3\xA9/>");
  EXPECT_EQ(FailureOf("<a><b></c></a>"), Syntax("Invalid closing element name.", 1, 7));
  EXPECT_EQ(FailureOf("<a><b></a></b>"), Syntax("Invalid closing element name.", 1, 7));
  EXPECT_EQ(FailureOf("<a></>"), Syntax("Invalid closing element name.", 1, 4));
}

TEST_F(MXMLParserTest, AClosingElementWithoutAnOpeningOneRaises) {
  EXPECT_EQ(FailureOf("</a>"), Syntax("Invalid closing element name.", 1, 1));
}

TEST_F(MXMLParserTest, TextOutsideOfElementsRaises) {
  EXPECT_EQ(FailureOf("x<a/>"), Syntax("Text outside of any element.", 1, 1));
  EXPECT_EQ(FailureOf("<?xml?>\n<![CDATA[x]]><a/>"), Syntax("Text outside of any element.", 2, 1));
  EXPECT_EQ(FailureOf("text"), Syntax("Text outside of any element.", 1, 1));
  EXPECT_EQ(FailureOf("<?xml?>\n\n  text<a/>"), Syntax("Text outside of any element.", 3, 3));
  EXPECT_EQ(FailureOf(" &amp;<a/>"), Syntax("Text outside of any element.", 1, 2));
  EXPECT_EQ(Reread("&#10;\1 <a/>"), "<a/>") << "an entity may be a blank";
}

TEST_F(MXMLParserTest, FilesWithoutElementsRaise) {
  const std::string failure = "The XML does not contain any elements.|0|";
  EXPECT_EQ(FailureOf("<?xml version=\"1.0\" encoding=\"utf-8\"?>"), failure);
  EXPECT_EQ(FailureOf(""), failure);
  EXPECT_EQ(FailureOf(" \n\0"s), failure);
  EXPECT_EQ(FailureOf("<!-- <a/> -->"), failure);
}

TEST_F(MXMLParserTest, WhatStandsBehindTheRootIsNotRead) {
  EXPECT_EQ(Reread("<a></a>x</b><"), "<a/>");
  EXPECT_EQ(Reread("<a/><b/>"), "<a/>");
}

TEST_F(MXMLParserTest, ElementsThatTheEndLeavesOpenAreTaken) {
  EXPECT_EQ(Reread("<a><b>x"), "<a><b>x</b></a>");
  EXPECT_EQ(Reread("<a><b/>"), "<a><b/></a>");
}

TEST_F(MXMLParserTest, AnAttributeGivenTwiceHasTheLaterValue) {
  EXPECT_EQ(Reread("<a b=\"1\" B=\"2\"/>"), "<a b=\"2\"/>");
  EXPECT_EQ(Reread("<a z=\"0\" b=\"1\" B=\"2\" a=\"3\" b=\"4\"/>"), "<a a=\"3\" b=\"4\" z=\"0\"/>");
}

TEST_F(MXMLParserTest, SubItemsGivenTwiceAreAllKept) {
  EXPECT_EQ(Reread("<a><b>1</b><b>2</b><B/></a>"), "<a><b>1</b><b>2</b><B/></a>");
}

TEST_F(MXMLParserTest, LoadingIntoAnItemOfATreeKeepsItsPlaceThere) {
  MXMLItem root("r");
  MXMLItem& item = root.AddSubItem("old");
  item.SetAttribute("old", "1");
  root.AddSubItem("behind");
  LoadText(item, "<a><b/></a><c/>");
  EXPECT_EQ(Body(root), "<r><a><b/></a><behind/></r>");
  EXPECT_EQ(item.GetChildren()[0]->GetDepth(), 2);
}

TEST_F(MXMLParserTest, EachSyntaxErrorHasItsMessageAndPlace) {
  const char* const special = "Special character found where attribute expected.";
  const char* const invalid = "Invalid character found where attribute expected.";
  EXPECT_EQ(FailureOf("<a>\n <!DOCTYPE a></a>"), Syntax("Invalid special element sequence.", 2, 2));
  EXPECT_EQ(FailureOf("<a><![cdata[]]></a>"), Syntax("Invalid special element sequence.", 1, 4));
  EXPECT_EQ(FailureOf("<a></a b>"), Syntax("Invalid closing element syntax.", 1, 8));
  EXPECT_EQ(FailureOf("<a></ a>"), Syntax("Invalid closing element syntax.", 1, 7));
  EXPECT_EQ(FailureOf("<a>\n\n  < b/></a>"), Syntax("No element name found.", 3, 4));
  EXPECT_EQ(FailureOf("<>"), Syntax("No element name found.", 1, 2));
  EXPECT_EQ(FailureOf("<=a/>"), Syntax("No element name found.", 1, 2));
  for (const char c : {'<', '"', '!', '='})
    EXPECT_EQ(FailureOf("<a "s + c + "b=\"\"/>"), Syntax(special, 1, 4)) << c;
  EXPECT_EQ(FailureOf("<a b c=\"\"/>"), Syntax(invalid, 1, 6));
  EXPECT_EQ(FailureOf("<a b/>"), Syntax(invalid, 1, 5));
  EXPECT_EQ(FailureOf("<a b=c/>"), Syntax(invalid, 1, 6));
  EXPECT_EQ(FailureOf("<a b='c'/>"), Syntax(invalid, 1, 6));
  EXPECT_EQ(FailureOf("<a / >"), Syntax("Invalid element finishing sequence.", 1, 5));
  EXPECT_EQ(FailureOf("<a>x &; y</a>"), Syntax("XML entity cannot have empty name.", 1, 10));
  EXPECT_EQ(FailureOf("<a b=\"&;\"/>"), Syntax("XML entity cannot have empty name.", 1, 9));
}

TEST_F(MXMLParserTest, MessagesAreTranslatedButForThoseOfTheCaches) {
  MTranslationTable translations;
  for (const char* const text :
       {"No element name found.", "Could not find required attribute ({0}).",
        "The XML does not contain any elements.", "XML item iterator has not been initialized.",
        "There is no attribute in the cache. Previous call to HasAttribute probably did not succeed."}) {
    MString translated = Buffer("* ");
    translated.Append(text);
    translations.Set(MString::Literal(text), MString(), translated);
  }
  MTranslationTable* const before = MSetTranslationTable(&translations);
  MXMLItem item;
  EXPECT_EQ(FailureOf("<>"), "Invalid file contents. * No element name found.|256|line 1, column 2");
  EXPECT_EQ(FailureOf(""), "* The XML does not contain any elements.|0|");
  EXPECT_RAISES(item.GetRequiredAttribute("x"), "* Could not find required attribute (x).", 0);
  EXPECT_RAISES(MXMLItemIterator(item, "x").Current(), "* XML item iterator has not been initialized.", 0);
  EXPECT_RAISES(item.CachedAttribute(),
                "There is no attribute in the cache. Previous call to HasAttribute probably did not succeed.",
                0);
  MSetTranslationTable(before);
}

TEST_F(MXMLParserTest, TheEndOfTheFileInsideOfATagRaises) {
  for (const char* const text :
       {"<",          "<a",    "<a ",    "<a b",    "<a b ",  "<a b=",      "<a b=\"",      "<a b=\"c",
        "<a b=\"c\"", "<a /",  "<a/",    "<a><",    "<a></",  "<a></a",     "<a></a ",      "<!",
        "<!-",        "<!--",  "<!-- -", "<!-- --", "<a><![", "<a><![CDAT", "<a><![CDATA[", "<a><![CDATA[x]]",
        "<?",         "<?xml", "<?xml ?"})
    EXPECT_EQ(FailureOf(text), Syntax("Invalid element finishing sequence.", 1,
                                      static_cast<int>(std::char_traits<char>::length(text)) + 1))
        << text;
}

TEST_F(MXMLParserTest, PlacesAreCountedAcrossTheBuffers) {
  std::string text = "<a>";
  for (int i = 0; i < 5000; ++i) text += "\xC3\xA9 \n";
  EXPECT_EQ(FailureOf(text + "   </b>"), Syntax("Invalid closing element name.", 5001, 4));
  EXPECT_EQ(FailureOf(text + std::string(5000, 'x') + "</a x>"),
            Syntax("Invalid closing element syntax.", 5001, 5005));
}

TEST_F(MXMLParserTest, WhatWasBuiltBeforeAFailureStays) {
  MXMLItem item;
  EXPECT_NE(FailureOf(item, "<a x=\"1\"><b>t</b><c><d/"), "nothing");
  EXPECT_EQ(Body(item), "<a x=\"1\"><b>t</b><c/></a>");
}

TEST_F(MXMLParserTest, EntitiesAreResolvedInTextAndValues) {
  MXMLItem item;
  LoadText(item, "<a v=\"&amp;&lt;&gt;&apos;&quot;&#10;\">&amp;lt;&lt;b&gt;</a>");
  EXPECT_EQ(item.GetAttribute("v"), "&<>'\"\n");
  EXPECT_EQ(item.GetText(), "&lt;<b>");
}

TEST_F(MXMLParserTest, NumericEntitiesGiveTheCharacter) {
  MXMLItem item;
  LoadText(item, "<a v=\"&#65;&#x42;&#X43;&#xe9;&#8364;&#x1F39B;&#0;&#xD800;&#000000000068;\"/>");
  EXPECT_EQ(item.GetAttribute("v"), MString(std::u16string_view(u"ABC\u00E9\u20AC\U0001F39B\0\xD800"
                                                                u"D",
                                                                10)));
}

TEST_F(MXMLParserTest, EveryOtherAmpersandStaysAsItIsWritten) {
  for (const char* const text :
       {"&foo;", "& ;", "&", "&&", "&amp", "a&b", "&AMP;", "&#;", "&#x;", "&#xG;", "&#1114112;",
        "&#99999999999999999999;", "&#-1;", "&#1a;", "R&D; x", "&a b;"}) {
    MXMLItem item;
    LoadText(item, "<a v=\""s + text + "\">" + text + "</a>");
    EXPECT_EQ(Utf8(item.GetAttribute("v")), text);
    EXPECT_EQ(Utf8(item.GetText()), text);
  }
}

TEST_F(MXMLParserTest, CharacterDataIsTextAsItStands) {
  MXMLItem item;
  LoadText(item, "<a><![CDATA[<b>&amp;]] ]> ]]]></a>");
  EXPECT_EQ(Utf8(item.GetText()), "<b>&amp;]] ]> ]");
  EXPECT_EQ(Reread("<a><![CDATA[]]></a>"), "<a/>");
}

TEST_F(MXMLParserTest, CommentsAndInstructionsAreSkipped) {
  EXPECT_EQ(Reread("<!--<x>--><?p <y> ?><a><!-- - -- > -> --><b/><!----><?q?></a>"), "<a><b/></a>");
  EXPECT_EQ(Reread("<a><!---- ---></a>"), "<a/>");
}

TEST_F(MXMLParserTest, ZerosEndNamesAndStayInValues) {
  MXMLItem item;
  LoadText(item, "<a\0b=\"x\0y\"/>"s);
  EXPECT_EQ(item.GetAttribute("b"), MString(std::u16string_view(u"x\0y", 3)));
}

TEST_F(MXMLParserTest, NamesMayHoldWhatIsNoDelimiter) {
  EXPECT_EQ(Reread("<a.b-c:d_e?&' f#=\"1\"></a.b-c:d_e?&'>"), "<a.b-c:d_e?&' f#=\"1\"/>");
}

TEST_F(MXMLParserTest, EveryTokenMayLieAcrossTheBuffersEnd) {
  const std::string document =
      "<!--x--><root name=\"a&amp;b\" other = \"\xE2\x82\xAC\"><?pi?>text &lt; more<![CDATA[raw]]><child "
      "v=\"12\"/></root>";
  const std::string expected = Reread(document);
  for (std::size_t shift = 1024 - document.size(); shift < 1026; ++shift)
    ASSERT_EQ(Reread(std::string(shift, ' ') + document), expected) << shift;
}

TEST_F(MXMLParserTest, ItsPositionIsWhereTheParseEnded) {
  MXMLItem item;
  MXMLParser parser(item);
  ForwardStream stream("<a>\n</a> x");
  parser.Parse(stream);
  EXPECT_EQ(parser.GetPosition().line, 2);
  EXPECT_EQ(parser.GetPosition().column, 5);
}

TEST_F(MXMLParserTest, AFailureIsToldAtTheStartOfItsTagHoweverFarTheTagReaches) {
  for (const int blanks : {0, 1, 1000, 1015, 1016, 1017, 1018, 1019, 1020, 1021, 2500})
    for (const int within : {0, 1, 1023, 1024, 5000}) {
      const std::string text = "<a>\n\n" + std::string(static_cast<std::size_t>(blanks), ' ') + "</b" +
                               std::string(static_cast<std::size_t>(within), '\n') + ">";
      EXPECT_EQ(FailureOf(text), "Invalid file contents. Invalid closing element name.|256|line 3, column " +
                                     std::to_string(blanks + 1));
    }
}

TEST_F(MXMLParserTest, NamesOfEveryLengthThatDifferInOneUnitAreKeptApart) {
  std::string text = "<r>";
  for (std::size_t length = 1; length < 40; ++length)
    for (std::size_t place = 0; place < length; ++place) {
      std::string name(length, 'x');
      name[place] = 'y';
      text += "<" + name + " " + name + "=\"" + name + "\"/>";
    }
  text += "</r>";
  EXPECT_EQ(Reread(text), text);
}

}  // namespace
