#include "effects/Tonebench.h"

#include <algorithm>
#include <cmath>

#include "core/MXMLItemIterator.h"
#include "core/MXMLNumber.h"
#include "dsp/MFilterCascade.h"

namespace {

constexpr double kLowestQuality = 0.05, kHighestQuality = 20, kQualityRange = 19.95;
constexpr double kWidthWithoutQuality = 0.8942013467698493;  // of a state whose point has none: Q = 0.6

double QualityOf(double width) {
  return kHighestQuality - kQualityRange * std::sqrt(std::sqrt(width));
}

double WidthOf(double quality) {
  const double root = (quality - kHighestQuality) * 0.050125313283208024;  // 1/19.95
  return (root * root) * (root * root);
}

// The bands of a new plug-in: spread over the range, boosting and cutting in turn, all off but a flat one.
BandPoint NewBand(int32_t index) {
  constexpr int32_t kEnabled = 3;
  const double lowest = std::log10(20.0), highest = std::log10(20000.0);
  BandPoint point;
  point.x = lowest + (index + 1) * (highest - lowest) / 8;
  point.y = index == kEnabled ? 0 : index % 2 == 0 ? 6 : -6;
  point.enabled = index == kEnabled;
  point.width = std::pow(-0.9724310776942356, 4);
  return point;
}

double LimitTo(double value, double low, double high, double fallback) {
  return std::clamp(std::isfinite(value) ? value : fallback, low, high);
}

void Design(MBiquadFilter& section, const BandPoint& point, const BandPoint& fallback, int32_t sampleRate) {
  const double gainDecibels = LimitTo(point.y, -60, 60, fallback.y);
  const double frequencyHz = std::pow(10.0, LimitTo(point.x, -6, 6, fallback.x));
  const double width = LimitTo(point.width, 0, 1, fallback.width);
  section.Set(std::clamp(point.type, 0, MBiquadType::kCount - 1), gainDecibels,
              MLimitFilterFrequency(frequencyHz, sampleRate), sampleRate, QualityOf(width));
}

int32_t FindType(const MString& name) {
  for (int32_t type = 0; type < MBiquadType::kCount; ++type)
    if (name == MString::Literal(kBiquadTypeNames[type])) return type;
  return MBiquadType::kPeak;
}

void SavePoint(const BandPoint& point, MXMLItem& item) {
  // A quality that was read comes back a few bits off; no text of nine digits shows them.
  const double quality = std::round(QualityOf(LimitTo(point.width, 0, 1, 0)) * 1e10) * 1e-10;
  item.SetAttribute("x", MExactNumberText(point.x));
  item.SetAttribute("y", MExactNumberText(point.y));
  item.SetAttribute("enabled", point.enabled ? "1" : "0");
  item.SetAttribute("q", MExactNumberText(quality));
  item.SetAttribute("type",
                    MString::Literal(kBiquadTypeNames[std::clamp(point.type, 0, MBiquadType::kCount - 1)]));
}

BandPoint LoadPoint(const MXMLItem& item) {
  BandPoint point;
  point.x = MReadNumber(item, "x");
  point.y = MReadNumber(item, "y");
  point.enabled = item.GetAttribute("enabled").ToInteger() != 0;
  point.width = item.HasAttribute("q") ? WidthOf(MReadNumber(item, "q")) : kWidthWithoutQuality;
  point.type = FindType(item.GetAttribute("type"));
  return point;
}

// How a band is called in the oldest states.
struct OldBand {
  int32_t type;
  const char* enabled;
  const char* frequency;
  const char* gain;
  const char* quality;
};
constexpr OldBand kOldBands[] = {
    {MBiquadType::kLowShelf, "parameterlowshelf", "parameterlowfreq", "parameterlowgain", "parameterlowq"},
    {MBiquadType::kHighShelf, "parameterhighshelf", "parameterhighfreq", "parameterhighgain",
     "parameterhighq"},
    {MBiquadType::kPeak, "parametermiddle", "parametermidfreq", "parametermiddlegain", "parametermiddleq"},
};

BandPoint LoadOldBand(const MXMLItem& item, const OldBand& band) {
  const auto number = [&](const char* name, double fallback) {
    return MReadNumber(item, MString::Literal(name), fallback);
  };
  const double frequencyHz = number(band.frequency, 1000);
  BandPoint point;
  point.x = std::log10(frequencyHz > 0 ? frequencyHz : 1000);
  point.y = number(band.gain, 0);
  point.enabled = item.GetAttribute(MString::Literal(band.enabled)).ToInteger() != 0;
  point.width = WidthOf(number(band.quality, 1));
  point.type = band.type;
  return point;
}

}  // namespace

