#include "audiofiles/binfileMStream.h"

#include <algorithm>

#include "audiofiles/MSampleContents.h"

namespace mp3dec {

binfileMStream::binfileMStream(MStream& stream) : stream_(&stream), size_(MGetBytesLeft(stream)) {
  if (size_ < 0) return;
  start_ = stream.GetPosition();
  ProbeSeeking();
}

// Only going back shows it: a stream that cannot seek passes bytes by reading them.
void binfileMStream::ProbeSeeking() {
  uint8_t byte;
  if (RawPeek(&byte, 1) == 0) return;
  try {
    stream_->Seek(start_, MSeekOrigin::kStart);
    stream_->Seek(start_ + fetched_, MSeekOrigin::kStart);
    canSeek_ = true;
  } catch (const MException&) {
  }
}

void binfileMStream::SetEnd(int64_t position) noexcept {
  end_ = position;
  CutBuffer(position);
}

void binfileMStream::Close() {
  SetEnd(0);
}

int32_t binfileMStream::Fetch(uint8_t* bytes, int32_t count) {
  const int64_t left = std::max<int64_t>(GetEnd() - fetched_, 0);
  const int32_t read = MReadFully(*stream_, bytes, static_cast<int32_t>(std::min<int64_t>(count, left)));
  fetched_ += read;
  return read;
}

int64_t binfileMStream::RawSeek(int64_t position) {
  position = std::clamp<int64_t>(position, 0, GetEnd());
  if (MoveInBuffer(position)) return position;
  if (canSeek_) {
    stream_->Seek(start_ + position, MSeekOrigin::kStart);
    fetched_ = position;
    Restart(position);
    return position;
  }
  if (position < GetPosition()) return -1;
  ReadOnTo(position);
  return GetPosition();
}

int64_t binfileMStream::RawIoctl(int32_t request, MWord, MWord) {
  if (request == kGetPosition) return GetPosition();
  if (request == kGetSize) return size_ < 0 ? -1 : GetEnd();
  if (request == kCanSeek) return canSeek_;
  if (request == kHasEnded) {
    uint8_t byte;
    return RawPeek(&byte, 1) == 0;
  }
  return -1;
}

}  // namespace mp3dec
