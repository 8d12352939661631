#include "effects/Clampet.h"

#include <algorithm>
#include <cmath>

#include "dsp/MFilter.h"
#include "dsp/MProcessor.h"
#include "plugin/MParameterFormatters.h"

namespace {

constexpr const char* kModes[] = {"Soft 1", "Soft 2", "Soft 3", "Soft 4", "Clip 1", "Clip 2", "Clip 3"};
constexpr double kMeterMemory = 0.19999999999999996;
constexpr double kMeterInput = 0.8;

}  // namespace

ClampetAudioEffectPlugin::ClampetAudioEffectPlugin() : kernel_(MHasAVX2() ? kClampetWide : kClampetBaseline) {
  AddRealParameter(rows_[kGain], "Gain", "gain",
                   "<name>Gain</name> defines the gain applied to the signal before it is limited.", -24.0,
                   24.0, 0.0, "{0}dB", MShowInUnit);
  AddRealParameter(rows_[kThreshold], "Threshold", "threshold",
                   "<name>Threshold</name> defines the level below which the signal stays linear. Louder "
                   "parts are bent by the knee that the mode selects.",
                   1e-40, 1.0, 0.8, MString(), MShowSquaredDecibels);
  AddRealParameter(rows_[kEvenHarmonics], "Even harmonics", "evenharmonics",
                   "<name>Even harmonics</name> defines how much the limiting differs between the positive "
                   "and the negative half of the signal, which adds even harmonics.",
                   0.0, 1.0, 0.0, MString(), MShowPercent);
  MPluginParameter& mode = rows_[kMode];
  mode.kind = MParameterKind::kEnumeration;
  mode.name = "Mode";
  mode.key = "mode";
  mode.help =
      "<name>Mode</name> defines the shape of the knee above the threshold: the soft ones are rounder, the "
      "clipping ones follow saturation curves.";
  mode.enumeration = {kModes, static_cast<int32_t>(std::size(kModes)), 0, 0};
  SetParameters(rows_);
  SetPluginFlag();
}

void ClampetAudioEffectPlugin::Update() {
  if (sampleRate_ < 1) return;
  const double thresholdSqrt = MLimitedValue(rows_[kThreshold], 0, 1);
  const double gain = std::pow(10, MLimitedValue(rows_[kGain], -200, 200) * 0.05);
  const ClampetCurve curve(MLoadShared(rows_[kMode].enumeration.value), thresholdSqrt * thresholdSqrt, gain,
                           MLimitedValue(rows_[kEvenHarmonics], -1e6, 1e6));
  const MLocker locker(lock_);
  curve_ = curve;
  published_.Set(curve);
}

double ClampetAudioEffectPlugin::GetOutput(double input) {
  const MLocker locker(lock_);
  return curve_.GetOutput(input);
}

void ClampetAudioEffectPlugin::MeasureInput(float** in, int32_t samples, double gain) noexcept {
  float largest = 0;
  for (int32_t c = 0; c < channels_; ++c)
    for (int32_t i = 0; i < samples; ++i) largest = std::max(largest, MCleanSample(in[c][i]));
  MStoreShared(meter_, meter_ * kMeterMemory + largest * gain * kMeterInput);
}

void ClampetAudioEffectPlugin::Process(float** in, float** out, int32_t samples) {
  if (samples < 1) return;
  const ClampetCurve& curve = published_.Get();
  if (IsEditorOpen()) MeasureInput(in, samples, curve.gain);
  if (!curve.isReady) return CopyChannels(in, out, 0, channels_, samples);
  for (int32_t c = 0; c < channels_; ++c) kernel_.modes[curve.mode](curve, in[c], out[c], samples);
}

M_PLUGIN_ENTRY(ClampetAudioEffectPlugin)
