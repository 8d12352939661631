#include "core/MEvent.h"

MEventTarget::~MEventTarget() {
  const MLocker lock(MGetEventLock());
  while (!events_.IsEmpty()) {
    MEventBase* const event = events_[0];
    event->state_->StopDeliveries(this);
    event->Remove(this);
  }
}

MEventBase::~MEventBase() {
  {
    const MLocker lock(MGetEventLock());
    state_->Die();
  }
  MEventState::Drop(state_);
}

MEventTarget* MEventBase::GetLastSender() const {
  const MLocker lock(MGetEventLock());
  return state_->lastSender_;
}

bool MEventBase::IsLinkedWith(const MEventTarget& target) const {
  const MLocker lock(MGetEventLock());
  return target.events_.Find(const_cast<MEventBase*>(this)) >= 0;
}

void MEventBase::Clear() {
  const MLocker lock(MGetEventLock());
  state_->ClearPending();
}

void MEventBase::Remove(MEventTarget* target) {
  const MLocker lock(MGetEventLock());
  state_->RemoveTarget(target);
}
