#pragma once
// XML in tests: items from texts, texts from items, and whole trees as one text.

#include <string>

#include "core/MXMLItem.h"
#include "tests/common/Texts.h"
#include "tests/core/StreamDoubles.h"

inline void LoadText(MXMLItem& item, const std::string& text) {
  ForwardStream stream(text);
  item.Load(stream);
}

inline std::string SaveText(const MXMLItem& item, bool compact = true, const MString& encoding = "utf-8") {
  BareStream stream;
  item.Save(stream, compact, encoding);
  return stream.written;
}

constexpr char kHead[] = "<?xml version=\"1.0\" encoding=\"utf-8\"?>";

// The compact text without its head.
inline std::string Body(const MXMLItem& item) {
  return SaveText(item).substr(sizeof kHead - 1);
}

// What is read of a text, written again.
inline std::string Reread(const std::string& text) {
  MXMLItem item;
  LoadText(item, text);
  return Body(item);
}

// Message, code and source of what loading raises: "message|256|line 1, column 1".
inline std::string FailureOf(MXMLItem& item, const std::string& text) {
  try {
    LoadText(item, text);
  } catch (const MException& raised) {
    return Utf8(raised.message) + "|" + std::to_string(raised.code) + "|" + Utf8(raised.source);
  }
  return "nothing";
}
inline std::string FailureOf(const std::string& text) {
  MXMLItem item;
  return FailureOf(item, text);
}

// Expects the same names, texts, attributes and children, unit by unit.
inline void ExpectSameTree(const MXMLItem& a, const MXMLItem& b) {
  ASSERT_EQ(a.GetName(), b.GetName());
  ASSERT_EQ(a.GetText(), b.GetText());
  ASSERT_EQ(a.GetAttributes().GetCount(), b.GetAttributes().GetCount());
  for (int32_t i = 0; i < a.GetAttributes().GetCount(); ++i) {
    ASSERT_EQ(a.GetAttributes()[i].name, b.GetAttributes()[i].name);
    ASSERT_EQ(a.GetAttributes()[i].value, b.GetAttributes()[i].value);
  }
  ASSERT_EQ(a.GetChildren().GetCount(), b.GetChildren().GetCount());
  for (int32_t i = 0; i < a.GetChildren().GetCount(); ++i)
    ASSERT_NO_FATAL_FAILURE(ExpectSameTree(*a.GetChildren()[i], *b.GetChildren()[i]));
}
