// clap_render MODULE PLUGIN OUT.f32 --rate R --channels C --block N --frames F [--in IN.f32] [--state FILE]
// [--events FILE] [--offline]: renders through the built module as a host of CLAP does. Samples are
// little-endian floats, channel by channel in each frame.

#include <clap/entry.h>
#include <clap/ext/params.h>
#include <clap/ext/state.h>
#include <clap/plugin-factory.h>
#include <dlfcn.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "hosts/bridge/DawParameters.h"
#include "hosts/clap/extensions.h"

namespace {

struct Arguments {
  std::vector<std::string> places;
  std::map<std::string, std::string> options;
  bool isOffline = false;

  uint32_t GetNumber(const std::string& name) const {
    return static_cast<uint32_t>(std::stoul(options.at(name)));
  }
};

Arguments Read(int count, char** words) {
  Arguments arguments;
  for (int i = 1; i < count; ++i) {
    const std::string word = words[i];
    if (word == "--offline")
      arguments.isOffline = true;
    else if (word.rfind("--", 0) != 0)
      arguments.places.push_back(word);
    else if (++i < count)
      arguments.options[word.substr(2)] = words[i];
  }
  if (arguments.places.size() != 3) throw std::runtime_error("MODULE, PLUGIN and OUT.f32 are needed");
  return arguments;
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path + " cannot be read");
  return std::string(std::istreambuf_iterator<char>(file), {});
}

union Event {
  clap_event_header_t header;
  clap_event_param_value_t value;
  clap_event_midi_t midi;
};

template <typename Kind>
Kind Make(uint16_t type) {
  Kind event = {};
  event.header.size = sizeof(Kind);
  event.header.type = type;
  return event;
}

// Sorted by their frames, which are those of the whole run.
std::vector<Event> ReadEvents(const std::string& path) {
  std::vector<Event> events;
  std::istringstream lines(ReadFile(path));
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    uint32_t frame = 0;
    std::string kind, key;
    Event event = {};
    if (words >> frame >> kind && kind == "set") {
      event.value = Make<clap_event_param_value_t>(CLAP_EVENT_PARAM_VALUE);
      words >> key >> event.value.value;
      event.value.param_id = bridge::MakeParameterId(key);
      event.value.note_id = event.value.port_index = event.value.channel = event.value.key = -1;
    } else {
      int32_t bytes[3] = {};
      event.midi = Make<clap_event_midi_t>(CLAP_EVENT_MIDI);
      words >> std::setbase(0) >> bytes[0] >> bytes[1] >> bytes[2];  // also 0x90
      for (int32_t i = 0; i < 3; ++i) event.midi.data[i] = static_cast<uint8_t>(bytes[i]);
    }
    if (!words) throw std::runtime_error(path + ": \"" + line + "\" is no event");
    event.header.time = frame;
    events.push_back(event);
  }
  return events;
}

std::atomic<bool> isCallbackAsked = false;

const clap_host_t kHost = {CLAP_VERSION_INIT,
                           nullptr,
                           "clap_render",
                           "Sonvelle",
                           "",
                           "1",
                           [](const clap_host_t*, const char*) -> const void* { return nullptr; },
                           [](const clap_host_t*) {},
                           [](const clap_host_t*) {},
                           [](const clap_host_t*) { isCallbackAsked = true; }};

const clap_plugin_t* Open(const std::string& module, const std::string& name) {
  void* const library = dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library) throw std::runtime_error(dlerror());
  const auto* const entry = static_cast<const clap_plugin_entry_t*>(dlsym(library, "clap_entry"));
  if (!entry || !entry->init(module.c_str())) throw std::runtime_error(module + " does not start");
  const auto* const factory =
      static_cast<const clap_plugin_factory_t*>(entry->get_factory(CLAP_PLUGIN_FACTORY_ID));
  for (uint32_t i = 0; i < factory->get_plugin_count(factory); ++i) {
    const clap_plugin_descriptor_t& each = *factory->get_plugin_descriptor(factory, i);
    if (each.name != name) continue;
    const clap_plugin_t* const plugin = factory->create_plugin(factory, &kHost, each.id);
    if (plugin && plugin->init(plugin)) return plugin;
  }
  throw std::runtime_error("there is no plug-in " + name);
}

template <typename Extension>
const Extension& Find(const clap_plugin_t* plugin, const char* id) {
  return *static_cast<const Extension*>(plugin->get_extension(plugin, id));
}

