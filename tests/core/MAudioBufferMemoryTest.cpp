// Which operations of MAudioBuffer need memory, and what they do when there is none.

#include <gtest/gtest.h>

#include <utility>

#include "core/MAudioBuffer.h"
#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"
#include "tests/core/AudioBuffers.h"

namespace {

constexpr char kOutOfMemory[] = "Out of memory.";

void ExpectFilled(const MAudioBuffer& buffer, int32_t channels, int32_t length) {
  ASSERT_EQ(buffer.GetChannelCount(), channels);
  ASSERT_EQ(buffer.GetLength(), length);
  for (int32_t c = 0; c < channels; ++c) {
    for (int32_t i = 0; i < length; ++i)
      EXPECT_EQ(buffer.GetChannel(c)[i], static_cast<float>(100 * c + i + 1));
  }
  ExpectGuards(buffer);
}

TEST(MAudioBufferMemory, FormatThatCannotBeHadLeavesTheBufferEmptyAndFreed) {
  const CountingFunctions table;
  MAudioBuffer buffer;
  for (int32_t request = 0; request < 3; ++request) {
    FillByNumber(buffer, 2, 10);
    table.FailAfter(request);
    EXPECT_RAISES(buffer.SetSize(3, 10), kOutOfMemory, 0);
    EXPECT_EQ(buffer.GetChannelCount(), 0);
    EXPECT_EQ(buffer.GetLength(), 0);
    EXPECT_EQ(buffer.GetCapacity(), 0);
    EXPECT_EQ(buffer.GetChannel(0), nullptr);
    EXPECT_EQ(table.GetBalance(), 0);
  }
}

TEST(MAudioBufferMemory, RoomThatCannotBeHadLeavesTheBufferAsItWas) {
  const CountingFunctions table;
  {
    MAudioBuffer buffer;
    FillByNumber(buffer, 3, 10);
    for (int32_t request = 0; request < 3; ++request) {
      table.FailAfter(request);
      EXPECT_RAISES(buffer.Reserve(20), kOutOfMemory, 0);
      ExpectFilled(buffer, 3, 10);
      table.FailAfter(request);
      EXPECT_RAISES(buffer.Resize(20, true), kOutOfMemory, 0);
      ExpectFilled(buffer, 3, 10);
      table.FailAfter(request);
      EXPECT_RAISES(buffer.SetSize(3, 10, 20), kOutOfMemory, 0);
      ExpectFilled(buffer, 3, 10);
      EXPECT_EQ(buffer.GetCapacity(), 10);
      EXPECT_EQ(table.GetBalance(), 3);
    }
  }
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST(MAudioBufferMemory, BufferCanBeUsedAgainAfterAFailure) {
  const CountingFunctions table;
  MAudioBuffer buffer;
  table.FailAfter(1);
  EXPECT_RAISES(buffer.SetSize(2, 10), kOutOfMemory, 0);
  FillByNumber(buffer, 2, 10);
  ExpectFilled(buffer, 2, 10);
}

TEST(MAudioBufferMemory, OperationsForTheAudioThreadAllocateNothing) {
  MAudioBuffer buffer;
  FillByNumber(buffer, 8, 1000);
  const CountingFunctions table;
  buffer.Rotate(333);
  buffer.Fade(0, 1.0, 1000, 0.0);
  EXPECT_FALSE(buffer.IsAllBelow(1.0));
  buffer.Clear();
  buffer.Resize(10, true);
  buffer.Resize(1000, true);
  EXPECT_TRUE(buffer.IsAllBelow(0));
  EXPECT_EQ(table.GetCalls(), 0);
}

// A table that refuses blocks of a gigabyte and more, and notes the size of the last one.
class RefusingFunctions {
 public:
  RefusingFunctions() : before_(MGetLibraryFunctions()) {
    MSetLibraryFunctions({Allocate, nullptr, nullptr, nullptr, nullptr});
  }
  RefusingFunctions(const RefusingFunctions&) = delete;
  RefusingFunctions& operator=(const RefusingFunctions&) = delete;
  ~RefusingFunctions() { MSetLibraryFunctions(before_); }

  // And forgets it.
  static uint64_t TakeRefused() { return std::exchange(refused, 0); }

 private:
  static inline uint64_t refused = 0;
  static void* M_CALL Allocate(std::size_t size) {
    if (size < 1 << 30) return MGetDefaultLibraryFunctions().allocate(size);
    refused = size;
    return nullptr;
  }
  MLibraryFunctions before_;
};

TEST(MAudioBufferMemory, LongestLengthAsksForItsWholeSizeInBytes) {
  MAudioBuffer buffer;
  FillByNumber(buffer, 1, 4);
  const RefusingFunctions table;
  constexpr uint64_t kBytes = (uint64_t{INT32_MAX} + 2) * sizeof(float);
  EXPECT_RAISES(buffer.Reserve(INT32_MAX), kOutOfMemory, 0);
  EXPECT_EQ(table.TakeRefused(), kBytes);
  EXPECT_RAISES(buffer.Resize(INT32_MAX, true), kOutOfMemory, 0);
  EXPECT_EQ(table.TakeRefused(), kBytes);
  ExpectFilled(buffer, 1, 4);
  EXPECT_RAISES(buffer.SetSize(8, INT32_MAX), kOutOfMemory, 0);
  EXPECT_EQ(table.TakeRefused(), kBytes);
  EXPECT_RAISES(buffer.SetSize(8, 1, INT32_MAX), kOutOfMemory, 0);
  EXPECT_EQ(table.TakeRefused(), kBytes);
  EXPECT_EQ(buffer.GetChannelCount(), 0);
}

}  // namespace
