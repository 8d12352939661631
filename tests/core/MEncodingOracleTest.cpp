#include <gtest/gtest.h>

#include <algorithm>

#include "tests/common/Texts.h"
#include "tests/core/Encodings.h"

namespace {

using namespace MEncoding;

constexpr int kRounds = 3000;
const std::vector<int32_t> kLengths = {0,  1,  2,  3,   4,   5,   6,   7,   8,    9,    10,
                                       11, 12, 13, 14,  15,  16,  17,  31,  32,   33,   64,
                                       65, 70, 99, 100, 127, 128, 768, 999, 1024, 1025, 5000};

// Bytes that tell much: runs of ASCII of any length, whole characters, and bytes that break them.
std::string RandomBytes(TestRandom& random, int32_t length) {
  const int32_t disorder = random.OneOf(std::vector<int32_t>{2, 20, 1000});
  std::string bytes;
  while (static_cast<int32_t>(bytes.size()) < length) {
    if (random.OneIn(disorder)) {
      bytes +=
          static_cast<char>(random.OneOf(std::vector<int>{0, 0x7F, 0x80, 0xBF, 0xC0, 0xDF, 0xE0, 0xED, 0xEF,
                                                          0xF0, 0xF4, 0xF7, 0xF8, 0xFF, random.Below(256)}));
    } else if (random.OneIn(3)) {
      bytes +=
          std::string(static_cast<std::size_t>(random.Below(40)), static_cast<char>('a' + random.Below(26)));
    } else {
      const std::vector<int> highest = {0x7F, 0x7FF, 0xFFFF, 0x10FFFF, 0xFF};
      const auto codePoint =
          static_cast<char32_t>(random.OneIn(20) ? 0xFEFF : random.Below(random.OneOf(highest)));
      const auto high = static_cast<char16_t>(0xD7C0 + (codePoint >> 10));
      const auto low = static_cast<char16_t>(0xDC00 | (codePoint & 0x3FF));
      bytes += PlainEncode(codePoint > 0xFFFF ? std::u16string{high, low}
                                              : std::u16string(1, static_cast<char16_t>(codePoint)));
    }
  }
  bytes.resize(static_cast<std::size_t>(length));
  return bytes;
}

std::u16string RandomUnits(TestRandom& random, int32_t length) {
  const int32_t disorder = random.OneOf(std::vector<int32_t>{2, 20, 1000});
  std::u16string units;
  while (static_cast<int32_t>(units.size()) < length) {
    if (random.OneIn(disorder)) {
      units += static_cast<char16_t>(0xD800 + random.Below(0x800));
    } else if (random.OneIn(20)) {
      units += {0xDBFF, static_cast<char16_t>(0xDDFF + random.Below(0x202))};  // around the raw bytes
    } else if (random.OneIn(3)) {
      units += std::u16string(static_cast<std::size_t>(random.Below(40)),
                              static_cast<char16_t>('a' + random.Below(26)));
    } else {
      units += static_cast<char16_t>(random.Below(random.OneOf(std::vector<int>{0x90, 0x900, 0x10000})));
    }
  }
  units.resize(static_cast<std::size_t>(length));
  return units;
}

// Calls `use` with a copy that begins at an odd address and ends where its memory does.
template <typename Use>
void Misaligned(TestRandom& random, const std::string& bytes, Use use) {
  const auto shift = static_cast<std::size_t>(random.Below(16));
  std::vector<char> memory(shift);
  memory.insert(memory.end(), bytes.begin(), bytes.end());
  memory.shrink_to_fit();
  use(reinterpret_cast<const uint8_t*>(memory.data() + shift), static_cast<int32_t>(bytes.size()));
}

TEST(UTF8CodecOracle, RandomBytesDecodeAsByThePlainRules) {
  TestRandom random;
  for (int round = 0; round < kRounds; ++round) {
    const std::string bytes = RandomBytes(random, random.OneOf(kLengths));
    Misaligned(random, bytes, [&](const uint8_t* data, int32_t size) {
      ASSERT_EQ(Units(UTF8Codec::Get().Decode(data, size)), PlainDecode(bytes))
          << testing::PrintToString(bytes);
    });
  }
}

TEST(UTF8CodecOracle, RandomUnitsEncodeAsByThePlainRules) {
  TestRandom random;
  for (int round = 0; round < kRounds; ++round) {
    const std::u16string units = RandomUnits(random, random.OneOf(kLengths));
    const MString text(units);
    ASSERT_EQ(Bytes(UTF8Codec::Get().Encode(text, false)), PlainEncode(units))
        << testing::PrintToString(units);
    ASSERT_EQ(Bytes(UTF8Codec::Get().Encode(text, true)), PlainEncode(units) + '\0');
    // In place, at any address and with no more room than is promised.
    std::vector<uint8_t> memory(units.size() * Codec::kMaximumBytes +
                                static_cast<std::size_t>(random.Below(16)));
    uint8_t* const start = memory.data() + memory.size() - units.size() * Codec::kMaximumBytes;
    uint8_t* const end = UTF8Codec::Get().EncodeTo(text, start);
    ASSERT_EQ(std::string(start, end), PlainEncode(units));
  }
}

std::u16string DecodeInPieces(const Codec& codec, const std::string& bytes, TestRandom& random) {
  std::u16string units;
  Piece piece;
  int32_t size;
  bool isLast;
  std::size_t start = 0, end = 0;
  do {
    end = std::min(end + static_cast<std::size_t>(random.Below(10)), bytes.size());
    isLast = end == bytes.size();
    size = static_cast<int32_t>(end - start);
    std::vector<MChar> room(static_cast<std::size_t>(random.Integer(2, 40)));
    Misaligned(random, bytes.substr(start, end - start), [&](const uint8_t* data, int32_t count) {
      piece = codec.DecodePiece(data, count, isLast, room.data(), static_cast<int32_t>(room.size()));
    });
    units.append(room.data(), static_cast<std::size_t>(piece.units));
    start += static_cast<std::size_t>(piece.bytes);
  } while (piece.bytes > 0 || (size < Codec::kLongestSequence && !isLast));
  return units;
}

TEST(MEncodingOracle, PiecesOfAnySizeInRoomsOfAnySizeGiveTheWholeText) {
  TestRandom random;
  for (const MString& name : CodecNames()) {
    for (int round = 0; round < 200; ++round) {
      const std::string bytes = RandomBytes(random, random.OneOf(kLengths));
      ASSERT_EQ(DecodeInPieces(FindCodec(name), bytes, random), Units(Decode(FindCodec(name), bytes)))
          << Utf8(name) << testing::PrintToString(bytes);
    }
  }
}

TEST(MEncodingOracle, AReaderGivesTheWholeTextInUnitsAlsoWhenSomeAreGivenBack) {
  TestRandom random;
  for (const MString& name : CodecNames()) {
    for (int round = 0; round < 20; ++round) {
      const std::string bytes = RandomBytes(random, random.Below(20000));
      ASSERT_EQ(ReadInPieces(TricklingStream(bytes, random), FindCodec(name), random),
                Units(Decode(FindCodec(name), bytes)))
          << Utf8(name);
    }
  }
}

}  // namespace
