#include "plugin/MModule.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/MTranslate.h"
#include "tests/plugin/LibraryLife.h"

class MWindowsConfiguration {
 public:
  MString created;
  int32_t registered = -1;
  bool isDestroyed = false;
};

namespace {

using testing::ElementsAre;

MWord Invoke(MModule* module, const char* name, MWord a = 0) {
  MServiceArguments arguments(a);
  return MInvokeService(module, name, &arguments);
}

// A module of the base class alone, that nobody has initialised.
class NotingModule : public MModule {
 public:
  void RegisterAllPlugins(const MString& library) override { registered = library; }
  MString registered = "nothing";
};

MWindowingOperations MakeOperations() {
  MWindowingOperations operations;
  operations.createStyle = [](MWindowsConfiguration& configuration, const MString& name) {
    configuration.created = name;
    return 17;
  };
  operations.registerStyle = [](MWindowsConfiguration& configuration, bool isDefault) {
    configuration.registered = isDefault;
  };
  operations.destroy = [](MWindowsConfiguration& configuration) { configuration.isDestroyed = true; };
  return operations;
}

TEST(MModule, NamedServicesStandInTheirOrder) {
  const LibraryLife life;
  LibraryLife::LeaveOutParts();
  MModule* const module = LibraryLife::Start();
  ASSERT_EQ(module->serviceCount, 3);
  EXPECT_STREQ(module->services[0].name, "MWindowsConfiguration");
  EXPECT_STREQ(module->services[1].name, "MWindowsCreateStyle");
  EXPECT_STREQ(module->services[2].name, "MWindowsRegisterStyle");
}

TEST(MModule, UnknownServicesGiveMinusOne) {
  NotingModule module;
  EXPECT_EQ(Invoke(&module, "MWindowsConfiguration"), -1) << "the table is empty";
  EXPECT_EQ(Invoke(nullptr, "MWindowsConfiguration"), -1);
  EXPECT_EQ(Invoke(&module, nullptr), -1);
  module.AddService("Known", [](MModule*, MServiceArguments*) -> MWord { return 1; });
  EXPECT_EQ(Invoke(&module, "known"), -1);
  EXPECT_EQ(Invoke(&module, ""), -1);
  module.serviceCount = -1;
  EXPECT_EQ(Invoke(&module, "Known"), -1);
}

TEST(MModule, ServicesAreFoundByContentAndTheFirstOfANameCounts) {
  NotingModule module;
  module.AddService("Same", [](MModule* self, MServiceArguments* arguments) -> MWord {
    return MAsWord(self) + arguments->slot[0].value;
  });
  module.AddService("Same", [](MModule*, MServiceArguments*) -> MWord { return 2; });
  const std::string name = "Same";
  EXPECT_EQ(Invoke(&module, name.c_str(), 5), MAsWord(static_cast<MModule*>(&module)) + 5);
}

TEST(MModule, TableHasRoomForSixtyFour) {
  NotingModule module;
  const auto service = [](MModule*, MServiceArguments*) -> MWord { return 64; };
  for (int32_t i = 0; i < 63; ++i) module.AddService("Other", service);
  module.AddService("Last", service);
  EXPECT_RAISES(module.AddService("One more", service), "Index out of range.", 0);
  EXPECT_EQ(module.serviceCount, 64);
  EXPECT_EQ(Invoke(&module, "Last"), 64);
  EXPECT_EQ(module.reserved, 31u);
}

TEST(MModule, RegisteringIsAServiceWithoutAnEntry) {
  NotingModule module;
  EXPECT_EQ(Invoke(&module, "MRegisterAllPlugins", MAsWord("/lib/S\xC3\xB8nvelle.so")), 0);
  EXPECT_EQ(module.registered, MString(u"/lib/S\u00F8nvelle.so"));
  EXPECT_EQ(Invoke(&module, "MRegisterAllPlugins"), 0);
  EXPECT_EQ(module.registered, "");
  EXPECT_EQ(MInvokeService(&module, "MRegisterAllPlugins", nullptr), 0);
}

TEST(MModule, WindowingConfigurationIsStoredAndServed) {
  const LibraryLife life;
  LibraryLife::LeaveOutParts();
  MModule* const module = LibraryLife::Start();
  MWindowsConfiguration configuration;
  MWindowsModule::operations = MakeOperations();
  EXPECT_EQ(Invoke(module, "MWindowsCreateStyle", MAsWord("dark")), 0) << "nobody could create it";
  EXPECT_EQ(Invoke(module, "MWindowsRegisterStyle", 1), 0);
  EXPECT_EQ(Invoke(module, "MWindowsConfiguration", MAsWord(&configuration)), 0);
  EXPECT_EQ(MWindowsModule::windowing, &configuration);
  EXPECT_EQ(Invoke(module, "MWindowsCreateStyle", MAsWord("dark")), 17);
  EXPECT_EQ(configuration.created, "dark");
  EXPECT_EQ(Invoke(module, "MWindowsCreateStyle"), 17);
  EXPECT_EQ(configuration.created, "");
  EXPECT_EQ(Invoke(module, "MWindowsRegisterStyle", 5), 0);
  EXPECT_EQ(configuration.registered, 1);
  EXPECT_EQ(Invoke(module, "MWindowsRegisterStyle"), 0);
  EXPECT_EQ(configuration.registered, 0);
}

TEST(MModule, OwnedConfigurationGoesWithTheModule) {
  for (const bool owns : {false, true}) {
    const LibraryLife life;
    LibraryLife::LeaveOutParts();
    MWindowsConfiguration configuration;
    MWindowsModule::operations = MakeOperations();
    SonvelleDLL* const module = LibraryLife::Start();
    MWindowsModule::windowing = &configuration;
    module->ownsWindowing = owns;
    MDestroyModuleInstance();
    EXPECT_EQ(configuration.isDestroyed, owns);
    EXPECT_EQ(MWindowsModule::windowing, owns ? nullptr : &configuration);
  }
}

TEST(MModule, EndSavesTheConfigurationThenDestroysTheWindowingThenEmptiesTheCaches) {
  static std::string log;
  log.clear();
  const LibraryLife life;
  SonvelleDLL::parts = {nullptr, nullptr, [] { log += "configuration "; }};
  MWindowsModule::operations.destroy = [](MWindowsConfiguration&) { log += "windowing "; };
  MModule::emptyCaches = [] { log += MModule::instance ? "caches " : "too late "; };
  MWindowsConfiguration configuration;
  MWindowsModule::windowing = &configuration;
  LibraryLife::Start()->ownsWindowing = true;
  MDestroyModuleInstance();
  MModule::emptyCaches = nullptr;
  EXPECT_EQ(log, "configuration windowing caches ");
  EXPECT_EQ(MModule::instance, nullptr);
}

TEST(MModule, EndDropsTheTranslations) {
  const LibraryLife life;
  LibraryLife::LeaveOutParts();
  LibraryLife::Start();
  auto* const table = new MTranslationTable;
  table->Set("one", "", "eins");
  MSetTranslationTable(table);
  EXPECT_EQ(Translate("one"), "eins");
  MDestroyModuleInstance();
  EXPECT_EQ(Translate("one"), "one");
}

TEST(MModule, FirstIsTheOneThatWasMadeFirst) {
  const auto first = std::make_unique<NotingModule>();
  EXPECT_EQ(MModule::first, first.get());
  {
    NotingModule second;
    EXPECT_EQ(MModule::first, first.get());
  }
  EXPECT_EQ(MModule::first, first.get());
}

TEST(MModule, EmptyModuleHasItsWordsAndNoServices) {
  NotingModule module;
  EXPECT_EQ(module.name, "");
  EXPECT_EQ(module.title, "");
  EXPECT_EQ(module.reserved, 31u);
  EXPECT_EQ(module.serviceCount, 0);
  EXPECT_TRUE(module.resources.IsEmpty());
  EXPECT_EQ(module.globalData.GetSize(), 0);
  EXPECT_EQ(module.Reserved(), 0);
}

}  // namespace
