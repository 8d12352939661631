// How the bridge starts a library, and the services of one that is started.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>

#include "core/MLock.h"
#include "core/MXMLItem.h"
#include "hosts/bridge/Plugin.h"
#include "hosts/bridge/PluginLibrary.h"
#include "tests/common/DataFolder.h"
#include "tests/common/Texts.h"

namespace {

class PluginLibraryStart : public testing::Test {
 protected:
  DataFolder data_;
};

// A function of a library that is open.
template <typename Function>
Function* Find(const char* library, const char* name) {
  void* const handle = dlopen(library, RTLD_NOW | RTLD_NOLOAD);
  if (!handle) throw std::runtime_error("not loaded");
  auto* const function = reinterpret_cast<Function*>(dlsym(handle, name));
  dlclose(handle);
  return function;
}

TEST_F(PluginLibraryStart, HappensOnceBeforeAnyPluginAndWithTheProgramsOwnAllocatorAndLock) {
  const bridge::PluginLibrary library(SONVELLE_NOTING_MODULE);
  ASSERT_EQ(library.GetPlugins().size(), 1u);
  EXPECT_RAISES(bridge::Plugin(library.GetPlugins()[0].entryPoint), "The plug-in could not be made.",
                MErrorCode::kOrdinary);
  EXPECT_STREQ(Find<const char*()>(SONVELLE_NOTING_MODULE, "GetNotes")(),
               "start " SONVELLE_NOTING_MODULE "\nservice 0\n");
  EXPECT_EQ(Find<const MLibraryFunctions*()>(SONVELLE_NOTING_MODULE, "GetFunctions")(),
            &MGetLibraryFunctions());
  EXPECT_EQ(Find<MLock*()>(SONVELLE_NOTING_MODULE, "GetLock")(), &MGetEventLock());
}

TEST_F(PluginLibraryStart, IsNoConditionForPluginsButForServices) {
  const bridge::PluginLibrary library(SONVELLE_FAKE_LIBRARY);  // has no initialiser
  ASSERT_EQ(library.GetPlugins().size(), 2u);
  bridge::Plugin plugin(library.GetPlugins()[0].entryPoint);
  EXPECT_EQ(plugin.GetLatency(), 7);
  MServiceArguments arguments;
  EXPECT_EQ(library.Invoke("MRegisterAllPlugins", arguments), -1);
  EXPECT_THROW(library.Register(), bridge::LibraryError);
}

std::atomic<int64_t> blocks;
std::atomic<int64_t> allocations;

TEST_F(PluginLibraryStart, LetsTheLibraryTakeItsMemoryFromTheProgramsTable) {
  const MLibraryFunctions before = MGetLibraryFunctions();
  MLibraryFunctions counting = before;
  counting.allocate = [](std::size_t size) -> void* {
    ++blocks;
    ++allocations;
    return std::malloc(size);
  };
  counting.reallocate = [](void* block, std::size_t size) -> void* {
    blocks += (size ? 1 : 0) - (block ? 1 : 0);
    if (size) return std::realloc(block, size);
    std::free(block);
    return nullptr;
  };
  counting.release = [](void* block) {
    --blocks;
    std::free(block);
  };
  blocks = allocations = 0;
  MSetLibraryFunctions(counting);
  {
    const bridge::PluginLibrary library(SONVELLE_LIBRARY);
    EXPECT_GT(allocations, 10);
    bridge::Plugin plugin(library.GetPlugins()[0].entryPoint);
    MXMLItem state("state");
    plugin.SaveState(state);
    plugin.LoadState(state);
    EXPECT_GT(blocks, 10);
  }
  const int64_t left = blocks;
  MSetLibraryFunctions(before);
  EXPECT_EQ(left, 0);
}

TEST_F(PluginLibraryStart, EndsWithTheObjectAndSavesTheSettings) {
  {
    const bridge::PluginLibrary library(SONVELLE_LIBRARY);
    EXPECT_FALSE(data_.Has("SonvelleConfiguration.cfg"));
  }
  EXPECT_TRUE(data_.Has("SonvelleConfiguration.cfg"));
  EXPECT_EQ(dlopen(SONVELLE_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

TEST_F(PluginLibraryStart, OffersServicesByTheirNames) {
  const bridge::PluginLibrary library(SONVELLE_LIBRARY);
  MServiceArguments none, name(MAsWord("Dark"));
  EXPECT_EQ(library.Invoke("Unknown", none), -1);
  EXPECT_EQ(library.Invoke("", none), -1);
  EXPECT_EQ(library.Invoke("MWindowsCreateStyle", name), 0);
}

TEST_F(PluginLibraryStart, RegistersThePluginsUnderTheAbsolutePathOfTheLibrary) {
  const bridge::PluginLibrary library(std::filesystem::relative(SONVELLE_LIBRARY));
  const std::vector<std::string> files = library.Register();
  EXPECT_EQ(files,
            (std::vector<std::string>{data_.Path("MAudioEffects.mps"), data_.Path("MAudioStreams.mps")}));
  const std::string path = std::filesystem::path(SONVELLE_LIBRARY).string();
  EXPECT_EQ(library.GetFile(), path);
  EXPECT_NE(data_.Read("MAudioEffects.mps").find("library=\"" + path + "\" name=\"Echolan\""),
            std::string::npos);
  EXPECT_NE(data_.Read("MAudioStreams.mps").find("library=\"" + path + "\" name=\"Playbox\""),
            std::string::npos);
}

TEST_F(PluginLibraryStart, LetsAFailedRegistrationPass) {
  const bridge::PluginLibrary library(SONVELLE_LIBRARY);
  std::filesystem::remove_all(data_.GetFolder().GetPath() / "Tessaron");
  data_.GetFolder().WriteFile("Tessaron", "no folder");
  try {
    library.Register();
    ADD_FAILURE();
  } catch (const MException& raised) {
    EXPECT_NE(bridge::ToUtf8(raised.message).find("Tessaron"), std::string::npos);
  }
}

TEST_F(PluginLibraryStart, RefusesToRegisterAPathThatIsNoText) {
  const TemporaryFolder folder;
  const std::string copy = folder.Path("\xff.so");
  std::filesystem::copy_file(SONVELLE_LIBRARY, copy);
  const bridge::PluginLibrary library(copy);
  EXPECT_EQ(library.GetPlugins().empty(), false);
  EXPECT_THROW(library.Register(), bridge::LibraryError);
  EXPECT_FALSE(data_.Has("MAudioEffects.mps"));
}

}  // namespace
