#include "core/MZLibStream.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/core/Balanced.h"
#include "tests/core/Compressed.h"

namespace {

class MZLibStreamTest : public Balanced {
 protected:
  TestRandom random{1};
};

std::string CompressedByZlib(const std::string& bytes, int level) {
  uLongf size = compressBound(static_cast<uLong>(bytes.size()));
  std::string compressed(size, '\0');
  EXPECT_EQ(compress2(reinterpret_cast<Bytef*>(compressed.data()), &size,
                      reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uLong>(bytes.size()), level),
            Z_OK);
  compressed.resize(size);
  return compressed;
}

// Words that look alike, so that the levels find different matches.
std::string Words(TestRandom& random) {
  std::string bytes;
  while (bytes.size() < 60'000) bytes += static_cast<char>('a' + random.Below(3));
  return bytes;
}

TEST_F(MZLibStreamTest, WhatItWritesIsReadByZlib) {
  for (const std::size_t size : {0u, 1u, 4097u, 1u << 20}) {
    const std::string bytes = Mixed(size, random);
    const std::string compressed = Compressed<MZLibStream>(bytes);
    std::string plain(size + 1, '\0');
    auto count = static_cast<uLongf>(plain.size());
    EXPECT_EQ(
        uncompress(reinterpret_cast<Bytef*>(plain.data()), &count,
                   reinterpret_cast<const Bytef*>(compressed.data()), static_cast<uLong>(compressed.size())),
        Z_OK);
    plain.resize(count);
    EXPECT_TRUE(plain == bytes);
  }
}

TEST_F(MZLibStreamTest, WhatZlibWritesIsRead) {
  const std::string bytes = Mixed(1 << 20, random);
  for (const int level : {0, 1, 9})
    EXPECT_TRUE(Decompressed<MZLibStream>(CompressedByZlib(bytes, level), 5000) == bytes);
}

TEST_F(MZLibStreamTest, TensOfTheQualityAreTheLevel) {
  const std::string bytes = Words(random);
  EXPECT_FALSE(CompressedByZlib(bytes, 8) == CompressedByZlib(bytes, 9)) << "the levels must differ";
  const std::pair<int32_t, int> kLevels[] = {
      {100, 9}, {95, 9}, {91, 9}, {90, 8},  {81, 8},
      {50, 4},  {20, 1}, {11, 1}, {200, 9}, {std::numeric_limits<int32_t>::max(), 9}};
  for (const auto& [quality, level] : kLevels)
    EXPECT_TRUE(Compressed<MZLibStream>(bytes, quality) == CompressedByZlib(bytes, level)) << quality;
}

TEST_F(MZLibStreamTest, LevelZeroStores) {
  const std::string bytes = Words(random);
  for (const int32_t quality : {10, 1, 0, -1, std::numeric_limits<int32_t>::min()}) {
    const std::string stored = Compressed<MZLibStream>(bytes, quality);
    EXPECT_GT(stored.size(), bytes.size()) << quality;
    EXPECT_LT(stored.size(), bytes.size() + bytes.size() / 100);
    EXPECT_TRUE(Decompressed<MZLibStream>(stored) == bytes);
  }
}

TEST_F(MZLibStreamTest, IsAtItsEndWhenTheBaseIs) {
  MMemoryStream base;
  Put(base, Compressed<MZLibStream>("abc") + std::string(5000, 'x'));
  base.Seek(0, MSeekOrigin::kStart);
  MZLibStream stream(&base, false);
  EXPECT_EQ(Take(stream, 4), "abc");
  EXPECT_TRUE(stream.HasEnded());
  EXPECT_FALSE(stream.IsEnd());
  base.Seek(0, MSeekOrigin::kEnd);
  EXPECT_TRUE(stream.IsEnd());
  stream.Close();
  EXPECT_RAISES(stream.IsEnd(), "File stream is not initialized.", 258);
}

TEST_F(MZLibStreamTest, DataThatNeedsADictionaryRaises) {
  z_stream record{};
  ASSERT_EQ(deflateInit(&record, 9), Z_OK);
  ASSERT_EQ(deflateSetDictionary(&record, reinterpret_cast<const Bytef*>("dictionary"), 10), Z_OK);
  std::string compressed(100, '\0');
  record.next_in = reinterpret_cast<Bytef*>(const_cast<char*>("a dictionary"));
  record.avail_in = 12;
  record.next_out = reinterpret_cast<Bytef*>(compressed.data());
  record.avail_out = 100;
  ASSERT_EQ(deflate(&record, Z_FINISH), Z_STREAM_END);
  deflateEnd(&record);
  EXPECT_RAISES(Decompressed<MZLibStream>(compressed), kInvalidContent, 256);
}

}  // namespace
