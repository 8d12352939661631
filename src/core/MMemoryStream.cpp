#include "core/MMemoryStream.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "core/MException.h"

namespace {

constexpr int64_t kHighest = std::numeric_limits<int32_t>::max();
constexpr int64_t kLowest = std::numeric_limits<int32_t>::min();

}  // namespace

MMemoryStream::MMemoryStream() : block_(MDataBlock::Make(0)) {}

MMemoryStream::MMemoryStream(const void* bytes, int32_t size) : MMemoryStream() {
  if (!bytes || size < 1) return;
  block_->data = static_cast<uint8_t*>(const_cast<void*>(bytes));
  block_->size = size;
  block_->flags = MDataBlock::kUnowned;
  size_ = size;
}

MMemoryStream::MMemoryStream(const MMemoryStream& other) noexcept
    : MStream(), block_(other.block_), size_(other.size_), position_(other.position_) {
  block_->Retain();
}

MMemoryStream& MMemoryStream::operator=(const MMemoryStream& other) noexcept {
  other.block_->Retain();
  MDataBlock::Drop(block_);
  block_ = other.block_;
  size_ = other.size_;
  position_ = other.position_;
  return *this;
}

MMemoryStream::~MMemoryStream() noexcept {
  MDataBlock::Drop(block_);
}

void MMemoryStream::Write(const void* bytes, int32_t count) {
  if (count <= 0) return;
  if (position_ < 0) MThrowIndexOutOfRange();
  const int64_t end = int64_t{position_} + count;
  // Bytes of the stream itself move with it.
  const auto inside =
      reinterpret_cast<std::uintptr_t>(bytes) - reinterpret_cast<std::uintptr_t>(block_->data);
  const bool isOwn = inside < static_cast<std::uintptr_t>(block_->size);
  MakeRoom(std::max<int64_t>(end, size_));
  if (position_ > size_) std::memset(block_->data + size_, 0, static_cast<std::size_t>(position_ - size_));
  std::memmove(block_->data + position_, isOwn ? block_->data + inside : bytes,
               static_cast<std::size_t>(count));
  position_ = static_cast<int32_t>(end);
  size_ = std::max(size_, position_);
}

int32_t MMemoryStream::Read(void* bytes, int32_t count) {
  if (count <= 0 || position_ < 0 || position_ >= size_) return 0;
  count = std::min(count, size_ - position_);
  std::memcpy(bytes, block_->data + position_, static_cast<std::size_t>(count));
  position_ += count;
  return count;
}

MLineStatus MMemoryStream::ReadLine(char* text, int32_t size) {
  if (size < 1) return MLineStatus::kFull;
  *text = 0;
  if (position_ < 0 || position_ >= size_) return MLineStatus::kNone;
  MLineStatus status = MLineStatus::kFull;
  int64_t next = position_;
  while (status == MLineStatus::kFull && size > 1) {
    // The end counts as a line feed, so the position comes to lie behind it.
    const uint8_t byte = next < size_ ? block_->data[next] : uint8_t{'\n'};
    ++next;
    if (byte == '\n') {
      status = MLineStatus::kLine;
    } else if (byte != '\r') {
      *text++ = static_cast<char>(byte);
      --size;
    }
  }
  *text = 0;
  position_ = static_cast<int32_t>(std::min(next, kHighest));
  return status;
}

void MMemoryStream::Seek(int64_t offset, MSeekOrigin origin) {
  const int64_t low = static_cast<int32_t>(static_cast<uint32_t>(offset));
  int64_t position = 0;
  switch (origin) {
    case MSeekOrigin::kStart:
      position = std::clamp<int64_t>(low, 0, size_);
      break;
    case MSeekOrigin::kCurrent:
      position = std::min<int64_t>(position_ + low, size_);
      break;
    case MSeekOrigin::kEnd:
      position = std::max<int64_t>(size_ + low, 0);
      break;
    default:
      ThrowInvalidOrigin();
  }
  position_ = static_cast<int32_t>(std::clamp(position, kLowest, kHighest));
}

int64_t MMemoryStream::GetPosition() {
  return position_;
}

void MMemoryStream::Flush() {}

bool MMemoryStream::IsEnd() {
  return position_ >= size_;
}

int64_t MMemoryStream::GetSize() {
  return size_;
}

void MMemoryStream::Clear() {
  *this = MMemoryStream();
}

void MMemoryStream::SetCapacity(int32_t capacity) {
  capacity = std::max(capacity, 0);
  if (!block_->IsOwned() || block_->IsShared()) {
    MDataBlock* const block = MDataBlock::Make(capacity);
    const int32_t kept = std::min(size_, capacity);
    if (kept > 0) std::memcpy(block->data, block_->data, static_cast<std::size_t>(kept));
    MDataBlock::Drop(block_);
    block_ = block;
  } else if (capacity != block_->size) {
    block_->data = static_cast<uint8_t*>(MReallocate(block_->data, static_cast<std::size_t>(capacity)));
    block_->size = capacity;
  }
  size_ = std::min(size_, capacity);
  position_ = std::min(position_, capacity);
}

const uint8_t* MMemoryStream::GetCurrentData() {
  return position_ < 0 || position_ > size_ ? nullptr : block_->data + position_;
}

// Makes the bytes private, with a capacity of at least `size`, which is not below the stream's size.
void MMemoryStream::MakeRoom(int64_t size) {
  if (size > kHighest) MThrowOutOfMemory();
  int64_t capacity = block_->size > 0 ? block_->size : size;
  while (capacity < size) capacity *= 2;
  SetCapacity(static_cast<int32_t>(std::min(capacity, kHighest)));
}
