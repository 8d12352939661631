#pragma once
// Random numbers of a test. Each run takes a new seed and prints it; SEED=number in the environment repeats a
// run.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

class TestRandom {
 public:
  TestRandom() : TestRandom(ChooseSeed()) { std::printf("[   SEED   ] %u\n", seed_); }
  // A known seed, for signals that are the same in every run.
  explicit TestRandom(uint32_t seed) : seed_(seed), engine_(seed) {}

  uint32_t GetSeed() const { return seed_; }
  uint64_t Bits() { return uint64_t{engine_()} << 32 | engine_(); }
  // 0 to count - 1.
  int32_t Below(int32_t count) { return std::uniform_int_distribution<int32_t>(0, count - 1)(engine_); }
  // Both ends included.
  int32_t Integer(int32_t low, int32_t high) {
    return std::uniform_int_distribution<int32_t>(low, high)(engine_);
  }
  double Real(double low, double high) { return std::uniform_real_distribution<double>(low, high)(engine_); }
  bool OneIn(int32_t count) { return Below(count) == 0; }
  template <typename T>
  const T& OneOf(const std::vector<T>& values) {
    return values[static_cast<std::size_t>(Below(static_cast<int32_t>(values.size())))];
  }

 private:
  static uint32_t ChooseSeed() {
    const char* const given = std::getenv("SEED");
    return given ? static_cast<uint32_t>(std::strtoul(given, nullptr, 10)) : std::random_device()();
  }

  uint32_t seed_;
  std::mt19937 engine_;
};
