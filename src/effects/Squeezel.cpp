#include "effects/Squeezel.h"

#include <algorithm>
#include <cmath>

#include "core/MXMLNumber.h"
#include "dsp/MFilterCascade.h"
#include "plugin/MParameterFormatters.h"

namespace {

constexpr const char* kKnees[] = {"Hard", "Linear", "Soft"};
constexpr double kNothing = 1e-50;
constexpr double kSilentLevel = 1e-20;
constexpr double kNoReduction = 1.000000001;
constexpr double kLowestSideChain = 20, kHighestSideChain = 20000;  // hertz
constexpr double kFastMeter = 0.1, kSlowMeter = 2.5;                // seconds

void M_CALL ShowRmsLength(MString& text, double value, const MPluginParameter& row) {
  if (value <= 1e-5)
    text = "Peak";
  else
    MShowMilliseconds(text, value, row);
}

// What is left of a value after `samples`, with a time constant of so many seconds.
double Decay(double sampleRate, double seconds, double samples = 1) {
  const double constant = sampleRate * seconds;
  return std::abs(constant) < kNothing ? 0 : std::exp(-samples / constant);
}

double DecibelGain(const MPluginParameter& row) {
  return std::pow(10, MLimitedValue(row, -200, 200) * 0.05);
}

// The ratio of a state that holds the slope above the threshold instead.
double RatioOfSlope(double stored, double thresholdSqrt) {
  const double t = thresholdSqrt * thresholdSqrt;
  return 1 / (1 - (20 * std::log10((1 - t) / stored + t)) / (20 * std::log10(t)));
}

bool IsMarked(const MXMLItem& item, const char* name) {
  const MString attribute = MString::Literal(name);
  return item.HasAttribute(attribute) && item.GetAttribute(attribute).ToDouble() == 0;
}

}  // namespace

SqueezelAudioEffectPlugin::SqueezelAudioEffectPlugin() {
  AddRealParameter(rows_[kGain], "Gain", "gain",
                   "<name>Gain</name> defines power modification applied on the incoming signal, before its "
                   "level is detected.",
                   -24.0, 24.0, 0.0, "{0.2} dB", MShowInUnit);
  AddRealParameter(rows_[kOutputGain], "Output gain", "outputgain",
                   "<name>Output gain</name> defines power modification applied on the compressed signal.",
                   -24.0, 24.0, 0.0, "{0.2} dB", MShowInUnit);
  AddTimes();
  AddShape();
  AddSwitches();
  SetParameters(rows_);
  SetPluginFlag();
  for (const double each : {0.0, 0.5, 1.0}) drawn_.Add(each, each);
}

void SqueezelAudioEffectPlugin::AddTimes() {
  AddRealParameter(rows_[kAttack], "Attack", "attack",
                   "<name>Attack</name> defines how quickly the detected level follows a signal that gets "
                   "louder.",
                   0.0, 1.0, 0.01, MString(), MShowMilliseconds);
  AddRealParameter(rows_[kRelease], "Release", "release",
                   "<name>Release</name> defines how quickly the detected level follows a signal that gets "
                   "quieter.",
                   0.0, 1.0, 0.05, MString(), MShowMilliseconds);
  AddRealParameter(rows_[kRmsLength], "RMS length", "rmslength",
                   "<name>RMS length</name> defines time to reach approximately 36% of original volume "
                   "intensity. With the shortest one peaks are detected.",
                   0.0, 0.1, 0.001, MString(), ShowRmsLength);
}

void SqueezelAudioEffectPlugin::AddShape() {
  AddRealParameter(rows_[kThreshold], "Threshold", "threshold",
                   "<name>Threshold</name> defines the level above which the signal is compressed.", 0.01,
                   1.0, 0.5, MString(), MShowSquaredDecibels);
  AddRealParameter(rows_[kRatio], "Ratio", "ratio",
                   "<name>Ratio</name> defines how much the signal above the threshold is compressed.", 1.0,
                   20.0, 1.8, "{0.2} : 1", MShowInUnit);
  MPluginParameter& knee = rows_[kKneeMode];
  knee.kind = MParameterKind::kEnumeration;
  knee.name = "Knee mode";
  knee.key = "kneemode";
  knee.help =
      "<name>Knee mode</name> defines how the curve passes over from the quiet to the compressed levels: in "
      "a "
      "corner, by a line or by an arc.";
  knee.enumeration = {kKnees, SqueezelSettings::kKneeCount, 0, 0};
  AddRealParameter(rows_[kKneeSize], "Knee size", "kneesize",
                   "<name>Knee size</name> defines how far a linear or soft knee reaches.", 0.0, 1.0, 0.25,
                   MString(), MShowPercent);
}

