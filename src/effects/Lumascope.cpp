#include "effects/Lumascope.h"

#include <algorithm>
#include <cmath>

#include "core/MXMLItem.h"
#include "dsp/MFilterCascade.h"
#include "plugin/MLimitedRows.h"
#include "plugin/MParameterFormatters.h"

namespace {

constexpr const char* kModes[] = {"Spectrum meter (64 bands)", "FFT", "1/3 octave"};
constexpr const char* kChannelModes[] = {"Left", "Right", "Stereo"};
constexpr double kThirdOctaveSlope = 3;  // decibels per octave
constexpr double kNoGain = 1e-5;         // decibels

const char* const* GetWindowNames() {
  static const auto names = [] {
    std::array<const char*, MSignalWindow::kTypeCount> each;
    for (int32_t i = 0; i < MSignalWindow::kTypeCount; ++i)
      each[static_cast<std::size_t>(i)] = MSignalWindow::GetTypeName(i);
    return each;
  }();
  return names.data();
}

void M_CALL ShowPowerOfTwo(MString& text, double value, const MPluginParameter&) {
  text = MString::FromDouble(std::exp2(std::nearbyint(value)), 0);
}

void AddChoice(MPluginParameter& row, const MString& name, const MString& key, const MString& help,
               const char* const* choices, int32_t count, int32_t defaultChoice) {
  row.kind = MParameterKind::kEnumeration;
  row.name = name;
  row.key = key;
  row.help = help;
  row.enumeration.choices = choices;
  row.enumeration.count = count;
  row.enumeration.defaultValue = row.enumeration.value = defaultChoice;
}

int32_t LimitedChoice(const MPluginParameter& row) {
  return std::clamp<int32_t>(MLoadShared(row.enumeration.value), 0, row.enumeration.count - 1);
}

bool ReadSwitch(const MXMLItem& item, const char* name, bool fallback) {
  return item.GetAttribute(MString::Literal(name), fallback ? "1" : "0").ToInteger() != 0;
}

}  // namespace

LumascopeAudioEffectPlugin::LumascopeAudioEffectPlugin() {
  AddAnalysis();
  AddSource();
  SetParameters(rows_);
  SetPluginFlag();
}

void LumascopeAudioEffectPlugin::AddAnalysis() {
  AddChoice(rows_[kMode], "Mode", "mode",
            "<name>Mode</name> defines how the spectrum is shown: in bands, as a curve or in third octaves.",
            kModes, static_cast<int32_t>(std::size(kModes)), LumascopeDisplay::Mode::kMeter);
  AddRealParameter(rows_[kAverage], "Average length", "average",
                   "<name>Average length</name> defines the time over which spectra are averaged.", 0.0, 5.0,
                   0.1, MString(), MShowMilliseconds);
  AddRealParameter(rows_[kSmooth], "Smooth", "smooth",
                   "<name>Smooth</name> defines how far the spectrum is smoothed along the frequencies.", 0.0,
                   1.0, 0.2, MString(), MShowPercent);
  AddRealParameter(rows_[kSlope], "Slope", "slope",
                   "<name>Slope</name> defines by how much each octave is raised above the one below it. "
                   "With 3 dB pink noise is shown as a level line.",
                   0.0, 6.0, 0.0, "{0.2} dB", MShowInUnit);
  MPluginParameter& size = rows_[kFFTSize];
  size.kind = MParameterKind::kInteger;
  size.name = "FFT size";
  size.key = "fftsize";
  size.help =
      "<name>FFT size</name> defines how many samples a spectrum is made of. The more they are, the finer "
      "are low frequencies told apart, and the slower the spectrum follows.";
  size.formatter = ShowPowerOfTwo;
  size.integer = {10, 14, 12, 12};
  AddRealParameter(rows_[kOverlap], "Overlap size", "overlap",
                   "<name>Overlap size</name> defines how much of a spectrum's samples the next one shares.",
                   0.0, 0.8, 0.5, MString(), MShowPercent);
  AddChoice(rows_[kWindow], "Window type", "window",
            "<name>Window type</name> defines how the samples of a spectrum are faded in and out.",
            GetWindowNames(), MSignalWindow::kTypeCount, MSignalWindow::kHann);
}

