// Half a minute of stereo out of a file, beside reading it with libsndfile and libmpg123. Items are frames.

#include <mpg123.h>
#include <sndfile.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "audiofiles/MSampleFile.h"
#include "bench/Calibrated.h"
#include "core/MPath.h"

namespace {

constexpr int kRate = 44100;
constexpr sf_count_t kFrames = sf_count_t{kRate} * 30;

// A folder with the files, removed at the end.
class Folder {
 public:
  Folder() : path_(std::filesystem::temp_directory_path() / "sonvelle-sample-bench") {
    std::filesystem::create_directories(path_);
    Write("16.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    Write("24.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24);
    Write("float.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    Write("cbr.mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III);
  }
  ~Folder() { std::filesystem::remove_all(path_); }
  std::string Path(const char* name) const { return path_ / name; }

 private:
  void Write(const char* name, int format) const {
    SF_INFO info = {0, kRate, 2, format, 0, 0};
    SNDFILE* const file = sf_open(Path(name).c_str(), SFM_WRITE, &info);
    if (!file) std::abort();
    std::vector<float> samples(static_cast<std::size_t>(2 * kFrames));
    uint32_t seed = 1;
    for (std::size_t i = 0; i < samples.size(); ++i) {
      seed = seed * 1664525u + 1013904223u;
      samples[i] = static_cast<float>(0.4 * std::sin(static_cast<double>(i) * 0.031) +
                                      static_cast<double>(seed) / 4294967296.0 * 0.2);
    }
    sf_writef_float(file, samples.data(), kFrames);
    sf_close(file);
  }

  std::filesystem::path path_;
};

const Folder& TheFolder() {
  static const Folder folder;
  return folder;
}

void LoadFile(benchmark::State& state, const char* name) {
  const std::string file = TheFolder().Path(name);
  MString path;
  MDecodePath(file.c_str(), path);
  Calibrate(state);
  for (auto _ : state) {
    MAudioBuffer buffer;
    LoadSamples(buffer, path);
    if (buffer.GetLength() < kFrames) state.SkipWithError("short");
    benchmark::DoNotOptimize(buffer.GetChannel(0));
  }
  state.SetItemsProcessed(state.iterations() * kFrames);
}
BENCHMARK_CAPTURE(LoadFile, 16, "16.wav")->Name("LoadWAV16");
BENCHMARK_CAPTURE(LoadFile, 24, "24.wav")->Name("LoadWAV24");
BENCHMARK_CAPTURE(LoadFile, 32, "float.wav")->Name("LoadWAVFloat");
BENCHMARK_CAPTURE(LoadFile, mp3, "cbr.mp3")->Name("LoadMPEG");

// Interleaved, into memory of the right size.
void SndfileRead(benchmark::State& state, const char* name) {
  const std::string path = TheFolder().Path(name);
  Calibrate(state);
  for (auto _ : state) {
    SF_INFO info = {};
    SNDFILE* const file = sf_open(path.c_str(), SFM_READ, &info);
    std::vector<float> samples(static_cast<std::size_t>(info.frames * info.channels));
    if (sf_readf_float(file, samples.data(), info.frames) != kFrames) state.SkipWithError("short");
    sf_close(file);
    benchmark::DoNotOptimize(samples.data());
  }
  state.SetItemsProcessed(state.iterations() * kFrames);
}
BENCHMARK_CAPTURE(SndfileRead, 16, "16.wav")->Name("SndfileWAV16");
BENCHMARK_CAPTURE(SndfileRead, 24, "24.wav")->Name("SndfileWAV24");
BENCHMARK_CAPTURE(SndfileRead, 32, "float.wav")->Name("SndfileWAVFloat");

// As 16-bit integers into a small buffer, over and over: nothing but the decoding.
void Mpg123Decode(benchmark::State& state) {
  const std::string path = TheFolder().Path("cbr.mp3");
  std::vector<unsigned char> buffer(1 << 16);
  Calibrate(state);
  for (auto _ : state) {
    mpg123_handle* const handle = mpg123_new(nullptr, nullptr);
    mpg123_param(handle, MPG123_ADD_FLAGS, MPG123_QUIET, 0);
    mpg123_open(handle, path.c_str());
    std::size_t bytes = 0, done = 0;
    int result = MPG123_OK;
    for (; result == MPG123_OK || result == MPG123_NEW_FORMAT; bytes += done)
      result = mpg123_read(handle, buffer.data(), buffer.size(), &done);
    if (bytes < std::size_t{kFrames} * 4) state.SkipWithError("short");
    mpg123_delete(handle);
  }
  state.SetItemsProcessed(state.iterations() * kFrames);
}
BENCHMARK(Mpg123Decode);

}  // namespace
