#include "core/MString.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace {

constexpr int32_t kMaximumUnits = 0x1FFFFFFC;  // with head and rounding: the largest block of 31 bits

// Bytes of a block with room for `count` units: head and units, rounded up to the next power of two.
constexpr std::size_t BlockSize(int32_t count) {
  return std::bit_ceil(2 * static_cast<std::size_t>(count) + 8);
}

void Copy(MChar* target, const MChar* source, int32_t count) {
  std::memcpy(target, source, static_cast<std::size_t>(count) * sizeof(MChar));
}

void Copy(MChar* target, const char* source, int32_t count) {
  for (int32_t i = 0; i < count; ++i) target[i] = MString::Widen(source[i]);
}

// Length of zero-terminated text in units, as far as a string can hold it.
template <typename Unit>
int32_t Measure(const Unit* text) {
  const std::size_t length = text ? std::char_traits<Unit>::length(text) : 0;
  if (length >= static_cast<std::size_t>(kMaximumUnits)) MThrowOutOfMemory();
  return static_cast<int32_t>(length);
}

MChar FoldCase(MChar c) {
  return c >= u'A' && c <= u'Z' ? static_cast<MChar>(c + 32) : c;
}

MChar Fold(MChar c) {
  return FoldCase(c < 192 ? c : FoldDiacritics(c));
}

template <typename Left, typename Right>
int32_t CompareUnits(const Left* left, int32_t leftLength, const Right* right, int32_t rightLength,
                     int32_t maximum) {
  const auto unit = [](const auto* units, int32_t length, int32_t i) {
    if (i >= length) return MChar(0);
    if constexpr (sizeof(*units) == 1)
      return MString::Widen(units[i]);
    else
      return MChar(units[i]);
  };
  for (int32_t i = 0; i < maximum; ++i) {
    const MChar a = unit(left, leftLength, i);
    const MChar b = unit(right, rightLength, i);
    if (a != b) {
      const int32_t difference = Fold(a) - Fold(b);
      if (difference != 0) return difference;
    }
    if (a == 0) return 0;
  }
  return 0;
}

}  // namespace

MChar* MString::NewBlock(int32_t count) {
  const std::size_t size = BlockSize(count);
  Head* const head = static_cast<Head*>(MAllocate(size));
  *head = {static_cast<int32_t>(size), 1};
  return reinterpret_cast<MChar*>(head + 1);
}

MString MString::FromNarrow(const char* text) {
  return FromNarrow(text, Measure(text));
}

MString MString::FromNarrow(const char* text, int32_t length) {
  MString result;
  result.Reserve(std::max(length, 0) + 1);
  if (length > 0) result.AppendAny(text, length);
  return result;
}

MString::MString(const MChar* text) : MString(std::u16string_view(text ? text : u"")) {}

MString::MString(std::u16string_view text) : MString() {
  if (text.size() >= static_cast<std::size_t>(kMaximumUnits)) MThrowOutOfMemory();
  const int32_t length = static_cast<int32_t>(text.size());
  MChar* const units = NewBlock(length + 1);
  Copy(units, text.data(), length);
  units[length] = 0;
  Adopt(units);
  length_ = length;
}

MString::MString(MChar character) : MString(std::u16string_view(&character, 1)) {}

MString& MString::operator=(const MString& other) noexcept {
  if (!other.IsLiteral()) other.Retain();  // first, since it may be this text
  if (!IsLiteral()) Release();
  chars_ = other.chars_;
  length_ = other.length_;
  flags_ = other.flags_;
  return *this;
}

MString& MString::operator=(MString&& other) noexcept {
  std::swap(chars_, other.chars_);
  std::swap(length_, other.length_);
  std::swap(flags_, other.flags_);
  return *this;
}

void MString::Reserve(int32_t count) {
  count = std::max(count, 1);
  if (count > kMaximumUnits) MThrowOutOfMemory();
  if (IsLiteral()) {
    const int32_t kept = static_cast<int32_t>(
        std::min<std::size_t>(std::strlen(Narrow()), static_cast<std::size_t>(count) - 1));
    MChar* const units = NewBlock(count);
    Copy(units, Narrow(), kept);
    units[kept] = 0;
    Adopt(units);
    length_ = std::min(length_, kept);
    return;
  }
  Head* const head = GetHead();
  if (std::atomic_ref<int32_t>(head->references).load(std::memory_order_acquire) < 2) {
    const std::size_t size = BlockSize(count);
    if (static_cast<std::size_t>(head->capacity) < size) {
      Head* const resized = static_cast<Head*>(MReallocate(head, size));
      resized->capacity = static_cast<int32_t>(size);
      chars_ = resized + 1;
    }
    return;
  }
  const int32_t kept = std::min(length_, count - 1);
  MChar* const units = NewBlock(count);
  Copy(units, Units(), kept);
  units[kept] = 0;
  Release();
  Adopt(units);
  length_ = kept;
}

