#include "core/MLock.h"

#include <optional>

#include "tests/core/Balanced.h"

namespace {

using MLockTest = Balanced;

// Counts what is done to it; cannot be acquired when told so.
class CountingSynchronizer final : public MSynchronizer {
 public:
  int32_t Acquire(uint32_t wait) override {
    lastWait = wait;
    ++acquired;
    return isFree ? 0 : 1;
  }
  void Release() override { ++released; }

  bool isFree = true;
  uint32_t lastWait = 0;
  int acquired = 0, released = 0;
};

TEST_F(MLockTest, AGuardReleasesAtItsEndAndOnExceptions) {
  CountingSynchronizer synchronizer;
  { const MLocker guard(synchronizer); }
  EXPECT_EQ(synchronizer.lastWait, 0xFFFFFFFFu);
  EXPECT_EQ(synchronizer.released, 1);
  EXPECT_RAISES(
      {
        const MLocker guard(synchronizer, 7);
        throw MException("text");
      },
      "text", 0);
  EXPECT_EQ(synchronizer.lastWait, 7u);
  EXPECT_EQ(synchronizer.released, 2);
}

TEST_F(MLockTest, AGuardThatCannotAcquireRaisesAndReleasesNothing) {
  CountingSynchronizer synchronizer;
  synchronizer.isFree = false;
  EXPECT_RAISES(MLocker(synchronizer, 0), "Could not acquire mutex.", 0);
  EXPECT_RAISES(MSharedLocker(synchronizer, 0), "Could not acquire mutex.", 0);
  EXPECT_EQ(synchronizer.released, 0);
}

TEST_F(MLockTest, TheLastCopyOfASharedGuardReleases) {
  CountingSynchronizer first, second;
  {
    std::optional<MSharedLocker> guard(std::in_place, first);
    const MSharedLocker copy(*guard);
    MSharedLocker other(second);
    other = copy;
    EXPECT_EQ(second.released, 1);
    other = *&other;
    guard.reset();
    EXPECT_EQ(first.released, 0);
  }
  EXPECT_EQ(first.acquired, 1);
  EXPECT_EQ(first.released, 1);
}

TEST_F(MLockTest, ASharedGuardWithoutMemoryAcquiresNothing) {
  CountingSynchronizer synchronizer;
  const int requests =
      FailEachRequest([] { return 0; }, [&](int) { const MSharedLocker guard(synchronizer); },
                      [&](int) { EXPECT_EQ(synchronizer.acquired, 0); });
  EXPECT_EQ(requests, 1);
}

TEST_F(MLockTest, ALockOnTheHeapComesFromTheTable) {
  delete new MLock;
  EXPECT_EQ(table.GetAllocated(), 1);
}

TEST_F(MLockTest, TheEventLockIsTheLibrarysOwnUntilAHostHandsInAnother) {
  MLock& own = MGetEventLock();
  MLock other;
  MSetEventLock(&other);
  EXPECT_EQ(&MGetEventLock(), &other);
  MSetEventLock(nullptr);
  EXPECT_EQ(&MGetEventLock(), &own);
}

TEST_F(MLockTest, AGuardOfTheEventLockReleasesTheLockThatItTook) {
  MLock other;
  {
    const MLocker guard(MGetEventLock());
    MSetEventLock(&other);
  }
  MSetEventLock(nullptr);
  EXPECT_EQ(MGetEventLock().Acquire(0), 0);
  MGetEventLock().Release();
}

}  // namespace
