#include "core/MEmulatedLock.h"

#include <atomic>

#include "core/MDeadline.h"
#include "core/MException.h"
#include "core/MTranslate.h"

namespace {

constinit std::atomic<void (*)()> yieldHook = nullptr;

void Yield() {
  if (const auto hook = yieldHook.load()) hook();
  std::this_thread::yield();
}

}  // namespace

// Membership in the list of waiters. The mutex is held at both ends.
class MEmulatedLock::Queued {
 public:
  Queued(MEmulatedLock& lock, uint32_t mode) noexcept
      : lock_(lock), waiter_{std::this_thread::get_id(), mode, lock.waiters_} {
    lock.waiters_ = &waiter_;
  }
  Queued(const Queued&) = delete;
  Queued& operator=(const Queued&) = delete;
  ~Queued() {
    Waiter** link = &lock_.waiters_;
    while (*link != &waiter_) link = &(*link)->next;
    *link = waiter_.next;
  }

 private:
  MEmulatedLock& lock_;
  Waiter waiter_;
};

int32_t MEmulatedLock::Acquire(uint32_t mode, uint32_t wait) {
  mode &= kModeMask;
  const auto deadline = MDeadline(wait);
  std::unique_lock held(mutex_);
  const Queued queued(*this, mode);
  for (;;) {
    const uint64_t seen = releases_;
    const Outcome outcome = TryAcquire(mode);
    if (outcome == Outcome::kAcquired) return 0;
    if (outcome == Outcome::kRefused || wait == 0) return 1;
    held.unlock();
    Yield();
    held.lock();
    // Nothing can have changed before the next release, so the processor is left to others until then.
    if (!released_.wait_until(held, deadline, [&] { return releases_ != seen; })) return 1;
  }
}

void MEmulatedLock::Release(uint32_t mode) {
  {
    const std::lock_guard held(mutex_);
    ReleaseMode(mode & kModeMask);
    ++releases_;
    released_.notify_all();
  }
  if (!(mode & kNoYield)) Yield();
}

MEmulatedLocker::MEmulatedLocker(MEmulatedLock& lock, uint32_t mode, uint32_t wait)
    : lock_(lock), mode_(mode) {
  if (lock.Acquire(mode, wait) != 0)
    throw MException(Translate("Could not acquire emulated synchronization object."));
}

void MSetYieldHook(void (*hook)()) noexcept {
  yieldHook = hook;
}
