#include "core/MSizeStream.h"

#include <algorithm>

#include "core/MException.h"
#include "core/MTranslate.h"

MSizeStream::MSizeStream(MStream* base, int64_t size, bool ownsBase, bool canSeek)
    : base_(base),
      ownsBase_(ownsBase),
      canSeek_(canSeek),
      start_(base ? base->GetPosition() : 0),
      size_(base ? std::max<int64_t>(size, 0) : 0) {}

MSizeStream::~MSizeStream() {
  if (ownsBase_) delete base_;
}

void MSizeStream::Write(const void* bytes, int32_t count) {
  MStream& base = Base();
  const int32_t fitting = Limit(count);
  if (fitting > 0) base.Write(bytes, fitting);
  position_ += fitting;
  if (fitting < count)
    throw MException(Translate("The stream cannot be written, because its size is out of range."),
                     MErrorCode::kTransferFailed);
}

int32_t MSizeStream::Read(void* bytes, int32_t count) {
  MStream& base = Base();
  const int32_t limited = Limit(count);
  const int32_t found = limited > 0 ? base.Read(bytes, limited) : 0;
  position_ += found;
  return found;
}

void MSizeStream::Seek(int64_t offset, MSeekOrigin origin) {
  if (!canSeek_)
    throw MException(Translate("Seeking operation is forbidden for the size-stream."),
                     MErrorCode::kTransferFailed);
  int64_t from = 0;
  switch (origin) {
    case MSeekOrigin::kStart:
      break;
    case MSeekOrigin::kCurrent:
      from = position_;
      break;
    case MSeekOrigin::kEnd:
      from = size_;
      break;
    default:
      ThrowInvalidOrigin();
  }
  const int64_t position = std::clamp<int64_t>(AddLimited(from, offset), 0, size_);
  Base().Seek(AddLimited(start_, position), MSeekOrigin::kStart);
  position_ = position;
}

int64_t MSizeStream::GetPosition() {
  return position_;
}

void MSizeStream::Flush() {
  Base().Flush();
}

bool MSizeStream::IsEnd() {
  return position_ == size_;
}

int64_t MSizeStream::GetSize() {
  return size_;
}

bool MSizeStream::IsValid() {
  return base_ != nullptr;
}

// How many of `count` bytes lie inside of the window.
int32_t MSizeStream::Limit(int32_t count) const noexcept {
  return static_cast<int32_t>(std::clamp<int64_t>(count, 0, size_ - position_));
}

MStream& MSizeStream::Base() const {
  if (!base_) ThrowNotOpen();
  return *base_;
}
