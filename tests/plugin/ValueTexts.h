#pragma once
// The texts of a value as std::string.

#include "plugin/MValue.h"
#include "tests/common/Texts.h"

inline std::string TextOf(const MValue& value) {
  MString text;
  value.GetText(text);
  return Utf8(text);
}

inline std::string RawTextOf(const MValue& value) {
  MString text;
  value.GetRawText(text);
  return Utf8(text);
}

inline std::string ShortTextOf(const MValue& value) {
  MValue::ShortText text;
  value.GetShortText(text);
  return text;
}

inline std::string IndexTextOf(const MValue& value, int32_t index) {
  MValue::ShortText text;
  value.GetIndexText(text, index);
  return text;
}

// The attribute that the value saves, "(none)" if there is none.
inline std::string SavedText(const MStorable& value, const MString& name = "value") {
  MXMLItem item("item");
  return value.Save(item) && item.HasAttribute(name) ? Utf8(item.CachedAttribute()) : "(none)";
}
