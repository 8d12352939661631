#include "effects/Bendform.h"

#include "core/MXMLItem.h"
#include "dsp/MProcessor.h"
#include "plugin/MParameterFormatters.h"

BendformAudioEffectPlugin::BendformAudioEffectPlugin()
    : kernel_(MHasAVX2() ? kBendformWide : kBendformBaseline) {
  AddRealParameter(
      rows_[kDepth], "Depth", "Depth",
      "<name>Depth</name> defines how powerful the effect is: the share of the shaped signal, next "
      "to the unchanged one.",
      0.0, 1.0, 0.5, MString(), MShowPercent);
  SetParameters(rows_);
  SetPluginFlag();
  ResetCurve();
}

void BendformAudioEffectPlugin::ResetCurve() {
  const MLocker locker(lock_);
  isCurveNew_ = true;
  curve_.Clear();
  curve_.Add(0, 0);
  curve_.Add(1, 1);
}

void BendformAudioEffectPlugin::Update() {
  if (sampleRate_ < 1) return;
  const MLocker building(building_);
  MEnvelopeData curve;
  {
    const MLocker locker(lock_);
    if (!isCurveNew_) return;
    isCurveNew_ = false;
    curve = curve_;
  }
  shapes_[1 - current_].Build(curve);
  const MLocker locker(lock_);
  current_ = 1 - current_;
}

bool BendformAudioEffectPlugin::SaveState(MXMLItem& item) {
  {
    const MLocker locker(lock_);
    curve_.Save(item.AddSubItem("graph"));
  }
  return MAudioEffectPlugin::SaveState(item);
}

bool BendformAudioEffectPlugin::LoadState(MXMLItem& item) {
  if (item.HasSubItem("graph")) {
    const MLocker locker(lock_);
    curve_.Load(item.CachedSubItem());
    isCurveNew_ = true;
  }
  return MAudioEffectPlugin::LoadState(item);
}

void BendformAudioEffectPlugin::Process(float** in, float** out, int32_t samples) {
  if (samples < 1) return;
  const double depth = MLimitedValue(rows_[kDepth], -1e6, 1e6);
  const MLocker locker(lock_);
  const BendformCurve::View shape = shapes_[current_].GetView();
  if (!shape.pieces) return CopyChannels(in, out, 0, channels_, samples);
  for (int32_t c = 0; c < channels_; ++c) kernel_.run(shape, depth, in[c], out[c], samples);
}

M_PLUGIN_ENTRY(BendformAudioEffectPlugin)
