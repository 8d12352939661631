#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "core/MFormat.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/Texts.h"
#include "tests/exports/LoadedLibrary.h"

namespace {

constexpr char kEcholan[] = "EcholanAudioEffectPluginInterface";

// An impulse through a delay of 4 samples: a rate of 40 Hz and the delay that a new plug-in has, 0.1 s.
std::vector<float> Echoes(LoadedPlugin& echolan) {
  echolan.Call(MService::kPrepare, 1, 40);
  std::vector<float> block = {1, 0, 0, 0, 0, 0};
  echolan.Process(block);
  return block;
}
const std::vector<float> kEchoes = {1, 0, 0, 0, static_cast<float>(0.4 * 0.4), 0};

TEST(Library, MakesRunsAndDestroysEveryPluginOfItsTable) {
  const LoadedLibrary library;
  ASSERT_FALSE(kPluginNames.empty());
  for (const PluginName& row : kPluginNames) {
    SCOPED_TRACE(row.name);
    LoadedPlugin plugin(library, row.GetExport());
    EXPECT_EQ(plugin.Call(7), -1);
    if (row.kind != "AudioEffect") continue;
    EXPECT_EQ(plugin.Call(MService::kPrepare, 1, 44100), 0);
    std::vector<float> block(100, 0.25f);
    plugin.Process(block);
    EXPECT_EQ(plugin.Call(MService::kSkip, 10), 0);
  }
}

TEST(Library, FlagsOfItsPluginsAreThoseThatHostsKnow) {
  const std::set<std::string> flagged = {"Playbox",  "Layerbox", "Widenor",    "Roamplex", "Swirlo",
                                         "Pulsetta", "Quaverly", "Slidebench", "Imprinta", "Lumascope",
                                         "Bendform", "Clampet",  "Squeezel"};
  const LoadedLibrary library;
  for (const PluginName& row : kPluginNames) {
    LoadedPlugin plugin(library, row.GetExport());
    EXPECT_EQ(plugin.GetBlock().hostFlag0, 0) << row.name;
    EXPECT_EQ(plugin.GetBlock().hostFlag1, 1) << row.name;
    EXPECT_EQ(plugin.GetBlock().pluginFlag, flagged.count(row.name)) << row.name;
  }
}

TEST(Library, OnlyQuaverlyAndSlidebenchDelayTheirSignal) {
  const LoadedLibrary library;
  for (const PluginName& row : kPluginNames) {
    if (row.kind != "AudioEffect") continue;
    LoadedPlugin plugin(library, row.GetExport());
    plugin.Call(MService::kPrepare, 2, 44100);
    const bool delays = row.name == "Quaverly" || row.name == "Slidebench";
    EXPECT_EQ(plugin.Call(MService::kGetLatency) > 0, delays) << row.name;
  }
}

TEST(Library, IsGoneWhenItsHandleIsClosedAHundredTimes) {
  ASSERT_FALSE(LoadedLibrary::IsLoaded());
  for (int32_t i = 0; i < 100; ++i) {
    {
      const LoadedLibrary library;
      LoadedPlugin echolan(library, kEcholan);
      ASSERT_EQ(Echoes(echolan), kEchoes);
      ASSERT_TRUE(LoadedLibrary::IsLoaded());
    }
    ASSERT_FALSE(LoadedLibrary::IsLoaded()) << "after " << i + 1 << " times";
  }
}

TEST(Library, TwoCopiesOfTheFileAreIndependent) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("Copy.so");
  std::filesystem::copy_file(SONVELLE_LIBRARY, path);
  const LoadedLibrary original;
  LoadedPlugin first(original, kEcholan);
  {
    const LoadedLibrary copy(path);
    ASSERT_NE(original.Find(kEcholan), copy.Find(kEcholan));
    LoadedPlugin second(copy, kEcholan);
    second.GetBlock().parameters[0].real.value = 0;  // no feedback
    second.Call(MService::kParameterChanged, 0);
    EXPECT_EQ(Echoes(second), (std::vector<float>{1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Echoes(first), kEchoes);
  }
  EXPECT_FALSE(LoadedLibrary::IsLoaded(path));
  EXPECT_EQ(Echoes(first), kEchoes);
}

TEST(Library, HostReadsTheTextsOfItsRows) {
  const LoadedLibrary library;
  LoadedPlugin echolan(library, kEcholan);
  const MPluginPublicBlock& block = echolan.GetBlock();
  ASSERT_EQ(block.parameterCount, 2);
  EXPECT_EQ(block.parameters[0].name, "Feedback");
  EXPECT_EQ(block.parameters[0].key, "feedback");
  EXPECT_EQ(block.parameters[1].name, "Delay");
  EXPECT_EQ(block.parameters[1].help,
            "<name>Delay</name> determines how long it takes to pass the signal from the output back to the "
            "input, thus how long it takes to the sound to be played again.");
}

TEST(Library, TextThatTheHostBuildsFromARowOutlivesTheLibrary) {
  MString text;
  {
    const LoadedLibrary library;
    LoadedPlugin echolan(library, kEcholan);
    const MPluginParameter& row = echolan.GetBlock().parameters[1];
    text = Format("{0} ({1}) is {2;.2}").Arg(row.name).Arg(row.key).Arg(row.real.value).Text();
  }
  ASSERT_FALSE(LoadedLibrary::IsLoaded());
  EXPECT_EQ(text, "Delay (delay) is 0.10");
}

TEST(Library, PluginKeepsTheAddressOfItsFirstCall) {
  const LoadedLibrary library;
  MPluginEntryPoint* const entry = library.Find(kEcholan);
  void* const plugin = MAsAddress<void>(entry(nullptr, MService::kAttach, nullptr));
  EXPECT_EQ(entry(plugin, MService::kAttach, nullptr), MAsWord(plugin));
  EXPECT_EQ(entry(plugin, MService::kDestroy, nullptr), 0);
}

}  // namespace
