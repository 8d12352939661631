#include "core/MString.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <functional>
#include <utility>

namespace {

constexpr int32_t kMaximumUnits = 0x1FFFFFFC;  // with the head: the largest power of two in 31 bits

// Bytes of a block with room for `count` units: head and units, rounded up to the next power of two.
constexpr std::size_t BlockSize(int32_t count) {
  return std::bit_ceil(2 * static_cast<std::size_t>(count) + 8);
}

void Copy(MChar* target, const MChar* source, int32_t count) {
  std::copy_n(source, count, target);
}

void Copy(MChar* target, const char* source, int32_t count) {
  for (int32_t i = 0; i < count; ++i) target[i] = MString::Widen(source[i]);
}

// Length of zero-terminated 8-bit text that may be null.
std::size_t Measure(const char* text) {
  return text ? std::strlen(text) : 0;
}

}  // namespace

// A new text with room for `count` units; nothing is in it yet, not even a terminator.
MString MString::NewBlock(int32_t count) {
  const std::size_t size = BlockSize(count);
  Head* const head = static_cast<Head*>(MAllocate(size));
  *head = {static_cast<int32_t>(size), 1};
  MString text;
  text.chars_ = head + 1;
  text.flags_ = 0;
  return text;
}

template <typename Unit>
MString MString::Make(const Unit* units, std::size_t length) {
  if (length >= static_cast<std::size_t>(kMaximumUnits)) MThrowOutOfMemory();
  const int32_t count = static_cast<int32_t>(length);
  MString text = NewBlock(count + 1);
  Copy(text.Writable(), units, count);
  text.Writable()[count] = 0;
  text.length_ = count;
  return text;
}

MString MString::FromNarrow(const char* text) {
  return Make(text, Measure(text));
}

MString MString::FromNarrow(const char* text, int32_t length) {
  return Make(text, text && length > 0 ? static_cast<std::size_t>(length) : 0);
}

MString::MString(const MChar* text) : MString(std::u16string_view(text ? text : u"")) {}

MString::MString(std::u16string_view text) : MString(Make(text.data(), text.size())) {}

MString::MString(MChar character) : MString(Make(&character, 1)) {}

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
    // Its length is not trusted, since a record may come from elsewhere: the bytes are measured.
    const int32_t kept =
        static_cast<int32_t>(std::min(std::strlen(Narrow()), static_cast<std::size_t>(count) - 1));
    MString own = NewBlock(count);
    Copy(own.Writable(), Narrow(), kept);
    own.Writable()[kept] = 0;
    own.length_ = std::clamp(length_, 0, kept);
    *this = std::move(own);
  } else if (IsShared()) {
    const int32_t kept = std::min(length_, count - 1);
    MString own = NewBlock(count);
    Copy(own.Writable(), Units(), kept);
    own.Writable()[kept] = 0;
    own.length_ = kept;
    *this = std::move(own);
  } else if (static_cast<std::size_t>(GetHead()->capacity) < BlockSize(count)) {
    const std::size_t size = BlockSize(count);
    Head* const head = static_cast<Head*>(MReallocate(GetHead(), size));
    head->capacity = static_cast<int32_t>(size);
    chars_ = head + 1;
  }
}

// Reserve for `count` more units.
void MString::ReserveMore(int32_t count) {
  const int64_t wanted = int64_t{length_} + count + 1;
  if (wanted > kMaximumUnits) MThrowOutOfMemory();
  Reserve(static_cast<int32_t>(wanted));
}

// A second hold on this text when the units lie in it, so that they stay where they are while it is written.
inline MString MString::HoldIfOwn(const void* units) const noexcept {
  const std::less_equal<const void*> notAfter;
  return !IsLiteral() && notAfter(chars_, units) && notAfter(units, Units() + length_) ? *this : MString();
}

template <typename Unit>
inline void MString::AppendAny(const Unit* source, int32_t count) {
  if (count < 1) return;
  const MString held = HoldIfOwn(source);
  if (!HasRoom(length_, count)) ReserveMore(count);
  MChar* const units = Writable();
  Copy(units + length_, source, count);
  length_ += count;
  units[length_] = 0;
}

void MString::Append(const MString& text) {
  text.Visit([this](const auto* units, int32_t length) { AppendAny(units, length); });
}

void MString::Append(const char* text) {
  AppendAny(text, static_cast<int32_t>(std::min(Measure(text), static_cast<std::size_t>(kMaximumUnits))));
}

void MString::AppendUnits(const MChar* units, int32_t count) {
  AppendAny(units, count);
}

void MString::AppendNarrow(const char* text, int32_t count) {
  AppendAny(text, count);
}

void MString::AppendRepeated(MChar character, int32_t count) {
  if (count < 1) return;
  if (!HasRoom(length_, count)) ReserveMore(count);
  std::fill_n(Writable() + length_, count, character);
  length_ += count;
  Writable()[length_] = 0;
}

// Puts units in at `position`, limited to the text.
template <typename Unit>
void MString::InsertAny(int32_t position, const Unit* source, int32_t count) {
  if (count < 1) return;
  const MString held = HoldIfOwn(source);
  if (!HasRoom(length_, count)) ReserveMore(count);
  MChar* const gap = Writable() + std::clamp(position, 0, length_);
  std::copy_backward(gap, Writable() + length_ + 1, Writable() + length_ + 1 + count);
  Copy(gap, source, count);
  length_ += count;
}

void MString::Insert(int32_t position, MChar character) {
  InsertAny(position, &character, 1);
}

void MString::Insert(int32_t position, const MString& text) {
  text.Visit([&](const auto* units, int32_t length) { InsertAny(position, units, length); });
}

void MString::InsertUnits(int32_t position, const MChar* units, int32_t count) {
  InsertAny(position, units, count);
}

void MString::InsertNarrow(int32_t position, const char* text, int32_t count) {
  InsertAny(position, text, count);
}

int32_t MString::Find(MChar character, int32_t start) const noexcept {
  return Visit([&](const auto* units, int32_t length) {
    for (int32_t i = std::max(start, 0); i < length; ++i)
      if (Widen(units[i]) == character) return i;
    return -1;
  });
}

int32_t MString::FindLast(MChar character, int32_t start) const noexcept {
  return Visit([&](const auto* units, int32_t length) {
    int32_t i = std::min(start, length - 1);
    while (i >= 0 && Widen(units[i]) != character) --i;
    return std::max(i, -1);
  });
}

MString MString::Substring(int32_t start, int32_t count) const {
  if (start < 0 || start >= length_) return MString();
  count = std::min(count, length_ - start);
  if (count <= 0) return MString();
  if (count == length_) return *this;
  return Visit(
      [&](const auto* units, int32_t) { return Make(units + start, static_cast<std::size_t>(count)); });
}
