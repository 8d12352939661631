#pragma once
#include <atomic>
#include <cstdint>

// The one sequence of random numbers of all instruments: x = x 214013 + 2531011 modulo 2^32, from 0 on. Its
// low bits repeat early: use x >> 16. Threads that draw at the same time may get the same numbers. [any]
class MRandomSequence {
 public:
  static uint32_t Next() noexcept {
    const uint32_t next = Follow(Get());
    Set(next);
    return next;
  }

  // For loops that draw many numbers: the newest one, the one behind another, and what Next goes on from.
  static uint32_t Get() noexcept { return newest.load(std::memory_order_relaxed); }
  static constexpr uint32_t Follow(uint32_t x) noexcept { return x * 214013 + 2531011; }
  static void Set(uint32_t x) noexcept { newest.store(x, std::memory_order_relaxed); }

 private:
  static inline constinit std::atomic<uint32_t> newest = 0;
};
