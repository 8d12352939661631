#pragma once
// A lock that is waited for no longer than wanted, re-entrant for its own thread.

#include <condition_variable>
#include <thread>

#include "core/MLock.h"

class MMutex final : public MSynchronizer {
 public:
  M_LIBRARY_MEMORY

  // Waits at most `wait` milliseconds, kWaitForever without limit. Returns 0 on success; each success wants
  // one Release.
  int32_t Acquire(uint32_t wait) override;
  // Does nothing on a thread that does not hold the mutex.
  void Release() override;

 private:
  std::mutex mutex_;
  std::condition_variable released_;
  std::thread::id owner_;
  uint32_t depth_ = 0;  // successes of the owner without their Release
};
