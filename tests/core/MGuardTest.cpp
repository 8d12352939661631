#include "core/MGuard.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <stdexcept>

#include "core/MTranslate.h"
#include "tests/common/CountingFunctions.h"
#include "tests/common/ReportedTexts.h"

namespace {

using Reported = std::vector<std::string>;

TEST(MGuard, BlockThatThrowsNothingRunsUnreported) {
  const ReportedTexts reports;
  int calls = 0;
  EXPECT_TRUE(MRunGuarded("MModule::Initialize", [&] { ++calls; }));
  const auto constant = [&calls]() { ++calls; };
  EXPECT_TRUE(MRunGuarded("MModule::Initialize", constant));
  auto counting = [count = 0, &calls]() mutable { calls += ++count; };
  EXPECT_TRUE(MRunGuarded("MModule::Initialize", counting));
  EXPECT_EQ(calls, 3);
  EXPECT_EQ(reports.Get(), Reported());
}

TEST(MGuard, ExceptionIsReportedWithLocationSourceAndMessage) {
  const ReportedTexts reports;
  EXPECT_FALSE(MRunGuarded("MLoadGlobalResources", [] {
    MException exception("Sample is not available.", 7);
    exception.source = "reader";
    throw exception;
  }));
  EXPECT_EQ(reports.Get(), Reported({"Structured exception from 'reader' catched at 'MLoadGlobalResources' "
                                     "('Sample is not available.')"}));
}

TEST(MGuard, EmptySourceAndBracesAreReportedAsTheyAre) {
  const ReportedTexts reports;
  EXPECT_FALSE(MRunGuarded("MModule::MModule", [] { throw MException("{0} {2"); }));
  EXPECT_EQ(reports.Get(),
            Reported({"Structured exception from '' catched at 'MModule::MModule' ('{0} {2')"}));
}

TEST(MGuard, AnythingElseIsReportedWithTheLocationOnly) {
  const ReportedTexts reports;
  EXPECT_FALSE(MRunGuarded("MLibraryDLLInitialize", [] { throw 5; }));
  EXPECT_FALSE(MRunGuarded("MModule::DLLLoaded", [] { throw std::runtime_error("lost"); }));
  EXPECT_EQ(reports.Get(), Reported({"SYSTEM EXCEPTION! MLibraryDLLInitialize",  //
                                     "SYSTEM EXCEPTION! MModule::DLLLoaded"}));
}

TEST(MGuard, TextsAreTranslated) {
  MTranslationTable table;
  table.Set("SYSTEM EXCEPTION! {0}", "", "AUSNAHME! {0}");
  MTranslationTable* const before = MSetTranslationTable(&table);
  const ReportedTexts reports;
  EXPECT_FALSE(MRunGuarded("here", [] { throw 5; }));
  EXPECT_EQ(reports.Get(), Reported({"AUSNAHME! here"}));
  MSetTranslationTable(before);
}

TEST(MGuard, WithoutAHookNothingHappens) {
  EXPECT_FALSE(MRunGuarded("here", [] { throw MException("lost"); }));
  ReportFatal("lost");
}

TEST(MGuard, InnerGuardKeepsWhatIsThrownFromTheOuterOne) {
  const ReportedTexts reports;
  EXPECT_TRUE(MRunGuarded("outer", [] { MRunGuarded("inner", [] { throw 1; }); }));
  EXPECT_EQ(reports.Get(), Reported({"SYSTEM EXCEPTION! inner"}));
}

TEST(MGuard, NothingEscapesWhenThereIsNoMemoryForTheReport) {
  static int reported;
  reported = 0;
  const CountingFunctions table;
  MSetFatalHook([](const MString&) { ++reported; });
  int64_t failing = 0;
  for (; reported == 0; ++failing) {
    ASSERT_LT(failing, 100);
    EXPECT_FALSE(MRunGuarded("here", [failing] {
      CountingFunctions::FailAfter(failing);
      throw MException("lost");
    }));
    CountingFunctions::FailAfter(-1);
  }
  MSetFatalHook(nullptr);
  EXPECT_GT(failing, 1) << "the report needs memory";
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST(MGuard, UnwindingOfAnEndingThreadPassesThrough) {
  const ReportedTexts reports;
  static bool isBehindReached, isUnwound;
  isBehindReached = isUnwound = false;
  pthread_t thread;
  const auto body = [](void*) -> void* {
    struct Unwound {
      ~Unwound() { isUnwound = true; }
    } unwound;
    MRunGuarded("here", [] { pthread_exit(nullptr); });
    isBehindReached = true;
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, nullptr, body, nullptr), 0);
  pthread_join(thread, nullptr);
  EXPECT_FALSE(isBehindReached);
  EXPECT_TRUE(isUnwound);
  EXPECT_EQ(reports.Get(), Reported());
}

}  // namespace
