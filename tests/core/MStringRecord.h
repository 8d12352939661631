#pragma once
// The three words of a text and the head of its block, as the interface lays them down, for tests that look
// at them or forge them.

#include <cstring>

#include "core/MString.h"

struct StringRecord {
  const void* chars;
  int32_t length;
  uint32_t flags;
};
static_assert(sizeof(StringRecord) == sizeof(MString));

struct StringHead {
  int32_t capacity;
  int32_t references;
};

inline StringRecord RecordOf(const MString& text) {
  StringRecord record;
  std::memcpy(&record, static_cast<const void*>(&text), sizeof record);
  return record;
}

inline StringHead HeadOf(const MString& text) {
  StringHead head;
  std::memcpy(&head, static_cast<const char*>(text.GetData()) - sizeof head, sizeof head);
  return head;
}

inline int32_t CapacityOf(const MString& text) {
  return HeadOf(text).capacity;
}
inline int32_t ReferencesOf(const MString& text) {
  return HeadOf(text).references;
}

// A literal-mode text whose length is not that of its bytes.
inline MString Forged(const char* literal, int32_t length) {
  const StringRecord record = {literal, length, 1};
  MString text;
  std::memcpy(static_cast<void*>(&text), &record, sizeof record);
  return text;
}
