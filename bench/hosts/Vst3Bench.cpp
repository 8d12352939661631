// What the VST3 adapter costs: a block of Echolan through it, beside the bare plug-in. Items are frames.

#include "bench/hosts/BareEcholan.h"
#include "hosts/vst3/Classes.h"
#include "hosts/vst3/Instance.h"

namespace {

BENCHMARK(RunBareEcholan)->Name("Vst3BareEcholan")->Arg(64)->Arg(1024);

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
