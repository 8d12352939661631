#include "instruments/generators/MEnvelopeAudioFilter.h"

#include <gtest/gtest.h>

#include "tests/instruments/generators/Pumped.h"
#include "tests/instruments/generators/SoundModel.h"

namespace {

TEST(MEnvelopeAudioFilter, StartsAsAFallFromOneToZero) {
  Written written(Signal(1000, 0.5));
  MEnvelopeAudioFilter envelope(written);
  ASSERT_EQ(envelope.gains.GetCount(), 2);
  EXPECT_EQ(envelope.gains[0].flags, MEnvelopeFlag::kDefault);
  const AudioBlock out = Pump(envelope, 2, 1000, {100});
  for (int32_t i = 0; i < 1000; ++i) {
    ASSERT_NEAR(out[0][i], 0.5 * (1 - i / 1000.0), 1e-7);
    ASSERT_NEAR(out[1][i], 0.5 * 0.75 * (1 - i / 1000.0), 1e-7);
  }
}

TEST(MEnvelopeAudioFilter, DrawnCurveIsThatOfTheModelInAnyBlocks) {
  TestRandom random;
  for (int32_t round = 0; round < 20; ++round) {
    const int32_t length = random.Integer(1, 5000);
    Signal signal(static_cast<std::size_t>(length));
    for (double& sample : signal) sample = static_cast<float>(random.Real(-1, 1));
    Written written(signal);
    MEnvelopeAudioFilter envelope(written);
    envelope.gains.Clear();
    for (int32_t i = random.Integer(1, 6); i >= 0; --i) {
      MEnvelopePoint& point = envelope.gains.Add(1 - i / 6.0, random.Real(0, 1));
      point.type = random.Below(2);
      point.tension = random.Real(-0.9, 0.9);
    }
    signal.resize(static_cast<std::size_t>(length) + 100);
    SoundModel::ApplyEnvelope(signal, envelope.gains, length);
    for (const Sizes& sizes : kSplits)
      ASSERT_LE(SoundModel::GetDistance(Pump(envelope, 1, length + 100, sizes)[0], signal), 2e-7) << length;
  }
}

TEST(MEnvelopeAudioFilter, IsOverWhenTheInnerObjectIs) {
  Written written(Signal(300, 1));
  MEnvelopeAudioFilter envelope(written);
  const MGeneratorStatePointer state = envelope.CreateState(1, 1);
  std::vector<bool> calls;
  Pump(envelope, *state, 1, 400, {299, 1, 100}, &calls);
  EXPECT_EQ(calls, (std::vector<bool>{false, true, true}));
}

TEST(MEnvelopeAudioFilter, HandsGainRatioFormatNameAndLengthToTheInnerObject) {
  Written written(Signal(300, 1));
  MEnvelopeAudioFilter envelope(written);
  envelope.CreateState(0.25, 1.5);
  EXPECT_EQ(written.lastGain, 0.25);
  EXPECT_EQ(written.lastRatio, 1.5);
  envelope.SetFormat(2, 100);
  EXPECT_EQ(envelope.GetLength(true), 3);
  EXPECT_EQ(envelope.GetLength(false), 300);
  EXPECT_EQ(envelope.displayName, MString("envelope"));
  EXPECT_EQ(envelope.GetDisplayName(), MString("Written"));
}

TEST(MEnvelopeAudioFilter, SoundWithoutLengthIsHarmless) {
  Written written;
  MEnvelopeAudioFilter envelope(written);
  EXPECT_TRUE(Pump(envelope, 2, 600).IsZero());
}

TEST(MEnvelopeAudioFilter, EditsDoNotReachASound) {
  Written written(Signal(300, 1));
  MEnvelopeAudioFilter envelope(written);
  const MGeneratorStatePointer state = envelope.CreateState(1, 1);
  const AudioBlock expected = Pump(envelope, 1, 300);
  envelope.gains.Clear();
  EXPECT_TRUE(Pump(envelope, *state, 1, 300) == expected);
}

}  // namespace
