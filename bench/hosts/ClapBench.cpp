// What the CLAP adapter costs: a block of Echolan through it, beside the plug-in's own services.

#include <clap/entry.h>
#include <clap/plugin-factory.h>

#include "bench/hosts/BareEcholan.h"

namespace {

BENCHMARK(RunBareEcholan)->Name("EcholanServices")->Arg(64)->Arg(1024);

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
