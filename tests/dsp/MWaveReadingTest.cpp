#include "dsp/MWaveReading.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/common/TestRandom.h"

namespace {

constexpr int32_t kLength = 8192;

// Full of numbers without any order, so that a wrong place shows.
std::vector<float> RandomTable(TestRandom& random) {
  std::vector<float> table(kLength + 1);
  for (float& value : table) value = static_cast<float>(random.Real(-1, 1));
  table.back() = table.front();
  return table;
}

void ExpectReadsLikeTheFormula(MWaveReading::Path path) {
  TestRandom random;
  const std::vector<float> table = RandomTable(random);
  for (const int32_t count : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 32, 64, 65, 100, 999})
    for (const double step : {0.0, 1e-3, 0.68, 1.0, 17.3, 4096.5, 8191.999, 8192.0})
      for (const double start : {0.0, 0.5, 8191.25, 8191.999999, 8192.0}) {
        std::vector<double> values(static_cast<std::size_t>(count) + 1, 99);
        path(table.data(), values.data(), start, step, count);
        for (int32_t i = 0; i < count; ++i) {
          const double x = start + i * step, floor = std::floor(x);
          const auto index = static_cast<std::size_t>(std::fmod(floor, kLength));
          const double expected = (x - floor) * table[index + 1] + (1 - (x - floor)) * table[index];
          ASSERT_NEAR(values[static_cast<std::size_t>(i)], expected, 1e-8)
              << "from " << start << " by " << step << ", sample " << i << " of " << count;
        }
        EXPECT_EQ(values.back(), 99);
      }
}

void ExpectReadsTheLongestBlock(MWaveReading::Path path) {
  const std::vector<float> table(kLength + 1, 0.5f);
  std::vector<double> values(MWaveReading::kMaximum);
  path(table.data(), values.data(), 8192, 8192, MWaveReading::kMaximum);
  for (const double value : values) ASSERT_EQ(value, 0.5);
}

TEST(MWaveReading, PairsReadLikeTheFormula) {
  ExpectReadsLikeTheFormula(MWaveReading::ReadPairs);
  ExpectReadsTheLongestBlock(MWaveReading::ReadPairs);
}

TEST(MWaveReading, TheWidePathReadsLikeTheFormula) {
  const MWaveReading::Path path = MWaveReading::GetWidePath();
  if (!path) GTEST_SKIP() << "this processor has none";
  ExpectReadsLikeTheFormula(path);
  ExpectReadsTheLongestBlock(path);
}

}  // namespace
