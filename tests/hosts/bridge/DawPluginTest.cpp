#include "hosts/bridge/DawPlugin.h"

#include <gmock/gmock.h>

#include "core/MException.h"
#include "hosts/bridge/Parameters.h"
#include "tests/hosts/FakePlugin.h"
#include "tests/hosts/bridge/DawPluginUnderTest.h"

using testing::HasSubstr;

namespace {

// What the bare plug-in makes of the signal in blocks of this size.
AudioBlock Bare(const bridge::PluginType& type, AudioBlock signal, int32_t size) {
  bridge::Plugin plugin(type.entryPoint);
  plugin.Prepare(signal.GetChannelCount(), DawPluginUnderTest::kRate);
  AudioBlock out(signal.GetChannelCount(), signal.GetLength());
  for (int32_t done = 0; done < signal.GetLength(); done += size)
    plugin.Process(signal.From(done), out.From(done), std::min(size, signal.GetLength() - done));
  return out;
}

TEST(DawPlugin, SoundsAsThePluginByItself) {
  TestRandom random;
  const AudioBlock signal = AudioBlock::Noise(2, 5000, random, 0.5);
  for (int32_t i = 0; i < kPluginEntryCount; ++i) {
    if (kPluginEntries[i].kind != std::string_view("AudioEffect")) continue;
    SCOPED_TRACE(kPluginEntries[i].name);
    const bridge::PluginType type = FindType(kPluginEntries[i].name);
    for (const int32_t size : {1, 63, 512, DawPluginUnderTest::kMostFrames}) {
      DawPluginUnderTest plugin(type);
      plugin.Start();
      EXPECT_TRUE(plugin.Answer(signal, size) == Bare(type, signal, size)) << size;
    }
  }
}

TEST(DawPlugin, WorksOnBlocksThatAreLargerThanAnnouncedInParts) {
  TestRandom random;
  const AudioBlock signal = AudioBlock::Noise(2, 5000, random, 0.5);
  DawPluginUnderTest plugin("Echolan");
  plugin.Start();
  EXPECT_TRUE(plugin.Answer(signal, 5000) == Bare(FindType("Echolan"), signal, 5000));
}

TEST(DawPlugin, ChangesAValueAtItsFrame) {
  TestRandom random;
  const AudioBlock signal = AudioBlock::Noise(2, 1000, random);
  for (const int32_t frame : {0, 1, 500, 999, 1000, 5000}) {
    DawPluginUnderTest whole("Echolan"), parts("Echolan");
    whole.Start();
    parts.Start();
    const int32_t place = whole.Find("feedback");
    const AudioBlock answer = whole.AnswerWithChange(signal, frame, place, 0.7);
    AudioBlock expected(2, 1000), copy = signal;
    const int32_t first = std::min(frame, 1000);
    parts.Begin(copy.From(), expected.From(), first);
    parts.End();
    parts.SetValue(place, 0.7);
    parts.Begin(copy.From(first), expected.From(first), 1000 - first);
    parts.End();
    EXPECT_TRUE(answer == expected) << frame;
    EXPECT_EQ(whole.GetValue(place), 0.7);
  }
}

TEST(DawPlugin, TellsAnEffectOnceOfAllRowsThatChangeAtAFrame) {
  FakePlugin::notes.clear();
  DawPluginUnderTest plugin(GetFakeType(bridge::PluginKind::kEffect, FakePlugin::EntryPoint));
  plugin.Start(1);
  AudioBlock block(1, 100);
  FakePlugin::notes.clear();
  plugin.Begin(block.From(), block.From(), 100);
  plugin.RunTo(40);
  plugin.Change(plugin.Find("gain"), 0.5);
  plugin.RunTo(40);
  plugin.Change(plugin.Find("flip"), 1);
  plugin.Change(plugin.Find("gain"), 0.25);
  plugin.RunTo(30);
  plugin.End();
  EXPECT_THAT(FakePlugin::notes, testing::ElementsAre("process 40", "changed 0", "process 60"));
  EXPECT_EQ(plugin.GetValue(plugin.Find("flip")), 1);
}

TEST(DawPlugin, TakesOverChangesInABlockWithoutFrames) {
  FakePlugin::notes.clear();
  DawPluginUnderTest plugin(GetFakeType(bridge::PluginKind::kEffect, FakePlugin::EntryPoint));
  plugin.Begin(nullptr, nullptr, 0);
  plugin.Change(plugin.Find("gain"), 9);
  plugin.End();
  EXPECT_EQ(FakePlugin::notes.back(), "changed 0");
  EXPECT_EQ(plugin.GetValue(plugin.Find("gain")), 2) << "limited to the range";
}

TEST(DawPlugin, IsSilentWhereThePluginFails) {
  DawPluginUnderTest plugin(GetFakeType(bridge::PluginKind::kEffect, FakePlugin::EntryPoint));
  plugin.Start(1);
  AudioBlock block = AudioBlock::Constant(1, 100, 1);
  FakePlugin::raisingService = MService::kProcess;
  plugin.Begin(block.From(), block.From(), 100);
  plugin.End();
  FakePlugin::raisingService = FakePlugin::kNever;
  EXPECT_TRUE(block.IsZero());
}

TEST(DawPlugin, AResetThatFailsIsTriedAgainAndKeepsNobodyWaiting) {
  DawPluginUnderTest plugin(GetFakeType(bridge::PluginKind::kEffect, FakePlugin::EntryPoint));
  plugin.Start(1);
  AudioBlock block = AudioBlock::Constant(1, 100, 1);
  for (const int32_t service : {MService::kPrepare, MService::kProcess}) {
    FakePlugin::raisingService = service;
    plugin.Reset();
    EXPECT_TRUE(plugin.Answer(block, 100).IsZero());
    FakePlugin::raisingService = FakePlugin::kNever;
    plugin.SetValue(plugin.Find("gain"), 1);
    FakePlugin::notes.clear();
    EXPECT_FALSE(plugin.Answer(block, 100).IsZero());
    EXPECT_EQ(FakePlugin::notes[0], "prepare 1 48000");
  }
}

TEST(DawPlugin, IsSilentBeforeItIsActive) {
  DawPluginUnderTest plugin("Echolan");
  plugin.Start(1);
  plugin.Deactivate();
  AudioBlock block = AudioBlock::Constant(1, 100, 1);
  plugin.Begin(block.From(), block.From(), 100);
  plugin.End();
  EXPECT_TRUE(block.IsZero());
}

TEST(DawPlugin, KeepsValuesInItsStateToTheBit) {
  for (int32_t i = 0; i < kPluginEntryCount; ++i) {
    SCOPED_TRACE(kPluginEntries[i].name);
    DawPluginUnderTest first(kPluginEntries[i].name), second(kPluginEntries[i].name);
    TestRandom random;
    for (std::size_t place = 0; place < first.GetParameters().size(); ++place) {
      const bridge::ParameterRange range = bridge::GetRange(*first.GetParameters()[place].row);
      first.SetValue(static_cast<int32_t>(place), random.Real(range.minimum, range.maximum));
    }
    second.LoadState(first.SaveState());
    for (std::size_t place = 0; place < first.GetParameters().size(); ++place)
      EXPECT_EQ(second.GetValue(static_cast<int32_t>(place)), first.GetValue(static_cast<int32_t>(place)))
          << first.GetParameters()[place].key;
    EXPECT_EQ(second.SaveState(), first.SaveState());
  }
}

TEST(DawPlugin, TakesTheStatesOfTheCommand) {
  DawPluginUnderTest plugin("Echolan");
  plugin.SetValue(plugin.Find("hostBypass"), 1);
  plugin.LoadState("<state plugin=\"Echolan\" parameterfeedback=\"0.3000\"/>");
  EXPECT_EQ(plugin.GetValue(plugin.Find("feedback")), 0.3);
  EXPECT_EQ(plugin.GetValue(plugin.Find("delay")), 0.1) << "by default";
  EXPECT_EQ(plugin.GetValue(plugin.Find("hostBypass")), 1) << "of the host side, as it was";
  EXPECT_THAT(plugin.SaveState(), HasSubstr("parameterfeedback=\"0.3000\" plugin=\"Echolan\""));
}

TEST(DawPlugin, RefusesForeignAndBrokenStatesAndStaysAsItWas) {
  DawPluginUnderTest plugin("Echolan");
  plugin.SetValue(plugin.Find("feedback"), 0.3);
  const std::string before = plugin.SaveState();
  for (const char* const text :
       {"", "no state", "<state plugin=\"Clampet\"/>", "<state", "\xFF\xFE", "<preset/>",
        "<state plugin=\"Echolan\">", "<state><part/>", "/>", "state/>"})
    EXPECT_THROW(plugin.LoadState(text), MException) << text;
  EXPECT_EQ(plugin.SaveState(), before);
}

TEST(DawPlugin, HasTheLatencyOfItsEffectAndTellsOfAnother) {
  DawPluginUnderTest fixed("Slidebench");
  EXPECT_EQ(fixed.GetLatency(), fixed.GetPlugin().GetLatency()) << "before it is active";
  fixed.Start();
  EXPECT_EQ(fixed.GetLatency(), fixed.GetPlugin().GetLatency());
  EXPECT_GT(fixed.GetLatency(), 0);
  EXPECT_EQ(fixed.latencies, 0);
  DawPluginUnderTest moving("Quaverly");
  moving.Start();
  const int32_t before = moving.GetLatency();
  moving.AnswerWithChange(AudioBlock(2, 100), 50, moving.Find("depth"), 1);
  EXPECT_GT(moving.GetLatency(), before);
  EXPECT_EQ(moving.GetLatency(), moving.GetPlugin().GetLatency());
  EXPECT_EQ(moving.latencies, 1);
}

TEST(DawPlugin, NeedsNoMemoryForBlocksOfALengthThatNoHostHas) {
  DawPluginUnderTest plugin("Echolan");
  plugin.Activate(2, 48000, 0x7FFFFFFF);
  const AudioBlock signal = AudioBlock::Constant(2, 200000, 0.5);
  EXPECT_TRUE(plugin.Answer(signal, 200000) == Bare(FindType("Echolan"), signal, 200000));
}

}  // namespace
