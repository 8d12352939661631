#pragma once
// Locks and their scoped guards. All code takes a synchroniser through a guard.

#include <mutex>

#include "core/MMemory.h"

// Something that can be acquired and released.
class MSynchronizer {
 public:
  // Non-zero `wait` blocks as long as it takes; 0 tries once. Returns 0 on success.
  virtual int32_t Acquire(uint32_t wait) = 0;
  virtual void Release() = 0;

 protected:
  ~MSynchronizer() = default;
};

// A critical section, re-entrant for its own thread: each successful Acquire wants one Release.
class MLock final : public MSynchronizer {
 public:
  M_LIBRARY_MEMORY

  int32_t Acquire(uint32_t wait) override;
  void Release() override;

 private:
  std::recursive_mutex mutex_;
};

constexpr uint32_t kWaitForever = 0xFFFFFFFF;

// Holds a synchroniser for a scope. Raises "Could not acquire mutex." when it cannot be had.
class MLocker {
 public:
  explicit MLocker(MSynchronizer& synchronizer, uint32_t wait = kWaitForever);
  MLocker(const MLocker&) = delete;
  MLocker& operator=(const MLocker&) = delete;
  ~MLocker() { synchronizer_.Release(); }

 private:
  MSynchronizer& synchronizer_;
};

// Hands a held lock on: copies share the hold, and the last one releases it, on the thread that acquired it.
class MSharedLocker {
 public:
  explicit MSharedLocker(MSynchronizer& synchronizer, uint32_t wait = kWaitForever);
  MSharedLocker(const MSharedLocker& other) noexcept;
  MSharedLocker& operator=(const MSharedLocker& other) noexcept;
  ~MSharedLocker();

 private:
  struct Holder;
  static void Drop(Holder* holder) noexcept;

  Holder* holder_;
};

// The lock that serialises the subscriptions of all events: one of the library's own until a host hands in
// another, which is used from the next acquire on. Null restores the library's own. [any]
MLock& MGetEventLock() noexcept;
void MSetEventLock(MLock* lock) noexcept;
