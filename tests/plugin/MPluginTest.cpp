#include "plugin/MPlugin.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"
#include "tests/plugin/NotingPlugin.h"

namespace {

MWord Serve(MPlugin& plugin, int32_t service, MWord a = 0, MWord b = 0) {
  MServiceArguments arguments(a, b);
  return plugin.Service(service, &arguments);
}

const std::vector<int32_t> kUnknown = {7,   8,   9,   10,  15,  16,  17,  18,        19,        21, 99, 100,
                                       101, 102, 103, 104, 200, 201, 205, INT32_MAX, INT32_MIN, -1, -5};
const std::vector<int32_t> kWithoutArguments = {MService::kPublicBlock, MService::kDetach,
                                                MService::kStateLoaded};

TEST(MPlugin, UnknownServicesGiveMinusOneAndCallNothing) {
  NotingPlugin plugin;
  for (const int32_t service : kUnknown) {
    EXPECT_EQ(plugin.Calls(service, 1, 1), "") << service;
    EXPECT_EQ(plugin.result, -1) << service;
    EXPECT_EQ(plugin.Service(service, nullptr), -1) << service;
  }
  for (const MPluginParameter& row : plugin.rows) EXPECT_EQ(row.real.value, 0.5);
}

TEST(MPlugin, PublicBlockStartsWithItsValuesAndTheTable) {
  NotingPlugin plugin;
  const auto& block = *MAsAddress<MPluginPublicBlock>(Serve(plugin, MService::kPublicBlock));
  EXPECT_EQ(block.hostFlag0, 0);
  EXPECT_EQ(block.hostFlag1, 1);
  EXPECT_EQ(block.pluginFlag, 0);
  EXPECT_EQ(block.parameters, plugin.rows);
  EXPECT_EQ(block.parameterCount, 2);
  EXPECT_EQ(block.editors, nullptr);
  EXPECT_EQ(block.editorCount, 0);
}

TEST(MPlugin, PublicBlockOfAPluginWithoutATableHasNone) {
  MPlugin plugin;
  const auto& block = *MAsAddress<MPluginPublicBlock>(Serve(plugin, MService::kPublicBlock));
  EXPECT_EQ(block.parameters, nullptr);
  EXPECT_EQ(block.parameterCount, 0);
}

TEST(MPlugin, PublicBlockKeepsItsAddressAndTheHostsFlagsForLife) {
  NotingPlugin plugin;
  const MWord address = Serve(plugin, MService::kPublicBlock);
  auto& block = *MAsAddress<MPluginPublicBlock>(address);
  block.hostFlag0 = 17;
  block.hostFlag1 = 18;
  for (int32_t service = -10; service < 250; ++service) {
    if (service == MService::kDestroy || service == MService::kCommand) continue;
    plugin.Service(service, nullptr);
    EXPECT_EQ(Serve(plugin, MService::kPublicBlock), address) << service;
  }
  EXPECT_EQ(block.hostFlag0, 17);
  EXPECT_EQ(block.hostFlag1, 18);
  EXPECT_EQ(block.parameters, plugin.rows);
}

TEST(MPlugin, OperationsThatAPluginDoesNotFillGiveTheirDefaults) {
  MPlugin plugin;
  MWord item = 0;  // stands for an item; nothing looks at it
  for (const int32_t service :
       {MService::kDetach, MService::kParameterChanged, MService::kCreateEditor, MService::kEditorClosed,
        MService::kSaveState, MService::kLoadState, MService::kStateLoaded})
    EXPECT_EQ(Serve(plugin, service, MAsWord(&item)), 0) << service;
  EXPECT_EQ(Serve(plugin, MService::kQuery, 3), -1);
  EXPECT_EQ(Serve(plugin, MService::kCommand, MAsWord("ImportSample"), 3), -1);
}

TEST(MPlugin, AClosedWindowClearsItsRowsWordAndAnyOtherOneClearsAll) {
  struct EditedPlugin : MPlugin {
    EditedPlugin() {
      for (int32_t i = 0; i < 2; ++i) rows[i].editor = &words[i];
      SetEditors(rows);
    }
    MWord words[2] = {11, 12};
    MPluginEditorRow rows[2];
  };
  EditedPlugin plugin;
  Serve(plugin, MService::kEditorClosed, 12);
  EXPECT_EQ(plugin.words[0], 11);
  EXPECT_EQ(plugin.words[1], 0);
  for (const MWord other : {99, 0}) {
    plugin.words[0] = 11;
    plugin.words[1] = 12;
    Serve(plugin, MService::kEditorClosed, other);
    EXPECT_EQ(plugin.words[0], 0) << other;
    EXPECT_EQ(plugin.words[1], 0) << other;
  }
}

TEST(MPlugin, EachServiceCallsItsOperationWithItsArguments) {
  NotingPlugin plugin;
  MWord item = 0;
  const std::string address = "(" + std::to_string(MAsWord(&item)) + ") ";
  EXPECT_EQ(plugin.Calls(MService::kDetach, 5, 6), "Detach ");
  EXPECT_EQ(plugin.Calls(MService::kCreateEditor, MAsWord(&item)), "CreateEditor" + address);
  EXPECT_EQ(plugin.Calls(MService::kEditorClosed, MAsWord(&item)), "EditorClosed" + address);
  EXPECT_EQ(plugin.Calls(MService::kEditorClosed), "EditorClosed(0) ");
  EXPECT_EQ(plugin.Calls(MService::kSaveState, MAsWord(&item)), "SaveState" + address);
  EXPECT_EQ(plugin.Calls(MService::kLoadState, MAsWord(&item)), "LoadState" + address);
  EXPECT_EQ(plugin.Calls(MService::kStateLoaded, 5, 6), "StateLoaded ");
  EXPECT_EQ(plugin.Calls(MService::kQuery, -9), "Query(-9) ");
  EXPECT_EQ(plugin.Calls(MService::kCommand, MAsWord("ImportSample"), 12), "ImportSample(12) ");
}

TEST(MPlugin, AnswersOfOperationsPassWhole) {
  NotingPlugin plugin;
  MWord item = 0;
  for (const MWord answer : {MWord{-1}, MWord{0}, MWord{1}, MWord{300}, INTPTR_MAX, INTPTR_MIN}) {
    plugin.answer = answer;
    EXPECT_EQ(Serve(plugin, MService::kQuery), answer);
    EXPECT_EQ(Serve(plugin, MService::kCommand, MAsWord("x")), answer);
    EXPECT_EQ(Serve(plugin, MService::kSaveState, MAsWord(&item)), answer != 0);
    EXPECT_EQ(Serve(plugin, MService::kLoadState, MAsWord(&item)), answer != 0);
  }
}

TEST(MPlugin, ChangedParameterIsToldBeforeTheUpdate) {
  NotingPlugin plugin;
  EXPECT_EQ(plugin.Calls(MService::kParameterChanged, 1), "ParameterChanged(1) Update ");
  EXPECT_EQ(plugin.result, 0);
}

TEST(MPlugin, IndexOutsideOfTheTableIsNotToldAndTheUpdateStillRuns) {
  NotingPlugin plugin;
  std::vector<MWord> outside = {-1, 2, INT32_MAX, INT32_MIN, INTPTR_MAX, INTPTR_MIN};
  outside.push_back(static_cast<MWord>(int64_t{INTPTR_MAX} - 0xFFFFFFFE));  // 1 in its lower 32 bits
  for (const MWord index : outside) {
    EXPECT_EQ(plugin.Calls(MService::kParameterChanged, index), "Update ") << index;
    EXPECT_EQ(plugin.result, 0);
  }
  MPlugin without;
  EXPECT_EQ(Serve(without, MService::kParameterChanged, 0), 0);
}

TEST(MPlugin, NullRecordReadsAsZeros) {
  NotingPlugin plugin;
  EXPECT_EQ(plugin.Service(MService::kAttach, nullptr), MAsWord(&plugin));
  plugin.Service(MService::kParameterChanged, nullptr);
  plugin.Service(MService::kCreateEditor, nullptr);
  plugin.Service(MService::kEditorClosed, nullptr);
  plugin.Service(MService::kQuery, nullptr);
  EXPECT_EQ(plugin.log, "ParameterChanged(0) Update CreateEditor(0) EditorClosed(0) Query(0) ");
}

TEST(MPlugin, NoItemAndNoNameCountAsNothing) {
  NotingPlugin plugin;
  plugin.answer = 1;
  for (MServiceArguments zeros;
       MServiceArguments * record : {&zeros, static_cast<MServiceArguments*>(nullptr)}) {
    EXPECT_EQ(plugin.Service(MService::kSaveState, record), 0);
    EXPECT_EQ(plugin.Service(MService::kLoadState, record), 0);
    EXPECT_EQ(plugin.Service(MService::kCommand, record), -1);
  }
  EXPECT_EQ(plugin.log, "");
}

TEST(MPlugin, ServicesWithoutArgumentsDoNotLookAtTheRecord) {
  auto* const noRecord = MAsAddress<MServiceArguments>(64);  // no memory of this process
  NotingPlugin plugin;
  for (const int32_t service : kWithoutArguments) plugin.Service(service, noRecord);
  for (const int32_t service : kUnknown) EXPECT_EQ(plugin.Service(service, noRecord), -1);
  EXPECT_EQ((new MPlugin)->Service(MService::kDestroy, noRecord), 0);
}

TEST(MPlugin, DestroyDestroysOnceAndGivesTheMemoryBack) {
  const CountingFunctions table;
  std::string log;
  auto* const plugin = new NotingPlugin;
  plugin->afterlife = &log;
  EXPECT_EQ(Serve(*plugin, MService::kDestroy), 0);
  EXPECT_EQ(log, "destroyed ");
  EXPECT_EQ(table.GetBalance(), 0);
}

// What a plug-in's host has been called with.
struct Host {
  static MWord M_CALL Callback(void* context, int32_t code, MServiceArguments* arguments) {
    Host& host = *static_cast<Host*>(context);
    host.codes.push_back(code);
    for (const auto& slot : arguments->slot)
      EXPECT_TRUE(slot.kind == MServiceArguments::kEmpty && slot.value == 0);
    return host.answer;
  }
  std::vector<int32_t> codes;
  MWord answer = 0;
};

TEST(MPlugin, WithoutAHostNotificationsGoNowhere) {
  NotingPlugin plugin;
  EXPECT_EQ(plugin.NotifyHost(MHostCode::kParametersChanged), 0);
  plugin.NotifyParametersChanged();
  plugin.NotifyLayoutChanged();
  Serve(plugin, MService::kAttach, MAsWord(&plugin), 0);  // a host without a callback
  EXPECT_EQ(plugin.NotifyHost(MHostCode::kLayoutChanged), 0);
}

TEST(MPlugin, AttachedHostIsCalledWithItsContextTheCodeAndEmptyArguments) {
  NotingPlugin plugin;
  Host first, second;
  EXPECT_EQ(Serve(plugin, MService::kAttach, MAsWord(&first), MAsWord(Host::Callback)), MAsWord(&plugin));
  plugin.NotifyParametersChanged();
  plugin.NotifyLayoutChanged();
  EXPECT_EQ(first.codes, (std::vector<int32_t>{1, 2}));
  Serve(plugin, MService::kAttach, MAsWord(&second), MAsWord(Host::Callback));
  second.answer = INTPTR_MIN;
  EXPECT_EQ(plugin.NotifyHost(77), INTPTR_MIN);
  EXPECT_EQ(second.codes, std::vector<int32_t>{77});
  EXPECT_EQ(first.codes.size(), 2u);
}

TEST(MPlugin, FailureOfTheHostPassesThroughAPlugin) {
  NotingPlugin plugin;
  MHostCallback* const fail = [](void*, int32_t, MServiceArguments*) -> MWord {
    throw MException("the host fails");
  };
  Serve(plugin, MService::kAttach, 0, MAsWord(fail));
  EXPECT_RAISES(plugin.NotifyParametersChanged(), "the host fails", 0);
}

}  // namespace
