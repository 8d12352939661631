#include <gtest/gtest.h>

#include <type_traits>

#include "core/MMemoryStream.h"
#include "tests/common/CountingFunctions.h"
#include "tests/core/StreamDoubles.h"

namespace {

TEST(MMemoryStream, CopiesShareTheirBytesAndKeepPositionsOfTheirOwn) {
  MMemoryStream stream;
  Put(stream, "abcdef");
  stream.Seek(2, MSeekOrigin::kStart);
  const CountingFunctions table;
  MMemoryStream copy(stream);
  EXPECT_EQ(copy.GetData(), stream.GetData());
  EXPECT_EQ(copy.GetPosition(), 2);
  EXPECT_EQ(Take(copy, 2), "cd");
  EXPECT_EQ(stream.GetPosition(), 2);
  EXPECT_EQ(table.GetCalls(), 0);
}

TEST(MMemoryStream, WriteSeparatesACopyWithTheSameCapacity) {
  MMemoryStream stream;
  stream.SetCapacity(50);
  Put(stream, "abcdef");
  MMemoryStream copy(stream);
  const uint8_t* const shared = stream.GetData();
  copy.Seek(0, MSeekOrigin::kStart);
  Put(copy, "XY");
  EXPECT_EQ(All(copy), "XYcdef");
  EXPECT_EQ(copy.GetCapacity(), 50);
  EXPECT_EQ(All(stream), "abcdef");
  EXPECT_EQ(stream.GetData(), shared);
  EXPECT_NE(copy.GetData(), shared);
}

TEST(MMemoryStream, LastHolderWritesInPlace) {
  MMemoryStream stream;
  Put(stream, "abcdef");
  { const MMemoryStream copy(stream); }
  const uint8_t* const bytes = stream.GetData();
  stream.Seek(0, MSeekOrigin::kStart);
  Put(stream, "XY");
  EXPECT_EQ(stream.GetData(), bytes);
}

TEST(MMemoryStream, CapacityOfOneCopyLeavesTheOtherAlone) {
  MMemoryStream stream;
  Put(stream, "abcdef");
  MMemoryStream copy(stream);
  copy.SetCapacity(2);
  EXPECT_EQ(All(copy), "ab");
  EXPECT_EQ(All(stream), "abcdef");
  MMemoryStream other(stream);
  other.Clear();
  EXPECT_EQ(All(stream), "abcdef");
}

TEST(MMemoryStream, AssignmentSharesAndReleasesWhatWasThere) {
  const CountingFunctions table;
  {
    MMemoryStream stream;
    Put(stream, "abc");
    MMemoryStream other;
    Put(other, "something else");
    other = stream;
    EXPECT_EQ(other.GetData(), stream.GetData());
    EXPECT_EQ(other.GetPosition(), 3);
    const MMemoryStream& same = other;
    other = same;
    EXPECT_EQ(All(other), "abc");
  }
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST(MMemoryStream, BytesThatItDoesNotOwnAreReadInPlaceAndNeverWritten) {
  char bytes[] = "constant";
  MMemoryStream stream(bytes, 8);
  EXPECT_EQ(static_cast<const void*>(stream.GetData()), bytes);
  EXPECT_EQ(stream.GetSize(), 8);
  EXPECT_EQ(stream.GetCapacity(), 8);
  EXPECT_EQ(Take(stream, 3), "con");
  Put(stream, "XYZ");
  EXPECT_EQ(All(stream), "conXYZnt");
  EXPECT_EQ(stream.GetCapacity(), 8);
  EXPECT_STREQ(bytes, "constant");
}

TEST(MMemoryStream, CopiesOfForeignBytesSeparateOnTheFirstWrite) {
  char bytes[] = "constant";
  MMemoryStream stream(bytes, 8);
  MMemoryStream copy(stream);
  stream.SetCapacity(4);
  copy.Seek(0, MSeekOrigin::kEnd);
  copy.Write(copy.GetData(), 4);
  EXPECT_EQ(All(stream), "cons");
  EXPECT_EQ(All(copy), "constantcons");
  EXPECT_EQ(copy.GetCapacity(), 16);
  EXPECT_STREQ(bytes, "constant");
}

TEST(MMemoryStream, NoForeignBytesAreTheEmptyStream) {
  MMemoryStream null(nullptr, 5);
  EXPECT_EQ(null.GetSize(), 0);
  MMemoryStream negative("abc", -1);
  EXPECT_EQ(negative.GetSize(), 0);
  Put(negative, "x");
  EXPECT_EQ(All(negative), "x");
}

TEST(MMemoryStream, DestructionRaisesNothing) {
  EXPECT_TRUE(std::is_nothrow_destructible_v<MMemoryStream>);
}

}  // namespace
