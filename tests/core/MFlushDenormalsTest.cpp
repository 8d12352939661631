#include "core/MFlushDenormals.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <thread>

namespace {

constexpr float kSmallest = std::numeric_limits<float>::min();

// Half of the smallest normal number, and the double of a denormal one, computed now.
float HalfOfSmallest() {
  const volatile float value = kSmallest;
  return value * 0.5f;
}
float TwiceDenormal() {
  const volatile float value = std::numeric_limits<float>::denorm_min() * 1024;
  return value * 2;
}

TEST(MFlushDenormals, GivesAndTakesZeroForDenormalNumbersWhileItLives) {
  EXPECT_GT(HalfOfSmallest(), 0);
  {
    const MFlushDenormals flush;
    EXPECT_EQ(HalfOfSmallest(), 0);
    EXPECT_EQ(TwiceDenormal(), 0);
    const volatile double small = std::numeric_limits<double>::min();
    EXPECT_EQ(small * 0.5, 0);
  }
  EXPECT_GT(HalfOfSmallest(), 0);
  EXPECT_GT(TwiceDenormal(), 0);
}

TEST(MFlushDenormals, RestoresTheModeThatItFound) {
  const MFlushDenormals outer;
  { const MFlushDenormals inner; }
  EXPECT_EQ(HalfOfSmallest(), 0);
}

TEST(MFlushDenormals, LeavesOtherThreadsAlone) {
  std::atomic<bool> flushed = false;
  bool isKept = false;
  std::thread thread([&] {
    flushed.wait(false);
    isKept = HalfOfSmallest() > 0;
  });
  const MFlushDenormals flush;
  flushed = true;
  flushed.notify_one();
  EXPECT_EQ(HalfOfSmallest(), 0);
  thread.join();
  EXPECT_TRUE(isKept);
}

}  // namespace
