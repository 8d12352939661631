// One voice of Layerbox with stereo tracks, and the opening of a large multisample.

#include <vector>

#include "audiofiles/MMultiSample.h"
#include "bench/instruments/BenchFolder.h"
#include "bench/instruments/StreamBench.h"
#include "tests/audiofiles/MultiSampleInTest.h"

namespace {

constexpr int32_t kLength = 2 * 48000;  // what is read at once

void Play(benchmark::State& state, std::size_t tracks, int32_t rate, double pan) {
  const BenchFolder folder;
  MultiSampleInTest file;
  file.rate = rate;
  file.tracks.assign(tracks, "<track name=\"t\" volume=\"0.8\" pan=\"" + std::to_string(pan) + "\"/>");
  std::vector<float> samples;
  for (int32_t i = 0; i < 2 * kLength; ++i) samples.push_back(static_cast<float>(i % 997) / 997 - 0.5f);
  TrackInTest track = TrackInTest::Of(samples);
  track.channels = 2;
  track.length = kLength;
  file.takes = {{1, 0, std::vector<TrackInTest>(tracks, track)}};
  folder.Write("MultiSamples/a", file.Make());
  StreamBench layerbox("Layerbox");
  MXMLItem item("state");
  item.SetAttribute("filename", "a");
  layerbox.Load(item);
  layerbox.Run(state);
}

void Layerbox(benchmark::State& state, int32_t rate, double pan) {
  Play(state, 2, rate, pan);
}
BENCHMARK_CAPTURE(Layerbox, straight, 48000, 0)->Name("Layerbox")->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK_CAPTURE(Layerbox, panned, 48000, 0.3)->Name("LayerboxPanned")->Arg(256);
BENCHMARK_CAPTURE(Layerbox, resampled, 44100, 0)->Name("LayerboxResampled")->Arg(256);

void LayerboxSixteen(benchmark::State& state) {
  Play(state, 16, 48000, 0);
}
BENCHMARK(LayerboxSixteen)->Arg(256);

// 1 GB of stereo samples of 24 bits: 64 layers of two takes with two tracks each. The file has no bytes on
// the disk but its index, so this is what the library does; the beginnings are read, a tenth of the whole.
void MultiSampleOpen(benchmark::State& state) {
  const BenchFolder folder;
  constexpr int64_t kBytes = int64_t{1} << 30, kTracks = 256, kTrackBytes = kBytes / kTracks / 6 * 6;
  std::string index = "<multisample samplerate=\"48000\"><track name=\"a\"/><track name=\"b\"/>";
  for (int64_t i = 0; i < kTracks; ++i) {
    const std::string length = std::to_string(kTrackBytes / 6);
    if (i % 2 == 0)
      index += "<sample length=\"" + length + "\" rms=\"" + std::to_string(i + 1) +
               "\" maxrmsindex=\"0\" group=\"" + std::to_string(i / 4) + "\">";
    index += "<file channels=\"2\" length=\"" + length + "\" bps=\"24\" filestart=\"" +
             std::to_string(i * kTrackBytes) + "\" filesize=\"" + std::to_string(kTrackBytes) + "\"/>";
    if (i % 2 == 1) index += "</sample>";
  }
  const std::string end = LargeFile(index + "</multisample>", "", 0);
  const std::string path = folder.Write("MultiSamples/large", "");
  std::filesystem::resize_file(path, kBytes);
  std::ofstream(path, std::ios::binary | std::ios::app) << end;
  for (auto _ : state) {
    const MMultiSample multiSample(MString::FromNarrow(path.c_str()), MMultiSample::kNoLimit, false);
    benchmark::DoNotOptimize(multiSample.GetLongest());
  }
}
BENCHMARK(MultiSampleOpen)->Unit(benchmark::kMillisecond);

}  // namespace
