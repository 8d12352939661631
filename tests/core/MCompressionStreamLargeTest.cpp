// More plain bytes than 32 bits count, through both directions of a filter.

#include <gtest/gtest.h>

#include "tests/core/Compressed.h"

namespace {

constexpr int32_t kPiece = 100'000'000;
constexpr int kPieces = 44;
constexpr int64_t kTotal = int64_t{kPieces} * kPiece;
static_assert(kTotal > int64_t{1} << 32);

TEST(MCompressionStreamLarge, PositionsGoBeyond32Bits) {
  std::vector<uint8_t> room(kPiece);
  MMemoryStream base;
  MZLibStream writer(&base, true, 20);
  for (int i = 0; i < kPieces; ++i) writer.Write(room.data(), kPiece);
  EXPECT_EQ(writer.GetPosition(), kTotal);
  writer.Write("end", 3);
  writer.Finish();

  base.Seek(0, MSeekOrigin::kStart);
  MZLibStream reader(&base, false);
  reader.SetReadLimit(kTotal + 3);
  for (int i = 0; i < kPieces; ++i) ASSERT_EQ(reader.Read(room.data(), kPiece), kPiece);
  EXPECT_EQ(reader.GetPosition(), kTotal);
  EXPECT_EQ(Take(reader, 4), "end");
  EXPECT_TRUE(reader.HasEnded());
}

}  // namespace
