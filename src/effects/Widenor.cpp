#include "effects/Widenor.h"

#include <cmath>
#include <limits>

#include "dsp/MFilterCascade.h"
#include "plugin/MLimitedRows.h"
#include "plugin/MParameterFormatters.h"

namespace {

constexpr double kMaximumDelaySeconds = 0.01;  // of the table
constexpr int32_t kChunk = 256;                // samples of the bands at a time

// A stretch of both bands. The buffers of a block may be the same for input and output, sample by sample.
struct Stretch {
  const double* bandLeft;
  const double* bandRight;
  const float* left;
  const float* right;
  float* leftOut;
  float* rightOut;
};

// What a filter out of bounds gives may be infinite; its difference would be no number.
inline double LimitBand(double band) {
  constexpr double kLimit = std::numeric_limits<float>::max();
  const double raised = band > -kLimit ? band : -kLimit;
  return raised < kLimit ? raised : kLimit;
}

inline void Widen(const Stretch& at, int32_t i, double sum) {
  const double left = MCleanSample(at.left[i]) + sum, right = MCleanSample(at.right[i]) - sum;
  at.leftOut[i] = MLimitToFloat(left);
  at.rightOut[i] = MLimitToFloat(right);
}

void WidenDirectly(const Stretch& at, int32_t samples, double depth) {
  for (int32_t i = 0; i < samples; ++i)
    Widen(at, i, (LimitBand(at.bandLeft[i]) - LimitBand(at.bandRight[i])) * depth);
}

// With the delay: a stretch of the line without a wrap.
void WidenDelayed(const Stretch& at, int32_t samples, double depth, float* lineLeft, float* lineRight,
                  double delayDepth) {
  for (int32_t i = 0; i < samples; ++i) {
    const double left = LimitBand(at.bandLeft[i]), right = LimitBand(at.bandRight[i]);
    const double delayed = double{lineLeft[i]} - double{lineRight[i]};
    lineLeft[i] = static_cast<float>(left);
    lineRight[i] = static_cast<float>(right);
    Widen(at, i, (left - right) * depth + delayed * delayDepth);
  }
}

}  // namespace

WidenorAudioEffectPlugin::WidenorAudioEffectPlugin() {
  const double lowest = std::log10(20.0), highest = std::log10(20000.0);
  AddRealParameter(
      rows_[kDepth], "Depth", "depth",
      "<name>Depth</name> defines how much the stereo image is widened. A negative value narrows "
      "it.",
      -1.0, 1.0, 0.3, MString(), MShowPercent);
  AddRealParameter(rows_[kHighPassFrequency], "High pass frequency", "highpassfrequency",
                   "<name>High pass frequency</name> defines the lower end of the band that is widened.",
                   lowest, highest, std::log10(100.0), MString(), MShowFrequencyLog10);
  AddRealParameter(rows_[kLowPassFrequency], "Low pass frequency", "lowpassfrequency",
                   "<name>Low pass frequency</name> defines the upper end of the band that is widened.",
                   lowest, highest, std::log10(10000.0), MString(), MShowFrequencyLog10);
  AddRealParameter(rows_[kResonance], "Resonance", "resonance",
                   "<name>Resonance</name> defines how the filters behave around the ends of the band: the "
                   "lower it is, the more these frequencies stand out.",
                   0.0, 1.0, 1.0, MString(), MShowPercent);
  AddRealParameter(rows_[kDelay], "Delay", "delay",
                   "<name>Delay</name> defines how much later the band is added once more.", 0.0,
                   kMaximumDelaySeconds, 0.002, MString(), MShowMilliseconds);
  AddRealParameter(rows_[kDelayDepth], "Delay depth", "delaydepth",
                   "<name>Delay depth</name> defines how much of the delayed band is added. At zero there is "
                   "no delay.",
                   0.0, 1.0, 0.0, MString(), MShowPercent);
  SetParameters(rows_);
  SetPluginFlag();
}

int32_t WidenorAudioEffectPlugin::GetWantedLength() const noexcept {
  return MDelayLine::GetLength(sampleRate_, MLimitedValue(rows_[kDelay], 0, MDelayLine::kLongestSeconds));
}

void WidenorAudioEffectPlugin::Update() {
  const MLocker locker(lock_);
  if (sampleRate_ < 1) return;
  const double resonance = MLimitedAmount(rows_[kResonance]);
  MResonantHighPass highPass;
  MResonantLowPass lowPass;
  highPass.Set(MLimitedFilterFrequency(rows_[kHighPassFrequency], sampleRate_), resonance, sampleRate_);
  lowPass.Set(MLimitedFilterFrequency(rows_[kLowPassFrequency], sampleRate_), resonance, sampleRate_);
  band_.Set({highPass, lowPass});
}

int32_t WidenorAudioEffectPlugin::Prepare(int32_t channels, int32_t sampleRate) {
  MAudioEffectPlugin::Prepare(channels, sampleRate);
  if (sampleRate < 1) return 0;
  line_.Set(channels, sampleRate, GetWantedLength(), MDelayLine::GetLength(sampleRate, kMaximumDelaySeconds));
  return 0;
}

void WidenorAudioEffectPlugin::Process(float** in, float** out, int32_t samples) {
  if (channels_ != kChannels || line_.GetChannelCount() < kChannels)
    return CopyChannels(in, out, 0, channels_, samples);
  const double depth = MLimitedAmount(rows_[kDepth]);
  const auto delayDepth = static_cast<float>(MLimitedAmount(rows_[kDelayDepth]));
  const bool isDelayed = std::abs(double{delayDepth}) >= 1e-20;
  if (isDelayed && sampleRate_ >= 1) line_.Fit(GetWantedLength());
  const Band& band = band_.Get();
  double bands[kChannels][kChunk];
  double* const to[] = {bands[0], bands[1]};
  for (int32_t done = 0; done < samples;) {
    const int32_t chunk = std::min(samples - done, kChunk);
    const float* const from[] = {in[0] + done, in[1] + done};
    MResonantCascade::RunPair(band.highPass, band.lowPass, states_, from, to, kChannels, chunk);
    for (int32_t i = 0; i < chunk;) {
      const int32_t run = isDelayed ? std::min(chunk - i, line_.GetRun()) : chunk;
      const Stretch at = {bands[0] + i, bands[1] + i,      from[0] + i,
                          from[1] + i,  out[0] + done + i, out[1] + done + i};
      if (isDelayed) {
        float* const lineLeft = line_.GetChannel(0) + line_.GetPosition();
        float* const lineRight = line_.GetChannel(1) + line_.GetPosition();
        WidenDelayed(at, run, depth, lineLeft, lineRight, delayDepth);
        line_.Advance(run);
      } else {
        WidenDirectly(at, run, depth);
      }
      i += run;
    }
    done += chunk;
  }
}

M_PLUGIN_ENTRY(WidenorAudioEffectPlugin)
