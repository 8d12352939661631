#include "effects/Imprinta.h"

#include <gtest/gtest.h>

#include <memory>

#include "core/MXMLItem.h"
#include "plugin/MParameterText.h"
#include "tests/common/Texts.h"
#include "tests/effects/NamedEffect.h"

namespace {

using Points = std::vector<std::pair<double, double>>;

class ImprintaUnderTest : public NamedEffect {
 public:
  explicit ImprintaUnderTest(const Points& points = {}, int32_t length = 16, int32_t channels = 1)
      : NamedEffect("Imprinta") {
    if (!points.empty()) SetCurve(points);
    Set("length", length);
    Prepare(channels, 48000);
    Process(AudioBlock(channels, 1));  // drops the repair
  }
  using NamedEffect::Process;
  void Process(AudioBlock block) { NamedEffect::Process(block.From(), block.From(), block.GetLength()); }
  // Lines through these points; the length is then 16.
  void SetCurve(const Points& points) {
    MXMLItem item("state");
    MXMLItem& graph = item.AddSubItem("graph");
    for (const auto& [x, y] : points) {
      MXMLItem& point = graph.AddSubItem("Point");
      point.SetAttribute("x", MString::FromDouble(x, 12));
      point.SetAttribute("y", MString::FromDouble(y, 12));
    }
    Call(MService::kLoadState, MAsWord(&item));
  }
  std::vector<float> GetImpulseResponse(int32_t samples) {
    const AudioBlock out = Answer(AudioBlock::Impulse(1, samples), {16});
    return {out[0], out[0] + samples};
  }
};

TEST(Imprinta, AnswersAnImpulseWithTheCurveFromRightToLeft) {
  for (const int32_t length : {2, 3, 16, 100, 511, 512}) {
    ImprintaUnderTest imprinta({{0, 1}, {1, -1}}, length);
    const std::vector<float> response = imprinta.GetImpulseResponse(length + 40);
    double sum = 0;
    for (int32_t i = 0; i < length; ++i) sum += std::abs(1 - 2 * (i + 0.5) / length);
    for (int32_t k = 0; k < length; ++k)
      ASSERT_NEAR(response[static_cast<std::size_t>(k)], (2 * (k + 0.5) / length - 1) / sum, 1e-7)
          << length << ", " << k;
    for (std::size_t k = static_cast<std::size_t>(length); k < response.size(); ++k)
      ASSERT_EQ(response[k], 0);
  }
}

TEST(Imprinta, SamplesTheCurveAtAQuarterAndThreeQuartersForTwoTaps) {
  ImprintaUnderTest imprinta({{0, 0}, {0.25, 0.6}, {0.5, 0}, {0.75, -0.2}, {1, 0}}, 2);
  const std::vector<float> response = imprinta.GetImpulseResponse(4);
  EXPECT_NEAR(response[0], -0.25, 1e-7);
  EXPECT_NEAR(response[1], 0.75, 1e-7);
  EXPECT_EQ(response[2], 0);
}

TEST(Imprinta, IsSilentWithACurveOfZeros) {
  TestRandom random;
  ImprintaUnderTest imprinta({{0, 0}, {1, 0}}, 64);
  EXPECT_TRUE(imprinta.Answer(AudioBlock::Noise(1, 1000, random), {100}).IsZero());
}

TEST(Imprinta, PassesTheSignalWithASingleTap) {
  TestRandom random;
  // Of four taps only that at 7/8 is not zero.
  ImprintaUnderTest imprinta({{0, 0}, {0.7, 0}, {0.875, 0.3}, {1, 0}}, 4);
  const AudioBlock in = AudioBlock::Noise(1, 500, random);
  EXPECT_LE(imprinta.Answer(in, {50}).GetDistance(in), 1e-7);
}

TEST(Imprinta, AveragesWithAConstantCurve) {
  TestRandom random;
  for (const double height : {0.25, 1.0, -0.5}) {
    ImprintaUnderTest imprinta({{0, height}, {1, height}}, 10);
    const AudioBlock in = AudioBlock::Noise(1, 300, random);
    const AudioBlock out = imprinta.Answer(in, {20});
    for (int32_t i = 9; i < 300; ++i) {
      double sum = 0;
      for (int32_t k = 0; k < 10; ++k) sum += in[0][i - k];
      ASSERT_NEAR(out[0][i], (height > 0 ? 0.1 : -0.1) * sum, 1e-6) << i;
    }
  }
}

TEST(Imprinta, GivesTheSameForAnySplitOfAMonoSignal) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(1, 5000, random);
  for (const int32_t length : {2, 16, 33, 512}) {
    ImprintaUnderTest whole({}, length);
    const AudioBlock expected = whole.Answer(in);
    for (const int32_t size : {1, 7, 32, 441, 512, 4096}) {
      ImprintaUnderTest split({}, length);
      EXPECT_TRUE(split.Answer(in, {size}) == expected) << length << ", " << size;
    }
  }
}

