#pragma once
#include "dsp/MBiquadFilter.h"
#include "dsp/MEnvelopeData.h"
#include "effects/SqueezelCurve.h"
#include "plugin/MAudioEffectPlugin.h"

// Compressor. A detector follows the level, the root of a one-pole average of the power with attack and
// release, and a static curve (SqueezelCurve.h) says the gain for it. All channels share one detector, which
// follows the mean of their powers, or have one each. A ratio of 1 without a drawn curve only scales, and
// clears the detectors.
//
// The side chain limits the band that the detectors hear, by a low-pass and a high-pass with Q 1 in single
// precision; the signal itself stays unfiltered. Serves eight channels, further ones pass. A sample that is
// not finite counts as 0. A block holds the lock, but waits for no curve that is being compiled.
class SqueezelAudioEffectPlugin final : public MAudioEffectPlugin {
 public:
  struct SideChain {
    bool isOn = false;
    bool plays = false;               // puts out what the detectors hear, if a filter is on
    double minimumFrequency = 20;     // hertz; the high-pass is on above 20
    double maximumFrequency = 20000;  // hertz; the low-pass is on below 20000
  };
  // While an editor is open. The levels are the largest sample of the first output channel, falling with time
  // constants of 0.1 and 2.5 s.
  struct Meters {
    double fastLevel = 0, slowLevel = 0;
    // The square root of what the curve does to the level of the first detector, 1.000000001 from 0.999 on.
    double reduction = 1.000000001;
  };

  SqueezelAudioEffectPlugin();

  SideChain GetSideChain();                       // [ui]
  void SetSideChain(const SideChain& sideChain);  // [ui] with an Update
  MEnvelopeData GetCurve();                       // [ui] the drawn curve
  void SetCurve(const MEnvelopeData& curve);      // [ui] with an Update
  double GetOutput(double level);                 // [ui] the static curve, both linear
  Meters GetMeters() const noexcept;              // [any]

  // While an editor is open and no curve is drawn, also makes the drawn curve follow the static one. [host]
  void Update() override;
  bool SaveState(MXMLItem& item) override;                          // [host]
  bool LoadState(MXMLItem& item) override;                          // [host]
  void Process(float** in, float** out, int32_t samples) override;  // [audio]
  void Skip(int32_t samples) override;                              // [audio]

 private:
  static constexpr int32_t kChannels = 8;
  static constexpr int32_t kPart = kSqueezelPart;
  enum {
    kGain,
    kOutputGain,
    kAttack,
    kRelease,
    kRmsLength,
    kThreshold,
    kRatio,
    kKneeMode,
    kKneeSize,
    kLinkChannels,
    kMaximize,
    kCustomShape,
    kRowCount
  };

  void AddTimes();
  void AddShape();
  void AddSwitches();
  SqueezelSettings GetSettings() const;
  void FollowCurve();
  bool BuildShape();
  void DesignSideChain();
  void LoadOldRows(const MXMLItem& item);
  bool HasFilter() const noexcept { return firstFilter_ < endFilter_; }
  void ProcessPart(float* const* in, float* const* out, int32_t served, int32_t samples) noexcept;
  // From the detector `first` on, one or two.
  void RunDetectors(int32_t first, int32_t count, const double* powers, double scale,
                    int32_t samples) noexcept;
  bool SkipDetector(int32_t index, int32_t samples) noexcept;
  void Measure(double largest, int32_t samples) noexcept;

  MPluginParameter rows_[kRowCount];
  const SqueezelKernel& kernel_ = GetSqueezelKernel();
  MLock building_;  // makes updates follow one another; taken before the lock
  BendformCurve drawnShapes_[2];
  // Under the lock.
  MEnvelopeData drawn_;
  bool isDrawnNew_ = true;    // not compiled yet
  int32_t currentShape_ = 0;  // that blocks read; an update compiles the other one beside the lock
  SideChain sideChain_;
  SqueezelCurve curve_;
  SqueezelTimes times_;
  SqueezelDetector detectors_[kChannels];
  MBiquadFilterFloat filters_[2];  // low-pass, high-pass
  int32_t firstFilter_ = 0, endFilter_ = 0;
  MBiquadStateFloat filterStates_[kChannels * 2];
  float filtered_[kChannels][kPart] = {};
  double gains_[2 * kPart] = {}, levels_[2 * kPart] = {};
  bool isReady_ = false;
  bool isBypassed_ = false;
  bool isLinked_ = true;
  int32_t meterRate_ = 1;  // of the last Update with a sample rate
  // Written by the audio thread alone.
  double fastLevel_ = 0, slowLevel_ = 0, reduction_ = 1.000000001;
};
