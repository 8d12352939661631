#include <gtest/gtest.h>
#include <sys/mman.h>

#include <limits>

#include "core/MMemoryStream.h"
#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"
#include "tests/core/StreamDoubles.h"

namespace {

constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();

// Zeros without memory behind them.
class Desert {
 public:
  Desert() {
    bytes_ = mmap(nullptr, kHighest, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (bytes_ == MAP_FAILED) throw std::bad_alloc();
  }
  Desert(const Desert&) = delete;
  Desert& operator=(const Desert&) = delete;
  ~Desert() { munmap(bytes_, kHighest); }
  const void* GetBytes() const { return bytes_; }

 private:
  void* bytes_;
};

TEST(MMemoryStream, SizeAbove31BitsIsOutOfMemoryAndChangesNothing) {
  MMemoryStream stream;
  Put(stream, "abc");
  stream.Seek(kHighest, MSeekOrigin::kEnd);
  EXPECT_RAISES(Put(stream, "x"), "Out of memory.", 0);
  EXPECT_EQ(stream.GetPosition(), kHighest);
  EXPECT_EQ(stream.GetCapacity(), 3);
  EXPECT_EQ(All(stream), "abc");
}

std::size_t refused = 0;

void* M_CALL Refuse(std::size_t size) {
  if (size < 1 << 20) return MGetDefaultLibraryFunctions().allocate(size);
  refused = size;
  return nullptr;
}

TEST(MMemoryStream, DoublingStopsAt31Bits) {
  const Desert desert;
  MMemoryStream stream(desert.GetBytes(), 0x60000000);
  stream.Seek(0, MSeekOrigin::kEnd);
  const MLibraryFunctions before = MGetLibraryFunctions();
  MSetLibraryFunctions({Refuse, before.release, before.reallocate, nullptr, nullptr});
  EXPECT_RAISES(Put(stream, "x"), "Out of memory.", 0);
  MSetLibraryFunctions(before);
  EXPECT_EQ(refused, std::size_t{kHighest});
  EXPECT_EQ(stream.GetSize(), 0x60000000);
}

TEST(MMemoryStream, LineAtTheEndOfTheLargestStreamLeavesThePositionAtItsEnd) {
  const Desert desert;
  MMemoryStream stream(desert.GetBytes(), kHighest);
  stream.Seek(-3, MSeekOrigin::kEnd);
  EXPECT_EQ(Line(stream, 80), "0:");
  EXPECT_EQ(stream.GetPosition(), kHighest);
  EXPECT_TRUE(stream.IsEnd());
  stream.Seek(-1, MSeekOrigin::kEnd);
  EXPECT_EQ(Take(stream, kHighest / 4), std::string(1, '\0'));
  stream.Seek(kHighest, MSeekOrigin::kEnd);
  EXPECT_EQ(stream.GetPosition(), kHighest);
}

// Lets the first, second, ... request for memory of `use` fail until it passes; each failure must leave the
// stream as it was.
template <typename Use>
void ExpectUnchangedByFailures(MMemoryStream& stream, Use use) {
  const std::string bytes = All(stream);
  const int32_t capacity = stream.GetCapacity();
  const int64_t position = stream.GetPosition();
  int failures = 0;
  for (bool passed = false; !passed; ++failures) {
    CountingFunctions::FailAfter(failures);
    try {
      use();
      passed = true;
    } catch (const MException&) {
      CountingFunctions::FailAfter(-1);
      EXPECT_EQ(All(stream), bytes);
      EXPECT_EQ(stream.GetCapacity(), capacity);
      EXPECT_EQ(stream.GetPosition(), position);
    }
    CountingFunctions::FailAfter(-1);
  }
  EXPECT_GT(failures, 1);
}

TEST(MMemoryStream, FailedAllocationLeavesTheStreamAsItWas) {
  const CountingFunctions table;
  {
    MMemoryStream stream;
    ExpectUnchangedByFailures(stream, [&] { Put(stream, "abc"); });
    ExpectUnchangedByFailures(stream, [&] { Put(stream, "de"); });
    const MMemoryStream copy(stream);
    ExpectUnchangedByFailures(stream, [&] { Put(stream, "f"); });
    ExpectUnchangedByFailures(stream, [&] { stream.SetCapacity(100); });
    ExpectUnchangedByFailures(stream, [&] { stream.Clear(); });
    static constexpr char kBytes[] = "constant";
    MMemoryStream view(kBytes, 8);
    ExpectUnchangedByFailures(view, [&] { Put(view, "x"); });
  }
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST(MMemoryStream, FailedConstructionKeepsNothing) {
  const CountingFunctions table;
  CountingFunctions::FailAfter(0);
  EXPECT_RAISES(MMemoryStream(), "Out of memory.", 0);
  CountingFunctions::FailAfter(0);
  EXPECT_RAISES(MMemoryStream("abc", 3), "Out of memory.", 0);
  EXPECT_EQ(table.GetBalance(), 0);
}

}  // namespace
