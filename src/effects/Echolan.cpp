#include "effects/Echolan.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "plugin/MParameterFormatters.h"

namespace {

constexpr double kMaximumDelaySeconds = 0.5;  // of the table
constexpr double kLongestDelaySeconds = 60;   // of whatever a state or a host puts there
constexpr int32_t kLongestLine = 1 << 23;     // in samples

// Samples of a delay: at least 1, truncated.
int32_t LineLength(int32_t sampleRate, double delaySeconds) {
  return static_cast<int32_t>(std::clamp<double>(sampleRate * delaySeconds, 1, kLongestLine));
}

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
  return LineLength(sampleRate_, MLimitedValue(rows_[kDelay], 0, kLongestDelaySeconds));
}

int32_t EcholanAudioEffectPlugin::Prepare(int32_t channels, int32_t sampleRate) {
  MAudioEffectPlugin::Prepare(channels, sampleRate);
  if (sampleRate < 1) return 0;
  line_.sampleRate = sampleRate;
  line_.SetSize(channels, GetWantedLength(), LineLength(sampleRate, kMaximumDelaySeconds));
  line_.Clear();
  position_ = 0;
  return 0;
}

// Gives the line the length that the delay asks for, and keeps what sounds in it.
void EcholanAudioEffectPlugin::FitLine() {
  const int32_t before = line_.GetLength();
  const int32_t length = GetWantedLength();
  if (before == 0 || sampleRate_ < 1 || length == before) return;
  try {
    line_.Reserve(length);
  } catch (const MException&) {
    return;  // no memory for a delay beyond the table: the old one goes on
  }
  line_.Rotate(before - position_);
  line_.Resize(length, true);
  line_.Fade(0, 1.0, std::min(before, length), 0.0);
  if (position_ >= length) position_ = 0;  // and otherwise stays, though the samples have moved
}

void EcholanAudioEffectPlugin::Process(float** in, float** out, int32_t samples) {
  const double feedback = MLimitedValue(rows_[kFeedback], -1, 1);
  const double gain = feedback * feedback;
  FitLine();
  const int32_t length = line_.GetLength();
  const int32_t served = std::min(channels_, line_.GetChannelCount());
  for (int32_t done = 0; done < samples && length > 0;) {
    const int32_t run = std::min(samples - done, length - position_);
    for (int32_t c = 0; c < served; ++c)
      Recirculate(line_.GetChannel(c) + position_, in[c] + done, out[c] + done, run, gain);
    done += run;
    position_ += run;
    if (position_ == length) position_ = 0;
  }
  CopyChannels(in, out, served, channels_, samples);
}

M_PLUGIN_ENTRY(EcholanAudioEffectPlugin)
