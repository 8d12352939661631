#include "effects/Quaverly.h"

#include <algorithm>
#include <cmath>

#include "dsp/MFilter.h"
#include "dsp/MModulationKernels.h"
#include "plugin/MLimitedRows.h"
#include "plugin/MParameterFormatters.h"

QuaverlyAudioEffectPlugin::QuaverlyAudioEffectPlugin() {
  AddRealParameter(rows_[kDepth], "Depth", "depth",
                   "<name>Depth</name> defines how far the delay swings, and with it how far the pitch does.",
                   0.0, 1.0, 0.4, MString(), MShowPercent);
  AddRateParameter(rows_[kRate], 0.01, 20, 4);
  AddRealParameter(rows_[kPhaseDifference], "Phase difference", "phasediff",
                   "<name>Phase difference</name> defines how far the modulation of each channel is ahead of "
                   "the channel before.",
                   -1.0, 1.0, 0.5, MString(), MShowPercent);
  AddShapeParameter(rows_[kShape]);
  SetParameters(rows_);
  SetPluginFlag();
}

void QuaverlyAudioEffectPlugin::Update() {
  const MLocker locker(lock_);
  if (sampleRate_ < 1) return;
  MModulationPlugin::Update();
  offset_ = sampleRate_ / MLimitedFrequency(rows_[kRate]) * MLimitedAmount(rows_[kPhaseDifference]);
  const double reach = std::clamp(MLimitedAmount(rows_[kDepth]) * 200, 1.0, 200.0);
  MStoreShared(reachSamples_, static_cast<int32_t>(reach));
  repair_.Request();
}

int32_t QuaverlyAudioEffectPlugin::Prepare(int32_t channels, int32_t sampleRate) {
  MAudioEffectPlugin::Prepare(channels, sampleRate);
  if (sampleRate < 1) return 0;
  const MLocker locker(lock_);
  for (Line& line : lines_) line = {};
  return 0;
}

void QuaverlyAudioEffectPlugin::KeepStart(float** in, int32_t channels, int32_t samples) noexcept {
  for (int32_t c = 0; c < channels; ++c)
    for (int32_t i = 0; i < kStart; ++i) lines_[c].start[i] = i < samples ? MCleanSample(in[c][i]) : 0;
}

double* QuaverlyAudioEffectPlugin::Line::Append(int32_t count) noexcept {
  if (end + count > static_cast<int32_t>(std::size(samples))) {
    std::copy_n(samples + end - kHistory, kHistory, samples);
    end = kHistory;
  }
  end += count;
  return samples + end - count;
}

void QuaverlyAudioEffectPlugin::Delay(Line& line, const float* in, float* out, double phase,
                                      int32_t samples) noexcept {
  const double step = GetStep();
  const MModulationKernels& kernels = MGetModulationKernels();
  double wave[kChunk];
  for (int32_t done = 0; done < samples; done += kChunk) {
    const int32_t run = std::min(kChunk, samples - done);
    double* const newest = line.Append(run);
    kernels.widen(in + done, newest, run);
    GetWave().Read(wave, phase + done * step, step, run);
    kernels.interpolate(newest - kHistory, out + done, wave, reachSamples_, kHistory - kDelay, run);
  }
}

void QuaverlyAudioEffectPlugin::Process(float** in, float** out, int32_t samples) {
  if (samples < 1) return;
  const MLocker locker(lock_);
  const double step = GetStep();
  const int32_t served = step > 0 ? std::min(channels_, kChannels) : 0;
  KeepStart(in, served, samples);
  double offset = offset_ < 0 ? -8 * offset_ : 0;
  for (int32_t c = 0; c < served; ++c) {
    // Offsets of slow rates are millions of cycles: the phase is added to what is left of their precision.
    Delay(lines_[c], in[c], out[c], MWrapPhase(offset) + phase_, samples);
    offset += offset_;
  }
  phase_ = MWrapPhase(phase_ + samples * step);
  repair_.Run(out, served, samples);
  CopyChannels(in, out, served, channels_, samples);
}

int32_t QuaverlyAudioEffectPlugin::IsSilent() {
  const auto isSilent = [](double sample) { return std::abs(sample) <= kSilence; };
  return std::all_of(lines_, lines_ + kChannels, [&](const Line& line) {
    return std::all_of(line.samples + line.end - kHistory, line.samples + line.end, isSilent) &&
           std::all_of(line.start, line.start + kStart, isSilent);
  });
}

M_PLUGIN_ENTRY(QuaverlyAudioEffectPlugin)
