#pragma once
// The sixteen wave shapes that every oscillator starts from: one period each, computed once in the process,
// at the first use.
//
// A shape value from 0 to 15 names them: its whole part a table, its fraction the way to the next table.

#include "core/MString.h"

namespace MWaveShapes {

constexpr int32_t kCount = 16;
constexpr int32_t kLength = 8192;  // samples of a period

constexpr double kTriangle = 1;
constexpr double kSine = 5;
constexpr double kRectangle = 11;

// A shape value, taken apart. At the last table there is no way on.
struct Position {
  int32_t index;    // 0..15
  double fraction;  // 0..1, 1 not included
};
// Values outside 0..15 are limited; one that is not finite counts as kSine.
Position Locate(double value) noexcept;

// kLength samples in -1..1, for index 0..15 ("Index out of range."). [any]
const float* GetTable(int32_t index);

// The translated name, for index 0..15 ("Index out of range.").
MString GetName(int32_t index);
// "Sine", or "50% Sine, 50% Harmonics" between two tables.
MString GetText(double value);

}  // namespace MWaveShapes
