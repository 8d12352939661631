#pragma once
// Events: typed links from an object to those who want to hear from it.
//
// A target subscribes to an event with a callback and a word of its own. Raising an event has two stages:
// Post queues an entry, Pop delivers the oldest one to every subscription in order; Fire does both. Neither a
// target nor an event outlives the link between them: the destructor of each takes it out of the other. All
// changes of subscriptions, of all events, are made under the one event lock; callbacks run without it, so a
// handler may subscribe, unsubscribe, and destroy the event itself. A subscription removed during a delivery
// is not called any more; one added is first called for the next entry. A target is destroyed on the thread
// that delivers to it, or after it has unsubscribed.

#include <thread>

#include "core/MList.h"
#include "core/MLock.h"
#include "core/MObject.h"

class MEventBase;
class MEventTarget;

// What a callback gets is decided by the event's type; this form is for storage only.
using MEventFunction = void (*)();

// The part of an event that a running delivery keeps alive. Everything in it is guarded by the event lock.
class MEventState {
 public:
  M_LIBRARY_MEMORY

  // Returns the number of the subscription, 0 when the event is gone.
  uint64_t Subscribe(MEventTarget* subscriber, MWord extra, MEventFunction callback);
  // Removes the subscriptions of these three, or the one of this number.
  void Unsubscribe(MEventTarget* subscriber, MWord extra, MEventFunction callback);
  void Unsubscribe(uint64_t id);

  void Retain() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
  static void Drop(MEventState* state) noexcept;

 protected:
  struct Subscription {
    MEventTarget* subscriber;
    MWord extra;  // handed back to the callback
    MEventFunction callback;
    uint64_t id;
  };

  // Marks a callback that runs, for the check that its target is not destroyed by another thread.
  class Call {
   public:
    // False in `IsWanted` when the subscription has been removed since the delivery began.
    Call(MEventState& state, const Subscription& subscription);
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;
    ~Call();
    bool IsWanted() const noexcept { return wanted_; }

   private:
    friend class MEventState;
    MEventState& state_;
    MEventTarget* subscriber_;
    std::thread::id thread_;
    Call* next_ = nullptr;
    bool wanted_;
  };

  explicit MEventState(MEventBase* event) noexcept : event_(event) {}
  MEventState(const MEventState&) = delete;
  MEventState& operator=(const MEventState&) = delete;
  virtual ~MEventState() = default;

  // Links the sender of an entry with the event and, if asked, puts the event into the queue.
  void NotePosted(MEventTarget* sender, bool enqueue);
  // Takes the link away when neither a subscription nor a pending entry asks for it any more.
  void UnlinkIfIdle(MEventTarget* target) noexcept;
  void RemoveTarget(MEventTarget* target) noexcept;
  void ClearPending() noexcept;
  void Die() noexcept;

  // The pending entries, oldest first.
  virtual int32_t GetPendingCount() const noexcept = 0;
  virtual MEventTarget* GetPendingSender(int32_t index) const noexcept = 0;
  virtual void RemovePending(int32_t index) noexcept = 0;
  // Pops and delivers one entry; false if there is none or its number is above `last`.
  virtual bool DeliverUpTo(uint64_t last) = 0;

  friend class MEventBase;
  friend class MEventQueue;

  MEventBase* event_;  // null when the event has been destroyed
  MEventTarget* lastSender_ = nullptr;
  MList<Subscription> subscriptions_;

 private:
  std::atomic<int32_t> references_ = 1;
  uint64_t lastId_ = 0;
  Call* calls_ = nullptr;
  bool waiting_ = false;  // in the queue of MEventQueue
  MEventState* nextWaiting_ = nullptr;
};

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

  MList<MEventBase*>
      events_;  // each event at most once: it has a subscription or a pending entry of this target
};

// An event without its parameter type.
class MEventBase : public MEventTarget {
 public:
  ~MEventBase() override;

  // Delivers the oldest pending entry; raises "Index out of range." when there is none.
  virtual void Pop() = 0;
  // The sender of the newest entry, null when it is gone.
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
};

// The one handler policy: nothing is added to the parameters.
struct MHandlerNoAdditionals {};

// An event with parameters P: a copyable record whose first member is `MEventTarget* sender`.
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
    const Hold hold(state_);
    if (!static_cast<State*>(hold.state)->DeliverUpTo(~uint64_t{0})) MThrowIndexOutOfRange();
  }

  // Posts and delivers on the calling thread, older entries first. Without subscriptions nothing happens.
  void Fire(const P& parameters) {
    const Hold hold(state_);
    State* const state = static_cast<State*>(hold.state);
    const uint64_t entry = state->Post(parameters, false);
    while (entry != 0 && state->DeliverUpTo(entry)) continue;
  }

 private:
  template <typename, typename>
  friend class MCallback;

  static MEventFunction Stored(Callback callback) noexcept {
    return reinterpret_cast<MEventFunction>(callback);
  }

  // Keeps the state through a delivery that may destroy the event.
  struct Hold {
    explicit Hold(MEventState* s) noexcept : state(s) { s->Retain(); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;
    ~Hold() { MEventState::Drop(state); }
    MEventState* state;
  };

  class State final : public MEventState {
   public:
    explicit State(MEventBase* event) noexcept : MEventState(event) {}

    // Returns the entry's number, 0 without subscriptions.
    uint64_t Post(const P& parameters, bool enqueue) {
      const MLocker lock(MGetEventLock());
      if (subscriptions_.IsEmpty()) return 0;
      pending_.Add({parameters, lastEntry_ + 1});
      try {
        NotePosted(parameters.sender, enqueue);
      } catch (...) {
        pending_.Remove(pending_.GetCount() - 1);
        throw;
      }
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
  MList<Subscription> subscriptions;
  P parameters{};
  {
    const MLocker lock(MGetEventLock());
    if (pending_.IsEmpty() || pending_[0].number > last) return false;
    subscriptions = subscriptions_;
    parameters = pending_[0].parameters;
    pending_.Remove(0);
    UnlinkIfIdle(parameters.sender);
  }
  for (const Subscription& subscription : subscriptions) {
    const Call call(*this, subscription);
    if (call.IsWanted())
      reinterpret_cast<Callback>(subscription.callback)(subscription.subscriber, subscription.extra,
                                                        parameters);
  }
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
  static void Drain();
};

struct MOnNotifyParams {
  MEventTarget* sender;
  MWord argument;
};
