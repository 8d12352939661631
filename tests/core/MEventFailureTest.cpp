// Events without memory: nothing is subscribed, posted or delivered, and nothing is lost.

#include <memory>

#include "tests/core/Balanced.h"
#include "tests/core/Listener.h"

namespace {

using MEventFailure = Balanced;
using Words = std::vector<MWord>;

// An event with one listener, and targets that are not linked with it yet.
struct Scene {
  Scene() { listener.SubscribeTo(event); }

  NotifyEvent event;
  Listener listener, other;
  MEventTarget sender;
};

std::unique_ptr<Scene> MakeScene() {
  return std::make_unique<Scene>();
}

void ExpectUntouched(const std::unique_ptr<Scene>& scene) {
  EXPECT_FALSE(scene->event.IsLinkedWith(scene->other));
  EXPECT_FALSE(scene->event.IsLinkedWith(scene->sender));
  EXPECT_EQ(scene->event.GetLastSender(), nullptr);
  EXPECT_RAISES(scene->event.Pop(), "Index out of range.", 0);
  scene->event.Fire({nullptr, 9});
  EXPECT_EQ(scene->listener.Heard(), (Words{9}));
  EXPECT_TRUE(scene->other.calls.empty());
}

TEST_F(MEventFailure, AnEventThatCannotBeMadeLeavesNothingBehind) {
  const int requests = FailEachRequest([] { return 0; }, [](int) { const NotifyEvent event; }, [](int) {});
  EXPECT_EQ(requests, 1);
}

TEST_F(MEventFailure, ASubscriptionIsNotMade) {
  const int requests = FailEachRequest(
      MakeScene, [](auto& scene) { scene->other.SubscribeTo(scene->event); }, ExpectUntouched);
  EXPECT_EQ(requests, 2);
}

TEST_F(MEventFailure, ACallbackIsNotMade) {
  const int requests = FailEachRequest(
      MakeScene,
      [](auto& scene) { const NotifyCallback callback(scene->event, &scene->other, Listener::Hear); },
      ExpectUntouched);
  EXPECT_EQ(requests, 2);
}

TEST_F(MEventFailure, AnEntryIsNotPosted) {
  const int requests = FailEachRequest(
      MakeScene,
      [](auto& scene) {
        scene->event.Post({&scene->sender, 1});
      },
      ExpectUntouched);
  EXPECT_EQ(requests, 2);
}

TEST_F(MEventFailure, AnEntryThatCannotBeDeliveredStaysPending) {
  const auto make = [] {
    auto scene = MakeScene();
    scene->event.Post({&scene->sender, 1});
    return scene;
  };
  const auto check = [](const std::unique_ptr<Scene>& scene) {
    EXPECT_TRUE(scene->listener.calls.empty());
    EXPECT_TRUE(scene->event.IsLinkedWith(scene->sender));
    scene->event.Pop();
    EXPECT_EQ(scene->listener.Heard(), (Words{1}));
    EXPECT_FALSE(scene->event.IsLinkedWith(scene->sender));
  };
  EXPECT_EQ(FailEachRequest(
                make, [](auto& scene) { scene->event.Pop(); }, check),
            1);
  EXPECT_EQ(FailEachRequest(
                make, [](auto&) { MEventQueue::Drain(); }, check),
            1);
}

TEST_F(MEventFailure, AFiredEntryThatCannotBeDeliveredWaitsInTheQueue) {
  auto scene = MakeScene();
  scene->event.Post({nullptr, 1});
  scene->event.Pop();  // the lists of entries have their memory now
  table.FailAfter(0);
  EXPECT_THROW(scene->event.Fire({nullptr, 2}), MException);
  EXPECT_EQ(scene->listener.Heard(), (Words{1}));
  MEventQueue::Drain();
  EXPECT_EQ(scene->listener.Heard(), (Words{1, 2}));
}

}  // namespace
