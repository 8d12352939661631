// What the bridge of the DAW formats costs: a block of Echolan through it, beside the bare plug-in. Items are
// frames.

#include <random>
#include <vector>

#include "bench/Calibrated.h"
#include "exports/PluginEntries.h"
#include "hosts/bridge/NoClient.h"

namespace {

constexpr int32_t kRate = 48000;

// A second of noise in stereo, so that blocks do not repeat each other.
struct Signal {
  Signal() : samples(2 * kRate) {
    std::minstd_rand noise;
    for (float& sample : samples) sample = static_cast<float>(noise()) / 4294967296.0f - 0.25f;
  }
  float* GetLeft() { return samples.data(); }
  float* GetRight() { return samples.data() + kRate; }

  std::vector<float> samples;
};

const bridge::PluginType& GetEcholan() {
  static const bridge::PluginType type = {"Echolan", bridge::PluginKind::kEffect, "", "",
                                          kPluginEntries[0].entryPoint};
  return type;
}

template <typename Block>
void RunBlocks(benchmark::State& state, Block block) {
  const auto frames = static_cast<int32_t>(state.range(0));
  Signal signal, out;
  int32_t place = 0;
  for (auto _ : state) {
    const float* const in[] = {signal.GetLeft() + place, signal.GetRight() + place};
    float* const to[] = {out.GetLeft() + place, out.GetRight() + place};
    block(in, to, frames);
    place = place + 2 * frames <= kRate ? place + frames : 0;
  }
  state.SetItemsProcessed(state.iterations() * frames);
}

void BareEcholan(benchmark::State& state) {
  Calibrate(state);
  bridge::Plugin plugin(GetEcholan().entryPoint);
  plugin.Prepare(2, kRate);
  RunBlocks(state, [&](const float* const* in, float* const* out, int32_t frames) {
    plugin.Process(in, out, frames);
  });
}
BENCHMARK(BareEcholan)->Arg(64)->Arg(256);

void DawEcholan(benchmark::State& state) {
  Calibrate(state);
  bridge::NoClient client;
  bridge::DawPlugin plugin(GetEcholan(), client);
  plugin.Activate(2, kRate, 1024);
  RunBlocks(state, [&](const float* const* in, float* const* out, int32_t frames) {
    plugin.Begin(in, out, frames);
    plugin.End();
  });
}
BENCHMARK(DawEcholan)->Arg(64)->Arg(256);

}  // namespace
