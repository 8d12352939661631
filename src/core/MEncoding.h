#pragma once
// The text encodings: codecs, which turn bytes into texts and back, and their lookup by name. Reader and
// Writer (MEncodingReader.h, MEncodingWriter.h) put a codec on a stream.
//
// There is one object of each codec, and one TableCodec for each of the 28 single-byte encodings. They live
// for ever and may be used by any number of threads. Bad bytes and characters that an encoding does not have
// are no failure; what becomes of them stands with each codec. "Out of memory." is the one thing that Decode
// and Encode raise.

#include "core/MStream.h"

namespace MEncoding {

class Reader;
class Writer;

// How far a codec came: bytes read, UTF-16 units written.
struct Piece {
  int32_t bytes = 0;
  int32_t units = 0;
};

class Codec {
 public:
  Codec(const Codec&) = delete;
  Codec& operator=(const Codec&) = delete;

  // The primary name.
  virtual MString GetName() const = 0;
  // The text of `size` bytes; null or a size below 1 is the empty text.
  virtual MString Decode(const void* bytes, int32_t size) const;
  // The bytes of a text, with a zero character behind them that counts in the size when `terminate` is set.
  virtual MBytes Encode(const MString& text, bool terminate) const;
  // What stands in front of the text in a file: nothing, except in UTF-16.
  virtual void ReadHeader(MStream& stream) const;
  virtual void WriteHeader(MStream& stream) const;
  // Reads up to a line feed, which ends the line, or to the end of the data; carriage returns are dropped.
  // False, and an empty line, when there was no data at all.
  virtual bool ReadLine(Reader& reader, MString& line) const;
  virtual void WriteText(Writer& writer, const MString& text) const;
  // The text and a line feed.
  virtual void WriteTextLine(Writer& writer, const MString& text) const;

  // Decode for data that comes in pieces: decodes from the start of `bytes` as far as it finds whole
  // characters and room for them. A character that the end cuts off is left for the next piece, where its
  // first bytes come again, unless this is the last one. At least kLongestSequence bytes and room for two
  // units always bring it on, except where the encoding ends its texts. Raises nothing.
  virtual Piece DecodePiece(const uint8_t* bytes, int32_t size, bool isLast, MChar* units,
                            int32_t capacity) const noexcept = 0;
  // Encode into memory of the caller: returns the end of what it wrote, at most kMaximumBytes for each unit.
  // Raises nothing.
  virtual uint8_t* EncodeTo(const MString& text, uint8_t* bytes) const noexcept = 0;

  static constexpr int32_t kLongestSequence = 4;
  static constexpr int32_t kMaximumBytes = 3;

 protected:
  constexpr Codec() noexcept = default;
  ~Codec() = default;  // never used: codecs live for ever

  // Encode by EncodeTo into a block of `bound` bytes and, if wanted, a zero byte.
  MBytes EncodeBlock(const MString& text, int64_t bound, bool terminate) const;
};

// Bytes are the units 0 to 255 and, back, the lowest byte of each unit.
class ASCIICodec final : public Codec {
 public:
  static const ASCIICodec& Get() noexcept;

  MString GetName() const override;
  Piece DecodePiece(const uint8_t* bytes, int32_t size, bool isLast, MChar* units,
                    int32_t capacity) const noexcept override;
  uint8_t* EncodeTo(const MString& text, uint8_t* bytes) const noexcept override;

 private:
  constexpr ASCIICodec() noexcept = default;
};

// Decoding drops bytes that cannot begin a character and the character U+FEFF, wherever it stands. A byte in
// place of a continuation byte ends the sequence: U+0001 stands for both, as it does for values above
// 0x10FFFF. Overlong forms and surrogates are taken as they are. A sequence that the end cuts off is lost.
//
// Encoding drops a surrogate without its partner, a high one together with the unit behind it. The code
// points 0x10FE01 to 0x10FEFF are a channel for raw bytes: each comes out as its lowest eight bits, and the
// unit behind it is skipped.
class UTF8Codec final : public Codec {
 public:
  static const UTF8Codec& Get() noexcept;

  MString GetName() const override;
  MBytes Encode(const MString& text, bool terminate) const override;
  Piece DecodePiece(const uint8_t* bytes, int32_t size, bool isLast, MChar* units,
                    int32_t capacity) const noexcept override;
  uint8_t* EncodeTo(const MString& text, uint8_t* bytes) const noexcept override;

 private:
  constexpr UTF8Codec() noexcept = default;
};

// Two bytes a unit, low byte first; an odd byte at the end is dropped. The terminating zero has two bytes.
class UTF16Codec final : public Codec {
 public:
  static const UTF16Codec& Get() noexcept;

  MString GetName() const override;
  // The bytes of a text in buffer mode are its own units, shared.
  MBytes Encode(const MString& text, bool terminate) const override;
  // Raises "Invalid UTF8 header." unless the next two bytes are FF FE; fewer raise as
  // MStream::ThrowShortRead.
  void ReadHeader(MStream& stream) const override;
  void WriteHeader(MStream& stream) const override;
  // A line ends at a zero as well. With no whole unit left the result is false.
  bool ReadLine(Reader& reader, MString& line) const override;
  void WriteText(Writer& writer, const MString& text) const override;
  Piece DecodePiece(const uint8_t* bytes, int32_t size, bool isLast, MChar* units,
                    int32_t capacity) const noexcept override;
  uint8_t* EncodeTo(const MString& text, uint8_t* bytes) const noexcept override;

 private:
  constexpr UTF16Codec() noexcept = default;
};

// ASCII and 128 characters above it. Decoding ends at a zero byte, also in pieces; a byte without a character
// becomes U+FFFD. Encoding drops what the table does not have; of equal characters the lowest byte is taken.
class TableCodec final : public Codec {
 public:
  // The codec that has this name, or null.
  static const TableCodec* Find(const MString& name);

  MString GetName() const override;
  Piece DecodePiece(const uint8_t* bytes, int32_t size, bool isLast, MChar* units,
                    int32_t capacity) const noexcept override;
  uint8_t* EncodeTo(const MString& text, uint8_t* bytes) const noexcept override;

 private:
  struct Record;

  constexpr TableCodec() noexcept = default;
  static TableCodec codecs[];
  static Record records[];

  Record* record_ = nullptr;
};

// The codec of that name, compared as names are (MString::Compare): "utf8" or "utf-8", "utf16" or "utf-16",
// "ascii" or the empty name, or one of those in MEncodingTables.cpp. Any other raises "No codec found for
// encoding {0}."
const Codec& FindCodec(const MString& name);

}  // namespace MEncoding
