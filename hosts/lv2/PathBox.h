#pragma once
#include <algorithm>
#include <array>
#include <atomic>
#include <string_view>

#include "hosts/bridge/Turn.h"

namespace lv2 {

// The path of the file that an instrument plays, on its way from whoever loads it to the audio thread.
class PathBox {
 public:
  static constexpr std::size_t kMost = 4096;

  // Keeps the path, and has it told. A longer one is none. [host]
  void Put(std::string_view path) noexcept {
    const bridge::TurnTaker turn(turn_);
    size_ = path.size() <= kMost ? path.size() : 0;
    std::copy_n(path.begin(), size_, path_.begin());
    Ask();
  }
  // Has the path told. [any]
  void Ask() noexcept { isAsked_.store(true, std::memory_order_release); }
  // Calls `tell` with the path if that was asked for; next time, when another thread puts one there now.
  // [audio]
  template <typename Tell>
  void TellIfAsked(Tell tell) noexcept {
    if (!isAsked_.load(std::memory_order_acquire) || !turn_.TryTake()) return;
    isAsked_.store(false, std::memory_order_relaxed);
    tell(std::string_view(path_.data(), size_));
    turn_.Give();
  }

 private:
  bridge::Turn turn_;
  std::atomic<bool> isAsked_ = false;
  std::array<char, kMost> path_ = {};
  std::size_t size_ = 0;
};

}  // namespace lv2
