#include <memory>

#include "bench/effects/EffectBench.h"

namespace {

struct Setting {
  int32_t exponent = 12;
  int32_t channelMode = 0;
  bool isSimulating = false;
  bool isOpen = true;
};

void SetUp(EffectBench& effect, const Setting& setting) {
  effect.Set("fftsize", setting.exponent);
  effect.Set("channelmode", setting.channelMode);
  effect.Set("psychoacousticsimulation", setting.isSimulating);
  effect.SetEditorOpen(setting.isOpen);
}

void Lumascope(benchmark::State& state, const Setting& setting) {
  const auto effect = std::make_unique<EffectBench>("Lumascope");
  SetUp(*effect, setting);
  effect->Run(state);
}
BENCHMARK_CAPTURE(Lumascope, left, Setting{})->Name("Lumascope")->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK_CAPTURE(Lumascope, small, {10})->Name("LumascopeSmallest")->Arg(256);
BENCHMARK_CAPTURE(Lumascope, large, {14})->Name("LumascopeLargest")->Arg(256);
BENCHMARK_CAPTURE(Lumascope, stereo, {12, 2})->Name("LumascopeStereo")->Arg(256);
BENCHMARK_CAPTURE(Lumascope, simulation, {12, 0, true})->Name("LumascopeSimulation")->Arg(256);
BENCHMARK_CAPTURE(Lumascope, closed, {12, 0, false, false})->Name("LumascopeClosed")->Arg(256);

void LumascopeDecay(benchmark::State& state) {
  const auto effect = std::make_unique<EffectBench>("Lumascope");
  SetUp(*effect, {12, 0, true});
  effect->RunDecay(state);
}
BENCHMARK(LumascopeDecay)->Arg(256);

void LumascopeUpdate(benchmark::State& state) {
  std::make_unique<EffectBench>("Lumascope")->RunUpdate(state, "gain", 0, 6);
}
BENCHMARK(LumascopeUpdate);

void LumascopeUpdateSize(benchmark::State& state) {
  std::make_unique<EffectBench>("Lumascope")->RunUpdate(state, "fftsize", 12, 14);
}
BENCHMARK(LumascopeUpdateSize);

}  // namespace
