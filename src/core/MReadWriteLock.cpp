#include "core/MReadWriteLock.h"

int32_t MReadWriteLock::Find(std::thread::id thread) const noexcept {
  for (int32_t i = 0; i < holders_.GetCount(); ++i)
    if (holders_.begin()[i].thread == thread) return i;
  return -1;
}

bool MReadWriteLock::IsWritten() const noexcept {
  return std::any_of(holders_.begin(), holders_.end(), [](const Holder& h) { return h.takes[kWrite] > 0; });
}

bool MReadWriteLock::IsUpgrading(std::thread::id exceptFor) const noexcept {
  for (const Waiter* waiter = GetFirstWaiter(); waiter; waiter = waiter->next)
    if (waiter->mode == kWrite && waiter->thread != exceptFor && Find(waiter->thread) >= 0) return true;
  return false;
}

MEmulatedLock::Outcome MReadWriteLock::TryAcquire(uint32_t mode) {
  if (mode > kWrite) return Outcome::kRefused;
  const std::thread::id self = std::this_thread::get_id();
  int32_t own = Find(self);
  if (mode == kRead) {
    if (own < 0 && IsWritten()) return Outcome::kBusy;
  } else if (holders_.GetCount() > (own < 0 ? 0 : 1)) {
    return own >= 0 && IsUpgrading(self) ? Outcome::kRefused : Outcome::kBusy;
  }
  if (own < 0) {
    own = holders_.GetCount();
    holders_.Add({self, {0, 0}});
  }
  ++holders_[own].takes[mode];
  return Outcome::kAcquired;
}

void MReadWriteLock::ReleaseMode(uint32_t mode) {
  const int32_t own = Find(std::this_thread::get_id());
  if (own < 0 || mode > kWrite || holders_[own].takes[mode] == 0) return;
  --holders_[own].takes[mode];
  if (holders_[own].takes[kRead] + holders_[own].takes[kWrite] == 0) holders_.Remove(own);
}

int32_t MReadWriteLock::GetTakes(uint32_t mode) const {
  const std::lock_guard held(GetInnerMutex());
  const int32_t own = Find(std::this_thread::get_id());
  return own < 0 || mode > kWrite ? 0 : holders_[own].takes[mode];
}
