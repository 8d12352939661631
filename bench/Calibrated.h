#pragma once
// What every benchmark reports besides its time: the time of the calibration loop (calib.h), measured right
// before it, so that figures of different machines and moments compare.

#include <benchmark/benchmark.h>

extern "C" double CalibrationNanoseconds(void);  // per sample

inline void Calibrate(benchmark::State& state) {
  state.counters["calibration"] = CalibrationNanoseconds();
}
