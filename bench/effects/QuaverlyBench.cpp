#include "bench/effects/EffectBench.h"

namespace {

void Quaverly(benchmark::State& state) {
  EffectBench("Quaverly").Run(state);
}
BENCHMARK(Quaverly)->Arg(64)->Arg(256)->Arg(1024);

void QuaverlyDecay(benchmark::State& state) {
  EffectBench("Quaverly").RunDecay(state);
}
BENCHMARK(QuaverlyDecay)->Arg(256);

void QuaverlyUpdate(benchmark::State& state) {
  EffectBench("Quaverly").RunUpdate(state, "depth", 0.4, 0.5);
}
BENCHMARK(QuaverlyUpdate);

}  // namespace
