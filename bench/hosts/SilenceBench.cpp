// What an effect costs in a DAW whose thread keeps denormals: under loud noise, and in the minute of silence
// behind it, in which what it remembers fades away. Items are frames.

#include <xmmintrin.h>

#include <random>
#include <span>
#include <string>
#include <vector>

#include "bench/Calibrated.h"
#include "exports/PluginEntries.h"
#include "hosts/bridge/NoClient.h"

namespace {

constexpr int32_t kRate = 48000;
constexpr int32_t kFrames = 256;
constexpr int32_t kLoudBlocks = 4 * kRate / kFrames;
constexpr int32_t kMinute = 60 * kRate / kFrames;  // blocks

class DenormalsKept {
 public:
  DenormalsKept() : before_(_mm_getcsr()) { _mm_setcsr(before_ & ~(kFlushToZero | kDenormalsAreZero)); }
  DenormalsKept(const DenormalsKept&) = delete;
  DenormalsKept& operator=(const DenormalsKept&) = delete;
  ~DenormalsKept() { _mm_setcsr(before_); }

 private:
  static constexpr unsigned kFlushToZero = 0x8000, kDenormalsAreZero = 0x0040;

  const unsigned before_;
};

// An effect as it comes, in stereo.
class Track {
 public:
  explicit Track(const PluginEntry& entry)
      : plugin_({entry.name, bridge::PluginKind::kEffect, "", "", entry.entryPoint}, client_) {
    std::minstd_rand noise;
    for (float& sample : noise_) sample = static_cast<float>(noise()) / 1073741824.0f - 1.0f;
    plugin_.Activate(2, kRate, kFrames);
  }

  void RunLoud() {
    Run(noise_.data() + place_);
    place_ = (place_ + 2 * kFrames) % noise_.size();
  }
  void RunSilent() { Run(zeros_.data()); }

 private:
  void Run(const float* samples) {
    const float* const in[] = {samples, samples + kFrames};
    float* const out[] = {out_.data(), out_.data() + kFrames};
    plugin_.Begin(in, out, kFrames);
    plugin_.End();
  }

  bridge::NoClient client_;
  bridge::DawPlugin plugin_;
  std::vector<float> noise_ = std::vector<float>(2 * kFrames * 128), zeros_ = std::vector<float>(2 * kFrames);
  std::vector<float> out_ = zeros_;
  std::size_t place_ = 0;
};

void RunLoud(benchmark::State& state, const PluginEntry& entry) {
  const DenormalsKept denormals;
  Track track(entry);
  Calibrate(state);
  for (auto _ : state) track.RunLoud();
  state.SetItemsProcessed(state.iterations() * kFrames);
}

void RunSilence(benchmark::State& state, const PluginEntry& entry) {
  const DenormalsKept denormals;
  Track track(entry);
  Calibrate(state);
  for (int32_t i = 0; i < kLoudBlocks; ++i) track.RunLoud();
  for (auto _ : state) track.RunSilent();
  state.SetItemsProcessed(state.iterations() * kFrames);
}

const bool areRegistered = [] {
  for (const PluginEntry& entry : std::span(kPluginEntries, std::size_t(kPluginEntryCount))) {
    if (entry.kind != std::string_view("AudioEffect")) continue;
    const std::string name = entry.name;
    benchmark::RegisterBenchmark(("DawLoud/" + name).c_str(), RunLoud, entry);
    benchmark::RegisterBenchmark(("DawSilence/" + name).c_str(), RunSilence, entry)->Iterations(kMinute);
  }
  return true;
}();

}  // namespace
