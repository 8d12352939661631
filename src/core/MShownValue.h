#pragma once
#include <optional>

#include "core/MString.h"

// A value of a range, and the function that shows it.
struct MShownValue {
  void (*show)(const void* context, MString& text, double value);
  const void* context;
  MString format;  // what the function puts the number in, as "{0} samples"; empty if it has none
  double minimum, maximum;
  bool isWhole;
};

// The value that a typed text means, found from nothing but what the function shows; so a host can read the
// texts of a plug-in's rows. None for a text that no value has. In this order:
//   1. a number in the format, or with one of the units of MUnits, if the function shows the value in the
//   same
//      way; the result is exact, and may lie outside of the range, for which the function is not asked;
//   2. what the function shows at the ends, at 0 and at each whole number of a short range ("Peak"), in any
//      case;
//   3. the value within the range whose shown number is the typed one: a search, for functions that rise or
//      fall. The result is as exact as the shown text.
std::optional<double> MReadShownValue(const MShownValue& shown, const MString& text);
