#include <limits>

#include "tests/common/EffectSuite.h"

namespace {

using Limits = std::numeric_limits<double>;

const std::vector<double> kExtremes = {
    1e300,
    -1e300,
    Limits::quiet_NaN(),
    Limits::infinity(),
    -Limits::infinity(),
    Limits::denorm_min(),
    -0.0,
    0,
    1,
    -1,
    2.5,
    1e-300,
    1e6,
    -1e6,
    1e9,
    INT32_MAX,
    INT32_MIN,
    255,
    1000,
};

std::vector<AudioBlock> GetSignals(TestRandom& random) {
  constexpr int32_t kSamples = 600;
  const auto alternating = [](int32_t i) { return i % 2 == 0 ? 1 : -1; };
  return {AudioBlock::Noise(2, kSamples, random),
          AudioBlock(2, kSamples).Fill(alternating),
          AudioBlock::Constant(2, kSamples, 1),
          AudioBlock::Constant(2, kSamples, 1e-40),
          AudioBlock::Noise(2, kSamples, random, 1.2e-38),
          AudioBlock(2, kSamples)};
}

// Blocks of every kind of signal come out finite and within their buffers.
void ExpectSane(EffectUnderTest& effect, TestRandom& random) {
  for (AudioBlock& in : GetSignals(random)) {
    AudioBlock out = AudioBlock::Constant(2, in.GetLength(), NAN);
    effect.Process(in.From(), out.From(), in.GetLength());
    ASSERT_TRUE(out.IsFinite());
    ASSERT_TRUE(in.GuardsHold() && out.GuardsHold());
  }
}

TEST_P(EffectSuite, AnyNumberInEveryRowKeepsTheAudioFinite) {
  TestRandom random;
  for (const double extreme : kExtremes) {
    SCOPED_TRACE(extreme);
    EffectUnderTest effect(GetParam());
    effect.Prepare(2, kLowRate);
    ExpectSane(effect, random);
    for (int32_t i = 0; i < effect.GetRowCount(); ++i) effect.Set(i, extreme);
    ExpectSane(effect, random);
    effect.Prepare(2, 2 * kLowRate);
    ExpectSane(effect, random);
    effect.Skip(1000);
    ExpectSane(effect, random);
  }
}

TEST_P(EffectSuite, AnyBitsInAnyRowsKeepTheAudioFinite) {
  TestRandom random;
  EffectUnderTest effect(GetParam());
  effect.Prepare(2, kLowRate);
  for (int32_t round = 0; round < 60; ++round) {
    SCOPED_TRACE(round);
    for (int32_t i = 0; i < effect.GetRowCount(); ++i) {
      if (random.OneIn(3)) effect.SetBits(i, random.Bits());
      if (random.OneIn(3)) effect.Set(i, random.OneOf(kExtremes));
    }
    if (random.OneIn(5)) effect.Prepare(2, random.Integer(1, 2 * kLowRate));
    ExpectSane(effect, random);
  }
}

TEST_P(EffectSuite, RowsKeepTheNumbersThatAHostPutsThere) {
  EffectUnderTest effect(GetParam());
  for (int32_t i = 0; i < effect.GetRowCount(); ++i) {
    if (effect.GetRow(i).kind != MParameterKind::kReal) continue;
    effect.Set(i, 1e300);
    effect.Prepare(2, kLowRate);
    effect.AnswerToSilence(2, 1000);
    EXPECT_EQ(effect.GetRow(i).real.value, 1e300) << i;
  }
}

// Sets to 0 each sample whose input is not finite.
void ClearWhereNotFinite(const AudioBlock& in, AudioBlock& out) {
  for (int32_t c = 0; c < in.GetChannelCount(); ++c)
    for (int32_t i = 0; i < in.GetLength(); ++i)
      if (!std::isfinite(in[c][i])) out[c][i] = 0;
}

TEST_P(EffectSuite, WhatIsNotFiniteNeverComesOutAndIsForgottenInSilence) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  TestRandom random;
  for (const float bad : {std::numeric_limits<float>::quiet_NaN(), kInfinity, -kInfinity}) {
    EffectUnderTest clean(GetParam()), hurt(GetParam());
    clean.Prepare(2, kLowRate);
    hurt.Prepare(2, kLowRate);
    AudioBlock signal = AudioBlock::Noise(2, 4000, random);
    clean.Answer(signal, {512});
    for (int32_t i = 0; i < 100; ++i) signal[random.Below(2)][random.Below(4000)] = bad;
    signal[0][3999] = bad;
    AudioBlock answer = hurt.Answer(signal, {512});
    if (IsAllowed(Allowance::kPassesNoNumber)) ClearWhereNotFinite(signal, answer);
    EXPECT_TRUE(answer.IsFinite());
    clean.AnswerToSilence(2, 30 * kLowRate);
    EXPECT_TRUE(hurt.AnswerToSilence(2, 30 * kLowRate).IsFinite());
    EXPECT_EQ(hurt.IsSilent(), 1);
    const AudioBlock later = AudioBlock::Noise(2, 4000, random);
    const AudioBlock expected = clean.Answer(later, {512});
    EXPECT_LE(hurt.Answer(later, {512}).GetDistance(expected), 1e-6 * expected.GetPeak());
  }
}

}  // namespace