void LumascopeAudioEffectPlugin::AddSource() {
  AddChoice(rows_[kChannelMode], "Channel mode", "channelmode",
            "<name>Channel mode</name> defines which channel is measured; Stereo is half of their sum.",
            kChannelModes, static_cast<int32_t>(std::size(kChannelModes)), ChannelMode::kLeft);
  AddRealParameter(
      rows_[kGain], "Gain", "gain",
      "<name>Gain</name> defines power modification applied on what is measured. The sound stays "
      "as it is.",
      -24.0, 24.0, 0.0, "{0.2} dB", MShowInUnit);
  AddSwitchParameter(rows_[kSimulation], "Psycho-acoustic simulation", "psychoacousticsimulation",
                     "<name>Psycho-acoustic simulation</name> weights what is measured as the ear does.",
                     false);
}

int32_t LumascopeAudioEffectPlugin::GetMode() const noexcept {
  return LimitedChoice(rows_[kMode]);
}

// Approximates the curves of equal loudness.
void LumascopeAudioEffectPlugin::DesignSimulation() {
  struct Design {
    int32_t type;
    float gainDecibels;
    double frequencyHz, q;
  };
  static constexpr Design kDesigns[kSections] = {
      {MBiquadType::kHighPass, 0, 74, 0.44},
      {MBiquadType::kHighPass, 0, 20, 0.75},
      {MBiquadType::kLowShelf, -14.399999618530273f, 135, 0.42},
      {MBiquadType::kHighShelf, 15.410499572753906f, 3964, 0.43},
      {MBiquadType::kHighShelf, 2.0336999893188477f, 15500, 0.48},
  };
  for (std::size_t i = 0; i < kSections; ++i) {
    const Design& design = kDesigns[i];
    sections_[i].Set(design.type, design.gainDecibels, MLimitFilterFrequency(design.frequencyHz, sampleRate_),
                     sampleRate_, design.q);
    states_[i].Reset();
  }
}

void LumascopeAudioEffectPlugin::Update() {
  if (sampleRate_ < 1) return;
  LumascopeSpectrum::Settings settings;
  settings.size = 1 << std::clamp<int32_t>(MLoadShared(rows_[kFFTSize].integer.value), 10, 14);
  settings.window = LimitedChoice(rows_[kWindow]);
  settings.overlap = MLimitedValue(rows_[kOverlap], 0, 0.95);
  settings.averageSeconds = MLimitedValue(rows_[kAverage], 0, 60);
  settings.sampleRate = sampleRate_;
  const MLocker measuring(measuring_);
  spectrum_.Set(settings);
  channelMode_ = LimitedChoice(rows_[kChannelMode]);
  gainDecibels_ = MLimitedValue(rows_[kGain], -200, 200);
  gain_ = std::pow(10, gainDecibels_ * 0.05);
  isSimulating_ = MIsOn(rows_[kSimulation]);
  if (isSimulating_) DesignSimulation();
  isReady_ = true;
  const double slope = GetMode() == LumascopeDisplay::Mode::kThirdOctaves
                           ? kThirdOctaveSlope
                           : MLimitedValue(rows_[kSlope], -200, 200);
  const MLocker locker(lock_);
  display_.Set(MLimitedValue(rows_[kSmooth], 0, 1), slope);
}

int32_t LumascopeAudioEffectPlugin::Prepare(int32_t channels, int32_t sampleRate) {
  MAudioEffectPlugin::Prepare(channels, sampleRate);
  if (sampleRate < 1) return 0;
  const MLocker measuring(measuring_);
  spectrum_.Reset();
  std::fill_n(states_, kSections, MBiquadState());
  return 0;
}

LumascopeAudioEffectPlugin::Points LumascopeAudioEffectPlugin::GetCurve(Points& peaks) {
  double mean[LumascopeSpectrum::kPoints], held[LumascopeSpectrum::kPoints];
  spectrum_.Read(mean, held);
  LumascopeDisplay display;
  {
    const MLocker locker(lock_);
    display = display_;
  }
  peaks = display.Shape(held);
  return display.Shape(mean);
}

LumascopeAudioEffectPlugin::Picture LumascopeAudioEffectPlugin::GetPicture() {
  Points peaks, comparison;
  const Points curve = GetCurve(peaks);
  View view;
  {
    const MLocker locker(lock_);
    view = view_;
    comparison = comparison_;
  }
  Picture picture;
  picture.mode = GetMode();
  picture.current = LumascopeDisplay::GetLevels(picture.mode, curve);
  if (view.showsPeaks) picture.peaks = LumascopeDisplay::GetLevels(picture.mode, peaks);
  if (view.showsComparison) picture.comparison = LumascopeDisplay::GetLevels(picture.mode, comparison);
  if (!view.normalizes) return picture;
  const auto lower = [](Levels& levels, double by) {
    for (double& level : levels) level -= by;
  };
  const auto highest = [](const Levels& levels) { return *std::max_element(levels.begin(), levels.end()); };
  const double top = highest(picture.current);
  lower(picture.current, top);
  lower(picture.peaks, top);
  if (view.showsComparison) lower(picture.comparison, highest(picture.comparison));
  return picture;
}