void SqueezelAudioEffectPlugin::AddSwitches() {
  AddSwitchParameter(rows_[kLinkChannels], "Link channels", "linkchannels",
                     "<name>Link channels</name> makes all channels share one detector and one gain, so that "
                     "the stereo image stays.",
                     true);
  AddSwitchParameter(rows_[kMaximize], "Maximize signal strength to 0dB", "maximize",
                     "<name>Maximize signal strength to 0dB</name> amplifies the signal so that full scale "
                     "comes out at full scale.",
                     true);
  AddSwitchParameter(rows_[kCustomShape], "Enable custom compressor shape", "customshape",
                     "<name>Enable custom compressor shape</name> replaces threshold, ratio and knee by a "
                     "curve that is drawn.",
                     false);
}

SqueezelSettings SqueezelAudioEffectPlugin::GetSettings() const {
  const double thresholdSqrt = MLimitedValue(rows_[kThreshold], 0.0001, 1e6);
  SqueezelSettings settings;
  settings.inputGain = DecibelGain(rows_[kGain]);
  settings.outputGain = DecibelGain(rows_[kOutputGain]);
  settings.threshold = thresholdSqrt * thresholdSqrt;
  settings.ratio = MLimitedValue(rows_[kRatio], 1, 1e6);
  settings.kneeSize = MLimitedValue(rows_[kKneeSize], 0, 4);
  settings.knee = std::clamp<int32_t>(MLoadShared(rows_[kKneeMode].enumeration.value),
                                      SqueezelSettings::kHard, SqueezelSettings::kSoft);
  settings.maximizes = MIsOn(rows_[kMaximize]);
  settings.isDrawn = MIsOn(rows_[kCustomShape]);
  return settings;
}

void SqueezelAudioEffectPlugin::FollowCurve() {
  const double t = curve_.settings.threshold;
  isDrawnNew_ = true;
  drawn_.Clear();
  drawn_.Add(drawn_.xMinimum, 0).Set(MEnvelopeFlag::kFixedY, true);
  drawn_.Add(std::sqrt(t), std::sqrt(t * curve_.makeUp));
  drawn_.Add(drawn_.xMaximum, std::sqrt(curve_.top * curve_.makeUp));
}

void SqueezelAudioEffectPlugin::DesignSideChain() {
  const auto design = [this](MBiquadFilterFloat& filter, int32_t type, double frequencyHz) {
    const double limited = std::clamp(std::isfinite(frequencyHz) ? frequencyHz : 0.0, 1e-6, 1e6);
    filter.Set(type, 0, MLimitFilterFrequency(limited, sampleRate_), sampleRate_, 1);
  };
  const bool hasLowPass = sideChain_.isOn && sideChain_.maximumFrequency < kHighestSideChain;
  const bool hasHighPass = sideChain_.isOn && sideChain_.minimumFrequency - 1e-20 > kLowestSideChain;
  firstFilter_ = hasLowPass ? 0 : 1;
  endFilter_ = hasHighPass ? 2 : 1;
  if (hasLowPass) design(filters_[0], MBiquadType::kLowPass, sideChain_.maximumFrequency);
  if (hasHighPass) design(filters_[1], MBiquadType::kHighPass, sideChain_.minimumFrequency);
}

// Compiles the drawn curve into the shape that is not read; false if the other one is of the same curve.
bool SqueezelAudioEffectPlugin::BuildShape() {
  MEnvelopeData drawn;
  {
    const MLocker locker(lock_);
    if (!isDrawnNew_) return false;
    isDrawnNew_ = false;
    drawn = drawn_;
  }
  drawnShapes_[1 - currentShape_].Build(drawn);
  return true;
}

void SqueezelAudioEffectPlugin::Update() {
  const MLocker building(building_);
  if (sampleRate_ < 1) return;
  const SqueezelCurve curve(GetSettings());
  const bool isDrawn = curve.settings.isDrawn;
  // Ahead, too, so that switching to it allocates nothing; an editor draws the computed curve until then.
  const bool isBuilt = (isDrawn || !IsEditorOpen()) && BuildShape();
  const MLocker locker(lock_);
  curve_ = curve;
  isBypassed_ = !isDrawn && std::abs(curve_.settings.ratio - 1) < kNothing;
  if (isBypassed_) std::fill(std::begin(detectors_), std::end(detectors_), SqueezelDetector());
  const auto decay = [this](int32_t row) { return Decay(sampleRate_, MLimitedValue(rows_[row], 0, 60)); };
  times_ = {decay(kAttack), decay(kRelease), decay(kRmsLength)};
  if (!isDrawn && IsEditorOpen()) FollowCurve();
  if (isBuilt) currentShape_ = 1 - currentShape_;
  curve_.drawn = drawnShapes_[currentShape_].GetView();
  isLinked_ = MIsOn(rows_[kLinkChannels]);
  DesignSideChain();
  meterRate_ = sampleRate_;
  isReady_ = true;
}

