#include <memory>

#include "bench/effects/EffectBench.h"

namespace {

// Noise of half scale: below the threshold of the defaults, all in the knee with a low one.
void Clampet(benchmark::State& state, double thresholdSqrt, int32_t mode, double harmonics) {
  const auto effect = std::make_unique<EffectBench>("Clampet");
  effect->Set("threshold", thresholdSqrt);
  effect->Set("evenharmonics", harmonics);
  effect->Set("mode", mode);
  effect->Run(state);
}
BENCHMARK_CAPTURE(Clampet, below, 0.8, 0, 0.0)->Name("Clampet")->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK_CAPTURE(Clampet, soft1, 0.1, 0, 0.0)->Name("ClampetSoft1")->Arg(256);
BENCHMARK_CAPTURE(Clampet, soft2, 0.1, 1, 0.0)->Name("ClampetSoft2")->Arg(256);
BENCHMARK_CAPTURE(Clampet, soft3, 0.1, 2, 0.0)->Name("ClampetSoft3")->Arg(256);
BENCHMARK_CAPTURE(Clampet, soft4, 0.1, 3, 0.0)->Name("ClampetSoft4")->Arg(256);
BENCHMARK_CAPTURE(Clampet, clip1, 0.1, 4, 0.0)->Name("ClampetClip1")->Arg(256);
BENCHMARK_CAPTURE(Clampet, clip2, 0.1, 5, 0.0)->Name("ClampetClip2")->Arg(256);
BENCHMARK_CAPTURE(Clampet, clip3, 0.1, 6, 0.0)->Name("ClampetClip3")->Arg(256);
// Every second turn has a sample above the threshold.
BENCHMARK_CAPTURE(Clampet, mixed, 0.69, 0, 0.0)->Name("ClampetMixed")->Arg(256);
BENCHMARK_CAPTURE(Clampet, harmonics, 0.1, 0, 0.5)->Name("ClampetHarmonics")->Arg(256);

void ClampetDecay(benchmark::State& state) {
  const auto effect = std::make_unique<EffectBench>("Clampet");
  effect->Set("threshold", 0);
  effect->RunDecay(state);
}
BENCHMARK(ClampetDecay)->Arg(256);

void ClampetUpdate(benchmark::State& state) {
  EffectBench("Clampet").RunUpdate(state, "threshold", 0.5, 0.8);
}
BENCHMARK(ClampetUpdate);

}  // namespace
