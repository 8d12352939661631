#pragma once
#include "plugin/MModulationPlugin.h"

// Autopan: a wave moves a part of one channel to the other instead of muting it. With m = depth wave(phase)
// and phase += 10^rate / sample rate,
//   left = l (1 - m), right = l m + r     for m at or above 0,
//   left = l - r m,   right = r (1 + m)   below,
// so the sum of both channels stays.
//
// With fewer than two channels the input passes and the phase rests; channels from the third on pass. A
// sample that is not finite counts as 0.
class RoamplexAudioEffectPlugin final : public MModulationPlugin {
 public:
  RoamplexAudioEffectPlugin();

  void Process(float** in, float** out, int32_t samples) override;  // [audio]
  void Skip(int32_t samples) override;                              // [audio]

 private:
  enum { kDepth, kRate, kShape, kRowCount };
  MPluginParameter rows_[kRowCount];
  double phase_ = 0;
};
