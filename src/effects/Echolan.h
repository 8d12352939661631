#pragma once
#include "dsp/MDelayLine.h"
#include "plugin/MAudioEffectPlugin.h"

// Feedback delay: the output is a recirculating sum,
//   y[i] = x[i] + g y[i - L],  g = feedback^2,  L = max(1, truncate(sample rate x delay)),
// so an impulse comes out as 1, g, g^2, ... L samples apart. Sums are formed in double and rounded once.
//
// Both parameters are read once a block, without smoothing. When L changes, the line is rotated so that the
// sample which would be read next comes first, cut or lengthened with zeros, and faded out towards its end;
// the place in the line stays. The line serves eight channels; further ones pass unchanged. Within the
// table's range of the delay no block allocates. A longer one, up to a minute or 2^23 samples, which only a
// raw write can set, allocates in the first block that sees it; without the memory the old delay goes on. A
// sum that is no finite number is stored as 0, so the delay recovers from whatever it is fed.
class EcholanAudioEffectPlugin final : public MAudioEffectPlugin {
 public:
  EcholanAudioEffectPlugin();

  int32_t Prepare(int32_t channels, int32_t sampleRate) override;     // [host]
  void Process(float** in, float** out, int32_t samples) override;    // [audio]
  int32_t IsSilent() override { return line_.IsAllBelow(kSilence); }  // [audio]

 private:
  int32_t GetWantedLength() const noexcept;

  enum { kFeedback, kDelay, kRowCount };
  MPluginParameter rows_[kRowCount];
  MDelayLine line_;
};
