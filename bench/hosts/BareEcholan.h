#pragma once
// What the benchmarks of the adapters share: a block of noise in stereo, and the plug-in by itself.

#include <vector>

#include "bench/Calibrated.h"
#include "hosts/bridge/Plugin.h"
#include "hosts/builtin/BuiltInPlugins.h"

constexpr int32_t kRate = 48000;

struct Noise {
  explicit Noise(int32_t frames) {
    uint32_t seed = 1;
    for (int32_t c = 0; c < 2; ++c) {
      for (int32_t i = 0; i < frames; ++i) {
        seed = seed * 1664525u + 1013904223u;
        channels[c].push_back(static_cast<float>(static_cast<int32_t>(seed)) * 0x1p-32f);
      }
      addresses[c] = channels[c].data();
    }
  }

  std::vector<float> channels[2];
  float* addresses[2];
};

inline const bridge::PluginType& GetEcholan() {
  return *bridge::FindPlugin(builtin::GetPlugins(), "Echolan");
}

// Blocks of as many frames as the benchmark's argument says. Items are frames.
inline void RunBareEcholan(benchmark::State& state) {
  const auto frames = static_cast<int32_t>(state.range(0));
  bridge::Plugin effect(GetEcholan().entryPoint);
  effect.Prepare(2, kRate);
  Noise in(frames), out(frames);
  Calibrate(state);
  for (auto _ : state) effect.Process(in.addresses, out.addresses, frames);
  state.SetItemsProcessed(state.iterations() * frames);
}
