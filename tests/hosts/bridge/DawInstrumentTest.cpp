// Instruments in a DAW.

#include <gmock/gmock.h>

#include "tests/hosts/FakeInstrument.h"
#include "tests/hosts/bridge/DawPluginUnderTest.h"

namespace {

using bridge::NoteEvent;

constexpr NoteEvent kPress = {NoteEvent::Kind::kPress, 0, 60, 0.5, false};
constexpr NoteEvent kRelease = {NoteEvent::Kind::kRelease, 0, 60, 0, false};

class DawInstrument : public testing::Test {
 protected:
  DawInstrument() {
    FakeInstrument::Reset();
    FakeInstrument::loadingResult = -1;
    plugin_.Activate(1, 1000, 256);
  }
  ~DawInstrument() override {
    FakeInstrument::note = [](const std::string&) {};
    FakeInstrument::loadingResult = -1;
  }

  DawPluginUnderTest plugin_{GetFakeType(bridge::PluginKind::kInstrument, FakeInstrument::EntryPoint)};
};

TEST_F(DawInstrument, NotesBeginAndEndAtTheirFrames) {
  AudioBlock out = AudioBlock::Constant(1, 500, 7);
  plugin_.Begin(nullptr, out.From(), 500);
  plugin_.RunTo(100);
  EXPECT_GE(plugin_.Play(kPress), 0);
  plugin_.RunTo(300);
  EXPECT_EQ(plugin_.Play(kRelease), -1);
  plugin_.End();
  for (int32_t i = 0; i < 500; ++i) {
    const double expected = i < 100 ? 0 : i < 300 ? 0.5 : i < 320 ? 0.5 * (319 - i) / 20 : 0;
    EXPECT_FLOAT_EQ(out[0][i], static_cast<float>(expected)) << i;
  }
  EXPECT_TRUE(plugin_.IsQuiet());
}

TEST_F(DawInstrument, ReleaseAndOneShotAreHeard) {
  plugin_.SetValue(plugin_.Find("hostRelease"), 0.1);
  AudioBlock out(1, 200);
  plugin_.Begin(nullptr, out.From(), 200);
  plugin_.Play(kPress);
  plugin_.Play(kRelease);
  plugin_.End();
  EXPECT_NE(out[0][98], 0);
  EXPECT_EQ(out[0][100], 0);
  plugin_.Begin(nullptr, out.From(), 200);
  plugin_.Change(plugin_.Find("hostOneShot"), 1);
  plugin_.Play(kPress);
  plugin_.Play(kRelease);
  plugin_.End();
  EXPECT_EQ(out[0][199], 0.5f);
}

TEST_F(DawInstrument, AResetCutsAllNotes) {
  AudioBlock out(1, 10);
  plugin_.Begin(nullptr, out.From(), 10);
  plugin_.Play(kPress);
  plugin_.End();
  EXPECT_FALSE(plugin_.IsQuiet());
  plugin_.Reset();
  EXPECT_TRUE(plugin_.IsQuiet());
  EXPECT_EQ(FakeInstrument::openStreams, 0);
}

TEST_F(DawInstrument, AResetLiftsThePedal) {
  plugin_.Play({NoteEvent::Kind::kPedal, 0, 0, 0, true});
  plugin_.Reset();
  AudioBlock out(1, 21);
  plugin_.Begin(nullptr, out.From(), 21);
  plugin_.Play(kPress);
  plugin_.Play(kRelease);
  plugin_.End();
  EXPECT_TRUE(plugin_.IsQuiet());
}

TEST_F(DawInstrument, GoesAwayAlsoWhereItsNotesCannotBeEnded) {
  plugin_.Play(kPress);
  plugin_.Play(kPress);
  FakeInstrument::failsToClose = true;
  EXPECT_NO_THROW(plugin_.Deactivate());
  EXPECT_FALSE(plugin_.IsActive());
  FakeInstrument::failsToClose = false;
}

TEST_F(DawInstrument, PlaysNothingBeforeItIsActive) {
  plugin_.Deactivate();
  EXPECT_EQ(plugin_.Play(kPress), -1);
  EXPECT_EQ(FakeInstrument::openStreams, 0);
}

TEST_F(DawInstrument, OfflineTheFirstNoteOfAVolumeWaitsForWhatItPlays) {
  std::vector<std::string> notes;
  FakeInstrument::loadingResult = 0;
  FakeInstrument::note = [&](const std::string& text) { notes.push_back(text.substr(0, text.find(' ', 8))); };
  plugin_.SetOffline(true);
  AudioBlock out(1, 10);
  plugin_.Begin(nullptr, out.From(), 10);
  plugin_.Play(kPress);
  plugin_.Play(kPress);
  plugin_.End();
  EXPECT_THAT(notes,
              testing::ElementsAre("command FinishLoading", "create 0", "close", "command FinishLoading",
                                   "create 0", "create 0", "compute 10", "compute 10"));
}

TEST_F(DawInstrument, OfflineANoteWaitsAgainWhereTheHostHasChangedWhatItPlays) {
  int32_t waits = 0;
  FakeInstrument::loadingResult = 0;
  FakeInstrument::note = [&](const std::string& text) { waits += text == "command FinishLoading"; };
  plugin_.SetOffline(true);
  AudioBlock out(1, 10);
  const auto play = [&] {
    waits = 0;
    plugin_.Begin(nullptr, out.From(), 10);
    plugin_.Play(kPress);
    plugin_.End();
    return waits;
  };
  EXPECT_EQ(play(), 2);
  EXPECT_EQ(play(), 0);
  plugin_.Command("ImportSample");
  EXPECT_EQ(play(), 2);
  plugin_.LoadState("<state/>");
  EXPECT_EQ(play(), 2);
}

int32_t loadsFinished = 0, rowsTold = 0;

MWord M_CALL CountingLayerbox(void* instance, int32_t service, MServiceArguments* arguments) {
  if (service == MService::kParameterChanged) ++rowsTold;
  const auto* const name =
      service == MService::kCommand ? MAsAddress<const char>(arguments->slot[0].value) : "";
  if (std::string_view(name) == "FinishLoading") ++loadsFinished;
  return FindType("Layerbox").entryPoint(instance, service, arguments);
}

TEST(DawInstrumentRows, ThatTheHostSetsOfflineMakeTheNextNoteWait) {
  bridge::PluginType type = FindType("Layerbox");
  type.entryPoint = CountingLayerbox;
  DawPluginUnderTest plugin(type);
  plugin.SetOffline(true);
  plugin.Start();
  AudioBlock out(2, 64);
  for (const bool isChanged : {false, false, true}) {
    const int32_t before = loadsFinished;
    if (isChanged) plugin.SetValue(plugin.Find("maxlength"), 5);
    plugin.Begin(nullptr, out.From(), 64);
    plugin.Play(kPress);
    plugin.End();
    EXPECT_EQ(loadsFinished > before, before == 0 || isChanged);
  }
}

TEST(DawInstrumentRows, ThatNoThreadHasToldAreToldInTheFirstBlockOffline) {
  bridge::PluginType type = FindType("Layerbox");
  type.entryPoint = CountingLayerbox;
  DawPluginUnderTest plugin(type);
  plugin.Start();
  rowsTold = 0;
  plugin.AnswerWithChange(AudioBlock(2, 64), 0, plugin.Find("maxlength"), 5);
  EXPECT_EQ(rowsTold, 0);
  plugin.SetOffline(true);
  plugin.Answer(AudioBlock(2, 64), 64);
  EXPECT_EQ(rowsTold, 1);
  plugin.Answer(AudioBlock(2, 64), 64);
  EXPECT_EQ(rowsTold, 1);
}

// Rows of an instrument may have files read: Layerbox reads its file again for another maximal length.
TEST(DawInstrumentRows, AreToldToTheInstrumentByAThreadThatMayWait) {
  DawPluginUnderTest plugin("Layerbox");
  plugin.Start();
  AudioBlock out(2, 64);
  const int32_t place = plugin.Find("maxlength");
  for (int32_t i = 0; i < 3; ++i) {
    plugin.Begin(nullptr, out.From(), 64);
    if (i == 0) plugin.Change(place, 5);
    plugin.End();
  }
  EXPECT_EQ(plugin.work, 1);
  EXPECT_EQ(plugin.GetValue(place), 5);
  plugin.DoWork();
  plugin.SetOffline(true);
  plugin.Begin(nullptr, out.From(), 64);
  plugin.Change(place, 6);
  plugin.End();
  EXPECT_EQ(plugin.work, 1) << "offline it is done at once";
}

}  // namespace
