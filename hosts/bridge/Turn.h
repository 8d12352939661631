#pragma once
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

namespace bridge {

// Who may change a plug-in now: the audio thread, which goes on without when it is not its turn, or another
// thread of the host, which waits.
class Turn {
 public:
  // [audio]
  bool TryTake() noexcept { return !isTaken_.exchange(true, std::memory_order_acquire); }
  // [host]
  void Take() noexcept {
    while (!TryTake()) std::this_thread::sleep_for(std::chrono::microseconds(50));
  }
  void Give() noexcept { isTaken_.store(false, std::memory_order_release); }

 private:
  std::atomic<bool> isTaken_ = false;
};

// A turn, as long as it lives.
class TurnTaker {
 public:
  // [host]
  explicit TurnTaker(Turn& turn) noexcept : turn_(turn) { turn_.Take(); }
  // One that TryTake has taken. [audio]
  TurnTaker(Turn& turn, std::adopt_lock_t) noexcept : turn_(turn) {}
  TurnTaker(const TurnTaker&) = delete;
  TurnTaker& operator=(const TurnTaker&) = delete;
  ~TurnTaker() { turn_.Give(); }

 private:
  Turn& turn_;
};

}  // namespace bridge