TonebenchAudioEffectPlugin::ValueQ::ValueQ(MBound<double> width)
    : MValueNumber<double, double>(width, 0.0, 1.0) {
  SetFormat("{0;.02}");
}

void TonebenchAudioEffectPlugin::ValueQ::Show(MString& text, double width) const {
  MValueNumber<double, double>::Show(text, QualityOf(std::max(width, 0.0)));
}

bool TonebenchAudioEffectPlugin::ValueQ::Read(const MString& text, double& width) const {
  double quality = 0;
  if (!MValueNumber<double, double>::Read(text, quality)) return false;
  width = WidthOf(std::clamp(quality, kLowestQuality, kHighestQuality));
  return true;
}

TonebenchAudioEffectPlugin::TonebenchAudioEffectPlugin() {
  for (int32_t i = 0; i < kBands; ++i) bands_[i] = NewBand(i);
}

BandPoint TonebenchAudioEffectPlugin::GetBand(int32_t index) {
  const MLocker locker(lock_);
  return bands_[index];
}

void TonebenchAudioEffectPlugin::SetBand(int32_t index, const BandPoint& point) {
  const MLocker locker(lock_);
  bands_[index] = point;
  Update();
}

double TonebenchAudioEffectPlugin::GetShape(double frequencyLog10Hz) {
  const MLocker locker(lock_);
  const double frequencyHz = std::pow(10.0, frequencyLog10Hz);
  double magnitude = 1;
  for (int32_t i = 0; i < sections_.count; ++i) magnitude *= sections_.filters[i].GetMagnitude(frequencyHz);
  return 20 * std::log10(std::max(magnitude, 1e-20));
}

void TonebenchAudioEffectPlugin::Update() {
  const MLocker locker(lock_);
  if (sampleRate_ < 1) return;
  sections_.count = 0;
  for (int32_t i = 0; i < kBands; ++i)
    if (bands_[i].enabled) Design(sections_.filters[sections_.count++], bands_[i], NewBand(i), sampleRate_);
  published_.Set(sections_);
}

bool TonebenchAudioEffectPlugin::SaveState(MXMLItem& item) {
  const MLocker locker(lock_);
  if (item.HasSubItem("graph")) item.RemoveSubItem(item.CachedSubItem());
  MXMLItem& graph = item.AddSubItem("graph");
  for (const BandPoint& band : bands_) SavePoint(band, graph.AddSubItem("point"));
  item.SetAttribute("halfgain", "0");
  return MAudioEffectPlugin::SaveState(item);
}

void TonebenchAudioEffectPlugin::LoadOldestState(const MXMLItem& item) {
  constexpr int32_t kOldCount = static_cast<int32_t>(std::size(kOldBands));
  for (int32_t i = 0; i < kBands; ++i)
    bands_[i] = i < kOldCount ? LoadOldBand(item, kOldBands[i]) : NewBand(i);
}

void TonebenchAudioEffectPlugin::LoadGraph(const MXMLItem& graph) {
  MXMLItemIterator points(graph, "point");
  for (int32_t i = 0; i < kBands; ++i) {
    const MXMLItem* const point = points.Next();
    bands_[i] = point ? LoadPoint(*point) : NewBand(i);
  }
}

bool TonebenchAudioEffectPlugin::LoadState(MXMLItem& item) {
  const MLocker locker(lock_);
  if (item.HasAttribute("parameterhighfreq"))
    LoadOldestState(item);
  else if (item.HasSubItem("graph"))
    LoadGraph(item.CachedSubItem());
  // Older states hold half of each gain.
  if (!item.HasAttribute("halfgain") || item.CachedAttribute().ToDouble() != 0)
    for (BandPoint& band : bands_) band.y = std::clamp(2 * band.y, -1e6, 1e6);
  return MAudioEffectPlugin::LoadState(item);
}

void TonebenchAudioEffectPlugin::Process(float** in, float** out, int32_t samples) {
  const Sections& sections = published_.Get();
  const int32_t served = std::min(channels_, kChannels);
  MBiquadCascade::Run({sections.filters, static_cast<std::size_t>(sections.count)}, states_, kPlaces, in, out,
                      served, samples);
  CopyChannels(in, out, served, channels_, samples);
}

M_PLUGIN_ENTRY(TonebenchAudioEffectPlugin)
