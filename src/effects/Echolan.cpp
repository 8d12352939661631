#include "effects/Echolan.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "plugin/MParameterFormatters.h"

namespace {

constexpr double kMaximumDelaySeconds = 0.5;  // of the table

// One channel's stretch of the line without a wrap.
void Recirculate(float* line, const float* in, float* out, int32_t samples, double gain) {
  for (int32_t i = 0; i < samples; ++i) {
    const float sum = static_cast<float>(line[i] * gain + in[i]);
    const float y = std::abs(sum) <= std::numeric_limits<float>::max() ? sum : 0.0f;
    line[i] = y;
    out[i] = y;
  }
}

}  // namespace

EcholanAudioEffectPlugin::EcholanAudioEffectPlugin() {
  AddRealParameter(
      rows_[kFeedback], "Feedback", "feedback",
      "<name>Feedback</name> determines how much of the signal is returned to the input after the delay "
      "time.",
      0.0, 0.8, 0.4, MString(), MShowSquaredDecibels);
  AddRealParameter(
      rows_[kDelay], "Delay", "delay",
      "<name>Delay</name> determines how long it takes to pass the signal from the output back to the "
      "input, thus how long it takes to the sound to be played again.",
      0.0, kMaximumDelaySeconds, 0.1, MString(), MShowMilliseconds);
  SetParameters(rows_);
}

int32_t EcholanAudioEffectPlugin::GetWantedLength() const noexcept {
  return MDelayLine::GetLength(sampleRate_, MLimitedValue(rows_[kDelay], 0, MDelayLine::kLongestSeconds));
}

int32_t EcholanAudioEffectPlugin::Prepare(int32_t channels, int32_t sampleRate) {
  MAudioEffectPlugin::Prepare(channels, sampleRate);
  if (sampleRate < 1) return 0;
  line_.Set(channels, sampleRate, GetWantedLength(), MDelayLine::GetLength(sampleRate, kMaximumDelaySeconds));
  return 0;
}

void EcholanAudioEffectPlugin::Process(float** in, float** out, int32_t samples) {
  const double feedback = MLimitedValue(rows_[kFeedback], -1, 1);
  const double gain = feedback * feedback;
  if (sampleRate_ >= 1) line_.Fit(GetWantedLength());
  const int32_t length = line_.GetLength();
  const int32_t served = std::min(channels_, line_.GetChannelCount());
  for (int32_t done = 0; done < samples && length > 0;) {
    const int32_t run = std::min(samples - done, line_.GetRun());
    for (int32_t c = 0; c < served; ++c)
      Recirculate(line_.GetChannel(c) + line_.GetPosition(), in[c] + done, out[c] + done, run, gain);
    done += run;
    line_.Advance(run);
  }
  CopyChannels(in, out, served, channels_, samples);
}

M_PLUGIN_ENTRY(EcholanAudioEffectPlugin)
