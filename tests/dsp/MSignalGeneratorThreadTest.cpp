#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "dsp/MSignalGenerator.h"

namespace {

TEST(MSignalGeneratorThreads, AWaveMaySoundWhileItIsRebuilt) {
  MSignalGenerator generator;
  std::atomic<bool> isOver = false;
  std::thread reader([&] {
    double values[256];
    double phase = 0, greatest = 0;
    while (!isOver) {
      generator.Read(values, phase, 0.0137, 256);
      phase += 256 * 0.0137;
      phase -= std::floor(phase);
      for (const double value : values) greatest = std::max(greatest, std::abs(value));
      greatest = std::max(greatest, std::abs(generator.Read(phase)));
    }
    EXPECT_LE(greatest, 1);
  });
  for (int32_t i = 0; i < 100; ++i) {
    generator.SetShape(i % 31 * 0.5);
    generator.SetCustomDepth(i % 3 * 0.5);
    generator.Rebuild();
  }
  isOver = true;
  reader.join();
}

TEST(MSignalGeneratorThreads, TheShapesAreMadeOnceForAllThreads) {
  const float* tables[4] = {};
  std::thread threads[4];
  for (int32_t i = 0; i < 4; ++i)
    threads[i] = std::thread([&tables, i] { tables[i] = MWaveShapes::GetTable(5); });
  for (std::thread& thread : threads) thread.join();
  for (const float* table : tables) {
    EXPECT_EQ(table, tables[0]);
    EXPECT_NEAR(table[2047], 1, 1e-6);
  }
}

}  // namespace
