// Blocks of all plug-ins without a system call.

#include "tests/common/SystemCallWatch.h"
#include "tests/hosts/lv2/Lv2Test.h"

namespace {

constexpr uint32_t kFrames = 128;

class Lv2SystemCalls : public Lv2Test {
 protected:
  // The ports of the controls, of which the bypass is the last, and the ends of their ranges.
  struct Knob {
    float* value;
    float from, to;
  };
  static std::vector<Knob> FindKnobs(Lv2Host& host, const bridge::PluginType& type) {
    NoClient client;
    const bridge::DawPlugin plugin(type, client);
    std::vector<Knob> knobs;
    for (const lv2::Port& port : host.GetPorts()) {
      if (port.role != lv2::PortRole::kControl) continue;
      const bridge::DawParameter& parameter = plugin.GetParameters()[static_cast<std::size_t>(port.place)];
      const lv2::PortScale scale(parameter);
      const bridge::ParameterRange range = bridge::GetRange(*parameter.row);
      knobs.push_back({&host.Control(port.symbol), scale.ToPort(range.minimum), scale.ToPort(range.maximum)});
    }
    return knobs;
  }
};

// Controls change in front of a block.
TEST_F(Lv2SystemCalls, AreNotMadeByBlocksWithChanges) {
  for (const bridge::PluginType& type : builtin::GetPlugins()) {
    if (type.kind != bridge::PluginKind::kEffect) continue;
    SCOPED_TRACE(type.name);
    const auto host = Make(type.name, {.work = Work::kRefused});
    const std::vector<Knob> knobs = FindKnobs(*host, type);
    Fill(host->inLeft, 0.1f);
    Fill(host->inRight, 0.23f);
    const auto run = [&](std::size_t index) {
      const bool isBypass = index % 20 == 19;
      const Knob& knob = isBypass ? knobs.back() : knobs[index % std::max<std::size_t>(knobs.size() - 1, 1)];
      const float part =
          isBypass ? static_cast<float>(index / 20 % 2) : 0.1f * static_cast<float>(index / 20 % 11);
      *knob.value = knob.from + part * (knob.to - knob.from);
      host->Run(kFrames);
    };
    for (std::size_t i = 0; i < 4; ++i) run(i);
    EXPECT_FALSE(MakesSystemCalls([&] {
      for (std::size_t i = 0; i < 300; ++i) run(i);
    }));
  }
}

TEST_F(Lv2SystemCalls, AreNotMadeBetweenNotes) {
  for (const bridge::PluginType& type : builtin::GetPlugins()) {
    if (type.kind != bridge::PluginKind::kInstrument) continue;
    SCOPED_TRACE(type.name);
    const auto host = Make(type.name);
    host->AddMidi(0, {0x90, 60, 127});
    host->Run(kFrames);
    EXPECT_FALSE(MakesSystemCalls([&] {
      for (int32_t i = 0; i < 20; ++i) host->Run(kFrames);
    }));
  }
}

}  // namespace
