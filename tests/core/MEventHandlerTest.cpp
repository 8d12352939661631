// What handlers may do while they are called.

#include <memory>
#include <string>

#include "tests/core/Balanced.h"
#include "tests/core/Listener.h"

namespace {

using MEventHandler = Balanced;
using Words = std::vector<MWord>;

// An event with three listeners, each of which adds its digit to a record.
struct Trio {
  Trio() {
    for (Listener* const listener : {&first, &second, &third}) listener->SubscribeTo(event);
  }

  NotifyEvent event;
  std::string order;
  Listener first{[this](auto&) { order += '1'; }};
  Listener second{[this](auto&) { order += '2'; }};
  Listener third{[this](auto&) { order += '3'; }};
};

TEST_F(MEventHandler, MayUnsubscribeItself) {
  Trio trio;
  trio.second.onCall = [&](auto&) { trio.order += '2', trio.second.UnsubscribeFrom(trio.event); };
  trio.event.Fire({nullptr, 1});
  trio.event.Fire({nullptr, 2});
  EXPECT_EQ(trio.order, "12313");
}

TEST_F(MEventHandler, MayUnsubscribeTheNextOneWhichIsThenNotCalled) {
  Trio trio;
  trio.first.onCall = [&](auto&) { trio.order += '1', trio.second.UnsubscribeFrom(trio.event); };
  trio.event.Fire({nullptr, 1});
  EXPECT_EQ(trio.order, "13");
}

TEST_F(MEventHandler, ThatSubscribesAnotherOneDoesNotHaveItCalledForThisEntry) {
  Trio trio;
  Listener late([&](auto&) { trio.order += '4'; });
  trio.third.onCall = [&](auto&) { trio.order += '3', late.SubscribeTo(trio.event); };
  trio.event.Post({nullptr, 1});
  trio.event.Post({nullptr, 2});
  trio.event.Pop();
  EXPECT_EQ(trio.order, "123");
  trio.event.Pop();
  EXPECT_EQ(trio.order, "1231234");
}

TEST_F(MEventHandler, ThatLeavesAndComesBackIsANewSubscription) {
  Trio trio;
  trio.first.onCall = [&](auto&) {
    trio.order += '1';
    trio.second.UnsubscribeFrom(trio.event);
    trio.second.SubscribeTo(trio.event);
  };
  trio.event.Fire({nullptr, 1});
  EXPECT_EQ(trio.order, "13");
  trio.order.clear();
  trio.first.onCall = nullptr;
  trio.event.Fire({nullptr, 2});
  EXPECT_EQ(trio.order, "32");
}

TEST_F(MEventHandler, MayRemoveTheSenderAndTheOthersAreStillCalled) {
  Trio trio;
  trio.first.onCall = [&](auto&) { trio.event.Remove(&trio.first); };
  trio.event.Fire({&trio.first, 1});
  EXPECT_EQ(trio.order, "23");
  EXPECT_FALSE(trio.event.IsLinkedWith(trio.first));
}

TEST_F(MEventHandler, MayClearTheEntriesThatWait) {
  Trio trio;
  trio.event.Post({nullptr, 1});
  trio.event.Post({nullptr, 2});
  trio.first.onCall = [&](auto&) { trio.event.Clear(); };
  trio.event.Pop();
  EXPECT_EQ(trio.order, "23");
  EXPECT_RAISES(trio.event.Pop(), "Index out of range.", 0);
}

TEST_F(MEventHandler, ThatPostsDeliversWithALaterPop) {
  Trio trio;
  trio.first.onCall = [&](const MOnNotifyParams& p) {
    if (p.argument < 3) trio.event.Post({nullptr, p.argument + 1});
  };
  trio.event.Post({nullptr, 1});
  for (int i = 0; i < 3; ++i) trio.event.Pop();
  EXPECT_EQ(trio.third.Heard(), (Words{1, 2, 3}));
  EXPECT_RAISES(trio.event.Pop(), "Index out of range.", 0);
}

TEST_F(MEventHandler, ThatFiresTheSameEventDeliversInside) {
  Trio trio;
  trio.second.onCall = [&](const MOnNotifyParams& p) {
    if (p.argument < 3) trio.event.Fire({nullptr, p.argument + 1});
  };
  trio.event.Fire({nullptr, 1});
  EXPECT_EQ(trio.first.Heard(), (Words{1, 2, 3}));
  EXPECT_EQ(trio.third.Heard(), (Words{3, 2, 1}));
}

TEST_F(MEventHandler, ThatRaisesEndsItsDeliveryOnly) {
  Trio trio;
  trio.second.onCall = [&](const MOnNotifyParams& p) {
    if (p.argument == 1) throw MException("text");
  };
  trio.event.Post({&trio.first, 1});
  trio.event.Post({&trio.first, 2});
  EXPECT_RAISES(trio.event.Pop(), "text", 0);
  EXPECT_EQ(trio.order, "1");
  trio.event.Pop();
  EXPECT_EQ(trio.order, "113");
  EXPECT_EQ(trio.third.Heard(), (Words{2}));
}

TEST_F(MEventHandler, ThatRaisesInFireLeavesTheNewerEntryToTheQueue) {
  Trio trio;
  trio.second.onCall = [&](const MOnNotifyParams& p) {
    if (p.argument == 1) throw MException("text");
  };
  trio.event.Post({nullptr, 1});
  EXPECT_RAISES(trio.event.Fire({nullptr, 2}), "text", 0);
  MEventQueue::Drain();
  EXPECT_EQ(trio.third.Heard(), (Words{2}));
}

TEST_F(MEventHandler, MayBeOfAnEventThatListensToItself) {
  auto event = std::make_unique<NotifyEvent>();
  static int heard;
  heard = 0;
  event->Subscribe(event.get(), [](MEventTarget*, MWord, const MOnNotifyParams&) { ++heard; });
  event->Fire({event.get(), 1});
  EXPECT_EQ(heard, 1);
  event->Post({event.get(), 2});
}

}  // namespace
