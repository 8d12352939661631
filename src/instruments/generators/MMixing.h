#pragma once
// What a mixer does to buffers. Buffers of one call have the same channels and length. Sums are double,
// rounded to float and limited to its range. Nothing allocates. [audio]

#include "core/MAudioBuffer.h"

// A volume and, for stereo, its matrix with a pan of -1..1; a pan within 1e-20 of 0 is none.
struct MMixerGains {
  MMixerGains(double volume, double pan) noexcept;

  double volume;
  bool isPanned;
  double own[2];    // of the left and the right channel
  double cross[2];  // of the right channel to the left, and of the left one to the right
};

namespace MMixing {

void Scale(MAudioBuffer& buffer, double gain) noexcept;
void Apply(MAudioBuffer& buffer, const MMixerGains& gains) noexcept;
// out += gains of work
void Add(MAudioBuffer& out, const MAudioBuffer& work, const MMixerGains& gains) noexcept;
// out = out (work + 1 - depth)
void Ring(MAudioBuffer& out, const MAudioBuffer& work, double depth) noexcept;

// The past of a signal whose time is modulated.
constexpr int32_t kPastSamples = 408;
constexpr int32_t kMaximumDepth = 200;  // samples
// Reads a channel at the places i - depth - 4 + depth modulator[i], modulators limited to -1..1, in the line
// of its past and itself, with a cubic; then its last samples are the past.
void ModulateTime(float* samples, const float* modulator, int32_t count, int32_t depth, float* past) noexcept;

}  // namespace MMixing
