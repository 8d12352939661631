// The command on ten minutes of stereo, beside reading the same file and writing as much in the same format.

#include <sndfile.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/Calibrated.h"

namespace {

constexpr int kRate = 48000;
constexpr sf_count_t kFrames = sf_count_t{kRate} * 600;
constexpr sf_count_t kChunk = 16384;

// A folder with the input, removed at the end.
class Folder {
 public:
  Folder() : path_(std::filesystem::temp_directory_path() / "sonvelle-render-bench") {
    std::filesystem::create_directories(path_);
    SF_INFO info = {0, kRate, 2, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 0, 0};
    SNDFILE* const file = sf_open(In().c_str(), SFM_WRITE, &info);
    std::vector<float> chunk(2 * kChunk);
    uint32_t seed = 1;
    for (sf_count_t done = 0; done < kFrames; done += kChunk) {
      for (float& sample : chunk) {
        seed = seed * 1664525u + 1013904223u;
        sample = static_cast<float>(seed) / 8589934592.0f - 0.25f;
      }
      sf_writef_float(file, chunk.data(), std::min(kChunk, kFrames - done));
    }
    sf_close(file);
  }
  ~Folder() { std::filesystem::remove_all(path_); }
  std::string In() const { return path_ / "in.wav"; }
  std::string Out() const { return path_ / "out.wav"; }
  std::string Data() const { return path_ / "data"; }

 private:
  std::filesystem::path path_;
};

const Folder& TheFolder() {
  static const Folder folder;
  return folder;
}

void RenderTenMinutes(benchmark::State& state) {
  Calibrate(state);
  const Folder& folder = TheFolder();
  const std::string command = "XDG_DATA_HOME=" + folder.Data() + " " SONVELLE_COMMAND " render Echolan " +
                              folder.In() + " " + folder.Out() + " 2>/dev/null";
  for (auto _ : state)
    if (std::system(command.c_str()) != 0) state.SkipWithError("the command failed");
}
BENCHMARK(RenderTenMinutes)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

void ReadWriteTenMinutes(benchmark::State& state) {
  Calibrate(state);
  const Folder& folder = TheFolder();
  for (auto _ : state) {
    SF_INFO info = {};
    SNDFILE* const in = sf_open(folder.In().c_str(), SFM_READ, &info);
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    SNDFILE* const out = sf_open(folder.Out().c_str(), SFM_WRITE, &info);
    std::vector<float> chunk(2 * kChunk);
    sf_count_t frames = 0, read;
    while ((read = sf_readf_float(in, chunk.data(), kChunk)) > 0)
      frames += sf_writef_float(out, chunk.data(), read);
    sf_close(in);
    sf_close(out);
    if (frames != kFrames) state.SkipWithError("not all was written");
  }
}
BENCHMARK(ReadWriteTenMinutes)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
