#include "core/MThread.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <vector>

#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"
#include "tests/core/ThreadDoubles.h"

namespace {

using std::chrono::milliseconds;

TEST(MThread, BodyIsByDefaultEmptyAndReturnsZero) {
  MThread thread;
  thread.Start();
  EXPECT_TRUE(thread.Wait(kWaitForever));
  EXPECT_EQ(thread.GetExitValue(), 0u);
  thread.StopAndJoin();
}

TEST(MThread, BodyRunsOnAnotherThreadAndItsResultIsKept) {
  std::thread::id id;
  TestThread thread([&](TestThread& self) {
    id = std::this_thread::get_id();
    EXPECT_TRUE(self.IsRunning());
    EXPECT_EQ(self.GetExitValue(), 0u);
    return 0xFFFFFFFE;
  });
  EXPECT_FALSE(thread.IsRunning());
  thread.Start();
  EXPECT_TRUE(thread.Wait(kWaitForever));
  EXPECT_FALSE(thread.IsRunning());
  EXPECT_EQ(thread.GetExitValue(), 0xFFFFFFFE);
  EXPECT_NE(id, std::this_thread::get_id());
}

TEST(MThread, SecondStartMakesNoSecondThreadAndClearsTheStopFlag) {
  std::atomic<int> runs = 0;
  MSemaphore release(true);
  TestThread thread([&](TestThread&) {
    ++runs;
    release.Acquire(kWaitForever);
    return 0;
  });
  EXPECT_FALSE(thread.IsStopRequested());
  thread.Start();
  WaitUntil([&] { return runs == 1; });
  thread.Stop();
  EXPECT_TRUE(thread.IsStopRequested());
  thread.Start();
  EXPECT_FALSE(thread.IsStopRequested());
  EXPECT_TRUE(thread.IsRunning());
  release.Release();
  EXPECT_TRUE(thread.Wait(kWaitForever));
  EXPECT_EQ(runs, 1);
}

TEST(MThread, StartBehindTheEndStartsNothingAndClearsTheStopFlag) {
  std::atomic<int> runs = 0;
  TestThread thread([&](TestThread&) { return ++runs, 0; });
  thread.Start();
  EXPECT_TRUE(thread.Wait(kWaitForever));
  thread.Stop();
  thread.Start();
  EXPECT_FALSE(thread.IsStopRequested());
  EXPECT_TRUE(thread.Wait(kWaitForever));
  EXPECT_FALSE(thread.IsRunning());
  EXPECT_EQ(runs, 1);
}

TEST(MThread, StopBeforeStartIsForgotten) {
  TestThread thread([](TestThread& self) { return self.IsStopRequested() ? 2u : 1u; });
  thread.Stop();
  thread.Start();
  EXPECT_TRUE(thread.Wait(kWaitForever));
  EXPECT_EQ(thread.GetExitValue(), 1u);
}

TEST(MThread, CreatedThreadRunsNothingBeforeItsStartAndIsDestroyedCleanly) {
  std::atomic<int> runs = 0;
  {
    TestThread thread([&](TestThread&) { return ++runs, 0; });
    thread.Create();
    thread.Create();
    EXPECT_GE(Duration([&] { EXPECT_FALSE(thread.Wait(20)); }), milliseconds(20));
    EXPECT_FALSE(thread.IsRunning());
  }
  EXPECT_EQ(runs, 0);
  TestThread thread([&](TestThread&) { return ++runs, 0; });
  thread.Create();
  thread.Start();
  EXPECT_TRUE(thread.Wait(kWaitForever));
  EXPECT_EQ(runs, 1);
}

TEST(MThread, WaitWithoutAThreadRaises) {
  TestThread thread(RunUntilStopped);
  EXPECT_RAISES(thread.Wait(0), "Could not wait for a thread.", 0);
}

TEST(MThread, WaitTellsWhetherTheThreadEndedInTime) {
  TestThread thread(RunUntilStopped);
  thread.Start();
  EXPECT_FALSE(thread.Wait(0));
  EXPECT_GE(Duration([&] { EXPECT_FALSE(thread.Wait(10)); }), milliseconds(10));
  thread.Stop();
  EXPECT_TRUE(thread.Wait(60000));
  EXPECT_TRUE(thread.Wait(0));
  EXPECT_EQ(thread.GetExitValue(), 1u);
}

TEST(MThread, SeveralThreadsMayWaitForOne) {
  TestThread thread(RunUntilStopped);
  thread.Start();
  std::vector<std::thread> waiting;
  for (int t = 0; t < 4; ++t) waiting.emplace_back([&] { EXPECT_TRUE(thread.Wait(kWaitForever)); });
  thread.StopAndJoin();
  for (std::thread& other : waiting) other.join();
}

TEST(MThread, ThreadThatWaitsForItselfDoesNotWait) {
  TestThread thread([](TestThread& self) {
    EXPECT_FALSE(self.Wait(kWaitForever));
    self.StopAndJoin();
    return self.IsStopRequested() ? 3u : 0u;
  });
  thread.Start();
  EXPECT_TRUE(thread.Wait(kWaitForever));
  EXPECT_EQ(thread.GetExitValue(), 3u);
}

TEST(MThread, StopWakesTheBody) {
  MSemaphore wake(true);
  TestThread thread([&](TestThread& self) {
    while (!self.IsStopRequested()) wake.Acquire(kWaitForever);
    return 0;
  });
  thread.onWakeUp = [&] { wake.Release(); };
  thread.Start();
  thread.Stop();
  EXPECT_TRUE(thread.Wait(kWaitForever));
}

TEST(MThread, StoppedForGoodItIsNotStartedAgain) {
  std::atomic<int> runs = 0;
  TestThread thread([&](TestThread&) { return ++runs, 0; });
  thread.StopAndJoin();
  thread.StopAndJoin();
  thread.Start();
  EXPECT_TRUE(thread.IsStopRequested());
  EXPECT_RAISES(thread.Wait(0), "Could not wait for a thread.", 0);
  EXPECT_EQ(runs, 0);
}

// A stack that no address space holds keeps the system from making threads.
class NoMoreThreads {
 public:
  NoMoreThreads() {
    pthread_getattr_default_np(&before_);
    pthread_attr_t huge;
    pthread_getattr_default_np(&huge);
    pthread_attr_setstacksize(&huge, std::size_t{1} << 50);
    EXPECT_EQ(pthread_setattr_default_np(&huge), 0);
    pthread_attr_destroy(&huge);
  }
  NoMoreThreads(const NoMoreThreads&) = delete;
  NoMoreThreads& operator=(const NoMoreThreads&) = delete;
  ~NoMoreThreads() {
    pthread_setattr_default_np(&before_);
    pthread_attr_destroy(&before_);
  }

 private:
  pthread_attr_t before_;
};

TEST(MThread, StartRaisesWhenTheSystemMakesNoThreadAndMayBeTriedAgain) {
  TestThread thread(RunUntilStopped);
  {
    const NoMoreThreads limit;
    EXPECT_RAISES(thread.Start(), "Could not create system thread.", 0);
    EXPECT_RAISES(thread.Wait(0), "Could not wait for a thread.", 0);
  }
  thread.Start();
  thread.Stop();
  EXPECT_TRUE(thread.Wait(kWaitForever));
}

TEST(MThread, MemoryGoesBackToTheTable) {
  const CountingFunctions table;
  {
    TestThread thread(RunUntilStopped);
    thread.Start();
    EXPECT_GT(table.GetBalance(), 0);
  }
  EXPECT_EQ(table.GetBalance(), 0);
  for (int64_t failing = 0; failing < 2; ++failing) {
    CountingFunctions::FailAfter(failing);
    EXPECT_RAISES(MThread(), "Out of memory.", 0);
    EXPECT_EQ(table.GetBalance(), 0);
  }
}

}  // namespace
