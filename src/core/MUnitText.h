#pragma once
// Values as musicians read and type them: percent, decibels, times, frequencies, pan. Every text is
// independent of the process's locale.

#include <optional>

#include "core/MString.h"

// How a value of one meaning is written, and how its text is read. `read` takes the number with or without
// its unit, a unit of another size ("1.2 kHz", "0.5 s") and the names that `show` writes, in any case, and
// gives none for every other text. What is shown and read again is the same within the decimals of the text.
struct MUnitText {
  MString (*show)(double value);
  std::optional<double> (*read)(const MString& text);
};

namespace MUnits {

// A fraction, 1 is 100%.
extern const MUnitText kPercent;       // "12.50%"
extern const MUnitText kWholePercent;  // "12%", halves to even

// A gain, decibels = 20 log10(gain): "-6.02 dB", one decimal at -10 dB and below, "silence" below 1e-50. The
// sign of the gain is not shown.
extern const MUnitText kVolume;
// The square root of a gain: "-15.9 dB", "silence"; read as sqrt(10^(dB / 20)).
extern const MUnitText kSquaredDecibels;

// -1 left, 1 right: "50% left", "center", "25% right". A number without a side is right above 0.
extern const MUnitText kPan;

// Seconds: "12 ms". A number without a unit is milliseconds.
extern const MUnitText kMilliseconds;       // one decimal up to 10 ms
extern const MUnitText kWholeMilliseconds;  // halves up

// Hertz: "0.5000Hz", "5.00Hz", "50.0Hz", "440Hz", "12.0kHz".
extern const MUnitText kFrequency;
// The decimal logarithm of hertz, shown as hertz. A text of 0 Hz or less is none.
extern const MUnitText kFrequencyLog10;

}  // namespace MUnits
