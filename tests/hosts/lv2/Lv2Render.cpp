// lv2_render BUNDLE PLUGIN OUT.f32 --rate R --channels C --block N --frames F [--in IN.f32] [--state FILE]
//   [--events FILE] [--offline]
// Renders a plug-in of the built bundle. Sound files are plain 32-bit floats, channel by channel in each
// frame. Events are lines "FRAME midi STATUS DATA1 DATA2" or "FRAME set KEY VALUE", the value in table units.

#include <dlfcn.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "core/MException.h"
#include "hosts/bridge/NoClient.h"
#include "hosts/builtin/BuiltInPlugins.h"
#include "tests/hosts/lv2/Lv2Host.h"

namespace {

struct Arguments {
  std::string bundle, plugin, output;
  std::map<std::string, std::string> options;

  Arguments(int count, char** words) {
    if (count < 4) throw std::runtime_error("usage: lv2_render BUNDLE PLUGIN OUT.f32 --rate R ...");
    bundle = words[1], plugin = words[2], output = words[3];
    for (int i = 4; i < count; ++i) {
      const std::string name = words[i];
      const bool hasValue = name != "--offline";
      if (hasValue && i + 1 == count) throw std::runtime_error(name + " lacks its value");
      options[name] = hasValue ? words[++i] : "1";
    }
  }
  bool Has(const std::string& name) const { return options.contains(name); }
  uint32_t GetNumber(const std::string& name) const {
    if (!Has(name)) throw std::runtime_error(name + " is missing");
    return static_cast<uint32_t>(std::stoul(options.at(name)));
  }
};

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path + ": it cannot be read");
  return std::string(std::istreambuf_iterator<char>(file), {});
}

const LV2_Descriptor& FindDescriptor(const std::string& bundle, const std::string& uri) {
  void* const module = dlopen((bundle + "/sonvelle-plugins.so").c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!module) throw std::runtime_error(dlerror());
  const auto find = reinterpret_cast<LV2_Descriptor_Function>(dlsym(module, "lv2_descriptor"));
  for (uint32_t i = 0; find && find(i); ++i)
    if (uri == find(i)->URI) return *find(i);
  throw std::runtime_error(uri + ": the bundle has no such plug-in");
}

struct Event {
  int64_t frame = 0;
  std::string kind, first, second, third;
};

std::vector<Event> ReadEvents(const std::string& path) {
  std::vector<Event> events;
  std::istringstream lines(ReadFile(path));
  for (std::string line; std::getline(lines, line);) {
    Event event;
    std::istringstream words(line);
    if (!(words >> event.frame >> event.kind >> event.first >> event.second)) continue;
    words >> event.third;
    events.push_back(event);
  }
  return events;
}

uint8_t ToByte(const std::string& word) {
  return static_cast<uint8_t>(std::stoi(word, nullptr, 0));
}

class Render {
 public:
  explicit Render(const Arguments& arguments)
      : arguments_(arguments),
        type_(FindType(arguments.plugin)),
        values_(type_, client_),
        block_(arguments.GetNumber("--block")),
        host_(FindDescriptor(arguments.bundle, lv2::GetUri(type_)), type_, values_.GetParameters(),
              {static_cast<double>(arguments.GetNumber("--rate")), static_cast<int32_t>(block_),
               Work::kLater}) {
    if (arguments.GetNumber("--channels") != 2) throw std::runtime_error("the plug-ins have two channels");
    if (block_ == 0 || block_ > Lv2Host::kRoom) throw std::runtime_error("--block: no such size");
    if (arguments.Has("--in")) input_ = ReadFile(arguments.options.at("--in"));
    if (arguments.Has("--events")) events_ = ReadEvents(arguments.options.at("--events"));
    if (arguments.Has("--offline") && host_.HasControl("freewheel")) host_.Control("freewheel") = 1;
    if (arguments.Has("--state")) Restore(ReadFile(arguments.options.at("--state")));
  }

