#pragma once
#include "audiofiles/binfile.h"

namespace mp3dec {

// A copy of the next kMostPeeked bytes of a binfile, which stays where it is: a window to look at frames
// through.
class abinfile final : public binfile {
 public:
  explicit abinfile(binfile& source) : size_(source.RawPeek(bytes_, kMostPeeked)) {}

  void Close() override { size_ = position_ = 0; }
  int32_t RawRead(void* bytes, int32_t count) override;
  int32_t RawPeek(void* bytes, int32_t count) override;
  int64_t RawSeek(int64_t position) override;
  int64_t RawIoctl(int32_t request, MWord a, MWord b) override;

 private:
  uint8_t bytes_[kMostPeeked];
  int32_t size_;
  int32_t position_ = 0;
};

}  // namespace mp3dec
