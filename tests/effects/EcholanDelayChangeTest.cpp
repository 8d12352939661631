#include <gtest/gtest.h>

#include "tests/common/AudioThreadWatch.h"
#include "tests/common/CountingFunctions.h"
#include "tests/effects/EcholanUnderTest.h"

namespace {

constexpr int32_t kRate = 1000;  // a delay in seconds is its length in thousands

// A line of `length` samples without feedback that holds 1, 2, 3, ... in the order in which it will be read,
// and whose place is `position`.
void FillLine(EcholanUnderTest& echolan, int32_t length, int32_t position) {
  echolan.SetFeedback(0);
  echolan.SetDelay(length / double{kRate});
  echolan.Prepare(1, kRate);
  echolan.Answer(AudioBlock(1, position));
  echolan.Answer(AudioBlock(1, length).Fill([](int32_t i) { return i + 1; }));
  echolan.SetFeedback(1);  // what is read comes out as it is
}

// The next `count` samples that come out while nothing goes in.
std::vector<float> Read(EcholanUnderTest& echolan, int32_t count) {
  const AudioBlock out = echolan.Answer(AudioBlock(1, count));
  return std::vector<float>(out[0], out[0] + count);
}

TEST(EcholanDelayChange, AShorterLineKeepsTheOldestSamplesFadedTowardsItsEnd) {
  EcholanUnderTest echolan;
  FillLine(echolan, 8, 0);
  echolan.SetDelay(0.004);
  EXPECT_EQ(Read(echolan, 4), (std::vector<float>{1, 2 * 0.75f, 3 * 0.5f, 4 * 0.25f}));
}

TEST(EcholanDelayChange, ALongerLineHasZerosBehindTheFadedSamples) {
  EcholanUnderTest echolan;
  FillLine(echolan, 4, 0);
  echolan.SetDelay(0.008);
  EXPECT_EQ(Read(echolan, 8), (std::vector<float>{1, 2 * 0.75f, 3 * 0.5f, 4 * 0.25f, 0, 0, 0, 0}));
}

TEST(EcholanDelayChange, ThePlaceStaysSoALongerLineIsReadFromItsMiddle) {
  EcholanUnderTest echolan;
  FillLine(echolan, 4, 2);
  echolan.SetDelay(0.006);
  EXPECT_EQ(Read(echolan, 6), (std::vector<float>{3 * 0.5f, 4 * 0.25f, 0, 0, 1, 2 * 0.75f}));
}

TEST(EcholanDelayChange, ThePlaceStaysInAShorterLineThatReachesIt) {
  EcholanUnderTest echolan;
  FillLine(echolan, 8, 2);
  echolan.SetDelay(0.004);
  EXPECT_EQ(Read(echolan, 4), (std::vector<float>{3 * 0.5f, 4 * 0.25f, 1, 2 * 0.75f}));
}

TEST(EcholanDelayChange, APlaceAtOrBehindTheEndOfAShorterLineBecomesItsStart) {
  for (const int32_t position : {4, 5, 7}) {
    EcholanUnderTest echolan;
    FillLine(echolan, 8, position);
    echolan.SetDelay(0.004);
    EXPECT_EQ(Read(echolan, 4), (std::vector<float>{1, 2 * 0.75f, 3 * 0.5f, 4 * 0.25f})) << position;
  }
}

TEST(EcholanDelayChange, ALineOfOneSampleIsReachedAndLeft) {
  EcholanUnderTest echolan;
  FillLine(echolan, 4, 1);
  echolan.SetDelay(0);
  EXPECT_EQ(Read(echolan, 3), (std::vector<float>{1, 1, 1}));
  echolan.SetDelay(0.003);
  EXPECT_EQ(Read(echolan, 6), (std::vector<float>{1, 0, 0, 1, 0, 0}));
}

TEST(EcholanDelayChange, ABlockWithoutChannelsMovesThePlace) {
  EcholanUnderTest echolan;
  FillLine(echolan, 4, 0);
  echolan.Prepare(0, 0);
  echolan.Process(nullptr, nullptr, 2);
  echolan.Prepare(1, 0);
  EXPECT_EQ(Read(echolan, 4), (std::vector<float>{3, 4, 1, 2}));
}

TEST(EcholanDelayChange, ABlockOfNoSamplesAppliesTheNewDelay) {
  EcholanUnderTest echolan, direct;
  for (EcholanUnderTest* effect : {&echolan, &direct}) FillLine(*effect, 8, 0);
  echolan.SetDelay(0.004);
  echolan.Process(nullptr, nullptr, 0);
  echolan.SetDelay(0.008);
  EXPECT_EQ(Read(echolan, 8),
            (std::vector<float>{1, 2 * 0.75f * 0.75f, 3 * 0.5f * 0.5f, 4 * 0.25f * 0.25f, 0, 0, 0, 0}));
  EXPECT_EQ(Read(direct, 8), (std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(EcholanDelayChange, AnotherDelayOfTheSameLengthChangesNothing) {
  EcholanUnderTest echolan;
  FillLine(echolan, 4, 3);
  echolan.SetDelay(0.0049);
  EXPECT_EQ(Read(echolan, 4), (std::vector<float>{1, 2, 3, 4}));
}

TEST(EcholanDelayChange, ANewValueIsHeardInTheNextBlockWithoutAServiceCall) {
  EcholanUnderTest echolan;
  FillLine(echolan, 4, 0);
  MStoreShared(echolan.GetRow(0).real.value, 0.5);
  EXPECT_EQ(Read(echolan, 4), (std::vector<float>{0.25f, 0.5f, 0.75f, 1}));
  MStoreShared(echolan.GetRow(1).real.value, 0.002);
  EXPECT_EQ(Read(echolan, 2), (std::vector<float>{0.0625f, 0.0625f}));
}

TEST(EcholanDelayChange, NothingIsAllocatedWithinTheRange) {
  TestRandom random;
  for (const int32_t sampleRate : {1, 8000, 44100, 96000, 384000}) {
    const CountingFunctions table;
    EcholanUnderTest echolan;
    echolan.SetDelay(random.Real(0, 0.5));
    echolan.Prepare(3, sampleRate);
    AudioBlock block = AudioBlock::Noise(3, 500, random);
    float** const addresses = block.From();
    MPluginParameter& delay = echolan.GetRow(1);
    const int64_t calls = table.GetCalls();
    const AudioThreadWatch watch;
    for (const double delaySeconds : {0.5, 0.0, 0.1, 0.499, 0.25, 0.5, 0.0001, 0.5}) {
      MStoreShared(delay.real.value, delaySeconds);
      echolan.Process(addresses, addresses, 500);
    }
    EXPECT_EQ(watch.GetAllocations(), 0) << sampleRate;
    EXPECT_EQ(watch.GetWaits(), 0) << sampleRate;
    EXPECT_EQ(table.GetCalls(), calls) << sampleRate;
  }
}

// Where the second sound of an impulse that goes in now is heard, or -1.
int32_t FindEcho(EcholanUnderTest& echolan, int32_t within) {
  const AudioBlock out = echolan.Answer(AudioBlock::Impulse(1, within), {4096});
  const float* const found =
      std::find_if(out[0] + 1, out[0] + within, [](float value) { return value != 0; });
  return found < out[0] + within ? static_cast<int32_t>(found - out[0]) : -1;
}

TEST(EcholanDelayChange, ADelayBeyondTheRangeIsLimitedToAMinute) {
  for (const double delaySeconds : {60.0, 61.0, 1e300}) {
    EcholanUnderTest echolan;
    echolan.SetDelay(delaySeconds);
    echolan.Prepare(1, 8000);
    EXPECT_EQ(FindEcho(echolan, 500000), 480000) << delaySeconds;
  }
  EcholanUnderTest echolan;
  echolan.Prepare(1, 8000);
  echolan.SetDelay(60);
  EXPECT_EQ(FindEcho(echolan, 500000), 480000) << "set while it runs";
}

TEST(EcholanDelayChange, TheLineHasAtMostEightMillionSamples) {
  EcholanUnderTest echolan;
  echolan.SetDelay(60);
  echolan.Prepare(1, 384000);
  EXPECT_EQ(FindEcho(echolan, (1 << 23) + 10), 1 << 23);
}

TEST(EcholanDelayChange, ANegativeDelayIsOneSampleAndNoNumberIsTheDefault) {
  EcholanUnderTest echolan;
  echolan.SetDelay(-3);
  echolan.Prepare(1, 8000);
  EXPECT_EQ(FindEcho(echolan, 100), 1);
  echolan.SetDelay(std::numeric_limits<double>::quiet_NaN());
  echolan.Prepare(1, 8000);
  EXPECT_EQ(FindEcho(echolan, 1000), 800);
}

TEST(EcholanDelayChange, TheOldDelayGoesOnWhileThereIsNoMemoryForALongerOne) {
  TestRandom random;
  const CountingFunctions table;
  EcholanUnderTest echolan, untouched;
  const AudioBlock first = AudioBlock::Noise(2, 3000, random);
  const AudioBlock second = AudioBlock::Noise(2, 3000, random);
  for (EcholanUnderTest* effect : {&echolan, &untouched}) {
    effect->Prepare(2, 8000);
    effect->Answer(first, {512});
  }
  echolan.SetDelay(10);
  for (const int32_t request : {0, 1}) {
    table.FailAfter(request);
    EXPECT_TRUE(echolan.Answer(second) == untouched.Answer(second)) << request;
  }
  echolan.Prepare(1, 8000);
  EXPECT_EQ(FindEcho(echolan, 90000), 80000) << "with memory";
}

}  // namespace