// A ring per channel and one place for all, literally.
class Rings {
 public:
  Rings(std::vector<double> kernel, std::size_t channels)
      : kernel_(std::move(kernel)), rings_(channels, std::vector<double>(kernel_.size())) {}

  AudioBlock Answer(const AudioBlock& in) {
    AudioBlock out = in;
    const std::size_t n = kernel_.size();
    for (std::size_t c = 0; c < rings_.size(); ++c) {
      for (int32_t i = 0; i < in.GetLength(); ++i) {
        rings_[c][place_] = in[static_cast<int32_t>(c)][i];
        double sum = 0;
        for (std::size_t k = 0; k < n; ++k) sum += rings_[c][(place_ + k) % n] * kernel_[k];
        out[static_cast<int32_t>(c)][i] = static_cast<float>(sum);
        place_ = place_ == 0 ? n - 1 : place_ - 1;
      }
    }
    return out;
  }

 private:
  std::vector<double> kernel_;
  std::vector<std::vector<double>> rings_;
  std::size_t place_ = 0;
};

TEST(Imprinta, LetsAChannelBeginWhereTheOneBeforeHasEnded) {
  TestRandom random;
  std::vector<double> kernel;
  for (int32_t k = 0; k < 16; ++k) kernel.push_back((2 * (k + 0.5) / 16 - 1) / 8);
  for (const int32_t channels : {2, 3, 8}) {
    ImprintaUnderTest imprinta({}, 16, channels);
    Rings rings(kernel, static_cast<std::size_t>(channels));
    rings.Answer(AudioBlock(channels, 1));
    for (int32_t block = 0; block < 40; ++block) {
      const AudioBlock in = AudioBlock::Noise(channels, block < 20 ? 441 : random.Below(1200), random);
      ASSERT_LE(imprinta.Answer(in).GetDistance(rings.Answer(in)), 1e-6) << channels << ", " << block;
    }
  }
}

TEST(Imprinta, HasNoSeamsInStereoBehindBlocksOfTheLengthsMultiples) {
  TestRandom random;
  AudioBlock in = AudioBlock::Noise(2, 16 * 60, random);
  ImprintaUnderTest imprinta({}, 16, 2);
  imprinta.Process(AudioBlock(2, 15));
  const AudioBlock out = imprinta.Answer(in, {16, 48, 160, 32});
  for (int32_t c = 0; c < 2; ++c) {
    ImprintaUnderTest mono({}, 16, 1);
    AudioBlock channel(1, in.GetLength());
    std::copy_n(in[c], in.GetLength(), channel[0]);
    const AudioBlock expected = mono.Answer(channel);
    EXPECT_TRUE(std::equal(out[c], out[c] + in.GetLength(), expected[0])) << c;
  }
}

// The samples at which a block of an effect that was updated differs from one of an effect that was not.
int32_t CountRepaired(int32_t samples, bool isFirst = false) {
  TestRandom random(7);
  NamedEffect updated("Imprinta"), left("Imprinta");
  for (NamedEffect* effect : {&updated, &left}) effect->Prepare(1, 48000);
  const AudioBlock before = AudioBlock::Noise(1, 100, random);
  if (!isFirst) updated.Answer(before);
  left.Answer(before);
  left.Answer(AudioBlock(1, 16));
  if (!isFirst) updated.Answer(AudioBlock(1, 16));
  updated.Call(MService::kParameterChanged, 0);
  const AudioBlock in = AudioBlock::Noise(1, samples, random);
  const AudioBlock repaired = updated.Answer(in), plain = left.Answer(in);
  int32_t count = 0;
  for (int32_t i = 0; i < samples; ++i)
    if (repaired[0][i] != plain[0][i]) count = i + 1;
  return count;
}

TEST(Imprinta, RepairsTheFirstBlockAfterAChangeOverHalfOfItAndAtMost128Samples) {
  EXPECT_EQ(CountRepaired(32), 16);
  EXPECT_EQ(CountRepaired(128), 64);
  EXPECT_EQ(CountRepaired(1000), 128);
  EXPECT_EQ(CountRepaired(31), 0);
  EXPECT_EQ(CountRepaired(1), 0);
  EXPECT_EQ(CountRepaired(256, true), 128);
}

TEST(Imprinta, BeginsAtZeroInItsFirstLongBlock) {
  NamedEffect imprinta("Imprinta");
  imprinta.Prepare(1, 48000);
  imprinta.Answer(AudioBlock(1, 0));
  const AudioBlock out = imprinta.Answer(AudioBlock::Constant(1, 256, 1));
  EXPECT_EQ(out[0][0], 0);
}

