// Instruments: notes, and the file that they play.

#include "tests/audiofiles/MultiSampleInTest.h"
#include "tests/audiofiles/SubSampleFile.h"
#include "tests/hosts/lv2/Lv2Test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kSample[] = "https://sonvelle.example/plugins/Playbox#sample";

class Lv2Instruments : public Lv2Test {
 protected:
  Lv2Instruments() {
    content_.WriteSample("Samples/Drums/Step.wav", {std::vector<float>(48000, 0.5f)}, 48000);
  }

  // Playbox with the sample.
  std::unique_ptr<Lv2Host> MakeLoaded(HostOptions options = {}) {
    auto host = Make("Playbox", options);
    EXPECT_EQ(host->Restore(host->MakeState(StepState())), LV2_STATE_SUCCESS);
    return host;
  }
  static std::string StepState() {
    return "<state plugin=\"Playbox\" subpath=\"Drums\" filename=\"Step.wav\" CustomSamplePath=\"0\"/>";
  }
  // The first frame that sounds, -1 if none does.
  static int FindStart(const std::vector<float>& samples) {
    for (std::size_t i = 0; i < samples.size(); ++i)
      if (samples[i] != 0) return static_cast<int>(i);
    return -1;
  }
};

TEST_F(Lv2Instruments, NotesBeginAtTheirFrame) {
  for (const int frame : {0, 1, 100, 255}) {
    const auto host = MakeLoaded();
    host->AddMidi(frame, {0x90, 60, 127});
    host->Run(256);
    EXPECT_EQ(FindStart(host->outLeft), frame);
    EXPECT_EQ(host->outLeft[255], 0.5f);
    EXPECT_EQ(host->outRight[255], 0.5f);
  }
}

TEST_F(Lv2Instruments, VelocityIsTheVolumeAndZeroAnEnd) {
  const auto host = MakeLoaded();
  host->AddMidi(0, {0x90, 60, 64});
  host->Run(64);
  EXPECT_EQ(host->outLeft[63], static_cast<float>(0.5 * (64 / 127.0)));
  host->AddMidi(0, {0x90, 60, 0});
  host->Run(8192);
  EXPECT_EQ(host->outLeft[8191], 0.0f);
}

TEST_F(Lv2Instruments, BlocksDoNotChangeWhatIsHeard) {
  const auto whole = MakeLoaded(), parts = MakeLoaded({.mostFrames = 100});
  for (Lv2Host* const host : {whole.get(), parts.get()}) {
    host->AddMidi(50, {0x90, 60, 100});
    host->AddMidi(150, {0x90, 67, 100});
    host->AddMidi(250, {0x80, 60, 0});
    host->Run(4000);
  }
  EXPECT_EQ(whole->outLeft, parts->outLeft);
  EXPECT_EQ(FindStart(parts->outLeft), 50);
}

TEST_F(Lv2Instruments, EventsOutsideOfTheBlockOrWithoutOrderAreHeardNow) {
  const auto host = MakeLoaded();
  host->AddMidi(100, {0x90, 60, 127});
  host->AddMidi(20, {0x90, 62, 127});
  host->Run(128);
  EXPECT_EQ(FindStart(host->outLeft), 100);
  const auto early = MakeLoaded();
  early->AddMidi(-5, {0x90, 60, 127});
  early->Run(64);
  EXPECT_EQ(FindStart(early->outLeft), 0);
  const auto late = MakeLoaded();
  late->AddMidi(int64_t{1} << 40, {0x90, 60, 127});
  late->Run(64);
  EXPECT_EQ(FindStart(late->outLeft), -1);
  late->Run(64);
  EXPECT_EQ(FindStart(late->outLeft), 0);
}

TEST_F(Lv2Instruments, BuffersThatAreBrokenHarmNothing) {
  const auto host = MakeLoaded();
  host->AddMidi(0, {});
  host->AddMidi(0, {0x90});
  host->Run(64);
  for (const uint32_t size : {0u, 4u, 8u, 15u, 24u, 30u, ~0u}) {
    host->AddMidi(0, {0x90, 60, 127});
    host->AddMidi(0, {0x90, 64, 127});
    // The last event says that it goes on behind the buffer.
    auto* const event = reinterpret_cast<LV2_Atom_Event*>(&host->GetEvents()->body + 1);
    (event + 1)->body.size = size == ~0u ? size : (event + 1)->body.size;
    event->body.size = size;
    host->Run(64);
  }
  host->Connect("events_in", nullptr);
  host->Connect("events_out", nullptr);
  host->Run(64);
}

