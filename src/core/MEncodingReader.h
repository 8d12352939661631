#pragma once
#include "core/MEncoding.h"

namespace MEncoding {

// Text out of a stream. It reads ahead: while a reader is in use the stream's position means nothing. Text
// comes line by line, or, for parsers, in large pieces of UTF-16 units. A parser may find the name of another
// encoding in the text that it has got already, and go on from there:
//
//   MEncoding::Reader reader(stream, MEncoding::FindCodec("utf-8"));
//   reader.DetectUTF16();
//   MChar text[1024];
//   int32_t count = reader.ReadUnits(text, 1024);
//   // The parser has read <?xml version="1.0" encoding="windows-1250"?>, the first `position` units.
//   reader.SetCodec(MEncoding::FindCodec("windows-1250"), count - position);
//   count = reader.ReadUnits(text, 1024);  // what stands behind the head
//
// A reader is used by one thread at a time. What the stream raises passes through.
class Reader {
 public:
  M_LIBRARY_MEMORY

  static constexpr int32_t kBufferSize = 4096;

  // Reads from the stream's position on. A header is read before (Codec::ReadHeader, DetectUTF16).
  Reader(MStream& stream, const Codec& codec) noexcept : stream_(stream), codec_(&codec) {}
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  const Codec& GetCodec() const noexcept { return *codec_; }

  // As Codec::ReadLine.
  bool ReadLine(MString& line) { return codec_->ReadLine(*this, line); }

  // Decodes up to `count` units, at least 2 (else "Index out of range."). Characters that lie across the
  // pieces that the stream gives come whole, surrogate pairs in one call. Returns the units written; there
  // may be less than `count` of them before the end, 0 only there.
  int32_t ReadUnits(MChar* units, int32_t count);

  // Decodes by another codec from here on. The last `unread` units of the last ReadUnits are given back:
  // their bytes, and what the old codec dropped among them, are decoded anew. More than that call wrote is
  // "Index out of range.", and so is any number above 0 when there was another operation since.
  void SetCodec(const Codec& codec, int32_t unread = 0);

  // Steps over the header FF FE and goes on in UTF-16. False if the next bytes are others.
  bool DetectUTF16();

  // The next byte; at the end raises "No more data in source stream."
  uint8_t ReadByte();

  // For codecs: bytes that wait to be read. Fill reads until there are `count` of them (1 to kBufferSize) or
  // the stream ends, and returns how many there are; their address stays until the next Fill. Skip takes at
  // most as many as there are.
  int32_t Fill(int32_t count);
  const uint8_t* GetBytes() const noexcept { return buffer_ + position_; }
  void Skip(int32_t count) noexcept;

 private:
  MStream& stream_;
  const Codec* codec_;
  Piece last_;  // of the last ReadUnits; its bytes lie before the position
  int32_t position_ = 0;
  int32_t fill_ = 0;
  uint8_t buffer_[kBufferSize];
};

}  // namespace MEncoding
