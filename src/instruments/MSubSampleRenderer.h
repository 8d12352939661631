#pragma once
// Makes one sound out of the spectra of a subsample library.

#include <array>

#include "audiofiles/MSubSampleLibrary.h"
#include "core/MAudioBuffer.h"

// What is taken from one band of a library.
struct MSubSampleBand {
  float index = 0;     // place between two sounds: 1.25 is sound 1 and, a quarter, sound 2
  int32_t offset = 0;  // the band's first bin, kept with the others; it has no effect
  int32_t shift = 0;   // by which the band moves up, in bins
  float volume = 1;    // linear gain

  bool operator==(const MSubSampleBand&) const = default;
};
using MSubSampleBands = std::array<MSubSampleBand, MSubSampleLibrary::kBands>;

// With p the fraction of a band's index, and a = c x colour offset for channel c, the lower sound counts 1 -
// m and the upper one m, times the volume, where m goes to and fro between 0 and 1 along p + a in the second,
// fourth ... band and along p - a in the others. A sound's channel is c modulo its channels. A last sound has
// no upper one, and still counts 1 - m.
//
// The bands' sums make a spectrum a frame; what a shift moves out of it is dropped. Each frame is 8192
// samples of sound and begins 4096 behind the one before, the two cross-faded by a line; the first one is
// faded in. Where fewer than 4096 samples are left behind the cross-fade, its rest is the end. The sound is
// then brought to a peak of 1, and its last 200 samples fade out.
//
// The target gets the rate of the library, and the largest channels and length of all sounds that are used,
// but no more than ten minutes; without a sound it is empty. An index is limited to the band's sounds, and
// stored so. Shifts in use are limited to the spectrum; a volume that is not finite is 0. Raises what
// MSubSampleLibrary::Read raises, and "Out of memory."
void MRenderSubSamples(MAudioBuffer& target, MSubSampleLibrary& library, MSubSampleBands& bands,
                       double colorOffset);
