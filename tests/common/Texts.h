#pragma once
// Texts in tests: an MString as std::string for comparisons and messages, and what an operation raises.

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "core/MException.h"

// The text as UTF-8, embedded zeros kept.
inline std::string Utf8(const MString& text) {
  const MBytes bytes = EncodeNarrow(text);
  return std::string(bytes.GetText(), static_cast<std::size_t>(bytes.GetSize() - 1));
}

inline void PrintTo(const MString& text, std::ostream* out) {
  *out << '"' << Utf8(text) << '"';
}

// A buffer-mode copy of 8-bit text.
inline MString Buffer(const char* text) {
  return MString::FromNarrow(text);
}

// Expects `statement` to raise an MException with this message and code.
#define EXPECT_RAISES(statement, text, number)       \
  do {                                               \
    try {                                            \
      statement;                                     \
      ADD_FAILURE() << #statement " raised nothing"; \
    } catch (const MException& raised) {             \
      EXPECT_EQ(Utf8(raised.message), text);         \
      EXPECT_EQ(raised.code, number);                \
    }                                                \
  } while (false)
