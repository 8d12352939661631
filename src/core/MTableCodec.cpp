#include <algorithm>
#include <cstring>
#include <mutex>

#include "core/MEncoding.h"
#include "core/MEncodingASCII.h"
#include "core/MEncodingTables.h"

namespace MEncoding {
namespace {

constexpr int32_t kBuckets = 32;
constexpr int32_t kUnits = 128;

constinit std::once_flag connected;
static_assert(std::is_trivially_destructible_v<std::once_flag>, "codecs outlive everything");

constexpr int32_t Bucket(MChar unit) {
  return unit % kBuckets;
}

}  // namespace

// A table and its way back, which is made when it is needed first: the units and their bytes, sorted by
// bucket, unit and byte.
struct TableCodec::Record {
  struct Entry {
    MChar unit;
    uint8_t byte;
  };

  const MEncodingTable* table = nullptr;
  Entry entries[kUnits] = {};
  int32_t starts[kBuckets + 1] = {};  // of each bucket in the entries
  std::once_flag made;

  void MakeIndex() noexcept;
  // The lowest byte of this unit, or 0.
  uint8_t Find(MChar unit) const noexcept;
};

constinit TableCodec TableCodec::codecs[kEncodingTableCount];
constinit TableCodec::Record TableCodec::records[kEncodingTableCount];

void TableCodec::Record::MakeIndex() noexcept {
  for (int32_t i = 0; i < kUnits; ++i) entries[i] = {table->units[i], static_cast<uint8_t>(0x80 + i)};
  std::sort(entries, entries + kUnits, [](const Entry& a, const Entry& b) {
    if (Bucket(a.unit) != Bucket(b.unit)) return Bucket(a.unit) < Bucket(b.unit);
    return a.unit != b.unit ? a.unit < b.unit : a.byte < b.byte;
  });
  for (const Entry& entry : entries) ++starts[Bucket(entry.unit) + 1];
  for (int32_t i = 0; i < kBuckets; ++i) starts[i + 1] += starts[i];
}

uint8_t TableCodec::Record::Find(MChar unit) const noexcept {
  const Entry* const end = entries + starts[Bucket(unit) + 1];
  const Entry* const entry = std::lower_bound(entries + starts[Bucket(unit)], end, unit,
                                              [](const Entry& e, MChar wanted) { return e.unit < wanted; });
  return entry != end && entry->unit == unit ? entry->byte : uint8_t{0};
}

const TableCodec* TableCodec::Find(const MString& name) {
  std::call_once(connected, [] {
    for (int32_t i = 0; i < kEncodingTableCount; ++i) {
      records[i].table = &kEncodingTables[i];
      codecs[i].record_ = &records[i];
    }
  });
  for (const TableCodec& codec : codecs) {
    for (const char* const* own = codec.record_->table->names; *own; ++own)
      if (name.Compare(MString::Literal(*own)) == 0) return &codec;
  }
  return nullptr;
}

MString TableCodec::GetName() const {
  return MString::Literal(record_->table->names[0]);
}

Piece TableCodec::DecodePiece(const uint8_t* bytes, int32_t size, bool, MChar* units,
                              int32_t capacity) const noexcept {
  int32_t count = std::min(size, capacity);
  if (count <= 0) return {};
  if (const void* const zero = std::memchr(bytes, 0, static_cast<std::size_t>(count)))
    count = static_cast<int32_t>(static_cast<const uint8_t*>(zero) - bytes);
  const MChar* const table = record_->table->units;
  for (int32_t i = 0; i < count;) {
    if (bytes[i] < 0x80) {
      i += WidenASCII(bytes + i, units + i, count - i);
    } else {
      units[i] = table[bytes[i] - 0x80];
      ++i;
    }
  }
  return {count, count};
}

uint8_t* TableCodec::EncodeTo(const MString& text, uint8_t* bytes) const noexcept {
  std::call_once(record_->made, [this] { record_->MakeIndex(); });
  for (int32_t i = 0; i < text.GetLength(); ++i) {
    const MChar unit = text.At(i);
    const uint8_t byte = unit < 0x80 ? static_cast<uint8_t>(unit) : record_->Find(unit);
    *bytes = byte;
    bytes += byte != 0 || unit == 0;
  }
  return bytes;
}

}  // namespace MEncoding
