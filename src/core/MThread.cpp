#include "core/MThread.h"

#include <cassert>

#include "core/MGuard.h"
#include "core/MThreadState.h"
#include "core/MTranslate.h"

using Phase = MThreadState::Phase;

MThread::MThread() : state_(new MThreadState(this)) {}

MThread::~MThread() {
  {
    const auto held = MThreadState::Lock();
    assert((state_->phase < Phase::kStarted || state_->closed) &&
           "the destructor of a class derived from MThread calls StopAndJoin");
  }
  StopAndJoin();
  const auto held = MThreadState::Lock();
  state_->thread = nullptr;
  state_->Drop();
}

void MThread::Create() {
  const auto held = MThreadState::Lock();
  if (state_->phase == Phase::kNone) state_->phase = Phase::kCreated;
}

void MThread::Start() {
  {
    auto held = MThreadState::Lock();
    MThreadState::JoinAbandoned(held);
    if (state_->closed) return;
    state_->stop = false;
    if (state_->phase >= Phase::kStarted || state_->Start()) return;
  }
  throw MException(Translate("Could not create system thread."));
}

void MThread::SetPriority(Priority priority) {
  bool done = priority >= Priority::kIdle && priority <= Priority::kCritical;
  if (done) {
    Create();
    const auto held = MThreadState::Lock();
    state_->priority = static_cast<int32_t>(priority);
    done = state_->ApplyPriority();
  }
  if (!done) throw MException(Translate("Could not set thread priority."));
}

bool MThread::Wait(uint32_t wait) {
  {
    auto held = MThreadState::Lock();
    if (state_->phase != Phase::kNone) return state_->WaitForEnd(held, wait);
  }
  throw MException(Translate("Could not wait for a thread."));
}

void MThread::Stop() {
  state_->stop = true;
  WakeUp();
}

bool MThread::IsStopRequested() const noexcept {
  return state_->stop;
}

void MThread::StopAndJoin() {
  {
    const auto held = MThreadState::Lock();
    state_->closed = true;  // from here on StopAll leaves the object alone
  }
  Stop();
  auto held = MThreadState::Lock();
  if (state_->phase >= Phase::kStarted) state_->Join(held, kWaitForever);
}

bool MThread::IsRunning() const noexcept {
  return state_->running;
}

uint32_t MThread::GetExitValue() const noexcept {
  return state_->exitValue;
}

void MThread::SetDeleteOnFinish(bool deletes) noexcept {
  state_->deletesOnFinish = deletes;
}

void MThread::SetReceiver(MEventTarget* receiver, std::shared_ptr<void> hold) {
  const auto held = MThreadState::Lock();
  receiver_ = receiver;
  hold_.swap(hold);  // the old one goes behind the lock
}

bool MThread::StopAll(uint32_t wait) {
  auto held = MThreadState::Lock();
  return MThreadState::StopAll(held, wait);
}

uint32_t MThread::Run() {
  return 0;
}

void MThread::Finished() {}

void MThread::WakeUp() noexcept {}

void MThread::Notify() {
  MEventTarget* receiver;
  std::shared_ptr<void> hold;
  {
    const auto held = MThreadState::Lock();
    receiver = receiver_;
    hold.swap(hold_);
  }
  if (receiver) finishEvent_.Fire({receiver, this});
}

void MThread::Proc(MThreadState& state) {
  constexpr const char* kLocation = "MThreadProc";
  state.running = true;
  MRunGuarded(kLocation, [&] { state.exitValue = state.thread->Run(); });
  if (state.thread) MRunGuarded(kLocation, [&] { state.thread->Finished(); });
  state.running = false;
  if (state.thread) MRunGuarded(kLocation, [&] { state.thread->Notify(); });
  if (state.MayDestroyObject()) MRunGuarded(kLocation, [&] { delete state.thread; });
}
