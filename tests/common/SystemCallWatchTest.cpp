#include "tests/common/SystemCallWatch.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <mutex>
#include <thread>

namespace {

TEST(SystemCallWatch, FindsNoneInArithmeticAndFreeLocks) {
  std::mutex mutex;
  volatile double value = 2;
  EXPECT_FALSE(MakesSystemCalls([&] {
    const std::lock_guard lock(mutex);
    value = std::sin(value);
  }));
  EXPECT_EQ(value, 2);
}

TEST(SystemCallWatch, FindsReadsWaitsAndMemoryFromTheSystem) {
  EXPECT_TRUE(MakesSystemCalls([] { getppid(); }));
  EXPECT_TRUE(MakesSystemCalls([] { std::this_thread::sleep_for(std::chrono::nanoseconds(1)); }));
  EXPECT_TRUE(MakesSystemCalls([] {
    void* volatile block = std::malloc(std::size_t{1} << 26);
    std::free(block);
  }));
  const int file = open("/dev/zero", O_RDONLY | O_CLOEXEC);
  char byte = 0;
  EXPECT_TRUE(MakesSystemCalls([&] { return read(file, &byte, 1) == 1; }));
  close(file);
}

TEST(SystemCallWatch, TellsACrashFromASystemCall) {
  EXPECT_THROW(MakesSystemCalls([] { __builtin_trap(); }), std::runtime_error);
}

}  // namespace
