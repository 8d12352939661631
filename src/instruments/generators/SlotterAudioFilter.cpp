#include "instruments/generators/SlotterAudioFilter.h"

#include <algorithm>
#include <cmath>

#include "core/MXMLNumber.h"
#include "dsp/MFilterCascade.h"

namespace {

constexpr double kResonance = 0.5;
constexpr std::size_t kSections = 2;

}  // namespace

struct SlotterAudioFilter::Band : MGeneratorState {
  MGeneratorStatePointer inner;
  MResonantFilter sections[kSections];  // those that are on, in the order in which they run
  std::size_t count = 0;
  MResonantState memory[MAudioBuffer::kMaximumChannels * kSections];
};

double SlotterAudioFilter::GetCutOff(double frequencyHz, double fallback, double ratio) const {
  const double wanted = std::isfinite(frequencyHz) ? frequencyHz : fallback;
  return MLimitFilterFrequency(std::clamp(wanted * ratio, 20.0, 20000.0), GetRate());
}

MGeneratorStatePointer SlotterAudioFilter::CreateState(double gain, double ratio) const {
  std::unique_ptr<Band> band(new Band);
  band->inner = inner_.CreateState(gain, ratio);
  if (hasLowPass) {
    MResonantLowPass low;
    low.Set(GetCutOff(lowPassHz, kDefaultLowPassHz, ratio), 1 - kResonance, GetRate());
    band->sections[band->count++] = low;
  }
  if (hasHighPass) {
    MResonantHighPass high;
    high.Set(GetCutOff(highPassHz, kDefaultHighPassHz, ratio), 1 - kResonance, GetRate());
    band->sections[band->count++] = high;
  }
  return band;
}

bool SlotterAudioFilter::Compute(MGeneratorState& state, MAudioBuffer& buffer) {
  auto& band = static_cast<Band&>(state);
  const bool isOver = inner_.Compute(*band.inner, buffer);
  if (band.count == 0) return isOver;
  float* channels[MAudioBuffer::kMaximumChannels];
  for (int32_t c = 0; c < buffer.GetChannelCount(); ++c) channels[c] = buffer.GetChannel(c);
  MResonantCascade::Run({band.sections, band.count}, band.memory, kSections, channels, channels,
                        buffer.GetChannelCount(), buffer.GetLength());
  return isOver;
}

void SlotterAudioFilter::Reset() {
  MAudioGeneratorFilter::Reset();
  LoadOwn(MXMLItem());
}

void SlotterAudioFilter::Save(MXMLItem& item) const {
  MAudioGeneratorFilter::Save(item);
  item.SetAttribute("lpenable", hasLowPass ? "1" : "0");
  item.SetAttribute("lpcutoff", MString::FromDouble(lowPassHz, 4));
  item.SetAttribute("hpenable", hasHighPass ? "1" : "0");
  item.SetAttribute("hpcutoff", MString::FromDouble(highPassHz, 4));
}

void SlotterAudioFilter::Load(const MXMLItem& item) {
  MAudioGeneratorFilter::Load(item);
  LoadOwn(item);
}

void SlotterAudioFilter::LoadOwn(const MXMLItem& item) {
  hasLowPass = ReadSwitch(item, "lpenable", false);
  lowPassHz = MReadNumber(item, "lpcutoff", kDefaultLowPassHz);
  hasHighPass = ReadSwitch(item, "hpenable", false);
  highPassHz = MReadNumber(item, "hpcutoff", kDefaultHighPassHz);
}
