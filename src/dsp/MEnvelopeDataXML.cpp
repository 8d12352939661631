#include "core/MXMLItem.h"
#include "core/MXMLItemIterator.h"
#include "dsp/MEnvelopeData.h"

namespace {

constexpr char kPoint[] = "Point";
constexpr double kNothing = 1e-50;

// Nine significant digits, so that a number comes back as the same float, and never fewer than four decimals.
int32_t Decimals(double value) noexcept {
  return std::clamp(8 - static_cast<int32_t>(std::floor(std::log10(std::abs(value)))), 4, 60);
}

void SetNumber(MXMLItem& item, const MString& name, double value) {
  if (std::isfinite(value) && std::abs(value) >= kNothing)
    item.SetAttribute(name, MString::FromDouble(value, Decimals(value)));
}

double Number(const MXMLItem& item, const MString& name) {
  const double value = item.HasAttribute(name) ? item.CachedAttribute().ToDouble() : 0;
  return std::isfinite(value) ? value : 0;
}

uint8_t Flags(const MXMLItem& item) {
  if (item.HasAttribute("Flags")) return static_cast<uint8_t>(item.CachedAttribute().ToInteger());
  const bool isFixed = item.HasAttribute("fixed") && item.CachedAttribute().ToInteger() != 0;
  return isFixed ? MEnvelopeFlag::kDefault : 0;
}

void SavePoint(const MEnvelopePoint& point, MXMLItem& item) {
  SetNumber(item, "x", point.x);
  SetNumber(item, "y", point.y);
  SetNumber(item, "c", point.tension);
  SetNumber(item, "cx", point.tensionX);
  item.SetAttribute("Type", MEnvelopeType::GetName(point.type));
  if (point.flags != 0) item.SetAttribute("Flags", MString::FromInteger(point.flags));
  item.SetAttribute("SmoothingType", MEnvelopeSmoothing::GetName(point.smoothingType));
  SetNumber(item, "SmoothX1", point.smooth1);
  SetNumber(item, "SmoothX2", point.smooth2);
}

MEnvelopePoint LoadPoint(const MXMLItem& item) {
  MEnvelopePoint point;
  point.x = Number(item, "x");
  point.y = Number(item, "y");
  point.tension = std::clamp(Number(item, "c"), -1.0, 1.0);
  point.tensionX = std::clamp(Number(item, "cx"), -1.0, 1.0);
  point.type = MEnvelopeType::Find(item.GetAttribute("Type"));
  point.flags = Flags(item);
  point.smoothingType = MEnvelopeSmoothing::Find(item.GetAttribute("SmoothingType"));
  point.smooth1 = Number(item, "SmoothX1");
  point.smooth2 = Number(item, "SmoothX2");
  return point;
}

}  // namespace

void MEnvelopeData::Save(MXMLItem& item) const {
  for (const auto& point : points_) SavePoint(*point, item.AddSubItem(kPoint));
}

void MEnvelopeData::Load(const MXMLItem& item, bool replace) {
  MEnvelopeData loaded;
  if (!replace) loaded = *this;
  loaded.xMinimum = xMinimum;
  loaded.xMaximum = xMaximum;
  loaded.yMinimum = yMinimum;
  loaded.yMaximum = yMaximum;
  MXMLItemIterator points(item, kPoint);
  while (const MXMLItem* const point = points.Next()) loaded.Add(LoadPoint(*point));
  loaded.Normalize();
  *this = std::move(loaded);
}
