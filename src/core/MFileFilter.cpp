#include "core/MFileList.h"

namespace {

bool IsSame(const MString& left, int32_t i, const MString& right, int32_t j) noexcept {
  return MString::Compare(left, i, right, j, 1) == 0;
}

// Where the character at `index` ends.
int32_t Next(const MString& text, int32_t index) noexcept {
  const bool isPair = (text.At(index) & 0xFC00) == 0xD800 && (text.At(index + 1) & 0xFC00) == 0xDC00;
  return index + (isPair ? 2 : 1);
}

// Units `i` to `end` of a filter as one pattern. Only the last "*" is ever tried anew.
bool MatchesPattern(const MString& name, const MString& filter, int32_t i, int32_t end) noexcept {
  if (name.At(0) == u'.' && filter.At(i) != u'.') return false;
  int32_t j = 0, behindStar = -1, retry = 0;
  while (j < name.GetLength()) {
    if (i < end && filter.At(i) == u'*') {
      behindStar = ++i;
      retry = j;
    } else if (i < end && filter.At(i) == u'?') {
      ++i;
      j = Next(name, j);
    } else if (i < end && IsSame(filter, i, name, j)) {
      ++i;
      ++j;
    } else if (behindStar >= 0) {
      i = behindStar;
      j = retry = Next(name, retry);
    } else {
      return false;
    }
  }
  while (i < end && filter.At(i) == u'*') ++i;
  return i == end;
}

}  // namespace

bool MatchesFilter(const MString& name, const MString& filter) {
  const MString patterns = filter.IsEmpty() ? MString("*") : filter;
  for (int32_t start = 0; start < patterns.GetLength();) {
    const int32_t semicolon = patterns.Find(u';', start);
    const int32_t end = semicolon < 0 ? patterns.GetLength() : semicolon;
    if (end > start && MatchesPattern(name, patterns, start, end)) return true;
    start = end + 1;
  }
  return false;
}
