#include "effects/Imprinta.h"

#include <algorithm>

#include "core/MXMLItem.h"
#include "plugin/MParameterFormatters.h"

ImprintaAudioEffectPlugin::ImprintaAudioEffectPlugin() {
  MPluginParameter& length = rows_[kLength];
  length.kind = MParameterKind::kInteger;
  length.name = "Length";
  length.key = "length";
  length.help =
      "<name>Length</name> defines length of the convolution source in samples. The longer it is, the lower "
      "are the frequencies that it can shape, and the more work it is for the processor.";
  length.unit = "{0} samples";
  length.formatter = MShowInUnit;
  length.integer = {2, kMaximumLength, 16, 16};
  SetParameters(rows_);
  SetPluginFlag();
  curve_.yMinimum = -1;
  curve_.Add(0, 1);
  curve_.Add(1, -1);
}

void ImprintaAudioEffectPlugin::Update() {
  if (sampleRate_ < 1) return;
  const int32_t length = std::clamp<int32_t>(MLoadShared(rows_[kLength].integer.value), 1, kMaximumLength);
  const MLocker locker(lock_);
  if (isCurveNew_) computer_.Build(curve_);
  isCurveNew_ = false;
  computer_.Seek(0);
  filter_.SetFormat(1, length, MFirFilter::kMaximumChannels, kMaximumLength);
  float* const kernel = filter_.GetKernel(0);
  for (int32_t i = 0; i < length; ++i) {
    taps_[i] = computer_.GetValue((i + 0.5) / length);
    kernel[length - 1 - i] = static_cast<float>(taps_[i]);
  }
  tapCount_ = length;
  filter_.Normalize();
  repair_.Request();
}

bool ImprintaAudioEffectPlugin::SaveState(MXMLItem& item) {
  {
    const MLocker locker(lock_);
    curve_.Save(item.AddSubItem("graph"));
  }
  return MAudioEffectPlugin::SaveState(item);
}

bool ImprintaAudioEffectPlugin::LoadState(MXMLItem& item) {
  if (item.HasSubItem("graph")) {
    const MLocker locker(lock_);
    curve_.Load(item.CachedSubItem());
    isCurveNew_ = true;
  }
  return MAudioEffectPlugin::LoadState(item);
}

void ImprintaAudioEffectPlugin::Process(float** in, float** out, int32_t samples) {
  if (samples < 1) return;
  const MLocker locker(lock_);
  if (tapCount_ == 0) return CopyChannels(in, out, 0, channels_, samples);
  filter_.Run(in, out, channels_, samples);
  repair_.Run(out, channels_, samples);
  CopyChannels(in, out, MFirFilter::kMaximumChannels, channels_, samples);
}

void ImprintaAudioEffectPlugin::Skip(int32_t samples) {
  const MLocker locker(lock_);
  filter_.Skip(channels_, samples);
}

std::vector<double, MAllocator<double>> ImprintaAudioEffectPlugin::GetTaps() {
  const MLocker locker(lock_);
  return {taps_, taps_ + tapCount_};
}

M_PLUGIN_ENTRY(ImprintaAudioEffectPlugin)
