#include <memory>

#include "bench/effects/EffectBench.h"

namespace {

// Peaks, the first `enabled` of which are on.
std::unique_ptr<EffectBench> Make(int32_t enabled) {
  MXMLItem state("state");
  state.SetAttribute("halfgain", "0");
  MXMLItem& graph = state.AddSubItem("graph");
  for (int32_t i = 0; i < 6; ++i) {
    MXMLItem& point = graph.AddSubItem("point");
    point.SetAttribute("x", MString::FromDouble(2 + 0.3 * i, 4));
    point.SetAttribute("y", MString::FromInteger(i % 2 == 0 ? 6 : -6));
    point.SetAttribute("enabled", MString::FromInteger(i < enabled));
    point.SetAttribute("q", "0.6");
  }
  auto effect = std::make_unique<EffectBench>("Tonebench");
  effect->Load(state);
  return effect;
}

void Tonebench(benchmark::State& state, int32_t enabled) {
  Make(enabled)->Run(state);
}
BENCHMARK_CAPTURE(Tonebench, six, 6)->Name("Tonebench")->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK_CAPTURE(Tonebench, one, 1)->Name("TonebenchOneBand")->Arg(256);
BENCHMARK_CAPTURE(Tonebench, three, 3)->Name("TonebenchThreeBands")->Arg(256);

void TonebenchDecay(benchmark::State& state) {
  Make(6)->RunDecay(state);
}
BENCHMARK(TonebenchDecay)->Arg(256);

void TonebenchUpdate(benchmark::State& state) {
  Make(6)->RunUpdate(state);
}
BENCHMARK(TonebenchUpdate);

}  // namespace
