// What the CLAP adapter costs: a block of Echolan through it, beside the plug-in's own services.

#include <clap/entry.h>
#include <clap/plugin-factory.h>

#include <vector>

#include "bench/Calibrated.h"
#include "hosts/bridge/Plugin.h"
#include "hosts/builtin/BuiltInPlugins.h"

namespace {

constexpr int32_t kRate = 48000;

struct Noise {
  explicit Noise(int32_t frames) {
    uint32_t seed = 1;
    for (int32_t c = 0; c < 2; ++c) {
      std::vector<float>& channel = channels[c];
      for (int32_t i = 0; i < frames; ++i) {
        seed = seed * 1664525u + 1013904223u;
        channel.push_back(static_cast<float>(static_cast<int32_t>(seed)) * 0x1p-32f);
      }
      addresses[c] = channel.data();
    }
  }

  std::vector<float> channels[2];
  float* addresses[2];
};

void EcholanServices(benchmark::State& state) {
  const auto frames = static_cast<int32_t>(state.range(0));
  bridge::Plugin effect(bridge::FindPlugin(builtin::GetPlugins(), "Echolan")->entryPoint);
  effect.Prepare(2, kRate);
  Noise in(frames), out(frames);
  Calibrate(state);
  for (auto _ : state) effect.Process(in.addresses, out.addresses, frames);
  state.SetItemsProcessed(state.iterations() * frames);
}
BENCHMARK(EcholanServices)->Arg(64)->Arg(1024);

void EcholanClap(benchmark::State& state) {
  const auto frames = static_cast<uint32_t>(state.range(0));
  clap_host_t host = {};
  clap_entry.init("");
  const auto* const factory =
      static_cast<const clap_plugin_factory_t*>(clap_entry.get_factory(CLAP_PLUGIN_FACTORY_ID));
  const clap_plugin_t* const plugin = factory->create_plugin(factory, &host, "com.sonvelle.echolan");
  plugin->init(plugin);
  plugin->activate(plugin, kRate, 1, frames);
  plugin->start_processing(plugin);
  Noise from(static_cast<int32_t>(frames)), to(static_cast<int32_t>(frames));
  const clap_audio_buffer_t in = {from.addresses, nullptr, 2, 0, 0};
  clap_audio_buffer_t out = {to.addresses, nullptr, 2, 0, 0};
  const clap_process_t block = {-1, frames, nullptr, &in, &out, 1, 1, nullptr, nullptr};
  Calibrate(state);
  for (auto _ : state) plugin->process(plugin, &block);
  state.SetItemsProcessed(state.iterations() * frames);
  plugin->deactivate(plugin);
  plugin->destroy(plugin);
  clap_entry.deinit();
}
BENCHMARK(EcholanClap)->Arg(64)->Arg(1024);

}  // namespace
