#include "core/MSemaphore.h"

#include "core/MDeadline.h"

int32_t MSemaphore::Acquire(uint32_t wait) {
  std::unique_lock held(mutex_);
  if (!changed_.wait_until(held, MDeadline(wait), [this] { return signalled_; })) return 1;
  if (consuming_) signalled_ = false;
  return 0;
}

void MSemaphore::Release() {
  // Notified under the mutex, so that whoever is woken may destroy the semaphore.
  const std::lock_guard held(mutex_);
  signalled_ = true;
  if (consuming_)
    changed_.notify_one();
  else
    changed_.notify_all();
}
