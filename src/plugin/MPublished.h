#pragma once
#include <array>
#include <atomic>
#include <cstring>
#include <type_traits>

#include "core/MTypes.h"

// Hands a small record, such as an effect's coefficients, from the thread that computes it to the audio
// thread. Neither side waits: while a record is being written, the reader goes on with the one that it has.
// One reader, and one writer at a time.
template <typename T>
class MPublished {
  static_assert(std::is_trivially_copyable_v<T> && std::is_default_constructible_v<T>);

 public:
  // [any]
  void Set(const T& value) noexcept {
    uint64_t words[kWords] = {};
    std::memcpy(words, &value, sizeof value);
    const uint32_t version = version_.load(std::memory_order_relaxed);
    version_.store(version + 1, std::memory_order_relaxed);  // odd: being written
    for (std::size_t i = 0; i < kWords; ++i) words_[i].store(words[i], std::memory_order_release);
    version_.store(version + 2, std::memory_order_release);
  }

  // The newest record that was set as a whole; one made by the default constructor before the first. It stays
  // as it is until the next call. [audio]
  const T& Get() noexcept {
    const uint32_t version = version_.load(std::memory_order_acquire);
    if (version == readVersion_ || version % 2 != 0) return read_;
    uint64_t words[kWords];
    for (std::size_t i = 0; i < kWords; ++i) words[i] = words_[i].load(std::memory_order_acquire);
    if (version_.load(std::memory_order_relaxed) != version) return read_;
    std::memcpy(&read_, words, sizeof read_);
    readVersion_ = version;
    return read_;
  }

 private:
  static constexpr std::size_t kWords = (sizeof(T) + sizeof(uint64_t) - 1) / sizeof(uint64_t);

  std::atomic<uint32_t> version_ = 0;
  std::array<std::atomic<uint64_t>, kWords> words_ = {};
  T read_ = {};
  uint32_t readVersion_ = 0;
};
