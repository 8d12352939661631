#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/MEncodingReader.h"
#include "core/MEncodingWriter.h"
#include "tests/common/Texts.h"
#include "tests/core/Encodings.h"
#include "tests/core/StreamDoubles.h"

namespace {

using namespace std::string_literals;
using namespace MEncoding;
using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

std::vector<std::u16string> Lines(const char* codec, const std::string& bytes) {
  ForwardStream stream(bytes);
  Reader reader(stream, FindCodec(MString::Literal(codec)));
  std::vector<std::u16string> lines;
  MString line("before");
  while (reader.ReadLine(line)) lines.push_back(Units(line));
  EXPECT_EQ(line, "");
  EXPECT_FALSE(reader.ReadLine(line));
  return lines;
}

TEST(MEncodingLines, LinesEndAtLineFeedsAndLoseCarriageReturns) {
  EXPECT_THAT(Lines("utf-8", "\xC3\x9C\r\n\nb\rc\n"), ElementsAre(u"\u00DC", u"", u"bc"));
  EXPECT_THAT(Lines("KOI8-R", "\xC1\r\n\nb\rc\n"), ElementsAre(u"\u0430", u"", u"bc"));
  EXPECT_THAT(Lines("ascii", "\xC1\r\n\nb\rc\n"), ElementsAre(u"\u00C1", u"", u"bc"));
}

TEST(MEncodingLines, ALastLineWithoutLineFeedIsDeliveredAndNoDataGivesNone) {
  EXPECT_THAT(Lines("utf-8", "a\nb"), ElementsAre(u"a", u"b"));
  EXPECT_THAT(Lines("utf-8", ""), ElementsAre());
  EXPECT_THAT(Lines("utf-8", "\n"), ElementsAre(u""));
  EXPECT_THAT(Lines("utf-8", "a\n\r"), ElementsAre(u"a", u""));
}

TEST(MEncodingLines, AZeroByteCutsALineOfATableAndStaysInOthers) {
  EXPECT_THAT(Lines("KOI8-R", "ab\0cd\nef\n"s), ElementsAre(u"ab", u"ef"));
  EXPECT_THAT(Lines("utf-8", "ab\0cd\nef\n"s), ElementsAre(u"ab\0cd"s, u"ef"));
}

TEST(MEncodingLines, LinesMayBeLongerThanTheBuffer) {
  std::string bytes;
  for (int i = 0; i < 5000; ++i) bytes += "\xE4\xB8\xAD\r";
  EXPECT_THAT(Lines("utf-8", bytes + "\n" + bytes), Each(SizeIs(5000)));
  EXPECT_THAT(Lines("utf-8", bytes + "\n" + bytes), SizeIs(2));
  std::string wide;
  for (int i = 0; i < 5000; ++i) wide += "\x2D\x4E"s;
  EXPECT_THAT(Lines("utf-16", wide + "\n\0"s + wide), ElementsAre(SizeIs(5000), SizeIs(5000)));
}

TEST(MEncodingLines, LinesOfUtf16EndAtALineFeedOrAZero) {
  EXPECT_THAT(Lines("utf-16", "a\0\r\0\n\0\0\0b\0\x0A\x01\0\0c\0"s),
              ElementsAre(u"a", u"", u"b\u010A", u"c"));
}

TEST(MEncodingLines, AnOddLastByteOfUtf16IsNoText) {
  EXPECT_THAT(Lines("utf-16", "a\0\n\0b"s), ElementsAre(u"a"));
  EXPECT_THAT(Lines("utf-16", "a\0b\0c"s), ElementsAre(u"ab"));
}

TEST(MEncodingLines, AReaderMayTakeLinesAndThenUnits) {
  ForwardStream stream("first\nrest\nof it");
  Reader reader(stream, FindCodec("utf-8"));
  MString line;
  EXPECT_TRUE(reader.ReadLine(line));
  EXPECT_EQ(line, "first");
  MChar units[5];
  EXPECT_EQ(reader.ReadUnits(units, 5), 5);
  EXPECT_TRUE(reader.ReadLine(line));
  EXPECT_EQ(line, "of it");
}

std::string Written(const char* codec, const MString& text) {
  BareStream stream;
  Writer writer(stream, FindCodec(MString::Literal(codec)));
  writer.WriteText(text);
  writer.Flush();
  return stream.written;
}

TEST(MEncodingWriter, TextComesInTheEncodingOfTheCodec) {
  const MString text(u"a\u0142\u4E2D\U0001F39B");
  EXPECT_EQ(Written("utf-8", text), "a\xC5\x82\xE4\xB8\xAD\xF0\x9F\x8E\x9B");
  EXPECT_EQ(Written("utf-16", text), "a\0\x42\x01\x2D\x4E\x3C\xD8\x9B\xDF"s);
  EXPECT_EQ(Written("ISO-8859-2", text), "a\xB3");
  EXPECT_EQ(Written("ascii", text), "a\x42\x2D\x3C\x9B");
  EXPECT_EQ(Written("utf-8", "literal"), "literal");
}

TEST(MEncodingWriter, TextLineAppendsALineFeedToACopy) {
  BareStream stream;
  Writer writer(stream, FindCodec("utf-16"));
  const MString text(u"ab");
  writer.WriteTextLine(text);
  writer.WriteTextLine("");
  writer.Flush();
  EXPECT_EQ(stream.written, "a\0b\0\n\0\n\0"s);
  EXPECT_EQ(text, "ab");
}

TEST(MEncodingWriter, BytesAreBufferedUntilTheBufferIsFull) {
  BareStream stream;
  Writer writer(stream, FindCodec("utf-16"));
  for (int i = 0; i < 2047; ++i) writer.WriteText("x");
  EXPECT_THAT(stream.writes, ElementsAre());
  writer.WriteText("yz");
  EXPECT_THAT(stream.writes, ElementsAre(4096));
  writer.Flush();
  writer.Flush();
  EXPECT_THAT(stream.writes, ElementsAre(4096, 2));
}

TEST(MEncodingWriter, TextsOfAnySizeKeepTheirOrder) {
  for (const MString& name : CodecNames()) {
    BareStream stream;
    std::string expected;
    {
      Writer writer(stream, FindCodec(name));
      EXPECT_EQ(&writer.GetCodec(), &FindCodec(name));
      for (const int32_t length : {1, 0, 1365, 1366, 3, 4096, 20000, 1365, 1}) {
        MString text;
        text.AppendRepeated(static_cast<MChar>('a' + length % 26), length);
        writer.WriteText(text);
        expected += Bytes(FindCodec(name).Encode(text, false));
      }
    }
    EXPECT_EQ(stream.written, expected) << Utf8(name);
  }
}

class FullStream : public BareStream {
 public:
  void Write(const void* bytes, int32_t count) override {
    BareStream::Write(bytes, count);
    throw MException("full", 256);
  }
};

TEST(MEncodingWriter, AFailureIsReportedOnceByFlush) {
  FullStream stream;
  {
    Writer writer(stream, FindCodec("utf-8"));
    writer.WriteText("abc");
    EXPECT_RAISES(writer.Flush(), "full", 256);
    writer.Flush();
  }
  EXPECT_EQ(stream.written, "abc");
}

TEST(MEncodingWriter, TheDestructorWritesWhatIsLeftAndRaisesNothing) {
  FullStream stream;
  { Writer(stream, FindCodec("utf-8")).WriteText("abc"); }
  EXPECT_EQ(stream.written, "abc");
}

}  // namespace
