#include "core/MEvent.h"

#include <cassert>

namespace {

// The queue of posted events, guarded by the event lock.
constinit MEventState* firstWaiting = nullptr;

}  // namespace

void MEventState::Drop(MEventState* state) noexcept {
  if (state->references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete state;
}

uint64_t MEventState::Subscribe(MEventTarget* subscriber, MWord extra, MEventFunction callback) {
  const MLocker lock(MGetEventLock());
  if (!event_ || !subscriber || !callback) return 0;
  if (subscriber->events_.Find(event_) < 0) subscriber->events_.Add(event_);
  try {
    subscriptions_.Add({subscriber, extra, callback, lastId_ + 1});
  } catch (...) {
    UnlinkIfIdle(subscriber);
    throw;
  }
  return ++lastId_;
}

void MEventState::Unsubscribe(MEventTarget* subscriber, MWord extra, MEventFunction callback) {
  const MLocker lock(MGetEventLock());
  bool removed = false;
  for (int32_t i = subscriptions_.GetCount() - 1; i >= 0; --i) {
    const Subscription& s = subscriptions_[i];
    if (s.subscriber != subscriber || s.extra != extra || s.callback != callback) continue;
    subscriptions_.Remove(i);
    removed = true;
  }
  if (removed) UnlinkIfIdle(subscriber);
}

void MEventState::Unsubscribe(uint64_t id) {
  const MLocker lock(MGetEventLock());
  for (int32_t i = 0; i < subscriptions_.GetCount(); ++i) {
    if (subscriptions_[i].id != id) continue;
    MEventTarget* const subscriber = subscriptions_[i].subscriber;
    subscriptions_.Remove(i);
    UnlinkIfIdle(subscriber);
    return;
  }
}

void MEventState::NotePosted(MEventTarget* sender, bool enqueue) {
  if (sender && sender->events_.Find(event_) < 0) sender->events_.Add(event_);
  lastSender_ = sender;
  if (!enqueue || waiting_) return;
  MEventState** end = &firstWaiting;
  while (*end) end = &(*end)->nextWaiting_;
  *end = this;
  waiting_ = true;
}

void MEventState::UnlinkIfIdle(MEventTarget* target) noexcept {
  if (!target) return;
  for (const Subscription& subscription : subscriptions_)
    if (subscription.subscriber == target) return;
  for (int32_t i = 0; i < GetPendingCount(); ++i)
    if (GetPendingSender(i) == target) return;
  target->events_.RemoveValue(event_);
}

void MEventState::RemoveTarget(MEventTarget* target) noexcept {
  for ([[maybe_unused]] const Call* call = calls_; call; call = call->next_)
    assert((call->subscriber_ != target || call->thread_ == std::this_thread::get_id()) &&
           "a target is destroyed while another thread delivers to it");
  for (int32_t i = GetPendingCount() - 1; i >= 0; --i)
    if (GetPendingSender(i) == target) RemovePending(i);
  for (int32_t i = subscriptions_.GetCount() - 1; i >= 0; --i)
    if (subscriptions_[i].subscriber == target) subscriptions_.Remove(i);
  if (lastSender_ == target) lastSender_ = nullptr;
  UnlinkIfIdle(target);
}

void MEventState::ClearPending() noexcept {
  while (GetPendingCount() > 0) {
    MEventTarget* const sender = GetPendingSender(GetPendingCount() - 1);
    RemovePending(GetPendingCount() - 1);
    UnlinkIfIdle(sender);
  }
}

void MEventState::Die() noexcept {
  ClearPending();
  while (!subscriptions_.IsEmpty()) RemoveTarget(subscriptions_[0].subscriber);
  event_ = nullptr;
  if (!waiting_) return;
  MEventState** link = &firstWaiting;
  while (*link != this) link = &(*link)->nextWaiting_;
  *link = nextWaiting_;
  waiting_ = false;
}

MEventState::Call::Call(MEventState& state, const Subscription& subscription)
    : state_(state), subscriber_(subscription.subscriber), thread_(std::this_thread::get_id()) {
  const MLocker lock(MGetEventLock());
  wanted_ = std::any_of(state.subscriptions_.begin(), state.subscriptions_.end(),
                        [&](const Subscription& s) { return s.id == subscription.id; });
  next_ = state.calls_;
  state.calls_ = this;
}

MEventState::Call::~Call() {
  const MLocker lock(MGetEventLock());
  Call** link = &state_.calls_;
  while (*link != this) link = &(*link)->next_;
  *link = next_;
}

MEventTarget::~MEventTarget() {
  const MLocker lock(MGetEventLock());
  while (!events_.IsEmpty()) events_[0]->Remove(this);
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

void MEventQueue::Drain() {
  for (;;) {
    MEventState* state;
    {
      const MLocker lock(MGetEventLock());
      state = firstWaiting;
      if (!state) return;
      firstWaiting = state->nextWaiting_;
      state->nextWaiting_ = nullptr;
      state->waiting_ = false;
      state->Retain();
    }
    try {
      while (state->DeliverUpTo(~uint64_t{0})) continue;
    } catch (...) {
      MEventState::Drop(state);
      throw;
    }
    MEventState::Drop(state);
  }
}
