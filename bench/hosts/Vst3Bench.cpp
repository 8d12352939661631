// What the VST3 adapter costs: a block of Echolan through it, beside the bare plug-in. Items are frames.

#include <vector>

#include "bench/Calibrated.h"
#include "hosts/bridge/Plugin.h"
#include "hosts/builtin/BuiltInPlugins.h"
#include "hosts/vst3/Classes.h"
#include "hosts/vst3/Instance.h"

namespace {

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

void Vst3BareEcholan(benchmark::State& state) {
  const auto frames = static_cast<int32_t>(state.range(0));
  bridge::Plugin effect(bridge::FindPlugin(builtin::GetPlugins(), "Echolan")->entryPoint);
  effect.Prepare(2, kRate);
  Noise in(frames), out(frames);
  Calibrate(state);
  for (auto _ : state) effect.Process(in.addresses, out.addresses, frames);
  state.SetItemsProcessed(state.iterations() * frames);
}
BENCHMARK(Vst3BareEcholan)->Arg(64)->Arg(1024);

void Vst3Echolan(benchmark::State& state) {
  const auto frames = static_cast<int32_t>(state.range(0));
  auto* const instance = new vst3::Instance(vst3::GetClasses()[0]);
  v3_process_setup setup = {V3_REALTIME, V3_SAMPLE_32, frames, double(kRate)};
  instance->SetupProcessing(&setup);
  instance->SetActive(true);
  Noise from(frames), to(frames);
  v3_audio_bus_buffers in = {2, 0, {from.addresses}}, out = {2, 0, {to.addresses}};
  v3_process_data data = {};
  data.nframes = frames;
  data.num_input_buses = data.num_output_buses = 1;
  data.inputs = &in;
  data.outputs = &out;
  Calibrate(state);
  for (auto _ : state) instance->Process(&data);
  state.SetItemsProcessed(state.iterations() * frames);
  instance->Terminate();
  instance->Unref();
}
BENCHMARK(Vst3Echolan)->Arg(64)->Arg(1024);

}  // namespace
