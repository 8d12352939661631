#include "core/MHashStream.h"

#include <algorithm>
#include <cstring>

#include "core/MException.h"
#include "core/MTranslate.h"

MHashStream::MHashStream(int32_t blockSize)
    : blockSize_(std::max(blockSize, 0)),
      block_(blockSize_ > 0 ? static_cast<uint8_t*>(MAllocate(static_cast<std::size_t>(blockSize_)))
                            : nullptr) {}

MHashStream::~MHashStream() noexcept {
  if (block_) MRelease(block_);
}

void MHashStream::Write(const void* bytes, int32_t count) {
  if (blockSize_ < 1) ThrowNotInitialized();
  const auto* from = static_cast<const uint8_t*>(bytes);
  while (count > 0) {
    const int32_t chunk = std::min(count, blockSize_ - buffered_);
    if (chunk == blockSize_) {
      HashBlock(from);
    } else {
      std::memcpy(block_ + buffered_, from, static_cast<std::size_t>(chunk));
      buffered_ = (buffered_ + chunk) % blockSize_;
      if (buffered_ == 0) HashBlock(block_);
    }
    from += chunk;
    count -= chunk;
  }
}

void MHashStream::Reset() {
  buffered_ = 0;
}

void MHashStream::Finish() {
  if (buffered_ == 0) return;
  std::memset(block_ + buffered_, 0, static_cast<std::size_t>(blockSize_ - buffered_));
  buffered_ = 0;
  HashBlock(block_);
}

void MHashStream::ThrowNotInitialized() {
  throw MException(Translate("Cryptographic hash stream has not been initialized."),
                   MErrorCode::kTransferFailed);
}
