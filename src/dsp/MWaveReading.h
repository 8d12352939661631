#pragma once
// Reading a wave in blocks: the paths behind MSignalGenerator::Read. All take a table of kLength + 1 floats,
// a start from 0 to kLength and a step of that range, both in samples of the table, and at most kMaximum
// samples. They write the wave at start + i step, linearly interpolated in double.

#include "core/MTypes.h"

namespace MWaveReading {

constexpr int32_t kMaximum = 1 << 16;  // as far as the places fit an int32_t before they are wrapped

using Path = void (*)(const float* table, double* values, double start, double step, int32_t count) noexcept;

// What every processor of the kind runs.
void ReadPairs(const float* table, double* values, double start, double step, int32_t count) noexcept;
// Four samples at a time; null where the processor has no AVX2 and FMA.
Path GetWidePath() noexcept;

}  // namespace MWaveReading
