#pragma once
#include <array>

#include "core/MHashStream.h"

// MD5 (RFC 1321). A salt other than 0 moves the chaining values that it begins with, so the digest is another
// one. It tells damaged data from sound data; it does not protect against forgery.
class MMD5Stream : public MHashStream {
 public:
  explicit MMD5Stream(uint32_t salt = 0) noexcept;

  // Between Finish and Reset raises "Cryptographic hash stream has not been initialized." (kTransferFailed).
  void Write(const void* bytes, int32_t count) override;

  void Reset() noexcept override;
  void Finish() override;  // a second time does nothing
  // Writes the 16 bytes of the chaining values, which are the digest once Finish was called.
  void WriteDigest(MStream& target) override;
  int32_t GetDigestSize() override { return kDigestSize; }
  // As Write of 64 bytes.
  void HashBlock(const uint8_t* block) override { Write(block, int32_t{kBlockSize}); }

 private:
  static constexpr uint32_t kBlockSize = 64;
  static constexpr int32_t kDigestSize = 16;

  void Add(const uint8_t* bytes, uint32_t count) noexcept;

  uint32_t salt_;
  std::array<uint32_t, 4> chain_;
  uint64_t bits_;
  bool isFinished_;
  uint8_t block_[kBlockSize];
};
