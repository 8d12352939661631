// The library's start and end as hosts cause them.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "core/MLock.h"
#include "tests/common/CountingFunctions.h"
#include "tests/common/DataFolder.h"
#include "tests/common/Texts.h"
#include "tests/exports/LoadedLibrary.h"

namespace {

constexpr char kEcholan[] = "EcholanAudioEffectPluginInterface";
constexpr char kSettings[] = "SonvelleConfiguration.cfg";

MModule* Start(const LoadedLibrary& library, MLock* lock = nullptr) {
  auto* const initialize =
      reinterpret_cast<MLibraryInitializer*>(reinterpret_cast<void*>(library.Find("MLibraryDLLInitialize")));
  MLibraryRecord record{&MGetLibraryFunctions(), lock, "host"};
  return initialize(&record);
}

// The members are read where the library has put them; the type's information is over there.
#define READS_MODULE __attribute__((no_sanitize("vptr")))

READS_MODULE void ExpectStarted(const MModule* module, const char* file) {
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(Utf8(module->name), file);
  EXPECT_EQ(Utf8(module->title), "Tessaron Pavrek S");
  EXPECT_EQ(module->reserved, 31u);
  ASSERT_EQ(module->serviceCount, 3);
  EXPECT_STREQ(module->services[0].name, "MWindowsConfiguration");
  EXPECT_STREQ(module->services[1].name, "MWindowsCreateStyle");
  EXPECT_STREQ(module->services[2].name, "MWindowsRegisterStyle");
  EXPECT_EQ(module->resources.GetResources().GetCount(), 7);
}

TEST(LibraryStart, GivesAModuleThatTheHostReadsInPlace) {
  const DataFolder data;
  const LoadedLibrary library;
  MModule* const module = Start(library);
  ExpectStarted(module, "Sonvelle.so");
  EXPECT_EQ(Start(library), module);
  MServiceArguments arguments(MAsWord(static_cast<const char*>(nullptr)));
  EXPECT_EQ(MInvokeService(module, "MWindowsCreateStyle", &arguments), 0);
  EXPECT_EQ(MInvokeService(module, "no such service", &arguments), -1);
}

TEST(LibraryStart, UnloadingWritesTheSettingsAndReleasesEveryBlock) {
  const DataFolder data;
  const CountingFunctions counting;
  MLock lock;
  {
    const LoadedLibrary library;
    ASSERT_NE(Start(library, &lock), nullptr);
    EXPECT_GT(CountingFunctions::GetAllocated(), 0);
    EXPECT_FALSE(data.Has(kSettings));
  }
  EXPECT_TRUE(data.Has(kSettings));
  EXPECT_EQ(CountingFunctions::GetBalance(), 0);
  EXPECT_FALSE(LoadedLibrary::IsLoaded());
}

TEST(LibraryStart, APluginThatIsMadeBeforeItWorks) {
  const DataFolder data;
  const LoadedLibrary library;
  LoadedPlugin early(library, kEcholan);
  ASSERT_NE(Start(library), nullptr);
  EXPECT_EQ(early.Call(MService::kPrepare, 1, 40), 0);
  std::vector<float> block = {1, 0, 0, 0, 0};
  early.Process(block);
  EXPECT_EQ(block[4], static_cast<float>(0.4 * 0.4));
}

TEST(LibraryStart, EndOfTheProcessWithoutUnloadingWritesTheSettingsToo) {
  const DataFolder data;
  std::fflush(nullptr);
  const pid_t child = fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    void* const library = dlopen(SONVELLE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    auto* const initialize = reinterpret_cast<MLibraryInitializer*>(dlsym(library, "MLibraryDLLInitialize"));
    static MLock lock;
    MLibraryRecord record{&MGetLibraryFunctions(), &lock, "host"};
    if (!initialize(&record)) _exit(1);
    std::exit(0);  // runs what is to run at the end
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  EXPECT_TRUE(data.Has(kSettings));
}

TEST(LibraryStart, TwoHostsInOneProcessShareTheModuleUntilTheLastOneGoes) {
  const DataFolder data;
  auto first = std::make_unique<LoadedLibrary>();
  MModule* const module = Start(*first);
  const LoadedLibrary second;
  EXPECT_EQ(Start(second), module);
  first.reset();
  ExpectStarted(module, "Sonvelle.so");
  LoadedPlugin plugin(second, kEcholan);
  EXPECT_EQ(plugin.Call(MService::kPrepare, 2, 44100), 0);
}

TEST(LibraryStart, TwoCopiesOfTheFileHaveModulesOfTheirOwn) {
  const DataFolder data;
  const TemporaryFolder folder;
  const std::string path = folder.Path("Copy.so");
  std::filesystem::copy_file(SONVELLE_LIBRARY, path);
  const LoadedLibrary original;
  const LoadedLibrary copy(path);
  MModule* const first = Start(original);
  MModule* const second = Start(copy);
  EXPECT_NE(first, second);
  ExpectStarted(first, "Sonvelle.so");
  ExpectStarted(second, "Copy.so");
}

TEST(LibraryStart, ResourcesThatAreBuiltInCountAndNotAFileBesideTheLibrary) {
  const DataFolder data;
  const TemporaryFolder folder;
  std::filesystem::copy_file(SONVELLE_LIBRARY, folder.Path("Copy.so"));
  const std::string index =
      "<resources><resources><resourceA id=\"x\" offset=\"0\" size=\"0\"/></resources></resources>";
  std::string head(12, '\0');
  head[4] = static_cast<char>(index.size());
  folder.WriteFile("Copy.mrf", head + index);
  const LoadedLibrary copy(folder.Path("Copy.so"));
  ExpectStarted(Start(copy), "Copy.so");
}

TEST(LibraryStart, EntryPointMakesAndDestroysInOneCall) {
  const DataFolder data;
  const CountingFunctions counting;
  {
    const LoadedLibrary library;
    Start(library);
    MPluginEntryPoint* const entry = library.Find(kEcholan);
    MServiceArguments arguments(0);
    const int64_t before = CountingFunctions::GetBalance();
    const MWord instance = entry(nullptr, MService::kAttach, &arguments);
    EXPECT_NE(instance, 0);
    EXPECT_EQ(entry(MAsAddress<void>(instance), MService::kDestroy, &arguments), 0);
    EXPECT_EQ(entry(nullptr, MService::kDestroy, &arguments), 0);
    EXPECT_EQ(CountingFunctions::GetBalance(), before);
  }
  EXPECT_EQ(CountingFunctions::GetBalance(), 0);
}

TEST(LibraryStart, WithoutARecordNothingHappens) {
  const DataFolder data;
  const LoadedLibrary library;
  auto* const initialize =
      reinterpret_cast<MLibraryInitializer*>(reinterpret_cast<void*>(library.Find("MLibraryDLLInitialize")));
  EXPECT_EQ(initialize(nullptr), nullptr);
}

TEST(LibraryStart, FiftyLivesLeaveNothingBehind) {
  const DataFolder data;
  const CountingFunctions counting;
  for (int32_t i = 0; i < 50; ++i) {
    {
      const LoadedLibrary library;
      ASSERT_NE(Start(library), nullptr);
      LoadedPlugin plugin(library, kEcholan);
    }
    ASSERT_FALSE(LoadedLibrary::IsLoaded()) << i;
    ASSERT_EQ(CountingFunctions::GetBalance(), 0) << i;
  }
}

}  // namespace
