#include "instruments/MSampleStream.h"

#include <algorithm>
#include <cmath>

#include "core/MAudioBuffer.h"
#include "plugin/MParameterFormatters.h"

int32_t MStepsBelow(double end, double start, double step, int32_t count) noexcept {
  auto steps = static_cast<int32_t>(std::clamp(std::ceil((end - start) / step), 0.0, double(count)));
  while (steps > 0 && start + (steps - 1) * step >= end) --steps;
  while (steps < count && start + steps * step < end) ++steps;
  return steps;
}

void AddSampleDelayParameter(MPluginParameter& row) {
  AddRealParameter(
      row, "Delay", "delay",
      "<name>Delay</name> defines delay of the sample. You can use it to compensate late beginning, make the "
      "sample delayed or simply to cut-off a part of it.",
      -0.2, 0.2, 0.0, MString(), MShowMilliseconds);
}

void MSampleStream::SetStart(const MPluginParameter& seconds, int32_t outputRate) noexcept {
  position = -std::trunc(MLimitedValue(seconds, -60, 60) * outputRate);
}

void MSampleStream::SetSpeed(int32_t recordingRate, double ratio, int32_t outputRate) noexcept {
  speed = std::max(recordingRate, 1) * ratio / std::max(outputRate, 1);
  if (std::abs(speed - 1) < 1e-50) speed = 1;
}

void MSampleStream::SetEnvelope(const MEnvelopeData& curve) {
  for (int32_t i = 0; i < curve.GetCount() && !hasEnvelope; ++i)
    hasEnvelope = std::abs(curve[i].y - 1) >= 1e-50;
  hasEnvelope = hasEnvelope && length > 0;
  if (!hasEnvelope) return;
  MEnvelopeData spread = curve;
  spread.ScaleX(length, true);
  envelope.Build(spread);
  if (envelope.GetTailStart() < length) length = static_cast<int32_t>(envelope.GetTailStart());
}

void MSampleStream::ReadGains(float* gains, double place, int32_t count) noexcept {
  const int32_t first = MStepsBelow(0, place, speed, count);
  const int32_t end = std::max(first, MStepsBelow(length, place, speed, count));
  std::fill_n(gains, first, 0.0f);
  if (hasEnvelope) envelope.FillFloat(gains + first, place + first * speed, speed, end - first);
  for (int32_t i = first; i < end; ++i) gains[i] = static_cast<float>((hasEnvelope ? gains[i] : 1) * volume);
  std::fill(gains + end, gains + count, 0.0f);
}

bool MSampleStream::Play(const MAudioBuffer& recording, float** out, int32_t channels, int32_t first,
                         int32_t end) noexcept {
  const int32_t recorded = recording.GetChannelCount();
  for (int32_t done = first; done < end; done += kChunk) {
    const int32_t run = std::min(kChunk, end - done);
    const double place = position + (done - first) * speed;
    float gains[kChunk];
    ReadGains(gains, place, run);
    const MSampleReading reading(place, speed, run);
    for (int32_t c = 0; c < channels; ++c) {
      float* const to = out[c] + done;
      if (recorded == 0) {
        std::fill_n(to, run, 0.0f);
      } else if (c >= recorded) {
        std::copy_n(out[c % recorded] + done, run, to);
      } else {
        reading.Read(to, recording.GetChannel(c), recording.GetLength());
        for (int32_t i = 0; i < run; ++i) to[i] *= gains[i];
      }
    }
  }
  position += (end - first) * speed;
  return position >= length;
}
