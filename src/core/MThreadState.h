#pragma once
// What an MThread and the system's thread that runs it share. Internal to MThread.
//
// One lock guards the states of all threads and the list of the started ones; it is held for moments only,
// never while the body runs or an end is waited for. A state in the list outlives its object until somebody
// has joined the system's thread, so that even one that has destroyed its own object is joined before the
// library goes.

#include <condition_variable>

#include "core/MThread.h"

class MThreadState {
 public:
  M_LIBRARY_MEMORY

  using Held = std::unique_lock<std::mutex>;
  static Held Lock() { return Held(lock_); }

  enum class Phase { kNone, kCreated, kStarted, kEnded, kJoining, kJoined };

  explicit MThreadState(MThread* owner) noexcept : thread(owner) {}
  MThreadState(const MThreadState&) = delete;
  MThreadState& operator=(const MThreadState&) = delete;

  // All of these with the lock held.
  bool IsOnThisThread() const noexcept { return id_ == std::this_thread::get_id(); }
  bool Start();  // false when the system has no thread left
  bool WaitForEnd(Held& held, uint32_t wait);
  bool Join(Held& held, uint32_t wait);
  void AskToStop() noexcept;
  bool ApplyPriority() const noexcept;  // false for failures that are no lack of permission
  void Drop() noexcept;
  static bool StopAll(Held& held, uint32_t wait);
  // Joins the threads that have destroyed their object and ended since.
  static void JoinAbandoned(Held& held);

  // The system's thread begins here.
  void Main();
  // Whether the thread is to destroy its object, and nobody else does so already.
  bool MayDestroyObject() const;

  MThread* thread;  // null when the object is gone
  Phase phase = Phase::kNone;
  bool closed = false;    // stopped for good
  int32_t priority = -1;  // -1 before a priority is set
  std::atomic<bool> stop = false;
  std::atomic<bool> running = false;
  std::atomic<bool> deletesOnFinish = false;
  std::atomic<uint32_t> exitValue = 0;

 private:
  ~MThreadState() = default;
  bool StartNative() noexcept;
  void JoinNative() noexcept;
  static int32_t GetNativeId() noexcept;
  void Begin() noexcept;
  void End() noexcept;
  template <typename Wanted>
  static MThreadState* FindStarted(Wanted wanted) noexcept;

  static std::mutex lock_;
  static MThreadState* firstStarted_;

  int32_t references_ = 1;
  std::condition_variable changed_;  // of the phase
  std::thread::id id_;
  MWord handle_ = 0;
  int32_t nativeId_ = 0;  // by which the system knows the thread's priority
  bool asked_ = false;    // StopAll has dealt with it
  MThreadState* nextStarted_ = nullptr;
};
