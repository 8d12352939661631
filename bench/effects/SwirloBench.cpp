#include "bench/effects/EffectBench.h"

namespace {

void Swirlo(benchmark::State& state, int32_t stages, double difference) {
  EffectBench effect("Swirlo");
  effect.Set("delays", stages);
  effect.Set("phasediff", difference);
  effect.Run(state);
}
BENCHMARK_CAPTURE(Swirlo, six, 6, 0.5)->Name("Swirlo")->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK_CAPTURE(Swirlo, inPhase, 6, 0.0)->Name("SwirloInPhase")->Arg(256);
BENCHMARK_CAPTURE(Swirlo, one, 1, 0.5)->Name("SwirloOneStage")->Arg(256);
BENCHMARK_CAPTURE(Swirlo, ten, 10, 0.5)->Name("SwirloTenStages")->Arg(256);

void SwirloDecay(benchmark::State& state) {
  EffectBench("Swirlo").RunDecay(state);
}
BENCHMARK(SwirloDecay)->Arg(256);

void SwirloUpdate(benchmark::State& state) {
  EffectBench("Swirlo").RunUpdate(state, "feedback", 0.7, 0.5);
}
BENCHMARK(SwirloUpdate);

void SwirloUpdateShape(benchmark::State& state) {
  EffectBench("Swirlo").RunUpdate(state, "Shape", 4.25, 4.5);
}
BENCHMARK(SwirloUpdateShape);

}  // namespace