// Reserve for `count` units behind the text and its terminator.
void MString::ReserveMore(int32_t count) {
  const int64_t wanted = int64_t{length_} + count + 1;
  if (wanted > kMaximumUnits) MThrowOutOfMemory();
  Reserve(static_cast<int32_t>(wanted));
}

template <typename Unit>
void MString::AppendAny(const Unit* source, int32_t count) {
  ReserveMore(count);
  MChar* const units = Units();
  Copy(units + length_, source, count);
  length_ += count;
  units[length_] = 0;
}

void MString::Append(const MString& text) {
  if (text.IsEmpty()) return;
  const MString source(text);  // holds the units in place when the text is this one
  source.Visit([this](const auto* units, int32_t length) { AppendAny(units, length); });
}

void MString::Append(const char* text) {
  AppendNarrow(text, Measure(text));
}

void MString::Append(MChar character) {
  AppendAny(&character, 1);
}

void MString::AppendUnits(const MChar* units, int32_t count) {
  if (count > 0) AppendAny(units, count);
}

void MString::AppendNarrow(const char* text, int32_t count) {
  if (count > 0) AppendAny(text, count);
}

void MString::AppendRepeated(MChar character, int32_t count) {
  if (count < 1) return;
  ReserveMore(count);
  std::fill_n(Units() + length_, count, character);
  length_ += count;
  Units()[length_] = 0;
}

// Moves the units from `position` on by `count` places and returns the address of the gap.
MChar* MString::OpenGap(int32_t position, int32_t count) {
  ReserveMore(count);
  position = std::clamp(position, 0, length_);
  MChar* const gap = Units() + position;
  std::memmove(gap + count, gap, static_cast<std::size_t>(length_ - position + 1) * sizeof(MChar));
  length_ += count;
  return gap;
}

void MString::Insert(int32_t position, MChar character) {
  *OpenGap(position, 1) = character;
}

void MString::Insert(int32_t position, const MString& text) {
  if (text.IsEmpty()) return;
  const MString source(text);  // holds the units in place when the text is this one
  source.Visit([&](const auto* units, int32_t length) { Copy(OpenGap(position, length), units, length); });
}

void MString::InsertNarrow(int32_t position, const char* text, int32_t count) {
  if (count > 0) Copy(OpenGap(position, count), text, count);
}

int32_t MString::Find(MChar character, int32_t start) const noexcept {
  return Visit([&](const auto* units, int32_t length) {
    for (int32_t i = std::max(start, 0); i < length; ++i) {
      if constexpr (sizeof(*units) == 1) {
        if (Widen(units[i]) == character) return i;
      } else {
        if (units[i] == character) return i;
      }
    }
    return -1;
  });
}

int32_t MString::FindLast(MChar character, int32_t start) const noexcept {
  for (int32_t i = std::min(start, length_ - 1); i >= 0; --i)
    if (At(i) == character) return i;
  return -1;
}

MString MString::Substring(int32_t start, int32_t count) const {
  if (start < 0 || start >= length_) return MString();
  count = std::min(count, length_ - start);
  if (count <= 0) return MString();
  if (count == length_) return *this;
  MString result;
  result.Reserve(count + 1);
  Visit([&](const auto* units, int32_t) { result.AppendAny(units + start, count); });
  return result;
}

int32_t MString::Compare(const MString& left, int32_t offset, const MString& right, int32_t otherOffset,
                         int32_t maximum) noexcept {
  offset = std::clamp(offset, 0, left.length_);
  otherOffset = std::clamp(otherOffset, 0, right.length_);
  return left.Visit([&](const auto* a, int32_t aLength) {
    return right.Visit([&](const auto* b, int32_t bLength) {
      return CompareUnits(a + offset, aLength - offset, b + otherOffset, bLength - otherOffset, maximum);
    });
  });
}

bool MString::operator==(const MString& other) const noexcept {
  if (length_ != other.length_) return false;
  if (chars_ == other.chars_) return true;
  for (int32_t i = 0; i < length_; ++i)
    if (At(i) != other.At(i)) return false;
  return true;
}

uint32_t MString::Hash() const noexcept {
  const auto unit = [this](int32_t i) {
    return static_cast<uint32_t>(static_cast<int32_t>(static_cast<int8_t>(FoldCase(At(i)))));
  };
  uint32_t hash = 0;
  if (length_ < 16) {
    for (int32_t i = 0; i < length_; ++i) hash ^= unit(i) << (i % 32);
  } else {
    const int32_t end = std::min(length_ / 4, 8);
    for (int32_t i = 0; i < end; i += 4) hash ^= unit(i) << i;
  }
  return hash;
}
