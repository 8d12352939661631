#pragma once
#include <cstdint>
#include <cstring>

namespace bridge {

namespace blockcheck {

using Words = uint32_t __attribute__((vector_size(16)));

constexpr int32_t kLanes = 4, kTurn = 4 * kLanes;
constexpr uint32_t kMagnitude = 0x7FFFFFFF;  // without the sign
constexpr uint32_t kInfinity = 0x7F800000;   // what is not finite is as large, or larger
constexpr uint32_t kFromTwo = 0x40000000;  // the bit that only numbers from 2 on have, and what is not finite

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

// One by one.
inline bool IsEachFinite(const float* samples, int32_t count) noexcept {
  bool isFinite = true;
  for (int32_t i = 0; i < count; ++i) isFinite &= LoadMagnitude(samples + i) < kInfinity;
  return isFinite;
}

}  // namespace blockcheck

// Both look at the samples' bits: arithmetic with denormals, which threads of hosts may keep, is slow.

// Whether none of the samples is infinite or no number. [audio]
inline bool IsFinite(const float* samples, int32_t count) noexcept {
  using namespace blockcheck;
  Words any[2] = {};
  int32_t i = 0;
  for (; i + kTurn <= count; i += kTurn)
    for (int32_t k = 0; k < 4; ++k) any[k % 2] |= Load(samples + i + k * kLanes);
  bool isBelowTwo = IsZero((any[0] | any[1]) & kFromTwo);
  for (; i < count; ++i) isBelowTwo = isBelowTwo && LoadMagnitude(samples + i) < kFromTwo;
  return isBelowTwo || IsEachFinite(samples, count);
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
