#pragma once
#include <limits>

#include "audiofiles/bufferedbinfile.h"
#include "core/MStream.h"

namespace mp3dec {

// A binfile over an MStream, which it does not own, from the stream's position on, which is 0 here. It can
// seek if the stream tells its size and position and goes back to where it stands; otherwise it only goes
// forward.
class binfileMStream final : public bufferedbinfile {
 public:
  explicit binfileMStream(MStream& stream);

  // Nothing is read from this position on.
  void SetEnd(int64_t position) noexcept;

  void Close() override;
  int64_t RawSeek(int64_t position) override;
  int64_t RawIoctl(int32_t request, MWord a, MWord b) override;

 private:
  int32_t Fetch(uint8_t* bytes, int32_t count) override;
  void ProbeSeeking();
  int64_t GetEnd() const noexcept { return size_ < 0 || end_ < size_ ? end_ : size_; }

  MStream* stream_;
  bool canSeek_ = false;
  int64_t start_ = 0;    // in the stream
  int64_t size_ = -1;    // from there on
  int64_t fetched_ = 0;  // up to here
  int64_t end_ = std::numeric_limits<int64_t>::max();
};

}  // namespace mp3dec
