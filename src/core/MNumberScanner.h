#pragma once
// Numbers in typed text, independent of the process's locale: the reverse of MFormat.

#include <optional>

#include "core/MString.h"

struct MScannedNumber {
  double value;
  int32_t start, length;  // where it stands in the text
};

// The number that stands at `position`, blanks in front of it skipped: sign, digits, point, exponent, as
// MString::ToDouble has them. None without a finite number.
std::optional<MScannedNumber> MScanNumber(const MString& text, int32_t position);

// A number and what stands behind it, without blanks around: "1.2 kHz".
struct MQuantity {
  double number;
  MString unit;
};
// None if the text does not begin with a finite number.
std::optional<MQuantity> MReadQuantity(const MString& text);

// A text without the blanks around it.
MString MTrimmed(const MString& text);

struct MScannedNumbers {
  static constexpr int32_t kMaximum = 8;

  int32_t count = 0;  // may be higher than the numbers that are kept
  MScannedNumber numbers[kMaximum] = {};
};

// The numbers that stand in the text at the places of the format's arguments. Case and blanks do not count,
// and each stretch of the format's own text may be left out, so "5", "5dB" and " 5 DB" all fit "{0} dB". A
// text that has anything else does not fit, and has no numbers; nor has anything for a format that MFormat
// does not accept.
MScannedNumbers MScanFormat(const MString& format, const MString& text);
