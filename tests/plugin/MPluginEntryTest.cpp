// The exported function of a plug-in.

#include <gtest/gtest.h>

#include "plugin/MPlugin.h"
#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"
#include "tests/plugin/NotingPlugin.h"

class EntryTestPlugin final : public NotingPlugin {};

// Fails where its switch says so.
class FailingTestPlugin final : public MPlugin {
 public:
  static inline bool failsInConstructor = false;

  FailingTestPlugin() {
    if (failsInConstructor) throw MException("cannot be made", MErrorCode::kBadArgument);
  }
  void StateLoaded() override { throw MException("cannot be loaded", 300); }
};

M_PLUGIN_ENTRY(EntryTestPlugin)
M_PLUGIN_ENTRY(FailingTestPlugin)

namespace {

// The entry point is what a host calls, nothing less.
MPluginEntryPoint* const kEntry = EntryTestPluginInterface;
MPluginEntryPoint* const kFailing = FailingTestPluginInterface;

TEST(MPluginEntry, FirstCallMakesThePluginAndAttachesTheHost) {
  const CountingFunctions table;
  int32_t called = 0;
  MHostCallback* const count = [](void* context, int32_t code, MServiceArguments*) -> MWord {
    return *static_cast<int32_t*>(context) += code;
  };
  {
    MServiceArguments arguments(MAsWord(&called), MAsWord(count));
    const MWord address = kEntry(nullptr, MService::kAttach, &arguments);
    ASSERT_NE(address, 0);
    EXPECT_GT(table.GetBalance(), 0);
    auto* const plugin = MAsAddress<MPlugin>(address);
    static_cast<EntryTestPlugin*>(plugin)->NotifyLayoutChanged();
    EXPECT_EQ(called, 2);
    EXPECT_EQ(kEntry(plugin, MService::kDestroy, nullptr), 0);
  }
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST(MPluginEntry, LaterCallsServeTheirInstance) {
  void* const first = MAsAddress<void>(kEntry(nullptr, MService::kAttach, nullptr));
  void* const second = MAsAddress<void>(kEntry(nullptr, MService::kAttach, nullptr));
  EXPECT_NE(first, second);
  EXPECT_NE(kEntry(first, MService::kPublicBlock, nullptr), kEntry(second, MService::kPublicBlock, nullptr));
  EXPECT_EQ(kEntry(first, 7, nullptr), -1);
  kEntry(first, MService::kDestroy, nullptr);
  EXPECT_EQ(kEntry(second, MService::kStateLoaded, nullptr), 0);
  EXPECT_EQ(MAsAddress<EntryTestPlugin>(kEntry(second, MService::kAttach, nullptr))->log, "StateLoaded ");
  kEntry(second, MService::kDestroy, nullptr);
}

TEST(MPluginEntry, DestroyWithoutAnInstanceMakesAndDestroysOne) {
  const CountingFunctions table;
  EXPECT_EQ(kEntry(nullptr, MService::kDestroy, nullptr), 0);
  EXPECT_GT(table.GetAllocated(), 0);
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST(MPluginEntry, FailureOfAServiceReachesTheCallerByType) {
  void* const plugin = MAsAddress<void>(kFailing(nullptr, MService::kAttach, nullptr));
  EXPECT_RAISES(kFailing(plugin, MService::kStateLoaded, nullptr), "cannot be loaded", 300);
  EXPECT_EQ(kFailing(plugin, MService::kDetach, nullptr), 0);  // and leaves the plug-in usable
  kFailing(plugin, MService::kDestroy, nullptr);
}

TEST(MPluginEntry, PluginThatCannotBeMadeFailsWithoutALeak) {
  const CountingFunctions table;
  FailingTestPlugin::failsInConstructor = true;
  EXPECT_RAISES(kFailing(nullptr, MService::kAttach, nullptr), "cannot be made", MErrorCode::kBadArgument);
  FailingTestPlugin::failsInConstructor = false;
  EXPECT_GT(table.GetAllocated(), 0);
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST(MPluginEntry, PluginWithoutMemoryFailsWithOutOfMemory) {
  const CountingFunctions table;
  table.FailAfter(0);
  EXPECT_RAISES(kEntry(nullptr, MService::kAttach, nullptr), "Out of memory.", 0);
  EXPECT_EQ(table.GetBalance(), 0);
}

}  // namespace
