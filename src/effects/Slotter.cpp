#include "effects/Slotter.h"

#include <cmath>

#include "core/MXMLNumber.h"
#include "dsp/MFilterCascade.h"
#include "plugin/MLimitedRows.h"
#include "plugin/MParameterFormatters.h"

namespace {

// The first versions kept the opposite of a resonance.
void TurnResonance(MXMLItem& item, const MString& old, const MString& current) {
  if (item.HasAttribute(old)) item.SetAttribute(current, MExactNumberText(1 - MReadNumber(item, old)));
}

}  // namespace

SlotterAudioEffectPlugin::SlotterAudioEffectPlugin() {
  const double lowest = std::log10(20.0), highest = std::log10(20000.0);
  AddPanel(rows_[kHighPanel], "High-pass filter");
  AddSwitchParameter(rows_[kHighEnable], "Enable", "highenable",
                     "<name>Enable</name> switches the high-pass filter on.", false);
  AddRealParameter(rows_[kHighFrequency], "Frequency", "highfreq",
                   "<name>Frequency</name> defines the cut-off frequency of the high-pass filter, below "
                   "which the signal is attenuated.",
                   lowest, highest, std::log10(1000.0), MString(), MShowFrequencyLog10);
  AddRealParameter(rows_[kHighResonance], "Resonance", "highresonance",
                   "<name>Resonance</name> defines how the high-pass filter behaves around its cut-off "
                   "frequency: the lower it is, the more these frequencies stand out.",
                   0.0, 1.0, 0.5, MString(), MShowPercent);
  AddPanel(rows_[kLowPanel], "Low-pass filter");
  AddSwitchParameter(rows_[kLowEnable], "Enable", "lowenable",
                     "<name>Enable</name> switches the low-pass filter on.", false);
  AddRealParameter(rows_[kLowFrequency], "Frequency", "lowfreq",
                   "<name>Frequency</name> defines the cut-off frequency of the low-pass filter, above "
                   "which the signal is attenuated.",
                   lowest, highest, std::log10(2000.0), MString(), MShowFrequencyLog10);
  AddRealParameter(rows_[kLowResonance], "Resonance", "lowresonance",
                   "<name>Resonance</name> defines how the low-pass filter behaves around its cut-off "
                   "frequency: the lower it is, the more these frequencies stand out.",
                   0.0, 1.0, 0.5, MString(), MShowPercent);
  SetParameters(rows_);
}

bool SlotterAudioEffectPlugin::LoadState(MXMLItem& item) {
  TurnResonance(item, "parameterhighres", "parameterhighresonance");
  TurnResonance(item, "parameterlowres", "parameterlowresonance");
  return MAudioEffectPlugin::LoadState(item);
}

void SlotterAudioEffectPlugin::Update() {
  const MLocker locker(lock_);
  if (sampleRate_ < 1) return;
  MResonantLowPass low;
  MResonantHighPass high;
  low.Set(MLimitedFilterFrequency(rows_[kLowFrequency], sampleRate_), MLimitedAmount(rows_[kLowResonance]),
          sampleRate_);
  high.Set(MLimitedFilterFrequency(rows_[kHighFrequency], sampleRate_), MLimitedAmount(rows_[kHighResonance]),
           sampleRate_);
  sections_.Set({{low, high}, true});
}

void SlotterAudioEffectPlugin::Process(float** in, float** out, int32_t samples) {
  const Sections& sections = sections_.Get();
  const bool isLowOn = MIsOn(rows_[kLowEnable]), isHighOn = MIsOn(rows_[kHighEnable]);
  const int32_t served = std::min(channels_, kChannels);
  const int32_t first = isLowOn ? kLow : kHigh;
  const int32_t count = sections.areDesigned ? isLowOn + isHighOn : 0;
  MResonantCascade::Run({sections.filters + first, static_cast<std::size_t>(count)}, states_ + first,
                        kSections, in, out, served, samples);
  CopyChannels(in, out, served, channels_, samples);
}

M_PLUGIN_ENTRY(SlotterAudioEffectPlugin)
