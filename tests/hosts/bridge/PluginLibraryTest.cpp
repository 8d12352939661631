#include "hosts/bridge/PluginLibrary.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "exports/PluginEntries.h"
#include "hosts/bridge/Plugin.h"
#include "tests/common/DataFolder.h"

namespace {

// The table of a program that links the plug-ins.
bridge::PluginTable LinkedPlugins() {
  return bridge::MakePluginTable([](const bridge::PluginType& type) -> MPluginEntryPoint* {
    for (int32_t i = 0; i < kPluginEntryCount; ++i)
      if (type.name == kPluginEntries[i].name) return kPluginEntries[i].entryPoint;
    return nullptr;
  });
}

TEST(PluginTable, HoldsAllPluginsThatAreLinked) {
  const bridge::PluginTable table = LinkedPlugins();
  ASSERT_EQ(table.size(), static_cast<std::size_t>(kPluginEntryCount));
  EXPECT_EQ(table[0].name, "Echolan");
  EXPECT_EQ(table[0].kind, bridge::PluginKind::kEffect);
  EXPECT_EQ(table[0].summary, "feedback delay");
  EXPECT_STREQ(table[0].exportedName, "EcholanAudioEffectPluginInterface");
}

TEST(PluginTable, LeavesOutWhatHasNoEntryPoint) {
  EXPECT_TRUE(bridge::MakePluginTable([](const bridge::PluginType&) { return nullptr; }).empty());
}

TEST(PluginTable, KnowsPluginsByTheirExactNames) {
  const bridge::PluginTable table = LinkedPlugins();
  ASSERT_NE(bridge::FindPlugin(table, "Echolan"), nullptr);
  EXPECT_EQ(bridge::FindPlugin(table, "Echolan")->entryPoint, table[0].entryPoint);
  EXPECT_EQ(bridge::FindPlugin(table, "echolan"), nullptr);
  EXPECT_EQ(bridge::FindPlugin(table, ""), nullptr);
}

// An impulse through an effect of this table comes back after the delay.
void ExpectEcho(const bridge::PluginTable& table) {
  const bridge::PluginType* const type = bridge::FindPlugin(table, "Echolan");
  ASSERT_NE(type, nullptr);
  bridge::Plugin effect(type->entryPoint);
  effect.Prepare(1, 1000);
  effect.SetValue(effect.FindParameter("delay"), 0.01);
  effect.SetValue(effect.FindParameter("feedback"), 0.5);
  float samples[25] = {1};
  float* const channels[] = {samples};
  effect.Process(channels, channels, 25);
  for (int32_t i = 0; i < 25; ++i)
    EXPECT_EQ(samples[i], i == 0 ? 1.0f : i == 10 ? 0.25f : i == 20 ? 0.0625f : 0.0f) << i;
  EXPECT_FALSE(effect.IsSilent());
  EXPECT_EQ(effect.GetLatency(), 0);
}

TEST(PluginTable, MakesPluginsThatAreLinked) {
  ExpectEcho(LinkedPlugins());
}

TEST(PluginLibrary, MakesPluginsThatAreLoaded) {
  const DataFolder data;
  const bridge::PluginLibrary library(SONVELLE_LIBRARY);
  EXPECT_EQ(library.GetPlugins().size(), static_cast<std::size_t>(kPluginEntryCount));
  ExpectEcho(library.GetPlugins());
}

TEST(PluginLibrary, IsUnloadedWithItsObject) {
  const DataFolder data;
  { const bridge::PluginLibrary library(SONVELLE_LIBRARY); }
  EXPECT_EQ(dlopen(SONVELLE_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

// The text of the error that opening this file raises.
std::string OpeningError(const std::string& file) {
  try {
    const bridge::PluginLibrary library(file);
    return "none";
  } catch (const bridge::LibraryError& error) {
    return error.what();
  }
}

TEST(PluginLibrary, ThatIsMissingOrNoLibraryIsNamedInTheError) {
  const TemporaryFolder folder;
  EXPECT_NE(OpeningError(folder.Path("missing.so")).find(folder.Path("missing.so")), std::string::npos);
  const std::string text = folder.WriteFile("text.so", "no library");
  EXPECT_NE(OpeningError(text).find(text), std::string::npos);
}

TEST(PluginLibrary, IsLookedForInTheCurrentFolderAndNotInThoseOfTheSystem) {
  EXPECT_NE(OpeningError("libc.so.6"), "none");
}

}  // namespace
