#pragma once
// Locks with modes, whose state is kept by their own code: the base tries, waits and yields, a subclass knows
// which modes go together.

#include <condition_variable>
#include <thread>

#include "core/MLock.h"

class MEmulatedLock {
 public:
  // A mode is a number of 28 bits; the flag says that its release does not yield the processor.
  static constexpr uint32_t kModeMask = 0x0FFFFFFF;
  static constexpr uint32_t kNoYield = 0x40000000;

  MEmulatedLock() = default;
  MEmulatedLock(const MEmulatedLock&) = delete;
  MEmulatedLock& operator=(const MEmulatedLock&) = delete;

  // Waits at most `wait` milliseconds, kWaitForever without limit, 0 for a single try. Returns 0 on success,
  // non-zero when the time has run out or the mode is refused.
  int32_t Acquire(uint32_t mode, uint32_t wait);
  void Release(uint32_t mode);

 protected:
  enum class Outcome { kAcquired, kBusy, kRefused };  // refused: waiting would not help

  // A thread in Acquire, from its first try on.
  struct Waiter {
    std::thread::id thread;
    uint32_t mode;
    Waiter* next;
  };

  ~MEmulatedLock() = default;

  // Both are called with the inner mutex held, for the calling thread; the mode comes without flags.
  virtual Outcome TryAcquire(uint32_t mode) = 0;
  virtual void ReleaseMode(uint32_t mode) = 0;

  // For subclasses that look at their state outside of these two.
  std::mutex& GetInnerMutex() const noexcept { return mutex_; }
  // The inner mutex is held.
  const Waiter* GetFirstWaiter() const noexcept { return waiters_; }

 private:
  class Queued;

  mutable std::mutex mutex_;
  std::condition_variable released_;
  Waiter* waiters_ = nullptr;
  uint64_t releases_ = 0;
};

// Holds a mode for a scope. Raises "Could not acquire emulated synchronization object." when it cannot be
// had.
class MEmulatedLocker {
 public:
  MEmulatedLocker(MEmulatedLock& lock, uint32_t mode, uint32_t wait = kWaitForever);
  MEmulatedLocker(const MEmulatedLocker&) = delete;
  MEmulatedLocker& operator=(const MEmulatedLocker&) = delete;
  ~MEmulatedLocker() { lock_.Release(mode_); }

 private:
  MEmulatedLock& lock_;
  const uint32_t mode_;
};

// Is called at every yield of an emulated lock; null for none. Only tests set it.
void MSetYieldHook(void (*hook)()) noexcept;
