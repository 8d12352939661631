#include <algorithm>
#include <cstring>

#include "core/MString.h"

namespace {

MChar FoldCase(MChar c) {
  return c >= u'A' && c <= u'Z' ? static_cast<MChar>(c + 32) : c;
}

MChar Fold(MChar c) {
  return FoldCase(c < 192 ? c : FoldDiacritics(c));
}

// How many units at the start are the same in both, none of them 0, in steps of four.
int32_t SkipEqual(const MChar* left, const MChar* right, int32_t count) {
  int32_t i = 0;
  for (; i + 4 <= count; i += 4) {
    uint64_t a, b;
    std::memcpy(&a, left + i, sizeof a);
    std::memcpy(&b, right + i, sizeof b);
    const bool hasZero = ((a - 0x0001000100010001u) & ~a & 0x8000800080008000u) != 0;
    if (a != b || hasZero) break;
  }
  return i;
}

template <typename Left, typename Right>
int32_t CompareUnits(const Left* left, int32_t leftLength, const Right* right, int32_t rightLength,
                     int32_t maximum) {
  const int32_t common = std::min({leftLength, rightLength, maximum});
  int32_t i = 0;
  if constexpr (std::is_same_v<Left, MChar> && std::is_same_v<Right, MChar>)
    i = SkipEqual(left, right, common);
  for (; i < common; ++i) {
    const MChar a = MString::Widen(left[i]), b = MString::Widen(right[i]);
    if (a != b) {
      const int32_t difference = Fold(a) - Fold(b);
      if (difference != 0) return difference;
    } else if (a == 0) {
      return 0;
    }
  }
  if (i >= maximum) return 0;
  const MChar a = i < leftLength ? MString::Widen(left[i]) : MChar(0);
  const MChar b = i < rightLength ? MString::Widen(right[i]) : MChar(0);
  return Fold(a) - Fold(b);
}

}  // namespace

int32_t MString::Compare(const MString& left, int32_t offset, const MString& right, int32_t otherOffset,
                         int32_t maximum) noexcept {
  offset = std::clamp(offset, 0, left.length_);
  otherOffset = std::clamp(otherOffset, 0, right.length_);
  const bool isSame = left.chars_ == right.chars_ && left.length_ == right.length_ &&
                      left.flags_ == right.flags_ && offset == otherOffset;
  if (isSame) return 0;  // as the names of a document are, which share their memory
  return left.Visit([&](const auto* a, int32_t aLength) {
    return right.Visit([&](const auto* b, int32_t bLength) {
      return CompareUnits(a + offset, aLength - offset, b + otherOffset, bLength - otherOffset, maximum);
    });
  });
}

bool MString::operator==(const MString& other) const noexcept {
  if (length_ != other.length_) return false;
  return Visit([&](const auto* a, int32_t length) {
    return other.Visit([&](const auto* b, int32_t) {
      if constexpr (sizeof(*a) == sizeof(*b))
        return std::memcmp(a, b, static_cast<std::size_t>(length) * sizeof(*a)) == 0;
      else
        return std::equal(a, a + length, b,
                          [](auto x, auto y) { return MString::Widen(x) == MString::Widen(y); });
    });
  });
}

uint32_t MString::Hash() const noexcept {
  return Visit([](const auto* units, int32_t length) {
    const auto unit = [units](int32_t i) {
      return static_cast<uint32_t>(
          static_cast<int32_t>(static_cast<int8_t>(FoldCase(MString::Widen(units[i])))));
    };
    uint32_t hash = 0;
    if (length < 16) {
      for (int32_t i = 0; i < length; ++i) hash ^= unit(i) << i;
    } else {
      const int32_t end = std::min(length / 4, 8);
      for (int32_t i = 0; i < end; i += 4) hash ^= unit(i) << i;
    }
    return hash;
  });
}
