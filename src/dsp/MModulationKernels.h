#pragma once
// What a modulation does to the samples of a block. Sums are double, rounded to float and limited to its
// range; a sample that is not finite counts as 0. Input and output may be the same and must not overlap
// otherwise. Nothing allocates. [audio]

#include "core/MTypes.h"

struct MModulationKernels {
  // Multiplies by a wave: y = (x + bias) (scale wave + offset).
  void (*multiply)(const float* in, float* out, const double* wave, double scale, double offset, double bias,
                   int32_t samples) noexcept;
  // Moves a part of one channel to the other, with l and r the samples plus bias, and m = depth wave:
  //   left = l - moved, right = r + moved,  moved = l m for m at or above 0, r m below.
  void (*pan)(const float* const* in, float* const* out, const double* wave, double depth, double bias,
              int32_t samples) noexcept;
  // Takes samples for a line.
  void (*widen)(const float* in, double* line, int32_t samples) noexcept;
  // Reads finite samples at moving places, between which it interpolates: y[i] is the line at the place
  // x = start + i + swing wave[i], where with p0 to p3 the samples floor(x) - 1 to floor(x) + 2, t the
  // fraction of x and c = (3 (p1 - p2) - p0 + p3) / 2,
  //   y = p1 + ((c t + 2 p2 + p0 - (5 p1 + p3) / 2) t + (p2 - p0) / 2) t.
  // The line has all of these samples; x is at least 1.
  void (*interpolate)(const double* line, float* out, const double* wave, double swing, double start,
                      int32_t samples) noexcept;
};

// What every processor runs.
extern const MModulationKernels kModulationPlain;
// Those that this processor runs best: four samples at a time where it has AVX2 and FMA.
const MModulationKernels& MGetModulationKernels() noexcept;
