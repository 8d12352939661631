// The life of a note: its delay, its blocks, its end.

#include "tests/common/StreamSuite.h"

namespace {

constexpr MWord kSounds = MStreamResult::kSounds;
constexpr MWord kEnded = MStreamResult::kEnded;
constexpr MWord kNotStarted = MStreamResult::kNotStarted;

TEST_P(StreamSuite, DelayTakesWholeBlocksThenZerosAndThenTheNoteSounds) {
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument);
  MWord note = instrument.Create(1, 1, 1000);
  AudioBlock out = AudioBlock::Constant(2, 256, NAN);
  const AudioBlock before = out;
  for (int32_t i = 0; i < 3; ++i) {
    EXPECT_EQ(instrument.Compute(out.From(), 256, note), kNotStarted);
    EXPECT_EQ(std::memcmp(out[0], before[0], 256 * sizeof(float)), 0) << "written";
  }
  EXPECT_EQ(instrument.Compute(out.From(), 256, note), kSounds);
  const AudioBlock prompt = instrument.Play(24, {24});
  for (int32_t c = 0; c < 2; ++c) {
    for (int32_t i = 0; i < 232; ++i) ASSERT_EQ(out[c][i], 0) << i;
    for (int32_t i = 0; i < 24 && !IsAllowed(StreamAllowance::kDelaySkips); ++i)
      ASSERT_NEAR(out[c][232 + i], prompt[c][i], 1e-6) << i;
  }
  instrument.Close(note);
}

TEST_P(StreamSuite, DelayOfABlockSoundsFromTheFirstSampleOfTheNext) {
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument);
  const AudioBlock prompt = instrument.Play(512, {256});
  MWord note = instrument.Create(1, 1, 256);
  std::vector<MWord> results;
  const AudioBlock late = instrument.Pull(note, 768, {256}, &results);
  EXPECT_EQ(results, (std::vector<MWord>{kNotStarted, kSounds, kSounds}));
  for (int32_t i = 0; i < 512; ++i) ASSERT_NEAR(late[0][256 + i], prompt[0][i], 1e-6) << i;
  instrument.Close(note);
}

TEST_P(StreamSuite, NegativeDelayIsNone) {
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument);
  EXPECT_TRUE(instrument.Play(512, {}, 1, 1, -1000) == instrument.Play(512));
}

TEST_P(StreamSuite, BlockWithoutSamplesHasNotStartedAndDoesNotMoveTheNote) {
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument);
  const AudioBlock expected = instrument.Play(512, {256});
  MWord note = instrument.Create();
  float** const none = nullptr;
  AudioBlock first = instrument.Pull(note, 256);
  EXPECT_EQ(instrument.Compute(first.From(), 0, note), kNotStarted);
  EXPECT_EQ(instrument.Compute(first.From(), -5, note), kNotStarted);
  EXPECT_EQ(instrument.Compute(none, 64, note), kNotStarted);
  const AudioBlock second = instrument.Pull(note, 256);
  for (int32_t i = 0; i < 256; ++i) ASSERT_NEAR(second[1][i], expected[1][256 + i], 1e-6);
  instrument.Close(note);
}

TEST_P(StreamSuite, BlockThatEndsWithTheLastSampleReportsTheEnd) {
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument, 2, kLowRate);
  const int32_t length = GetLength(instrument);
  EXPECT_GT(length, kLowRate / 20);
  MWord note = instrument.Create();
  std::vector<MWord> results;
  instrument.Pull(note, length, {length - 1, 1}, &results);
  EXPECT_EQ(results, (std::vector<MWord>{kSounds, kEnded}));
  instrument.Close(note);
  note = instrument.Create();
  results.clear();
  instrument.Pull(note, length, {}, &results);
  EXPECT_EQ(results, std::vector<MWord>{kEnded});
  instrument.Close(note);
}

TEST_P(StreamSuite, BlockInWhichTheNoteEndsIsZeroBehindIt) {
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument, 3, kLowRate);
  const int32_t length = GetLength(instrument);
  MWord note = instrument.Create();
  std::vector<MWord> results;
  instrument.Pull(note, length - 10, {}, &results);
  const AudioBlock last = instrument.Pull(note, 100, {}, &results);
  EXPECT_EQ(results, (std::vector<MWord>{kSounds, kEnded}));
  for (int32_t c = 0; c < 3; ++c)
    for (int32_t i = 10; i < 100; ++i) ASSERT_EQ(last[c][i], 0) << c << " " << i;
  instrument.Close(note);
}

