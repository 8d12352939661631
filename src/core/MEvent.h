#pragma once
// Events: typed links from an object to those who want to hear from it.
//
// A target subscribes to an event with a callback and a word of its own. Raising an event has two stages:
// Post queues an entry, Pop delivers the oldest one to every subscription in order; Fire does both. Neither a
// target nor an event outlives the link between them: the destructor of each takes it out of the other. All
// changes of subscriptions, of all events, are made under the one event lock; callbacks run without it, so a
// handler may subscribe, unsubscribe, and destroy the event, its own target or the sender. A subscription
// removed during a delivery is not called any more, none is once the sender is destroyed; one added is first
// called for the next entry. A target is destroyed on the thread that delivers to it, or after it has
// unsubscribed and no callback of it runs any more.

#include "core/MEventState.h"
#include "core/MLock.h"
#include "core/MObject.h"

// Anything that can subscribe to events.
class MEventTarget : public MObject {
 public:
  MEventTarget() = default;
  MEventTarget(const MEventTarget&) = delete;
  MEventTarget& operator=(const MEventTarget&) = delete;
  ~MEventTarget() override;

 private:
  friend class MEventState;
  friend class MEventBase;

  // Each event at most once: it has a subscription or an entry of this target.
  MList<MEventBase*> events_;
};

// An event without its parameter type.
class MEventBase : public MEventTarget {
 public:
  ~MEventBase() override;

  // Delivers the oldest pending entry; raises "Index out of range." when there is none.
  virtual void Pop() = 0;
  // The sender of the newest entry, null once it is not linked with the event any more.
  MEventTarget* GetLastSender() const;
  // True while the event and the target are linked. For tests.
  bool IsLinkedWith(const MEventTarget& target) const;

  // Drops all pending entries.
  virtual void Clear();
  // Drops pending entries and subscriptions of one target.
  virtual void Remove(MEventTarget* target);

 protected:
  // Takes over the reference that the caller holds.
  explicit MEventBase(MEventState* state) noexcept : state_(state) {}

  MEventState* state_;

 private:
  friend class MEventTarget;
};

// The one handler policy: nothing is added to the parameters.
struct MHandlerNoAdditionals {};

// An event with parameters P: a trivially copyable record whose first member is `MEventTarget* sender`.
template <typename P, typename H = MHandlerNoAdditionals>
class MEvent final : public MEventBase {
 public:
  using Callback = void (*)(MEventTarget* subscriber, MWord extra, const P& parameters);

  MEvent() : MEventBase(new State(this)) {}

  // The same subscription may be made more than once; each is called.
  void Subscribe(MEventTarget* subscriber, Callback callback, MWord extra = 0) {
    state_->Subscribe(subscriber, extra, Stored(callback));
  }
  // Removes every subscription of these three.
  void Unsubscribe(MEventTarget* subscriber, Callback callback, MWord extra = 0) {
    state_->Unsubscribe(subscriber, extra, Stored(callback));
  }

  // Queues an entry for the next Pop; false, and nothing queued, without subscriptions. The sender may be
  // null.
  bool Post(const P& parameters) { return TypedState().Post(parameters, true) != 0; }
  // The same for records of sender and argument. `flag` is ignored.
  bool Post(MEventTarget* target, [[maybe_unused]] bool flag, MWord argument) {
    return Post(P{target, argument});
  }

  void Pop() override {
    const MEventState::Hold hold(state_);
    if (!static_cast<State*>(hold.state)->DeliverUpTo(~uint64_t{0})) MThrowIndexOutOfRange();
  }

  // Posts and delivers on the calling thread, older entries first. Without subscriptions nothing happens.
  // What stays behind when a handler throws waits for MEventQueue::Drain.
  void Fire(const P& parameters) {
    const MEventState::Hold hold(state_);
    State* const state = static_cast<State*>(hold.state);
    const uint64_t entry = state->Post(parameters, false);
    try {
      while (entry != 0 && state->DeliverUpTo(entry)) continue;
    } catch (...) {
      state->QueuePending();
      throw;
    }
  }

 private:
  template <typename, typename>
  friend class MCallback;

  static MEventFunction Stored(Callback callback) noexcept {
    return reinterpret_cast<MEventFunction>(callback);
  }

  class State final : public MEventState {
   public:
    explicit State(MEventBase* event) noexcept : MEventState(event) {}

    // Returns the entry's number, 0 without subscriptions.
    uint64_t Post(const P& parameters, bool enqueue) {
      const MLocker lock(MGetEventLock());
      if (subscriptions_.IsEmpty()) return 0;
      pending_.Add({parameters, lastEntry_ + 1});
      try {
        NotePosted(parameters.sender);
      } catch (...) {
        pending_.Remove(pending_.GetCount() - 1);
        throw;
      }
      if (enqueue) Enqueue();
      return ++lastEntry_;
    }

    bool DeliverUpTo(uint64_t last) override;

   private:
    struct Entry {
      P parameters;
      uint64_t number;
    };

    int32_t GetPendingCount() const noexcept override { return pending_.GetCount(); }
    MEventTarget* GetPendingSender(int32_t index) const noexcept override {
      return pending_[index].parameters.sender;
    }
    void RemovePending(int32_t index) noexcept override { pending_.Remove(index); }

    MList<Entry> pending_;
    uint64_t lastEntry_ = 0;
  };

  State& TypedState() noexcept { return *static_cast<State*>(state_); }
};

template <typename P, typename H>
bool MEvent<P, H>::State::DeliverUpTo(uint64_t last) {
  Delivery delivery(*this);
  P parameters;
  {
    const MLocker lock(MGetEventLock());
    if (pending_.IsEmpty() || pending_[0].number > last) return false;
    delivery.Begin();
    parameters = pending_[0].parameters;
    pending_.Remove(0);
  }
  while (const Subscription* const subscription = delivery.Next())
    reinterpret_cast<Callback>(subscription->callback)(subscription->subscriber, subscription->extra,
                                                       parameters);
  return true;
}

// A subscription held by value: it ends with this object, unless the event ended before.
template <typename P, typename H = MHandlerNoAdditionals>
class MCallback final : public MObject {
 public:
  using Event = MEvent<P, H>;

  MCallback(Event& event, MEventTarget* subscriber, typename Event::Callback callback, MWord extra = 0)
      : state_(event.state_), id_(state_->Subscribe(subscriber, extra, Event::Stored(callback))) {
    state_->Retain();
  }
  MCallback(const MCallback&) = delete;
  MCallback& operator=(const MCallback&) = delete;
  ~MCallback() override {
    state_->Unsubscribe(id_);
    MEventState::Drop(state_);
  }

 private:
  MEventState* state_;
  uint64_t id_;
};

// The events of this library that have entries waiting.
class MEventQueue {
 public:
  // Delivers on the calling thread until nothing is pending. The interface loop calls it at every turn;
  // without one the owner of the events does.
  static void Drain() { MEventState::DrainQueue(); }
};

struct MOnNotifyParams {
  MEventTarget* sender;
  MWord argument;
};
