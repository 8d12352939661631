// Transforms that several threads make for the first time at once.

#include <gtest/gtest.h>

#include <thread>

#include "dsp/MRealFFT.h"
#include "tests/dsp/FFTModel.h"

namespace {

TEST(MRealFFTThreads, AllThreadsGetTheSameSpectra) {
  const auto transformAll = [](std::vector<std::vector<float>>& spectra) {
    for (int32_t size = 4; size <= 32768; size *= 2) {
      spectra.push_back(NoiseSamples(size));
      MRealFFT(size).Forward(spectra.back().data());
    }
  };
  std::vector<std::vector<float>> results[4];
  std::vector<std::thread> threads;
  for (auto& spectra : results) threads.emplace_back([&] { transformAll(spectra); });
  for (std::thread& thread : threads) thread.join();
  for (const auto& spectra : results) EXPECT_EQ(spectra, results[0]);
}

}  // namespace