TEST_F(Lv2Instruments, AFileIsLoadedByTheWorkerAndTold) {
  const auto host = Make("Playbox");
  host->AddSet(kSample, content_.Path("Samples/Drums/Step.wav"));
  host->Run(64);
  EXPECT_THAT(host->GetToldPaths(), IsEmpty());
  EXPECT_EQ(GetAttribute(*host, "filename"), "");
  EXPECT_EQ(host->DoWork(), 1);
  EXPECT_EQ(GetAttribute(*host, "filename"), "Step.wav");
  EXPECT_EQ(GetAttribute(*host, "subpath"), "Drums");
  host->AddMidi(0, {0x90, 60, 127});
  host->Run(64);
  EXPECT_THAT(host->GetToldPaths(), ElementsAre(content_.Path("Samples/Drums/Step.wav")));
  EXPECT_EQ(host->CountMessages(LV2_STATE__StateChanged), 1);
  EXPECT_EQ(host->outLeft[63], 0.5f);
  host->Run(64);
  EXPECT_THAT(host->GetToldPaths(), IsEmpty());
  EXPECT_EQ(host->CountMessages(LV2_STATE__StateChanged), 0);
}

TEST_F(Lv2Instruments, WithoutAWorkerAFileIsLoadedAtOnce) {
  for (const Work work : {Work::kNone, Work::kAtOnce}) {
    const auto host = Make("Playbox", {.work = work});
    host->AddSet(kSample, content_.Path("Samples/Drums/Step.wav"));
    host->AddMidi(10, {0x90, 60, 127});
    host->Run(64);
    EXPECT_EQ(FindStart(host->outLeft), 10);
    EXPECT_THAT(host->GetToldPaths(), ElementsAre(content_.Path("Samples/Drums/Step.wav")));
  }
}

TEST_F(Lv2Instruments, AFileOutsideOfTheRootIsCopiedBelowIt) {
  content_.WriteSample("elsewhere/Far.wav", {std::vector<float>(4800, 0.25f)}, 48000);
  for (const char* const name : {"Playbox", "Vinylrake"}) {
    const auto host = Make(name, {.work = Work::kNone});
    host->AddSet(lv2::kPluginsUri + std::string(name) + "#sample", content_.Path("elsewhere/Far.wav"));
    host->Run(64);
    const std::string copy = "Samples/Imported" + content_.Path("elsewhere/Far.wav");
    EXPECT_TRUE(content_.Has(copy)) << copy;
    EXPECT_THAT(host->GetToldPaths(), ElementsAre(content_.Path(copy)));
  }
}

TEST_F(Lv2Instruments, MultisamplesAndLibrariesAreLoadedFromAnywhere) {
  MultiSampleInTest multisample;
  multisample.takes = {{1, 0, {TrackInTest::Constant(0.5f, 100)}}};
  const std::string inside =
      content_.GetFolder().WriteFile("MultiSamples/Kit.qxMultiSample", multisample.Make());
  const std::string outside = content_.GetFolder().WriteFile("Kit 2.qxMultiSample", multisample.Make());
  const auto host = Make("Layerbox", {.work = Work::kNone});
  const std::string property = "https://sonvelle.example/plugins/Layerbox#multisample";
  host->Control("delay") = 100;
  host->AddSet(property, inside);
  host->Run(64);
  EXPECT_EQ(GetAttribute(*host, "filename"), "Kit.qxMultiSample");
  EXPECT_EQ(GetAttribute(*host, "subpath"), "");
  EXPECT_EQ(GetAttribute(*host, "parameterdelay"), "0.1000");
  host->AddSet(property, outside);
  host->Run(64);
  const std::string copy = "MultiSamples/Imported" + outside;
  EXPECT_THAT(host->GetToldPaths(), ElementsAre(content_.Path(copy)));
  EXPECT_TRUE(content_.Has(copy));

  const std::string library =
      content_.GetFolder().WriteFile("SubSampleLibraries/New.qxSubSampleLib", SubSampleFile().GetBytes());
  const auto grainloom = Make("Grainloom", {.work = Work::kNone});
  grainloom->AddSet("https://sonvelle.example/plugins/Grainloom#library", library);
  grainloom->Run(64);
  EXPECT_EQ(GetAttribute(*grainloom, "filename"), "New.qxSubSampleLib");
}

