#pragma once
// The curves of an instrument's state.

#include "core/MXMLItem.h"
#include "dsp/MEnvelopeData.h"

// The line from (0, begin) to (1, end), in the range 0..1.
inline MEnvelopeData MLineCurve(double begin, double end) {
  MEnvelopeData curve;
  curve.Add(0, begin);
  curve.Add(1, end);
  return curve;
}

// Writes a curve as the child of that name, in place of one that is there.
inline void MSaveCurve(const MEnvelopeData& curve, MXMLItem& item, const MString& child) {
  if (item.HasSubItem(child)) item.RemoveSubItem(item.CachedSubItem());
  curve.Save(item.AddSubItem(child));
}

// Reads it; without the child the curve is left alone.
inline void MLoadCurve(MEnvelopeData& curve, const MXMLItem& item, const MString& child) {
  if (item.HasSubItem(child)) curve.Load(item.CachedSubItem());
}
