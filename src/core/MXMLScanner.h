#pragma once
#include <algorithm>
#include <limits>

#include "core/MEncodingReader.h"

// A place in a text: line and column count from 1, a column is one UTF-16 unit.
struct MXMLPosition {
  int64_t line = 1;
  int64_t column = 1;
};

// Gives out texts and remembers the short ones, so that names and values that come again share their memory.
class MXMLTextCache {
 public:
  MString Get(std::u16string_view units);

  static constexpr std::size_t kLongest = 32;

 private:
  struct Slot {
    MString text;
    uint32_t tag = 0;  // further bits of the hash, 0 while the slot is free
    int32_t misses = 0;
  };
  static constexpr uint32_t kSlotBits = 9;
  static constexpr int32_t kPatience =
      8;  // a text gives way to the one that misses it for the 8th time in a row

  Slot slots_[1 << kSlotBits];  // by hash
};

// A marked-up text unit by unit out of a stream, through a buffer of fixed size. What the stream raises
// passes through. Blanks are the units up to 32.
class MXMLScanner {
 public:
  static constexpr int32_t kBufferSize = 1024;
  static constexpr int32_t kEnd = -1;

  MXMLScanner(MStream& stream, const MEncoding::Codec& codec) noexcept : reader_(stream, codec) {}

  // As MEncoding::Reader; SetCodec is for all that comes behind the position.
  bool DetectUTF16() { return reader_.DetectUTF16(); }
  const MEncoding::Codec& GetCodec() const noexcept { return reader_.GetCodec(); }
  void SetCodec(const MEncoding::Codec& codec);

  // The unit at the position, or kEnd; Next steps over it.
  int32_t Peek() { return position_ < fill_ || Refill() ? buffer_[position_] : kEnd; }
  int32_t Next() { return Peek() == kEnd ? kEnd : buffer_[position_++]; }
  // False if there are more than `most` of them; then some of the others are skipped too.
  bool SkipBlanks(int64_t most = std::numeric_limits<int64_t>::max());

  // Reads up to the first unit that is a stop, or to the end. The result lives until the next operation.
  template <typename IsStop>
  std::u16string_view ReadUntil(IsStop isStop);
  // A text of these units, which takes the memory over when they are what ReadUntil just gave.
  MString Keep(std::u16string_view units, MXMLTextCache& cache);
  // Reads through a ">" with at least `count` times `mark` in front of it; false if the end comes first.
  // `content`, unless null, gets at most `limit` units of what stands before that mark.
  bool ReadThrough(MChar mark, int32_t count, MString* content, int32_t limit = MString::kWhole);

  MXMLPosition GetPosition() noexcept;
  // Marks the position, whose lines are counted only when GetMark asks where it was.
  void Mark() noexcept { mark_ = position_; }
  const MXMLPosition& GetMark() noexcept;

  static constexpr bool IsBlank(int32_t unit) noexcept { return unit <= 32; }
  // The characters that end a name beside blanks: < > " / ! =
  static constexpr bool IsDelimiter(int32_t unit) noexcept {
    return unit == '<' || unit == '>' || unit == '"' || unit == '/' || unit == '!' || unit == '=';
  }
  static constexpr bool EndsName(int32_t unit) noexcept {
    constexpr uint64_t kEnds =
        0x1FFFFFFFF | 1ull << '<' | 1ull << '>' | 1ull << '"' | 1ull << '/' | 1ull << '!' | 1ull << '=';
    return unit < 64 && (kEnds >> unit & 1) != 0;
  }

 private:
  bool Refill();
  void CountLines(int32_t to) noexcept;

  MEncoding::Reader reader_;
  MString gathered_;  // what ReadUntil gives when it lies across the buffer's end
  int32_t position_ = 0;
  int32_t fill_ = 0;
  int32_t counted_ = 0;  // where `place_` is
  MXMLPosition place_;
  int32_t mark_ = -1;  // -1 once `markPlace_` is where it was
  MXMLPosition markPlace_;
  MChar buffer_[kBufferSize];
};

template <typename IsStop>
std::u16string_view MXMLScanner::ReadUntil(IsStop isStop) {
  if (!gathered_.IsEmpty()) gathered_.Clear();
  for (;;) {
    const MChar* const begin = buffer_ + position_;
    const MChar* const end = buffer_ + fill_;
    const MChar* const stop = std::find_if(begin, end, isStop);
    const int32_t count = static_cast<int32_t>(stop - begin);
    position_ += count;
    if (stop != end && gathered_.IsEmpty()) return {begin, static_cast<std::size_t>(count)};
    gathered_.AppendUnits(begin, count);
    if (stop != end || !Refill()) break;
  }
  if (gathered_.IsEmpty()) return {};
  return {gathered_.Units(), static_cast<std::size_t>(gathered_.GetLength())};
}
