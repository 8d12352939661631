#pragma once
#include "dsp/MEnvelopeComputer.h"
#include "instruments/generators/MAudioGeneratorFilter.h"

// Multiplies a sound by a drawn curve over its length.
class MEnvelopeAudioFilter final : public MAudioGeneratorFilter {
 public:
  explicit MEnvelopeAudioFilter(MAudioGeneratorObject& inner);

  MEnvelopeData gains;  // 0..1 in both directions; at first a fall from 1 to 0

  MGeneratorStatePointer CreateState(double gain, double ratio) const override;
  bool Compute(MGeneratorState& state, MAudioBuffer& buffer) override;  // [audio]
  void Reset() override;
  // The inner object's keys and a child "volume". An item without that child gives a flat curve of ones.
  void Save(MXMLItem& item) const override;
  void Load(const MXMLItem& item) override;

 private:
  struct Fade;
};
