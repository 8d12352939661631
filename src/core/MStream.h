#pragma once
// MStream, the one byte stream of the library. Positions and sizes are signed 64-bit, the count of one
// transfer is signed 32-bit; a count of 0 or less transfers nothing. Failures are MExceptions with the codes
// of MErrorCode; a read that finds less data than asked for is none. A stream is used by one thread at a
// time.

#include "core/MObject.h"
#include "core/MString.h"

enum class MSeekOrigin : int32_t { kStart = 0, kCurrent = 1, kEnd = 2 };

enum class MLineStatus : int32_t {
  kLine = 0,  // a whole line was read
  kFull = 1,  // the buffer filled before the line ended
  kNone = 2,  // nothing could be read
};

class MStream : public MObject {
 public:
  // Writes all bytes, or raises.
  virtual void Write(const void* bytes, int32_t count) = 0;
  // Writes `count` zero bytes.
  virtual void WriteFiller(int32_t count);
  // Returns the count read, less than asked for only at the end. Default: not implemented.
  virtual int32_t Read(void* bytes, int32_t count);
  // Reads up to a line feed or a zero byte into a zero-terminated text of at most size - 1 bytes; carriage
  // returns are dropped, nothing is decoded. A buffer below 1 byte is left alone and gives kFull.
  virtual MLineStatus ReadLine(char* text, int32_t size);
  // Writes the first bytes of the text's UTF-8 form, as many as it has characters: all of an ASCII text, less
  // of others.
  virtual void WriteText(const MString& text);
  // WriteText and a line feed.
  virtual void WriteTextLine(const MString& text);
  // Default: forward only, by reading; a seek past the end stops there silently.
  virtual void Seek(int64_t offset, MSeekOrigin origin);
  virtual int64_t GetPosition();  // default: not implemented
  virtual void Flush();           // default: not implemented
  virtual bool IsEnd();           // default: not implemented
  // Cuts the stream at the position. Default: not implemented.
  virtual void Truncate();
  virtual int64_t GetSize();  // default: not implemented
  virtual bool IsValid();     // default: true

  // Reads exactly `count` bytes, or raises as ThrowShortRead.
  void ReadRequired(void* bytes, int32_t count);
  // Raises "Could not read required data from stream." (kTransferFailed).
  [[noreturn]] static void ThrowShortRead();

  MStream() = default;
  MStream(const MStream&) = delete;
  MStream& operator=(const MStream&) = delete;

 protected:
  // The sum, limited to the range of 64 bits.
  static int64_t AddLimited(int64_t a, int64_t b) noexcept;
  // Raises "Invalid seek origin." (kBadArgument).
  [[noreturn]] static void ThrowInvalidOrigin();
  // Raises "File stream is not initialized." (kStreamClosed), also for a filter without a stream below it.
  [[noreturn]] static void ThrowNotOpen();
};
