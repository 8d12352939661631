#include "core/MMLParser.h"

#include "tests/core/Balanced.h"
#include "tests/core/StreamDoubles.h"

namespace {

class MMLParserTest : public Balanced {};

using Parser = MMLParser<MAttribute, MList<MAttribute>>;

// Writes down what it hears.
class Hearing final : public Parser {
 public:
  explicit Hearing(bool lenient, int stopAfter = -1) : Parser(lenient), left_(stopAfter) {}

  bool OnElement(const MString& name, MList<MAttribute>& attributes, bool closing) override {
    heard += (closing ? "-" : "+") + Utf8(name);
    for (const MAttribute& a : attributes) heard += "," + Utf8(a.name) + "=" + Utf8(a.value);
    return Stops();
  }
  bool OnText(const MString& text) override {
    if (text == "raise") throw MException("Raised by an operation.", 7);
    heard += "\"" + Utf8(text) + "\"";
    return Stops();
  }

  std::string heard;

 private:
  bool Stops() {
    heard += " ";
    return left_-- == 0;
  }
  int left_;
};

std::string Hear(const char* text, bool lenient = false, int stopAfter = -1) {
  Hearing parser(lenient, stopAfter);
  ForwardStream stream(text);
  parser.Parse(stream);
  return parser.heard;
}
std::string HearLenient(const char* text) {
  return Hear(text, true);
}

TEST_F(MMLParserTest, ElementsAndTextsComeInTheirOrderWithAttributesAsWritten) {
  EXPECT_EQ(Hear("x<b z=\"1\" a=\"2\"> y </b>\n<i/>"), "\"x\" +b,z=1,a=2 \" y \" -b \"\n\" +i -i ");
  EXPECT_EQ(Hear("</a><b>"), "-a +b ");
  EXPECT_EQ(Hear(""), "");
}

TEST_F(MMLParserTest, TrueStopsTheParser) {
  EXPECT_EQ(Hear("x<b/>y", false, 0), "\"x\" ");
  EXPECT_EQ(Hear("x<b/>y", false, 1), "\"x\" +b ");
  EXPECT_EQ(Hear("x<b/>y", false, 2), "\"x\" +b -b ");
  EXPECT_EQ(Hear("<b></b><![CDATA[y]]><", false, 2), "+b -b \"y\" ");
}

TEST_F(MMLParserTest, ALenientParserTakesValuesWithoutQuotes) {
  EXPECT_EQ(HearLenient("<img icon=enable w=50%>"), "+img,icon=enable,w=50% ");
  EXPECT_EQ(HearLenient("<img icon=a/>"), "+img,icon=a -img ");
  EXPECT_EQ(HearLenient("<img path=a/b/c/>"), "+img,path=a/b/c -img ");
  EXPECT_EQ(HearLenient("<img path=/a//>"), "+img,path=/a/ -img ");
  EXPECT_EQ(HearLenient("<img path=a/ b=\"q r\" c = 1 />"), "+img,path=a/,b=q r,c=1 -img ");
  EXPECT_EQ(HearLenient("<img v=a&amp;b>"), "+img,v=a&b ");
}

TEST_F(MMLParserTest, LongValuesWithoutQuotesAreTakenWholeBehindNamesAcrossTheBuffersEnd) {
  const std::string value(40, 'v');
  for (std::size_t shift = 1000; shift < 1030; ++shift) {
    const std::string heard = HearLenient((std::string(shift, ' ') + "<b name=" + value + ">").c_str());
    ASSERT_EQ(heard.substr(shift + 3), "+b,name=" + value + " ") << shift;
  }
}

TEST_F(MMLParserTest, SyntaxErrorsEndALenientParseSilently) {
  EXPECT_EQ(HearLenient("a < b"), "\"a \" ");
  EXPECT_EQ(HearLenient("x<b>y<td"), "\"x\" +b \"y\" ");
  EXPECT_EQ(HearLenient("x<b c= >y"), "\"x\" ");
  EXPECT_EQ(HearLenient("x<b c>y"), "\"x\" ");
  EXPECT_EQ(HearLenient("x<b c=1"), "\"x\" ");
  EXPECT_EQ(HearLenient("x<!y>z"), "\"x\" ");
  EXPECT_EQ(HearLenient("&;"), "");
}

TEST_F(MMLParserTest, HeadsHaveNoEffectOnALenientParser) {
  EXPECT_EQ(HearLenient("<?xml encoding=\"klingon\"?>\xC3\xA9<?xml encoding=\"ascii\"?>\xC3\xA9"),
            "\"\xC3\xA9\" \"\xC3\xA9\" ");
}

TEST_F(MMLParserTest, WhatAnOperationRaisesLeavesALenientParserToo) {
  EXPECT_RAISES(HearLenient("<a>raise"), "Raised by an operation.", 7);
}

TEST_F(MMLParserTest, TextsInMemoryAreParsedInBothModes) {
  for (const MString& text : {MString("<?xml encoding=\"utf-16\"?>a<b c=\"d\"/>"),
                              Buffer("<?xml encoding=\"latin2\"?>a<b c=\"d\"/>")}) {
    Hearing parser(false);
    parser.ParseText(text);
    EXPECT_EQ(parser.heard, "\"a\" +b,c=d -b ");
  }
  Hearing parser(false);
  parser.ParseText(MString(u"\u20AC\U0001F39B"));
  EXPECT_EQ(parser.heard, "\"\xE2\x82\xAC\xF0\x9F\x8E\x9B\" ");
  Hearing empty(false);
  empty.ParseText("");
  EXPECT_EQ(empty.heard, "");
}

TEST_F(MMLParserTest, AParserCanBeUsedAgainAfterAFailure) {
  Hearing parser(false);
  EXPECT_RAISES(parser.ParseText("<a b=\"1\" c"),
                "Invalid file contents. Invalid element finishing sequence.", 256);
  EXPECT_EQ(parser.GetPosition().column, 11);
  parser.ParseText("<d/>");
  EXPECT_EQ(parser.heard, "+d -d ");
}

}  // namespace
