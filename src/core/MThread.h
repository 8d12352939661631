#pragma once
// A thread whose body is a virtual operation.
//
// Every class derived from MThread calls StopAndJoin() in its own destructor, before anything that Run uses
// goes, and overrides WakeUp if Run waits for something. Start is called when the object is complete: a class
// that starts itself in its constructor is final. All operations may be called on any thread while the object
// lives; on the thread itself Wait and StopAndJoin do not wait.

#include <memory>

#include "core/MEvent.h"

class MThread;
class MThreadState;

struct MOnThreadNotifyParams {
  MEventTarget* sender;  // the receiver that the thread was given
  MThread* thread;
};

class MThread : public MObject {
 public:
  enum class Priority : int32_t { kIdle, kLowest, kLow, kNormal, kHigh, kHighest, kCritical };

  MThread();
  MThread(const MThread&) = delete;
  MThread& operator=(const MThread&) = delete;
  // Ends the thread as StopAndJoin does. On the thread itself it does not wait: the rest of the thread then
  // runs without the object.
  ~MThread() override;

  // Prepares the thread; the system's one begins with Start.
  void Create();
  // Clears the stop flag and, once in the object's life, runs the thread; not after StopAndJoin. Raises
  // "Could not create system thread."
  void Start();
  // Creates the thread if needed. The priority is a wish: what the system does not permit is left out. Raises
  // "Could not set thread priority." for other failures and for values outside of the enumeration.
  void SetPriority(Priority priority);

  // True when the thread has ended, or ends within `wait` milliseconds (kWaitForever without limit). Raises
  // "Could not wait for a thread." when it has not been created.
  bool Wait(uint32_t wait);
  // Sets the stop flag and wakes the body. The body's loop polls the flag.
  void Stop();
  bool IsStopRequested() const noexcept;
  // Stops the thread, waits without limit until it has ended, and keeps it from being started again.
  void StopAndJoin();

  // From just before Run until just behind Finished.
  bool IsRunning() const noexcept;
  // What Run has returned; 0 before, and when it has thrown.
  uint32_t GetExitValue() const noexcept;

  // A thread that destroys its own object when it has finished. Nothing else may destroy the object, or use
  // it, once the thread is started.
  void SetDeleteOnFinish(bool deletes) noexcept;

  // With a receiver, the thread fires the event at its end, on itself, with the receiver as the sender. The
  // receiver lives until then, which `hold` (made with std::allocate_shared on MAllocator) may see to; it is
  // let go behind the event.
  using FinishEvent = MEvent<MOnThreadNotifyParams>;
  FinishEvent& GetFinishEvent() noexcept { return finishEvent_; }
  void SetReceiver(MEventTarget* receiver, std::shared_ptr<void> hold = {});

  // For the unloading of the library: asks every started thread to stop, waits at most `wait` milliseconds
  // for each, and returns whether all of them, down to their last instruction, are gone.
  static bool StopAll(uint32_t wait);

 protected:
  // The body; returns the exit value. By default 0.
  virtual uint32_t Run();
  // Is called on the thread after Run. By default nothing.
  virtual void Finished();
  // Is called by all that stop the thread, on their thread: wakes what Run waits for, say by a semaphore. It
  // calls no operation of a thread and takes no lock under which one is called. By default nothing.
  virtual void WakeUp() noexcept;

 private:
  friend class MThreadState;

  // The thread's whole course. The object may go at any point of it.
  static void Proc(MThreadState& state);
  void Notify();

  FinishEvent finishEvent_;
  MEventTarget* receiver_ = nullptr;
  std::shared_ptr<void> hold_;
  MThreadState* state_;
};

// The priorities that have a name, and can be chosen by it.
struct MThreadPriorityName {
  MThread::Priority priority;
  const char* name;
};
inline constexpr MThreadPriorityName kThreadPriorityNames[] = {
    {MThread::Priority::kLowest, "Lowest"},
    {MThread::Priority::kNormal, "Normal"},
    {MThread::Priority::kHighest, "Highest"},
    {MThread::Priority::kCritical, "Critical"},
};
