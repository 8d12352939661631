#include <memory>

#include "bench/effects/EffectBench.h"

namespace {

void Imprinta(benchmark::State& state, int32_t length) {
  const auto effect = std::make_unique<EffectBench>("Imprinta");
  effect->Set("length", length);
  effect->Run(state);
}
BENCHMARK_CAPTURE(Imprinta, longest, 512)->Name("Imprinta")->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK_CAPTURE(Imprinta, defaults, 16)->Name("ImprintaDefault")->Arg(256);

void ImprintaDecay(benchmark::State& state) {
  const auto effect = std::make_unique<EffectBench>("Imprinta");
  effect->Set("length", 512);
  effect->RunDecay(state);
}
BENCHMARK(ImprintaDecay)->Arg(256);

void ImprintaUpdate(benchmark::State& state) {
  EffectBench("Imprinta").RunUpdate(state, "length", 16, 17);
}
BENCHMARK(ImprintaUpdate);

void ImprintaUpdateLongest(benchmark::State& state) {
  EffectBench("Imprinta").RunUpdate(state, "length", 511, 512);
}
BENCHMARK(ImprintaUpdateLongest);

}  // namespace
