// Blocks of all plug-ins without a system call.

#include "tests/common/SystemCallWatch.h"
#include "tests/hosts/vst3/AllPlugins.h"

namespace {

using host::HostedPlugin;
using host::Planes;

constexpr int32_t kFrames = 128;

class Vst3SystemCalls : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Plugins, Vst3SystemCalls, testing::ValuesIn(host::GetAll()), host::NameTest);

// One queue for each parameter, and one for the bypass behind them; a block gets one of them.
std::vector<host::Changes> MakeChanges(const HostedPlugin& plugin) {
  std::vector<v3_param_id> ids;
  v3_param_id bypass = 0;
  for (const v3_param_info& info : host::GetAutomatable(plugin)) ids.push_back(info.param_id);
  for (const v3_param_info& info : plugin.GetParameters())
    if (info.flags & V3_PARAM_IS_BYPASS) bypass = info.param_id;
  ids.push_back(bypass);
  std::vector<host::Changes> list(ids.size());
  for (std::size_t i = 0; i < ids.size(); ++i) list[i].Add(ids[i], {{0, 0}});
  return list;
}

TEST_P(Vst3SystemCalls, AreNotMadeByBlocksWithChanges) {
  HostedPlugin plugin(GetParam());
  if (plugin.IsInstrument()) return;  // notes allocate
  plugin.Start({2, 48000, kFrames});
  Planes samples = host::MakeNoise(2, kFrames);
  std::vector<host::Changes> list = MakeChanges(plugin);
  const auto run = [&](int32_t index) {
    const bool isBypass = index % 20 == 19;
    host::Changes& changes =
        isBypass ? list.back()
                 : list[static_cast<std::size_t>(index) % std::max<std::size_t>(list.size() - 1, 1)];
    changes.queues[0].points[0] = {index % kFrames, isBypass ? index / 20 % 2 : 0.1 * (index / 20 % 11)};
    plugin.Process(samples, 0, kFrames, &changes);
  };
  for (int32_t i = 0; i < 4; ++i) run(i);
  EXPECT_FALSE(MakesSystemCalls([&] {
    for (int32_t i = 0; i < 300; ++i) run(i);
  }));
}

TEST_P(Vst3SystemCalls, AreNotMadeBetweenNotes) {
  HostedPlugin plugin(GetParam());
  if (!plugin.IsInstrument()) return;
  plugin.Start({2, 48000, kFrames});
  Planes samples = host::MakeNoise(2, kFrames);
  host::Events notes;
  notes.Press(0, 60, 1);
  plugin.Process(samples, 0, kFrames, nullptr, &notes);
  EXPECT_FALSE(MakesSystemCalls([&] {
    for (int32_t i = 0; i < 20; ++i) plugin.Process(samples, 0, kFrames);
  }));
}

}  // namespace
