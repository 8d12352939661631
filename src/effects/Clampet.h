#pragma once
#include "effects/ClampetCurve.h"
#include "plugin/MAudioEffectPlugin.h"
#include "plugin/MPublished.h"

// Limiter without memory: linear below a threshold, one of seven knees up to full scale, constant above, and
// a term of even harmonics (formulas: ClampetCurve.h). An input of full scale comes out at full scale.
//
// All channels are served. A sample that is no number comes out as it is. Nothing is kept between blocks but
// the meter, which runs while an editor is open.
class ClampetAudioEffectPlugin final : public MAudioEffectPlugin {
 public:
  ClampetAudioEffectPlugin();

  void Update() override;                                           // [host]
  void Process(float** in, float** out, int32_t samples) override;  // [audio]

  // The curve that the editor draws: the output for an input, both linear. [ui]
  double GetOutput(double input);
  // The smoothed largest sample that goes into the curve, linear: after each block of an open editor
  //   meter = 0.2 meter + 0.8 gain m,  m = the largest sample of all channels, 0 if all are negative. [any]
  double GetMeter() const noexcept { return MLoadShared(meter_); }

 private:
  void MeasureInput(float** in, int32_t samples, double gain) noexcept;

  enum { kGain, kThreshold, kEvenHarmonics, kMode, kRowCount };
  MPluginParameter rows_[kRowCount];
  const ClampetKernel& kernel_;
  ClampetCurve curve_;  // under the lock
  MPublished<ClampetCurve> published_;
  double meter_ = 0;
};
