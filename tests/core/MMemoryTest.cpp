#include "core/MMemory.h"

#include <vector>

#include "core/MObject.h"
#include "tests/core/Balanced.h"

namespace {

const MLibraryFunctions& Default() {
  return MGetDefaultLibraryFunctions();
}

TEST(MLibraryFunctions, DefaultReleaseOfNullRaisesItsUntranslatedMessage) {
  EXPECT_RAISES(Default().release(nullptr), "NULL cannot be released.", 0);
}

TEST(MLibraryFunctions, DefaultReallocateOfNullToNothingGivesNull) {
  EXPECT_EQ(Default().reallocate(nullptr, 0), nullptr);
}

TEST(MLibraryFunctions, DefaultReallocateToNothingReleases) {
  EXPECT_EQ(Default().reallocate(Default().allocate(8), 0), nullptr);  // a leak would be reported at the end
}

TEST(MLibraryFunctions, DefaultReallocateOfNullAllocatesAndKeepsTheBytesWhenItGrows) {
  char* block = static_cast<char*>(Default().reallocate(nullptr, 4));
  std::fill_n(block, 4, 'x');
  block = static_cast<char*>(Default().reallocate(block, 100000));
  EXPECT_EQ(std::string(block, 4), "xxxx");
  Default().release(block);
}

TEST(MLibraryFunctions, DefaultAllocateOfNothingGivesABlock) {
  void* const block = Default().allocate(0);
  EXPECT_NE(block, nullptr);
  Default().release(block);
}

TEST(MLibraryFunctions, DefaultsRaiseWhenTheHeapIsExhausted) {
  const std::size_t tooMuch = std::size_t{1} << (8 * sizeof(std::size_t) - 2);
  EXPECT_RAISES(static_cast<void>(Default().allocate(tooMuch)), "Out of memory.", 0);
  void* const block = Default().allocate(8);
  EXPECT_RAISES(static_cast<void>(Default().reallocate(block, tooMuch)), "Out of memory.", 0);
  Default().release(block);  // it is still there
}

TEST(MLibraryFunctions, NullEntriesOfAHostBecomeTheDefaults) {
  const MLibraryFunctions before = MGetLibraryFunctions();
  MSetLibraryFunctions({});
  EXPECT_EQ(MGetLibraryFunctions().allocate, Default().allocate);
  EXPECT_EQ(MGetLibraryFunctions().release, Default().release);
  EXPECT_EQ(MGetLibraryFunctions().reallocate, Default().reallocate);
  EXPECT_EQ(MGetLibraryFunctions().reservedHook1, Default().reservedHook1);
  EXPECT_EQ(MGetLibraryFunctions().reservedHook2, Default().reservedHook2);
  MSetLibraryFunctions(before);
}

TEST(MLibraryFunctions, TheTableMayChangeWhileABlockOfTheDefaultsIsInUse) {
  MString text = Buffer("abc");
  {
    const CountingFunctions table;
    text.AppendRepeated(u'x', 1000);
    EXPECT_EQ(table.GetReallocated(), 1);  // the new table works from the next operation on
  }
  EXPECT_EQ(text.GetLength(), 1003);
}

using MMemory = Balanced;

TEST_F(MMemory, ReallocateOfNullToNothingAllocatesNothing) {
  EXPECT_EQ(MReallocate(nullptr, 0), nullptr);
  EXPECT_EQ(table.GetAllocated(), 0);
}

TEST_F(MMemory, ReallocateToNothingReleases) {
  EXPECT_EQ(MReallocate(MAllocate(8), 0), nullptr);
}

TEST_F(MMemory, AHostThatReturnsNullIsOutOfMemory) {
  table.FailAfter(0);
  EXPECT_RAISES(static_cast<void>(MAllocate(8)), "Out of memory.", 0);
  table.FailAfter(0);
  EXPECT_RAISES(static_cast<void>(MReallocate(nullptr, 8)), "Out of memory.", 0);
}

TEST_F(MMemory, NullForABlockOfNoBytesIsNoFailure) {
  MLibraryFunctions functions = MGetLibraryFunctions();
  functions.allocate = [](std::size_t) -> void* { return nullptr; };
  const MLibraryFunctions before = MGetLibraryFunctions();
  MSetLibraryFunctions(functions);
  EXPECT_EQ(MAllocate(0), nullptr);
  MSetLibraryFunctions(before);
}

struct Record {
  M_LIBRARY_MEMORY

  int value = 7;
};

TEST_F(MMemory, RecordsComeFromTheTable) {
  delete new Record;
  EXPECT_EQ(table.GetAllocated(), 1);
  EXPECT_EQ(table.GetReleased(), 1);
}

TEST_F(MMemory, DeletingNullDoesNotReachTheTable) {
  delete static_cast<Record*>(nullptr);
  EXPECT_EQ(table.GetCalls(), 0);
}

TEST_F(MMemory, ARecordWithoutMemoryRaises) {
  table.FailAfter(0);
  EXPECT_RAISES(delete new Record, "Out of memory.", 0);
}

template <typename T>
constexpr bool kHasArrays = requires {
  new T[2];
};

TEST_F(MMemory, ArraysOfRecordsCannotBypassTheTable) {
  EXPECT_FALSE(kHasArrays<Record>);
}

TEST_F(MMemory, ContainersLiveOnTheTableAndRaiseOurException) {
  std::vector<int, MAllocator<int>> numbers(100, 1);
  EXPECT_EQ(table.GetAllocated(), 1);
  table.FailAfter(0);
  EXPECT_RAISES(numbers.resize(1000), "Out of memory.", 0);
  EXPECT_EQ(numbers.size(), 100u);
  EXPECT_RAISES(static_cast<void>(MAllocator<double>().allocate(~std::size_t{0})), "Out of memory.", 0);
}

class Base : public MObject {};
class Derived final : public Base {
 public:
  explicit Derived(bool& destroyed) : destroyed_(destroyed) {}
  ~Derived() override { destroyed_ = true; }

 private:
  bool& destroyed_;
  MString text_ = Buffer("member");
};

TEST_F(MMemory, AnObjectIsDestroyedThroughItsBaseAndGoesBackToTheTable) {
  bool destroyed = false;
  Base* const object = new Derived(destroyed);
  EXPECT_EQ(table.GetBalance(), 2);
  delete object;
  EXPECT_TRUE(destroyed);
}

class ThrowsAtItsEnd final : public MObject {
 public:
  ~ThrowsAtItsEnd() override { throw MException("unfinished"); }
};

TEST_F(MMemory, ADestructorMayReportAFailureAndItsMemoryComesBack) {
  EXPECT_RAISES(delete new ThrowsAtItsEnd, "unfinished", 0);
}

}  // namespace
