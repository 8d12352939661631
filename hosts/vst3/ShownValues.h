#pragma once
#include <atomic>
#include <vector>

namespace vst3 {

// The values of the parameters as the host's side of an object shows them, normalized. While blocks are
// processed what a host sets here reaches the processor in a queue of its own, at its frame, so that here it
// only waits: a host that plays automation sets late what was heard before. [any]
class ShownValues {
 public:
  explicit ShownValues(std::size_t count) : entries_(count) {}

  double Get(std::size_t place) const noexcept { return entries_[place].value.load(kOrder); }
  // From the processor's side.
  void Show(std::size_t place, double value) noexcept {
    entries_[place].value.store(value, kOrder);
    entries_[place].isWaiting.store(false, kOrder);
  }
  // From the host's side.
  void Await(std::size_t place, double value) noexcept {
    entries_[place].value.store(value, kOrder);
    entries_[place].isWaiting.store(true, kOrder);
  }
  // Whether the value has not reached the processor; it does not wait any longer.
  bool Take(std::size_t place) noexcept { return entries_[place].isWaiting.exchange(false, kOrder); }
  std::size_t GetCount() const noexcept { return entries_.size(); }

 private:
  static constexpr std::memory_order kOrder = std::memory_order_relaxed;

  struct Entry {
    std::atomic<double> value = 0;
    std::atomic<bool> isWaiting = false;
  };
  std::vector<Entry> entries_;
};

}  // namespace vst3
