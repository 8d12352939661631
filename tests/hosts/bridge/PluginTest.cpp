#include "hosts/bridge/Plugin.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "core/MXMLItem.h"
#include "tests/common/Texts.h"
#include "tests/hosts/FakePlugin.h"

using bridge::Plugin;
using testing::ElementsAre;

namespace {

class PluginTest : public testing::Test {
 protected:
  void SetUp() override {
    FakePlugin::notes.clear();
    FakePlugin::raisingService = FakePlugin::kNever;
  }
  void TearDown() override { FakePlugin::raisingService = FakePlugin::kNever; }
};

TEST_F(PluginTest, LivesFromAttachToDestroy) {
  { const Plugin plugin(FakePlugin::EntryPoint); }
  EXPECT_THAT(FakePlugin::notes, ElementsAre("attach", "destroy"));
}

TEST_F(PluginTest, MovesWithoutBeingMadeOrDestroyedAgain) {
  {
    Plugin first(FakePlugin::EntryPoint);
    Plugin second(std::move(first));
    EXPECT_EQ(second.GetLatency(), FakePlugin::kLatency);
    EXPECT_TRUE(first.GetParameters().empty());
    Plugin third(FakePlugin::EntryPoint);
    third = std::move(second);
    EXPECT_EQ(third.GetParameters().size(), FakePlugin::kRowCount);
  }
  EXPECT_THAT(FakePlugin::notes, ElementsAre("attach", "attach", "destroy", "destroy"));
}

TEST_F(PluginTest, FindsParametersByTheirKeys) {
  const Plugin plugin(FakePlugin::EntryPoint);
  EXPECT_EQ(plugin.FindParameter("gain"), FakePlugin::kGain);
  EXPECT_EQ(plugin.FindParameter("flip"), FakePlugin::kFlip);
  EXPECT_EQ(plugin.FindParameter("Gain"), -1);
  EXPECT_EQ(plugin.FindParameter(""), -1);
}

TEST_F(PluginTest, StoresAValueBeforeItTellsThePlugin) {
  Plugin plugin(FakePlugin::EntryPoint);
  plugin.SetValue(FakePlugin::kMode, 2);
  EXPECT_EQ(plugin.GetParameters()[FakePlugin::kMode].enumeration.value, 2);
  EXPECT_THAT(FakePlugin::notes, ElementsAre("attach", "changed 2"));
}

TEST_F(PluginTest, PassesTheCallsOfThePluginToItsHost) {
  std::vector<int32_t> heard;
  Plugin plugin(
      FakePlugin::EntryPoint,
      [](void* context, int32_t code, MServiceArguments*) -> MWord {
        static_cast<std::vector<int32_t>*>(context)->push_back(code);
        return 0;
      },
      &heard);
  plugin.SetValue(FakePlugin::kGain, 1);
  EXPECT_THAT(heard, ElementsAre(MHostCode::kParametersChanged));
}

TEST_F(PluginTest, SavesItsStateBesideWhatTheItemHas) {
  Plugin plugin(FakePlugin::EntryPoint);
  plugin.SetValue(FakePlugin::kGain, 0.5);
  MXMLItem item("song");
  item.SetAttribute("track", "3");
  plugin.SaveState(item);
  EXPECT_EQ(bridge::ToUtf8(item.GetAttribute("gain")), "0.5000");
  EXPECT_EQ(bridge::ToUtf8(item.GetAttribute("track")), "3");
  EXPECT_THAT(FakePlugin::notes, ElementsAre("attach", "changed 0", "save"));
}

TEST_F(PluginTest, HearsThatItsStateIsLoadedWhenAllOfItIs) {
  Plugin plugin(FakePlugin::EntryPoint);
  MXMLItem item("song");
  item.SetAttribute("gain", "1.5");
  plugin.LoadState(item);
  EXPECT_EQ(bridge::LoadValue(plugin.GetParameters()[FakePlugin::kGain]), 1.5);
  EXPECT_THAT(FakePlugin::notes, ElementsAre("attach", "load", "loaded"));
  FakePlugin::raisingService = MService::kLoadState;
  EXPECT_RAISES(plugin.LoadState(item), "It fails.", MErrorCode::kOrdinary);
}

TEST_F(PluginTest, RunsCommandsByTheirNames) {
  Plugin plugin(FakePlugin::EntryPoint);
  EXPECT_EQ(plugin.Command("Freeze", 5), 5);
  EXPECT_EQ(plugin.Command("Thaw"), 0);
  EXPECT_THAT(FakePlugin::notes, ElementsAre("attach", "command Freeze 5", "command Thaw 0"));
}

TEST_F(PluginTest, PreparesAndProcessesAndSkips) {
  Plugin plugin(FakePlugin::EntryPoint);
  plugin.Prepare(2, 48000);
  EXPECT_TRUE(plugin.IsSilent());
  float left[] = {1, 2, 3}, right[] = {4, 5, 6}, out[2][3] = {};
  const float* const in[] = {left, right};
  float* const results[] = {out[0], out[1]};
  plugin.SetValue(FakePlugin::kTail, 10);
  plugin.Process(in, results, 3);
  EXPECT_FALSE(plugin.IsSilent());
  plugin.Skip(64);
  EXPECT_THAT(out[0], ElementsAre(0.75f, 1.5f, 2.25f));
  EXPECT_THAT(out[1], ElementsAre(3.0f, 3.75f, 4.5f));
  EXPECT_THAT(FakePlugin::notes,
              ElementsAre("attach", "prepare 2 48000", "changed 1", "process 3", "skip 64"));
}

TEST_F(PluginTest, FlushesDenormalsWhileItProcessesAndNotBehindIt) {
  Plugin plugin(FakePlugin::EntryPoint);
  plugin.Prepare(0, 48000);
  FakePlugin::flushesDenormals = false;
  plugin.Process(nullptr, nullptr, 16);
  EXPECT_TRUE(FakePlugin::flushesDenormals);
  volatile double tiny = std::numeric_limits<double>::min();
  EXPECT_NE(tiny / 2, 0);
}

TEST_F(PluginTest, LetsExceptionsOfThePluginPass) {
  Plugin plugin(FakePlugin::EntryPoint);
  plugin.Prepare(0, 48000);
  FakePlugin::raisingService = MService::kProcess;
  EXPECT_RAISES(plugin.Process(nullptr, nullptr, 1), "It fails.", MErrorCode::kOrdinary);
  FakePlugin::raisingService = MService::kParameterChanged;
  EXPECT_RAISES(plugin.SetValue(FakePlugin::kGain, 1), "It fails.", MErrorCode::kOrdinary);
  FakePlugin::raisingService = MService::kAttach;
  EXPECT_RAISES(Plugin(FakePlugin::EntryPoint), "It fails.", MErrorCode::kOrdinary);
}

TEST_F(PluginTest, DestroysAnInstanceWhoseTableCannotBeHad) {
  FakePlugin::raisingService = MService::kPublicBlock;
  EXPECT_RAISES(Plugin(FakePlugin::EntryPoint), "It fails.", MErrorCode::kOrdinary);
  EXPECT_THAT(FakePlugin::notes, ElementsAre("attach", "destroy"));
}

TEST_F(PluginTest, SurvivesADestructionThatFails) {
  MWord instance = 0;
  {
    static MWord* made;
    made = &instance;
    const Plugin plugin([](void* address, int32_t service, MServiceArguments* arguments) -> MWord {
      const MWord result = FakePlugin::EntryPoint(address, service, arguments);
      if (service == MService::kAttach) *made = result;
      return result;
    });
    FakePlugin::raisingService = MService::kDestroy;
  }
  FakePlugin::raisingService = FakePlugin::kNever;
  MServiceArguments arguments;
  FakePlugin::EntryPoint(MAsAddress<void>(instance), MService::kDestroy, &arguments);
}

TEST_F(PluginTest, RefusesAnEntryPointThatMakesNothing) {
  EXPECT_RAISES(Plugin([](void*, int32_t, MServiceArguments*) -> MWord { return 0; }),
                "The plug-in could not be made.", MErrorCode::kOrdinary);
}

}  // namespace
