#pragma once
#include "audiofiles/binfile.h"

namespace mp3dec {

// A binfile that keeps what it has taken from below until it is read.
class bufferedbinfile : public binfile {
 public:
  int32_t RawRead(void* bytes, int32_t count) override;
  int32_t RawPeek(void* bytes, int32_t count) override;

 protected:
  int64_t GetPosition() const noexcept { return position_; }
  // The next `count` bytes from below, fewer only at the end.
  virtual int32_t Fetch(uint8_t* bytes, int32_t count) = 0;
  // What lies below stands at `position` now.
  void Restart(int64_t position) noexcept;
  // Moves on within the buffer; returns false if it does not reach that far.
  bool MoveInBuffer(int64_t position) noexcept;
  // Drops what lies from `position` on.
  void CutBuffer(int64_t position) noexcept;
  // Reads on up to `position`, or to the end.
  void ReadOnTo(int64_t position);

 private:
  void Fill(int32_t count);

  int64_t position_ = 0;  // of buffer_[begin_]
  int32_t begin_ = 0;
  int32_t filled_ = 0;
  uint8_t buffer_[kMostPeeked];
};

}  // namespace mp3dec
