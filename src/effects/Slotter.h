#pragma once
#include "dsp/MResonantFilter.h"
#include "plugin/MAudioEffectPlugin.h"
#include "plugin/MPublished.h"

// Band pass of a resonant low-pass and, behind it, a resonant high-pass (MResonantFilter.h gives the
// equations), each with its switch. The output of the first is rounded to float; with both off the input
// passes. Cut-off frequencies at or above half the sample rate count as 0.4999 of it.
//
// The switches are read once a block, the filters change between blocks; a filter that is off keeps its
// state, and so does every filter when the effect is prepared. Serves eight channels, further ones pass. A
// sample that is not finite counts as 0.
class SlotterAudioEffectPlugin final : public MAudioEffectPlugin {
 public:
  SlotterAudioEffectPlugin();

  void Update() override;                                           // [host]
  bool LoadState(MXMLItem& item) override;                          // [host]
  void Process(float** in, float** out, int32_t samples) override;  // [audio]

 private:
  static constexpr int32_t kChannels = 8;
  enum { kLow, kHigh, kSections };  // in the order in which they run
  struct Sections {
    MResonantFilter filters[kSections];
    bool areDesigned;  // false before the first Update with a sample rate
  };
  enum {
    kHighPanel,
    kHighEnable,
    kHighFrequency,
    kHighResonance,
    kLowPanel,
    kLowEnable,
    kLowFrequency,
    kLowResonance,
    kRowCount
  };

  MPluginParameter rows_[kRowCount];
  MPublished<Sections> sections_;
  MResonantState states_[kChannels * kSections];
};
