// Reading a wave, per sample, as the loops of effects do; and computing it.

#include <cmath>
#include <memory>

#include "bench/Calibrated.h"
#include "dsp/MSignalGenerator.h"

namespace {

constexpr int32_t kBlock = 256;
constexpr double kStep = 4.0 / 48000;

// A stereo tremolo: one read serves both channels of a frame.
void WaveTremolo(benchmark::State& state) {
  const auto generator = std::unique_ptr<MSignalGenerator>(new MSignalGenerator);
  float left[kBlock], right[kBlock];
  std::fill_n(left, kBlock, 1.0f);
  std::fill_n(right, kBlock, 1.0f);
  double phase = 0;
  Calibrate(state);
  for (auto _ : state) {
    double wave[kBlock];
    generator->Read(wave, phase, kStep, kBlock);
    phase += kBlock * kStep;
    phase -= std::floor(phase);
    for (int32_t i = 0; i < kBlock; ++i) {
      const double gain = 1 - wave[i] * 1e-9;  // does not fade in the course of the run
      left[i] = static_cast<float>(left[i] * gain);
      right[i] = static_cast<float>(right[i] * gain);
    }
    benchmark::DoNotOptimize(left);
    benchmark::DoNotOptimize(right);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kBlock);
}
BENCHMARK(WaveTremolo);

void WaveReadBlock(benchmark::State& state, double step) {
  const auto generator = std::unique_ptr<MSignalGenerator>(new MSignalGenerator);
  double wave[kBlock], phase = 0;
  Calibrate(state);
  for (auto _ : state) {
    generator->Read(wave, phase, step, kBlock);
    phase += kBlock * step;
    phase -= std::floor(phase);
    benchmark::DoNotOptimize(wave);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kBlock);
}
BENCHMARK_CAPTURE(WaveReadBlock, slow, kStep)->Name("WaveReadBlock");
BENCHMARK_CAPTURE(WaveReadBlock, fast, 0.02083)->Name("WaveReadBlockFast");

// One by one, at a phase that grows from sample to sample.
void WaveRead(benchmark::State& state) {
  const auto generator = std::unique_ptr<MSignalGenerator>(new MSignalGenerator);
  double phase = 0;
  Calibrate(state);
  for (auto _ : state) {
    double wave[kBlock];
    for (double& value : wave) {
      value = generator->Read(phase);
      phase += kStep;
    }
    phase -= std::floor(phase);
    benchmark::DoNotOptimize(wave);
  }
  state.SetItemsProcessed(state.iterations() * kBlock);
}
BENCHMARK(WaveRead);

// Per sample of the period.
void WaveRebuild(benchmark::State& state, double shape, double depth) {
  const auto generator = std::unique_ptr<MSignalGenerator>(new MSignalGenerator);
  generator->SetShape(shape);
  generator->SetCustomDepth(depth);
  Calibrate(state);
  for (auto _ : state) {
    generator->Rebuild();
    benchmark::DoNotOptimize(generator->GetTable());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * MWaveShapes::kLength);
}
BENCHMARK_CAPTURE(WaveRebuild, shape, 4.25, 0.0)->Name("WaveRebuild");
BENCHMARK_CAPTURE(WaveRebuild, curve, 4.25, 0.5)->Name("WaveRebuildCurve");

}  // namespace
