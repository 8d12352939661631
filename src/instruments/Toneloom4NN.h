#pragma once
#include "instruments/generators/MEnvelopeAudioFilter.h"
#include "instruments/generators/MMixerAudioFilter.h"
#include "instruments/generators/MNoiseGeneratorAudioSource.h"
#include "instruments/generators/MOscillatorAudioSource.h"
#include "instruments/generators/SlotterAudioFilter.h"
#include "plugin/MAudioStreamPlugin.h"

// Synthesizer of four oscillators and two noises behind one mixer. The chains differ in the order of their
// filters: an oscillator passes its band pass and then its envelope, a noise its envelope and then its band
// pass. A new instrument sounds with its first oscillator alone.
//
// Notes are computed as they are pulled, in eight channels; further ones are silent. Making a note takes the
// lock, so that it finds the parameters of one state; computing it takes none.
class Toneloom4NNAudioStreamPlugin final : public MAudioStreamPlugin {
 public:
  Toneloom4NNAudioStreamPlugin();

  int32_t Prepare(int32_t channels, int32_t sampleRate) override;  // [host]
  // A child per chain: "envelope1" to "envelope4", "BandPass1" and "BandPass2". [host]
  bool SaveState(MXMLItem& item) override;
  bool LoadState(MXMLItem& item) override;  // [host]

  // For editors and tests, which hold the lock. [any]
  MMixerAudioFilter& GetMixer() noexcept { return mixer_; }

 protected:
  MAudioStream* NewStream(const MStreamRequest& request) override;                             // [audio]
  int32_t Render(MAudioStream& stream, float** out, int32_t first, int32_t samples) override;  // [audio]
  void FreeStream(MAudioStream* stream) override;                                              // [audio]

 private:
  struct Note;

  static void OnChange(MEventTarget* plugin, MWord extra, const MOnNotifyParams& parameters);

  // Under the lock, but for what a note reads of them.
  MNoiseGeneratorAudioSource noises_[2];
  MEnvelopeAudioFilter noiseEnvelopes_[2];
  SlotterAudioFilter noiseBandPasses_[2];
  MOscillatorAudioSource oscillators_[4];
  SlotterAudioFilter oscillatorBandPasses_[4];
  MEnvelopeAudioFilter oscillatorEnvelopes_[4];
  MMixerAudioFilter mixer_;
};
