#include "plugin/MValueUnits.h"

#include <cmath>

#include "core/MNumberScanner.h"

bool MValueUnit::Read(const MString& text, double& value) const {
  const std::optional<double> read = unit_.read(text);
  if (read) value = *read;
  return read.has_value();
}

void MValuePitch::SetUp() {
  SetFormat("{0;+.02}");
  SetSteps(0.10000000149011612, 1);  // the 32-bit float 0.1
}

void MValueStepDouble::LoadFromXml(const MXMLItem& item) {
  if (item.HasAttribute("step"))
    if (const std::optional<MScannedNumber> grid = MScanNumber(item.CachedAttribute(), 0))
      grid_ = grid->value;
  MValueDouble::LoadFromXml(item);
}

void MValueStepDouble::SetGrid(double grid) {
  grid_ = grid;
  Validate();
}

double MValueStepDouble::Limit(double value) const noexcept {
  constexpr double kRounding = 1e-9;  // of a grid step, by which the last one may pass the maximum
  const double limited = MValueDouble::Limit(value);
  const double minimum = GetMinimum();
  const double maximum = GetMaximum();
  if (!(grid_ > 0) || !(minimum < maximum)) return limited;
  const double steps = std::round((limited - minimum) / grid_);
  const double snapped = minimum + steps * grid_;
  if (!std::isfinite(snapped)) return limited;
  if (snapped <= maximum) return snapped;
  return snapped - maximum < kRounding * grid_ ? maximum : minimum + (steps - 1) * grid_;
}
