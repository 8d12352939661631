#include "core/MThreadState.h"

#include "core/MDeadline.h"

constinit std::mutex MThreadState::lock_;
constinit MThreadState* MThreadState::firstStarted_ = nullptr;
static_assert(std::is_trivially_destructible_v<std::mutex>, "the lock outlives every thread");

template <typename Wanted>
MThreadState* MThreadState::FindStarted(Wanted wanted) noexcept {
  MThreadState* state = firstStarted_;
  while (state && !wanted(*state)) state = state->nextStarted_;
  return state;
}

bool MThreadState::Start() {
  if (!StartNative()) return false;  // the new thread waits for the lock
  phase = Phase::kStarted;
  ++references_;
  nextStarted_ = firstStarted_;
  firstStarted_ = this;
  return true;
}

// Returns whether the body is over and the object is not used any more.
bool MThreadState::WaitForEnd(Held& held, uint32_t wait) {
  if (IsOnThisThread()) return false;
  ++references_;
  const bool ended = changed_.wait_until(held, MDeadline(wait), [this] { return phase >= Phase::kEnded; });
  Drop();
  return ended;
}

// Returns whether the system's thread is gone.
bool MThreadState::Join(Held& held, uint32_t wait) {
  ++references_;
  const bool ended = WaitForEnd(held, wait);
  if (ended && phase == Phase::kEnded) {
    phase = Phase::kJoining;
    held.unlock();
    JoinNative();
    held.lock();
    phase = Phase::kJoined;
    MThreadState** link = &firstStarted_;
    while (*link != this) link = &(*link)->nextStarted_;
    *link = nextStarted_;
    changed_.notify_all();
    Drop();
  }
  if (ended) changed_.wait(held, [this] { return phase == Phase::kJoined; });
  Drop();
  return ended;
}

void MThreadState::AskToStop() noexcept {
  if (closed) return;
  stop = true;
  thread->WakeUp();
}

void MThreadState::Drop() noexcept {
  if (--references_ == 0) delete this;
}

bool MThreadState::StopAll(Held& held, uint32_t wait) {
  for (MThreadState* state = firstStarted_; state; state = state->nextStarted_) {
    state->asked_ = false;
    state->AskToStop();
  }
  bool all = true;
  // The list may change during each wait.
  while (MThreadState* const state = FindStarted([](const MThreadState& s) { return !s.asked_; })) {
    state->asked_ = true;
    state->AskToStop();
    all = state->Join(held, wait) && all;
  }
  return all;
}

void MThreadState::JoinAbandoned(Held& held) {
  const auto isAbandoned = [](const MThreadState& s) { return !s.thread && s.phase == Phase::kEnded; };
  while (MThreadState* const state = FindStarted(isAbandoned)) state->Join(held, 0);
}

void MThreadState::Begin() noexcept {
  const Held held = Lock();
  id_ = std::this_thread::get_id();
  nativeId_ = GetNativeId();
  ApplyPriority();
}

void MThreadState::End() noexcept {
  const Held held = Lock();
  running = false;
  phase = Phase::kEnded;
  changed_.notify_all();
}

bool MThreadState::MayDestroyObject() const {
  const Held held = Lock();
  return thread && deletesOnFinish && !closed;
}

void MThreadState::Main() {
  // Also when the thread is cancelled.
  struct Course {
    explicit Course(MThreadState& s) noexcept : state(s) { s.Begin(); }
    Course(const Course&) = delete;
    Course& operator=(const Course&) = delete;
    ~Course() { state.End(); }
    MThreadState& state;
  };
  const Course course(*this);
  MThread::Proc(*this);
}
