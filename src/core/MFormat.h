#pragma once
// MFormat, the one way to build a message: Format(text), one Arg per argument in index order, then Text().
//
// "{0}" marks the place of argument 0; arguments may stand in any order. Behind the index a style may follow,
// up to the closing brace: " 4" or "04" pads integers to a width with blanks or zeros, ".2" sets the decimals
// of a double (4 without it), "+" shows the sign of numbers at or above 0, "x" writes integers in
// hexadecimal. All other characters are ignored, so "{0;.2}", "{0:04}" and "{0x;02}" are common forms. "{{"
// is a brace; "}" outside of a style stands for the character behind it. An index that is named twice counts
// at its last place. Indices above 31 and arguments that the text does not name are dropped. A handle is for
// one thread at a time; copies share one state.

#include "core/MString.h"

class MFormat {
 public:
  // Reads the format. One that ends inside of braces raises
  // "Formatting string ends in an argument specification."
  explicit MFormat(const MString& format);
  MFormat(const MFormat& other) noexcept;
  MFormat& operator=(const MFormat& other) noexcept;
  ~MFormat();

  // Puts the next argument in its place. One that the text does not name is dropped.
  MFormat& Arg(const MString& text);
  MFormat& Arg(const char* text);  // zero-terminated; null is the empty text
  MFormat& Arg(int64_t value);
  MFormat& Arg(uint64_t value);
  MFormat& Arg(double value);
  MFormat& Arg(int32_t value) { return Arg(static_cast<int64_t>(value)); }
  MFormat& Arg(uint32_t value) { return Arg(static_cast<uint64_t>(value)); }

  MString Text() const noexcept;

 private:
  struct State;
  static void Drop(State* state) noexcept;

  State* state_;
};

inline MFormat Format(const MString& format) {
  return MFormat(format);
}
