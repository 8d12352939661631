#include "effects/Swirlo.h"

#include <algorithm>

#include "dsp/MProcessor.h"
#include "plugin/MLimitedRows.h"
#include "plugin/MParameterFormatters.h"

namespace {

void AddFrequency(MPluginParameter& row, const MString& name, const MString& key, const MString& help,
                  double defaultLog10) {
  AddRealParameter(row, name, key, help, 2.0, 4.0, defaultLog10, MString(), MShowFrequencyLog10);
}

void AddMode(MPluginParameter& row, int32_t maximumStages) {
  row.kind = MParameterKind::kInteger;
  row.name = "Mode";
  row.key = "delays";
  row.help =
      "<name>Mode</name> defines the number of stages. Each two of them cut one notch into the spectrum.";
  row.integer = {1, maximumStages, 6, 6};
}

bool IsSound(const SwirloChannel& channel) noexcept {
  constexpr double kLimit = std::numeric_limits<float>::max();
  const auto isSound = [](double value) { return std::abs(value) <= kLimit; };
  return isSound(channel.feedback) &&
         std::all_of(channel.stages, channel.stages + SwirloChannel::kMaximumStages, isSound);
}

}  // namespace

SwirloAudioEffectPlugin::SwirloAudioEffectPlugin() {
  AddRealParameter(rows_[kDepth], "Depth", "Depth",
                   "<name>Depth</name> defines how much of the output is the phased signal. The notches are "
                   "deepest at 50%.",
                   0.0, 1.0, 0.4, MString(), MShowPercent);
  AddFrequency(rows_[kMinFreq], "Min frequency", "MinFreq",
               "<name>Min frequency</name> defines where the sweep is at the lowest point of the shape.",
               std::log10(400));
  AddFrequency(rows_[kMaxFreq], "Max frequency", "MaxFreq",
               "<name>Max frequency</name> defines where the sweep is at the highest point of the shape.",
               std::log10(1600));
  AddRateParameter(rows_[kRate], 0.1, 10, 2);
  AddRealParameter(
      rows_[kFeedback], "Feedback", "feedback",
      "<name>Feedback</name> defines how much of the phased signal goes round again, which makes "
      "the peaks between the notches narrower and louder.",
      0.0, 1.0, 0.7, MString(), MShowSquaredDecibels);
  AddMode(rows_[kDelays], kMaximumStages);
  AddRealParameter(rows_[kPhaseDifference], "Phase difference", "phasediff",
                   "<name>Phase difference</name> defines how far the modulation of each channel is ahead of "
                   "the channel before, in parts of the period.",
                   -1.0, 1.0, 0.5, MString(), MShowPercent);
  AddShapeParameter(rows_[kShape]);
  SetParameters(rows_);
  SetPluginFlag();
}

void SwirloAudioEffectPlugin::Update() {
  const MLocker locker(lock_);
  if (sampleRate_ < 1) return;
  MModulationPlugin::Update();
  const double lowest = 2 * MLimitedFrequency(rows_[kMinFreq]) / sampleRate_;
  const double highest = 2 * MLimitedFrequency(rows_[kMaxFreq]) / sampleRate_;
  const double feedback = MLimitedValue(rows_[kFeedback], -1, 1);
  const int32_t stages = std::clamp<int32_t>(MLoadShared(rows_[kDelays].integer.value), 1, kMaximumStages);
  if (stages > stages_) addedStages_.fetch_or((1u << stages) - (1u << stages_), std::memory_order_relaxed);
  if (stages != stages_) repair_.Request();
  stages_ = stages;
  // The order matters: with the number of stages the audio thread finds those to be cleared.
  settings_.Set({(highest - lowest) / 2, (highest + lowest) / 2, feedback * feedback,
                 MLimitedAmount(rows_[kDepth]), MLimitedAmount(rows_[kPhaseDifference]), stages});
}

void SwirloAudioEffectPlugin::ClearAddedStages() noexcept {
  const uint32_t added = addedStages_.exchange(0, std::memory_order_relaxed);
  for (int32_t k = 0; k < kMaximumStages; ++k)
    if (added >> k & 1)
      for (SwirloChannel& channel : memory_) channel.stages[k] = 0;
}

void SwirloAudioEffectPlugin::RunChunk(const Settings& at, float* const* in, float* const* out,
                                       int32_t channels, int32_t first, int32_t samples) noexcept {
  const SwirloKernel& kernel = MHasAVX2() ? kSwirloWide : kSwirloBaseline;
  const double step = GetStep();
  double waves[2][kChunk];
  for (int32_t c = 0; c < channels; c += 2) {
    const int32_t both[] = {c, std::min(c + 1, channels - 1)};
    SwirloStretch stretch = {{}, {}, {}, {}, at.scale, at.offset, at.feedback, at.depth, kModulationBias};
    for (int32_t j = 0; j < 2; ++j) {
      const double ahead = MWrapPhase(both[j] * at.difference);
      GetWave().Read(waves[j], phase_ + ahead + first * step, step, samples);
      stretch.channels[j] = &memory_[both[j]];
      stretch.waves[j] = waves[j];
      stretch.in[j] = in[both[j]] + first;
      stretch.out[j] = out[both[j]] + first;
    }
    kernel.passes[at.stages - 1](stretch, samples);
  }
}

void SwirloAudioEffectPlugin::Process(float** in, float** out, int32_t samples) {
  const Settings& at = settings_.Get();
  ClearAddedStages();
  const int32_t served = at.stages > 0 ? std::min(channels_, kChannels) : 0;
  for (int32_t done = 0; done < samples; done += kChunk)
    RunChunk(at, in, out, served, done, std::min(kChunk, samples - done));
  for (int32_t c = 0; c < served; ++c)
    if (!IsSound(memory_[c])) memory_[c] = {};
  phase_ = MWrapPhase(phase_ + samples * GetStep());
  repair_.Run(out, served, samples);
  CopyChannels(in, out, served, channels_, samples);
}

void SwirloAudioEffectPlugin::Skip(int32_t samples) {
  phase_ = MWrapPhase(phase_ + samples * GetStep());
  for (SwirloChannel& channel : memory_) channel = {};
}

M_PLUGIN_ENTRY(SwirloAudioEffectPlugin)
