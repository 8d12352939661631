#pragma once
#include "dsp/MDelayLine.h"
#include "dsp/MResonantFilter.h"
#include "plugin/MAudioEffectPlugin.h"
#include "plugin/MPublished.h"

// Stereo expander: adds the difference of a band of both channels to the left one and takes it away from the
// right one, a second time through a short delay,
//   b = low-pass(high-pass(x)) of either channel (MResonantFilter.h),
//   s[i] = depth (bl[i] - br[i]) + delay depth (bl[i - L] - br[i - L]),  left = l + s,  right = r - s,
// with L = max(1, truncate(sample rate x delay)). A negative depth narrows; the sum of both channels stays.
//
// Works on exactly two channels, which it must have been prepared for with a sample rate; otherwise the input
// passes. The delay line holds floats, all else is double and rounded at the output. Without a delay depth it
// rests and keeps its samples. A change of the delay fades what sounds in it (MDelayLine::Fit); within the
// table's range no block allocates. The filters keep their state when the effect is prepared, the line is
// cleared. Cut-off frequencies at or above half the sample rate count as 0.4999 of it. A sample that is not
// finite counts as 0.
class WidenorAudioEffectPlugin final : public MAudioEffectPlugin {
 public:
  WidenorAudioEffectPlugin();

  void Update() override;                                             // [host]
  int32_t Prepare(int32_t channels, int32_t sampleRate) override;     // [host]
  void Process(float** in, float** out, int32_t samples) override;    // [audio]
  int32_t IsSilent() override { return line_.IsAllBelow(kSilence); }  // [audio]

 private:
  static constexpr int32_t kChannels = 2;
  struct Band {
    MResonantFilter highPass, lowPass;
  };

  int32_t GetWantedLength() const noexcept;

  enum { kDepth, kHighPassFrequency, kLowPassFrequency, kResonance, kDelay, kDelayDepth, kRowCount };
  MPluginParameter rows_[kRowCount];
  MPublished<Band> band_;
  MResonantState states_[kChannels * 2];
  MDelayLine line_;
};
