#pragma once
// The text of a row's value and the way back. Uses nothing but the row and `core`, so that a host may include
// it beside MHostInterface.h.

#include <cmath>
#include <initializer_list>

#include "core/MNumberScanner.h"
#include "core/MShownValue.h"
#include "plugin/MHostInterface.h"

// The formatter's text. Without one: four decimals, a whole number, the choice (its number outside of the
// list), 0 or 1.
inline MString MParameterText(const MPluginParameter& row, double value) {
  if (row.formatter) {
    MString text;
    row.formatter(text, value, row);
    return text;
  }
  if (row.kind == MParameterKind::kReal) return MString::FromDouble(value, 4);
  if (row.kind == MParameterKind::kEnumeration && value >= 0 && value < row.enumeration.count)
    return MString::Literal(row.enumeration.choices[static_cast<int32_t>(value)]);
  return MString::FromDouble(std::nearbyint(value) + 0.0, 0);  // no negative zero
}

namespace MParameterTextDetail {

inline bool IsOneOf(const MString& word, std::initializer_list<const char*> words) {
  for (const char* const each : words)
    if (word.Compare(MString::Literal(each)) == 0) return true;
  return false;
}

// A switch as people type it.
inline std::optional<double> ReadSwitch(const MString& word) {
  if (IsOneOf(word, {"1", "on", "yes", "true"})) return 1;
  if (IsOneOf(word, {"0", "off", "no", "false"})) return 0;
  return std::nullopt;
}

inline std::optional<double> ReadChoice(const MPluginParameter& row, const MString& word) {
  for (int32_t i = 0; i < row.enumeration.count; ++i)
    if (word.Compare(MString::Literal(row.enumeration.choices[i])) == 0) return i;
  return std::nullopt;
}

inline std::optional<double> ReadPlainNumber(const MString& text, bool isWhole) {
  const std::optional<MQuantity> quantity = MReadQuantity(text);
  if (!quantity || !quantity->unit.IsEmpty()) return std::nullopt;
  if (isWhole && quantity->number != std::nearbyint(quantity->number)) return std::nullopt;
  return quantity->number;
}

inline std::optional<double> ReadShown(const MPluginParameter& row, const MString& text) {
  const auto show = [](const void* context, MString& shown, double value) {
    const auto& shownRow = *static_cast<const MPluginParameter*>(context);
    shownRow.formatter(shown, value, shownRow);
  };
  if (row.kind == MParameterKind::kReal)
    return MReadShownValue({show, &row, row.unit, row.real.minimum, row.real.maximum, false}, text);
  const double minimum = row.integer.minimum;
  const double maximum = row.integer.maximum;
  return MReadShownValue({show, &row, row.unit, minimum, maximum, true}, text);
}

}  // namespace MParameterTextDetail

// The value that a text means, in table units: what the row shows, the same with another unit of its kind
// ("1.2 kHz", "50%", "-6 dB"), a choice by its name in any case, a switch by on, off, yes, no, true, false.
// It may lie outside of the row's range; a whole row gets a whole number. None for a text that cannot be
// read.
inline std::optional<double> ParseParameterText(const MPluginParameter& row, const MString& text) {
  using namespace MParameterTextDetail;
  const MString word = MTrimmed(text);
  switch (row.kind) {
    case MParameterKind::kSwitch:
      return ReadSwitch(word);
    case MParameterKind::kEnumeration:
      if (const std::optional<double> choice = ReadChoice(row, word)) return choice;
      return ReadPlainNumber(word, true);
    case MParameterKind::kReal:
    case MParameterKind::kInteger:
      if (row.formatter) return ReadShown(row, word);
      return ReadPlainNumber(word, row.kind == MParameterKind::kInteger);
    default:
      return std::nullopt;
  }
}
