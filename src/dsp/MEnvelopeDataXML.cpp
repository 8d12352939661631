#include "core/MXMLItem.h"
#include "core/MXMLItemIterator.h"
#include "core/MXMLNumber.h"
#include "dsp/MEnvelopeData.h"

namespace {

constexpr char kPoint[] = "Point";
constexpr double kNothing = 1e-50;

void SetNumber(MXMLItem& item, const MString& name, double value) {
  if (std::isfinite(value) && std::abs(value) >= kNothing)
    item.SetAttribute(name, MExactNumberText(value));
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
  point.x = MReadNumber(item, "x");
  point.y = MReadNumber(item, "y");
  point.tension = std::clamp(MReadNumber(item, "c"), -1.0, 1.0);
  point.tensionX = std::clamp(MReadNumber(item, "cx"), -1.0, 1.0);
  point.type = MEnvelopeType::Find(item.GetAttribute("Type"));
  point.flags = Flags(item);
  point.smoothingType = MEnvelopeSmoothing::Find(item.GetAttribute("SmoothingType"));
  point.smooth1 = MReadNumber(item, "SmoothX1");
  point.smooth2 = MReadNumber(item, "SmoothX2");
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
