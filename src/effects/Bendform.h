#pragma once
#include "dsp/MEnvelopeData.h"
#include "effects/BendformCurve.h"
#include "plugin/MAudioEffectPlugin.h"

// Wave shaper with a drawn curve v(u), symmetric around zero. Both axes are square roots of magnitudes, which
// gives the quiet end more room:
//   y = sign(x) v(sqrt |x|)^2 d + x (1 - d),  d = depth.
// A new plug-in has the identity. Behind the curve's last point its value stays. An input of zero, of either
// sign, counts as positive.
//
// The depth is read once a block; a changed curve comes with the next Update. All channels are served,
// nothing is kept between blocks. A sample that is not finite passes as it is. A block holds the lock, but
// waits for no curve that is being compiled; one that cannot be leaves the curve before.
class BendformAudioEffectPlugin final : public MAudioEffectPlugin {
 public:
  BendformAudioEffectPlugin();

  void Update() override;                                           // [host]
  bool SaveState(MXMLItem& item) override;                          // [host]
  bool LoadState(MXMLItem& item) override;                          // [host]
  void Process(float** in, float** out, int32_t samples) override;  // [audio]

  // Makes the curve the identity; for use before an Update. [host]
  void ResetCurve();

 private:
  enum { kDepth, kRowCount };
  MPluginParameter rows_[kRowCount];
  const BendformKernel& kernel_;
  MLock building_;  // makes updates follow one another; taken before the lock
  BendformCurve shapes_[2];
  // Under the lock.
  MEnvelopeData curve_;
  bool isCurveNew_ = true;  // not built yet
  int32_t current_ = 0;     // the shape that blocks read; an update builds the other one beside the lock
};
