#include "plugin/MLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/MLock.h"
#include "plugin/SonvelleConfiguration.h"
#include "tests/common/CountingFunctions.h"
#include "tests/plugin/LibraryLife.h"

namespace {

using testing::ElementsAre;

TEST(MLibrary, StartMakesTheModuleThatTheHostAndTheLibraryShare) {
  const LibraryLife life;
  SonvelleDLL* const module = LibraryLife::Start();
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(module, MModule::instance);
  EXPECT_EQ(module, MModule::first);
  EXPECT_EQ(module->name, "module_tests") << "the file's name, not what the host has said";
  EXPECT_EQ(module->title, "Tessaron Pavrek S");
  EXPECT_EQ(module->reserved, 31u);
  EXPECT_EQ(module->resources.GetResources().GetCount(), 7);
  EXPECT_EQ(module->globalData.GetSize(), 0);
  EXPECT_NE(module->handle, nullptr);
  EXPECT_FALSE(module->ownsWindowing);
  EXPECT_NE(SonvelleConfiguration::Get(), nullptr);
  EXPECT_THAT(life.reported.Get(), ElementsAre());
}

TEST(MLibrary, AllocatorIsInForceBeforeTheFirstAllocation) {
  const LibraryLife life;
  LibraryLife::LeaveOutParts();
  const MLibraryFunctions before = MGetLibraryFunctions();
  const CountingFunctions counting;
  const MLibraryFunctions table = MGetLibraryFunctions();
  MSetLibraryFunctions(before);
  ASSERT_NE(LibraryLife::Start(table), nullptr);
  EXPECT_GT(CountingFunctions::GetAllocated(), 0);
  MDestroyModuleInstance();
  EXPECT_EQ(CountingFunctions::GetBalance(), 0);
  EXPECT_EQ(CountingFunctions::GetHookCalls(), 0);
}

TEST(MLibrary, SecondStartPutsAnotherAllocatorAndLockInForceAndKeepsTheModule) {
  const LibraryLife life;
  MLock first, second;
  SonvelleDLL* const module = LibraryLife::Start(MGetDefaultLibraryFunctions(), &first);
  EXPECT_EQ(&MGetEventLock(), &first);
  const CountingFunctions counting;
  const MLibraryFunctions table = MGetLibraryFunctions();
  MSetLibraryFunctions(MGetDefaultLibraryFunctions());
  EXPECT_EQ(LibraryLife::Start(table, &second, "another name"), module);
  EXPECT_EQ(&MGetEventLock(), &second);
  EXPECT_EQ(MGetLibraryFunctions().allocate, table.allocate);
  EXPECT_EQ(module->name, "module_tests");
  MSetLibraryFunctions(MGetDefaultLibraryFunctions());
}

TEST(MLibrary, WithoutARecordOrItsTableNothingStarts) {
  const LibraryLife life;
  EXPECT_EQ(MInitializeLibrary(nullptr), nullptr);
  MLibraryRecord record{nullptr, nullptr, "name"};
  EXPECT_EQ(MInitializeLibrary(&record), nullptr);
  EXPECT_EQ(MModule::instance, nullptr);
}

TEST(MLibrary, PartsAreMadeOnceInTheirOrderAndDestroyedWithTheModule) {
  const LibraryLife life;
  static std::string log;
  log.clear();
  SonvelleDLL::parts = {[] { log += "shapes "; }, [] { log += "create "; }, [] { log += "destroy "; }};
  LibraryLife::Start();
  LibraryLife::Start();
  EXPECT_EQ(log, "shapes create ");
  MDestroyModuleInstance();
  EXPECT_EQ(log, "shapes create destroy ");
  MDestroyModuleInstance();
  EXPECT_EQ(log, "shapes create destroy ");
  EXPECT_EQ(MModule::instance, nullptr);
  EXPECT_EQ(MModule::first, nullptr);
}

TEST(MLibrary, FailingPartsAreReportedAndTheHostSeesSuccess) {
  const LibraryLife life;
  SonvelleDLL::parts = {[] { throw MException("no shapes"); }, nullptr, nullptr};
  EXPECT_NE(LibraryLife::Start(), nullptr);
  EXPECT_THAT(life.reported.Get(),
              ElementsAre("Structured exception from '' catched at 'MModule::Initialize' ('no shapes')"));
}

TEST(MLibrary, CorruptResourcesAreReportedAndLeaveAnEmptyLibrary) {
  const LibraryLife life;
  LibraryLife::LeaveOutParts();
  static constexpr uint8_t kCorrupt[] = {0, 0, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0, '<', 'a', '<', 'b'};
  static constexpr int32_t kSize = sizeof kCorrupt;
  MGlobalResources = {kCorrupt, &kSize};
  SonvelleDLL* const module = LibraryLife::Start();
  ASSERT_NE(module, nullptr);
  EXPECT_TRUE(module->resources.IsEmpty());
  ASSERT_EQ(life.reported.Get().size(), 1u);
  EXPECT_THAT(life.reported.Get()[0], testing::HasSubstr("catched at 'MLoadGlobalResources'"));
}

TEST(MLibrary, SecondBlockIsTheModulesGlobalData) {
  const LibraryLife life;
  LibraryLife::LeaveOutParts();
  static constexpr uint8_t kData[] = {1, 2, 3};
  static constexpr int32_t kSize = sizeof kData;
  MGlobalData = {kData, &kSize};
  EXPECT_EQ(LibraryLife::Start()->globalData.GetSize(), 3);
}

// Fails the n-th request for memory of a whole start, for every n: nothing escapes, nothing is left behind.
TEST(MLibrary, StartSurvivesEveryFailureOfTheAllocator) {
  const LibraryLife life;
  const CountingFunctions counting;
  const MLibraryFunctions table = MGetLibraryFunctions();
  bool started = false;
  for (int64_t n = 0; !started; ++n) {
    ASSERT_LT(n, 5000);
    CountingFunctions::FailAfter(n);
    LibraryLife::Start(table);
    started = life.reported.Get().empty() && MModule::instance && SonvelleConfiguration::Get();
    CountingFunctions::FailAfter(-1);
    const std::size_t count = life.reported.Get().size();
    MDestroyModuleInstance();
    EXPECT_EQ(life.reported.Get().size(), count) << n;
    ASSERT_EQ(CountingFunctions::GetBalance(), 0) << n;
    ReportedTexts::Clear();
  }
}

TEST(MLibrary, FailureToMakeTheModuleGivesNull) {
  const LibraryLife life;
  const CountingFunctions counting;
  CountingFunctions::FailAfter(0);
  EXPECT_EQ(LibraryLife::Start(MGetLibraryFunctions()), nullptr);
  EXPECT_THAT(life.reported.Get(),
              ElementsAre("Structured exception from '' catched at 'MCreateModuleInstance' "
                          "('Out of memory.')"));
}

// The copy of the host's name is the one allocation between the guards of the single steps.
TEST(MLibrary, FailureBetweenTheStepsGivesNullThoughTheModuleIsThere) {
  const LibraryLife life;
  LibraryLife::LeaveOutParts();
  const CountingFunctions counting;
  const MLibraryFunctions table = MGetLibraryFunctions();
  bool isSeen = false;
  for (int64_t n = 0; n < 100 && !isSeen; ++n) {
    ReportedTexts::Clear();
    CountingFunctions::FailAfter(n);
    const SonvelleDLL* const module = LibraryLife::Start(table);
    CountingFunctions::FailAfter(-1);
    for (const std::string& text : life.reported.Get())
      isSeen |= text == "Structured exception from '' catched at 'MLibraryDLLInitialize' ('Out of memory.')";
    if (isSeen) {
      EXPECT_EQ(module, nullptr);
      EXPECT_NE(MModule::instance, nullptr);
    }
    MDestroyModuleInstance();
  }
  EXPECT_TRUE(isSeen);
}

TEST(MLibrary, FailureOfTheModulesEndIsReportedUnderTheNameOfItsConstructor) {
  const LibraryLife life;
  LibraryLife::LeaveOutParts();
  LibraryLife::Start();
  MModule::emptyCaches = [] { throw MException("full"); };
  MDestroyModuleInstance();
  MModule::emptyCaches = nullptr;
  EXPECT_EQ(MModule::instance, nullptr);
  EXPECT_THAT(life.reported.Get(),
              ElementsAre("Structured exception from '' catched at 'MModule::MModule' ('full')"));
}

TEST(MLibrary, WhatIsNoMExceptionIsReportedToo) {
  const LibraryLife life;
  SonvelleDLL::parts = {[] { throw 1; }, nullptr, nullptr};
  EXPECT_NE(LibraryLife::Start(), nullptr);
  EXPECT_THAT(life.reported.Get(), ElementsAre("SYSTEM EXCEPTION! MModule::Initialize"));
}

TEST(MLibrary, FailureOfTheEndIsReportedUnderTheNameOfTheStart) {
  const LibraryLife life;
  SonvelleDLL::parts = {nullptr, nullptr, [] { throw MException("kept open"); }};
  LibraryLife::Start();
  MDestroyModuleInstance();
  EXPECT_EQ(MModule::instance, nullptr);
  EXPECT_THAT(life.reported.Get(),
              ElementsAre("Structured exception from '' catched at 'MCreateModuleInstance' ('kept open')"));
}

}  // namespace
