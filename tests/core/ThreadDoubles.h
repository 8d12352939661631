#pragma once
// What the tests of threads share.

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "core/MEmulatedLock.h"
#include "core/MSemaphore.h"
#include "core/MThread.h"

// A thread whose operations are callables of the test.
class TestThread final : public MThread {
 public:
  using Body = std::function<uint32_t(TestThread&)>;

  explicit TestThread(Body body) : body_(std::move(body)) {}
  ~TestThread() override {
    StopAndJoin();
    if (onDestroy) onDestroy();
  }

  std::function<void(TestThread&)> onFinished;
  std::function<void()> onWakeUp;
  std::function<void()> onDestroy;

 private:
  uint32_t Run() override { return body_(*this); }
  void Finished() override {
    if (onFinished) onFinished(*this);
  }
  void WakeUp() noexcept override {
    if (onWakeUp) onWakeUp();
  }

  Body body_;
};

// A body that polls the stop flag.
inline uint32_t RunUntilStopped(TestThread& thread) {
  while (!thread.IsStopRequested()) std::this_thread::yield();
  return 1;
}

// Counts the yields of emulated locks for its lifetime.
class YieldCounter {
 public:
  YieldCounter() {
    count = 0;
    MSetYieldHook([] { ++count; });
  }
  YieldCounter(const YieldCounter&) = delete;
  YieldCounter& operator=(const YieldCounter&) = delete;
  ~YieldCounter() { MSetYieldHook(nullptr); }
  static int Get() { return count; }

 private:
  static inline std::atomic<int> count;
};

// Runs `body` on another thread and waits for its end.
template <typename F>
void OnAnotherThread(F&& body) {
  std::thread(std::forward<F>(body)).join();
}

template <typename Condition>
void WaitUntil(Condition condition) {
  while (!condition()) std::this_thread::yield();
}

inline void Sleep(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

// How long a call takes.
template <typename F>
std::chrono::steady_clock::duration Duration(F&& body) {
  const auto start = std::chrono::steady_clock::now();
  body();
  return std::chrono::steady_clock::now() - start;
}
