#include "bench/effects/EffectBench.h"

namespace {

void Pulsetta(benchmark::State& state, double phaseDifference) {
  EffectBench effect("Pulsetta");
  effect.Set("phasediff", phaseDifference);
  effect.Run(state);
}
BENCHMARK_CAPTURE(Pulsetta, together, 0)->Name("Pulsetta")->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK_CAPTURE(Pulsetta, apart, 0.25)->Name("PulsettaApart")->Arg(64)->Arg(256)->Arg(1024);

void PulsettaDecay(benchmark::State& state) {
  EffectBench("Pulsetta").RunDecay(state);
}
BENCHMARK(PulsettaDecay)->Arg(256);

void PulsettaUpdate(benchmark::State& state) {
  EffectBench("Pulsetta").RunUpdate(state, "rate", 0.5, 0.6);
}
BENCHMARK(PulsettaUpdate);

void PulsettaUpdateShape(benchmark::State& state) {
  EffectBench("Pulsetta").RunUpdate(state, "Shape", 4.25, 4.5);
}
BENCHMARK(PulsettaUpdateShape);

}  // namespace
