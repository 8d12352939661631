#include <gtest/gtest.h>

#include <utility>

#include "tests/common/Texts.h"
#include "tests/core/Encodings.h"
#include "tests/core/StreamDoubles.h"

namespace {

using namespace std::string_literals;
using MEncoding::UTF8Codec;

std::u16string Decoded(const std::string& bytes) {
  return Units(Decode(UTF8Codec::Get(), bytes));
}

std::string Encoded(const std::u16string& units, bool terminate = false) {
  return Bytes(UTF8Codec::Get().Encode(MString(units), terminate));
}

TEST(UTF8Codec, FormsOfOneToFourBytesDecode) {
  EXPECT_EQ(Decoded("A\xC3\x9C\xE4\xB8\xAD\xF0\x9F\x8E\x9B"), u"A\u00DC\u4E2D\U0001F39B");
  EXPECT_EQ(Decoded("\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"),
            u"\u007F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF");
}

TEST(UTF8Codec, AZeroByteIsAUnitLikeAnyOther) {
  EXPECT_EQ(Decoded("a\0b"s), u"a\0b"s);
}

TEST(UTF8Codec, ByteOrderMarksVanishWhereverTheyStand) {
  EXPECT_EQ(Decoded("\xEF\xBB\xBF"
                    "a\xEF\xBB\xBF"
                    "b\xEF\xBB\xBF"),
            u"ab");
  EXPECT_EQ(Decoded("\xF0\x8F\xBB\xBF"
                    "a"),
            u"a");  // as an overlong form too
}

TEST(UTF8Codec, BytesThatBeginNothingAreDropped) {
  EXPECT_EQ(Decoded("a\x80\xBF"
                    "b\xF8\xFB\xFF"
                    "c"),
            u"abc");
}

TEST(UTF8Codec, AByteInPlaceOfAContinuationMakesU0001AndIsDropped) {
  EXPECT_EQ(Decoded("\xC3"
                    "ab"),
            u"\u0001b");
  EXPECT_EQ(Decoded("\xE4\xB8"
                    "ab"),
            u"\u0001b");
  EXPECT_EQ(Decoded("\xF0\x9F\x8E"
                    "ab"),
            u"\u0001b");
  EXPECT_EQ(Decoded("\xC3\xC3\x9C"
                    "a"),
            u"\u0001a");  // the second C3 is dropped, 9C begins nothing
  EXPECT_EQ(Decoded("\xE4\xFF\xB8\xAD"), u"\u0001");
}

TEST(UTF8Codec, ASequenceThatTheEndCutsOffIsLostWithoutATrace) {
  for (const std::string& cut : {"\xC3"s, "\xE4"s, "\xE4\xB8"s, "\xF0"s, "\xF0\x9F"s, "\xF0\x9F\x8E"s})
    EXPECT_EQ(Decoded("ab" + cut), u"ab");
}

TEST(UTF8Codec, ValuesBeyondTheLastCodePointMakeU0001) {
  EXPECT_EQ(Decoded("a\xF4\x90\x80\x80"
                    "b\xF7\xBF\xBF\xBF"
                    "c"),
            u"a\u0001b\u0001c");
}

TEST(UTF8Codec, OverlongFormsAndSurrogatesDecodeAsWritten) {
  EXPECT_EQ(Decoded("\xC0\x80\xC1\x81\xE0\x80\xAF\xF0\x80\x80\xAF"), u"\0A//"s);
  EXPECT_EQ(Decoded("\xED\xA0\x80\xED\xBF\xBF"), (std::u16string{0xD800, 0xDFFF}));
}

TEST(UTF8Codec, CodePointsEncodeToOneToFourBytes) {
  EXPECT_EQ(Encoded(u"A\u00DC\u4E2D\U0001F39B"), "A\xC3\x9C\xE4\xB8\xAD\xF0\x9F\x8E\x9B");
  EXPECT_EQ(Encoded(u"\u007F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF"),
            "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
  EXPECT_EQ(Encoded(u"\uFEFF"), "\xEF\xBB\xBF");
}

TEST(UTF8Codec, LiteralsEncodeAsTheUnitsThatTheyReadAs) {
  EXPECT_EQ(Bytes(UTF8Codec::Get().Encode("ab", true)), "ab\0"s);
  EXPECT_EQ(Bytes(UTF8Codec::Get().Encode("a\xFF", false)), "a\xEF\xBF\xBF");
}

TEST(UTF8Codec, AHighSurrogateIsDroppedWithTheUnitBehindItUnlessThatIsItsPartner) {
  EXPECT_EQ(Encoded({u'a', 0xD800, u'b', u'c'}), "ac");
  EXPECT_EQ(Encoded({u'a', 0xD800, 0xD83C, 0xDF9B, u'c'}), "ac");
  EXPECT_EQ(Encoded({u'a', 0xD800}), "a");
}

TEST(UTF8Codec, ALowSurrogateAloneIsDropped) {
  EXPECT_EQ(Encoded({0xDC00, u'a', 0xDFFF}), "a");
}

TEST(UTF8Codec, TheRawByteChannelGivesOneByteAndSwallowsTheNextUnit) {
  EXPECT_EQ(Encoded(u"\U0010FE41bc"), "Ac");
  EXPECT_EQ(Encoded(u"\U0010FE01x\U0010FEFFx"), "\x01\xFF");
  EXPECT_EQ(Encoded(u"\U0010FE00\U0010FF00"), "\xF4\x8F\xB8\x80\xF4\x8F\xBC\x80");
}

TEST(UTF8Codec, TheRawByteChannelSwallowsNothingBehindTheEnd) {
  EXPECT_EQ(Encoded(u"a\U0010FE41"), "aA");
  EXPECT_EQ(Encoded(u"a\U0010FE41", true), "aA\0"s);
}

TEST(UTF8Codec, TheRawByteChannelSwallowsHalfAPairToo) {
  EXPECT_EQ(Encoded(u"\U0010FE41\U0001F39Bz"), "Az");  // the other half is dropped for want of its partner
}

TEST(UTF8Codec, TheTerminatingZeroCountsInTheSize) {
  EXPECT_EQ(UTF8Codec::Get().Encode(MString(u"\u00DC"), true).GetSize(), 3);
  EXPECT_EQ(UTF8Codec::Get().Encode(MString(u"\u00DC"), false).GetSize(), 2);
}

TEST(UTF8Codec, NarrowTextAndTextInStreamsAreMadeByIt) {
  const MString text(u"\u00DCx\U0010FE41y");
  EXPECT_EQ(Bytes(EncodeNarrow(text)), "\xC3\x9CxA\0"s);
  BareStream stream;
  stream.WriteText(text);
  EXPECT_EQ(stream.written, "\xC3\x9CxA");
}

}  // namespace
