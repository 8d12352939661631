#include "core/MDataBlock.h"

#include "tests/core/Balanced.h"

namespace {

using MDataBlockTest = Balanced;

TEST_F(MDataBlockTest, HasItsBytesInABlockOfTheirOwn) {
  MDataBlock* const block = MDataBlock::Make(5);
  EXPECT_EQ(table.GetAllocated(), 2);
  EXPECT_EQ(block->size, 5);
  EXPECT_TRUE(block->IsOwned());
  EXPECT_FALSE(block->IsShared());
  MDataBlock::Drop(block);
}

TEST_F(MDataBlockTest, OfNoSizeHasNoBytes) {
  for (const int32_t size : {0, -1}) {
    const MBytes bytes(MDataBlock::Make(size));
    EXPECT_EQ(bytes.GetSize(), 0);
    EXPECT_EQ(bytes.GetData(), nullptr);
    EXPECT_STREQ(bytes.GetText(), "");
  }
}

TEST_F(MDataBlockTest, IsReleasedByItsLastHolder) {
  MDataBlock* const block = MDataBlock::Make(3);
  {
    const MBytes first(block);
    MBytes second(first);
    EXPECT_EQ(block->references, 2);
    EXPECT_TRUE(block->IsShared());
    const MBytes third(std::move(second));
    EXPECT_EQ(block->references, 2);
    EXPECT_EQ(second.GetData(), nullptr);
    MBytes fourth;
    fourth = third;
    fourth = *&fourth;
    EXPECT_EQ(block->references, 3);
  }
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST_F(MDataBlockTest, DropsItselfButNotBytesOfSomebodyElse) {
  uint8_t bytes[] = {1, 2};
  MDataBlock* const block = new MDataBlock;
  block->data = bytes;
  block->size = 2;
  block->flags = MDataBlock::kUnowned;
  EXPECT_FALSE(block->IsOwned());
  MDataBlock::Drop(block);
  EXPECT_EQ(table.GetReleased(), 1);
}

TEST_F(MDataBlockTest, DroppingNullDoesNothing) {
  MDataBlock::Drop(nullptr);
  EXPECT_EQ(table.GetCalls(), 0);
}

TEST_F(MDataBlockTest, FailedAllocationsLeaveNothingBehind) {
  const int requests =
      FailEachRequest([] { return 0; }, [](int) { MDataBlock::Drop(MDataBlock::Make(8)); }, [](int) {});
  EXPECT_EQ(requests, 2);
}

}  // namespace
