#include <atomic>
#include <chrono>
#include <thread>

#include "core/MLock.h"
#include "tests/core/Balanced.h"
#include "tests/core/OnThreads.h"

namespace {

using MLockThreads = Balanced;

// What one try on another thread gives.
int32_t TryElsewhere(MLock& lock) {
  int32_t result = -1;
  OnAnotherThread([&] {
    result = lock.Acquire(0);
    if (result == 0) lock.Release();
  });
  return result;
}

TEST_F(MLockThreads, AcquireBlocksOnAHeldLockUntilItsRelease) {
  for (const uint32_t wait : {1u, 0xFFFFFFFFu}) {
    MLock lock;
    std::atomic<bool> isReleased = false, wasReleased = false, isStarted = false;
    lock.Acquire(wait);
    std::thread other([&] {
      isStarted = true;
      EXPECT_EQ(lock.Acquire(wait), 0);
      wasReleased = isReleased.load();
      lock.Release();
    });
    while (!isStarted) std::this_thread::yield();
    std::this_thread::sleep_for(
        std::chrono::milliseconds(20));  // longer than a wait of 1 could mean as a time
    isReleased = true;
    lock.Release();
    other.join();
    EXPECT_TRUE(wasReleased);
  }
}

TEST_F(MLockThreads, TryingALockThatAnotherThreadHoldsFails) {
  MLock lock;
  lock.Acquire(1);
  EXPECT_NE(TryElsewhere(lock), 0);
  OnAnotherThread([&] { EXPECT_RAISES(MLocker(lock, 0), "Could not acquire mutex.", 0); });
  lock.Release();
  EXPECT_EQ(TryElsewhere(lock), 0);
}

TEST_F(MLockThreads, ItsThreadEntersAgainAndReleasesAsOften) {
  MLock lock;
  EXPECT_EQ(lock.Acquire(1), 0);
  EXPECT_EQ(lock.Acquire(0), 0);
  { const MLocker guard(lock); }
  lock.Release();
  EXPECT_NE(TryElsewhere(lock), 0);
  lock.Release();
  EXPECT_EQ(TryElsewhere(lock), 0);
}

TEST_F(MLockThreads, ExcludesThreadsFromEachOther) {
  MLock lock;
  int64_t count = 0;
  OnThreads(8, [&](int) {
    for (int i = 0; i < 2000; ++i) {
      const MLocker guard(lock);
      ++count;
    }
  });
  EXPECT_EQ(count, 8 * 2000);
}

TEST_F(MLockThreads, TheOwnEventLockIsOneForThreadsThatAskForItAtOnce) {
  MLock* locks[8] = {};
  OnThreads(8, [&](int thread) { locks[thread] = &MGetEventLock(); });
  for (const MLock* const lock : locks) EXPECT_EQ(lock, locks[0]);
}

}  // namespace
