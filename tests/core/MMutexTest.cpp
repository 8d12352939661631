#include "core/MMutex.h"

#include <gtest/gtest.h>

#include <vector>

#include "core/MTranslate.h"
#include "tests/common/Texts.h"
#include "tests/core/ThreadDoubles.h"

namespace {

using std::chrono::milliseconds;

int32_t AcquireOnAnotherThread(MSynchronizer& synchronizer, uint32_t wait) {
  int32_t result = -1;
  OnAnotherThread([&] {
    result = synchronizer.Acquire(wait);
    if (result == 0) synchronizer.Release();
  });
  return result;
}

TEST(MMutex, OwnThreadEntersAgainAndLeavesAsOftenAsItEntered) {
  MMutex mutex;
  for (const uint32_t wait : {0u, 1u, kWaitForever}) EXPECT_EQ(mutex.Acquire(wait), 0);
  for (int i = 0; i < 3; ++i) {
    EXPECT_NE(AcquireOnAnotherThread(mutex, 0), 0);
    mutex.Release();
  }
  EXPECT_EQ(AcquireOnAnotherThread(mutex, 0), 0);
}

TEST(MMutex, TimedWaitFailsAfterTheTime) {
  MMutex mutex;
  const MLocker locker(mutex);
  const auto duration = Duration([&] { EXPECT_NE(AcquireOnAnotherThread(mutex, 30), 0); });
  EXPECT_GE(duration, milliseconds(30));
}

TEST(MMutex, WaitEndsWithTheReleaseOfTheOwner) {
  for (const uint32_t wait : {60000u, kWaitForever}) {
    MMutex mutex;
    std::atomic<bool> isWaiting = false;
    std::atomic<bool> isReleased = false;
    ASSERT_EQ(mutex.Acquire(0), 0);
    std::thread other([&] {
      isWaiting = true;
      EXPECT_EQ(mutex.Acquire(wait), 0);
      EXPECT_TRUE(isReleased);
      mutex.Release();
    });
    WaitUntil([&] { return isWaiting.load(); });
    Sleep(20);
    isReleased = true;
    mutex.Release();
    other.join();
  }
}

TEST(MMutex, ReleaseWithoutHoldingDoesNothing) {
  MMutex mutex;
  mutex.Release();
  ASSERT_EQ(mutex.Acquire(0), 0);
  OnAnotherThread([&] { mutex.Release(); });
  EXPECT_NE(AcquireOnAnotherThread(mutex, 0), 0);
  mutex.Release();
  mutex.Release();
  EXPECT_EQ(AcquireOnAnotherThread(mutex, 0), 0);
}

TEST(MMutex, LockerRaisesAnUntranslatedMessageAfterTheTime) {
  MTranslationTable table;
  table.Set("Could not acquire mutex.", "", "translated");
  MTranslationTable* const before = MSetTranslationTable(&table);
  MMutex mutex;
  const MLocker locker(mutex);
  OnAnotherThread([&] { EXPECT_RAISES(MLocker(mutex, 5), "Could not acquire mutex.", 0); });
  MSetTranslationTable(before);
}

TEST(MMutex, OnlyOneThreadIsInside) {
  MMutex mutex;
  int count = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < 2000; ++i) {
        const MLocker outer(mutex);
        const MLocker inner(mutex, 1);
        ++count;
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(count, 8000);
}

TEST(MLock, AcquireWithATimeoutOfOneWaitsAsLongAsItTakes) {
  MLock lock;
  std::atomic<bool> isWaiting = false;
  std::atomic<bool> isReleased = false;
  ASSERT_EQ(lock.Acquire(0), 0);
  std::thread other([&] {
    EXPECT_NE(lock.Acquire(0), 0);
    isWaiting = true;
    EXPECT_EQ(lock.Acquire(1), 0);
    EXPECT_TRUE(isReleased);
    lock.Release();
  });
  WaitUntil([&] { return isWaiting.load(); });
  Sleep(30);
  isReleased = true;
  lock.Release();
  other.join();
}

}  // namespace
