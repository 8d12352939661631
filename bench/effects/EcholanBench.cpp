#include <memory>

#include "bench/effects/EffectBench.h"

namespace {

void Echolan(benchmark::State& state, double delaySeconds) {
  const auto effect = std::make_unique<EffectBench>("Echolan");
  effect->Set("delay", delaySeconds);
  effect->Run(state);
}
BENCHMARK_CAPTURE(Echolan, defaults, 0.1)->Name("Echolan")->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK_CAPTURE(Echolan, oneMillisecond, 0.001)->Name("EcholanOneMillisecond")->Arg(256);
// The worst case: a line of one sample, each of which depends on the one before.
BENCHMARK_CAPTURE(Echolan, oneSample, 0.0)->Name("EcholanOneSample")->Arg(256);

void EcholanDecay(benchmark::State& state) {
  EffectBench("Echolan").RunDecay(state);
}
BENCHMARK(EcholanDecay)->Arg(256);

void EcholanUpdate(benchmark::State& state) {
  EffectBench("Echolan").RunUpdate(state, "delay", 0.1, 0.2);
}
BENCHMARK(EcholanUpdate);

}  // namespace
