// Each test repeats one race a thousand times; what it finds is found by the sanitizers.

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tests/common/CountingFunctions.h"
#include "tests/core/ThreadDoubles.h"

namespace {

constexpr int kRounds = 1000;

// Counts the ends that it is told of.
struct Receiver final : public MEventTarget {
  std::atomic<int> ends = 0;

  void Follow(MThread& thread) {
    thread.GetFinishEvent().Subscribe(this, [](MEventTarget* self, MWord, const MOnThreadNotifyParams& p) {
      EXPECT_FALSE(p.thread->IsRunning());
      ++static_cast<Receiver*>(self)->ends;
    });
    thread.SetReceiver(this);
  }
};

TEST(MThreadRace, DestroyedJustBehindItsStartItHasRun) {
  const CountingFunctions table;
  {
    std::atomic<int> runs = 0;
    for (int i = 0; i < kRounds; ++i) {
      TestThread thread([&](TestThread& self) {
        ++runs;
        return RunUntilStopped(self);
      });
      thread.Start();
    }
    EXPECT_EQ(runs, kRounds);
  }
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST(MThreadRace, DestroyedBetweenItsLastStepsItHasDoneThem) {
  Receiver receiver;
  int destroyedBefore = 0;
  for (int i = 0; i < kRounds; ++i) {
    std::atomic<bool> hasRun = false;
    auto thread = std::make_unique<TestThread>([&](TestThread&) {
      hasRun = true;
      return 0;
    });
    receiver.Follow(*thread);
    thread->Start();
    WaitUntil([&] { return hasRun && !thread->IsRunning(); });
    destroyedBefore += receiver.ends == i;
    thread.reset();
    ASSERT_EQ(receiver.ends, i + 1);
  }
  RecordProperty("destroyed_before_the_event", destroyedBefore);
}

TEST(MThreadRace, DestroyedWhileItNeverPollsTheFlag) {
  for (int i = 0; i < kRounds; ++i) {
    MSemaphore wake(true);
    TestThread thread([&](TestThread&) {
      wake.Acquire(kWaitForever);
      return 0;
    });
    thread.onWakeUp = [&] { wake.Release(); };
    thread.Start();
  }
}

TEST(MThreadRace, ThreadsThatDestroyThemselvesLeaveNothing) {
  const CountingFunctions table;
  {
    Receiver receiver;
    std::atomic<int> destroyed = 0;
    for (int i = 0; i < kRounds; ++i) {
      auto* const thread = new TestThread([](TestThread&) { return 0; });
      thread->onDestroy = [&] { ++destroyed; };
      thread->SetDeleteOnFinish(true);
      receiver.Follow(*thread);
      thread->Start();
    }
    EXPECT_TRUE(MThread::StopAll(kWaitForever));
    EXPECT_EQ(destroyed, kRounds);
    EXPECT_EQ(receiver.ends, kRounds);
  }
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST(MThreadRace, WaitedForAndDestroyedAtOnce) {
  for (int i = 0; i < kRounds; ++i) {
    auto thread = std::make_unique<TestThread>([](TestThread&) { return 5; });
    thread->Start();
    ASSERT_TRUE(thread->Wait(kWaitForever));
    ASSERT_EQ(thread->GetExitValue(), 5u);
  }
}

TEST(MThreadRace, ReceiverHeldByTheThreadOnly) {
  static std::atomic<int> alive;
  struct Held final : public MEventTarget {
    Held() { ++alive; }
    ~Held() override { --alive; }
  };
  alive = 0;
  std::atomic<int> ends = 0;
  for (int i = 0; i < kRounds; ++i) {
    TestThread thread([](TestThread&) { return 0; });
    auto held = std::make_shared<Held>();
    thread.GetFinishEvent().Subscribe(
        held.get(),
        [](MEventTarget*, MWord extra, const MOnThreadNotifyParams&) {
          EXPECT_GT(alive, 0);
          ++*reinterpret_cast<std::atomic<int>*>(extra);
        },
        reinterpret_cast<MWord>(&ends));
    MEventTarget* const receiver = held.get();
    thread.SetReceiver(receiver, std::move(held));
    thread.Start();
    thread.Wait(kWaitForever);
    ASSERT_EQ(alive, 0);
    ASSERT_EQ(ends, i + 1);
  }
}

TEST(MThreadRace, StopAllBesideDestructorsStartsAndSelfDestruction) {
  for (int i = 0; i < kRounds / 4; ++i) {
    std::vector<std::unique_ptr<TestThread>> threads;
    for (int t = 0; t < 3; ++t) {
      threads.push_back(std::make_unique<TestThread>(RunUntilStopped));
      threads.back()->Start();
    }
    auto* const own = new TestThread([](TestThread&) { return 0; });
    own->SetDeleteOnFinish(true);
    std::thread other([&] {
      own->Start();
      threads.clear();
    });
    EXPECT_TRUE(MThread::StopAll(kWaitForever));
    other.join();
  }
  EXPECT_TRUE(MThread::StopAll(kWaitForever));
}

TEST(MThreadRace, StartedStoppedAndAskedFromManyThreads) {
  for (int i = 0; i < kRounds / 4; ++i) {
    std::atomic<int> runs = 0;
    TestThread thread([&](TestThread& self) {
      ++runs;
      return RunUntilStopped(self);
    });
    thread.Create();
    std::vector<std::thread> others;
    for (int t = 0; t < 3; ++t)
      others.emplace_back([&, t] {
        thread.SetPriority(static_cast<MThread::Priority>(t));
        thread.Start();
        thread.SetPriority(static_cast<MThread::Priority>(t));
        thread.Wait(0);
        thread.Stop();
        thread.IsStopRequested();
      });
    for (std::thread& other : others) other.join();
    thread.StopAndJoin();
    EXPECT_EQ(runs, 1);
  }
}

}  // namespace
