#include "instruments/generators/MEnvelopeAudioFilter.h"

#include <algorithm>

#include "dsp/MFilter.h"

namespace {

MEnvelopeData Line(double from, double to) {
  MEnvelopeData curve;
  curve.Add(0, from);
  curve.Add(1, to);
  return curve;
}

}  // namespace

struct MEnvelopeAudioFilter::Fade : MGeneratorState {
  MGeneratorStatePointer inner;
  MEnvelopeComputer gains;
  double step = 0;  // of the curve per sample
  int64_t done = 0;
};

MEnvelopeAudioFilter::MEnvelopeAudioFilter(MAudioGeneratorObject& inner)
    : MAudioGeneratorFilter("envelope", "envelope", inner), gains(Line(1, 0)) {}

MGeneratorStatePointer MEnvelopeAudioFilter::CreateState(double gain, double ratio) const {
  std::unique_ptr<Fade> fade(new Fade);
  fade->inner = inner_.CreateState(gain, ratio);
  fade->gains.Build(gains);
  fade->step = 1 / std::max(GetLength(false), 1.0);
  return fade;
}

bool MEnvelopeAudioFilter::Compute(MGeneratorState& state, MAudioBuffer& buffer) {
  constexpr int32_t kChunk = 256;
  auto& fade = static_cast<Fade&>(state);
  const bool isOver = inner_.Compute(*fade.inner, buffer);
  for (int32_t first = 0; first < buffer.GetLength(); first += kChunk) {
    const int32_t run = std::min(kChunk, buffer.GetLength() - first);
    float factors[kChunk];
    fade.gains.FillFloat(factors, static_cast<double>(fade.done) * fade.step, fade.step, run);
    for (int32_t c = 0; c < buffer.GetChannelCount(); ++c) {
      float* const samples = buffer.GetChannel(c) + first;
      for (int32_t i = 0; i < run; ++i) samples[i] = MLimitToFloat(samples[i] * factors[i]);
    }
    fade.done += run;
  }
  return isOver;
}

void MEnvelopeAudioFilter::Reset() {
  MAudioGeneratorFilter::Reset();
  gains = Line(1, 0);
}

void MEnvelopeAudioFilter::Save(MXMLItem& item) const {
  MAudioGeneratorFilter::Save(item);
  gains.Save(item.AddSubItem("volume"));
}

void MEnvelopeAudioFilter::Load(const MXMLItem& item) {
  MEnvelopeData curve = Line(1, 1);
  if (item.HasSubItem("volume")) curve.Load(item.CachedSubItem());
  MAudioGeneratorFilter::Load(item);
  gains = std::move(curve);
}
