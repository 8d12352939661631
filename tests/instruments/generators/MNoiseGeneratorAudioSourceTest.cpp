#include "instruments/generators/MNoiseGeneratorAudioSource.h"

#include <gtest/gtest.h>

#include "dsp/MRandomSequence.h"
#include "tests/instruments/generators/Pumped.h"

namespace {

// What the sequence gives behind x.
double NextNoise(uint32_t& x) {
  x = x * 214013 + 2531011;
  return (x >> 16 & 0x7fff) / 32767.0 - 0.5;
}

TEST(MNoiseGeneratorAudioSource, DrawsOneNumberPerSampleForAllChannelsAndNoneBehindItsEnd) {
  MNoiseGeneratorAudioSource noise;
  noise.SetFormat(3, 1000);
  EXPECT_EQ(noise.GetLength(false), 100);
  MRandomSequence::Set(12345);
  uint32_t x = 12345;
  const AudioBlock out = Pump(noise, 3, 150, {7}, 0.5, 3.7);
  for (int32_t i = 0; i < 150; ++i) {
    const double expected = i < 100 ? 0.5 * NextNoise(x) : 0;
    for (int32_t c = 0; c < 3; ++c) ASSERT_NEAR(out[c][i], expected, 1e-7);
  }
  EXPECT_EQ(MRandomSequence::Get(), x);
}

TEST(MNoiseGeneratorAudioSource, StaysWithinHalfOfTheGainAndReachesIt) {
  MNoiseGeneratorAudioSource noise;
  noise.lengthSeconds = 10;
  noise.SetFormat(1, 44100);
  const AudioBlock out = Pump(noise, 1, 441000);
  EXPECT_LE(out.GetPeak(), 0.5);
  EXPECT_GT(out.GetPeak(), 0.4999);
}

// Two samples tell 15 bits of two successive numbers, and with them the sequence.
TEST(MNoiseGeneratorAudioSource, SequenceCanBeRecoveredFromItsSamples) {
  MNoiseGeneratorAudioSource noise;
  noise.SetFormat(1, 44100);
  const AudioBlock out = Pump(noise, 1, 100);
  const auto bits = [&](int32_t i) {
    return static_cast<uint32_t>(std::lround((double{out[0][i]} + 0.5) * 32767));
  };
  int32_t found = 0;
  for (uint32_t low = 0; low < 65536; ++low) {
    uint32_t x = bits(0) << 16 | low;
    bool fits = true;
    for (int32_t i = 1; i < 100 && fits; ++i) {
      x = x * 214013 + 2531011;
      fits = (x >> 16 & 0x7fff) == bits(i);
    }
    found += fits;
  }
  EXPECT_EQ(found, 1);
}

TEST(MNoiseGeneratorAudioSource, EndsWithItsLastSample) {
  MNoiseGeneratorAudioSource noise;
  noise.SetFormat(1, 1000);
  const MGeneratorStatePointer state = noise.CreateState(1, 1);
  std::vector<bool> calls;
  Pump(noise, *state, 1, 200, {99, 1, 100}, &calls);
  EXPECT_EQ(calls, (std::vector<bool>{false, true, true}));
}

}  // namespace
