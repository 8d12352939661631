// Bypass, silence and what is no number, with effects of the library.

#include "hosts/bridge/EffectRunner.h"

#include "tests/hosts/FakePlugin.h"
#include "tests/hosts/bridge/DawPluginUnderTest.h"

namespace {

constexpr int32_t kFade = DawPluginUnderTest::kRate / 100;

std::vector<std::string> GetEffects() {
  std::vector<std::string> names;
  for (int32_t i = 0; i < kPluginEntryCount; ++i)
    if (kPluginEntries[i].kind == std::string_view("AudioEffect")) names.push_back(kPluginEntries[i].name);
  return names;
}

// What these do after a change lasts as long as a block or half of it.
bool AreBlocksHeard(const std::string& name) {
  return name == "Imprinta" || name == "Quaverly" || name == "Swirlo";
}

// The signal as many samples later.
AudioBlock Delayed(const AudioBlock& signal, int32_t latency) {
  AudioBlock delayed(signal.GetChannelCount(), signal.GetLength());
  for (int32_t c = 0; c < signal.GetChannelCount(); ++c)
    for (int32_t i = latency; i < signal.GetLength(); ++i) delayed[c][i] = signal[c][i - latency];
  return delayed;
}

TEST(EffectRunner, ABypassedEffectGivesItsInputWithTheSameLatency) {
  TestRandom random;
  for (const std::string& name : GetEffects()) {
    SCOPED_TRACE(name);
    DawPluginUnderTest plugin(name);
    plugin.SetValue(plugin.Find("hostBypass"), 1);
    plugin.Start();
    const AudioBlock signal = AudioBlock::Noise(2, 30000, random);
    EXPECT_TRUE(plugin.Answer(signal, 512) == Delayed(signal, plugin.GetLatency()));
  }
}

TEST(EffectRunner, BypassFadesWithinTenMillisecondsBothWays) {
  TestRandom random;
  const AudioBlock signal = AudioBlock::Noise(2, 40000, random);
  for (const std::string& name : GetEffects()) {
    if (AreBlocksHeard(name)) continue;
    SCOPED_TRACE(name);
    DawPluginUnderTest plugin(name), active(name);
    plugin.Start();
    active.Start();
    const int32_t bypass = plugin.Find("hostBypass"), latency = plugin.GetLatency();
    const AudioBlock wet = active.Answer(signal, DawPluginUnderTest::kMostFrames);
    const AudioBlock dry = Delayed(signal, latency);
    const AudioBlock out = plugin.AnswerWithChange(signal, 10001, bypass, 1);
    for (int32_t c = 0; c < 2; ++c)
      for (int32_t i = 0; i < signal.GetLength(); ++i) {
        const double share = std::clamp(1 - (i - 10000) / double{kFade}, 0.0, 1.0);
        ASSERT_NEAR(out[c][i], dry[c][i] + (wet[c][i] - dry[c][i]) * share, 1e-5) << i;
      }
    // Back again: dry until the effect has caught up, then a fade to an effect that has just begun.
    const AudioBlock back = plugin.AnswerWithChange(signal, 1000, bypass, 0);
    const int32_t caughtUp = 1000 + latency;
    for (int32_t i = latency; i < caughtUp; ++i) ASSERT_EQ(back[0][i], dry[0][i]) << i;
    for (int32_t i = caughtUp; i < caughtUp + kFade; ++i)
      ASSERT_LE(std::abs(back[0][i]), 20) << "no click at " << i;
  }
}

TEST(EffectRunner, BypassIsTheSameInBlocksOfAnySize) {
  TestRandom random;
  const AudioBlock signal = AudioBlock::Noise(2, 20000, random);
  for (const std::string& name : GetEffects()) {
    if (AreBlocksHeard(name)) continue;
    SCOPED_TRACE(name);
    std::vector<AudioBlock> answers;
    for (const int32_t size : {1, 100, 777, 20000}) {
      DawPluginUnderTest plugin(name);
      plugin.Start();
      AudioBlock in = signal, out(2, signal.GetLength());
      for (int32_t done = 0; done < in.GetLength(); done += size) {
        const int32_t frames = std::min(size, in.GetLength() - done);
        plugin.Begin(in.From(done), out.From(done), frames);
        for (const auto& [frame, value] : {std::pair{3000, 1}, {3200, 0}, {9000, 1}, {12345, 0}})
          if (frame >= done && frame < done + frames) {
            plugin.RunTo(frame - done);
            plugin.Change(plugin.Find("hostBypass"), value);
          }
        plugin.End();
      }
      answers.push_back(out);
    }
    for (const AudioBlock& answer : answers) EXPECT_LE(answer.GetDistance(answers[0]), 1e-6);
  }
}

TEST(EffectRunner, ABypassForgetsWhatTheEffectStillHeld) {
  TestRandom random;
  DawPluginUnderTest plugin("Echolan");
  plugin.Start();
  plugin.SetValue(plugin.Find("feedback"), 0.8);
  plugin.Answer(AudioBlock::Noise(2, 48000, random), 512);
  plugin.SetValue(plugin.Find("hostBypass"), 1);
  plugin.Answer(AudioBlock(2, 1000), 512);
  plugin.SetValue(plugin.Find("hostBypass"), 0);
  EXPECT_TRUE(plugin.Answer(AudioBlock(2, 48000), 512).IsZero());
}

TEST(EffectRunner, AResetForgetsToo) {
  TestRandom random;
  const AudioBlock signal = AudioBlock::Noise(2, 9000, random);
  for (const std::string& name : GetEffects()) {
    DawPluginUnderTest plugin(name);
    plugin.Start();
    plugin.Answer(signal, 512);
    plugin.Reset();
    EXPECT_LT(plugin.Answer(AudioBlock(2, 9000), 512).GetPeak(), 1e-4) << name;
  }
}

TEST(EffectRunner, WhatIsNoNumberOrInfiniteInTheInputIsSilence) {
  TestRandom random;
  const AudioBlock signal = AudioBlock::Noise(2, 4000, random, 0.5);
  for (const std::string& name : GetEffects()) {
    SCOPED_TRACE(name);
    DawPluginUnderTest plugin(name), clean(name);
    plugin.Start();
    clean.Start();
    AudioBlock spoilt = signal, mended = signal;
    for (const auto& [frame, value] : {std::pair{0, NAN}, {100, INFINITY}, {101, -INFINITY}, {3999, NAN}}) {
      spoilt[0][frame] = value;
      mended[0][frame] = 0;
    }
    EXPECT_TRUE(plugin.Answer(spoilt, 100) == clean.Answer(mended, 100));
  }
}

TEST(EffectRunner, AnEffectThatGivesNoNumbersIsSilentAndBeginsAnew) {
  DawPluginUnderTest plugin(GetFakeType(bridge::PluginKind::kEffect, FakePlugin::EntryPoint));
  plugin.Start(1);
  FakePlugin::notes.clear();
  AudioBlock signal = AudioBlock::Constant(1, 100, 1);
  EXPECT_TRUE(plugin.AnswerWithChange(signal, 0, plugin.Find("mode"), 2).IsZero());
  EXPECT_EQ(std::count(FakePlugin::notes.begin(), FakePlugin::notes.end(), "prepare 1 48000"), 1);
}

TEST(EffectRunner, HugeButFiniteInputLeavesNothingBehind) {
  for (const std::string& name : GetEffects()) {
    SCOPED_TRACE(name);
    DawPluginUnderTest plugin(name);
    plugin.Start();
    EXPECT_TRUE(plugin.Answer(AudioBlock::Constant(2, 5000, 3e38), 64).IsFinite());
    EXPECT_TRUE(plugin.Answer(AudioBlock(2, 5000), 64).IsFinite());
    plugin.Reset();
    const AudioBlock after = plugin.Answer(AudioBlock::Constant(2, 5000, 0.1), 64);
    EXPECT_TRUE(after.IsFinite());
    EXPECT_LT(after.GetPeak(), 100);
  }
}

TEST(EffectRunner, AChannelThatIsMissingIsSilence) {
  DawPluginUnderTest plugin("Clampet");
  plugin.Start();
  AudioBlock in = AudioBlock::Constant(2, 100, 0.25), out = AudioBlock::Constant(2, 100, NAN);
  const float* const channels[] = {nullptr, in[1]};
  plugin.Begin(channels, out.From(), 100);
  plugin.End();
  EXPECT_EQ(out[0][50], 0);
  EXPECT_NE(out[1][50], 0);
  plugin.Begin(nullptr, out.From(), 100);
  plugin.End();
  EXPECT_TRUE(out.IsZero());
}

TEST(EffectRunner, IsQuietWhenNothingIsLeft) {
  TestRandom random;
  for (const std::string& name : GetEffects()) {
    SCOPED_TRACE(name);
    DawPluginUnderTest plugin(name);
    plugin.Start();
    plugin.Answer(AudioBlock::Noise(2, 10000, random), 512);
    EXPECT_FALSE(plugin.IsQuiet());
    plugin.Answer(AudioBlock(2, 48000 * 12), 512);
    EXPECT_TRUE(plugin.IsQuiet());
    plugin.Answer(AudioBlock::Constant(2, 512, 0.1), 512);
    EXPECT_FALSE(plugin.IsQuiet());
  }
}

// Hosts may put an output where another channel's input is, and both inputs into one buffer.
TEST(EffectRunner, AnOutputMayLieWhereAnyInputIs) {
  TestRandom random;
  const AudioBlock signal = AudioBlock::Noise(2, 3000, random);
  AudioBlock twice = signal;
  std::copy_n(signal[0], 3000, twice[1]);
  for (const std::string& name : GetEffects()) {
    SCOPED_TRACE(name);
    DawPluginUnderTest apart(name), crossed(name), mono(name), shared(name);
    for (DawPluginUnderTest* const each : {&apart, &crossed, &mono, &shared}) each->Start();
    AudioBlock block = signal, spare(2, 3000);
    const auto process = [](DawPluginUnderTest& plugin, const std::array<const float*, 2>& in,
                            const std::array<float*, 2>& out) {
      plugin.Begin(in.data(), out.data(), 3000);
      plugin.End();
    };
    process(crossed, {block[0], block[1]}, {block[1], block[0]});
    AudioBlock expected = apart.Answer(signal, 3000);
    EXPECT_TRUE(std::equal(block[1], block[1] + 3000, expected[0]));
    EXPECT_TRUE(std::equal(block[0], block[0] + 3000, expected[1]));
    block = signal;
    process(shared, {block[0], block[0]}, {block[0], spare[1]});
    expected = mono.Answer(twice, 3000);
    EXPECT_TRUE(std::equal(block[0], block[0] + 3000, expected[0]));
    EXPECT_TRUE(std::equal(spare[1], spare[1] + 3000, expected[1]));
  }
}

TEST(EffectRunner, WorksInPlaceAlsoWhileItFades) {
  TestRandom random;
  AudioBlock signal = AudioBlock::Noise(2, 3000, random);
  for (const std::string& name : GetEffects()) {
    SCOPED_TRACE(name);
    DawPluginUnderTest apart(name), same(name);
    apart.Start();
    same.Start();
    const AudioBlock expected = apart.AnswerWithChange(signal, 700, apart.Find("hostBypass"), 1);
    AudioBlock block = signal;
    same.Begin(block.From(), block.From(), 3000);
    same.RunTo(700);
    same.Change(same.Find("hostBypass"), 1);
    same.End();
    EXPECT_TRUE(block == expected);
  }
}

}  // namespace
