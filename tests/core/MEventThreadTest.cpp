// Events that several threads use at once.

#include <atomic>
#include <chrono>
#include <memory>

#include "tests/core/Balanced.h"
#include "tests/core/Listener.h"
#include "tests/core/OnThreads.h"

namespace {

using MEventThreads = Balanced;

// A target that counts, without a lock.
class Counter final : public MEventTarget {
 public:
  static void Count(MEventTarget* subscriber, MWord extra, const MOnNotifyParams&) {
    static_cast<Counter*>(subscriber)->count += extra;
  }
  std::atomic<int64_t> count = 0;
};

TEST_F(MEventThreads, TheEventLockIsFreeWhileAHandlerRuns) {
  NotifyEvent event;
  Counter late;
  Listener listener([&](auto&) { OnAnotherThread([&] { event.Subscribe(&late, Counter::Count, 1); }); });
  listener.SubscribeTo(event);
  event.Fire({nullptr, 1});
  EXPECT_EQ(late.count, 0);
  listener.onCall = nullptr;
  event.Fire({nullptr, 2});
  EXPECT_EQ(late.count, 1);
}

TEST_F(MEventThreads, SubscriptionsMayComeAndGoWhileOneThreadDelivers) {
  NotifyEvent event;
  Counter always, sometimes[3];
  event.Subscribe(&always, Counter::Count, 1);
  constexpr int kFires = 2000;
  std::atomic<bool> isDone = false;
  OnThreads(4, [&](int thread) {
    if (thread == 0) {
      for (int i = 0; i < kFires; ++i) event.Fire({&always, i});
      isDone = true;
      return;
    }
    Counter& counter = sometimes[thread - 1];
    while (!isDone) {
      event.Subscribe(&counter, Counter::Count, 1);
      const MCallback<MOnNotifyParams> callback(event, &counter, Counter::Count, 0);
      event.Unsubscribe(&counter, Counter::Count, 1);
    }
  });
  EXPECT_EQ(always.count, kFires);
  for (Counter& counter : sometimes) {
    EXPECT_FALSE(event.IsLinkedWith(counter));
    EXPECT_LE(counter.count, kFires);
  }
}

TEST_F(MEventThreads, TargetsMayBeMadeAndDestroyedWhileOthersHear) {
  NotifyEvent event;
  OnThreads(4, [&](int) {
    for (int i = 0; i < 500; ++i) {
      Counter counter;  // nobody delivers to it meanwhile
      event.Subscribe(&counter, Counter::Count, 1);
      event.Post({&counter, i});
    }
  });
  EXPECT_RAISES(event.Pop(), "Index out of range.", 0);
}

TEST_F(MEventThreads, EveryFiredEntryIsDeliveredOnce) {
  NotifyEvent event;
  Counter counter, senders[4];
  event.Subscribe(&counter, Counter::Count, 1);
  OnThreads(4, [&](int thread) {
    for (int i = 0; i < 1000; ++i) event.Fire({&senders[thread], i});
  });
  EXPECT_EQ(counter.count, 4000);
  for (Counter& sender : senders) EXPECT_FALSE(event.IsLinkedWith(sender));
}

TEST_F(MEventThreads, PostedEntriesAreDrainedOnceAndInTheOrderOfEachThread) {
  NotifyEvent event;
  Listener listener;
  listener.SubscribeTo(event);
  constexpr int kPosts = 500, kThreads = 3;
  std::atomic<int> posting = kThreads;
  OnThreads(kThreads + 1, [&](int thread) {
    if (thread == kThreads) {
      while (posting > 0) MEventQueue::Drain();
      return;
    }
    for (int i = 0; i < kPosts; ++i) event.Post({nullptr, thread * kPosts + i});
    --posting;
  });
  MEventQueue::Drain();
  ASSERT_EQ(listener.calls.size(), static_cast<std::size_t>(kThreads * kPosts));
  MWord next[kThreads] = {};
  for (const MWord argument : listener.Heard()) EXPECT_EQ(argument % kPosts, next[argument / kPosts]++);
}

TEST_F(MEventThreads, AnEventMayBeDestroyedElsewhereWhileItsHandlerRuns) {
  for (int round = 0; round < 100; ++round) {
    auto event = std::make_unique<NotifyEvent>();
    Counter counter;
    Listener listener([&](auto&) { OnAnotherThread([&] { event = nullptr; }); });
    listener.SubscribeTo(*event);
    event->Subscribe(&counter, Counter::Count, 1);
    event->Fire({&counter, 1});
    EXPECT_EQ(counter.count, 0);
  }
}

TEST_F(MEventThreads, ASenderMayBeDestroyedElsewhereWhileAHandlerRuns) {
  NotifyEvent event;
  auto sender = std::make_unique<MEventTarget>();
  Counter counter;
  Listener listener([&](auto&) { OnAnotherThread([&] { sender = nullptr; }); });
  listener.SubscribeTo(event);
  event.Subscribe(&counter, Counter::Count, 1);
  event.Fire({sender.get(), 1});
  EXPECT_EQ(counter.count, 0);
}

TEST_F(MEventThreads, ALockOfTheHostSerialisesEverything) {
  MLock lock;
  MSetEventLock(&lock);
  {
    NotifyEvent event;
    Counter counter;
    std::atomic<bool> isSubscribed = false;
    lock.Acquire(1);
    std::thread other([&] {
      event.Subscribe(&counter, Counter::Count, 1);
      isSubscribed = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(isSubscribed);
    lock.Release();
    other.join();
    event.Fire({nullptr, 1});
    EXPECT_EQ(counter.count, 1);
  }
  MSetEventLock(nullptr);
}

#ifndef NDEBUG
TEST(MEventDeathTest, ATargetThatIsDestroyedWhileAnotherThreadDeliversToItIsReported) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        NotifyEvent event;
        auto listener = std::make_unique<Listener>();
        listener->onCall = [&](auto&) { OnAnotherThread([&] { listener = nullptr; }); };
        listener->SubscribeTo(event);
        event.Fire({nullptr, 1});
      },
      "a target is destroyed while another thread delivers to it");
}
#endif

}  // namespace
