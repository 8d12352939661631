#pragma once
#include "instruments/generators/MAudioGeneratorObject.h"

// An object that makes sound out of nothing, for a given time and the same in all channels.
class MAudioGeneratorSource : public MAudioGeneratorObject {
 public:
  static constexpr double kDefaultSeconds = 0.1;

  double lengthSeconds = kDefaultSeconds;

  // In samples limited to 0..2147483647.
  double GetLength(bool inSeconds) const override;
  bool Compute(MGeneratorState& state, MAudioBuffer& buffer) final;  // [audio]
  void Reset() override { lengthSeconds = kDefaultSeconds; }
  // Attribute "length".
  void Save(MXMLItem& item) const override;
  void Load(const MXMLItem& item) override;

 protected:
  struct Sound : MGeneratorState {
    int32_t remaining = 0;  // samples
    float gain = 0;
  };

  using MAudioGeneratorObject::MAudioGeneratorObject;

  // Sets length and gain of a new sound.
  void Start(Sound& sound, double gain) const;
  // Writes the next samples, which lie in front of the sound's end. [audio]
  virtual void Make(Sound& sound, float* out, int32_t samples) const noexcept = 0;
};
