#include <memory>

#include "bench/effects/EffectBench.h"

namespace {

// A zigzag of `segments` bent segments of one type; none is the identity.
std::unique_ptr<EffectBench> Make(int32_t segments, const char* type = "Mode 2") {
  auto effect = std::make_unique<EffectBench>("Bendform");
  if (segments == 0) return effect;
  MXMLItem state("state");
  MXMLItem& graph = state.AddSubItem("graph");
  for (int32_t i = 0; i <= segments; ++i) {
    MXMLItem& point = graph.AddSubItem("Point");
    point.SetAttribute("x", MString::FromDouble(i / static_cast<double>(segments), 6));
    point.SetAttribute("y", MString::FromDouble(i % 2 == 0 ? 0.2 : 0.9, 4));
    point.SetAttribute("c", MString::FromDouble(0.5, 4));
    point.SetAttribute("Type", MString::Literal(type));
  }
  effect->Load(state);
  return effect;
}

void Bendform(benchmark::State& state, int32_t segments, const char* type) {
  Make(segments, type)->Run(state);
}
BENCHMARK_CAPTURE(Bendform, identity, 0, "")->Name("Bendform")->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK_CAPTURE(Bendform, one, 1, "Mode 2")->Name("BendformBent")->Arg(256);
BENCHMARK_CAPTURE(Bendform, six, 6, "Mode 2")->Name("BendformSixSegments")->Arg(256);
BENCHMARK_CAPTURE(Bendform, ellipse, 2, "Mode 3")->Name("BendformSuperEllipse")->Arg(256);

void BendformDecay(benchmark::State& state) {
  Make(6)->RunDecay(state);
}
BENCHMARK(BendformDecay)->Arg(256);

void BendformUpdate(benchmark::State& state) {
  Make(0)->RunUpdate(state, "Depth", 0.4, 0.5);
}
BENCHMARK(BendformUpdate);

void BendformUpdateCurve(benchmark::State& state) {
  Make(20, "Mode 3")->RunUpdate(state, "Depth", 0.4, 0.5);
}
BENCHMARK(BendformUpdateCurve);

}  // namespace
