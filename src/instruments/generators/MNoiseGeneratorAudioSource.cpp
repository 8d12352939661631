#include "instruments/generators/MNoiseGeneratorAudioSource.h"

#include "dsp/MRandomSequence.h"

MGeneratorStatePointer MNoiseGeneratorAudioSource::CreateState(double gain,
                                                               [[maybe_unused]] double ratio) const {
  std::unique_ptr<Sound> sound(new Sound);
  Start(*sound, gain);
  return sound;
}

void MNoiseGeneratorAudioSource::Make(Sound& sound, float* out, int32_t samples) const noexcept {
  const double gain = sound.gain;
  uint32_t x = MRandomSequence::Get();
  for (int32_t i = 0; i < samples; ++i) {
    x = MRandomSequence::Follow(x);
    out[i] = static_cast<float>((static_cast<int32_t>(x >> 16 & 0x7fff) / 32767.0 - 0.5) * gain);
  }
  MRandomSequence::Set(x);
}
