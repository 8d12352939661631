#include "core/MEventState.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "core/MEvent.h"

namespace {

// The queue of events with posted entries, guarded by the event lock.
constinit MEventState* firstQueued = nullptr;

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

void MEventState::NotePosted(MEventTarget* sender) {
  if (sender && sender->events_.Find(event_) < 0) sender->events_.Add(event_);
  lastSender_ = sender;
}

void MEventState::Enqueue() noexcept {
  if (queued_ || GetPendingCount() == 0) return;
  MEventState** end = &firstQueued;
  while (*end) end = &(*end)->nextQueued_;
  *end = this;
  queued_ = true;
}

void MEventState::Dequeue() noexcept {
  if (!queued_) return;
  MEventState** link = &firstQueued;
  while (*link != this) link = &(*link)->nextQueued_;
  *link = std::exchange(nextQueued_, nullptr);
  queued_ = false;
}

void MEventState::UnlinkIfIdle(MEventTarget* target) noexcept {
  if (!target) return;
  for (const Subscription& subscription : subscriptions_)
    if (subscription.subscriber == target) return;
  for (int32_t i = 0; i < GetPendingCount(); ++i)
    if (GetPendingSender(i) == target) return;
  for (const Delivery* delivery = deliveries_; delivery; delivery = delivery->other_)
    if (delivery->sender_ == target) return;
  target->events_.RemoveValue(event_);
  if (lastSender_ == target) lastSender_ = nullptr;
}

void MEventState::RemoveTarget(MEventTarget* target) noexcept {
  for (int32_t i = GetPendingCount() - 1; i >= 0; --i)
    if (GetPendingSender(i) == target) RemovePending(i);
  for (int32_t i = subscriptions_.GetCount() - 1; i >= 0; --i)
    if (subscriptions_[i].subscriber == target) subscriptions_.Remove(i);
  UnlinkIfIdle(target);
}

void MEventState::ClearPending() noexcept {
  while (GetPendingCount() > 0) {
    MEventTarget* const sender = GetPendingSender(GetPendingCount() - 1);
    RemovePending(GetPendingCount() - 1);
    UnlinkIfIdle(sender);
  }
}

void MEventState::StopDeliveries(const MEventTarget* sender) noexcept {
  for (Delivery* delivery = deliveries_; delivery; delivery = delivery->other_) {
    assert((delivery->called_ != sender || delivery->thread_ == std::this_thread::get_id()) &&
           "a target is destroyed while another thread delivers to it");
    if (delivery->sender_ != sender) continue;
    delivery->sender_ = nullptr;
    delivery->next_ = delivery->subscriptions_.GetCount();
  }
}

void MEventState::Die() noexcept {
  ClearPending();
  while (!subscriptions_.IsEmpty()) RemoveTarget(subscriptions_[0].subscriber);
  for (Delivery* delivery = deliveries_; delivery; delivery = delivery->other_)
    UnlinkIfIdle(std::exchange(delivery->sender_, nullptr));
  Dequeue();
  event_ = nullptr;
}

MEventState::Hold MEventState::FirstQueued() {
  const MLocker lock(MGetEventLock());
  return Hold(firstQueued);
}

void MEventState::DrainQueue() {
  for (;;) {
    const Hold hold = FirstQueued();
    if (!hold.state) return;
    if (hold.state->DeliverUpTo(~uint64_t{0})) continue;
    const MLocker lock(MGetEventLock());
    if (hold.state->GetPendingCount() == 0) hold.state->Dequeue();
  }
}

void MEventState::QueuePending() {
  const MLocker lock(MGetEventLock());
  Enqueue();
}

void MEventState::Delivery::Begin() {
  subscriptions_ = state_.subscriptions_;
  sender_ = state_.GetPendingSender(0);
  thread_ = std::this_thread::get_id();
  other_ = std::exchange(state_.deliveries_, this);
  running_ = true;
}

const MEventState::Subscription* MEventState::Delivery::Next() {
  const MLocker lock(MGetEventLock());
  const MList<Subscription>& present = state_.subscriptions_;
  while (next_ < subscriptions_.GetCount()) {
    const Subscription& subscription = subscriptions_[next_++];
    called_ = subscription.subscriber;
    if (std::any_of(present.begin(), present.end(),
                    [&](const Subscription& s) { return s.id == subscription.id; }))
      return &subscription;
  }
  return nullptr;
}

MEventState::Delivery::~Delivery() {
  if (!running_) return;
  const MLocker lock(MGetEventLock());
  Delivery** link = &state_.deliveries_;
  while (*link != this) link = &(*link)->other_;
  *link = other_;
  state_.UnlinkIfIdle(sender_);
}
