#pragma once
#include "core/MStream.h"

// A window on another stream: `size` bytes from the position that the base has when the window is made. A
// negative size counts as 0. Nobody else may move the base meanwhile: the window seeks it in Seek only.
// Without a base transfers, Seek and Flush raise "File stream is not initialized." (kStreamClosed).
class MSizeStream : public MStream {
 public:
  // An owned base is destroyed with the window; when the constructor raises it stays the caller's.
  MSizeStream(MStream* base, int64_t size, bool ownsBase, bool canSeek);
  ~MSizeStream() override;  // lets through what an owned base raises

  // Bytes that do not fit are not written, and then raise "The stream cannot be written, because its size is
  // out of range." (kTransferFailed).
  void Write(const void* bytes, int32_t count) override;
  int32_t Read(void* bytes, int32_t count) override;
  // Limited to 0 to the size. Raises "Seeking operation is forbidden for the size-stream." (kTransferFailed)
  // unless the window can seek.
  void Seek(int64_t offset, MSeekOrigin origin) override;
  int64_t GetPosition() override;
  void Flush() override;
  bool IsEnd() override;
  int64_t GetSize() override;
  bool IsValid() override;  // has a base

 private:
  int32_t Limit(int32_t count) const noexcept;
  MStream& Base() const;

  MStream* base_;
  bool ownsBase_;
  bool canSeek_;
  int64_t start_;
  int64_t position_ = 0;
  int64_t size_;
};
