#include "core/MTranslate.h"

#include <utility>

namespace {

constinit MTranslationTable* tableInForce = nullptr;

uint32_t Bucket(const MString& text, const MString& section) {
  return (text.Hash() ^ section.Hash()) & 255;
}

// Index of the entry in its sorted bucket, or of the place where it belongs.
int32_t LowerBound(const MList<MTranslationEntry>& bucket, const MString& text, const MString& section) {
  const MTranslationEntry* const entry =
      std::lower_bound(bucket.begin(), bucket.end(), 0, [&](const MTranslationEntry& e, int) {
        const int32_t order = e.text.Compare(text);
        return order < 0 || (order == 0 && e.section.Compare(section) < 0);
      });
  return static_cast<int32_t>(entry - bucket.begin());
}

bool Matches(const MList<MTranslationEntry>& bucket, int32_t index, const MString& text,
             const MString& section) {
  return index < bucket.GetCount() && bucket[index].text.Compare(text) == 0 &&
         bucket[index].section.Compare(section) == 0;
}

}  // namespace

void MTranslationTable::Set(const MString& text, const MString& section, const MString& translated) {
  MList<MTranslationEntry>& bucket = buckets_[Bucket(text, section)];
  const int32_t index = LowerBound(bucket, text, section);
  if (Matches(bucket, index, text, section))
    bucket[index].translated = translated;
  else
    bucket.Insert(index, {text, section, translated});
}

MString MTranslationTable::Find(const MString& text, const MString& section) const {
  const MList<MTranslationEntry>& bucket = buckets_[Bucket(text, section)];
  const int32_t index = LowerBound(bucket, text, section);
  return Matches(bucket, index, text, section) ? bucket[index].translated : text;
}

MString Translate(const MString& text, const MString& section) {
  return tableInForce ? tableInForce->Find(text, section) : text;
}

MTranslationTable* MSetTranslationTable(MTranslationTable* table) noexcept {
  return std::exchange(tableInForce, table);
}
