#include <gtest/gtest.h>

#include <limits>

#include "core/MMemoryStream.h"
#include "tests/common/Texts.h"
#include "tests/core/StreamDoubles.h"

namespace {

constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();

TEST(MMemoryStream, SeekFromTheStartStaysBetweenZeroAndTheSize) {
  MMemoryStream stream;
  Put(stream, Pattern(10));
  const auto seek = [&](int64_t offset) {
    stream.Seek(offset, MSeekOrigin::kStart);
    return stream.GetPosition();
  };
  EXPECT_EQ(seek(4), 4);
  EXPECT_EQ(seek(11), 10);
  EXPECT_EQ(seek(-1), 0);
}

TEST(MMemoryStream, SeekFromThePositionIsLimitedAtTheSizeOnly) {
  MMemoryStream stream;
  Put(stream, Pattern(10));
  const auto seek = [&](int64_t offset) {
    stream.Seek(offset, MSeekOrigin::kCurrent);
    return stream.GetPosition();
  };
  EXPECT_EQ(seek(-4), 6);
  EXPECT_EQ(seek(-10), -4);
  EXPECT_EQ(seek(5), 1);
  EXPECT_EQ(seek(100), 10);
  EXPECT_EQ(seek(std::numeric_limits<int32_t>::min()), 10 + int64_t{std::numeric_limits<int32_t>::min()});
  EXPECT_EQ(seek(-11), std::numeric_limits<int32_t>::min());
}

TEST(MMemoryStream, SeekFromTheEndIsLimitedAtZeroOnly) {
  MMemoryStream stream;
  Put(stream, Pattern(10));
  const auto seek = [&](int64_t offset) {
    stream.Seek(offset, MSeekOrigin::kEnd);
    return stream.GetPosition();
  };
  EXPECT_EQ(seek(-4), 6);
  EXPECT_EQ(seek(-11), 0);
  EXPECT_EQ(seek(5), 15);
  EXPECT_EQ(seek(kHighest), kHighest);
}

TEST(MMemoryStream, SeekLooksAtTheLower32BitsOfTheOffset) {
  MMemoryStream stream;
  Put(stream, Pattern(10));
  stream.Seek((int64_t{1} << 32) + 5, MSeekOrigin::kStart);
  EXPECT_EQ(stream.GetPosition(), 5);
  stream.Seek(0xFFFFFFFF, MSeekOrigin::kCurrent);
  EXPECT_EQ(stream.GetPosition(), 4);
  stream.Seek(std::numeric_limits<int64_t>::min(), MSeekOrigin::kEnd);
  EXPECT_EQ(stream.GetPosition(), 10);
}

TEST(MMemoryStream, SeekRefusesOtherOriginsAndStays) {
  MMemoryStream stream;
  Put(stream, Pattern(10));
  EXPECT_RAISES(stream.Seek(0, kBadOrigin), "Invalid seek origin.", 2);
  EXPECT_RAISES(stream.Seek(0, static_cast<MSeekOrigin>(-1)), "Invalid seek origin.", 2);
  EXPECT_EQ(stream.GetPosition(), 10);
}

}  // namespace
