#pragma once
#include "plugin/MModulationPlugin.h"

// Tremolo: the gain of each channel follows a wave,
//   y[i] = (1 - depth wave(phase[c])) x[i],  phase[c] += 10^rate / sample rate,
// so it swings from 1 - depth to 1 + depth. From the second channel on, Update sets
//   phase[c] = phase[c - 1] + phase difference, plus 1 when that is below 0.
//
// Serves eight channels, further ones pass. A sample that is not finite counts as 0. A block holds the lock,
// so that it reads one wave and one set of phases.
class PulsettaAudioEffectPlugin final : public MModulationPlugin {
 public:
  PulsettaAudioEffectPlugin();

  void Update() override;                                           // [host]
  void Process(float** in, float** out, int32_t samples) override;  // [audio]
  void Skip(int32_t samples) override;                              // [audio]

 private:
  static constexpr int32_t kChannels = 8;

  enum { kDepth, kRate, kPhaseDifference, kShape, kRowCount };
  MPluginParameter rows_[kRowCount];
  double phases_[kChannels] = {};  // under the lock
};
