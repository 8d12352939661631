#include <memory>

#include "tests/core/Balanced.h"
#include "tests/core/Listener.h"

namespace {

using MEventQueueTest = Balanced;
using Words = std::vector<MWord>;

TEST_F(MEventQueueTest, DrainDeliversWhatIsPendingInAllEvents) {
  NotifyEvent one, two;
  Listener listener;
  listener.SubscribeTo(one, 1);
  listener.SubscribeTo(two, 2);
  one.Post({nullptr, 10});
  two.Post({nullptr, 20});
  one.Post({nullptr, 11});
  MEventQueue::Drain();
  EXPECT_EQ(listener.Heard(), (Words{10, 11, 20}));
  EXPECT_RAISES(one.Pop(), "Index out of range.", 0);
  MEventQueue::Drain();
  EXPECT_EQ(listener.calls.size(), 3u);
}

TEST_F(MEventQueueTest, DrainDeliversWhatHandlersPostMeanwhile) {
  NotifyEvent one, two;
  Listener ping([&](const MOnNotifyParams& p) {
    if (p.argument < 100) two.Post({nullptr, p.argument + 1});
  });
  Listener pong([&](const MOnNotifyParams& p) { one.Post({nullptr, p.argument + 1}); });
  ping.SubscribeTo(one);
  pong.SubscribeTo(two);
  one.Post({nullptr, 0});
  MEventQueue::Drain();
  EXPECT_EQ(ping.calls.size(), 51u);
  EXPECT_EQ(pong.calls.size(), 50u);
}

TEST_F(MEventQueueTest, DrainMayBeCalledByAHandler) {
  NotifyEvent event;
  Listener listener([](const MOnNotifyParams& p) {
    if (p.argument == 1) MEventQueue::Drain();
  });
  listener.SubscribeTo(event);
  for (const MWord argument : {1, 2, 3}) event.Post({nullptr, argument});
  MEventQueue::Drain();
  EXPECT_EQ(listener.Heard(), (Words{1, 2, 3}));
}

TEST_F(MEventQueueTest, AHandlerThatRaisesLosesNoOtherEntry) {
  NotifyEvent one, two;
  Listener listener([](const MOnNotifyParams& p) {
    if (p.argument == 1) throw MException("text");
  });
  listener.SubscribeTo(one);
  listener.SubscribeTo(two);
  for (const MWord argument : {1, 2}) one.Post({nullptr, argument});
  two.Post({nullptr, 3});
  EXPECT_RAISES(MEventQueue::Drain(), "text", 0);
  MEventQueue::Drain();
  EXPECT_EQ(listener.Heard(), (Words{1, 2, 3}));
}

TEST_F(MEventQueueTest, EntriesThatAreGoneMeanwhileAreNotMissed) {
  NotifyEvent event;
  Listener listener;
  listener.SubscribeTo(event);
  event.Post({nullptr, 1});
  event.Pop();
  MEventQueue::Drain();
  event.Post({nullptr, 2});
  event.Clear();
  MEventQueue::Drain();
  event.Post({nullptr, 3});
  MEventQueue::Drain();
  EXPECT_EQ(listener.Heard(), (Words{1, 3}));
}

TEST_F(MEventQueueTest, AnEventMayBeDestroyedWhileItWaits) {
  Listener listener;
  std::unique_ptr<NotifyEvent> events[3];
  for (auto& event : events) {
    event = std::make_unique<NotifyEvent>();
    listener.SubscribeTo(*event);
    event->Post({&listener, 1});
  }
  events[1] = nullptr;
  events[0] = nullptr;
  MEventQueue::Drain();
  EXPECT_EQ(listener.calls.size(), 1u);
}

TEST_F(MEventQueueTest, AHandlerMayDestroyEventsThatWait) {
  auto one = std::make_unique<NotifyEvent>(), two = std::make_unique<NotifyEvent>();
  Listener listener([&](auto&) { one = nullptr, two = nullptr; });
  listener.SubscribeTo(*one);
  listener.SubscribeTo(*two);
  one->Post({nullptr, 1});
  one->Post({nullptr, 2});
  two->Post({nullptr, 3});
  MEventQueue::Drain();
  EXPECT_EQ(listener.Heard(), (Words{1}));
}

}  // namespace
