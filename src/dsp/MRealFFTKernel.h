#pragma once
#include "core/MTypes.h"

// What the transforms of one size read. M = N / 2 is the number of complex points.
struct MRealFFTTables {
  int32_t points = 0;  // M
  // From 64 points on, for the first pass: for each eight p from 0 to M/8 - 1, and for each r from 1 to 7,
  // the eight cosines and then the eight sines of 2 pi p r / M. Below: cosine and sine of 2 pi p / M by
  // turns.
  const float* first = nullptr;
  // For the passes between, of the lengths n = M/8, M/32, ... above 8: for each p from 0 to n/4 - 1 cosine
  // and sine of 2 pi p r / n, r from 1 to 3.
  const float* middle = nullptr;
  // For each eight k from 1 on: the eight 0.5 sin(pi k / M), then the eight 0.5 cos(pi k / M).
  const float* split = nullptr;
};

// The same transforms in different instructions.
struct MRealFFTKernel {
  using Transform = void(const MRealFFTTables& tables, float* data) noexcept;
  Transform* forward;
  Transform* inverse;
};

extern const MRealFFTKernel kMRealFFTBaseline;
extern const MRealFFTKernel kMRealFFTWide;  // AVX2 and FMA; of nulls where it was not compiled
