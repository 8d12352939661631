#include <memory>

#include "bench/effects/EffectBench.h"

namespace {

// A response of ten bands: bent lines between heights of 0.2 and 1.8.
void AddCurve(MXMLItem& state, const char* type) {
  MXMLItem& graph = state.AddSubItem("graph");
  for (int32_t i = 0; i < 10; ++i) {
    MXMLItem& point = graph.AddSubItem("Point");
    point.SetAttribute("x", MString::FromDouble(3.02 + 0.14 * i, 4));
    point.SetAttribute("y", MString::FromDouble(i % 2 == 0 ? 0.2 : 1.8, 4));
    point.SetAttribute("c", MString::FromDouble(0.5, 4));
    point.SetAttribute("Type", MString::Literal(type));
  }
}

std::unique_ptr<EffectBench> Make() {
  auto effect = std::make_unique<EffectBench>("Slidebench");
  MXMLItem state("state");
  AddCurve(state, "Mode 2");
  effect->Load(state);
  return effect;
}

void Slidebench(benchmark::State& state) {
  Make()->Run(state);
}
BENCHMARK(Slidebench)->Arg(64)->Arg(256)->Arg(1024);

void SlidebenchDecay(benchmark::State& state) {
  Make()->RunDecay(state);
}
BENCHMARK(SlidebenchDecay)->Arg(256);

void SlidebenchUpdate(benchmark::State& state) {
  Make()->RunUpdate(state, "depth", 1, 0);
}
BENCHMARK(SlidebenchUpdate);

void SlidebenchUpdateCurve(benchmark::State& state, const char* type) {
  const auto effect = Make();
  effect->Prepare();
  Calibrate(state);
  MXMLItem curve("state");
  AddCurve(curve, type);
  for (auto _ : state) effect->Load(curve);
}
BENCHMARK_CAPTURE(SlidebenchUpdateCurve, fourthOrder, "Mode 2")->Name("SlidebenchUpdateCurve");
BENCHMARK_CAPTURE(SlidebenchUpdateCurve, ellipse, "Mode 3")->Name("SlidebenchUpdateCurveSlowest");

}  // namespace