LumascopeAudioEffectPlugin::View LumascopeAudioEffectPlugin::GetView() {
  const MLocker locker(lock_);
  return view_;
}

void LumascopeAudioEffectPlugin::SetView(const View& view) {
  const MLocker locker(lock_);
  view_ = view;
}

LumascopeAudioEffectPlugin::ClipboardData LumascopeAudioEffectPlugin::CopyCurve() {
  Points peaks;
  return LumascopeDisplay::Pack(GetCurve(peaks));
}

bool LumascopeAudioEffectPlugin::PasteComparison(const uint8_t* data, std::size_t size) {
  if (size != std::tuple_size_v<ClipboardData>) return false;
  const Points points = LumascopeDisplay::Unpack(data);
  const MLocker locker(lock_);
  comparison_ = points;
  return true;
}

bool LumascopeAudioEffectPlugin::SaveState(MXMLItem& item) {
  {
    const MLocker locker(lock_);
    item.SetAttribute("ShowPeaks", view_.showsPeaks ? "1" : "0");
    item.SetAttribute("Normalize", view_.normalizes ? "1" : "0");
    item.SetAttribute("ShowComparison", view_.showsComparison ? "1" : "0");
    item.SetAttribute("Comparison", LumascopeDisplay::GetText(comparison_));
  }
  return MAudioEffectPlugin::SaveState(item);
}

bool LumascopeAudioEffectPlugin::LoadState(MXMLItem& item) {
  {
    const MLocker locker(lock_);
    const View usual;
    view_.showsPeaks = ReadSwitch(item, "ShowPeaks", usual.showsPeaks);
    view_.normalizes = ReadSwitch(item, "Normalize", usual.normalizes);
    view_.showsComparison = ReadSwitch(item, "ShowComparison", usual.showsComparison);
    if (!item.HasAttribute("Comparison"))
      comparison_ = {};
    else
      LumascopeDisplay::ReadText(item.CachedAttribute(), comparison_);
  }
  return MAudioEffectPlugin::LoadState(item);
}

void LumascopeAudioEffectPlugin::MeasurePart(const float* const* in, int32_t first, int32_t samples) {
  const float* const left = in[0] + first;
  const float* const right = in[channels_ > 1 ? 1 : 0] + first;
  if (channelMode_ == ChannelMode::kStereo)
    for (int32_t i = 0; i < samples; ++i) part_[i] = static_cast<float>((double{left[i]} + right[i]) * 0.5);
  else
    std::copy_n(channelMode_ == ChannelMode::kRight ? right : left, samples, part_);
  if (gainDecibels_ != 0)
    for (int32_t i = 0; i < samples; ++i) part_[i] = static_cast<float>(part_[i] * gain_);
  float* const part = part_;
  if (isSimulating_) MBiquadCascade::Run(sections_, states_, kSections, &part, &part, 1, samples);
  spectrum_.Feed(part_, samples);
}

// Called by the thread that holds `measuring_`.
void LumascopeAudioEffectPlugin::Measure(const float* const* in, int32_t samples) {
  const bool isMixed = channelMode_ == ChannelMode::kStereo && channels_ > 1;
  if (!isMixed && !isSimulating_ && std::abs(gainDecibels_) < kNoGain) {
    const bool isRight = channelMode_ == ChannelMode::kRight && channels_ > 1;
    spectrum_.Feed(in[isRight ? 1 : 0], samples);
    return;
  }
  for (int32_t done = 0; done < samples; done += kPart)
    MeasurePart(in, done, std::min(samples - done, kPart));
}

void LumascopeAudioEffectPlugin::Process(float** in, float** out, int32_t samples) {
  CopyChannels(in, out, 0, channels_, samples);
  if (samples < 1 || channels_ < 1 || !IsMeasuring() || measuring_.Acquire(0) != 0) return;
  if (isReady_) Measure(out, samples);
  measuring_.Release();
}

void LumascopeAudioEffectPlugin::Skip(int32_t samples) {
  if (samples < 1 || !IsMeasuring() || measuring_.Acquire(0) != 0) return;
  if (isReady_) spectrum_.Skip(samples);
  measuring_.Release();
}

M_PLUGIN_ENTRY(LumascopeAudioEffectPlugin)
