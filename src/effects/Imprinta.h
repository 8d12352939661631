#pragma once
#include "dsp/MClickRepair.h"
#include "dsp/MEnvelopeComputer.h"
#include "dsp/MFirFilter.h"
#include "plugin/MAudioEffectPlugin.h"

// Convolver with a short impulse that is drawn: of n taps the one with number n - 1 - i is the curve at
// (i + 0.5) / n, so the drawn right end meets the newest sample, and the output is divided by the sum of the
// taps' magnitudes (MFirFilter.h). Direct form, in the time domain.
//
// Each Update has the next block of 32 samples or more drawn to where the output was heading, the very first
// one too, which so comes up from silence (MClickRepair.h). Samples are kept when the taps change and dropped
// when their number does; preparing keeps them. Several channels share the place in their samples, with the
// seams that MFirFilter.h tells of. Serves eight channels, further ones pass. A block holds the lock.
class ImprintaAudioEffectPlugin final : public MAudioEffectPlugin {
 public:
  ImprintaAudioEffectPlugin();

  void Update() override;                                           // [host]
  bool SaveState(MXMLItem& item) override;                          // [host]
  bool LoadState(MXMLItem& item) override;                          // [host]
  void Process(float** in, float** out, int32_t samples) override;  // [audio]
  void Skip(int32_t samples) override;                              // [audio]

  // The taps as the editor draws them, from left to right: the curve at (i + 0.5) / n. None before the first
  // Update with a sample rate. [ui]
  std::vector<double, MAllocator<double>> GetTaps();

 private:
  static constexpr int32_t kMaximumLength = 512;

  enum { kLength, kRowCount };
  MPluginParameter rows_[kRowCount];
  // Under the lock.
  MEnvelopeData curve_;
  MEnvelopeComputer computer_;  // of the curve
  bool isCurveNew_ = true;
  MFirFilter filter_;
  double taps_[kMaximumLength] = {};
  int32_t tapCount_ = 0;
  MClickRepair repair_;
};