TEST(Imprinta, KeepsItsSamplesWhenTheTapsChangeAndDropsThemWhenTheirNumberDoes) {
  const auto heardAfter = [](int32_t length, const Points& points) {
    ImprintaUnderTest imprinta({{0, 1}, {1, 1}}, 16);
    imprinta.Process(AudioBlock::Constant(1, 16, 1));
    if (!points.empty()) imprinta.SetCurve(points);
    imprinta.Set("length", length);
    imprinta.Prepare(1, 44100);  // keeps them as well
    return imprinta.Answer(AudioBlock(1, 1))[0][0];
  };
  EXPECT_NEAR(heardAfter(16, {}), 15.0 / 16, 1e-6);
  EXPECT_NEAR(heardAfter(16, {{0, -1}, {1, -1}}), -15.0 / 16, 1e-6);
  EXPECT_EQ(heardAfter(17, {}), 0);
}

TEST(Imprinta, SkipsAsIfZerosHadPassed) {
  TestRandom random;
  for (const int32_t channels : {1, 2}) {
    for (const int32_t skipped : {0, 1, 15, 16, 17, 441, 100000}) {
      ImprintaUnderTest first({}, 16, channels), second({}, 16, channels);
      const AudioBlock noise = AudioBlock::Noise(channels, 31, random);
      first.Answer(noise);
      second.Answer(noise);
      first.Skip(skipped);
      second.Process(AudioBlock(channels, skipped));
      EXPECT_TRUE(first.Answer(noise) == second.Answer(noise)) << channels << ", " << skipped;
    }
  }
}

TEST(Imprinta, CopiesWithoutASampleRateAndChannelsBeyondTheEighth) {
  TestRandom random;
  NamedEffect fresh("Imprinta");
  fresh.Prepare(10, 0);
  const AudioBlock in = AudioBlock::Noise(10, 300, random);
  EXPECT_TRUE(fresh.Answer(in) == in);
  fresh.Prepare(10, 48000);
  const AudioBlock out = fresh.Answer(in, {100});
  for (int32_t c = 0; c < 10; ++c) EXPECT_EQ(std::equal(in[c], in[c] + 300, out[c]), c >= 8) << c;
}

TEST(Imprinta, LimitsARawLength) {
  const auto response = [](int32_t length) { return ImprintaUnderTest({}, length).GetImpulseResponse(600); };
  EXPECT_EQ(response(100000), response(512));
  EXPECT_EQ(response(-5), response(1));
  ImprintaUnderTest one({{0, 1}, {1, 0.5}}, 1);
  EXPECT_EQ(one.GetImpulseResponse(3), (std::vector<float>{1, 0, 0}));
}

TEST(Imprinta, KeepsTheCurveOfAStateAndLeavesItWithoutOne) {
  ImprintaUnderTest drawn({{0, 0.5}, {0.3, -0.7}, {1, 1}}, 24);
  MXMLItem item("state");
  drawn.Call(MService::kSaveState, MAsWord(&item));
  ImprintaUnderTest loaded;
  loaded.Call(MService::kLoadState, MAsWord(&item));
  loaded.Process(AudioBlock(1, 1));
  EXPECT_EQ(loaded.GetImpulseResponse(30), drawn.GetImpulseResponse(30));
  MXMLItem empty("state");
  loaded.Call(MService::kLoadState, MAsWord(&empty));
  loaded.Set("length", 24);
  loaded.Process(AudioBlock(1, 1));
  EXPECT_EQ(loaded.GetImpulseResponse(30), drawn.GetImpulseResponse(30));
}

TEST(Imprinta, ShowsItsLengthInSamplesAndItsTapsFromLeftToRight) {
  const std::unique_ptr<ImprintaAudioEffectPlugin> imprinta{new ImprintaAudioEffectPlugin};
  EXPECT_TRUE(imprinta->GetTaps().empty());
  imprinta->Prepare(2, 48000);
  const auto taps = imprinta->GetTaps();
  ASSERT_EQ(taps.size(), 16u);
  for (std::size_t i = 0; i < 16; ++i)
    EXPECT_NEAR(taps[i], 1 - 2 * (static_cast<double>(i) + 0.5) / 16, 1e-12);
  ImprintaUnderTest effect;
  EXPECT_EQ(Utf8(MParameterText(effect.GetRow(0), 16)), "16 samples");
  EXPECT_EQ(Utf8(effect.GetRow(0).help).find("<name>Length</name> defines length of the convolution source"),
            0u);
  EXPECT_EQ(effect.GetBlock().pluginFlag, 1);
}

}  // namespace
