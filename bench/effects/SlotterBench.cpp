#include <memory>

#include "bench/effects/EffectBench.h"

namespace {

std::unique_ptr<EffectBench> Make(bool low, bool high) {
  auto effect = std::make_unique<EffectBench>("Slotter");
  effect->Set("lowenable", low);
  effect->Set("highenable", high);
  return effect;
}

void Slotter(benchmark::State& state, bool low, bool high) {
  Make(low, high)->Run(state);
}
BENCHMARK_CAPTURE(Slotter, both, true, true)->Name("Slotter")->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK_CAPTURE(Slotter, low, true, false)->Name("SlotterOneFilter")->Arg(256);
BENCHMARK_CAPTURE(Slotter, off, false, false)->Name("SlotterOff")->Arg(256);

void SlotterDecay(benchmark::State& state) {
  Make(true, true)->RunDecay(state);
}
BENCHMARK(SlotterDecay)->Arg(256);

void SlotterUpdate(benchmark::State& state) {
  EffectBench("Slotter").RunUpdate(state, "lowfreq", 2.5, 3);
}
BENCHMARK(SlotterUpdate);

}  // namespace
