// What the decompressing filters make of data that is cut off, damaged, followed by more, or too much.

#include <gtest/gtest.h>

#include <limits>

#include "tests/core/Balanced.h"
#include "tests/core/Compressed.h"

namespace {

template <typename Stream>
class MCompressionStreamDamageTest : public Balanced {
 protected:
  // Reads all; true if it did not raise.
  bool Reads(const std::string& compressed, int32_t piece, std::string& all) {
    ForwardStream base(compressed);
    Stream stream(&base, false);
    try {
      all = Rest(stream, piece);
    } catch (const MException& raised) {
      EXPECT_EQ(Utf8(raised.message), kInvalidContent);
      EXPECT_EQ(raised.code, 256);
      EXPECT_FALSE(stream.IsValid());
      return false;
    }
    hasEnded = stream.HasEnded();
    return true;
  }

  TestRandom random;
  bool hasEnded = false;
};

using Streams = testing::Types<MZLibStream, MBZIPStream>;
TYPED_TEST_SUITE(MCompressionStreamDamageTest, Streams);

TYPED_TEST(MCompressionStreamDamageTest, CutOffAtAnyByteItGivesABeginningAndEnds) {
  const std::string bytes = Mixed(1000, this->random);
  const std::string compressed = Compressed<TypeParam>(bytes);
  std::string longest;
  for (std::size_t size = 0; size < compressed.size(); ++size) {
    std::string all;
    ASSERT_TRUE(this->Reads(compressed.substr(0, size), 1 + static_cast<int32_t>(size), all)) << size;
    EXPECT_TRUE(bytes.starts_with(all)) << size;
    EXPECT_GE(all.size(), longest.size());
    EXPECT_FALSE(this->hasEnded);
    longest = all;
  }
}

TYPED_TEST(MCompressionStreamDamageTest, CutOffItGoesOnWhenTheBaseHasMoreLater) {
  const std::string bytes = Mixed(5000, this->random);
  const std::string compressed = Compressed<TypeParam>(bytes);
  MMemoryStream base;
  Put(base, compressed.substr(0, compressed.size() / 2));
  base.Seek(0, MSeekOrigin::kStart);
  TypeParam stream(&base, false);
  std::string all = Rest(stream);
  EXPECT_LT(all.size(), bytes.size());
  Put(base, compressed.substr(compressed.size() / 2));
  base.Seek(static_cast<int64_t>(compressed.size() / 2), MSeekOrigin::kStart);
  all += Rest(stream);
  EXPECT_TRUE(all == bytes);
}

TYPED_TEST(MCompressionStreamDamageTest, DamagedAtAnyByteItRaisesOrIsFoundToBeCutOff) {
  const std::string bytes = Mixed(300, this->random);
  const std::string compressed = Compressed<TypeParam>(bytes);
  int refused = 0;
  for (std::size_t at = 0; at < compressed.size(); ++at)
    for (int bit = 0; bit < 8; ++bit) {
      std::string damaged = compressed, all;
      damaged[at] = static_cast<char>(damaged[at] ^ 1 << bit);
      const bool isRead = this->Reads(damaged, 100, all);
      refused += !isRead;
      EXPECT_TRUE(!isRead || !this->hasEnded || all == bytes) << "bit " << bit << " of byte " << at;
    }
  EXPECT_GT(refused, static_cast<int>(compressed.size()) * 6);
}

TYPED_TEST(MCompressionStreamDamageTest, NoiseRaises) {
  for (int i = 0; i < 200; ++i) {
    std::string noise, all;
    for (int count = this->random.Integer(10, 5000); count > 0; --count)
      noise += static_cast<char>(this->random.Below(256));
    EXPECT_FALSE(this->Reads("!" + noise, 100, all));
  }
}

TYPED_TEST(MCompressionStreamDamageTest, WhatFollowsTheEndIsNotRead) {
  const std::string compressed = Compressed<TypeParam>("abc");
  for (const std::string& rest : {std::string("x"), compressed, std::string(10'000, '\0')}) {
    std::string all;
    EXPECT_TRUE(this->Reads(compressed + rest, 100, all));
    EXPECT_EQ(all, "abc");
    EXPECT_TRUE(this->hasEnded);
  }
}

TYPED_TEST(MCompressionStreamDamageTest, MoreThanTheLimitIsInvalidContent) {
  const std::string compressed = Compressed<TypeParam>(Pattern(10'000));
  for (const int32_t piece : {1, 999, 1000, 10'000, 20'000}) {
    ForwardStream exact(compressed), over(compressed), none(compressed);
    TypeParam stream(&exact, false);
    stream.SetReadLimit(10'000);
    EXPECT_TRUE(Rest(stream, piece) == Pattern(10'000));
    stream.Open(&over, false);
    stream.SetReadLimit(9999);
    EXPECT_RAISES(Rest(stream, piece), kInvalidContent, 256);
    EXPECT_FALSE(stream.IsValid());
    stream.Open(&none, false);
    EXPECT_EQ(Rest(stream, piece).size(), 10'000u) << "a limit holds until the next Open";
  }
}

TYPED_TEST(MCompressionStreamDamageTest, LimitBelowThePositionRefusesTheNextByteAndNoMoreThanThat) {
  const std::string compressed = Compressed<TypeParam>(Pattern(1000));
  for (const int64_t limit : {std::numeric_limits<int64_t>::min(), int64_t{-1}, int64_t{0}, int64_t{499}}) {
    ForwardStream base(compressed);
    TypeParam stream(&base, false);
    Take(stream, 500);
    stream.SetReadLimit(limit);
    EXPECT_RAISES(Take(stream, 1), kInvalidContent, 256);
  }
  ForwardStream base(compressed);
  TypeParam stream(&base, false);
  Take(stream, 1000);
  stream.SetReadLimit(0);
  EXPECT_EQ(Take(stream, 1), "");
  EXPECT_TRUE(stream.HasEnded());
}

TYPED_TEST(MCompressionStreamDamageTest, BombIsRefusedAfterOneByteTooMuch) {
  BareStream target;
  TypeParam writer(&target, true);
  for (int i = 0; i < 100; ++i) writer.WriteFiller(1'000'000);
  writer.Finish();
  EXPECT_LT(target.written.size(), 100'000u);
  ForwardStream base(target.written);
  TypeParam reader(&base, false);
  reader.SetReadLimit(1'000'000);
  std::vector<uint8_t> room(100'000'000, 1);
  EXPECT_RAISES(reader.Read(room.data(), 100'000'000), kInvalidContent, 256);
  EXPECT_EQ(reader.GetPosition(), 1'000'001);
  EXPECT_EQ(room[1'000'001], 1);
}

}  // namespace
