// What a host may do with any instrument: strange calls, no memory, audio threads.

#include "core/MFlushDenormals.h"
#include "tests/common/AudioThreadWatch.h"
#include "tests/common/CountingFunctions.h"
#include "tests/common/StreamSuite.h"

namespace {

TEST_P(StreamSuite, BlocksNeitherAllocateNorWait) {
  const CountingFunctions table;
  for (const int32_t channels : {2, 10}) {
    StreamUnderTest instrument(GetEntry());
    PrepareSound(instrument, channels);
    AudioBlock out(channels, 5000);
    float** const to = out.From();
    MWord note = instrument.Create(1, 1.3, 100);
    const int64_t calls = table.GetCalls();
    const AudioThreadWatch watch;
    for (const int32_t samples : {64, 0, 1, 441, 5000, 5000, 5000, 5000, 5000, 5000, 64})
      instrument.Compute(to, samples, note);
    EXPECT_EQ(watch.GetAllocations(), 0);
    EXPECT_TRUE(watch.GetWaits() == 0 || IsAllowed(StreamAllowance::kLocks)) << watch.GetWaits();
    EXPECT_EQ(table.GetCalls(), calls);
    instrument.Close(note);
  }
}

TEST_P(StreamSuite, AllMemoryIsGivenBackWithTheInstrument) {
  const auto live = [&] {
    StreamUnderTest instrument(GetEntry());
    for (const int32_t channels : {2, 9, 0, 1}) {
      PrepareSound(instrument, channels);
      instrument.Play(5000, {512});
    }
  };
  live();  // what all instances share is made with the first one
  const CountingFunctions table;
  for (int32_t i = 0; i < 3; ++i) live();
  EXPECT_GT(table.GetAllocated(), 0);
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST_P(StreamSuite, NoteWithoutMemoryIsNotMadeAndReported) {
  StreamUnderTest instrument(GetEntry());
  const CountingFunctions table;
  PrepareSound(instrument);
  const int64_t balance = table.GetBalance();
  int32_t failures = 0;
  for (int32_t request = 0; request < 60; ++request) {
    ReportedTexts::Clear();
    table.FailAfter(request);
    MWord note = instrument.Create();
    table.FailAfter(-1);
    if (note == 0) {
      ++failures;
      EXPECT_EQ(ReportedTexts::Get(),
                std::vector<std::string>{"Structured exception from '' catched at '" + GetParam().instrument +
                                         "AudioStreamPlugin::CreateStream' ('Out of memory.')"});
    }
    instrument.Close(note);
    EXPECT_EQ(table.GetBalance(), balance) << request;
  }
  EXPECT_GT(failures, 0);
  EXPECT_LT(failures, 60);
  ReportedTexts::Clear();
}

TEST_P(StreamSuite, ServicesWithNothingToWorkOnReturnTheirNeutralResult) {
  StreamUnderTest instrument(GetEntry());
  for (int32_t round = 0; round < 2; ++round) {
    for (const int32_t service :
         {MService::kDetach, MService::kCreateEditor, MService::kEditorClosed, MService::kStateLoaded,
          MService::kSaveState, MService::kLoadState, MService::kStreamQuery, MService::kCloseStream,
          MService::kCollectFiles, MService::kParameterChanged})
      EXPECT_EQ(instrument.Call(service), 0) << service;
    EXPECT_EQ(instrument.Call(MService::kCreateStream), 1);
    EXPECT_EQ(instrument.Call(MService::kQuery), -1);
    EXPECT_EQ(instrument.Call(MService::kCommand), -1);
    EXPECT_EQ(instrument.Call(MService::kCommand, MAsWord("NoSuchCommand")), -1);
    PrepareSound(instrument);
  }
}

TEST_P(StreamSuite, UnknownServicesAndThoseOfEffectsGiveMinusOne) {
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument);
  const AudioBlock expected = instrument.Play(2000, {512});
  for (const int32_t service :
       {7, 8, 10, 15, 19, 21, 99, 100, 101, 102, 103, 104, 105, 199, 206, -1, -5, INT32_MIN, INT32_MAX})
    EXPECT_EQ(instrument.Call(service, 2, 48000, 64), MWord{-1}) << service;
  EXPECT_TRUE(instrument.Play(2000, {512}) == expected);
}

TEST_P(StreamSuite, AnyFormatIsSafe) {
  StreamUnderTest instrument(GetEntry());
  for (const int32_t channels : {0, 1, 16, -7, 2}) {
    for (const int32_t rate : {0, -44100, 1, 8000, 384000, INT32_MAX, INT32_MIN}) {
      PrepareSound(instrument, channels, rate);
      EXPECT_TRUE(instrument.Play(700, {256, 1}).GuardsHold()) << channels << " " << rate;
    }
  }
}

TEST_P(StreamSuite, TheCallersTreatmentOfDenormalsComesBack) {
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument);
  const auto flushes = [] {
    volatile float smallest = 1.17549435e-38f;
    volatile float half = smallest * 0.5f;
    return half == 0;
  };
  instrument.Play(500);
  EXPECT_FALSE(flushes());
  const MFlushDenormals flush;
  instrument.Play(500);
  EXPECT_TRUE(flushes());
}

}  // namespace