TEST_P(StreamSuite, EndedNoteStaysSilentAndEnded) {
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument, 3, kLowRate);
  MWord note = instrument.Create();
  instrument.Pull(note, kLowRate);
  for (const int32_t samples : {1, 64, 5000}) {
    std::vector<MWord> results;
    EXPECT_TRUE(instrument.Pull(note, samples, {}, &results).IsZero());
    EXPECT_EQ(results, std::vector<MWord>{kEnded});
  }
  instrument.Close(note);
}

TEST_P(StreamSuite, AnySplitIntoBlocksGivesTheSameAudio) {
  if (IsAllowed(StreamAllowance::kBlocksAreHeard))
    GTEST_SKIP() << "the instrument's own tests say what blocks do";
  for (const int32_t rate : {22050, 44100, 96000}) {
    for (const int32_t channels : {1, 2, 3, 8, 10}) {
      StreamUnderTest instrument(GetEntry());
      PrepareSound(instrument, channels, rate);
      const int32_t samples = rate / 2;
      const AudioBlock expected = instrument.Play(samples, {}, 0.8, 1.1);
      EXPECT_TRUE(expected.IsFinite() && expected.GuardsHold());
      EXPECT_GT(expected.GetPeak(), 0.01);
      for (const std::vector<int32_t>& sizes :
           std::vector<std::vector<int32_t>>{{63}, {64}, {441}, {512}, {4096}, {1}, {7, 0, 300, 2, 1000}}) {
        if (sizes == std::vector<int32_t>{1} && channels != 2) continue;
        const AudioBlock out = instrument.Play(samples, sizes, 0.8, 1.1);
        ASSERT_LE(out.GetDistance(expected), 1e-6 * std::max(expected.GetPeak(), 1.0))
            << rate << " Hz, " << channels << " channels, blocks of " << sizes[0];
      }
    }
  }
}

TEST_P(StreamSuite, NotesOfOneInstrumentAreIndependent) {
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument);
  const AudioBlock low = instrument.Play(8000, {250});
  const AudioBlock high = instrument.Play(8000, {250}, 0.5, 1.5);
  MWord first = instrument.Create();
  MWord second = instrument.Create(0.5, 1.5);
  for (int32_t done = 0; done < 8000; done += 250) {
    const AudioBlock a = instrument.Pull(first, 250);
    const AudioBlock b = instrument.Pull(second, 250);
    for (int32_t i = 0; i < 250; ++i) {
      ASSERT_NEAR(a[1][i], low[1][done + i], 1e-6);
      ASSERT_NEAR(b[0][i], high[0][done + i], 1e-6);
    }
  }
  instrument.Close(first);
  instrument.Close(second);
}

TEST_P(StreamSuite, ClosingTwiceOrNothingIsHarmless) {
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument);
  MWord note = instrument.Create();
  ASSERT_NE(note, 0);
  for (int32_t i = 0; i < 2; ++i) {
    EXPECT_EQ(instrument.Close(note), 0);
    EXPECT_EQ(note, 0);
  }
  EXPECT_EQ(instrument.Call(MService::kCloseStream), 0);
}

TEST_P(StreamSuite, NullHandleIsSilentAndEnded) {
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument, 10);
  MWord none = 0;
  std::vector<MWord> results;
  EXPECT_TRUE(instrument.Pull(none, 64, {}, &results).IsZero());
  EXPECT_EQ(results, std::vector<MWord>{kEnded});
}

TEST_P(StreamSuite, NumbersOfARequestAreLimited) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument);
  for (const double volume : {double{NAN}, kInfinity, -kInfinity})
    EXPECT_LE(instrument.Play(5000, {512}, volume).GetPeak(), 1e-20) << volume;
  const AudioBlock expected = instrument.Play(5000, {512});
  for (const double ratio : {double{NAN}, kInfinity, 0.0, -3.0})
    EXPECT_TRUE(instrument.Play(5000, {512}, 1, ratio) == expected) << ratio;
  for (const double ratio : {1e-300, 1e-6, 1e6, 1e300})
    EXPECT_TRUE(instrument.Play(5000, {512}, 1, ratio).IsFinite()) << ratio;
  for (const double volume : {1e300, -1e300, 1e30})
    EXPECT_TRUE(instrument.Play(5000, {512}, volume).IsFinite()) << volume;
  MWord late = instrument.Create(1, 1, INT32_MAX);
  EXPECT_TRUE(instrument.Pull(late, 5000, {512}).IsZero());
  instrument.Close(late);
}

}  // namespace
