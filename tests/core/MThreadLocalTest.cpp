#include "core/MThreadLocal.h"

#include <gtest/gtest.h>

#include <list>
#include <vector>

#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"
#include "tests/core/ThreadDoubles.h"

namespace {

TEST(MThreadLocal, EachThreadHasAValueOfItsOwnThatIsNullFirst) {
  MThreadLocal local;
  int mine = 0;
  EXPECT_EQ(local.Get(), nullptr);
  local.Set(&mine);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      EXPECT_EQ(local.Get(), nullptr);
      int own = 0;
      for (int i = 0; i < 100; ++i) {
        local.Set(&own);
        std::this_thread::yield();
        EXPECT_EQ(local.Get(), &own);
      }
      local.Set(nullptr);
      EXPECT_EQ(local.Get(), nullptr);
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(local.Get(), &mine);
}

TEST(MThreadLocal, ObjectsDoNotShareAValue) {
  MThreadLocal first, second;
  int a = 0, b = 0;
  first.Set(&a);
  EXPECT_EQ(second.Get(), nullptr);
  second.Set(&b);
  EXPECT_EQ(first.Get(), &a);
}

TEST(MThreadLocal, SlotIsFreedWithTheObjectAndForgetsItsValues) {
  int value = 0;
  for (int i = 0; i < 2000; ++i) {
    MThreadLocal local;
    ASSERT_EQ(local.Get(), nullptr);
    local.Set(&value);
  }
}

TEST(MThreadLocal, RaisesWhenTheSystemHasNoSlotLeft) {
  std::list<MThreadLocal> locals;
  const auto takeAll = [&] {
    for (int i = 0; i < 1000000; ++i) locals.emplace_back();
  };
  EXPECT_RAISES(takeAll(), "Could not create thread local storage.", 0);
  locals.clear();
  EXPECT_NO_THROW(MThreadLocal());
}

}  // namespace
