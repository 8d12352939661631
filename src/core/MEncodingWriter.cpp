#include "core/MEncodingWriter.h"

#include <cstring>

namespace MEncoding {

Writer::~Writer() noexcept {
  try {
    Flush();
  } catch (...) {
  }
}

void Writer::Flush() {
  const int32_t count = fill_;
  fill_ = 0;  // first, so that a failure is reported once
  if (count > 0) stream_.Write(buffer_, count);
}

void Writer::Write(const void* bytes, int32_t count) {
  if (count <= 0) return;
  if (uint8_t* const room = MakeRoom(count)) {
    std::memcpy(room, bytes, static_cast<std::size_t>(count));
    Advance(count);
  } else {
    Flush();
    stream_.Write(bytes, count);
  }
}

uint8_t* Writer::MakeRoom(int64_t count) {
  if (count > kBufferSize) return nullptr;
  if (count > kBufferSize - fill_) Flush();
  return buffer_ + fill_;
}

}  // namespace MEncoding
