// One voice of Playbox and of Vinylrake, with a stereo sample of five seconds and a falling envelope.

#include "bench/instruments/BenchFolder.h"
#include "bench/instruments/StreamBench.h"

namespace {

template <typename T>
std::string Bytes(T value) {
  return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

// A WAV file of 16 bits.
std::string MakeSample(uint32_t rate) {
  std::string data;
  uint32_t seed = 1;
  for (uint32_t i = 0; i < 2 * 5 * rate; ++i) {
    seed = seed * 1664525u + 1013904223u;
    data += Bytes(static_cast<uint16_t>(seed >> 16));
  }
  const auto size = static_cast<uint32_t>(data.size());
  return "RIFF" + Bytes(36 + size) + "WAVEfmt " + Bytes(16u) + Bytes(uint16_t{1}) + Bytes(uint16_t{2}) +
         Bytes(rate) + Bytes(4 * rate) + Bytes(uint16_t{4}) + Bytes(uint16_t{16}) + "data" + Bytes(size) +
         data;
}

void AddCurve(MXMLItem& state, const char* name, const char* begin, const char* end) {
  MXMLItem& curve = state.AddSubItem(MString::Literal(name));
  for (int32_t i = 0; i < 2; ++i) {
    MXMLItem& point = curve.AddSubItem("Point");
    point.SetAttribute("x", MString::FromInteger(i));
    point.SetAttribute("y", MString::Literal(i == 0 ? begin : end));
  }
}

void Play(benchmark::State& state, const char* name, uint32_t rate, bool hasEnvelope) {
  const BenchFolder folder;
  folder.Write("Samples/a.wav", MakeSample(rate));
  StreamBench instrument(name);
  MXMLItem item("state");
  item.SetAttribute("filename", "a.wav");
  if (hasEnvelope) AddCurve(item, "envelope", "1", "0.1");
  instrument.Load(item);
  instrument.Run(state);
}

void Playbox(benchmark::State& state, uint32_t rate) {
  Play(state, "Playbox", rate, true);
}
BENCHMARK_CAPTURE(Playbox, straight, 48000)->Name("Playbox")->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK_CAPTURE(Playbox, resampled, 44100)->Name("PlayboxResampled")->Arg(64)->Arg(256)->Arg(1024);

void PlayboxPlain(benchmark::State& state) {
  Play(state, "Playbox", 48000, false);
}
BENCHMARK(PlayboxPlain)->Arg(256);

void Vinylrake(benchmark::State& state) {
  Play(state, "Vinylrake", 48000, true);
}
BENCHMARK(Vinylrake)->Arg(64)->Arg(256)->Arg(1024);

}  // namespace
