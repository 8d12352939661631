#pragma once
// The ASCII runs of texts, converted some units at a time: the part that all codecs above ASCII share.

#include <bit>
#include <cstring>

#include "core/MTypes.h"

namespace MEncoding {

// How many of the 8 bytes of a word, in memory order, come before the first one that is not 0.
inline int32_t LeadingZeroBytes(uint64_t word) noexcept {
  if constexpr (std::endian::native == std::endian::little)
    return std::countr_zero(word) / 8;
  else
    return std::countl_zero(word) / 8;
}

template <typename Word>
inline Word LoadWord(const void* bytes) noexcept {
  Word word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

template <int kCount>
inline void WidenBlock(const uint8_t* bytes, MChar* units) noexcept {
  MChar block[kCount];
  for (int i = 0; i < kCount; ++i) block[i] = bytes[i];
  std::memcpy(units, block, sizeof block);
}

template <int kCount>
inline void NarrowBlock(const MChar* units, uint8_t* bytes) noexcept {
  uint8_t block[kCount];
  for (int i = 0; i < kCount; ++i) block[i] = static_cast<uint8_t>(units[i]);
  std::memcpy(bytes, block, sizeof block);
}

// Widens ASCII up to the first other byte and returns how many bytes that was. Of the `count` units that have
// room, those behind the result may be overwritten.
inline int32_t WidenASCII(const uint8_t* bytes, MChar* units, int32_t count) noexcept {
  constexpr uint64_t kHigh = 0x8080808080808080;
  int32_t i = 0;
  for (; count - i >= 16; i += 16) {
    if (((LoadWord<uint64_t>(bytes + i) | LoadWord<uint64_t>(bytes + i + 8)) & kHigh) != 0) break;
    WidenBlock<16>(bytes + i, units + i);
  }
  for (; count - i >= 8; i += 8) {
    const uint64_t high = LoadWord<uint64_t>(bytes + i) & kHigh;
    WidenBlock<8>(bytes + i, units + i);
    if (high != 0) return i + LeadingZeroBytes(high);
  }
  for (; i < count && bytes[i] < 0x80; ++i) units[i] = bytes[i];
  return i;
}

// The way back: narrows units below 0x80 up to the first other one. Of the `count` bytes that have room,
// those behind the result may be overwritten.
inline int32_t NarrowASCII(const MChar* units, uint8_t* bytes, int32_t count) noexcept {
  constexpr uint64_t kHigh = 0xFF80FF80FF80FF80;
  int32_t i = 0;
  for (; count - i >= 16; i += 16) {
    uint64_t all = 0;
    for (int word = 0; word < 4; ++word) all |= LoadWord<uint64_t>(units + i + 4 * word);
    if ((all & kHigh) != 0) break;
    NarrowBlock<16>(units + i, bytes + i);
  }
  for (; count - i >= 4; i += 4) {
    const uint64_t high = LoadWord<uint64_t>(units + i) & kHigh;
    NarrowBlock<4>(units + i, bytes + i);
    if (high != 0) return i + LeadingZeroBytes(high) / 2;
  }
  for (; i < count && units[i] < 0x80; ++i) bytes[i] = static_cast<uint8_t>(units[i]);
  return i;
}

}  // namespace MEncoding
