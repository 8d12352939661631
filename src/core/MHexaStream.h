#pragma once
#include "core/MDispatchStream.h"

// Bytes on this side are two hexadecimal digits each in the target. Without a target all services but IsValid
// raise "File stream is not initialized." (kStreamClosed).
class MHexaStream : public MDispatchStream {
 public:
  using MDispatchStream::MDispatchStream;

  void Write(const void* bytes, int32_t count) override;  // in upper case
  // Accepts both cases. A single digit at the end is dropped; any other character raises as ThrowShortRead.
  int32_t Read(void* bytes, int32_t count) override;
  // Passed on as it is: the offset counts characters of the target, the position bytes.
  void Seek(int64_t offset, MSeekOrigin origin) override;
  int64_t GetPosition() override;
  void Flush() override;
  bool IsEnd() override;
  int64_t GetSize() override;
  bool IsValid() override;  // has a target

  // Bytes that are converted at a time.
  static constexpr int32_t kChunk = 128;
  // Writes the 2 * count upper-case digits of the bytes, high nibble first.
  static void Encode(const uint8_t* bytes, int32_t count, char* digits) noexcept;

 private:
  MStream& Target() const;
};
