#include "core/MEncoding.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <utility>

#include "core/MMemoryStream.h"
#include "tests/common/Texts.h"
#include "tests/core/Encodings.h"
#include "tests/core/StreamDoubles.h"

namespace {

using namespace std::string_literals;
using namespace MEncoding;
using testing::ElementsAre;

TEST(MEncoding, AnEmptyNameFindsAscii) {
  EXPECT_EQ(&FindCodec(""), &ASCIICodec::Get());
  EXPECT_EQ(&FindCodec("ASCII"), &ASCIICodec::Get());
}

TEST(MEncoding, UnicodeCodecsHaveTwoNamesEachInAnyCase) {
  for (const char* const name : {"utf8", "utf-8", "UTF8", "UTF-8", "Utf-8"})
    EXPECT_EQ(&FindCodec(Buffer(name)), &UTF8Codec::Get()) << name;
  for (const char* const name : {"utf16", "utf-16", "UTF16", "uTF-16"})
    EXPECT_EQ(&FindCodec(Buffer(name)), &UTF16Codec::Get()) << name;
}

TEST(MEncoding, TableCodecsAreFoundByEachOfTheirNamesInAnyCase) {
  EXPECT_EQ(FindCodec("iSo-8859-2").GetName(), "ISO-8859-2");
  EXPECT_EQ(FindCodec("latin10").GetName(), "ISO-8859-16");
  EXPECT_EQ(FindCodec("iso 8859-8-i").GetName(), "ISO-8859-8");
  EXPECT_EQ(FindCodec("HP-Roman8").GetName(), "roman8");
  EXPECT_EQ(FindCodec("iso-8859-1").GetName(), "windows-1252");
  EXPECT_EQ(FindCodec("cp874").GetName(), "IBM874");
}

TEST(MEncoding, ANameFindsTheSameCodecEveryTimeAndTheCodecTellsItsPrimaryName) {
  for (const MString& name : CodecNames()) {
    EXPECT_EQ(FindCodec(name).GetName(), name);
    EXPECT_EQ(&FindCodec(name), &FindCodec(name));
  }
}

TEST(MEncoding, AnUnknownNameRaises) {
  EXPECT_RAISES(FindCodec("iso-8859-15"), "No codec found for encoding iso-8859-15.", 0);
  EXPECT_RAISES(FindCodec("utf-7"), "No codec found for encoding utf-7.", 0);
}

// The place in the table of virtual functions that a pointer to a member holds, in the Itanium ABI.
template <typename Member>
std::ptrdiff_t Slot(Member member) {
  std::ptrdiff_t words[2];
  static_assert(sizeof words == sizeof member);
  std::memcpy(words, &member, sizeof words);
  return (words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(MEncoding, VirtualOperationsStandInTheirOrder) {
  EXPECT_THAT((std::vector{Slot(&Codec::GetName), Slot(&Codec::Decode), Slot(&Codec::Encode),
                           Slot(&Codec::ReadHeader), Slot(&Codec::WriteHeader), Slot(&Codec::ReadLine),
                           Slot(&Codec::WriteText), Slot(&Codec::WriteTextLine)}),
              ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
}

TEST(MEncoding, NothingAndNullDecodeToTheEmptyTextAndBackInEveryCodec) {
  for (const MString& name : CodecNames()) {
    const Codec& codec = FindCodec(name);
    EXPECT_EQ(codec.Decode("abc", 0), "");
    EXPECT_EQ(codec.Decode("abc", -1), "");
    EXPECT_EQ(codec.Decode(nullptr, 5), "");
    EXPECT_EQ(codec.Encode("", false).GetSize(), 0);
    EXPECT_EQ(Bytes(codec.Encode("", true)), &codec == &UTF16Codec::Get() ? "\0\0"s : "\0"s);
  }
}

TEST(MEncoding, OnlyUtf16HasAHeader) {
  for (const MString& name : CodecNames()) {
    if (name == "utf16") continue;
    BareStream stream;  // cannot be read
    FindCodec(name).ReadHeader(stream);
    FindCodec(name).WriteHeader(stream);
    EXPECT_EQ(stream.written, "");
  }
}

TEST(ASCIICodec, EveryByteIsTheUnitOfItsValue) {
  std::string bytes;
  std::u16string units;
  for (int i = 0; i < 256; ++i) {
    bytes += static_cast<char>(i);
    units += static_cast<char16_t>(i);
  }
  EXPECT_EQ(Units(Decode(ASCIICodec::Get(), bytes)), units);
  EXPECT_EQ(Bytes(ASCIICodec::Get().Encode(MString(units), false)), bytes);
}

TEST(ASCIICodec, EncodeNarrowsEachUnitToItsLowestByte) {
  EXPECT_EQ(Bytes(ASCIICodec::Get().Encode(MString(u"A\u0142\u4E2D\uFFFF"), true)), "A\x42\x2D\xFF\0"s);
  EXPECT_EQ(Bytes(ASCIICodec::Get().Encode("plain", false)), "plain");
}

TEST(UTF16Codec, UnitsAreTwoBytesLowByteFirst) {
  const MString text(u"A\u0142\U0001F39B");
  const std::string bytes = "A\0\x42\x01\x3C\xD8\x9B\xDF"s;
  EXPECT_EQ(Bytes(UTF16Codec::Get().Encode(text, false)), bytes);
  EXPECT_EQ(Bytes(UTF16Codec::Get().Encode(text, true)), bytes + "\0\0"s);
  EXPECT_EQ(Decode(UTF16Codec::Get(), bytes), text);
  EXPECT_EQ(Bytes(UTF16Codec::Get().Encode("ab", true)), "a\0b\0\0\0"s);
}

TEST(UTF16Codec, AnOddLastByteIsDroppedAndZerosAndMarksStay) {
  EXPECT_EQ(Units(Decode(UTF16Codec::Get(),
                         "a\0\0\0\xFF\xFE"
                         "b"s)),
            u"a\0\uFEFF"s);
  EXPECT_EQ(Units(Decode(UTF16Codec::Get(), "x")), u"");
}

TEST(UTF16Codec, HeaderIsTheLittleEndianMark) {
  MMemoryStream stream;
  UTF16Codec::Get().WriteHeader(stream);
  EXPECT_EQ(All(stream), "\xFF\xFE");
  stream.Seek(0, MSeekOrigin::kStart);
  UTF16Codec::Get().ReadHeader(stream);
  EXPECT_EQ(stream.GetPosition(), 2);
}

TEST(UTF16Codec, ABadHeaderRaises) {
  for (const std::string& header : {"\xFE\xFF"s, "\xFF\xFF"s, "ab"s}) {
    MMemoryStream stream(header.data(), 2);
    EXPECT_RAISES(UTF16Codec::Get().ReadHeader(stream), "Invalid UTF8 header.", 0);
  }
  MMemoryStream shorter("\xFF", 1);
  EXPECT_RAISES(UTF16Codec::Get().ReadHeader(shorter), "Could not read required data from stream.", 256);
}

}  // namespace
