#pragma once
// Random curves for the models of effects that have one, and their way into an effect.

#include "core/MXMLItem.h"
#include "dsp/MEnvelopeComputer.h"
#include "tests/common/EffectUnderTest.h"

// A curve over 0..1 of up to nine points, some of which have the same place, in any of the segment types.
inline MEnvelopeData RandomCurve(TestRandom& random, double yMinimum, double yMaximum) {
  MEnvelopeData curve;
  curve.yMinimum = yMinimum;
  curve.yMaximum = yMaximum;
  for (int32_t i = random.Below(10); i > 0; --i) {
    MEnvelopePoint point;
    point.x = random.OneIn(5) ? random.OneOf<double>({0, 0.5, 1}) : random.Real(0, 1);
    point.y =
        random.OneIn(5) ? random.OneOf<double>({0, yMinimum, yMaximum}) : random.Real(yMinimum, yMaximum);
    point.type = random.Below(4);
    point.tension = random.Real(-0.9, 0.9);
    point.tensionX = random.Real(-0.9, 0.9);
    curve.Add(point);
  }
  curve.Normalize();
  return curve;
}

// Loads a state with this curve and one row; what the curve reads as there, with the digits of a state, comes
// back.
inline MEnvelopeData LoadCurve(EffectUnderTest& effect, const MEnvelopeData& curve, const char* attribute,
                               const MString& value) {
  MXMLItem item("state");
  item.SetAttribute(MString::Literal(attribute), value);
  curve.Save(item.AddSubItem("graph"));
  effect.Call(MService::kLoadState, MAsWord(&item));
  effect.Call(MService::kStateLoaded);
  MEnvelopeData read = curve;
  read.Load(item.SubItem("graph"));
  return read;
}
