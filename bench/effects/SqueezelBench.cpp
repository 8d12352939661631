#include <memory>

#include "bench/effects/EffectBench.h"

namespace {

enum Knee { kHard, kLinear, kSoft };

void SetUp(EffectBench& effect, Knee knee, bool isLinked = true) {
  effect.Set("ratio", 4);
  effect.Set("threshold", 0.4);
  effect.Set("kneemode", knee);
  effect.Set("linkchannels", isLinked);
}

void Squeezel(benchmark::State& state, Knee knee, bool isLinked, bool isDrawn) {
  const auto effect = std::make_unique<EffectBench>("Squeezel");
  SetUp(*effect, knee, isLinked);
  effect->Set("customshape", isDrawn);
  effect->Run(state);
}
BENCHMARK_CAPTURE(Squeezel, soft, kSoft, true, false)->Name("Squeezel")->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK_CAPTURE(Squeezel, hard, kHard, true, false)->Name("SqueezelHard")->Arg(256);
BENCHMARK_CAPTURE(Squeezel, linear, kLinear, true, false)->Name("SqueezelLinear")->Arg(256);
BENCHMARK_CAPTURE(Squeezel, separate, kSoft, false, false)->Name("SqueezelSeparate")->Arg(256);
BENCHMARK_CAPTURE(Squeezel, drawn, kSoft, true, true)->Name("SqueezelDrawn")->Arg(256);

void SqueezelSideChain(benchmark::State& state) {
  const auto effect = std::make_unique<EffectBench>("Squeezel");
  MXMLItem item("state");
  for (const char* const mark : {"halfgain", "amplituderatio"})
    item.SetAttribute(MString::Literal(mark), "0");
  item.SetAttribute("SideChainEnable", "1");
  item.SetAttribute("SideChainMinFrequency", "200");
  item.SetAttribute("SideChainMaxFrequency", "5000");
  effect->Load(item);
  SetUp(*effect, kSoft);
  effect->Run(state);
}
BENCHMARK(SqueezelSideChain)->Arg(256);

void SqueezelDecay(benchmark::State& state) {
  const auto effect = std::make_unique<EffectBench>("Squeezel");
  SetUp(*effect, kSoft);
  effect->RunDecay(state);
}
BENCHMARK(SqueezelDecay)->Arg(256);

void SqueezelUpdate(benchmark::State& state) {
  EffectBench("Squeezel").RunUpdate(state, "threshold", 0.4, 0.5);
}
BENCHMARK(SqueezelUpdate);

void SqueezelUpdateDrawn(benchmark::State& state) {
  EffectBench effect("Squeezel");
  effect.Set("customshape", 1);
  effect.RunUpdate(state, "threshold", 0.4, 0.5);
}
BENCHMARK(SqueezelUpdateDrawn);

}  // namespace
