#pragma once
// The inside of an event: what a running delivery keeps alive when a handler destroys the event.

#include <thread>

#include "core/MList.h"

class MEventBase;
class MEventTarget;

// What a callback gets is decided by the event's type; this form is for storage only.
using MEventFunction = void (*)();

// Counted. Everything in it but the count is guarded by the event lock.
class MEventState {
 public:
  M_LIBRARY_MEMORY

  // Returns the number of the subscription; 0, and nothing is subscribed, when the event is gone or a
  // subscriber or callback is missing.
  uint64_t Subscribe(MEventTarget* subscriber, MWord extra, MEventFunction callback);
  // Removes the subscriptions of these three, or the one of this number.
  void Unsubscribe(MEventTarget* subscriber, MWord extra, MEventFunction callback);
  void Unsubscribe(uint64_t id);

  void Retain() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
  static void Drop(MEventState* state) noexcept;

  // Keeps a state for a scope; null is nothing to keep.
  class Hold {
   public:
    explicit Hold(MEventState* held) noexcept : state(held) {
      if (state) state->Retain();
    }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;
    ~Hold() {
      if (state) Drop(state);
    }

    MEventState* const state;
  };

  // Delivers what is pending in all events of the queue.
  static void DrainQueue();
  // Puts an event with pending entries into the queue.
  void QueuePending();

 protected:
  struct Subscription {
    MEventTarget* subscriber;
    MWord extra;  // handed back to the callback
    MEventFunction callback;
    uint64_t id;
  };

  // An entry on its way to the subscriptions that stood when it was taken from the pending ones. It keeps the
  // sender linked with the event, and stops when the sender is destroyed.
  class Delivery {
   public:
    explicit Delivery(MEventState& state) noexcept : state_(state) {}
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;
    ~Delivery();

    // Under the event lock: takes the oldest entry. It stays pending if this fails.
    void Begin();
    // The next subscription to call, of those that nobody has removed meanwhile; null behind the last one.
    const Subscription* Next();

   private:
    friend class MEventState;
    MEventState& state_;
    MList<Subscription> subscriptions_;
    int32_t next_ = 0;
    MEventTarget* sender_ = nullptr;
    const MEventTarget* called_ = nullptr;  // whose callback runs, for a check of who destroys it
    std::thread::id thread_;
    Delivery* other_ = nullptr;
    bool running_ = false;
  };

  explicit MEventState(MEventBase* event) noexcept : event_(event) {}
  MEventState(const MEventState&) = delete;
  MEventState& operator=(const MEventState&) = delete;
  virtual ~MEventState() = default;

  // Links the sender of a new entry with the event.
  void NotePosted(MEventTarget* sender);
  // Puts the event into the queue, if entries are pending, or takes it out.
  void Enqueue() noexcept;
  void Dequeue() noexcept;
  // Takes the link away when neither subscription nor entry asks for it any more.
  void UnlinkIfIdle(MEventTarget* target) noexcept;
  // Drops subscriptions and pending entries of a target, or of all.
  void RemoveTarget(MEventTarget* target) noexcept;
  void ClearPending() noexcept;
  // Stops the deliveries of a target that is being destroyed.
  void StopDeliveries(const MEventTarget* sender) noexcept;
  void Die() noexcept;

  // The pending entries, oldest first.
  virtual int32_t GetPendingCount() const noexcept = 0;
  virtual MEventTarget* GetPendingSender(int32_t index) const noexcept = 0;
  virtual void RemovePending(int32_t index) noexcept = 0;
  // Pops and delivers one entry; false if there is none or its number is above `last`.
  virtual bool DeliverUpTo(uint64_t last) = 0;

  friend class MEventTarget;
  friend class MEventBase;

  MEventBase* event_;  // null when the event has been destroyed
  MEventTarget* lastSender_ = nullptr;
  MList<Subscription> subscriptions_;

 private:
  static Hold FirstQueued();

  std::atomic<int32_t> references_ = 1;
  uint64_t lastId_ = 0;
  Delivery* deliveries_ = nullptr;
  bool queued_ = false;
  MEventState* nextQueued_ = nullptr;
};