TEST_F(Lv2Instruments, AFileThatIsRefusedIsAnsweredWithTheOldOne) {
  const auto host = MakeLoaded();
  host->Run(64);
  host->AddSet(kSample, content_.Path("Samples/Missing.wav"));
  host->Run(64);
  EXPECT_EQ(host->DoWork(), 1);
  host->Run(64);
  EXPECT_THAT(host->GetToldPaths(), ElementsAre(content_.Path("Samples/Drums/Step.wav")));
  EXPECT_EQ(GetAttribute(*host, "filename"), "Step.wav");
  for (const std::string& path : {std::string("Step.wav"), std::string(), std::string(5000, '/')}) {
    host->AddSet(kSample, path);
    host->Run(64);
    EXPECT_EQ(host->DoWork(), 0) << path.size();
    EXPECT_THAT(host->GetToldPaths(), ElementsAre(content_.Path("Samples/Drums/Step.wav"))) << path.size();
  }
  host->AddSet("http://example.org/other", content_.Path("Samples/Drums/Step.wav"));
  host->Run(64);
  EXPECT_EQ(host->DoWork(), 0);
}

// The folder of copies is a file.
TEST_F(Lv2Instruments, AFileThatCannotBeCopiedChangesNothing) {
  content_.GetFolder().WriteFile("Samples/Imported", "");
  content_.WriteSample("elsewhere/Far.wav", {{1, 1}});
  const auto host = MakeLoaded({.work = Work::kNone});
  host->Run(64);
  host->AddSet(kSample, content_.Path("elsewhere/Far.wav"));
  host->AddMidi(0, {0x90, 60, 127});
  host->Run(64);
  EXPECT_THAT(host->GetToldPaths(), ElementsAre(content_.Path("Samples/Drums/Step.wav")));
  EXPECT_EQ(host->CountMessages(LV2_STATE__StateChanged), 0);
  EXPECT_EQ(GetAttribute(*host, "filename"), "Step.wav");
  EXPECT_EQ(host->outLeft[63], 0.5f);
}

TEST_F(Lv2Instruments, AWorkerWithoutRoomIsAnsweredWithTheOldFile) {
  const auto host = MakeLoaded({.work = Work::kRefused});
  host->Run(64);
  content_.WriteSample("Samples/New.wav", {{1, 1}});
  host->AddSet(kSample, content_.Path("Samples/New.wav"));
  host->Run(64);
  EXPECT_THAT(host->GetToldPaths(), ElementsAre(content_.Path("Samples/Drums/Step.wav")));
}

TEST_F(Lv2Instruments, TheFileIsToldWhoeverAsks) {
  const auto host = MakeLoaded();
  host->Run(64);
  EXPECT_THAT(host->GetToldPaths(), ElementsAre(content_.Path("Samples/Drums/Step.wav")));
  host->Run(64);
  EXPECT_THAT(host->GetToldPaths(), IsEmpty());
  host->AddGet(kSample);
  host->Run(64);
  EXPECT_THAT(host->GetToldPaths(), ElementsAre(content_.Path("Samples/Drums/Step.wav")));
  host->AddGet("http://example.org/other");
  host->Run(64);
  EXPECT_THAT(host->GetToldPaths(), IsEmpty());
}

TEST_F(Lv2Instruments, RowsThatReadFilesAreWorkForTheWorker) {
  const auto host = Make("Layerbox");
  host->Run(64);
  host->DoWork();
  host->Control("singlesample") = 1;
  host->Run(64);
  EXPECT_EQ(host->DoWork(), 1);
  EXPECT_EQ(GetAttribute(*host, "parametersinglesample"), "1");
}

TEST_F(Lv2Instruments, ReleaseAndOneShotAreControls) {
  const auto host = MakeLoaded();
  host->Control("hostOneShot") = 1;
  host->AddMidi(0, {0x90, 60, 127});
  host->AddMidi(1, {0x80, 60, 0});
  host->Run(8192);
  EXPECT_EQ(host->outLeft[8191], 0.5f);
  EXPECT_EQ(GetAttribute(*host, "hostOneShot"), "1");
}

TEST_F(Lv2Instruments, FreeWheelingNothingIsMissed) {
  MultiSampleInTest multisample;
  multisample.rate = 48000;
  multisample.takes = {{1, 0, {TrackInTest::Constant(0.5f, 48000)}}};
  content_.GetFolder().WriteFile("MultiSamples/Kit.qxMultiSample", multisample.Make());
  const auto host = Make("Layerbox");
  host->Control("freewheel") = 1;
  host->Restore(host->MakeState("<state plugin=\"Layerbox\" subpath=\"\" filename=\"Kit.qxMultiSample\"/>"));
  host->Control("singlesample") = 1;  // which has the file read anew
  host->AddMidi(7, {0x90, 60, 127});
  host->Run(8192);
  EXPECT_EQ(FindStart(host->outLeft), 7);
  EXPECT_EQ(host->DoWork(), 0);
}

}  // namespace
