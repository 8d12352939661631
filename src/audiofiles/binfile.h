#pragma once
#include "core/MObject.h"

namespace mp3dec {

// Requests of binfile::RawIoctl; each answers -1 where it makes no sense.
enum Request : int32_t {
  kGetPosition = 1,  // in bytes
  kGetSize = 2,      // in bytes, -1 where it is not known
  kCanSeek = 3,      // 1: RawSeek goes anywhere
  kHasEnded = 49,    // 1: there is nothing more to read
};

// A small stream of bytes that can be looked at before they are read, the base of all that lies between a
// file and the samples of MPEG audio. Counts of 0 or less transfer nothing.
class binfile : public MObject {
 public:
  binfile() = default;
  binfile(const binfile&) = delete;
  binfile& operator=(const binfile&) = delete;

  // Nothing can be read afterwards.
  virtual void Close() = 0;
  // Returns the count read, less than asked for only at the end.
  virtual int32_t RawRead(void* bytes, int32_t count) = 0;
  // The same without moving on; up to kMostPeeked bytes can be looked at.
  virtual int32_t RawPeek(void* bytes, int32_t count) = 0;
  // Goes to a position, limited to what there is. Returns the position that was reached, -1 for one that
  // cannot be gone to; the position is the old one then.
  virtual int64_t RawSeek(int64_t position) = 0;
  virtual int64_t RawIoctl(int32_t request, MWord a, MWord b) = 0;
  // RawIoctl, for requests without arguments.
  virtual int64_t Ioctl(int32_t request) { return RawIoctl(request, 0, 0); }
  ~binfile() override = default;

  static constexpr int32_t kMostPeeked = 16384;

  // False if there are fewer bytes; what there is has been read or passed.
  bool Read(void* bytes, int32_t count) { return RawRead(bytes, count) == count; }
  bool Skip(int64_t count);
  // Big-endian.
  bool Read16(uint32_t& value);
  bool Read32(uint32_t& value);
  bool Peek16(uint32_t& value);
  // Four bytes of seven bits each, as in the head of an ID3v2 tag.
  bool Read28(uint32_t& value);

 private:
  static uint32_t Join(const uint8_t* bytes, int32_t count, int32_t bits) noexcept;
};

}  // namespace mp3dec
