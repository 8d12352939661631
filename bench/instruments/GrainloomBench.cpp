// A library as musicians have them: ten bands that cover the spectrum, 30 stereo sounds each, of 4 s. Load
// also reads the 20 sounds that are used; Render makes the sample of them anew. Playing is resampled, with a
// falling envelope.

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "bench/instruments/StreamBench.h"
#include "plugin/SonvelleConfiguration.h"
#include "tests/audiofiles/SubSampleFile.h"

namespace {

constexpr int32_t kLength = 4 * 44100;

SubSampleFile MakeLibrary(int32_t rate) {
  constexpr int32_t kSounds = 30, kFrames = kLength / 4096 + 1;
  constexpr int32_t kEdges[] = {0, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192};
  SubSampleFile file;
  file.rate = rate;
  uint32_t seed = 1;
  for (std::size_t b = 0; b < 10; ++b) {
    file.bands[b] = {kEdges[b], kEdges[b + 1] - kEdges[b], {}};
    for (int32_t s = 0; s < kSounds; ++s) {
      SubSampleFile::Sound sound{kFrames, kLength, 2, {}};
      sound.values.resize(static_cast<std::size_t>(2 * kFrames * file.bands[b].binCount));
      for (float& value : sound.values) {
        seed = seed * 1664525u + 1013904223u;
        value = static_cast<float>(seed) / 4294967296.0f - 0.5f;
      }
      file.bands[b].sounds.push_back(std::move(sound));
    }
  }
  return file;
}

// The configuration, with that library in a folder of its own.
class Content {
 public:
  explicit Content(int32_t rate = 44100)
      : folder_(std::filesystem::temp_directory_path() / ("sonvelle-bench-" + std::to_string(getpid()))) {
    const std::filesystem::path natural = folder_ / "SubSampleLibraries" / "Natural";
    std::filesystem::create_directories(natural);
    std::filesystem::create_directories(folder_ / "Tessaron");
    setenv("XDG_DATA_HOME", folder_.c_str(), 1);
    std::ofstream(folder_ / "Tessaron" / "SonvelleConfiguration.cfg")
        << "<SonvelleCfg GlobalPath=\"" << folder_.string() << "\"/>";
    std::ofstream(natural / "Natural Bass.qxSubSampleLib", std::ios::binary) << MakeLibrary(rate).GetBytes();
    SonvelleConfiguration::Create();
  }
  Content(const Content&) = delete;
  Content& operator=(const Content&) = delete;
  ~Content() {
    SonvelleConfiguration::Destroy();
    std::filesystem::remove_all(folder_);
  }

 private:
  std::filesystem::path folder_;
};

// Between two sounds in each band.
void Load(StreamBench& grainloom) {
  MXMLItem item("state");
  MXMLItem& envelope = item.AddSubItem("envelope");
  for (const char* const place : {"0", "1"}) {
    MXMLItem& point = envelope.AddSubItem("Point");
    point.SetAttribute("x", MString::Literal(place));
    point.SetAttribute("y", MString::Literal(place[0] == '0' ? "1" : "0.1"));
  }
  MXMLItem& generator = item.AddSubItem("generator");
  for (int32_t i = 0; i < 10; ++i) generator.AddSubItem("item").SetAttribute("Index", "14.5");
  grainloom.Load(item);
}

void GrainloomLoad(benchmark::State& state) {
  const Content content;
  StreamBench grainloom("Grainloom");
  Calibrate(state);
  for (auto _ : state) Load(grainloom);
  state.SetItemsProcessed(state.iterations() * kLength);
}
BENCHMARK(GrainloomLoad);

void GrainloomRender(benchmark::State& state) {
  const Content content;
  StreamBench grainloom("Grainloom");
  Load(grainloom);
  MPluginParameter& colorOffset =
      MAsAddress<MPluginPublicBlock>(grainloom.Call(MService::kPublicBlock))->parameters[0];
  Calibrate(state);
  for (auto _ : state) {
    colorOffset.real.value = 0.3 - colorOffset.real.value;
    grainloom.Call(MService::kParameterChanged, 0);
  }
  state.SetItemsProcessed(state.iterations() * kLength);
}
BENCHMARK(GrainloomRender);

void Grainloom(benchmark::State& state, int32_t rate) {
  const Content content(rate);
  StreamBench grainloom("Grainloom");
  Load(grainloom);
  grainloom.Run(state);
}
BENCHMARK_CAPTURE(Grainloom, resampled, 44100)->Name("Grainloom")->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK_CAPTURE(Grainloom, straight, 48000)->Name("GrainloomOwnRate")->Arg(256);

}  // namespace
