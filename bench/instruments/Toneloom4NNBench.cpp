#include "bench/instruments/StreamBench.h"

namespace {

// A chain that is on. A second is what a note of a piece takes.
MXMLItem& AddChain(MXMLItem& state, const char* name, const char* mode = "0") {
  MXMLItem& chain = state.AddSubItem(MString::Literal(name));
  chain.SetAttribute("enabled", "1");
  chain.SetAttribute("length", "1");
  chain.SetAttribute("mixermode", MString::Literal(mode));
  return chain;
}

void AddGlide(MXMLItem& chain) {
  MXMLItem& curve = chain.AddSubItem("frequency");
  for (const auto& [x, y] : {std::pair{"0", "2"}, {"1", "4"}}) {
    MXMLItem& point = curve.AddSubItem("Point");
    point.SetAttribute("x", MString::Literal(x));
    point.SetAttribute("y", MString::Literal(y));
  }
}

void Toneloom(benchmark::State& state) {
  StreamBench("Toneloom4NN").Run(state);
}
BENCHMARK(Toneloom)->Name("Toneloom4NN")->Arg(64)->Arg(256)->Arg(1024);

void ToneloomSecond(benchmark::State& state) {
  StreamBench bench("Toneloom4NN");
  MXMLItem item;
  AddChain(item, "envelope1");
  bench.Load(item);
  bench.Run(state);
}
BENCHMARK(ToneloomSecond)->Name("Toneloom4NNSecond")->Arg(256);

void ToneloomGlide(benchmark::State& state) {
  StreamBench bench("Toneloom4NN");
  MXMLItem item;
  AddGlide(AddChain(item, "envelope1"));
  bench.Load(item);
  bench.Run(state);
}
BENCHMARK(ToneloomGlide)->Name("Toneloom4NNGlide")->Arg(256);

void ToneloomFiltered(benchmark::State& state) {
  StreamBench bench("Toneloom4NN");
  MXMLItem item;
  MXMLItem& chain = AddChain(item, "envelope1");
  chain.SetAttribute("lpenable", "1");
  chain.SetAttribute("hpenable", "1");
  bench.Load(item);
  bench.Run(state);
}
BENCHMARK(ToneloomFiltered)->Name("Toneloom4NNFiltered")->Arg(256);

void ToneloomNoise(benchmark::State& state) {
  StreamBench bench("Toneloom4NN");
  MXMLItem item;
  item.AddSubItem("envelope1").SetAttribute("enabled", "0");
  AddChain(item, "BandPass1");
  bench.Load(item);
  bench.Run(state);
}
BENCHMARK(ToneloomNoise)->Name("Toneloom4NNNoise")->Arg(256);

void ToneloomAll(benchmark::State& state) {
  StreamBench bench("Toneloom4NN");
  MXMLItem item;
  for (const auto& [name, mode] :
       {std::pair{"envelope1", "0"}, {"envelope2", "0"}, {"envelope3", "1"}, {"envelope4", "2"}})
    AddChain(item, name, mode);
  for (const char* const name : {"BandPass1", "BandPass2"}) AddChain(item, name).SetAttribute("pan", "0.5");
  bench.Load(item);
  bench.Run(state);
}
BENCHMARK(ToneloomAll)->Name("Toneloom4NNAll")->Arg(256);

}  // namespace
