#pragma once
#include "core/MStream.h"

// A stream in memory. Copies share the bytes until one of them writes, also across threads. Bytes that the
// stream does not own are shared as well: they are never written, the first write takes a private copy. Sizes
// are limited to 2^31-1; more raises "Out of memory.". What raises leaves the stream as it was.
class MMemoryStream : public MStream {
 public:
  MMemoryStream();
  // Over bytes of the caller, which must stay until this stream and its copies are gone or written to. Null
  // or a size below 1 is the empty stream.
  MMemoryStream(const void* bytes, int32_t size);
  MMemoryStream(const MMemoryStream& other) noexcept;
  MMemoryStream& operator=(const MMemoryStream& other) noexcept;
  ~MMemoryStream() noexcept override;

  // At a position beyond the size the gap is filled with zeros; below 0 raises "Index out of range.". The
  // capacity grows to the exact need from 0, else by doubling.
  void Write(const void* bytes, int32_t count) override;
  // At a position below 0 or beyond the size there is nothing to read, and the position stays.
  int32_t Read(void* bytes, int32_t count) override;
  // Unlike the default keeps zero bytes. A last line without a line feed leaves the position behind the size.
  MLineStatus ReadLine(char* text, int32_t size) override;
  // Only the lower 32 bits of the offset count. From the start the result is limited to 0 to the size, from
  // the current position only to the size, from the end only to 0: so it may be negative or beyond the size.
  void Seek(int64_t offset, MSeekOrigin origin) override;
  int64_t GetPosition() override;
  void Flush() override;  // does nothing
  bool IsEnd() override;
  int64_t GetSize() override;

  // Back to the empty stream without bytes.
  void Clear();
  // Takes private bytes of this capacity, 0 when negative. One below the size cuts size and position.
  void SetCapacity(int32_t capacity);
  int32_t GetCapacity() const noexcept { return block_->size; }
  // All bytes, null when there are none. Valid until the next write.
  const uint8_t* GetData() const noexcept { return block_->data; }

  // The byte at the position, null below 0 and beyond the size. Valid until the next write.
  virtual const uint8_t* GetCurrentData();

 private:
  void MakeRoom(int64_t size);

  MDataBlock* block_;
  int32_t size_ = 0;
  int32_t position_ = 0;
};
