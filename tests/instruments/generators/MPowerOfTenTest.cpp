#include "instruments/generators/MPowerOfTen.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/common/TestRandom.h"

namespace {

TEST(MPowerOfTen, AgreesWithTheLibraryFromMinusSixToSix) {
  TestRandom random;
  const MPowerOfTen power;
  for (int32_t i = 0; i <= 1200000; ++i) {
    const double y = i <= 200000 ? -6 + i * 12 / 200000.0 : random.Real(-6, 6);
    const double expected = std::pow(10.0, y);
    ASSERT_NEAR(power.Get(y), expected, 4e-15 * expected) << y;
  }
}

TEST(MPowerOfTen, IsExactForZeroAndFallsNowhere) {
  const MPowerOfTen power;
  EXPECT_EQ(power.Get(0), 1);
  for (int32_t k = -1270; k < 1270; ++k) {
    // Both sides of the place where the table changes.
    const double border = (k + 0.5) / 64 * std::log10(2.0);
    EXPECT_LT(power.Get(border - 1e-12), power.Get(border + 1e-12)) << k;
  }
}

}  // namespace
