#include <gtest/gtest.h>
#include <iconv.h>

#include <map>

#include "core/MEncodingTables.h"
#include "tests/common/Texts.h"
#include "tests/core/Encodings.h"

namespace {

using namespace std::string_literals;
using MEncoding::FindCodec;

constexpr MChar kUnmapped = 0xFFFD;

MChar DecodeByte(const MEncoding::Codec& codec, int byte) {
  const MString text = Decode(codec, std::string(1, static_cast<char>(byte)));
  EXPECT_EQ(text.GetLength(), 1) << byte;
  return text.At(0);
}

// The character that the C library has for a byte, U+FFFD for none.
MChar IconvByte(iconv_t converter, int byte) {
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  char source = static_cast<char>(byte);
  MChar units[2] = {};
  char *in = &source, *out = reinterpret_cast<char*>(units);
  std::size_t inLeft = 1, outLeft = sizeof units;
  // The second call fetches a letter that waits for an accent behind it.
  const bool isKnown = iconv(converter, &in, &inLeft, &out, &outLeft) != static_cast<std::size_t>(-1) &&
                       iconv(converter, nullptr, nullptr, &out, &outLeft) != static_cast<std::size_t>(-1);
  EXPECT_EQ(outLeft, isKnown ? 2u : 4u) << byte;
  return isKnown ? units[0] : kUnmapped;
}

// Names that the C library does not know, and its name of the same encoding.
const std::map<std::string, std::string> kOtherNames = {{"ISO-8859-6-I", "ISO-8859-6"},
                                                        {"ISO 8859-8-I", "ISO-8859-8"},
                                                        {"ISO-8859-10:1992", "ISO-8859-10"},
                                                        {"Apple Roman", "MACINTOSH"}};

using Differences = std::map<int, MChar>;

// Where the C library has another character for a byte, on purpose or not.
Differences KnownDifferences(const std::string& name) {
  if (name == "ISO-8859-1") {  // ours is windows-1252, which has no control characters
    Differences controls;
    for (int byte = 0x80; byte < 0xA0; ++byte) controls[byte] = static_cast<MChar>(byte);
    return controls;
  }
  // Ours is KOI8-U. The C library's KOI8-RU gave up some box drawing for punctuation and for the Belarusian
  // short U.
  if (name == "KOI8-RU")
    return {{0x93, 0x201C}, {0x96, 0x201D}, {0x97, 0x2014}, {0x98, 0x2116}, {0x99, 0x2122}, {0x9B, 0x00BB},
            {0x9C, 0x00AE}, {0x9D, 0x00AB}, {0x9F, 0x00A4}, {0xAE, 0x045E}, {0xBE, 0x040E}};
  // The published table has the increment sign and the private character of the logo.
  if (name == "Apple Roman") return {{0xC6, 0x0394}, {0xF0, 0xE01E}};
  return {};
}

TEST(TableCodec, EveryTableIsThatOfTheCLibraryUnderEveryNameButForKnownDifferences) {
  int names = 0;
  for (const MEncodingTable& table : kEncodingTables) {
    for (const char* const* name = table.names; *name; ++name, ++names) {
      const auto other = kOtherNames.find(*name);
      const iconv_t converter =
          iconv_open("UTF-16LE", other == kOtherNames.end() ? *name : other->second.c_str());
      ASSERT_NE(converter, reinterpret_cast<iconv_t>(-1)) << *name;
      const MEncoding::Codec& codec = FindCodec(Buffer(*name));
      EXPECT_EQ(codec.GetName(), MString::Literal(table.names[0]));
      Differences found;
      for (int byte = 1; byte < 256; ++byte) {
        const MChar unit = IconvByte(converter, byte);
        if (unit != DecodeByte(codec, byte)) found[byte] = unit;
      }
      EXPECT_EQ(found, KnownDifferences(*name)) << *name;
      iconv_close(converter);
    }
  }
  EXPECT_EQ(names, 72);
}

TEST(TableCodec, Windows1252StandsForLatin1) {
  EXPECT_EQ(DecodeByte(FindCodec("ISO-8859-1"), 0x80), 0x20AC);
  EXPECT_EQ(DecodeByte(FindCodec("ISO-8859-1"), 0x81), kUnmapped);
}

TEST(TableCodec, EveryMappedByteComesBack) {
  for (const MEncodingTable& table : kEncodingTables) {
    const MEncoding::Codec& codec = FindCodec(MString::Literal(table.names[0]));
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte)
      if (DecodeByte(codec, byte) != kUnmapped) bytes += static_cast<char>(byte);
    EXPECT_EQ(Bytes(codec.Encode(Decode(codec, bytes), false)), bytes) << table.names[0];
    EXPECT_EQ(Bytes(codec.Encode(Decode(codec, bytes), true)), bytes + '\0') << table.names[0];
  }
}

TEST(TableCodec, OfEqualCharactersTheLowestByteIsTaken) {
  const MEncoding::Codec& codec = FindCodec("windows-1252");  // 81, 8D, 8F, 90 and 9D have no character
  EXPECT_EQ(Bytes(codec.Encode(MString(u"\uFFFD"), false)), "\x81");
}

TEST(TableCodec, ACharacterOutsideOfTheTableIsDropped) {
  const MString text(u"a\u0159\u4E2D\u00E9b");
  EXPECT_EQ(Bytes(FindCodec("ISO-8859-2").Encode(text, false)),
            "a\xF8\xE9"
            "b");
  EXPECT_EQ(Bytes(FindCodec("KOI8-R").Encode(text, false)), "ab");
  EXPECT_EQ(Bytes(FindCodec("KOI8-R").Encode(text, true)), "ab\0"s);
}

TEST(TableCodec, EveryUnitIsEncodedToTheByteThatDecodesToItOrDropped) {
  for (const MEncodingTable& table : kEncodingTables) {
    std::map<MChar, std::string> bytes;
    for (int i = 127; i >= 0; --i) bytes[table.units[i]] = std::string(1, static_cast<char>(0x80 + i));
    for (int i = 0; i < 128; ++i) bytes[static_cast<MChar>(i)] = std::string(1, static_cast<char>(i));
    const MEncoding::Codec& codec = FindCodec(MString::Literal(table.names[0]));
    std::u16string all(0x10000, u'\0');
    std::string expected;
    for (std::size_t unit = 0; unit < all.size(); ++unit) {
      all[unit] = static_cast<char16_t>(unit);
      const auto found = bytes.find(all[unit]);
      if (found != bytes.end()) expected += found->second;
    }
    EXPECT_EQ(Bytes(codec.Encode(MString(all), false)), expected) << table.names[0];
  }
}

TEST(TableCodec, AZeroByteEndsTheTextInDecodingButNotInEncoding) {
  EXPECT_EQ(Decode(FindCodec("windows-1250"), "ab\0\xE8"s), "ab");
  EXPECT_EQ(Decode(FindCodec("windows-1250"), "\0ab"s), "");
  EXPECT_EQ(Bytes(FindCodec("windows-1250").Encode(MString(std::u16string_view(u"a\0b", 3)), false)),
            "a\0b"s);
}

TEST(TableCodec, LongTextsDecodeAndEncodeWhole) {
  std::string bytes;
  for (int i = 0; i < 5000; ++i) bytes += static_cast<char>(i % 7 == 0 ? 0x8A + i % 100 : 'a' + i % 26);
  const MEncoding::Codec& codec = FindCodec("KOI8-R");
  EXPECT_EQ(Bytes(codec.Encode(Decode(codec, bytes), false)), bytes);
}

}  // namespace
