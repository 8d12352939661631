#pragma once
// One row of a plug-in's table as a host sees it: whatever its kind, its value is a number.

#include <optional>
#include <string>

#include "plugin/MHostInterface.h"

namespace bridge {

// Real, integer, enumeration or switch: what has a value. [any]
bool HasValue(const MPluginParameter& row) noexcept;
// Every kind with a value but real.
bool IsWhole(const MPluginParameter& row) noexcept;

// In table units; an enumeration counts its choices from 0, a switch is 0 or 1. Rows without a value: zeros.
struct ParameterRange {
  double minimum = 0;
  double maximum = 0;
  double defaultValue = 0;
};
ParameterRange GetRange(const MPluginParameter& row) noexcept;  // [any]

double LoadValue(const MPluginParameter& row) noexcept;  // [any]

// Limits the value to the row's range, rounds it where the row is whole, and stores it. What is no number
// leaves the row alone. The plug-in is yet to be told. [any]
void StoreValue(MPluginParameter& row, double value) noexcept;

// What to show for a value of the row: its formatter's text, else four decimals, a whole number, or the
// choice. UTF-8. May raise MException.
std::string GetText(const MPluginParameter& row, double value);

// The value that a text of GetText, or one that means the same to a musician ("-6 dB", "1.2 kHz", "Soft 2",
// "on"), stands for: plugin/MParameterText.h. UTF-8. It may lie outside of the row's range. May raise
// MException.
std::optional<double> ReadText(const MPluginParameter& row, std::string_view text);

// Whether a value that ReadText gave lies in the row's range, or outside by no more than the rounding of the
// texts of its ends. May raise MException.
bool IsReadWithinRange(const MPluginParameter& row, double value);

// The help text without its mark-up, UTF-8.
std::string GetPlainHelp(const MPluginParameter& row);

std::string ToUtf8(const MString& text);
// What is no UTF-8 becomes replacement characters.
MString FromUtf8(std::string_view text);

}  // namespace bridge