SqueezelAudioEffectPlugin::SideChain SqueezelAudioEffectPlugin::GetSideChain() {
  const MLocker locker(lock_);
  return sideChain_;
}

void SqueezelAudioEffectPlugin::SetSideChain(const SideChain& sideChain) {
  {
    const MLocker locker(lock_);
    sideChain_ = sideChain;
  }
  Update();
}

MEnvelopeData SqueezelAudioEffectPlugin::GetCurve() {
  const MLocker locker(lock_);
  return drawn_;
}

void SqueezelAudioEffectPlugin::SetCurve(const MEnvelopeData& curve) {
  {
    const MLocker locker(lock_);
    drawn_ = curve;
    isDrawnNew_ = true;
  }
  Update();
}

double SqueezelAudioEffectPlugin::GetOutput(double level) {
  const MLocker locker(lock_);
  return isReady_ ? curve_.GetOutput(level) : level;
}

SqueezelAudioEffectPlugin::Meters SqueezelAudioEffectPlugin::GetMeters() const noexcept {
  return {MLoadShared(fastLevel_), MLoadShared(slowLevel_), MLoadShared(reduction_)};
}

bool SqueezelAudioEffectPlugin::SaveState(MXMLItem& item) {
  const MLocker locker(lock_);
  if (item.HasSubItem("graph")) item.RemoveSubItem(item.CachedSubItem());
  drawn_.Save(item.AddSubItem("graph"));
  item.SetAttribute("halfgain", "0");
  item.SetAttribute("amplituderatio", "0");
  item.SetAttribute("SideChainEnable", sideChain_.isOn ? "1" : "0");
  item.SetAttribute("SideChainMinFrequency", MString::FromDouble(sideChain_.minimumFrequency, 4));
  item.SetAttribute("SideChainMaxFrequency", MString::FromDouble(sideChain_.maximumFrequency, 4));
  item.SetAttribute("SideChainPlay", sideChain_.plays ? "1" : "0");
  return MAudioEffectPlugin::SaveState(item);
}

void SqueezelAudioEffectPlugin::LoadOldRows(const MXMLItem& item) {
  const auto change = [](MPluginParameter& row, double value) {
    if (std::isfinite(value)) MStoreShared(row.real.value, value);
  };
  const auto value = [this](int32_t row) { return MLoadShared(rows_[row].real.value); };
  const bool hasHalfGain = !IsMarked(item, "halfgain");
  const bool hasSlope = !IsMarked(item, "amplituderatio");
  if (hasHalfGain) change(rows_[kGain], 2 * value(kGain));
  if (hasSlope) change(rows_[kRatio], RatioOfSlope(value(kRatio), value(kThreshold)));
  if (hasHalfGain || hasSlope) Update();
}

bool SqueezelAudioEffectPlugin::LoadState(MXMLItem& item) {
  {
    const MLocker locker(lock_);
    if (item.HasSubItem("graph")) drawn_.Load(item.CachedSubItem());
    isDrawnNew_ = true;
    sideChain_.isOn = item.GetAttribute("SideChainEnable").ToInteger() != 0;
    sideChain_.plays = item.GetAttribute("SideChainPlay").ToInteger() != 0;
    sideChain_.minimumFrequency = MReadNumber(item, "SideChainMinFrequency", kLowestSideChain);
    sideChain_.maximumFrequency = MReadNumber(item, "SideChainMaxFrequency", kHighestSideChain);
  }
  const bool result = MAudioEffectPlugin::LoadState(item);
  LoadOldRows(item);
  return result;
}

void SqueezelAudioEffectPlugin::RunDetectors(int32_t first, int32_t count, const double* powers, double scale,
                                             int32_t samples) noexcept {
  const auto detect = count == 2 ? kernel_.detectTwo : kernel_.detect;
  detect(detectors_ + first, times_, powers, scale, levels_, samples);
  for (int32_t i = 0; i < count; ++i)
    kernel_.gains[curve_.way](curve_, levels_ + i * kPart, gains_ + i * kPart, samples);
}

