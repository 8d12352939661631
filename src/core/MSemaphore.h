#pragma once
// A signal between threads, not set at the start. Signals do not add up: several before a wait count as one.

#include <condition_variable>

#include "core/MLock.h"

class MSemaphore final : public MSynchronizer {
 public:
  M_LIBRARY_MEMORY

  // With `consuming` each wait that succeeds takes the signal; without, it stays set for good, as a latch.
  explicit MSemaphore(bool consuming) noexcept : consuming_(consuming) {}

  // Waits for the signal, at most `wait` milliseconds, kWaitForever without limit. Returns 0 on success.
  int32_t Acquire(uint32_t wait) override;
  // Sets the signal, on any thread.
  void Release() override;

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  const bool consuming_;
  bool signalled_ = false;
};
