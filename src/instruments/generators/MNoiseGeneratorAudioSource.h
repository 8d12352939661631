#pragma once
#include "instruments/generators/MAudioGeneratorSource.h"

// White noise of half the gain, from the one sequence of random numbers: each sample is
//   (((x >> 16) & 0x7fff) / 32767 - 0.5) gain.
// The frequency ratio does nothing to it.
class MNoiseGeneratorAudioSource final : public MAudioGeneratorSource {
 public:
  MNoiseGeneratorAudioSource() : MAudioGeneratorSource("Noise", "NoiseGen") {}

  MGeneratorStatePointer CreateState(double gain, double ratio) const override;

 private:
  void Make(Sound& sound, float* out, int32_t samples) const noexcept override;
};
