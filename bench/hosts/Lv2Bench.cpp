// What the LV2 adapter costs: a block of Echolan through it, beside the bare plug-in. Items are frames.

#include <lv2/core/lv2.h>
#include <lv2/urid/urid.h>

#include <map>
#include <string>
#include <vector>

#include "bench/hosts/BareEcholan.h"
#include "hosts/bridge/NoClient.h"
#include "hosts/lv2/PortScale.h"
#include "hosts/lv2/Ports.h"
#include "hosts/lv2/Uris.h"

namespace {

// An instance of Echolan with all ports connected.
class Host {
 public:
  explicit Host(int32_t frames) : in_(frames), out_(frames) {
    const LV2_Feature map = {LV2_URID__map, &map_};
    const LV2_Feature* const features[] = {&map, nullptr};
    for (uint32_t i = 0; (descriptor_ = lv2_descriptor(i))->URI != lv2::GetUri(GetEcholan());) ++i;
    handle_ = descriptor_->instantiate(descriptor_, kRate, "/nowhere", features);
    bridge::NoClient client;
    const bridge::DawPlugin plugin(GetEcholan(), client);
    const std::vector<lv2::Port> ports = lv2::MakePorts(GetEcholan(), plugin.GetParameters());
    values_.resize(ports.size());
    for (std::size_t i = 0; i < ports.size(); ++i) Connect(i, ports[i], plugin.GetParameters());
    descriptor_->activate(handle_);
  }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;
  ~Host() {
    descriptor_->deactivate(handle_);
    descriptor_->cleanup(handle_);
  }

  void Run(uint32_t frames) { descriptor_->run(handle_, frames); }

 private:
  void Connect(std::size_t index, const lv2::Port& port, std::span<const bridge::DawParameter> parameters) {
    const auto place = static_cast<std::size_t>(port.place);
    void* data = &values_[index];
    if (port.role == lv2::PortRole::kIn) data = in_.addresses[place];
    if (port.role == lv2::PortRole::kOut) data = out_.addresses[place];
    if (port.role == lv2::PortRole::kControl)
      values_[index] =
          lv2::PortScale(parameters[place]).ToPort(bridge::GetRange(*parameters[place].row).defaultValue);
    descriptor_->connect_port(handle_, static_cast<uint32_t>(index), data);
  }

  std::map<std::string, LV2_URID> numbers_;
  LV2_URID_Map map_ = {this, [](void* self, const char* uri) {
                         auto& numbers = static_cast<Host*>(self)->numbers_;
                         return numbers.try_emplace(uri, uint32_t(numbers.size() + 1)).first->second;
                       }};
  Noise in_, out_;
  std::vector<float> values_;
  const LV2_Descriptor* descriptor_ = nullptr;
  LV2_Handle handle_ = nullptr;
};

BENCHMARK(RunBareEcholan)->Name("Lv2BareEcholan")->Arg(64)->Arg(1024);

void Lv2Echolan(benchmark::State& state) {
  const auto frames = static_cast<int32_t>(state.range(0));
  Host host(frames);
  Calibrate(state);
  for (auto _ : state) host.Run(static_cast<uint32_t>(frames));
  state.SetItemsProcessed(state.iterations() * frames);
}
BENCHMARK(Lv2Echolan)->Arg(64)->Arg(1024);

}  // namespace
