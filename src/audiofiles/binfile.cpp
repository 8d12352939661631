#include "audiofiles/binfile.h"

#include <algorithm>

namespace mp3dec {

uint32_t binfile::Join(const uint8_t* bytes, int32_t count, int32_t bits) noexcept {
  uint32_t value = 0;
  for (int32_t i = 0; i < count; ++i) value = value << bits | (bytes[i] & ((1u << bits) - 1));
  return value;
}

bool binfile::Skip(int64_t count) {
  const int64_t position = Ioctl(kGetPosition);
  return RawSeek(position + count) == position + count;
}

bool binfile::Read16(uint32_t& value) {
  uint8_t bytes[2];
  if (!Read(bytes, 2)) return false;
  value = Join(bytes, 2, 8);
  return true;
}

bool binfile::Read32(uint32_t& value) {
  uint8_t bytes[4];
  if (!Read(bytes, 4)) return false;
  value = Join(bytes, 4, 8);
  return true;
}

bool binfile::Peek16(uint32_t& value) {
  uint8_t bytes[2];
  if (RawPeek(bytes, 2) < 2) return false;
  value = Join(bytes, 2, 8);
  return true;
}

bool binfile::Read28(uint32_t& value) {
  uint8_t bytes[4];
  if (!Read(bytes, 4)) return false;
  value = Join(bytes, 4, 7);
  return true;
}

}  // namespace mp3dec
