#include "tests/hosts/vst3/HostedPlugin.h"

#include <stdexcept>

#include "hosts/vst3/Text.h"

namespace host {

namespace {

v3_plugin_factory** ToFactory(const void* factory) {
  return static_cast<v3_plugin_factory**>(const_cast<void*>(factory));
}

v3_speaker_arrangement MakeArrangement(int32_t channels) {
  return channels == 1 ? v3_speaker_arrangement{V3_SPEAKER_M} : (v3_speaker_arrangement{1} << channels) - 1;
}

void Check(v3_result result, const char* what) {
  if (result != V3_OK) throw std::runtime_error(std::string(what) + " failed");
}

}  // namespace

HostedPlugin::HostedPlugin(const std::string& name, const void* factory) {
  v3_plugin_factory** const f = ToFactory(factory);
  for (int32_t i = 0; i < v3_cpp_obj(f)->num_classes(f); ++i) {
    v3_class_info info = {};
    v3_cpp_obj(f)->get_class_info(f, i, &info);
    if (info.name != name) continue;
    Check(v3_cpp_obj(f)->create_instance(f, info.class_id, v3_component_iid,
                                         reinterpret_cast<void**>(&component)),
          "create_instance");
  }
  v3_cpp_obj_unref(f);
  if (!component) throw std::runtime_error("There is no plug-in " + name);
  processor = Query<v3_audio_processor>(v3_audio_processor_iid);
  controller = Query<v3_edit_controller>(v3_edit_controller_iid);
  Check(v3_cpp_obj_initialize(component, nullptr), "initialize");
  v3_cpp_obj(controller)->set_component_handler(controller, handler.Get());
}

HostedPlugin::~HostedPlugin() {
  v3_cpp_obj_terminate(component);
  v3_cpp_obj_unref(component);
}

bool HostedPlugin::IsInstrument() const {
  return v3_cpp_obj(component)->get_bus_count(component, V3_EVENT, V3_INPUT) == 1;
}

void HostedPlugin::Start(const Setup& setup) {
  setup_ = setup;
  v3_speaker_arrangement in = MakeArrangement(setup.channels), out = in;
  const int32_t inputs = v3_cpp_obj(component)->get_bus_count(component, V3_AUDIO, V3_INPUT);
  Check(v3_cpp_obj(processor)->set_bus_arrangements(processor, &in, inputs, &out, 1), "set_bus_arrangements");
  v3_process_setup process = {setup.isOffline ? V3_OFFLINE : V3_REALTIME, V3_SAMPLE_32, setup.block,
                              setup.rate};
  Check(v3_cpp_obj(processor)->setup_processing(processor, &process), "setup_processing");
  Check(v3_cpp_obj(component)->activate_bus(component, V3_AUDIO, V3_OUTPUT, 0, true), "activate_bus");
  Check(v3_cpp_obj(component)->set_active(component, true), "set_active");
  Check(v3_cpp_obj(processor)->set_processing(processor, true), "set_processing");
}

void HostedPlugin::Stop() {
  Check(v3_cpp_obj(processor)->set_processing(processor, false), "set_processing");
  Check(v3_cpp_obj(component)->set_active(component, false), "set_active");
}

void HostedPlugin::Process(Planes& samples, int32_t start, int32_t frames, Changes* changes, Events* events) {
  float* channels[64] = {};
  for (std::size_t c = 0; c < samples.size(); ++c) channels[c] = samples[c].data() + start;
  v3_audio_bus_buffers bus = {static_cast<int32_t>(samples.size()), 0, {channels}};
  v3_audio_bus_buffers in = bus;
  const int32_t inputs = IsInstrument() ? 0 : 1;
  v3_process_data data = {setup_.isOffline ? V3_OFFLINE : V3_REALTIME,
                          V3_SAMPLE_32,
                          frames,
                          inputs,
                          1,
                          inputs ? &in : nullptr,
                          &bus,
                          changes ? changes->Get() : nullptr,
                          nullptr,
                          events ? events->Get() : nullptr,
                          nullptr,
                          nullptr};
  Check(v3_cpp_obj(processor)->process(processor, &data), "process");
  silence = bus.channel_silence_bitset;
}

void HostedPlugin::Process(Planes& samples) {
  const auto frames = static_cast<int32_t>(samples[0].size());
  for (int32_t start = 0; start < frames; start += setup_.block)
    Process(samples, start, std::min(setup_.block, frames - start));
}

void HostedPlugin::Flush(Changes& changes) {
  v3_process_data data = {};
  data.input_params = changes.Get();
  Check(v3_cpp_obj(processor)->process(processor, &data), "process");
}

std::vector<v3_param_info> HostedPlugin::GetParameters() const {
  std::vector<v3_param_info> list(
      static_cast<std::size_t>(v3_cpp_obj(controller)->get_parameter_count(controller)));
  for (std::size_t i = 0; i < list.size(); ++i)
    Check(v3_cpp_obj(controller)->get_parameter_info(controller, static_cast<int32_t>(i), &list[i]),
          "get_parameter_info");
  return list;
}

double HostedPlugin::Get(v3_param_id id) const {
  return v3_cpp_obj(controller)->get_parameter_normalised(controller, id);
}

v3_result HostedPlugin::Set(v3_param_id id, double normalized) {
  return v3_cpp_obj(controller)->set_parameter_normalised(controller, id, normalized);
}

double HostedPlugin::ToNormalized(v3_param_id id, double plain) const {
  return v3_cpp_obj(controller)->plain_parameter_to_normalised(controller, id, plain);
}

std::string HostedPlugin::GetText(v3_param_id id, double normalized) const {
  v3_str_128 text = {};
  Check(v3_cpp_obj(controller)->get_parameter_string_for_value(controller, id, normalized, text),
        "get_parameter_string_for_value");
  return ToText(text);
}

std::string HostedPlugin::SaveState(int32_t portion) const {
  Stream stream({}, portion);
  Check(v3_cpp_obj(component)->get_state(component, stream.Get()), "get_state");
  return stream.text;
}

v3_result HostedPlugin::LoadState(std::string text, int32_t portion) {
  Stream stream(std::move(text), portion);
  return v3_cpp_obj(component)->set_state(component, stream.Get());
}

std::vector<std::string> GetNames(const void* factory) {
  v3_plugin_factory** const f = ToFactory(factory);
  std::vector<std::string> names;
  for (int32_t i = 0; i < v3_cpp_obj(f)->num_classes(f); ++i) {
    v3_class_info info = {};
    v3_cpp_obj(f)->get_class_info(f, i, &info);
    names.emplace_back(info.name);
  }
  v3_cpp_obj_unref(f);
  return names;
}

std::string ToText(const int16_t* text) {
  return vst3::ReadText(text);
}

Planes MakeNoise(int32_t channels, int32_t frames) {
  Planes planes(static_cast<std::size_t>(channels), std::vector<float>(static_cast<std::size_t>(frames)));
  uint32_t noise = 7;
  for (std::vector<float>& plane : planes)
    for (float& sample : plane) {
      noise = noise * 1664525u + 1013904223u;
      sample = static_cast<float>(static_cast<int32_t>(noise)) * 0x1p-32f;
    }
  return planes;
}

}  // namespace host
