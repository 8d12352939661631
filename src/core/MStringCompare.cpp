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

template <typename Left, typename Right>
int32_t CompareUnits(const Left* left, int32_t leftLength, const Right* right, int32_t rightLength,
                     int32_t maximum) {
  for (int32_t i = 0; i < maximum; ++i) {
    const MChar a = i < leftLength ? MString::Widen(left[i]) : MChar(0);
    const MChar b = i < rightLength ? MString::Widen(right[i]) : MChar(0);
    if (a != b) {
      const int32_t difference = Fold(a) - Fold(b);
      if (difference != 0) return difference;
    }
    if (a == 0) return 0;
  }
  return 0;
}

}  // namespace

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
