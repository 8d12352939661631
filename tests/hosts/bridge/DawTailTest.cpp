// How long a plug-in in a DAW sounds on.

#include "core/MException.h"
#include "hosts/bridge/TailProbe.h"
#include "tests/hosts/FakeInstrument.h"
#include "tests/hosts/FakePlugin.h"
#include "tests/hosts/bridge/DawPluginUnderTest.h"

namespace {

// An effect that never falls silent.
MWord M_CALL EndlessEffect(void* instance, int32_t service, MServiceArguments* arguments) {
  const MWord result = FakePlugin::EntryPoint(instance, service, arguments);
  if (service == MService::kPublicBlock)
    MAsAddress<MPluginPublicBlock>(result)->parameters[FakePlugin::kTail].integer.value = 100000000;
  return result;
}

TEST(DawTail, OfAnEffectIsMeasured) {
  DawPluginUnderTest plugin("Echolan");
  EXPECT_EQ(plugin.GetTail(), 0) << "without a format";
  plugin.Start();
  plugin.SetValue(plugin.Find("delay"), 0.1);
  plugin.SetValue(plugin.Find("feedback"), 0.5);
  const int64_t tail = plugin.GetTail();
  // Of the square of the feedback: 0.25^7 is the first power below 0.0001.
  EXPECT_GE(tail, 6 * 4800);
  EXPECT_LE(tail, 8 * 4800);
  plugin.SetValue(plugin.Find("feedback"), 0);
  EXPECT_LT(plugin.GetTail(), tail);
  DawPluginUnderTest dry("Clampet");
  dry.Start();
  EXPECT_EQ(dry.GetTail(), 0);
}

TEST(DawTail, MayBeEndless) {
  DawPluginUnderTest plugin(GetFakeType(bridge::PluginKind::kEffect, EndlessEffect));
  plugin.Start(1, 8000);
  EXPECT_EQ(plugin.GetTail(), bridge::kEndlessTail);
}

TEST(DawTail, ThatCouldNotBeMeasuredIsMeasuredTheNextTime) {
  DawPluginUnderTest plugin(GetFakeType(bridge::PluginKind::kEffect, EndlessEffect));
  plugin.Start(1, 8000);
  FakePlugin::raisingService = MService::kLoadState;
  EXPECT_THROW(plugin.GetTail(), MException);
  FakePlugin::raisingService = FakePlugin::kNever;
  EXPECT_EQ(plugin.GetTail(), bridge::kEndlessTail);
}

TEST(DawTail, OfAnInstrumentIsItsReleaseAndEndlessWhereNotesRingOut) {
  FakeInstrument::Reset();
  DawPluginUnderTest plugin(GetFakeType(bridge::PluginKind::kInstrument, FakeInstrument::EntryPoint));
  EXPECT_EQ(plugin.GetTail(), 0) << "without a format";
  plugin.Start(1, 8000);
  EXPECT_EQ(plugin.GetTail(), 160);
  plugin.SetValue(plugin.Find("hostRelease"), 10);
  EXPECT_EQ(plugin.GetTail(), 80000);
  plugin.SetValue(plugin.Find("hostOneShot"), 1);
  EXPECT_EQ(plugin.GetTail(), bridge::kEndlessTail);
}

}  // namespace
