#include "instruments/generators/MOscillatorAudioSource.h"

#include <algorithm>
#include <cmath>

#include "core/MXMLNumber.h"
#include "dsp/MFilter.h"

namespace {

constexpr int32_t kChunk = 256;
constexpr double kLimitLog10Hz = 6;

double Frequency(double y) {
  return MLimitedNumber(y, -kLimitLog10Hz, kLimitLog10Hz);
}

bool IsFlat(const MEnvelopeData& curve) {
  return curve.GetCount() == 2 && std::abs(curve[0].y - curve[1].y) < 1e-50;
}

// Without whole periods.
double Wrap(double phase) {
  return phase - std::floor(phase);
}

}  // namespace

struct MOscillatorAudioSource::Tone : Sound {
  double phase = 0;
  double step = 0;              // periods per sample of a constant frequency; of 1 Hz under a curve
  double time = 0;              // samples made so far
  MEnvelopeComputer frequency;  // built for a frequency that is not constant
};

MOscillatorAudioSource::MOscillatorAudioSource()
    : MAudioGeneratorSource("Oscillator", "Oscillator"), frequencyLog10Hz(DefaultFrequency()) {}

MEnvelopeData MOscillatorAudioSource::DefaultFrequency() {
  MEnvelopeData curve;
  curve.yMinimum = std::log10(20.0);
  curve.yMaximum = std::log10(10000.0);
  curve.Add(0, std::log10(300.0));
  curve.Add(1, std::log10(300.0));
  return curve;
}

void MOscillatorAudioSource::SetFormat(int32_t channels, int32_t sampleRate) {
  MAudioGeneratorSource::SetFormat(channels, sampleRate);
  signal.Rebuild();
}

MGeneratorStatePointer MOscillatorAudioSource::CreateState(double gain, double ratio) const {
  std::unique_ptr<Tone> tone(new Tone);
  Start(*tone, gain);
  tone->phase = std::isfinite(phase) ? Wrap(phase) : 0;
  tone->step = ratio / GetRate();
  if (IsFlat(frequencyLog10Hz)) {
    tone->step = Wrap(std::pow(10.0, Frequency(frequencyLog10Hz[0].y)) * tone->step);
  } else if (tone->remaining > 0) {
    MEnvelopeData spread = frequencyLog10Hz;
    spread.ScaleX(tone->remaining, true);
    tone->frequency.Build(spread);
  }
  return tone;
}

void MOscillatorAudioSource::Make(Sound& sound, float* out, int32_t samples) const noexcept {
  auto& tone = static_cast<Tone&>(sound);
  for (int32_t done = 0; done < samples; done += kChunk) {
    const int32_t run = std::min(kChunk, samples - done);
    double values[kChunk];
    if (tone.frequency.IsBuilt()) {
      ReadGlide(tone, values, run);
    } else {
      signal.Read(values, tone.phase, tone.step, run);
      tone.phase = Wrap(tone.phase + run * tone.step);
    }
    for (int32_t i = 0; i < run; ++i) out[done + i] = MLimitToFloat(values[i] * tone.gain);
  }
}

void MOscillatorAudioSource::ReadGlide(Tone& tone, double* values, int32_t samples) const noexcept {
  tone.frequency.FillDouble(values, tone.time, 1, samples);
  const float* const table = signal.GetTable();
  double at = tone.phase;
  for (int32_t i = 0; i < samples; ++i) {
    const double step = powerOfTen_.Get(Frequency(values[i])) * tone.step;
    values[i] = MSignalGenerator::Read(table, at);
    at += step;
  }
  tone.phase = Wrap(at);
  tone.time += samples;
}

void MOscillatorAudioSource::Reset() {
  Load(MXMLItem());
}

void MOscillatorAudioSource::Save(MXMLItem& item) const {
  MAudioGeneratorSource::Save(item);
  item.SetAttribute("phase", MString::FromDouble(phase, 4));
  signal.Save(item.AddSubItem("shape"));
  frequencyLog10Hz.Save(item.AddSubItem("frequency"));
}

void MOscillatorAudioSource::Load(const MXMLItem& item) {
  MEnvelopeData curve = DefaultFrequency();
  if (item.HasSubItem("frequency")) curve.Load(item.CachedSubItem());
  const MXMLItem nothing;
  signal.Load(item.HasSubItem("shape") ? item.CachedSubItem() : nothing);
  frequencyLog10Hz = std::move(curve);
  MAudioGeneratorSource::Load(item);
  phase = MReadNumber(item, "phase");
}
