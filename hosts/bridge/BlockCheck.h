#pragma once
#include <cstdint>
#include <cstring>

namespace bridge {

namespace blockcheck {

using Words = uint32_t __attribute__((vector_size(16)));
using Halves = int16_t __attribute__((vector_size(16)));

constexpr int32_t kLanes = 4, kTurn = 4 * kLanes;
constexpr uint32_t kMagnitude = 0x7FFFFFFF;  // without the sign
constexpr uint32_t kInfinity = 0x7F800000;   // what is not finite is as large, or larger
constexpr uint32_t kUpperHalf = 0xFFFF0000;  // tells the two apart

inline Words Load(const float* samples) noexcept {
  Words words;
  std::memcpy(&words, samples, sizeof words);
  return words;
}

inline uint32_t LoadMagnitude(const float* sample) noexcept {
  uint32_t word;
  std::memcpy(&word, sample, sizeof word);
  return word & kMagnitude;
}

inline bool IsZero(Words words) noexcept {
  uint64_t halves[2];
  std::memcpy(halves, &words, sizeof halves);
  return (halves[0] | halves[1]) == 0;
}

}  // namespace blockcheck

// Both look at the samples' bits: arithmetic with denormals, which threads of hosts may keep, is slow.

// Whether none of the samples is infinite or no number. [audio]
inline bool IsFinite(const float* samples, int32_t count) noexcept {
  using namespace blockcheck;
  Halves largest[2] = {};
  int32_t i = 0;
  for (; i + kTurn <= count; i += kTurn) {
    for (int32_t k = 0; k < 4; ++k) {
      const auto halves =
          reinterpret_cast<Halves>(Load(samples + i + k * kLanes) & (kMagnitude & kUpperHalf));
      largest[k % 2] = halves > largest[k % 2] ? halves : largest[k % 2];
    }
  }
  constexpr int16_t kInfinityHalf = kInfinity >> 16;
  if (!IsZero(reinterpret_cast<Words>((largest[0] >= kInfinityHalf) | (largest[1] >= kInfinityHalf))))
    return false;
  for (; i < count; ++i)
    if (LoadMagnitude(samples + i) >= kInfinity) return false;
  return true;
}

// Whether all of the samples are zeros, of either sign. [audio]
inline bool IsSilent(const float* samples, int32_t count) noexcept {
  using namespace blockcheck;
  constexpr int32_t kStep = 4 * kTurn;  // between two looks whether to go on
  if (count > 0 && LoadMagnitude(samples) != 0) return false;
  int32_t i = 0;
  for (; i + kStep <= count; i += kStep) {
    Words any = {};
    for (int32_t k = 0; k < kStep; k += kLanes) any |= Load(samples + i + k);
    if (!IsZero(any & kMagnitude)) return false;
  }
  for (; i < count; ++i)
    if (LoadMagnitude(samples + i) != 0) return false;
  return true;
}

}  // namespace bridge
