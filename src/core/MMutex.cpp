#include "core/MMutex.h"

#include "core/MDeadline.h"

int32_t MMutex::Acquire(uint32_t wait) {
  const std::thread::id self = std::this_thread::get_id();
  std::unique_lock held(mutex_);
  const auto isFree = [&] { return depth_ == 0 || owner_ == self; };
  if (!released_.wait_until(held, MDeadline(wait), isFree)) return 1;
  owner_ = self;
  ++depth_;
  return 0;
}

void MMutex::Release() {
  const std::lock_guard held(mutex_);
  if (depth_ == 0 || owner_ != std::this_thread::get_id()) return;
  if (--depth_ == 0) released_.notify_one();
}
