#include "effects/Pulsetta.h"

#include <algorithm>

#include "dsp/MModulationKernels.h"
#include "plugin/MLimitedRows.h"
#include "plugin/MParameterFormatters.h"

PulsettaAudioEffectPlugin::PulsettaAudioEffectPlugin() {
  AddRealParameter(rows_[kDepth], "Depth", "depth",
                   "<name>Depth</name> defines how far the gain moves away from unity in both directions.",
                   0.0, 1.0, 0.4, MString(), MShowPercent);
  AddRateParameter(rows_[kRate], 0.01, 20, 4);
  AddRealParameter(rows_[kPhaseDifference], "Phase difference", "phasediff",
                   "<name>Phase difference</name> defines how far the modulation of each channel is ahead of "
                   "the channel before, in parts of the period.",
                   -1.0, 1.0, 0.0, MString(), MShowPercent);
  AddShapeParameter(rows_[kShape]);
  SetParameters(rows_);
  SetPluginFlag();
}

void PulsettaAudioEffectPlugin::Update() {
  const MLocker locker(lock_);
  if (sampleRate_ < 1) return;
  MModulationPlugin::Update();
  const double difference = MLimitedAmount(rows_[kPhaseDifference]);
  for (int32_t c = 1; c < kChannels; ++c) {
    phases_[c] = phases_[c - 1] + difference;
    if (phases_[c] < 0) phases_[c] += 1;
  }
}

void PulsettaAudioEffectPlugin::Process(float** in, float** out, int32_t samples) {
  constexpr int32_t kChunk = 256;
  const MLocker locker(lock_);
  const double step = GetStep(), depth = MLimitedAmount(rows_[kDepth]);
  const int32_t served = step > 0 ? std::min(channels_, kChannels) : 0;
  const MModulationKernels& kernels = MGetModulationKernels();
  double wave[kChunk];
  for (int32_t done = 0; done < samples && served > 0; done += kChunk) {
    const int32_t run = std::min(kChunk, samples - done);
    for (int32_t c = 0; c < served; ++c) {
      if (c == 0 || phases_[c] != phases_[c - 1]) GetWave().Read(wave, phases_[c] + done * step, step, run);
      kernels.multiply(in[c] + done, out[c] + done, wave, -depth, 1, 0, run);
    }
  }
  Skip(samples);
  CopyChannels(in, out, served, channels_, samples);
}

void PulsettaAudioEffectPlugin::Skip(int32_t samples) {
  const MLocker locker(lock_);
  const double moved = samples * GetStep();
  for (double& phase : phases_) phase = MWrapPhase(phase + moved);
}

M_PLUGIN_ENTRY(PulsettaAudioEffectPlugin)
