#pragma once
#include "dsp/MFilter.h"

// The inner loop of Widenor, which is its only user beside tests.

// A stretch of frames. Input and output may be the same buffers. The line is null without a delay; with one
// it is the stretch of both channels that is read and written, without a wrap.
struct WidenorStretch {
  const double* bandLeft;
  const double* bandRight;
  const float* left;
  const float* right;
  float* leftOut;
  float* rightOut;
  float* lineLeft;
  float* lineRight;
  double depth;
  double delayDepth;
};

// A band as it is taken: what a filter out of bounds gives may be infinite, and its difference no number.
inline double WidenorBand(double band) noexcept {
  constexpr double kLimit = std::numeric_limits<float>::max();
  const double raised = band > -kLimit ? band : -kLimit;
  return raised < kLimit ? raised : kLimit;
}

// One frame.
inline void WidenFrame(const WidenorStretch& at, int32_t i) noexcept {
  const double left = WidenorBand(at.bandLeft[i]), right = WidenorBand(at.bandRight[i]);
  double sum = (left - right) * at.depth;
  if (at.lineLeft) {
    sum += (double{at.lineLeft[i]} - double{at.lineRight[i]}) * at.delayDepth;
    at.lineLeft[i] = static_cast<float>(left);
    at.lineRight[i] = static_cast<float>(right);
  }
  at.leftOut[i] = MLimitToFloat(MCleanSample(at.left[i]) + sum);
  at.rightOut[i] = MLimitToFloat(MCleanSample(at.right[i]) - sum);
}

// As many frames, four at a time; to the bit what WidenFrame gives.
void WidenFrames(const WidenorStretch& at, int32_t samples) noexcept;
