#include "audiofiles/bufferedbinfile.h"

#include <algorithm>
#include <cstring>

namespace mp3dec {

void bufferedbinfile::Fill(int32_t count) {
  if (filled_ - begin_ >= count) return;
  std::memmove(buffer_, buffer_ + begin_, static_cast<std::size_t>(filled_ - begin_));
  filled_ -= begin_;
  begin_ = 0;
  filled_ += Fetch(buffer_ + filled_, kMostPeeked - filled_);
}

int32_t bufferedbinfile::RawPeek(void* bytes, int32_t count) {
  count = std::clamp(count, 0, kMostPeeked);
  Fill(count);
  count = std::min(count, filled_ - begin_);
  if (count > 0) std::memcpy(bytes, buffer_ + begin_, static_cast<std::size_t>(count));
  return count;
}

int32_t bufferedbinfile::RawRead(void* bytes, int32_t count) {
  int32_t done = 0;
  while (done < count) {
    const int32_t read = RawPeek(static_cast<uint8_t*>(bytes) + done, count - done);
    if (read == 0) break;
    begin_ += read;
    position_ += read;
    done += read;
  }
  return done;
}

void bufferedbinfile::Restart(int64_t position) noexcept {
  position_ = position;
  begin_ = filled_ = 0;
}

bool bufferedbinfile::MoveInBuffer(int64_t position) noexcept {
  const int64_t distance = position - position_;
  if (distance < -begin_ || distance > filled_ - begin_) return false;
  begin_ += static_cast<int32_t>(distance);
  position_ = position;
  return true;
}

void bufferedbinfile::CutBuffer(int64_t position) noexcept {
  const int64_t kept = position - position_;
  if (kept < 0) return Restart(position_);  // what lies in front of the place could be read again
  if (kept < filled_ - begin_) filled_ = begin_ + static_cast<int32_t>(kept);
}

void bufferedbinfile::ReadOnTo(int64_t position) {
  while (!MoveInBuffer(position)) {
    MoveInBuffer(position_ + filled_ - begin_);
    Fill(1);
    if (begin_ == filled_) return;
  }
}

}  // namespace mp3dec
