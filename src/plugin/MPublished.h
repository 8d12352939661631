#pragma once
#include <atomic>

#include "core/MTypes.h"

// Hands a record, such as an effect's coefficients, from the thread that computes it to the audio thread,
// whole and without a lock. One reader, and one writer at a time; neither waits for the other. There are
// three copies, so that the one that is being read stays as it is while newer ones are set, however many.
// Assigning a T must not allocate.
template <typename T>
class MPublished {
 public:
  // Makes `value` what the next Get gives. [any]
  void Set(const T& value) noexcept {
    slots_[written_] = value;
    written_ = between_.exchange(written_ | kIsNew, std::memory_order_acq_rel) & kSlot;
  }

  // The record that was set last; before the first one, what the default constructor makes. It stays as it is
  // until the next call. [audio]
  const T& Get() noexcept {
    if (between_.load(std::memory_order_relaxed) & kIsNew)
      read_ = between_.exchange(read_, std::memory_order_acq_rel) & kSlot;
    return slots_[read_];
  }

 private:
  static constexpr uint32_t kSlot = 3;
  static constexpr uint32_t kIsNew = 4;

  T slots_[3] = {};
  uint32_t written_ = 0;                // by Set, next
  std::atomic<uint32_t> between_ = 1u;  // handed over; with kIsNew until it is read
  uint32_t read_ = 2;                   // by Get, last
};
