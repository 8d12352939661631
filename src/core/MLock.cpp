#include "core/MLock.h"

#include <atomic>

#include "core/MException.h"

namespace {

MLock& OwnEventLock() noexcept {
  static MLock lock;
  return lock;
}
static_assert(std::is_trivially_destructible_v<MLock>, "the static lock outlives everything");

constinit std::atomic<MLock*> hostEventLock = nullptr;

void AcquireOrThrow(MSynchronizer& synchronizer, uint32_t wait) {
  if (synchronizer.Acquire(wait) != 0) throw MException("Could not acquire mutex.");
}

}  // namespace

int32_t MLock::Acquire(uint32_t wait) {
  if (wait == 0) return mutex_.try_lock() ? 0 : 1;
  mutex_.lock();
  return 0;
}

void MLock::Release() {
  mutex_.unlock();
}

MLocker::MLocker(MSynchronizer& synchronizer, uint32_t wait) : synchronizer_(synchronizer) {
  AcquireOrThrow(synchronizer, wait);
}

struct MSharedLocker::Holder {
  M_LIBRARY_MEMORY

  MSynchronizer& synchronizer;
  std::atomic<int32_t> references = 1;
};

MSharedLocker::MSharedLocker(MSynchronizer& synchronizer, uint32_t wait) : holder_(new Holder{synchronizer}) {
  try {
    AcquireOrThrow(synchronizer, wait);
  } catch (...) {
    delete holder_;
    throw;
  }
}

MSharedLocker::MSharedLocker(const MSharedLocker& other) noexcept : holder_(other.holder_) {
  holder_->references.fetch_add(1, std::memory_order_relaxed);
}

MSharedLocker& MSharedLocker::operator=(const MSharedLocker& other) noexcept {
  other.holder_->references.fetch_add(1, std::memory_order_relaxed);
  Drop(holder_);
  holder_ = other.holder_;
  return *this;
}

MSharedLocker::~MSharedLocker() {
  Drop(holder_);
}

void MSharedLocker::Drop(Holder* holder) noexcept {
  if (holder->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  holder->synchronizer.Release();
  delete holder;
}

MLock& MGetEventLock() noexcept {
  MLock* const lock = hostEventLock.load(std::memory_order_acquire);
  return lock ? *lock : OwnEventLock();
}

void MSetEventLock(MLock* lock) noexcept {
  hostEventLock.store(lock, std::memory_order_release);
}
