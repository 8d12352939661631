#include "audiofiles/abinfile.h"

#include <algorithm>
#include <cstring>

namespace mp3dec {

int32_t abinfile::RawPeek(void* bytes, int32_t count) {
  count = std::clamp(count, 0, size_ - position_);
  if (count > 0) std::memcpy(bytes, bytes_ + position_, static_cast<std::size_t>(count));
  return count;
}

int32_t abinfile::RawRead(void* bytes, int32_t count) {
  count = RawPeek(bytes, count);
  position_ += count;
  return count;
}

int64_t abinfile::RawSeek(int64_t position) {
  position_ = static_cast<int32_t>(std::clamp<int64_t>(position, 0, size_));
  return position_;
}

int64_t abinfile::RawIoctl(int32_t request, MWord, MWord) {
  if (request == kGetPosition) return position_;
  if (request == kGetSize) return size_;
  if (request == kCanSeek) return 1;
  if (request == kHasEnded) return position_ == size_;
  return -1;
}

}  // namespace mp3dec
