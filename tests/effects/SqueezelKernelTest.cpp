// Squeezel's loops in all widths beside the plain formulas, sample by sample.

#include <gtest/gtest.h>

#include "dsp/MProcessor.h"
#include "effects/SqueezelCurve.h"
#include "tests/common/AudioBlock.h"

namespace {

constexpr int32_t kPart = kSqueezelPart;

class SqueezelKernel : public testing::TestWithParam<const ::SqueezelKernel*> {
 protected:
  // Two channels of a part.
  using Numbers = std::array<double, 2 * kPart>;

  Numbers Levels() {
    Numbers numbers;
    for (double& number : numbers) number = random_.OneIn(8) ? 0 : random_.Real(0, 1.5);
    return numbers;
  }
  double Time() { return random_.OneIn(5) ? 0 : random_.Real(0.9, 0.9999); }

  TestRandom random_;
};

TEST_P(SqueezelKernel, AddsPowersOfEveryCount) {
  for (int32_t count = 0; count <= kPart; ++count) {
    const AudioBlock in = AudioBlock::Noise(1, count, random_, 2);
    const Numbers before = Levels();
    Numbers powers = before;
    GetParam()->addPowers(in[0], 1.7, powers.data(), count);
    for (int32_t i = 0; i < count; ++i) {
      const double x = in[0][i] * 1.7, expected = before[static_cast<std::size_t>(i)] + x * x;
      ASSERT_NEAR(powers[static_cast<std::size_t>(i)], expected, 1e-15 * expected);
    }
  }
}

TEST_P(SqueezelKernel, ScalesSamplesOfEveryCount) {
  const float bad[] = {NAN, INFINITY, -INFINITY};
  for (int32_t count = 0; count <= kPart; ++count) {
    AudioBlock in = AudioBlock::Noise(1, count, random_, 2), out(1, count);
    for (int32_t i = random_.Below(9); i < count; i += 9) in[0][i] = bad[random_.Below(3)];
    const Numbers gains = Levels();
    GetParam()->scale(in[0], gains.data(), out[0], count);
    for (int32_t i = 0; i < count; ++i) {
      const float x = std::isfinite(in[0][i]) ? in[0][i] : 0;
      ASSERT_EQ(out[0][i], static_cast<float>(x * gains[static_cast<std::size_t>(i)])) << i;
    }
    EXPECT_TRUE(out.GuardsHold());
  }
}

// The detector of a channel alone, as the formulas have it.
void DetectPlain(SqueezelDetector& detector, const SqueezelTimes& times, const double* powers, double scale,
                 double* levels, int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    detector.power =
        (1 - times.rms) * powers[i] * scale + times.rms * detector.power + SqueezelDetector::kBias;
    const double level = std::sqrt(detector.power);
    const double c = level <= detector.envelope ? times.release : times.attack;
    levels[i] = detector.envelope = c * detector.envelope + (1 - c) * level + SqueezelDetector::kBias;
  }
}

TEST_P(SqueezelKernel, DetectsTheLevelsOfOneChannelAndOfTwo) {
  for (int32_t count = 0; count <= kPart; ++count) {
    const SqueezelTimes times = {Time(), Time(), Time()};
    const Numbers powers = Levels();
    SqueezelDetector plain[2] = {{0.3, 0.1}, {0.01, 0.8}}, two[2] = {plain[0], plain[1]}, one = plain[0];
    Numbers expected, ofTwo, ofOne;
    for (std::size_t c = 0; c < 2; ++c)
      DetectPlain(plain[c], times, powers.data() + c * kPart, 0.5, expected.data() + c * kPart, count);
    GetParam()->detect(&one, times, powers.data(), 0.5, ofOne.data(), count);
    GetParam()->detectTwo(two, times, powers.data(), 0.5, ofTwo.data(), count);
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
      ASSERT_EQ(ofOne[i], ofTwo[i]);
      for (const std::size_t at : {i, i + kPart}) ASSERT_NEAR(ofTwo[at], expected[at], 1e-12 * expected[at]);
    }
    EXPECT_EQ(one, two[0]);
    for (std::size_t c = 0; c < 2; ++c) {
      EXPECT_NEAR(two[c].power, plain[c].power, 1e-12 * plain[c].power);
      EXPECT_NEAR(two[c].envelope, plain[c].envelope, 1e-12 * plain[c].envelope);
    }
  }
}

TEST_P(SqueezelKernel, DetectsTheSameBitsForEverySplitOfAPart) {
  const SqueezelTimes times = {0.95, 0.999, 0.98};
  const Numbers powers = Levels();
  SqueezelDetector whole, parts;
  Numbers expected, levels;
  GetParam()->detect(&whole, times, powers.data(), 1, expected.data(), kPart);
  for (int32_t done = 0; done < kPart;) {
    const int32_t count = std::min(kPart - done, 1 + random_.Below(9));
    Numbers some = {};
    std::copy_n(powers.data() + done, count, some.data());
    GetParam()->detect(&parts, times, some.data(), 1, levels.data(), count);
    for (int32_t i = 0; i < count; ++i)
      ASSERT_EQ(levels[static_cast<std::size_t>(i)], expected[static_cast<std::size_t>(done + i)]);
    done += count;
  }
  EXPECT_EQ(parts, whole);
}

TEST_P(SqueezelKernel, GivesTheGainsOfTheStaticCurve) {
  MEnvelopeData data;
  data.Add(0, 0.2).tension = 0.4;
  data.Add(0.6, 0.7).type = MEnvelopeType::kMode3;
  data.Add(1, 0.9);
  BendformCurve drawn;
  drawn.Build(data);
  for (int32_t way = 0; way < SqueezelCurve::kWayCount; ++way)
    for (const double ratio : {1.5, 4.0, 20.0}) {
      const bool isDrawn = way == SqueezelCurve::kDrawnWay;
      SqueezelCurve curve({1.5, 1, 0.2, ratio, 0.7, way % SqueezelSettings::kKneeCount, true, isDrawn});
      curve.drawn = drawn.GetView();
      ASSERT_EQ(curve.way, way);
      const Numbers levels = Levels();
      Numbers gains;
      GetParam()->gains[way](curve, levels.data(), gains.data(), kPart);
      for (std::size_t i = 0; i < kPart; ++i) {
        const double x = levels[i];
        const double expected = x > 0 ? curve.GetOutput(x) / x * 1.5 : curve.gain;
        ASSERT_NEAR(gains[i], expected, 1e-11 * expected) << way << ", " << ratio << ", " << x;
      }
    }
}

std::vector<const ::SqueezelKernel*> GetKernels() {
  std::vector<const ::SqueezelKernel*> kernels = {&kSqueezelBaseline};
  if (MHasAVX2()) kernels.push_back(&kSqueezelWide);
  return kernels;
}

INSTANTIATE_TEST_SUITE_P(Widths, SqueezelKernel, testing::ValuesIn(GetKernels()),
                         [](const auto& width) { return width.index == 0 ? "Baseline" : "Wide"; });

}  // namespace
