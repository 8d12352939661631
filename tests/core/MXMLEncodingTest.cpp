#include <gtest/gtest.h>

#include "core/MEncodingReader.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/core/Balanced.h"
#include "tests/core/Encodings.h"
#include "tests/core/XMLTexts.h"

namespace {

using namespace std::string_literals;

class MXMLEncodingTest : public Balanced {};

TEST_F(MXMLEncodingTest, TheHeadSwitchesTheEncodingOfTheRest) {
  const std::string body = "<a b=\"P\xF8\xEDli\x9A\">\xBElu\x9Dou\xE8k\xFD</a>";
  for (const char* const head :
       {"<?xml version=\"1.0\" encoding=\"windows-1250\"?>", "<?xml encoding = 'CP1250' ?>",
        "\n<?php encoding=\"latin2\"?><!-- x --><?xml\tversion=\"1.0\"\nencoding=\"Windows-1250\" "
        "standalone=\"no\"?>"}) {
    for (const std::size_t padding : {0u, 900u, 1000u, 5000u}) {
      MXMLItem item;
      LoadText(item, head + std::string(padding, ' ') + body);
      EXPECT_EQ(item.GetAttribute("b"), MString(u"P\u0159\u00EDli\u0161"));
      EXPECT_EQ(item.GetText(), MString(u"\u013Elu\u0165ou\u010Dk\u00FD"));
    }
  }
}

TEST_F(MXMLEncodingTest, HeadsWithoutAReadableEncodingLeaveUtf8) {
  for (const char* const head :
       {"", "\xEF\xBB\xBF", "<?xml version=\"1.0\"?>", "<?xml encoding?>", "<?xml encoding=?>",
        "<?xml encoding=\"latin2?>", "<?xmlencoding=\"latin2\"?>", "<?xml-encoding=\"latin2\"?>",
        "<?style encoding=\"latin2\"?>", "<?xml encoding=latin2?>", "<? ?>", "<?xml encoding=\"utf-8\"?>"}) {
    MXMLItem item;
    LoadText(item, head + "<a>\xC3\xA9</a>"s);
    EXPECT_EQ(item.GetText(), MString(u"\u00E9")) << head;
  }
}

TEST_F(MXMLEncodingTest, HeadsInsideOfTheDocumentSwitchNothing) {
  MXMLItem item;
  LoadText(item, "<a><?xml encoding=\"latin2\"?>\xC3\xA9</a>");
  EXPECT_EQ(item.GetText(), MString(u"\u00E9"));
}

TEST_F(MXMLEncodingTest, AnUnknownEncodingRaises) {
  EXPECT_EQ(FailureOf("<?xml encoding=\"iso-8859-15\"?><a/>"), "No codec found for encoding iso-8859-15.|0|");
  MXMLItem item("a");
  BareStream stream;
  EXPECT_RAISES(item.Save(stream, true, "klingon"), "No codec found for encoding klingon.", 0);
  EXPECT_EQ(stream.written, "");
}

TEST_F(MXMLEncodingTest, AHeadThatWasReadAsBytesIsNotInUtf16AndTheReverse) {
  EXPECT_EQ(Reread("<?xml encoding=\"utf-16\"?><a>\xC3\xA9</a>"), "<a>\xC3\xA9</a>");
  std::string wide = "\xFF\xFE";
  for (const char c : "<?xml encoding=\"utf-8\"?><a>x</a>"s) wide += c, wide += '\0';
  EXPECT_EQ(Reread(wide), "<a>x</a>");
}

TEST_F(MXMLEncodingTest, Utf16IsWrittenBehindItsHeaderAndReadBack) {
  MXMLItem item("a"), read;
  item.SetText(MString(u"\u20AC \U0001F39B x"));
  const std::string text = SaveText(item, true, "utf-16");
  EXPECT_EQ(text.substr(0, 6), "\xFF\xFE<\0?\0"s);
  LoadText(read, text);
  EXPECT_EQ(read.GetText(), item.GetText());
}

TEST_F(MXMLEncodingTest, ATextThatEndsInTheMiddleOfACharacterOrUnitRaisesAsAnUnfinishedTag) {
  EXPECT_EQ(FailureOf("<a b=\"\xC3").substr(0, 58),
            "Invalid file contents. Invalid element finishing sequence.");
  EXPECT_EQ(FailureOf("\xFF\xFE<\0a\0>"s).substr(0, 58),
            "Invalid file contents. Invalid element finishing sequence.");
}

TEST_F(MXMLEncodingTest, CharactersThatAnEncodingDoesNotHaveAreWrittenAsNumbers) {
  MXMLItem item("a");
  item.SetAttribute("v", MString(u"\u20AC\u0159 \U0001F39B"));
  const std::string head = "<?xml version=\"1.0\" encoding=\"CP1250\"?>";
  EXPECT_EQ(SaveText(item, true, "CP1250"), head + "<a v=\"\x80\xF8 &#127899;\"/>");
  EXPECT_EQ(SaveText(item, true, ""),
            "<?xml version=\"1.0\" encoding=\"\"?><a v=\"&#8364;&#345; &#127899;\"/>");
}

// Characters that one or the other encoding drops, changes or ends at, and all that are special.
MString AwkwardText() {
  const std::u16string units =
      u"a\u0001\u0080\u00E9\u00FF\u0159\u0416\u05D0\u0E01\u20AC\uFEFF\uFFFD\uFFFE\uFFFF"
      u"\xD800x\xDC00\U0001F39B\U0010FE41y\U0010FFFF&<>\"'\n\r\t;&amp;]]>--\xD800"s +
      u'\0' + u"z";
  return MString(units);
}

TEST_F(MXMLEncodingTest, EveryCharacterSurvivesEveryEncoding) {
  for (const MString& name : CodecNames()) {
    for (const bool compact : {false, true}) {
      MXMLItem item("a"), read;
      item.SetAttribute("v", AwkwardText());
      item.SetText(AwkwardText());
      LoadText(read, SaveText(item, compact, name));
      EXPECT_EQ(Units(read.GetAttribute("v")), Units(AwkwardText())) << Utf8(name);
      EXPECT_EQ(Units(read.GetText()), Units(AwkwardText())) << Utf8(name);
    }
  }
}

TEST_F(MXMLEncodingTest, TheHeadNamesTheEncodingAsTheCallerDid) {
  const MXMLItem item("a");
  EXPECT_EQ(SaveText(item), "<?xml version=\"1.0\" encoding=\"utf-8\"?><a/>");
  EXPECT_EQ(SaveText(item, true, "UTF8"), "<?xml version=\"1.0\" encoding=\"UTF8\"?><a/>");
  EXPECT_EQ(SaveText(item, true, MString(u"w\u00EDndows-1250")),
            "<?xml version=\"1.0\" encoding=\"windows-1250\"?><a/>");
  EXPECT_EQ(SaveText(item, true, MString(std::u16string_view(u"utf-8\0\"", 7))),
            "<?xml version=\"1.0\" encoding=\"utf8\"?><a/>");
}

TEST_F(MXMLEncodingTest, FilesAreWrittenAndRead) {
  const TemporaryFolder folder;
  const MString path = Buffer(folder.Path("state.xml").c_str());
  MXMLItem item("a"), read;
  item.SetAttribute("b", "1");
  item.AddSubItem("c").SetText("t");
  item.SaveFile(path);
  EXPECT_EQ(folder.ReadFile("state.xml"), SaveText(item, false));
  read.LoadFile(path);
  ExpectSameTree(item, read);
  item.SaveFile(path, true, "latin2");
  EXPECT_EQ(folder.ReadFile("state.xml"), SaveText(item, true, "latin2"));
}

TEST_F(MXMLEncodingTest, AFailureNamesTheFileAndThePlace) {
  const TemporaryFolder folder;
  const std::string path = folder.WriteFile("broken.xml", "<a>\n<b c></a>");
  MXMLItem item;
  try {
    item.LoadFile(Buffer(path.c_str()));
    ADD_FAILURE();
  } catch (const MException& raised) {
    EXPECT_EQ(Utf8(raised.message),
              "Invalid file contents. Invalid character found where attribute expected.");
    EXPECT_EQ(Utf8(raised.source), path + ", line 2, column 5");
  }
}

TEST_F(MXMLEncodingTest, FailuresLoseNeitherTheItemNorTheFile) {
  const TemporaryFolder folder;
  const std::string path = folder.WriteFile("state.xml", "<old/>");
  MXMLItem item("a");
  EXPECT_RAISES(item.SaveFile(Buffer(path.c_str()), true, "klingon"), "No codec found for encoding klingon.",
                0);
  EXPECT_EQ(folder.ReadFile("state.xml"), "<old/>");
  const std::string missing = folder.Path("missing.xml");
  EXPECT_RAISES(item.LoadFile(Buffer(missing.c_str())),
                "File \"" + missing + "\" could not be open. Make sure it exists.", 257);
  EXPECT_EQ(item.GetName(), "a");
}

TEST_F(MXMLEncodingTest, AFullDiskRaises) {
  MXMLItem item("a");
  EXPECT_RAISES(item.SaveFile("/dev/full"), "Error writing to file \"/dev/full\". Probably disk full.", 256);
}

}  // namespace
