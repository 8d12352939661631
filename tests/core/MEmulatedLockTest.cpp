#include "core/MEmulatedLock.h"

#include <gtest/gtest.h>

#include <vector>

#include "core/MTranslate.h"
#include "tests/common/Texts.h"
#include "tests/core/ThreadDoubles.h"

namespace {

using std::chrono::milliseconds;

// Counts its calls; gives every mode that it is told to give.
class ModeLock final : public MEmulatedLock {
 public:
  enum class Answer { kFree, kBusy, kRefused };
  std::atomic<Answer> answer = Answer::kFree;
  std::atomic<int> tries = 0;
  std::vector<uint32_t> acquired, released;

 private:
  Outcome TryAcquire(uint32_t mode) override {
    ++tries;
    if (answer == Answer::kBusy) return Outcome::kBusy;
    if (answer == Answer::kRefused) return Outcome::kRefused;
    acquired.push_back(mode);
    return Outcome::kAcquired;
  }
  void ReleaseMode(uint32_t mode) override { released.push_back(mode); }
};

using Modes = std::vector<uint32_t>;

TEST(MEmulatedLock, ModeIsTheLowest28Bits) {
  ModeLock lock;
  for (const uint32_t mode : {0u, 5u, 0x0FFFFFFFu, 0x40000007u, 0xF0000001u}) {
    EXPECT_EQ(lock.Acquire(mode, 0), 0);
    lock.Release(mode);
  }
  EXPECT_EQ(lock.acquired, Modes({0, 5, 0x0FFFFFFF, 7, 1}));
  EXPECT_EQ(lock.released, Modes({0, 5, 0x0FFFFFFF, 7, 1}));
}

TEST(MEmulatedLock, ReleaseYieldsUnlessItsFlagSaysNo) {
  ModeLock lock;
  const YieldCounter yields;
  lock.Acquire(3, kWaitForever);
  EXPECT_EQ(yields.Get(), 0);
  lock.Release(3);
  EXPECT_EQ(yields.Get(), 1);
  lock.Release(3 | MEmulatedLock::kNoYield);
  EXPECT_EQ(yields.Get(), 1);
  { const MEmulatedLocker locker(lock, 3); }
  EXPECT_EQ(yields.Get(), 2);
  { const MEmulatedLocker locker(lock, 3 | MEmulatedLock::kNoYield); }
  EXPECT_EQ(yields.Get(), 2);
}

TEST(MEmulatedLock, WithoutTimeThereIsOneTry) {
  ModeLock lock;
  lock.answer = ModeLock::Answer::kBusy;
  const YieldCounter yields;
  EXPECT_NE(lock.Acquire(1, 0), 0);
  EXPECT_EQ(lock.tries, 1);
  EXPECT_EQ(yields.Get(), 0);
}

TEST(MEmulatedLock, TimedWaitFailsAfterTheTime) {
  ModeLock lock;
  lock.answer = ModeLock::Answer::kBusy;
  EXPECT_GE(Duration([&] { EXPECT_NE(lock.Acquire(1, 30), 0); }), milliseconds(30));
}

TEST(MEmulatedLock, WaiterYieldsAndTriesAgainBehindEachRelease) {
  for (const uint32_t wait : {60000u, kWaitForever}) {
    ModeLock lock;
    lock.answer = ModeLock::Answer::kBusy;
    const YieldCounter yields;
    std::thread other([&] { EXPECT_EQ(lock.Acquire(1, wait), 0); });
    WaitUntil([&] { return lock.tries == 1 && yields.Get() == 1; });
    lock.Release(2 | MEmulatedLock::kNoYield);
    WaitUntil([&] { return lock.tries == 2 && yields.Get() == 2; });
    lock.answer = ModeLock::Answer::kFree;
    lock.Release(2 | MEmulatedLock::kNoYield);
    other.join();
    EXPECT_EQ(lock.tries, 3);
  }
}

TEST(MEmulatedLock, RefusedModeIsNotWaitedFor) {
  ModeLock lock;
  lock.answer = ModeLock::Answer::kRefused;
  EXPECT_NE(lock.Acquire(1, kWaitForever), 0);
  EXPECT_EQ(lock.tries, 1);
}

TEST(MEmulatedLocker, RaisesATranslatedMessageAndReleasesNothing) {
  ModeLock lock;
  lock.answer = ModeLock::Answer::kBusy;
  EXPECT_RAISES(MEmulatedLocker(lock, 1, 5), "Could not acquire emulated synchronization object.", 0);
  MTranslationTable table;
  table.Set("Could not acquire emulated synchronization object.", "", "translated");
  MTranslationTable* const before = MSetTranslationTable(&table);
  EXPECT_RAISES(MEmulatedLocker(lock, 1, 0), "translated", 0);
  MSetTranslationTable(before);
  EXPECT_EQ(lock.released, Modes());
}

}  // namespace