  void Write() {
    std::ofstream file(arguments_.output, std::ios::binary);
    const uint32_t frames = arguments_.GetNumber("--frames");
    for (uint32_t start = 0; start < frames; start += block_) {
      const uint32_t count = std::min(block_, frames - start);
      FillInput(start, count);
      Run(start, count);
      for (uint32_t i = 0; i < count; ++i) {
        const float frame[] = {out_[0][i], out_[1][i]};
        file.write(reinterpret_cast<const char*>(frame), sizeof frame);
      }
    }
    if (!file.flush()) throw std::runtime_error(arguments_.output + ": it cannot be written");
  }

 private:
  static const bridge::PluginType& FindType(const std::string& name) {
    const bridge::PluginType* const type = bridge::FindPlugin(builtin::GetPlugins(), name);
    if (!type) throw std::runtime_error(name + ": there is no such plug-in");
    return *type;
  }

  // As a host does: the state, and the ports that it was saved with.
  void Restore(const std::string& text) {
    values_.LoadState(text);
    if (host_.Restore(host_.MakeState(text)) != LV2_STATE_SUCCESS)
      throw std::runtime_error("the state cannot be restored");
    for (std::size_t i = 0; i < values_.GetParameters().size(); ++i)
      SetPort(static_cast<int32_t>(i), values_.GetValue(static_cast<int32_t>(i)));
  }
  void SetPort(int32_t place, double value) {
    for (const lv2::Port& port : host_.GetPorts())
      if (port.role == lv2::PortRole::kControl && port.place == place)
        host_.Control(port.symbol) =
            lv2::PortScale(values_.GetParameters()[static_cast<std::size_t>(place)]).ToPort(value);
  }
  void FillInput(uint32_t start, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
      float frame[2] = {};
      const std::size_t place = (std::size_t{start} + i) * sizeof frame;
      if (place + sizeof frame <= input_.size()) std::memcpy(frame, input_.data() + place, sizeof frame);
      in_[0][i] = frame[0], in_[1][i] = frame[1];
    }
  }
  // A port changes between blocks alone, so the block is run in parts that begin with the changes.
  void Run(uint32_t start, uint32_t count) {
    for (uint32_t done = 0; done < count;) {
      const int64_t now = int64_t{start} + done;
      uint32_t end = count;
      for (; next_ < events_.size() && events_[next_].frame < int64_t{start} + count; ++next_) {
        const Event& event = events_[next_];
        if (event.kind != "set") {
          host_.AddMidi(event.frame - now, {ToByte(event.first), ToByte(event.second), ToByte(event.third)});
        } else if (event.frame <= now) {
          Change(event);
        } else {
          end = static_cast<uint32_t>(event.frame - start);
          break;
        }
      }
      RunPart(done, end - done);
      done = end;
    }
  }
  void RunPart(uint32_t start, uint32_t count) {
    std::copy_n(in_[0].begin() + start, count, host_.inLeft.begin());
    std::copy_n(in_[1].begin() + start, count, host_.inRight.begin());
    host_.Run(count);
    host_.DoWork();
    std::copy_n(host_.outLeft.begin(), count, out_[0].begin() + start);
    std::copy_n(host_.outRight.begin(), count, out_[1].begin() + start);
  }
  void Change(const Event& event) {
    const int32_t place = values_.GetParameterList().Find(std::string_view(event.first));
    if (place < 0) throw std::runtime_error(event.first + ": there is no such parameter");
    SetPort(place, std::stod(event.second));
  }

  const Arguments& arguments_;
  bridge::NoClient client_;
  const bridge::PluginType type_;
  bridge::DawPlugin values_;  // knows the parameters, and what a state says of them
  const uint32_t block_;
  Lv2Host host_;
  std::string input_;
  std::vector<Event> events_;
  std::size_t next_ = 0;
  std::vector<float> in_[2] = {std::vector<float>(Lv2Host::kRoom), std::vector<float>(Lv2Host::kRoom)};
  std::vector<float> out_[2] = {in_[0], in_[1]};
};

}  // namespace

int main(int count, char** words) try {
  Render(Arguments(count, words)).Write();
  return 0;
} catch (const MException& raised) {
  std::cerr << "lv2_render: " << bridge::ToUtf8(raised.message) << "\n";
  return 1;
} catch (const std::exception& raised) {
  std::cerr << "lv2_render: " << raised.what() << "\n";
  return 1;
}
