// vst3_render MODULE PLUGIN OUT.f32 --rate R --channels C --block N --frames F [--in IN.f32] [--state FILE]
// [--events FILE] [--offline]: renders with the module as a host does. Samples are little-endian 32-bit
// floats, channel by channel for each frame. A line of events: "FRAME midi STATUS DATA1 DATA2", or
// "FRAME set KEY VALUE" in table units.

#include <dlfcn.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>

#include "hosts/bridge/DawParameters.h"
#include "tests/hosts/vst3/HostedPlugin.h"

namespace {

struct Event {
  int32_t frame = 0;
  std::string kind;
  std::string key;  // of "set"
  double value = 0;
  int32_t status = 0, first = 0, second = 0;
};

struct Arguments {
  std::string module, plugin, out;
  std::map<std::string, std::string> options;

  int32_t GetNumber(const char* name) const {
    const auto found = options.find(name);
    if (found == options.end()) throw std::runtime_error(std::string(name) + " is missing");
    return std::stoi(found->second);
  }
  std::string GetPath(const char* name) const {
    const auto found = options.find(name);
    return found == options.end() ? std::string() : found->second;
  }
};

Arguments ReadArguments(int count, char** values) {
  if (count < 4) throw std::runtime_error("MODULE PLUGIN OUT.f32 are missing");
  Arguments arguments = {values[1], values[2], values[3], {}};
  for (int i = 4; i < count; ++i) {
    const std::string name = values[i];
    if (name == "--offline")
      arguments.options[name] = "yes";
    else if (i + 1 < count)
      arguments.options[name] = values[++i];
    else
      throw std::runtime_error(name + " has no value");
  }
  return arguments;
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path + " cannot be read");
  return std::string(std::istreambuf_iterator<char>(file), {});
}

std::vector<Event> ReadEvents(const std::string& path) {
  std::vector<Event> events;
  std::istringstream lines(path.empty() ? std::string() : ReadFile(path));
  for (std::string line; std::getline(lines, line);) {
    if (line.empty()) continue;
    Event event;
    std::istringstream words(line);
    words >> event.frame >> event.kind;
    if (event.kind == "midi")
      words >> event.status >> event.first >> event.second;
    else if (event.kind == "set")
      words >> event.key >> event.value;
    else
      words.setstate(std::ios::failbit);
    if (words.fail()) throw std::runtime_error(path + ": " + line);
    events.push_back(event);
  }
  return events;
}

host::Planes ReadInput(const std::string& path, std::size_t channels, std::size_t frames) {
  host::Planes planes(channels, std::vector<float>(frames));
  if (path.empty()) return planes;
  const std::string bytes = ReadFile(path);
  if (bytes.size() < channels * frames * sizeof(float)) throw std::runtime_error(path + " is too short");
  for (std::size_t i = 0; i < frames; ++i)
    for (std::size_t c = 0; c < channels; ++c)
      bytes.copy(reinterpret_cast<char*>(&planes[c][i]), sizeof(float), (i * channels + c) * sizeof(float));
  return planes;
}

void WriteOutput(const std::string& path, const host::Planes& planes) {
  std::ofstream file(path, std::ios::binary);
  for (std::size_t i = 0; i < planes[0].size(); ++i)
    for (const std::vector<float>& plane : planes)
      file.write(reinterpret_cast<const char*>(&plane[i]), sizeof(float));
  if (!file.flush()) throw std::runtime_error(path + " cannot be written");
}

// Notes become events, controllers and values points of parameters.
void Add(const host::HostedPlugin& plugin, const Event& event, int32_t frame, host::Changes& changes,
         host::Events& notes) {
  const int32_t channel = event.status & 0x0F;
  switch (event.kind == "midi" ? event.status & 0xF0 : 0) {
    case 0x90:
      return notes.Press(frame, event.first, static_cast<float>(event.second / 127.0), channel);
    case 0x80:
      return notes.Release(frame, event.first, channel);
    case 0xB0: {
      v3_midi_mapping** const mapping = plugin.Query<v3_midi_mapping>(v3_midi_mapping_iid);
      v3_param_id id = 0;
      if (mapping &&
          v3_cpp_obj(mapping)->get_midi_controller_assignment(
              mapping, 0, static_cast<int16_t>(channel), static_cast<int16_t>(event.first), &id) == V3_OK)
        changes.Add(id, {{frame, event.second / 127.0}});
      return;
    }
    case 0: {
      const v3_param_id id = bridge::MakeParameterId(event.key);
      return changes.Add(id, {{frame, plugin.ToNormalized(id, event.value)}});
    }
    default:
      return;
  }
}

// One queue per parameter, as the format has it.
void Join(host::Changes& changes) {
  host::Changes joined;
  for (host::Queue& queue : changes.queues) {
    const auto found = std::find_if(joined.queues.begin(), joined.queues.end(),
                                    [&](const host::Queue& each) { return each.id == queue.id; });
    if (found == joined.queues.end())
      joined.Add(queue.id, queue.points);
    else
      found->points.insert(found->points.end(), queue.points.begin(), queue.points.end());
  }
  changes.queues.swap(joined.queues);
}

void Render(const Arguments& arguments) {
  void* const module = dlopen(arguments.module.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!module) throw std::runtime_error(dlerror());
  auto* const enter = reinterpret_cast<bool (*)(void*)>(dlsym(module, "ModuleEntry"));
  auto* const getFactory = reinterpret_cast<const void* (*)()>(dlsym(module, "GetPluginFactory"));
  if (!enter || !getFactory || !enter(module)) throw std::runtime_error("This is no VST3 module");
  const int32_t block = arguments.GetNumber("--block"), frames = arguments.GetNumber("--frames");
  const int32_t channels = arguments.GetNumber("--channels");
  if (block < 1 || frames < 1 || channels < 1) throw std::runtime_error("There is nothing to render");
  const std::vector<Event> events = ReadEvents(arguments.GetPath("--events"));
  host::Planes samples = ReadInput(arguments.GetPath("--in"), static_cast<std::size_t>(channels),
                                   static_cast<std::size_t>(frames));
  host::HostedPlugin plugin(arguments.plugin, getFactory());
  const std::string state = arguments.GetPath("--state");
  if (!state.empty() && plugin.LoadState(ReadFile(state)) != V3_OK)
    throw std::runtime_error(state + " is refused");
  plugin.Start({channels, static_cast<double>(arguments.GetNumber("--rate")), block,
                arguments.options.contains("--offline")});
  auto event = events.begin();
  for (int32_t start = 0; start < frames; start += block) {
    const int32_t size = std::min(block, frames - start);
    host::Changes changes;
    host::Events notes;
    for (; event != events.end() && event->frame < start + size; ++event)
      Add(plugin, *event, event->frame - start, changes, notes);
    Join(changes);
    plugin.Process(samples, start, size, &changes, &notes);
  }
  plugin.Stop();
  WriteOutput(arguments.out, samples);
}

}  // namespace

int main(int count, char** values) try {
  Render(ReadArguments(count, values));
  return 0;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "vst3_render: %s\n", failure.what());
  return 1;
}
