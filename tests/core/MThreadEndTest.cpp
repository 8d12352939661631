#include <gtest/gtest.h>
#include <pthread.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/common/CountingFunctions.h"
#include "tests/common/ReportedTexts.h"
#include "tests/core/ThreadDoubles.h"

namespace {

using Steps = std::vector<std::string>;

// Notes what happens to a thread, in order. Written on that thread, read behind its end.
struct Course final : public MEventTarget {
  Steps steps;

  static void OnFinish(MEventTarget* self, MWord, const MOnThreadNotifyParams& parameters) {
    auto& course = *static_cast<Course*>(self);
    EXPECT_EQ(parameters.sender, self);
    course.steps.push_back("event " + std::to_string(parameters.thread->GetExitValue()) +
                           (parameters.thread->IsRunning() ? " running" : ""));
  }

  // Connects all that a thread tells.
  void Follow(TestThread& thread, std::shared_ptr<void> hold = {}) {
    thread.onFinished = [this](TestThread& t) {
      steps.push_back(t.IsRunning() ? "finished running" : "finished");
    };
    thread.onDestroy = [this] { steps.push_back("destroyed"); };
    thread.GetFinishEvent().Subscribe(this, OnFinish);
    thread.SetReceiver(this, std::move(hold));
  }
};

uint32_t Seven(TestThread&) {
  return 7;
}

TEST(MThreadEnd, StepsComeInOrder) {
  const std::thread::id here = std::this_thread::get_id();
  Course course;
  auto* const thread = new TestThread([&](TestThread& self) {
    EXPECT_NE(std::this_thread::get_id(), here);
    course.steps.push_back(self.IsRunning() ? "run running" : "run");
    return 7;
  });
  course.Follow(*thread, std::shared_ptr<void>(
                             &course, [](void* c) { static_cast<Course*>(c)->steps.push_back("let go"); }));
  thread->SetDeleteOnFinish(true);
  thread->Start();
  EXPECT_TRUE(MThread::StopAll(kWaitForever));
  EXPECT_EQ(course.steps, Steps({"run running", "finished running", "event 7", "let go", "destroyed"}));
}

TEST(MThreadEnd, WithoutAReceiverThereIsNoEvent) {
  Course course;
  TestThread thread(Seven);
  course.Follow(thread);
  thread.SetReceiver(nullptr);
  thread.Start();
  EXPECT_TRUE(thread.Wait(kWaitForever));
  EXPECT_EQ(course.steps, Steps({"finished running"}));
}

TEST(MThreadEnd, NewReceiverReplacesTheOldHold) {
  Course course;
  bool isFirstHeld = true;
  TestThread thread(Seven);
  course.Follow(thread,
                std::shared_ptr<void>(&isFirstHeld, [](void* held) { *static_cast<bool*>(held) = false; }));
  EXPECT_TRUE(isFirstHeld);
  thread.SetReceiver(&course);
  EXPECT_FALSE(isFirstHeld);
  thread.Start();
  EXPECT_TRUE(thread.Wait(kWaitForever));
  EXPECT_EQ(course.steps, Steps({"finished running", "event 7"}));
}

TEST(MThreadEnd, ExceptionOfTheBodyIsReportedAndTheOtherStepsFollow) {
  const ReportedTexts reports;
  for (const bool isOurs : {true, false}) {
    Course course;
    TestThread thread([&](TestThread&) -> uint32_t {
      if (isOurs) throw MException("Sample is not available.");
      throw 5;
    });
    course.Follow(thread);
    thread.Start();
    EXPECT_TRUE(thread.Wait(kWaitForever));
    EXPECT_FALSE(thread.IsRunning());
    EXPECT_EQ(course.steps, Steps({"finished running", "event 0"}));
  }
  EXPECT_EQ(reports.Get(),
            Steps({"Structured exception from '' catched at 'MThreadProc' ('Sample is not available.')",
                   "SYSTEM EXCEPTION! MThreadProc"}));
}

TEST(MThreadEnd, ExceptionsOfFinishedAndOfAHandlerAreReportedAndTheOtherStepsFollow) {
  const ReportedTexts reports;
  Course course;
  auto* const thread = new TestThread(Seven);
  course.Follow(*thread);
  thread->onFinished = [](TestThread&) { throw MException("first"); };
  thread->GetFinishEvent().Subscribe(
      &course, [](MEventTarget*, MWord, const MOnThreadNotifyParams&) { throw MException("second"); });
  thread->SetDeleteOnFinish(true);
  thread->Start();
  EXPECT_TRUE(MThread::StopAll(kWaitForever));
  EXPECT_EQ(course.steps, Steps({"event 7", "destroyed"}));
  EXPECT_EQ(reports.Get(), Steps({"Structured exception from '' catched at 'MThreadProc' ('first')",
                                  "Structured exception from '' catched at 'MThreadProc' ('second')"}));
}

TEST(MThreadEnd, HandlerMayDestroyTheThread) {
  Course course;
  auto* const thread = new TestThread(Seven);
  course.Follow(*thread);
  thread->GetFinishEvent().Subscribe(
      &course, [](MEventTarget*, MWord, const MOnThreadNotifyParams& p) { delete p.thread; });
  thread->SetDeleteOnFinish(true);
  thread->Start();
  EXPECT_TRUE(MThread::StopAll(kWaitForever));
  EXPECT_EQ(course.steps, Steps({"finished running", "event 7", "destroyed"}));
}

TEST(MThreadEnd, BodyMayDestroyTheThread) {
  Course course;
  auto* const thread = new TestThread([](TestThread& self) {
    // The callable lies in the object.
    const std::unique_ptr<TestThread> own(&self);
    return 7;
  });
  course.Follow(*thread);
  thread->Start();
  EXPECT_TRUE(MThread::StopAll(kWaitForever));
  EXPECT_EQ(course.steps, Steps({"destroyed"}));
}

TEST(MThreadEnd, ThreadThatIsDestroyedAlreadyDoesNotDestroyItself) {
  Course course;
  auto* const thread = new TestThread(RunUntilStopped);
  course.Follow(*thread);
  thread->SetDeleteOnFinish(true);
  thread->Start();
  delete thread;
  EXPECT_EQ(course.steps, Steps({"finished running", "event 1", "destroyed"}));
}

TEST(MThreadEnd, CancelledBodyEndsTheThreadWithoutFurtherSteps) {
  const ReportedTexts reports;
  Course course;
  {
    TestThread thread([](TestThread&) -> uint32_t { pthread_exit(nullptr); });
    course.Follow(thread);
    thread.Start();
    EXPECT_TRUE(thread.Wait(kWaitForever));
    EXPECT_FALSE(thread.IsRunning());
  }
  EXPECT_EQ(course.steps, Steps({"destroyed"}));
  EXPECT_EQ(reports.Get(), Steps());
}

TEST(MThreadEnd, StartJoinsThreadsThatHaveDestroyedThemselves) {
  const CountingFunctions table;
  auto* const own = new TestThread([](TestThread&) { return 0; });
  own->SetDeleteOnFinish(true);
  own->Start();
  // Its last steps may still be on their way.
  for (int i = 0; i < 10000 && table.GetBalance() != 0; ++i) {
    TestThread next([](TestThread&) { return 0; });
    next.Start();
  }
  EXPECT_EQ(table.GetBalance(), 0);
  EXPECT_TRUE(MThread::StopAll(0));
}

#ifndef NDEBUG
TEST(MThreadEndDeathTest, ClassThatDoesNotJoinInItsDestructorIsAnError) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        MThread thread;
        thread.Start();
      },
      "calls StopAndJoin");
}
#endif

}  // namespace
