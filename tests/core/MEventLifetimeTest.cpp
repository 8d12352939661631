// Targets, events and subscriptions that end, also in the middle of a delivery.

#include <memory>

#include "tests/core/Balanced.h"
#include "tests/core/Listener.h"

namespace {

using MEventLifetime = Balanced;
using Words = std::vector<MWord>;

TEST_F(MEventLifetime, ADestroyedTargetIsGoneFromAllItsEvents) {
  NotifyEvent one, two;
  Listener other;
  {
    Listener target;
    for (NotifyEvent* const event : {&one, &two}) {
      target.SubscribeTo(*event);
      other.SubscribeTo(*event);
      target.SubscribeTo(*event, 2);
      event->Post({&target, 1});
    }
  }
  for (NotifyEvent* const event : {&one, &two}) {
    EXPECT_EQ(event->GetLastSender(), nullptr);
    EXPECT_RAISES(event->Pop(), "Index out of range.", 0);  // its entry went with it
    event->Fire({nullptr, 5});
  }
  EXPECT_EQ(other.Heard(), (Words{5, 5}));
}

TEST_F(MEventLifetime, ADestroyedEventIsGoneFromItsTargets) {
  Listener target, other;
  MEventTarget sender;
  NotifyEvent last;
  target.SubscribeTo(last);
  for (int i = 0; i < 50; ++i) {
    NotifyEvent event;
    target.SubscribeTo(event);
    other.SubscribeTo(event);
    event.Post({&sender, 1});
  }
  EXPECT_TRUE(last.IsLinkedWith(target));
}  // targets that kept a destroyed event would touch it here

TEST_F(MEventLifetime, AHandlerMayDestroyTheEvent) {
  auto event = std::make_unique<NotifyEvent>();
  Listener first([&](auto&) { event = nullptr; }), second;
  first.SubscribeTo(*event);
  second.SubscribeTo(*event);
  event->Post({&second, 1});
  event->Fire({&first, 2});
  EXPECT_EQ(first.Heard(), (Words{1}));
  EXPECT_TRUE(second.calls.empty());
}

// A control as the toolkit has them: it owns its event and is the sender.
struct Control final : MEventTarget {
  NotifyEvent changed;
};

TEST_F(MEventLifetime, AHandlerMayDestroyTheEventsOwner) {
  for (const bool isPopped : {false, true}) {
    auto control = std::make_unique<Control>();
    Listener first([&](auto&) { control = nullptr; }), second;
    first.SubscribeTo(control->changed);
    second.SubscribeTo(control->changed);
    if (isPopped) {
      control->changed.Post({control.get(), 1});
      control->changed.Pop();
    } else {
      control->changed.Fire({control.get(), 1});
    }
    EXPECT_EQ(control, nullptr);
    EXPECT_EQ(first.calls.size(), 1u);
    EXPECT_TRUE(second.calls.empty());
  }
}

TEST_F(MEventLifetime, AHandlerMayDestroyItsOwnTarget) {
  NotifyEvent event;
  auto first = std::make_unique<Listener>();
  Listener second;
  first->onCall = [&](auto&) { first = nullptr; };
  first->SubscribeTo(event, 1);
  first->SubscribeTo(event, 2);
  second.SubscribeTo(event);
  event.Fire({nullptr, 1});
  event.Fire({nullptr, 2});
  EXPECT_EQ(second.Heard(), (Words{1, 2}));
}

TEST_F(MEventLifetime, AHandlerMayDestroyTheTargetsThatComeNext) {
  NotifyEvent event;
  auto second = std::make_unique<Listener>();
  Listener first([&](auto&) { second = nullptr; }), third;
  first.SubscribeTo(event);
  second->SubscribeTo(event);
  third.SubscribeTo(event);
  event.Fire({nullptr, 1});
  EXPECT_EQ(third.Heard(), (Words{1}));
}

TEST_F(MEventLifetime, ASenderThatIsDestroyedDuringItsDeliveryReachesNoFurtherHandler) {
  NotifyEvent event;
  auto sender = std::make_unique<MEventTarget>();
  Listener first([&](auto&) { sender = nullptr; }), second;
  first.SubscribeTo(event);
  second.SubscribeTo(event);
  event.Fire({sender.get(), 1});
  EXPECT_TRUE(second.calls.empty());
  EXPECT_EQ(event.GetLastSender(), nullptr);
  first.onCall = nullptr;
  event.Fire({nullptr, 2});
  EXPECT_EQ(second.Heard(), (Words{2}));
}

TEST_F(MEventLifetime, ADeliveryInsideADeliveryMayDestroyTheEvent) {
  auto control = std::make_unique<Control>();
  Listener listener([&](const MOnNotifyParams& p) {
    if (p.argument < 5)
      control->changed.Fire({p.argument % 2 ? nullptr : control.get(), p.argument + 1});
    else
      control = nullptr;
  });
  Listener never;
  listener.SubscribeTo(control->changed);
  never.SubscribeTo(control->changed);
  control->changed.Fire({control.get(), 1});
  EXPECT_EQ(listener.Heard(), (Words{1, 2, 3, 4, 5}));
  EXPECT_TRUE(never.calls.empty());
}

TEST_F(MEventLifetime, ACallbackEndsItsOwnSubscriptionOnly) {
  NotifyEvent event;
  Listener listener;
  auto one = std::make_unique<NotifyCallback>(event, &listener, Listener::Hear, 7);
  auto two = std::make_unique<NotifyCallback>(event, &listener, Listener::Hear, 7);
  event.Fire({nullptr, 1});
  EXPECT_EQ(listener.calls.size(), 2u);
  one = nullptr;
  event.Fire({nullptr, 2});
  EXPECT_EQ(listener.Heard(), (Words{1, 1, 2}));
  EXPECT_TRUE(event.IsLinkedWith(listener));
  two = nullptr;
  EXPECT_FALSE(event.IsLinkedWith(listener));
}

TEST_F(MEventLifetime, ACallbackMayOutliveItsEventAndItsTarget) {
  auto event = std::make_unique<NotifyEvent>();
  auto listener = std::make_unique<Listener>();
  const NotifyCallback one(*event, listener.get(), Listener::Hear);
  event = nullptr;
  NotifyEvent other;
  const NotifyCallback two(other, listener.get(), Listener::Hear);
  const NotifyCallback three(other, nullptr, Listener::Hear);
  listener = nullptr;
  EXPECT_FALSE(other.Post({nullptr, 1}));
}

TEST_F(MEventLifetime, ACallbackMayEndInItsOwnHandler) {
  NotifyEvent event;
  std::unique_ptr<NotifyCallback> callback;
  Listener listener([&](auto&) { callback = nullptr; });
  callback = std::make_unique<NotifyCallback>(event, &listener, Listener::Hear);
  event.Fire({nullptr, 1});
  event.Fire({nullptr, 2});
  EXPECT_EQ(listener.Heard(), (Words{1}));
}

TEST_F(MEventLifetime, AnEventMayListenToAnotherEventAndEndFirstOrLast) {
  auto one = std::make_unique<NotifyEvent>(), two = std::make_unique<NotifyEvent>();
  const auto nothing = [](MEventTarget*, MWord, const MOnNotifyParams&) {};
  one->Subscribe(two.get(), nothing);
  two->Subscribe(one.get(), nothing);
  one->Post({two.get(), 1});
  two = nullptr;
  EXPECT_FALSE(one->Post({nullptr, 1}));
}

}  // namespace
