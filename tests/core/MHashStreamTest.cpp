#include "core/MHashStream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/core/Balanced.h"
#include "tests/core/StreamDoubles.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MHashStreamTest : public Balanced {};

// Keeps the blocks.
class BlockStream : public MHashStream {
 public:
  BlockStream() = default;
  explicit BlockStream(int32_t blockSize) : MHashStream(blockSize), size_(blockSize) {}
  void WriteDigest(MStream& target) override { target.Write("digest", 6); }
  int32_t GetDigestSize() override { return 6; }
  void HashBlock(const uint8_t* block) override {
    blocks.emplace_back(reinterpret_cast<const char*>(block), static_cast<std::size_t>(size_));
  }

  std::vector<std::string> blocks;

 private:
  int32_t size_ = 0;
};

TEST_F(MHashStreamTest, WithoutABlockSizeWritingRaises) {
  BlockStream none, zero(0), negative(-1);
  for (BlockStream* const stream : {&none, &zero, &negative}) {
    EXPECT_RAISES(Put(*stream, "a"), "Cryptographic hash stream has not been initialized.", 256);
    EXPECT_RAISES(Put(*stream, ""), "Cryptographic hash stream has not been initialized.", 256);
    stream->Finish();
    stream->Reset();
    EXPECT_THAT(stream->blocks, IsEmpty());
  }
}

TEST_F(MHashStreamTest, EveryFilledBlockIsHashedAndTheRestStaysBuffered) {
  BlockStream stream(4);
  Put(stream, "abc");
  EXPECT_THAT(stream.blocks, IsEmpty());
  Put(stream, "d");
  EXPECT_THAT(stream.blocks, ElementsAre("abcd"));
  Put(stream, "efghijklm");
  EXPECT_THAT(stream.blocks, ElementsAre("abcd", "efgh", "ijkl"));
  Put(stream, "nopqrstuvw");
  EXPECT_THAT(stream.blocks, ElementsAre("abcd", "efgh", "ijkl", "mnop", "qrst"));
}

TEST_F(MHashStreamTest, FinishFillsAPartOfABlockWithZeros) {
  BlockStream stream(4);
  Put(stream, "abcdefg");
  Put(stream, "hij");
  stream.Finish();
  EXPECT_THAT(stream.blocks, ElementsAre("abcd", "efgh", std::string("ij\0\0", 4)));
  stream.Finish();
  EXPECT_EQ(stream.blocks.size(), 3u);
}

TEST_F(MHashStreamTest, FinishWithoutABufferedByteHashesNothing) {
  BlockStream stream(4);
  stream.Finish();
  EXPECT_THAT(stream.blocks, IsEmpty());
  Put(stream, "abcd");
  stream.Finish();
  EXPECT_THAT(stream.blocks, ElementsAre("abcd"));
}

TEST_F(MHashStreamTest, ResetForgetsWhatIsBuffered) {
  BlockStream stream(4);
  Put(stream, "abc");
  stream.Reset();
  stream.Finish();
  EXPECT_THAT(stream.blocks, IsEmpty());
  Put(stream, "efgh");
  EXPECT_THAT(stream.blocks, ElementsAre("efgh"));
}

TEST_F(MHashStreamTest, BlocksOfOneByteNeedNoBuffering) {
  BlockStream stream(1);
  Put(stream, "abc");
  EXPECT_THAT(stream.blocks, ElementsAre("a", "b", "c"));
}

TEST_F(MHashStreamTest, CountsOfNothingHashNothing) {
  BlockStream stream(1);
  stream.Write(nullptr, 0);
  stream.Write(nullptr, -1);
  EXPECT_THAT(stream.blocks, IsEmpty());
}

TEST_F(MHashStreamTest, FillerIsZeros) {
  BlockStream stream(2);
  stream.WriteFiller(3);
  stream.Finish();
  EXPECT_THAT(stream.blocks, ElementsAre(std::string(2, '\0'), std::string(2, '\0')));
}

TEST_F(MHashStreamTest, IsValidAndNeitherReadsNorSeeks) {
  BlockStream stream(4);
  char byte;
  EXPECT_TRUE(stream.IsValid());
  EXPECT_RAISES(stream.Read(&byte, 1), "Service \"read from stream\" is not implemented.", 1);
  EXPECT_RAISES(stream.Seek(1, MSeekOrigin::kCurrent), "Service \"read from stream\" is not implemented.", 1);
  EXPECT_RAISES(stream.GetPosition(), "Service \"get stream position\" is not implemented.", 1);
  EXPECT_RAISES(stream.GetSize(), "Service \"stream size detection\" is not implemented.", 1);
}

}  // namespace
