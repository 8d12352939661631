#pragma once
#include "core/MStream.h"

// Base of the streams that swallow what is written and make a digest of it. They cannot be read or sought.
class MHashStream : public MStream {
 public:
  ~MHashStream() noexcept override;

  // Raises "Cryptographic hash stream has not been initialized." (kTransferFailed) without a block size.
  void Write(const void* bytes, int32_t count) override;

  // Begins anew.
  virtual void Reset();
  // Fills a partly filled block with zeros and hashes it. Nothing when there is none.
  virtual void Finish();
  virtual void WriteDigest(MStream& target) = 0;
  virtual int32_t GetDigestSize() = 0;  // in bytes
  virtual void HashBlock(const uint8_t* block) = 0;

 protected:
  // A block size in bytes; below 1 the stream counts as not initialized.
  explicit MHashStream(int32_t blockSize = 0);
  [[noreturn]] static void ThrowNotInitialized();

 private:
  int32_t blockSize_;
  int32_t buffered_ = 0;
  uint8_t* block_;
};
