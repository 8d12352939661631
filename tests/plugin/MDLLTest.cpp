#include "plugin/MDLL.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/MLock.h"
#include "tests/common/CountingFunctions.h"
#include "tests/plugin/LibraryLife.h"

class MWindowsConfiguration {};

namespace {

using testing::ElementsAre;

// A copy of the bare module in a folder of its own, and a module of this process that loads it.
class MDLLTest : public testing::Test {
 protected:
  MDLLTest() {
    LibraryLife::LeaveOutParts();
    LibraryLife::Start();
    std::filesystem::copy_file(SONVELLE_BARE_MODULE, folder.Path("Bare.module.so"));
  }

  MString GetPath() const { return MString::FromNarrow(folder.Path("Bare.module.so").c_str()); }
  template <typename Function>
  static Function* Get(const MDLL& dll, const MString& name) {
    return reinterpret_cast<Function*>(dll.GetFunction(name));
  }

  LibraryLife life;
  TemporaryFolder folder;
};

TEST_F(MDLLTest, NothingLoadedIsReportedAtFirstUse) {
  MDLL dll;
  EXPECT_RAISES(dll.CheckLoaded(), "Dynamic link library has not been loaded.", 0);
  EXPECT_RAISES(dll.GetFunction("main"), "Dynamic link library has not been loaded.", 0);
  EXPECT_RAISES(dll.Invoke("MWindowsCreateStyle", nullptr), "Dynamic link library has not been loaded.", 0);
  dll.Load("/no/such/library.so");
  EXPECT_RAISES(dll.CheckLoaded(), "Dynamic link library has not been loaded.", 0);
  dll.Load("");
  EXPECT_RAISES(dll.CheckLoaded(), "Dynamic link library has not been loaded.", 0);
  dll.Load(MString::FromNarrow(folder.GetPath().c_str()));
  EXPECT_RAISES(dll.CheckLoaded(), "Dynamic link library has not been loaded.", 0);
}

TEST_F(MDLLTest, LibraryWithoutAnInitialiserHasNoServices) {
  MDLL dll;
  dll.Load(SONVELLE_PLAIN_LIBRARY);
  EXPECT_NO_THROW(dll.CheckLoaded());
  EXPECT_NE(dll.GetFunction("PlainFunction"), nullptr);
  EXPECT_EQ(dll.GetFunction("no such function"), nullptr);
  EXPECT_EQ(dll.module, nullptr);
  EXPECT_RAISES(dll.Invoke("MWindowsCreateStyle", nullptr),
                "The library does not support Tessaron service access.", 0);
}

TEST_F(MDLLTest, LoadedModuleGetsAllocatorLockAndPathAndNothingOfThisOne) {
  const CountingFunctions counting;
  MLock lock;
  MSetEventLock(&lock);
  MDLL dll;
  dll.Load(GetPath());
  ASSERT_NE(dll.module, nullptr);
  EXPECT_NE(dll.module, MModule::instance);
  EXPECT_EQ(dll.module->name, "Bare.module.so");
  EXPECT_EQ(dll.module->title, "Tessaron Pavrek S");
  EXPECT_NE(dll.module->handle, MModule::instance->handle);
  EXPECT_EQ(dll.module->handle, dll.handle);
  EXPECT_EQ(Get<MLock*()>(dll, "GetEventLockInForce")(), &lock);
  const MLibraryFunctions* const functions = Get<const MLibraryFunctions*()>(dll, "GetFunctionsInForce")();
  EXPECT_EQ(std::memcmp(functions, &MGetLibraryFunctions(), sizeof *functions), 0);
  EXPECT_EQ(Get<const char*()>(dll, "GetGivenName")(), Utf8(GetPath()));
  EXPECT_EQ(Get<int32_t()>(dll, "CountResources")(), 0);
}

TEST_F(MDLLTest, WindowingConfigurationIsHandedOn) {
  MWindowsConfiguration configuration;
  MWindowsModule::windowing = &configuration;
  MDLL dll;
  dll.Load(GetPath());
  EXPECT_EQ(Get<MWindowsConfiguration*()>(dll, "GetWindowing")(), &configuration);
}

TEST_F(MDLLTest, ServicesOfTheLoadedModuleAreCalled) {
  MDLL dll;
  dll.Load(GetPath());
  MWindowsConfiguration configuration;
  MServiceArguments arguments(MAsWord(&configuration));
  EXPECT_EQ(dll.Invoke("MWindowsConfiguration", &arguments), 0);
  EXPECT_EQ(Get<MWindowsConfiguration*()>(dll, "GetWindowing")(), &configuration);
  EXPECT_EQ(dll.Invoke("no such service", &arguments), -1);
}

TEST_F(MDLLTest, ModuleWithoutBuiltInResourcesReadsTheFileBesideIt) {
  std::string file(12, '\0');
  const std::string index =
      "<resources><resources><resourceA id=\"x\" offset=\"0\" size=\"0\"/></resources></resources>";
  file[4] = static_cast<char>(index.size());
  folder.WriteFile("Bare.module.mrf", file + index);
  MDLL dll;
  dll.Load(GetPath());
  EXPECT_EQ(Get<int32_t()>(dll, "CountResources")(), 1);
}

TEST_F(MDLLTest, CorruptFileBesideItLeavesItWithoutResources) {
  folder.WriteFile("Bare.module.mrf", "no resources at all, and long enough for the end of the large form");
  MDLL dll;
  dll.Load(GetPath());
  ASSERT_NE(dll.module, nullptr);
  EXPECT_EQ(Get<int32_t()>(dll, "CountResources")(), 0);
}

TEST_F(MDLLTest, UnloadingWaitsForTheThreadsThatNobodyHasStopped) {
  bool ended = false;
  {
    MDLL dll;
    dll.Load(GetPath());
    Get<void(bool*)>(dll, "StartThread")(&ended);
  }
  EXPECT_TRUE(ended);
}

TEST_F(MDLLTest, LoadingAnotherLibraryUnloadsTheFirst) {
  MDLL dll;
  dll.Load(GetPath());
  dll.Load(SONVELLE_PLAIN_LIBRARY);
  EXPECT_EQ(dll.module, nullptr);
  EXPECT_EQ(dll.path, SONVELLE_PLAIN_LIBRARY);
  dll.Unload();
  dll.Unload();
  EXPECT_RAISES(dll.CheckLoaded(), "Dynamic link library has not been loaded.", 0);
}

TEST_F(MDLLTest, WithoutAModuleOfItsOwnTheCallerLoadsPlainly) {
  MDestroyModuleInstance();
  MDLL dll;
  dll.Load(GetPath());
  EXPECT_NO_THROW(dll.CheckLoaded());
  EXPECT_EQ(dll.module, nullptr);
}

TEST_F(MDLLTest, FailuresOfLoadingAreReportedUnderTheirNames) {
  MWindowsConfiguration configuration;
  MWindowsModule::windowing = &configuration;
  MDLL unloaded;
  unloaded.module = MModule::instance;
  MModule::instance->DLLLoaded(unloaded);
  unloaded.module = nullptr;
  EXPECT_THAT(
      life.reported.Get(),
      ElementsAre("Structured exception from '' catched at 'MModule::DLLLoaded' ('Dynamic link library "
                  "has not been loaded.')",
                  "Structured exception from '' catched at 'MWindowsModule::DLLLoaded' ('Dynamic link "
                  "library has not been loaded.')"));
}

}  // namespace
