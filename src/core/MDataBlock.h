#pragma once
// A counted block of bytes: the carrier of encoded text and the memory behind MMemoryStream.

#include <atomic>

#include "core/MMemory.h"

class MString;

// Made apart from its bytes. The count is changed atomically, so holders may live on several threads.
struct MDataBlock {
  M_LIBRARY_MEMORY

  // Flags.
  static constexpr uint32_t kUnowned = 1;  // the bytes belong to somebody else
  static constexpr uint32_t kText = 2;     // made by Share

  int32_t references = 1;
  uint8_t* data = nullptr;
  int32_t size = 0;  // in bytes
  uint32_t flags = 0;

  // An owned block of `size` bytes with undefined content; a size below 1 has no bytes.
  static MDataBlock* Make(int32_t size);
  // A block on the first `size` bytes of the units of a text in buffer mode, which it shares.
  static MDataBlock* Share(const MString& text, int32_t size);

  bool IsOwned() const noexcept { return (flags & kUnowned) == 0; }
  bool IsShared() const noexcept {
    return std::atomic_ref<int32_t>(const_cast<int32_t&>(references)).load(std::memory_order_acquire) > 1;
  }

  void Retain() noexcept { std::atomic_ref<int32_t>(references).fetch_add(1, std::memory_order_relaxed); }
  // Drops one reference of a block that may be null; the last one releases bytes and block.
  static void Drop(MDataBlock* block) noexcept;
};

// Encoded text: a handle on a block. Copies share it.
class MBytes {
 public:
  MBytes() noexcept = default;
  // Takes over the reference that the caller holds.
  explicit MBytes(MDataBlock* block) noexcept : block_(block) {}
  MBytes(const MBytes& other) noexcept : block_(other.block_) {
    if (block_) block_->Retain();
  }
  MBytes(MBytes&& other) noexcept : block_(other.block_) { other.block_ = nullptr; }
  MBytes& operator=(MBytes other) noexcept {
    MDataBlock* const mine = block_;
    block_ = other.block_;
    other.block_ = mine;
    return *this;
  }
  ~MBytes() { MDataBlock::Drop(block_); }

  const uint8_t* GetData() const noexcept { return block_ ? block_->data : nullptr; }
  int32_t GetSize() const noexcept { return block_ ? block_->size : 0; }
  // The bytes as 8-bit text; zero-terminated if they were made so.
  const char* GetText() const noexcept {
    return block_ && block_->data ? reinterpret_cast<const char*>(block_->data) : "";
  }

 private:
  MDataBlock* block_ = nullptr;
};