void Prepare(const clap_plugin_t* plugin, const Arguments& arguments) {
  if (arguments.options.count("state")) {
    std::istringstream text(ReadFile(arguments.options.at("state")));
    const clap_istream_t stream = {&text, [](const clap_istream_t* self, void* bytes, uint64_t size) {
                                     auto& from = *static_cast<std::istringstream*>(self->ctx);
                                     from.read(static_cast<char*>(bytes), static_cast<std::streamsize>(size));
                                     return static_cast<int64_t>(from.gcount());
                                   }};
    if (!Find<clap_plugin_state_t>(plugin, CLAP_EXT_STATE).load(plugin, &stream))
      throw std::runtime_error("the state is refused");
  }
  Find<sonvelle_clap_plugin_render_t>(plugin, SONVELLE_CLAP_EXT_RENDER)
      .set(plugin, arguments.isOffline ? SONVELLE_CLAP_RENDER_OFFLINE : SONVELLE_CLAP_RENDER_REALTIME);
  const auto& choices =
      Find<sonvelle_clap_plugin_audio_ports_config_t>(plugin, SONVELLE_CLAP_EXT_AUDIO_PORTS_CONFIG);
  sonvelle_clap_audio_ports_config_t choice = {};
  for (uint32_t i = 0; choice.main_output_channel_count != arguments.GetNumber("channels"); ++i)
    if (!choices.get(plugin, i, &choice)) throw std::runtime_error("there are no ports of so many channels");
  if (!choices.select(plugin, choice.id) ||
      !plugin->activate(plugin, arguments.GetNumber("rate"), 1, arguments.GetNumber("block")) ||
      !plugin->start_processing(plugin))
    throw std::runtime_error("the format is refused");
}

struct BlockEvents {
  std::vector<Event> all;
  std::size_t first = 0, count = 0;  // of the block
};

// Renders one block: `samples` are interleaved.
void RenderBlock(const clap_plugin_t* plugin, float* samples, uint32_t channels, uint32_t start,
                 uint32_t frames, BlockEvents& events) {
  std::vector<float> planes(std::size_t{channels} * frames);
  std::vector<float*> addresses;
  for (uint32_t c = 0; c < channels; ++c) {
    addresses.push_back(planes.data() + std::size_t{c} * frames);
    for (uint32_t i = 0; i < frames; ++i) addresses[c][i] = samples[std::size_t{i} * channels + c];
  }
  events.first += events.count;
  for (events.count = 0; events.first + events.count < events.all.size(); ++events.count) {
    clap_event_header_t& each = events.all[events.first + events.count].header;
    if (each.time >= start + frames) break;
    each.time -= start;
  }
  const clap_input_events_t list = {
      &events,
      [](const clap_input_events_t* self) {
        return static_cast<uint32_t>(static_cast<BlockEvents*>(self->ctx)->count);
      },
      [](const clap_input_events_t* self, uint32_t index) -> const clap_event_header_t* {
        auto& from = *static_cast<BlockEvents*>(self->ctx);
        return &from.all[from.first + index].header;
      }};
  const clap_audio_buffer_t in = {addresses.data(), nullptr, channels, 0, 0};
  clap_audio_buffer_t out = in;
  const uint32_t inputs = plugin->get_extension(plugin, "clap.note-ports") ? 0 : 1;
  const clap_process_t block = {start, frames, nullptr, &in, &out, inputs, 1, &list, nullptr};
  if (plugin->process(plugin, &block) == CLAP_PROCESS_ERROR) throw std::runtime_error("a block fails");
  if (isCallbackAsked.exchange(false)) plugin->on_main_thread(plugin);
  for (uint32_t c = 0; c < channels; ++c)
    for (uint32_t i = 0; i < frames; ++i) samples[std::size_t{i} * channels + c] = addresses[c][i];
}

void Render(const Arguments& arguments) {
  const clap_plugin_t* const plugin = Open(arguments.places[0], arguments.places[1]);
  Prepare(plugin, arguments);
  const uint32_t channels = arguments.GetNumber("channels"), frames = arguments.GetNumber("frames");
  std::vector<float> samples(std::size_t{channels} * frames);
  if (arguments.options.count("in")) {
    const std::string bytes = ReadFile(arguments.options.at("in"));
    std::memcpy(samples.data(), bytes.data(), std::min(bytes.size(), samples.size() * sizeof(float)));
  }
  BlockEvents events;
  if (arguments.options.count("events")) events.all = ReadEvents(arguments.options.at("events"));
  const uint32_t most = arguments.GetNumber("block");
  for (uint32_t start = 0; start < frames; start += most)
    RenderBlock(plugin, samples.data() + std::size_t{start} * channels, channels, start,
                std::min(most, frames - start), events);
  plugin->stop_processing(plugin);
  plugin->deactivate(plugin);
  plugin->destroy(plugin);
  std::ofstream out(arguments.places[2], std::ios::binary);
  out.write(reinterpret_cast<const char*>(samples.data()),
            static_cast<std::streamsize>(samples.size() * sizeof(float)));
  if (!out.flush()) throw std::runtime_error(arguments.places[2] + " cannot be written");
}

}  // namespace

int main(int count, char** words) try {
  Render(Read(count, words));
  return 0;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "clap_render: %s\n", failure.what());
  return 1;
}
