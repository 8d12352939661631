#include "core/MEncodingReader.h"

#include <gtest/gtest.h>

#include "tests/common/TestRandom.h"
#include "tests/common/Texts.h"
#include "tests/core/Encodings.h"
#include "tests/core/StreamDoubles.h"

namespace {

using namespace std::string_literals;
using namespace MEncoding;

// All that is left, in pieces of `count` units.
std::u16string Rest(Reader& reader, int32_t count = 1024) {
  std::u16string units;
  std::vector<MChar> room(static_cast<std::size_t>(count));
  while (const int32_t found = reader.ReadUnits(room.data(), count))
    units.append(room.data(), static_cast<std::size_t>(found));
  return units;
}

TEST(MEncodingReader, UnitsComeWithLineEndsUntouched) {
  ForwardStream stream("a\r\n\xC3\x9C\n");
  Reader reader(stream, FindCodec("utf-8"));
  EXPECT_EQ(Rest(reader), u"a\r\n\u00DC\n");
  EXPECT_EQ(Rest(reader), u"");
}

TEST(MEncodingReader, TheStreamIsReadInLargePieces) {
  ForwardStream stream(Pattern(10000));
  Reader reader(stream, FindCodec("ascii"));
  EXPECT_EQ(Rest(reader).size(), 10000u);
  for (const int32_t count : stream.reads) EXPECT_GE(count, Reader::kBufferSize - 3);
}

TEST(MEncodingReader, CharactersThatTheBufferCutsComeWhole) {
  for (std::size_t shift = 0; shift < 4; ++shift) {
    std::string bytes(shift, 'x');
    std::u16string units(shift, u'x');
    for (int i = 0; i < 5000; ++i) bytes += "\xF0\x9F\x8E\x9B", units += u"\U0001F39B";
    ForwardStream stream(bytes);
    Reader reader(stream, FindCodec("utf-8"));
    EXPECT_EQ(Rest(reader, 3), units);
  }
}

TEST(MEncodingReader, BytesThatDecodeToNothingAreNotTheEnd) {
  for (const std::string& nothing : {"\xEF\xBB\xBF"s, "\x80"s}) {
    std::string bytes;
    while (bytes.size() < 10000) bytes += nothing;
    ForwardStream stream(bytes + "a" + bytes);
    Reader reader(stream, FindCodec("utf-8"));
    EXPECT_EQ(Rest(reader), u"a");
  }
}

TEST(MEncodingReader, AZeroByteEndsWhatATableDecodes) {
  ForwardStream stream("ab\0cd"s);
  Reader reader(stream, FindCodec("KOI8-R"));
  EXPECT_EQ(Rest(reader), u"ab");
  EXPECT_EQ(Rest(reader), u"");
}

TEST(MEncodingReader, RoomForLessThanTwoUnitsRaises) {
  ForwardStream stream("abc");
  Reader reader(stream, FindCodec("utf-8"));
  MChar unit;
  EXPECT_RAISES(reader.ReadUnits(&unit, 1), "Index out of range.", 0);
  EXPECT_RAISES(reader.ReadUnits(&unit, 0), "Index out of range.", 0);
  EXPECT_EQ(Rest(reader), u"abc");
}

TEST(MEncodingReader, AParserThatFindsTheEncodingInTheHeadGoesOnInItRightBehindTheHead) {
  const std::string head = "<?xml version=\"1.0\" encoding=\"windows-1250\"?>";
  for (const std::size_t size : {10u, 5000u}) {
    std::string body;
    while (body.size() < size) body += "P\xF8\xEDli\x9A ";
    ForwardStream stream(head + body);
    Reader reader(stream, FindCodec("utf-8"));
    MChar units[1024];
    const int32_t count = reader.ReadUnits(units, 1024);
    ASSERT_GT(count, static_cast<int32_t>(head.size()));
    reader.SetCodec(FindCodec("windows-1250"), count - static_cast<int32_t>(head.size()));
    EXPECT_EQ(reader.GetCodec().GetName(), "windows-1250");
    EXPECT_EQ(Rest(reader), Units(Decode(FindCodec("windows-1250"), body)));
  }
}

// The bytes of the first `count` units of a text without bytes that decode to nothing.
std::size_t BytesOf(const std::u16string& units, std::size_t count) {
  return PlainEncode(units.substr(0, count)).size();
}

TEST(MEncodingReader, TheCodecCanChangeBehindAnyUnit) {
  std::u16string text;
  for (int i = 0; i < 3000; ++i) text += u"a\u00DC\u4E2D"[i % 3];
  const std::string bytes = PlainEncode(text);
  TestRandom random;
  for (int round = 0; round < 300; ++round) {
    ForwardStream stream(bytes);
    Reader reader(stream, FindCodec("utf-8"));
    std::vector<MChar> room(static_cast<std::size_t>(random.Integer(2, 1500)));
    std::size_t before = 0;
    int32_t count = 0;
    for (int32_t calls = random.Integer(1, 4); calls > 0; --calls) {
      before += static_cast<std::size_t>(count);
      count = reader.ReadUnits(room.data(), static_cast<int32_t>(room.size()));
    }
    const int32_t unread = random.Integer(0, count);
    reader.SetCodec(FindCodec("ascii"), unread);
    const std::size_t rest = BytesOf(text, before + static_cast<std::size_t>(count - unread));
    ASSERT_EQ(Rest(reader), Units(Decode(FindCodec("ascii"), bytes.substr(rest))));
  }
}

TEST(MEncodingReader, APairThatIsCutIsGivenBackWhole) {
  ForwardStream stream(
      "a\xF0\x9F\x8E\x9B"
      "b");
  Reader reader(stream, FindCodec("utf-8"));
  MChar units[8];
  ASSERT_EQ(reader.ReadUnits(units, 8), 4);
  reader.SetCodec(FindCodec("ascii"), 2);
  EXPECT_EQ(Rest(reader), u"\u00F0\u009F\u008E\u009Bb");
}

TEST(MEncodingReader, AValueBeyondTheLastCodePointIsOneUnitWhenUnitsAreGivenBack) {
  ForwardStream stream(
      "a\xF7\xBF\xBF\xBF"
      "b");
  Reader reader(stream, FindCodec("utf-8"));
  MChar units[8];
  ASSERT_EQ(reader.ReadUnits(units, 8), 3);
  reader.SetCodec(FindCodec("ascii"), 1);
  EXPECT_EQ(Rest(reader), u"b");
}

TEST(MEncodingReader, OnlyUnitsOfTheLastCallCanBeGivenBack) {
  ForwardStream stream("abcdef\n");
  Reader reader(stream, FindCodec("utf-8"));
  const Codec& ascii = FindCodec("ascii");
  EXPECT_RAISES(reader.SetCodec(ascii, 1), "Index out of range.", 0);
  MChar units[2];
  reader.ReadUnits(units, 2);
  EXPECT_RAISES(reader.SetCodec(ascii, 3), "Index out of range.", 0);
  EXPECT_RAISES(reader.SetCodec(ascii, -1), "Index out of range.", 0);
  reader.SetCodec(ascii, 2);
  EXPECT_RAISES(reader.SetCodec(ascii, 1), "Index out of range.", 0);
  reader.ReadUnits(units, 2);
  EXPECT_EQ(reader.ReadByte(), 'c');
  EXPECT_RAISES(reader.SetCodec(ascii, 1), "Index out of range.", 0);
  EXPECT_EQ(Rest(reader), u"def\n");
}

TEST(MEncodingReader, TheHeaderOfUtf16IsSeenAndSteppedOver) {
  ForwardStream wide(
      "\xFF\xFE"
      "a\0\x42\x01"s);
  Reader reader(wide, FindCodec("utf-8"));
  EXPECT_TRUE(reader.DetectUTF16());
  EXPECT_EQ(reader.GetCodec().GetName(), "utf16");
  EXPECT_EQ(Rest(reader), u"a\u0142");
  EXPECT_FALSE(reader.DetectUTF16());
}

TEST(MEncodingReader, OtherBytesAreNoHeaderAndStay) {
  for (const std::string& bytes : {"\xFE\xFF\x01"s, "\xFF"s, ""s, "\xFF\xFF"s, "ab"s}) {
    ForwardStream stream(bytes);
    Reader reader(stream, FindCodec("ascii"));
    EXPECT_FALSE(reader.DetectUTF16());
    EXPECT_EQ(Rest(reader), Units(Decode(FindCodec("ascii"), bytes)));
  }
}

TEST(MEncodingReader, BytesComeOneByOneUpToTheEndThatRaises) {
  ForwardStream stream("a\xFF");
  Reader reader(stream, FindCodec("utf-8"));
  EXPECT_EQ(reader.ReadByte(), 'a');
  EXPECT_EQ(reader.ReadByte(), 0xFF);
  EXPECT_RAISES(reader.ReadByte(), "No more data in source stream.", 0);
  EXPECT_RAISES(reader.ReadByte(), "No more data in source stream.", 0);
}

TEST(MEncodingReader, WhatTheStreamRaisesPassesThroughAndLosesNothing) {
  class FailingOnce : public ForwardStream {
   public:
    using ForwardStream::ForwardStream;
    int32_t Read(void* bytes, int32_t count) override {
      if (reads.size() == 2 && !std::exchange(hasFailed_, true)) ThrowShortRead();
      return ForwardStream::Read(bytes, count);
    }

   private:
    bool hasFailed_ = false;
  };
  const std::string bytes = Pattern(20000);
  FailingOnce stream(bytes);
  Reader reader(stream, FindCodec("ascii"));
  std::u16string units;
  MChar room[1024];
  EXPECT_RAISES(while (const int32_t count = reader.ReadUnits(room, 1024))
                    units.append(room, static_cast<std::size_t>(count)),
                "Could not read required data from stream.", 256);
  EXPECT_EQ(units + Rest(reader), Units(Decode(FindCodec("ascii"), bytes)));
}

}  // namespace
