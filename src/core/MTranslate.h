#pragma once
// Translation of user-visible texts. Messages are English literals; a table may replace them.

#include "core/MList.h"
#include "core/MObject.h"

struct MTranslationEntry {
  MString text;
  MString section;
  MString translated;
};
template <>
inline constexpr bool MIsRelocatable<MTranslationEntry> = true;

// 256 buckets of sorted entries. The bucket is the low byte of the two keys' hashes joined by exclusive or.
// Keys are compared as names are: without regard to case and diacritics.
class MTranslationTable final : public MObject {
 public:
  // Adds a translation, or replaces the one of the same text and section.
  void Set(const MString& text, const MString& section, const MString& translated);
  // The translation, or `text` itself.
  MString Find(const MString& text, const MString& section) const;

 private:
  MList<MTranslationEntry> buckets_[256];
};

// The text in the language of the process's table, or the text itself without a table or an entry. [any]
MString Translate(const MString& text, const MString& section = MString());

// Puts a table in force, null for none, and returns the one before, which the caller owns again. Not for use
// while another thread translates.
MTranslationTable* MSetTranslationTable(MTranslationTable* table) noexcept;
