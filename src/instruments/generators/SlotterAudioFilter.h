#pragma once
#include "instruments/generators/MAudioGeneratorFilter.h"

// A low-pass and behind it a high-pass (dsp/MResonantFilter.h), each of which can be switched on. The
// cut-offs follow the note: they are multiplied by its ratio and limited to 20..20000 Hz, and at or above
// half the sample rate to 0.4999 of it. With both off the sound passes untouched.
class SlotterAudioFilter final : public MAudioGeneratorFilter {
 public:
  static constexpr double kDefaultLowPassHz = 2000;
  static constexpr double kDefaultHighPassHz = 1000;

  explicit SlotterAudioFilter(MAudioGeneratorObject& inner)
      : MAudioGeneratorFilter("band-pass filter", "BandPass", inner) {}

  bool hasLowPass = false;
  double lowPassHz = kDefaultLowPassHz;
  bool hasHighPass = false;
  double highPassHz = kDefaultHighPassHz;

  MGeneratorStatePointer CreateState(double gain, double ratio) const override;
  bool Compute(MGeneratorState& state, MAudioBuffer& buffer) override;  // [audio]
  void Reset() override;
  // The inner object's keys, "lpenable", "lpcutoff", "hpenable" and "hpcutoff".
  void Save(MXMLItem& item) const override;
  void Load(const MXMLItem& item) override;

 private:
  struct Band;

  void LoadOwn(const MXMLItem& item);
  double GetCutOff(double frequencyHz, double fallback, double ratio) const;
};
