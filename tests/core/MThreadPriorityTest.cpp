#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "tests/common/Texts.h"
#include "tests/core/ThreadDoubles.h"

namespace {

TEST(MThreadPriority, EachCanBeSetAtAnyTime) {
  for (int32_t value = 0; value <= 6; ++value) {
    const auto priority = static_cast<MThread::Priority>(value);
    TestThread thread(RunUntilStopped);
    EXPECT_NO_THROW(thread.SetPriority(priority));
    EXPECT_FALSE(thread.Wait(0)) << "it is created";
    thread.Start();
    EXPECT_NO_THROW(thread.SetPriority(priority));
    thread.Stop();
    EXPECT_TRUE(thread.Wait(kWaitForever));
    EXPECT_NO_THROW(thread.SetPriority(priority));
  }
}

TEST(MThreadPriority, OtherNumbersAreRefusedAndCreateNothing) {
  TestThread thread(RunUntilStopped);
  for (const int32_t value : {-1, 7, 0x7FFFFFFF})
    EXPECT_RAISES(thread.SetPriority(static_cast<MThread::Priority>(value)), "Could not set thread priority.",
                  0);
  EXPECT_RAISES(thread.Wait(0), "Could not wait for a thread.", 0);
}

TEST(MThreadPriority, LowerOnesReachTheSystem) {
  const int base = getpriority(PRIO_PROCESS, 0);
  if (base > 0) GTEST_SKIP() << "this process has a low priority itself";
  const auto getNice = [] { return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())); };
  std::atomic<int> asked = 0, answered = 0, nice = 0;
  TestThread thread([&](TestThread& self) {
    while (!self.IsStopRequested()) {
      if (asked == answered) continue;
      nice = getNice();
      ++answered;
    }
    return 0;
  });
  const auto expectNice = [&](int expected) {
    ++asked;
    WaitUntil([&] { return answered == asked; });
    EXPECT_EQ(nice, expected);
  };
  thread.SetPriority(MThread::Priority::kLow);
  thread.Start();
  expectNice(5);
  thread.SetPriority(MThread::Priority::kLowest);
  expectNice(10);
  thread.SetPriority(MThread::Priority::kIdle);
  expectNice(19);
  thread.StopAndJoin();
  EXPECT_EQ(getNice(), base);
}

TEST(MThreadPriority, FourHaveNames) {
  std::vector<std::pair<int32_t, std::string>> names;
  for (const MThreadPriorityName& row : kThreadPriorityNames)
    names.emplace_back(static_cast<int32_t>(row.priority), row.name);
  const std::vector<std::pair<int32_t, std::string>> expected = {
      {1, "Lowest"}, {3, "Normal"}, {5, "Highest"}, {6, "Critical"}};
  EXPECT_EQ(names, expected);
}

}  // namespace
