#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tests/core/ThreadDoubles.h"

namespace {

TEST(MThreadStopAll, EndsEveryThreadAndLeavesTheObjects) {
  MSemaphore wake(false);
  std::vector<std::unique_ptr<TestThread>> threads;
  for (int t = 0; t < 8; ++t) threads.push_back(std::make_unique<TestThread>(RunUntilStopped));
  threads.push_back(std::make_unique<TestThread>([&](TestThread&) {
    wake.Acquire(kWaitForever);
    return 1;
  }));
  threads.back()->onWakeUp = [&] { wake.Release(); };
  for (const auto& thread : threads) thread->Start();
  threads.push_back(std::make_unique<TestThread>(RunUntilStopped));
  threads.back()->Create();  // one that is not started is not waited for
  EXPECT_TRUE(MThread::StopAll(60000));
  threads.pop_back();
  for (const auto& thread : threads) {
    EXPECT_TRUE(thread->Wait(0));
    EXPECT_EQ(thread->GetExitValue(), 1u);
  }
  EXPECT_TRUE(MThread::StopAll(0));
}

TEST(MThreadStopAll, TellsOfAThreadThatDoesNotStopInTime) {
  MSemaphore release(true);
  TestThread deaf([&](TestThread&) {
    release.Acquire(kWaitForever);
    return 0;
  });
  TestThread before(RunUntilStopped), behind(RunUntilStopped);
  before.Start();
  deaf.Start();
  behind.Start();
  EXPECT_FALSE(MThread::StopAll(20));
  EXPECT_TRUE(deaf.IsStopRequested());
  EXPECT_TRUE(before.Wait(kWaitForever));
  EXPECT_TRUE(behind.Wait(kWaitForever));
  release.Release();
  EXPECT_TRUE(MThread::StopAll(60000));
}

TEST(MThreadStopAll, LeavesAnObjectAloneThatIsBeingDestroyed) {
  auto* const thread = new TestThread([](TestThread&) { return 0; });
  std::atomic<int> wakeUps = 0;
  thread->onWakeUp = [&] { ++wakeUps; };
  thread->onDestroy = [&] {
    EXPECT_EQ(wakeUps, 1);
    OnAnotherThread([] { EXPECT_FALSE(MThread::StopAll(1)); });
    EXPECT_EQ(wakeUps, 1);
  };
  thread->SetDeleteOnFinish(true);
  thread->Start();
  WaitUntil([&] { return wakeUps == 1; });
  EXPECT_TRUE(MThread::StopAll(kWaitForever));
}

TEST(MThreadStopAll, DoesNotWaitForItsOwnThread) {
  std::atomic<bool> result = true;
  TestThread thread([&](TestThread& self) {
    result = MThread::StopAll(60000);
    return self.IsStopRequested() ? 1u : 0u;
  });
  thread.Start();
  EXPECT_TRUE(thread.Wait(kWaitForever));
  EXPECT_FALSE(result);
  EXPECT_EQ(thread.GetExitValue(), 1u);
}

}  // namespace
