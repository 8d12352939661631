#include "bench/effects/EffectBench.h"

namespace {

void Roamplex(benchmark::State& state) {
  EffectBench("Roamplex").Run(state);
}
BENCHMARK(Roamplex)->Arg(64)->Arg(256)->Arg(1024);

void RoamplexDecay(benchmark::State& state) {
  EffectBench("Roamplex").RunDecay(state);
}
BENCHMARK(RoamplexDecay)->Arg(256);

void RoamplexUpdate(benchmark::State& state) {
  EffectBench("Roamplex").RunUpdate(state, "rate", 0.5, 0.6);
}
BENCHMARK(RoamplexUpdate);

}  // namespace
