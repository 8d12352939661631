#include "core/MMD5Stream.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "core/MStreamTools.h"
#include "tests/common/TestRandom.h"
#include "tests/core/Balanced.h"
#include "tests/core/StreamDoubles.h"

namespace {

class MMD5StreamTest : public Balanced {};

std::string DigestOf(MMD5Stream& stream) {
  MMemoryStream digest;
  stream.WriteDigest(digest);
  EXPECT_EQ(digest.GetSize(), stream.GetDigestSize());
  return Utf8(MHexadecimalText(digest, true));
}

std::string MD5(const std::string& bytes, uint32_t salt = 0) {
  MMD5Stream stream(salt);
  Put(stream, bytes);
  stream.Finish();
  return DigestOf(stream);
}

TEST_F(MMD5StreamTest, GivesTheDigestsOfTheStandard) {
  EXPECT_EQ(MD5(""), "D41D8CD98F00B204E9800998ECF8427E");
  EXPECT_EQ(MD5("a"), "0CC175B9C0F1B6A831C399E269772661");
  EXPECT_EQ(MD5("abc"), "900150983CD24FB0D6963F7D28E17F72");
  EXPECT_EQ(MD5("message digest"), "F96B697D7CB7938D525A2F31AAF161D0");
  EXPECT_EQ(MD5("abcdefghijklmnopqrstuvwxyz"), "C3FCD3D76192E4007DFB496CCA67E13B");
  EXPECT_EQ(MD5("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"),
            "D174AB98D277D9F5A5611C2C9F419D9F");
  EXPECT_EQ(MD5("12345678901234567890123456789012345678901234567890123456789012345678901234567890"),
            "57EDF4A22BE3C955AC49DA2E2107B67A");
}

// From md5sum of GNU coreutils.
TEST_F(MMD5StreamTest, GivesTheDigestsAroundTheEndsOfBlocks) {
  const std::pair<std::size_t, const char*> kDigests[] = {
      {55, "EF1772B6DFF9A122358552954AD0DF65"},  {56, "3B0C8AC703F828B04C6C197006D17218"},
      {57, "652B906D60AF96844EBD21B674F35E93"},  {63, "B06521F39153D618550606BE297466D5"},
      {64, "014842D480B571495A4A0363793F7367"},  {65, "C743A45E0D2E6A95CB859ADAE0248435"},
      {119, "8A7BD0732ED6A28CE75F6DABC90E1613"}, {120, "5F61C0CCAD4CAC44C75FF505E1F1E537"},
      {127, "020406E1D05CDC2AA287641F7AE2CC39"}, {128, "E510683B3F5FFE4093D021808BC6FF70"},
      {129, "B325DC1C6F5E7A2B7CF465B9FEAB7948"}};
  for (const auto& [size, digest] : kDigests) EXPECT_EQ(MD5(std::string(size, 'a')), digest) << size;
}

TEST_F(MMD5StreamTest, PiecesOfAnySizeAndPlaceGiveTheSame) {
  TestRandom random;
  const std::string bytes = Pattern(10'000);
  const std::string digest = MD5(bytes);
  for (int i = 0; i < 50; ++i) {
    MMD5Stream stream;
    for (std::size_t at = 0; at < bytes.size();) {
      const std::size_t size = std::min(bytes.size() - at, static_cast<std::size_t>(random.Below(200)));
      stream.Write(bytes.data() + at, static_cast<int32_t>(size));
      at += size;
    }
    stream.Finish();
    EXPECT_EQ(DigestOf(stream), digest);
  }
}

TEST_F(MMD5StreamTest, SaltMovesTheChainingValuesItBeginsWith) {
  MMD5Stream plain, salted(1), wrapping(0xFFFFFFFF);
  EXPECT_EQ(DigestOf(plain), "0123456789ABCDEFFEDCBA9876543210");
  EXPECT_EQ(DigestOf(salted), "0C234567D0ABCDEF23DDBA98D7543210");
  EXPECT_EQ(DigestOf(wrapping), "F622456742ABCDEFD9DCBA9815543210");
  EXPECT_NE(MD5("abc", 1), MD5("abc"));
  EXPECT_EQ(MD5("abc", 1), "F40369B74D214588DF6DE5783CE6AFF1");
}

TEST_F(MMD5StreamTest, ResetBeginsAnewWithTheSameSalt) {
  for (const uint32_t salt : {0u, 12345u}) {
    MMD5Stream stream(salt);
    Put(stream, "something else");
    stream.Reset();
    Put(stream, "abc");
    stream.Finish();
    EXPECT_EQ(DigestOf(stream), MD5("abc", salt));
    stream.Reset();
    Put(stream, "abcd");
    stream.Finish();
    EXPECT_EQ(DigestOf(stream), MD5("abcd", salt));
  }
}

TEST_F(MMD5StreamTest, AfterFinishTheDigestStays) {
  MMD5Stream stream;
  Put(stream, "abc");
  stream.Finish();
  stream.Finish();
  EXPECT_EQ(DigestOf(stream), "900150983CD24FB0D6963F7D28E17F72");
  EXPECT_RAISES(Put(stream, "d"), "Cryptographic hash stream has not been initialized.", 256);
  EXPECT_EQ(DigestOf(stream), "900150983CD24FB0D6963F7D28E17F72");
}

TEST_F(MMD5StreamTest, CountsOfNothingHashNothing) {
  MMD5Stream stream;
  Put(stream, "ab");
  stream.Write(nullptr, 0);
  stream.Write(nullptr, -1);
  Put(stream, "c");
  stream.Finish();
  EXPECT_EQ(DigestOf(stream), "900150983CD24FB0D6963F7D28E17F72");
}

TEST_F(MMD5StreamTest, WholeBlocksAreHashedAsWritten) {
  const std::string block = Pattern(64);
  MMD5Stream stream;
  Put(stream, "a");
  stream.HashBlock(reinterpret_cast<const uint8_t*>(block.data()));
  stream.Finish();
  EXPECT_EQ(DigestOf(stream), MD5("a" + block));
}

// From md5sum, of 600 MB of zeros: more than 2^32 bits.
TEST_F(MMD5StreamTest, BitsAreCountedBeyond32) {
  static const std::string zeros(100'000'000, '\0');
  MMD5Stream stream;
  for (int i = 0; i < 6; ++i) Put(stream, zeros);
  stream.Finish();
  EXPECT_EQ(DigestOf(stream), "539B3DAC17D1E1099443D607DC741BFE");
}

TEST_F(MMD5StreamTest, NothingIsAllocated) {
  const std::string bytes = Pattern(1000);
  BareStream digest;
  MMD5Stream stream;
  Put(stream, bytes);
  stream.Finish();
  stream.WriteDigest(digest);
  EXPECT_EQ(CountingFunctions::GetCalls(), 0);
}

TEST_F(MMD5StreamTest, IsValidAndNeitherReadsNorSeeks) {
  MMD5Stream stream;
  char byte;
  EXPECT_TRUE(stream.IsValid());
  EXPECT_EQ(stream.GetDigestSize(), 16);
  EXPECT_RAISES(stream.Read(&byte, 1), "Service \"read from stream\" is not implemented.", 1);
  EXPECT_RAISES(stream.Seek(1, MSeekOrigin::kCurrent), "Service \"read from stream\" is not implemented.", 1);
  EXPECT_RAISES(stream.GetPosition(), "Service \"get stream position\" is not implemented.", 1);
}

}  // namespace
