#include "effects/Roamplex.h"

#include <algorithm>

#include "dsp/MModulationKernels.h"
#include "plugin/MLimitedRows.h"
#include "plugin/MParameterFormatters.h"

RoamplexAudioEffectPlugin::RoamplexAudioEffectPlugin() {
  AddRealParameter(rows_[kDepth], "Depth", "depth",
                   "<name>Depth</name> defines how much of a channel is moved to the other one.", 0.0, 1.0,
                   0.4, MString(), MShowPercent);
  AddRateParameter(rows_[kRate], 0.01, 20, 4);
  AddShapeParameter(rows_[kShape]);
  SetParameters(rows_);
  SetPluginFlag();
}

void RoamplexAudioEffectPlugin::Process(float** in, float** out, int32_t samples) {
  constexpr int32_t kChunk = 256;
  const double step = GetStep(), depth = MLimitedAmount(rows_[kDepth]);
  if (channels_ < 2 || !(step > 0)) return CopyChannels(in, out, 0, channels_, samples);
  const MModulationKernels& kernels = MGetModulationKernels();
  double wave[kChunk];
  for (int32_t done = 0; done < samples; done += kChunk) {
    const int32_t run = std::min(kChunk, samples - done);
    GetWave().Read(wave, phase_ + done * step, step, run);
    const float* const from[] = {in[0] + done, in[1] + done};
    float* const to[] = {out[0] + done, out[1] + done};
    kernels.pan(from, to, wave, depth, kModulationBias, run);
  }
  Skip(samples);
  CopyChannels(in, out, 2, channels_, samples);
}

void RoamplexAudioEffectPlugin::Skip(int32_t samples) {
  phase_ = MWrapPhase(phase_ + samples * GetStep());
}

M_PLUGIN_ENTRY(RoamplexAudioEffectPlugin)
