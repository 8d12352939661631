#pragma once
#include "dsp/MEnvelopeComputer.h"
#include "dsp/MSignalGenerator.h"
#include "instruments/generators/MAudioGeneratorSource.h"
#include "instruments/generators/MPowerOfTen.h"

// A tone: wave(phase) gain, from a phase given in periods. Each sample moves the phase on by
//   10^y ratio / sample rate,
// y being the drawn frequency curve at the sample, which spans the length of the sound. A curve of two equal
// points is a constant frequency.
class MOscillatorAudioSource final : public MAudioGeneratorSource {
 public:
  MOscillatorAudioSource();

  double phase = 0;
  MSignalGenerator signal;
  MEnvelopeData frequencyLog10Hz;  // 0..1 in x, log10(20) to log10(10000) in y; used within -6..6

  void SetFormat(int32_t channels, int32_t sampleRate) override;
  MGeneratorStatePointer CreateState(double gain, double ratio) const override;
  void Reset() override;
  // "length", attribute "phase", children "shape" and "frequency".
  void Save(MXMLItem& item) const override;
  void Load(const MXMLItem& item) override;

 private:
  struct Tone;

  static MEnvelopeData DefaultFrequency();
  void Make(Sound& sound, float* out, int32_t samples) const noexcept override;
  void ReadGlide(Tone& tone, double* values, int32_t samples) const noexcept;

  MPowerOfTen powerOfTen_;
};
