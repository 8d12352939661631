#pragma once
#include <span>

#include "dsp/MBiquadFilter.h"
#include "dsp/MFilterKernels.h"
#include "dsp/MResonantFilter.h"

// Sections in series over the channels of a block, at a speed that a loop over the sections does not reach:
// two channels share a register, and the sections overlap. What comes out is what running each section in
// place behind the other gives, with each section's output rounded to float: to the bit by the plain kernels,
// within 1e-6 of the peak by those for AVX2 and FMA, which are chosen at run time. Any split into blocks
// gives the same samples.
//
// `states` holds the records of all channels: section k of channel c runs on states[c * places + k], so that
// the record of a section that is left out can stay where it is. `in[c]` and `out[c]` may be the same and
// must not overlap otherwise; nothing needs to be aligned. No section is a copy. Bad samples and states are
// treated as MBiquadFilter.h says, in a copy too. Nothing allocates. [audio]
class MBiquadCascade {
 public:
  static void Run(std::span<const MBiquadFilter> sections, MBiquadState* states, int32_t places,
                  const float* const* in, float* const* out, int32_t channels, int32_t samples,
                  const MFilterKernels& kernels = MGetFilterKernels()) noexcept;
  // Single precision; four channels share a register. To the bit what MBiquadFilterFloat::Run gives.
  static void Run(std::span<const MBiquadFilterFloat> sections, MBiquadStateFloat* states, int32_t places,
                  const float* const* in, float* const* out, int32_t channels, int32_t samples) noexcept;
};

class MResonantCascade {
 public:
  // `sections` are copies of low-passes and high-passes, in the order in which they run.
  static void Run(std::span<const MResonantFilter> sections, MResonantState* states, int32_t places,
                  const float* const* in, float* const* out, int32_t channels, int32_t samples,
                  const MFilterKernels& kernels = MGetFilterKernels()) noexcept;
  // Two sections with nothing rounded between or behind them, as by MResonantFilter::Step: a band of the
  // input in double. Channel c runs on states[2 c] and states[2 c + 1].
  static void RunPair(const MResonantFilter& first, const MResonantFilter& second, MResonantState* states,
                      const float* const* in, double* const* out, int32_t channels, int32_t samples,
                      const MFilterKernels& kernels = MGetFilterKernels()) noexcept;
};
