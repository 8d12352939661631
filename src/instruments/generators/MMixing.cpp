#include "instruments/generators/MMixing.h"

#include <algorithm>
#include <cmath>

#include "dsp/MFilter.h"
#include "dsp/MModulationKernels.h"

MMixerGains::MMixerGains(double theVolume, double pan) noexcept
    : volume(theVolume),
      isPanned(std::abs(pan) > 1e-20),
      own{volume * (1 - std::max(pan, 0.0)), volume * (1 + std::min(pan, 0.0))},
      cross{volume * std::max(-pan, 0.0), volume * std::max(pan, 0.0)} {}

void MMixing::Scale(MAudioBuffer& buffer, double gain) noexcept {
  if (std::abs(gain - 1) < 1e-20) return;
  for (int32_t c = 0; c < buffer.GetChannelCount(); ++c) {
    float* const samples = buffer.GetChannel(c);
    for (int32_t i = 0; i < buffer.GetLength(); ++i) samples[i] = MLimitToFloat(samples[i] * gain);
  }
}

void MMixing::Apply(MAudioBuffer& buffer, const MMixerGains& gains) noexcept {
  if (!gains.isPanned || buffer.GetChannelCount() != 2) return Scale(buffer, gains.volume);
  float* const left = buffer.GetChannel(0);
  float* const right = buffer.GetChannel(1);
  for (int32_t i = 0; i < buffer.GetLength(); ++i) {
    const double l = left[i], r = right[i];
    left[i] = MLimitToFloat(gains.own[0] * l + gains.cross[0] * r);
    right[i] = MLimitToFloat(gains.own[1] * r + gains.cross[1] * l);
  }
}

void MMixing::Add(MAudioBuffer& out, const MAudioBuffer& work, const MMixerGains& gains) noexcept {
  const bool isPanned = gains.isPanned && out.GetChannelCount() == 2;
  for (int32_t c = 0; c < out.GetChannelCount(); ++c) {
    float* const to = out.GetChannel(c);
    const float* const own = work.GetChannel(c);
    const float* const other = work.GetChannel(isPanned ? 1 - c : c);
    const double gain = isPanned ? gains.own[c] : gains.volume;
    const double cross = isPanned ? gains.cross[c] : 0;
    for (int32_t i = 0; i < out.GetLength(); ++i)
      to[i] = MLimitToFloat(to[i] + gain * own[i] + cross * other[i]);
  }
}

void MMixing::Ring(MAudioBuffer& out, const MAudioBuffer& work, double depth) noexcept {
  for (int32_t c = 0; c < out.GetChannelCount(); ++c) {
    float* const to = out.GetChannel(c);
    const float* const factors = work.GetChannel(c);
    for (int32_t i = 0; i < out.GetLength(); ++i) to[i] = MLimitToFloat(to[i] * (factors[i] + (1 - depth)));
  }
}

void MMixing::ModulateTime(float* samples, const float* modulator, int32_t count, int32_t depth,
                           float* past) noexcept {
  constexpr int32_t kChunk = 256;
  const MModulationKernels& kernels = MGetModulationKernels();
  double line[kPastSamples + kChunk];
  double places[kChunk];
  std::copy_n(past, kPastSamples, line);
  for (int32_t done = 0; done < count; done += kChunk) {
    const int32_t run = std::min(kChunk, count - done);
    kernels.widen(samples + done, line + kPastSamples, run);
    for (int32_t i = 0; i < run; ++i) places[i] = std::clamp(MCleanSample(modulator[done + i]), -1.0f, 1.0f);
    kernels.interpolate(line, samples + done, places, depth, kPastSamples - depth - 4, run);
    std::copy(line + run, line + run + kPastSamples, line);
  }
  std::transform(line, line + kPastSamples, past, [](double x) { return static_cast<float>(x); });
}
