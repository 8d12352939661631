#pragma once
#include "core/MEncoding.h"

namespace MEncoding {

// Text into a stream, through a buffer. Flush gives the stream what is buffered, and so does the destructor;
// but what the stream raises then is lost, so a writer is flushed when all is written. A failure drops what
// was buffered. A writer is used by one thread at a time.
class Writer {
 public:
  M_LIBRARY_MEMORY

  static constexpr int32_t kBufferSize = 4096;

  // A header is written before (Codec::WriteHeader).
  Writer(MStream& stream, const Codec& codec) noexcept : stream_(stream), codec_(codec) {}
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() noexcept;

  const Codec& GetCodec() const noexcept { return codec_; }

  // As Codec::WriteText and Codec::WriteTextLine.
  void WriteText(const MString& text) { codec_.WriteText(*this, text); }
  void WriteTextLine(const MString& text) { codec_.WriteTextLine(*this, text); }

  // Gives the stream what is buffered. The stream itself is not flushed.
  void Flush();

  // For codecs: bytes through the buffer, or made in place. MakeRoom returns the address of `count` free
  // bytes, null if the buffer has not that many; Advance says how many of them were filled.
  void Write(const void* bytes, int32_t count);
  uint8_t* MakeRoom(int64_t count);
  void Advance(int32_t count) noexcept { fill_ += count; }

 private:
  MStream& stream_;
  const Codec& codec_;
  int32_t fill_ = 0;
  uint8_t buffer_[kBufferSize];
};

}  // namespace MEncoding
