#pragma once
// What the readers of sample files share.

#include "core/MException.h"
#include "core/MMemoryStream.h"

// Raises "Invalid file contents. " and the message (kTransferFailed). The source is the place, "byte 12",
// counted from where the reader began.
[[noreturn]] void MThrowInvalidContents(const char* message, int64_t position);

// Puts "byte 12" into an exception's source.
void MAddPlace(MException& failure, int64_t position);

// Reads until all is there or nothing comes any more; returns the count read.
int32_t MReadFully(MStream& stream, void* bytes, int32_t count);

// Moves on by `count` bytes, also by more than a stream in memory can seek at once.
void MSkip(MStream& stream, int64_t count);

// What is left of a stream that tells its size and position, -1 of another one.
int64_t MGetBytesLeft(MStream& stream);

// The stream to read the next `count` bytes from, once it is known that they are there, so that no header
// makes us take memory for what does not come: `stream` itself, or `copy`, which then has the bytes of a
// stream that does not tell its size. Null if there are fewer.
MStream* MRequireBytes(MStream& stream, int64_t count, MMemoryStream& copy);

// Little-endian numbers, wherever they lie.
inline uint16_t MGetLittle16(const uint8_t* bytes) noexcept {
  return static_cast<uint16_t>(bytes[0] | bytes[1] << 8);
}
inline uint32_t MGetLittle32(const uint8_t* bytes) noexcept {
  return MGetLittle16(bytes) | uint32_t{MGetLittle16(bytes + 2)} << 16;
}
