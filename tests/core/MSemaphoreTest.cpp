#include "core/MSemaphore.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tests/common/Texts.h"
#include "tests/core/ThreadDoubles.h"

namespace {

using std::chrono::milliseconds;

TEST(MSemaphore, IsNotSignalledAtTheStart) {
  for (const bool consuming : {false, true}) {
    MSemaphore semaphore(consuming);
    EXPECT_NE(semaphore.Acquire(0), 0);
  }
}

TEST(MSemaphore, ConsumingReleasedTwiceGetsThroughOneWait) {
  MSemaphore semaphore(true);
  semaphore.Release();
  semaphore.Release();
  EXPECT_EQ(semaphore.Acquire(0), 0);
  EXPECT_NE(semaphore.Acquire(0), 0);
  semaphore.Release();
  EXPECT_EQ(semaphore.Acquire(kWaitForever), 0);
  EXPECT_NE(semaphore.Acquire(1), 0);
}

TEST(MSemaphore, NonConsumingStaysSignalled) {
  MSemaphore semaphore(false);
  semaphore.Release();
  semaphore.Release();
  for (int i = 0; i < 100; ++i) EXPECT_EQ(semaphore.Acquire(i % 2 ? 1 : kWaitForever), 0);
}

TEST(MSemaphore, TimedWaitFailsAfterTheTime) {
  for (const bool consuming : {false, true}) {
    MSemaphore semaphore(consuming);
    EXPECT_GE(Duration([&] { EXPECT_NE(semaphore.Acquire(30), 0); }), milliseconds(30));
  }
}

TEST(MSemaphore, ReleaseWakesEveryWaiterOfALatch) {
  MSemaphore semaphore(false);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) threads.emplace_back([&] { EXPECT_EQ(semaphore.Acquire(kWaitForever), 0); });
  Sleep(10);
  semaphore.Release();
  for (std::thread& thread : threads) thread.join();
}

TEST(MSemaphore, EachReleaseWakesOneWaiterWhenConsuming) {
  MSemaphore semaphore(true);
  std::atomic<int> through = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      EXPECT_EQ(semaphore.Acquire(kWaitForever), 0);
      ++through;
    });
  for (int released = 1; released <= 4; ++released) {
    semaphore.Release();
    WaitUntil([&] { return through == released; });
    Sleep(5);
    EXPECT_EQ(through, released);
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(MSemaphore, LockerRaisesWhenNoSignalComesInTime) {
  MSemaphore semaphore(true);
  EXPECT_RAISES(MLocker(semaphore, 5), "Could not acquire mutex.", 0);
  semaphore.Release();
  { const MLocker locker(semaphore, 0); }
  EXPECT_EQ(semaphore.Acquire(0), 0);
}

TEST(MSemaphore, TwoThreadsTakeTurns) {
  MSemaphore ping(true), pong(true);
  int turns = 0;
  std::thread other([&] {
    for (int i = 0; i < 1000; ++i) {
      ping.Acquire(kWaitForever);
      ++turns;
      pong.Release();
    }
  });
  for (int i = 0; i < 1000; ++i) {
    ping.Release();
    ASSERT_EQ(pong.Acquire(kWaitForever), 0);
    ASSERT_EQ(turns, i + 1);
  }
  other.join();
}

TEST(MSemaphore, WokenThreadMayDestroyIt) {
  MSemaphore next(true);
  std::atomic<MSemaphore*> current = nullptr;
  std::thread releasing([&] {
    for (int i = 0; i < 1000; ++i) {
      next.Acquire(kWaitForever);
      current.load()->Release();
    }
  });
  for (int i = 0; i < 1000; ++i) {
    auto semaphore = std::make_unique<MSemaphore>(i % 2 == 0);
    current = semaphore.get();
    next.Release();
    ASSERT_EQ(semaphore->Acquire(kWaitForever), 0);
  }
  releasing.join();
}

}  // namespace
