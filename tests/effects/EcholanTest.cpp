#include <gtest/gtest.h>

#include <utility>

#include "tests/common/Texts.h"
#include "tests/effects/EcholanUnderTest.h"

namespace {

// The samples that are not zero: (index, value).
using Echoes = std::vector<std::pair<int32_t, float>>;

Echoes GetEchoes(const AudioBlock& block, int32_t channel = 0) {
  Echoes echoes;
  for (int32_t i = 0; i < block.GetLength(); ++i)
    if (block[channel][i] != 0) echoes.emplace_back(i, block[channel][i]);
  return echoes;
}

// The echoes of an impulse, `length` samples apart, each `gain` times the one before, up to a time.
Echoes ExpectedEchoes(int32_t length, double gain, int32_t end) {
  Echoes echoes;
  for (float value = 1; static_cast<int32_t>(echoes.size()) * length < end && value != 0;
       value = static_cast<float>(value * gain))
    echoes.emplace_back(static_cast<int32_t>(echoes.size()) * length, value);
  return echoes;
}

struct Delay {
  int32_t sampleRate;
  double delaySeconds;
  int32_t samples;
};

void PrintTo(const Delay& delay, std::ostream* out) {
  *out << delay.delaySeconds << " s at " << delay.sampleRate << " Hz";
}

class EcholanDelay : public testing::TestWithParam<Delay> {};

TEST_P(EcholanDelay, RepeatsAnImpulseThatManySamplesApart) {
  const auto [sampleRate, delaySeconds, samples] = GetParam();
  EcholanUnderTest echolan;
  echolan.SetFeedback(0.5);
  echolan.SetDelay(delaySeconds);
  echolan.Prepare(1, sampleRate);
  const int32_t end = 3 * samples + 2;
  EXPECT_EQ(GetEchoes(echolan.Answer(AudioBlock::Impulse(1, end), {512})),
            ExpectedEchoes(samples, 0.25, end));
}

INSTANTIATE_TEST_SUITE_P(Rates, EcholanDelay,
                         testing::Values(Delay{44100, 0, 1}, Delay{44100, 0.1, 4410},
                                         Delay{44100, 0.5, 22050}, Delay{48000, 0.1, 4800},
                                         Delay{44100, 1.9999 / 44100, 1}, Delay{44100, 2.0001 / 44100, 2},
                                         Delay{1, 0.5, 1}, Delay{3, 0.5, 1}, Delay{8000, 0.5, 4000},
                                         Delay{384000, 0.5, 192000}, Delay{1000000, 0.001, 1000}));

TEST(Echolan, StartsWithTenthOfASecondAndAFeedbackOfSixteenHundredths) {
  EcholanUnderTest echolan;
  echolan.Prepare(2, 44100);
  const AudioBlock out = echolan.Answer(AudioBlock::Impulse(2, 20000), {441});
  EXPECT_EQ(GetEchoes(out, 0), ExpectedEchoes(4410, 0.4 * 0.4, 20000));
  EXPECT_EQ(GetEchoes(out, 1), GetEchoes(out, 0));
}

TEST(Echolan, SquaresTheFeedback) {
  EcholanUnderTest echolan;
  echolan.SetFeedback(0.8);
  echolan.SetDelay(0.01);
  echolan.Prepare(1, 8000);
  const Echoes echoes = GetEchoes(echolan.Answer(AudioBlock::Impulse(1, 8000)));
  EXPECT_EQ(echoes, ExpectedEchoes(80, 0.8 * 0.8, 8000));
  EXPECT_FLOAT_EQ(echoes[1].second, 0.64f);
  EXPECT_FLOAT_EQ(echoes[2].second, 0.4096f);
}

TEST(Echolan, LimitsTheFeedbackToOneAndLosesItsSign) {
  for (const auto& [feedback, gain] : {std::pair(-0.5, 0.25f), {1e300, 1.0f}, {-7.0, 1.0f}}) {
    EcholanUnderTest echolan;
    echolan.SetFeedback(feedback);
    echolan.SetDelay(0.001);
    echolan.Prepare(1, 8000);
    EXPECT_EQ(echolan.Answer(AudioBlock::Impulse(1, 20))[0][8], gain) << feedback;
  }
}

TEST(Echolan, PassesTheSignalThroughWithoutFeedbackWhateverTheDelay) {
  TestRandom random;
  for (const double delaySeconds : {0.0, 0.001, 0.1, 0.5}) {
    EcholanUnderTest echolan;
    echolan.SetFeedback(0);
    echolan.SetDelay(delaySeconds);
    echolan.Prepare(2, 44100);
    const AudioBlock signal = AudioBlock::Noise(2, 50000, random);
    EXPECT_TRUE(echolan.Answer(signal, {512}) == signal) << delaySeconds;
  }
}

TEST(Echolan, AddsEachSampleToThePreviousOneWithADelayOfZero) {
  EcholanUnderTest echolan;
  echolan.SetFeedback(0.5);
  echolan.SetDelay(0);
  echolan.Prepare(1, 44100);
  const AudioBlock out = echolan.Answer(AudioBlock::Constant(1, 5, 1));
  const float expected[] = {1, 1.25f, 1.3125f, 1.328125f, 1.33203125f};
  for (int32_t i = 0; i < 5; ++i) EXPECT_EQ(out[0][i], expected[i]) << i;
}

TEST(Echolan, KeepsChannelsApart) {
  EcholanUnderTest echolan;
  echolan.Prepare(8, 8000);
  AudioBlock signal(8, 2000);
  for (int32_t c = 0; c < 8; ++c) signal[c][10 * c] = static_cast<float>(c + 1);
  const AudioBlock out = echolan.Answer(signal, {100});
  for (int32_t c = 0; c < 8; ++c) {
    const Echoes echoes = GetEchoes(out, c);
    ASSERT_EQ(echoes.size(), 3u) << c;
    EXPECT_EQ(echoes[0], std::pair(10 * c, static_cast<float>(c + 1)));
    EXPECT_EQ(echoes[1].first, 10 * c + 800);
  }
}

TEST(Echolan, PassesChannelsBeyondTheEighthUnchanged) {
  TestRandom random;
  EcholanUnderTest echolan;
  echolan.SetDelay(0.01);
  echolan.Prepare(11, 8000);
  const AudioBlock signal = AudioBlock::Noise(11, 1000, random);
  const AudioBlock out = echolan.Answer(signal, {64});
  for (int32_t c = 0; c < 11; ++c)
    EXPECT_EQ(std::equal(out[c], out[c] + 1000, signal[c]), c >= 8) << "channel " << c;
}

TEST(Echolan, ServesTheChannelsOfItsLineAndCopiesTheOthers) {
  TestRandom random;
  EcholanUnderTest echolan, stereo;
  for (EcholanUnderTest* effect : {&echolan, &stereo}) {
    effect->SetDelay(0.01);
    effect->Prepare(2, 48000);
  }
  echolan.Prepare(4, 0);
  const AudioBlock signal = AudioBlock::Noise(4, 2000, random);
  AudioBlock firstTwo(2, 2000);
  for (int32_t c = 0; c < 2; ++c) std::copy_n(signal[c], 2000, firstTwo[c]);
  const AudioBlock out = echolan.Answer(signal, {64});
  const AudioBlock expected = stereo.Answer(firstTwo, {64});
  for (int32_t c = 0; c < 2; ++c) EXPECT_TRUE(std::equal(out[c], out[c] + 2000, expected[c])) << c;
  for (int32_t c = 2; c < 4; ++c) EXPECT_TRUE(std::equal(out[c], out[c] + 2000, signal[c])) << c;
}

TEST(Echolan, CopiesTheInputUntilItHasASampleRate) {
  TestRandom random;
  EcholanUnderTest echolan;
  echolan.Prepare(3, -1);
  const AudioBlock signal = AudioBlock::Noise(3, 9000, random);
  EXPECT_TRUE(echolan.Answer(signal, {512}) == signal);
}

TEST(Echolan, LeavesTheLineAsItIsWithoutASampleRate) {
  EcholanUnderTest echolan;
  echolan.SetDelay(0.1);
  echolan.Prepare(1, 8000);
  echolan.Answer(AudioBlock::Impulse(1, 1));
  echolan.Prepare(1, 0);
  echolan.SetDelay(0.2);
  EXPECT_EQ(GetEchoes(echolan.Answer(AudioBlock(1, 1600)))[0].first, 799);
}

TEST(Echolan, ForgetsItsEchoesWhenPrepared) {
  TestRandom random;
  EcholanUnderTest echolan;
  echolan.Prepare(2, 8000);
  echolan.Answer(AudioBlock::Noise(2, 1000, random));
  echolan.Prepare(2, 8000);
  EXPECT_TRUE(echolan.AnswerToSilence(2, 8000).IsZero());
}

TEST(Echolan, IsSilentWhenNoSampleIsAboveATenThousandth) {
  EcholanUnderTest echolan;
  echolan.SetFeedback(0);
  echolan.SetDelay(0.01);
  const auto isSilentWith = [&](float value) {
    AudioBlock block(2, 50);
    block[1][30] = value;
    echolan.Prepare(2, 8000);
    echolan.Answer(block);
    return echolan.IsSilent();
  };
  const float threshold = 0.0001f;
  EXPECT_EQ(isSilentWith(threshold), 1);
  EXPECT_EQ(isSilentWith(-threshold), 1);
  EXPECT_EQ(isSilentWith(std::nextafter(threshold, 1.0f)), 0);
  EXPECT_EQ(isSilentWith(-std::nextafter(threshold, 1.0f)), 0);
}

TEST(Echolan, IsSilentOnceTheTailHasDecayed) {
  EcholanUnderTest echolan;
  EXPECT_EQ(echolan.IsSilent(), 1);
  echolan.SetFeedback(0.5);
  echolan.SetDelay(0.1);
  echolan.Prepare(2, 8000);
  EXPECT_EQ(echolan.IsSilent(), 1);
  echolan.Answer(AudioBlock::Impulse(2, 1));
  EXPECT_EQ(echolan.IsSilent(), 0);
  echolan.AnswerToSilence(2, 6 * 800);  // 0.25^6 is 0.00024
  EXPECT_EQ(echolan.IsSilent(), 0);
  echolan.AnswerToSilence(2, 800);  // 0.25^7 is 0.00006
  EXPECT_EQ(echolan.IsSilent(), 1);
}

TEST(Echolan, DecaysToTrueZerosThoughTheHostKeepsDenormals) {
  TestRandom random;
  EcholanUnderTest echolan;
  echolan.SetFeedback(0.8);
  echolan.Prepare(2, 8000);
  echolan.Answer(AudioBlock::Noise(2, 8000, random), {512});
  echolan.AnswerToSilence(2, 60 * 8000);
  EXPECT_TRUE(echolan.AnswerToSilence(2, 800).IsZero());
  EXPECT_EQ(echolan.IsSilent(), 1);
}

TEST(Echolan, PutsZeroIntoTheLineForASumThatIsNotFinite) {
  EcholanUnderTest echolan;
  echolan.SetFeedback(1);
  echolan.SetDelay(0.01);
  echolan.Prepare(1, 100);  // a line of one sample
  const float largest = std::numeric_limits<float>::max();
  AudioBlock signal(1, 6);
  signal[0][0] = signal[0][1] = largest;
  signal[0][3] = std::numeric_limits<float>::quiet_NaN();
  signal[0][4] = 0.5f;
  EXPECT_EQ(GetEchoes(echolan.Answer(signal)), (Echoes{{0, largest}, {4, 0.5f}, {5, 0.5f}}));
}

TEST(Echolan, HasTheRowsFeedbackAndDelayWithTheirHelpTexts) {
  EcholanUnderTest echolan;
  ASSERT_EQ(echolan.GetRowCount(), 2);
  EXPECT_EQ(Utf8(echolan.GetRow(0).help),
            "<name>Feedback</name> determines how much of the signal is returned to the input after the "
            "delay time.");
  EXPECT_EQ(
      Utf8(echolan.GetRow(1).help),
      "<name>Delay</name> determines how long it takes to pass the signal from the output back to the input, "
      "thus how long it takes to the sound to be played again.");
  EXPECT_EQ(echolan.GetBlock().pluginFlag, 0);
  EXPECT_EQ(echolan.GetBlock().editorCount, 0);
}

}  // namespace
