#include "core/MXMLScanner.h"

#include <cstring>
#include <utility>

namespace {

// Mixes four units at a time; the good bits are the upper ones.
uint64_t HashOf(std::u16string_view units) {
  uint64_t hash = units.size();
  const auto mix = [&hash](uint64_t word) {
    hash = ((hash ^ word) * 0x9E3779B97F4A7C15u);
    hash ^= hash >> 32;
  };
  const auto four = [](const MChar* from) {
    uint64_t word;
    std::memcpy(&word, from, sizeof word);
    return word;
  };
  if (units.size() < 4) {
    uint64_t word = 0;
    for (const MChar unit : units) word = word << 16 | unit;
    mix(word);
  } else {
    for (std::size_t i = 0; i + 4 < units.size(); i += 4) mix(four(&units[i]));
    mix(four(&units[units.size() - 4]));
  }
  return hash * 0x9E3779B97F4A7C15u;
}

}  // namespace

MString MXMLTextCache::Get(std::u16string_view units) {
  if (units.empty()) return MString();
  if (units.size() > kLongest) return MString(units);
  const uint64_t hash = HashOf(units);
  Slot& slot = slots_[hash >> (64 - kSlotBits)];
  const uint32_t tag = static_cast<uint32_t>(hash) | 1;
  if (slot.tag == tag && slot.text.GetLength() == static_cast<int32_t>(units.size()) &&
      std::memcmp(slot.text.GetData(), units.data(), units.size() * sizeof(MChar)) == 0) {
    slot.misses = 0;
    return slot.text;
  }
  MString text(units);
  if (slot.tag == 0 || ++slot.misses == kPatience) slot = {text, tag, 0};
  return text;
}

void MXMLScanner::SetCodec(const MEncoding::Codec& codec) {
  reader_.SetCodec(codec, fill_ - position_);
  fill_ = position_;
}

bool MXMLScanner::SkipBlanks(int64_t most) {
  do {
    const int32_t start = position_;
    while (position_ < fill_ && IsBlank(buffer_[position_])) ++position_;
    most -= position_ - start;
  } while (position_ == fill_ && most >= 0 && Refill());
  return most >= 0;
}

MString MXMLScanner::Keep(std::u16string_view units, MXMLTextCache& cache) {
  if (units.size() <= MXMLTextCache::kLongest) return cache.Get(units);
  if (units.data() == gathered_.Units()) return std::exchange(gathered_, MString());
  return MString(units);
}

bool MXMLScanner::ReadThrough(MChar mark, int32_t count, MString* content, int32_t limit) {
  int32_t marks = 0;
  for (;;) {
    const int32_t unit = Next();
    if (unit == kEnd) return false;
    if (unit == '>' && marks >= count) break;
    marks = unit == mark ? marks + 1 : 0;
    if (content && content->GetLength() < limit) content->Append(static_cast<MChar>(unit));
  }
  if (content) *content = content->Substring(0, content->GetLength() - count);
  return true;
}

MXMLPosition MXMLScanner::GetPosition() noexcept {
  GetMark();
  CountLines(position_);
  return place_;
}

const MXMLPosition& MXMLScanner::GetMark() noexcept {
  if (mark_ >= 0) {
    CountLines(mark_);
    markPlace_ = place_;
    mark_ = -1;
  }
  return markPlace_;
}

// Moves `place_` on.
void MXMLScanner::CountLines(int32_t to) noexcept {
  const MChar* const begin = buffer_ + counted_;
  const MChar* const end = buffer_ + to;
  const int64_t feeds = std::count(begin, end, u'\n');
  place_.line += feeds;
  if (feeds > 0)
    place_.column = std::find(std::make_reverse_iterator(end), std::make_reverse_iterator(begin), u'\n') -
                    std::make_reverse_iterator(end) + 1;
  else
    place_.column += end - begin;
  counted_ = to;
}

bool MXMLScanner::Refill() {
  GetPosition();
  position_ = fill_ = counted_ = 0;
  fill_ = reader_.ReadUnits(buffer_, kBufferSize);
  return fill_ > 0;
}