void SqueezelAudioEffectPlugin::ProcessPart(float* const* in, float* const* out, int32_t served,
                                            int32_t samples) noexcept {
  float* filtered[kChannels];
  const float* heard[kChannels];
  for (int32_t c = 0; c < served; ++c) {
    filtered[c] = filtered_[c];
    heard[c] = HasFilter() ? filtered[c] : in[c];
  }
  if (HasFilter())
    MBiquadCascade::Run({filters_ + firstFilter_, filters_ + endFilter_}, filterStates_ + firstFilter_, 2, in,
                        filtered, served, samples);
  const double gain = curve_.settings.inputGain;
  if (isLinked_) {
    double powers[kPart] = {};
    for (int32_t c = 0; c < served; ++c) kernel_.addPowers(heard[c], gain, powers, samples);
    RunDetectors(0, 1, powers, 1.0 / served, samples);
    for (int32_t c = 0; c < served; ++c) kernel_.scale(in[c], gains_, out[c], samples);
  } else {
    for (int32_t first = 0; first < served; first += 2) {
      const int32_t count = std::min(served - first, 2);
      double powers[2 * kPart] = {};
      for (int32_t i = 0; i < count; ++i)
        kernel_.addPowers(heard[first + i], gain, powers + i * kPart, samples);
      RunDetectors(first, count, powers, 1, samples);
      for (int32_t i = 0; i < count; ++i)
        kernel_.scale(in[first + i], gains_ + i * kPart, out[first + i], samples);
    }
  }
  if (!HasFilter() || !sideChain_.plays) return;
  for (int32_t c = 0; c < served; ++c) std::copy_n(filtered[c], samples, out[c]);
}

void SqueezelAudioEffectPlugin::Process(float** in, float** out, int32_t samples) {
  if (samples < 1) return;
  const MLocker locker(lock_);
  const int32_t served = std::min(channels_, kChannels);
  CopyChannels(in, out, isReady_ ? served : 0, channels_, samples);
  if (!isReady_ || served < 1) return;
  if (isBypassed_) std::fill_n(gains_, kPart, curve_.settings.inputGain * curve_.settings.outputGain);
  for (int32_t done = 0; done < samples; done += kPart) {
    const int32_t part = std::min(samples - done, kPart);
    float *from[kChannels], *to[kChannels];
    for (int32_t c = 0; c < served; ++c) {
      from[c] = in[c] + done;
      to[c] = out[c] + done;
      if (isBypassed_) kernel_.scale(from[c], gains_, to[c], part);
    }
    if (!isBypassed_) ProcessPart(from, to, served, part);
  }
  if (IsEditorOpen()) Measure(*std::max_element(out[0], out[0] + samples), samples);
}

// Whether it still runs.
bool SqueezelAudioEffectPlugin::SkipDetector(int32_t index, int32_t samples) noexcept {
  SqueezelDetector& detector = detectors_[index];
  if (!(detector.envelope > kSilentLevel)) {
    detector = {};
    return false;
  }
  constexpr double kZeros[kPart] = {};
  for (int32_t left = samples; left > 0;) {
    const SqueezelDetector before = detector;
    const int32_t part = std::min(left, kPart);
    kernel_.detect(&detector, times_, kZeros, 1, levels_, part);
    left -= part;
    // What came back after a whole part comes back after every one.
    if (part == kPart && detector == before) left %= kPart;
  }
  return true;
}

void SqueezelAudioEffectPlugin::Skip(int32_t samples) {
  const MLocker locker(lock_);
  if (!isReady_ || samples < 1) return;
  if (isBypassed_) {
    MStoreShared(fastLevel_, 0.0);
    MStoreShared(slowLevel_, 0.0);
    return;
  }
  const int32_t served = std::min(channels_, kChannels);
  bool isActive = false;
  for (int32_t i = 0; i < (isLinked_ ? std::min(served, 1) : served); ++i)
    isActive |= SkipDetector(i, samples);
  std::fill(std::begin(filterStates_), std::end(filterStates_), MBiquadStateFloat());
  if (isActive && IsEditorOpen()) Measure(0, samples);
}

void SqueezelAudioEffectPlugin::Measure(double largest, int32_t samples) noexcept {
  const auto follow = [&](double& level, double seconds) {
    MStoreShared(level, std::max(MLoadShared(level) * Decay(meterRate_, seconds, samples), largest));
  };
  follow(fastLevel_, kFastMeter);
  follow(slowLevel_, kSlowMeter);
  const double ratio = isBypassed_ ? 1 : curve_.GetGain(detectors_[0].envelope) * curve_.inverseGain;
  MStoreShared(reduction_, ratio >= 0.999 ? kNoReduction : std::sqrt(ratio));
}

M_PLUGIN_ENTRY(SqueezelAudioEffectPlugin)
