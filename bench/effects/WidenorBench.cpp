#include <memory>

#include "bench/effects/EffectBench.h"

namespace {

std::unique_ptr<EffectBench> Make(double delaySeconds, double delayDepth) {
  auto effect = std::make_unique<EffectBench>("Widenor");
  effect->Set("delay", delaySeconds);
  effect->Set("delaydepth", delayDepth);
  return effect;
}

void Widenor(benchmark::State& state, double delaySeconds, double delayDepth) {
  Make(delaySeconds, delayDepth)->Run(state);
}
BENCHMARK_CAPTURE(Widenor, delayed, 0.002, 0.5)->Name("Widenor")->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK_CAPTURE(Widenor, direct, 0.002, 0.0)->Name("WidenorDirect")->Arg(256);
BENCHMARK_CAPTURE(Widenor, oneSample, 0.0, 0.5)->Name("WidenorOneSample")->Arg(256);

void WidenorDecay(benchmark::State& state) {
  Make(0.002, 0.5)->RunDecay(state);
}
BENCHMARK(WidenorDecay)->Arg(256);

void WidenorUpdate(benchmark::State& state) {
  EffectBench("Widenor").RunUpdate(state, "resonance", 0.4, 0.5);
}
BENCHMARK(WidenorUpdate);

}  // namespace
