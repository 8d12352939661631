#pragma once
#include <vector>

#include "dsp/MAudioFFTProcessorCrossFade.h"
#include "dsp/MEnvelopeData.h"
#include "plugin/MAudioEffectPlugin.h"
#include "plugin/MPublished.h"

// Equalizer with a drawn frequency response. Spectra of N = 4096 samples (MAudioFFTProcessorCrossFade.h) are
// multiplied by a table of gains, number by number as they are packed:
//   gain[k] = ((v(log10 f) - 1) d + 1)^2,  f = max(1, k rate / 2N) in hertz,  d = depth.
// The drawn height is so the root of the gain, and the real and the imaginary part of a bin have a gain each.
// The curve's axis begins at x = 3.0103, 10 log10 2: below 1024 Hz the value of the first point holds.
//
// Whole tables are handed to the audio thread without a lock, and the change fades like any two spectra. The
// latency is 3/2 N, 6144 samples. Preparing clears the memory; skipped time does not pass. Serves eight
// channels, further ones pass undelayed. A sample that is not finite, or beyond 1e20, counts as 0; a gain
// beyond 1e13, as a curve with a broken slope may have, is limited.
class SlidebenchAudioEffectPlugin final : public MAudioEffectPlugin {
 public:
  static constexpr int32_t kSize = 4096;  // N

  SlidebenchAudioEffectPlugin();

  void Update() override;                                            // [host]
  bool SaveState(MXMLItem& item) override;                           // [host]
  bool LoadState(MXMLItem& item) override;                           // [host]
  int32_t Prepare(int32_t channels, int32_t sampleRate) override;    // [host]
  void Process(float** in, float** out, int32_t samples) override;   // [audio]
  int32_t IsSilent() override { return processor_.IsTailSilent(); }  // [audio]
  int32_t GetLatency() override { return processor_.GetLatency(); }  // [host]

  // The gains of the last Update with a sample rate; zeros before. [ui]
  std::vector<float, MAllocator<float>> GetGains();

 private:
  static constexpr int32_t kPart = 256;  // samples that are worked on at a time
  struct Gains {
    float values[kSize];
  };

  void ReadCurve();
  void ProcessPart(float* const* in, float* const* out, int32_t served, int32_t samples);

  enum { kDepth, kRowCount };
  MPluginParameter rows_[kRowCount];
  // Under the lock.
  MEnvelopeData curve_;
  double response_[kSize] = {};  // the curve at the places of the gains
  int32_t responseRate_ = 0;     // the sample rate it was read for, 0 when the curve is a new one
  Gains gains_ = {};

  MPublished<Gains> published_;
  const Gains* current_ = nullptr;  // of the block that is processed
  MAudioQueue source_, destination_;
  MAudioFFTProcessorCrossFade processor_;
  bool isReady_ = false;
};
