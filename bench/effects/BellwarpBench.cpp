#include <memory>

#include "bench/effects/EffectBench.h"

namespace {

std::unique_ptr<EffectBench> Make(bool isModulating, bool areBothOn) {
  auto effect = std::make_unique<EffectBench>("Bellwarp");
  effect->Set("modulate", isModulating);
  effect->Set("enable2", areBothOn);
  return effect;
}

void Bellwarp(benchmark::State& state, bool isModulating, bool areBothOn) {
  Make(isModulating, areBothOn)->Run(state);
}
BENCHMARK_CAPTURE(Bellwarp, one, false, false)->Name("Bellwarp")->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK_CAPTURE(Bellwarp, sum, true, true)->Name("BellwarpSum")->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK_CAPTURE(Bellwarp, both, false, true)->Name("BellwarpBoth")->Arg(256);

void BellwarpDecay(benchmark::State& state) {
  Make(true, true)->RunDecay(state);
}
BENCHMARK(BellwarpDecay)->Arg(256);

void BellwarpUpdate(benchmark::State& state) {
  EffectBench("Bellwarp").RunUpdate(state, "frequency1", 2.5, 3);
}
BENCHMARK(BellwarpUpdate);

}  // namespace
