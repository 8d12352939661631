#include "core/MEvent.h"

#include <string>

#include "tests/core/Balanced.h"
#include "tests/core/Listener.h"

namespace {

using MEventTest = Balanced;
using Words = std::vector<MWord>;

TEST_F(MEventTest, CallsEverySubscriptionInOrderWithItsWordAndTheParameters) {
  NotifyEvent event;
  MEventTarget sender;
  std::string order;
  Listener first([&](auto&) { order += '1'; }), second([&](auto&) { order += '2'; });
  second.SubscribeTo(event, 20);
  first.SubscribeTo(event, 10);
  second.SubscribeTo(event, 21);
  event.Fire({&sender, 5});
  EXPECT_EQ(order, "212");
  EXPECT_EQ(first.calls, (std::vector<Listener::Call>{{&sender, 5, 10}}));
  EXPECT_EQ(second.calls, (std::vector<Listener::Call>{{&sender, 5, 20}, {&sender, 5, 21}}));
}

TEST_F(MEventTest, UnsubscribingTakesOutEveryMatchAndKeepsTheOrderOfTheOthers) {
  NotifyEvent event;
  Listener listener;
  for (const MWord extra : {1, 2, 1, 3, 1, 4}) listener.SubscribeTo(event, extra);
  listener.UnsubscribeFrom(event, 1);
  listener.UnsubscribeFrom(event, 9);
  event.Fire({nullptr, 0});
  ASSERT_EQ(listener.calls.size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(listener.calls[i].extra, static_cast<MWord>(i) + 2);
}

TEST_F(MEventTest, UnsubscribingTheLastOneEndsTheLink) {
  NotifyEvent event;
  Listener listener;
  listener.SubscribeTo(event, 1);
  listener.SubscribeTo(event, 2);
  EXPECT_TRUE(event.IsLinkedWith(listener));
  listener.UnsubscribeFrom(event, 1);
  EXPECT_TRUE(event.IsLinkedWith(listener));
  listener.UnsubscribeFrom(event, 2);
  EXPECT_FALSE(event.IsLinkedWith(listener));
}

TEST_F(MEventTest, ASubscriptionWithoutSubscriberOrCallbackIsIgnored) {
  NotifyEvent event;
  Listener listener;
  event.Subscribe(nullptr, Listener::Hear);
  event.Subscribe(&listener, nullptr);
  EXPECT_FALSE(event.Post({nullptr, 1}));
  EXPECT_FALSE(event.IsLinkedWith(listener));
}

TEST_F(MEventTest, PostingWithoutSubscriptionsQueuesNothing) {
  NotifyEvent event;
  MEventTarget sender;
  EXPECT_FALSE(event.Post({&sender, 1}));
  EXPECT_FALSE(event.IsLinkedWith(sender));
  EXPECT_EQ(event.GetLastSender(), nullptr);
  EXPECT_RAISES(event.Pop(), "Index out of range.", 0);
  event.Fire({&sender, 1});
}

TEST_F(MEventTest, PopDeliversOneEntryFirstInFirstOut) {
  NotifyEvent event;
  MEventTarget sender;
  Listener listener;
  listener.SubscribeTo(event);
  for (const MWord argument : {1, 2, 3}) EXPECT_TRUE(event.Post(&sender, argument == 2, argument));
  EXPECT_TRUE(listener.calls.empty());
  event.Pop();
  EXPECT_EQ(listener.Heard(), (Words{1}));
  event.Pop();
  event.Pop();
  EXPECT_EQ(listener.Heard(), (Words{1, 2, 3}));
  EXPECT_RAISES(event.Pop(), "Index out of range.", 0);
}

TEST_F(MEventTest, ASenderIsLinkedAndRememberedWhileItsEntryIsPending) {
  NotifyEvent event;
  MEventTarget sender;
  bool wasLinked = false;
  Listener listener(
      [&](auto&) { wasLinked = event.IsLinkedWith(sender) && event.GetLastSender() == &sender; });
  listener.SubscribeTo(event);
  event.Post({&sender, 1});
  event.Post({&sender, 2});
  event.Pop();
  EXPECT_TRUE(event.IsLinkedWith(sender));
  event.Pop();
  EXPECT_TRUE(wasLinked);
  EXPECT_FALSE(event.IsLinkedWith(sender));
  EXPECT_EQ(event.GetLastSender(), nullptr);
}

TEST_F(MEventTest, ATargetThatUnsubscribesStaysLinkedUntilItsEntriesAreDelivered) {
  NotifyEvent event;
  Listener listener, other;
  listener.SubscribeTo(event);
  other.SubscribeTo(event);
  event.Post({&listener, 1});
  listener.UnsubscribeFrom(event);
  EXPECT_TRUE(event.IsLinkedWith(listener));
  event.Pop();
  EXPECT_FALSE(event.IsLinkedWith(listener));
  EXPECT_TRUE(listener.calls.empty());
  EXPECT_EQ(other.Heard(), (Words{1}));
}

TEST_F(MEventTest, RemoveDropsSubscriptionsAndEntriesOfOneTarget) {
  NotifyEvent event;
  Listener listener, other;
  listener.SubscribeTo(event, 1);
  other.SubscribeTo(event);
  listener.SubscribeTo(event, 2);
  event.Post({&listener, 1});
  event.Post({&other, 2});
  event.Post({&listener, 3});
  event.Remove(&listener);
  EXPECT_FALSE(event.IsLinkedWith(listener));
  event.Pop();
  EXPECT_EQ(other.Heard(), (Words{2}));
  EXPECT_TRUE(listener.calls.empty());
  EXPECT_RAISES(event.Pop(), "Index out of range.", 0);
}

TEST_F(MEventTest, RemovingATargetThatIsNotLinkedDoesNothing) {
  NotifyEvent event;
  Listener listener;
  event.Remove(&listener);
  event.Remove(nullptr);
}

TEST_F(MEventTest, ClearDropsAllEntriesAndKeepsTheSubscriptions) {
  NotifyEvent event;
  MEventTarget sender;
  Listener listener;
  listener.SubscribeTo(event);
  event.Post({&sender, 1});
  event.Post({&listener, 2});
  event.Post({nullptr, 3});
  event.Clear();
  EXPECT_FALSE(event.IsLinkedWith(sender));
  EXPECT_TRUE(event.IsLinkedWith(listener));
  EXPECT_RAISES(event.Pop(), "Index out of range.", 0);
  event.Fire({nullptr, 4});
  EXPECT_EQ(listener.Heard(), (Words{4}));
}

TEST_F(MEventTest, FireDeliversOlderEntriesFirst) {
  NotifyEvent event;
  Listener listener;
  listener.SubscribeTo(event);
  event.Post({nullptr, 1});
  event.Fire({nullptr, 2});
  EXPECT_EQ(listener.Heard(), (Words{1, 2}));
  EXPECT_RAISES(event.Pop(), "Index out of range.", 0);
}

struct ClickParams {
  MEventTarget* sender;
  double x, y;
};

TEST_F(MEventTest, CarriesItsParametersByValue) {
  MEvent<ClickParams> event;
  Listener listener;
  double sum = 0;
  event.Subscribe(
      &listener,
      [](MEventTarget*, MWord extra, const ClickParams& click) {
        *reinterpret_cast<double*>(extra) = click.x + click.y;
      },
      reinterpret_cast<MWord>(&sum));
  {
    const ClickParams click = {nullptr, 1.5, 2.25};
    event.Post(click);
  }
  event.Pop();
  EXPECT_EQ(sum, 3.75);
}

}  // namespace
