#include "core/MXMLScanner.h"

#include <utility>

MString MXMLTextCache::Get(std::u16string_view units) {
  if (units.empty()) return MString();
  if (units.size() > kLongest) return MString(units);
  uint32_t hash = static_cast<uint32_t>(units.size());
  for (const MChar unit : units) hash = (hash ^ unit) * 0x9E3779B1u;
  MString& slot = slots_[hash >> (32 - kSlotBits)];
  if (slot.IsEmpty() ||
      std::u16string_view(slot.Units(), static_cast<std::size_t>(slot.GetLength())) != units)
    slot = MString(units);
  return slot;
}

void MXMLScanner::SetCodec(const MEncoding::Codec& codec) {
  reader_.SetCodec(codec, fill_ - position_);
  fill_ = position_;
}

void MXMLScanner::SkipBlanks() {
  do {
    while (position_ < fill_ && IsBlank(buffer_[position_])) ++position_;
  } while (position_ == fill_ && Refill());
}

MString MXMLScanner::Keep(std::u16string_view units, MXMLTextCache& cache) {
  if (units.size() <= MXMLTextCache::kLongest) return cache.Get(units);
  if (!gathered_.IsEmpty()) return std::exchange(gathered_, MString());
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
  CountLines();
  return place_;
}

void MXMLScanner::CountLines() noexcept {
  const MChar* const begin = buffer_ + counted_;
  const MChar* const end = buffer_ + position_;
  const int64_t feeds = std::count(begin, end, u'\n');
  place_.line += feeds;
  if (feeds > 0)
    place_.column = std::find(std::make_reverse_iterator(end), std::make_reverse_iterator(begin), u'\n') -
                    std::make_reverse_iterator(end) + 1;
  else
    place_.column += end - begin;
  counted_ = position_;
}

bool MXMLScanner::Refill() {
  CountLines();
  position_ = fill_ = counted_ = 0;
  fill_ = reader_.ReadUnits(buffer_, kBufferSize);
  return fill_ > 0;
}
