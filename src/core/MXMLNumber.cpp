#include "core/MXMLNumber.h"

#include <algorithm>
#include <cmath>

MString MExactNumberText(double value) {
  constexpr int32_t kFewest = 4, kMost = 60;
  const double magnitude = std::abs(value);
  if (!std::isfinite(value) || magnitude < 1e-60) return MString::FromDouble(value, kFewest);
  const auto exponent = static_cast<int32_t>(std::floor(std::log10(magnitude)));
  return MString::FromDouble(value, std::clamp(8 - exponent, kFewest, kMost));
}

double MReadNumber(const MXMLItem& item, const MString& name, double fallback) {
  const double value = item.HasAttribute(name) ? item.CachedAttribute().ToDouble() : fallback;
  return std::isfinite(value) ? value : 0;
}
