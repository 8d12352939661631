#include "effects/Lumascope.h"

#include <gtest/gtest.h>

#include <complex>
#include <numbers>

#include "plugin/MParameterText.h"
#include "tests/common/AudioThreadWatch.h"
#include "tests/common/Texts.h"
#include "tests/effects/LumascopeUnderTest.h"

namespace {

using Points = LumascopeDisplay::Points;

double Highest(const Points& points) {
  return *std::max_element(points.begin(), points.end());
}

// The level of a steady sine that the current curve shows at the sine's point.
double LevelOf(LumascopeUnderTest& effect, const AudioBlock& sine) {
  effect.Answer(sine, {512});
  return Highest(effect.GetCurve());
}

AudioBlock Sides(double left, double right) {
  AudioBlock block = SineBlock(2, 8192, 1, 93, 4096);
  for (int32_t i = 0; i < 8192; ++i) {
    block[0][i] *= static_cast<float>(left);
    block[1][i] *= static_cast<float>(right);
  }
  return block;
}

const LumascopeUnderTest::Values kBare = {{"smooth", 0}, {"average", 0}};
LumascopeUnderTest::Values Bare(LumascopeUnderTest::Values more) {
  more.insert(more.end(), kBare.begin(), kBare.end());
  return more;
}

TEST(Lumascope, TheOutputIsTheInputWhetherTheEditorIsClosedOpenOrFrozen) {
  TestRandom random;
  for (const int32_t channels : {1, 2, 3, 10}) {
    LumascopeUnderTest effect({{"gain", 12}, {"psychoacousticsimulation", 1}, {"channelmode", 2}}, channels);
    for (int32_t state = 0; state < 3; ++state) {
      effect.GetPlugin().SetEditorOpen(state > 0);
      effect.GetPlugin().SetFrozen(state > 1);
      const AudioBlock noise = AudioBlock::Noise(channels, 9000, random);
      EXPECT_TRUE(effect.Answer(noise, {700}) == effect.Answer(noise));
      EXPECT_TRUE(effect.Answer(noise).GetDistance(noise) == 0);
    }
  }
}

TEST(Lumascope, MeasuringNeitherAllocatesNorTouchesTheInput) {
  TestRandom random;
  for (const double simulation : {0, 1}) {
    for (const double mode : {0, 1, 2}) {
      LumascopeUnderTest effect({{"psychoacousticsimulation", simulation}, {"channelmode", mode}});
      AudioBlock in = AudioBlock::Noise(2, 20000, random), out(2, 20000);
      const AudioBlock before = in;
      float** const from = in.From();
      float** const to = out.From();
      const AudioThreadWatch watch;
      for (const int32_t samples : {1, 64, 20000}) effect.Process(from, to, samples);
      effect.Skip(30000);
      EXPECT_EQ(watch.GetAllocations(), 0);
      EXPECT_TRUE(in == before);
    }
  }
}

// What a window leaves of a sine, by its amplitude, this far from it in bins.
double LeakTo(const MSignalWindow& window, double bins) {
  std::complex<double> sum = 0;
  for (int32_t i = 0; i < window.GetSize(); ++i)
    sum += std::polar(double{window.GetSamples()[i]}, 2 * std::numbers::pi * i * bins / window.GetSize());
  return 0.5 * std::abs(sum) / window.GetSum();
}

TEST(Lumascope, ASineShowsHalfItsAmplitudeInEveryWindow) {
  for (int32_t type = 0; type < MSignalWindow::kTypeCount; ++type) {
    MSignalWindow window;
    window.Set(4096, type);
    EXPECT_NEAR(LeakTo(window, 0), 0.5, 1e-6);
    LumascopeUnderTest effect(Bare({{"window", type}}));
    effect.Answer(SineBlock(2, 4096, 0.8, 93, 4096), {512});
    const Points curve = effect.GetCurve();
    // A point lies between two bins; three are smoothed.
    const auto pointAt = [&](int32_t i) {
      const double place = LumascopeSpectrum::GetFrequency(i) * 4096 / 44100, t = place - std::floor(place);
      const double bin = std::floor(place) - 93;
      return 0.8 * ((1 - t) * LeakTo(window, bin) + t * LeakTo(window, bin + 1));
    };
    int32_t i = 0;
    while (LumascopeSpectrum::GetFrequency(i) < 93 * 44100 / 4096.0) ++i;
    for (int32_t k = i - 3; k < i + 3; ++k) {
      const double side = std::exp(-4);
      const double level = (pointAt(k) + side * (pointAt(k - 1) + pointAt(k + 1))) / (1 + 2 * side);
      EXPECT_NEAR(curve[static_cast<std::size_t>(k)], level, 5e-4) << type;
    }
  }
}

TEST(Lumascope, ShowsTheLeftChannelTheRightOneOrHalfOfTheirSum) {
  const double full = [] {
    LumascopeUnderTest effect(kBare);
    return LevelOf(effect, Sides(1, 1));
  }();
  struct {
    double mode, level;
  } const kCases[] = {{0, 0.5}, {1, 0.25}, {2, 0.375}};
  for (const auto& each : kCases) {
    LumascopeUnderTest effect(Bare({{"channelmode", each.mode}}));
    EXPECT_NEAR(LevelOf(effect, Sides(0.5, 0.25)), each.level * full, 1e-6) << each.mode;
  }
  LumascopeUnderTest effect(Bare({{"channelmode", 2}}));
  EXPECT_EQ(LevelOf(effect, Sides(1, -1)), 0);
}

TEST(Lumascope, OneChannelIsMeasuredInEveryChannelMode) {
  for (const double gain : {0.0, 6.0, 1e-6}) {
    double left = 0;
    for (const double mode : {0, 1, 2}) {
      LumascopeUnderTest effect(Bare({{"channelmode", mode}, {"gain", gain}}), 1);
      const double level = LevelOf(effect, SineBlock(1, 8192, 0.5, 93, 4096));
      if (mode == 0) left = level;
      EXPECT_NEAR(level, left, 1e-7) << mode;
      EXPECT_GT(level, 0.2);
    }
  }
}

TEST(Lumascope, GainRaisesWhatIsMeasured) {
  LumascopeUnderTest plain(kBare), raised(Bare({{"gain", 12}})), lowered(Bare({{"gain", -24}}));
  const double level = LevelOf(plain, Sides(0.5, 0));
  EXPECT_NEAR(LevelOf(raised, Sides(0.5, 0)), level * std::pow(10, 0.6), 1e-5);
  EXPECT_NEAR(LevelOf(lowered, Sides(0.5, 0)), level * std::pow(10, -1.2), 1e-6);
}

TEST(Lumascope, FreezingStopsMeasuringAtOnce) {
  LumascopeUnderTest effect(kBare);
  LevelOf(effect, Sides(0.5, 0));
  const Points before = effect.GetCurve();
  effect.GetPlugin().SetFrozen(true);
  EXPECT_TRUE(effect.GetPlugin().IsFrozen());
  LevelOf(effect, Sides(1, 0));
  effect.Skip(100000);
  EXPECT_EQ(effect.GetCurve(), before);
  effect.GetPlugin().SetFrozen(false);
  EXPECT_NEAR(LevelOf(effect, Sides(1, 0)), 2 * Highest(before), 1e-6);
}

TEST(Lumascope, NothingIsMeasuredWithoutAnEditorOrARate) {
  LumascopeUnderTest effect(kBare);
  effect.GetPlugin().SetEditorOpen(false);
  LevelOf(effect, Sides(1, 1));
  EXPECT_TRUE(effect.IsCurveZero());
  LumascopeUnderTest rateless({}, 2, 0);
  LevelOf(rateless, Sides(1, 1));
  EXPECT_TRUE(rateless.IsCurveZero());
}

TEST(Lumascope, SkippedTimeIsSilence) {
  LumascopeUnderTest effect(kBare);
  EXPECT_GT(LevelOf(effect, Sides(1, 1)), 0.4);
  effect.Skip(4096);
  EXPECT_TRUE(effect.IsCurveZero());
}

TEST(Lumascope, PreparingForgetsWhatWasMeasured) {
  LumascopeUnderTest effect(kBare);
  LevelOf(effect, Sides(1, 1));
  effect.Answer(AudioBlock::Constant(2, 4095 - 2048, 1));
  effect.Prepare(2, 44100);
  EXPECT_TRUE(effect.IsCurveZero());
  effect.Answer(AudioBlock(2, 4096));
  EXPECT_TRUE(effect.IsCurveZero());
}

// Of the five sections, by the formulas of the audio equalizer cookbook.
double SimulationAt(double frequency, double rate) {
  const auto magnitude = [&](double b0, double b1, double b2, double a0, double a1, double a2) {
    const double w = 2 * std::numbers::pi * frequency / rate;
    const std::complex<double> z = std::polar(1.0, -w);
    return std::abs((b0 + z * (b1 + z * b2)) / (a0 + z * (a1 + z * a2)));
  };
  double product = 1;
  struct {
    double angle, halfQ;
  } const kHighPasses[] = {{464.9557127312894, 1.1363636363636365}, {125.66370614359172, 0.6666666666666666}};
  for (const auto& each : kHighPasses) {
    const double cs = std::cos(each.angle / rate), alpha = std::sin(each.angle / rate) * each.halfQ;
    product *= magnitude((1 + cs) / 2, -(1 + cs), (1 + cs) / 2, 1 + alpha, -2 * cs, 1 - alpha);
  }
  struct {
    double gain, frequency, q, side;
  } const kShelves[] = {{-14.399999618530273, 135, 0.42, 1},
                        {15.410499572753906, 3964, 0.43, -1},
                        {2.0336999893188477, 15500, 0.48, -1}};
  for (const auto& each : kShelves) {
    const double a = std::pow(10, each.gain / 40), w = 2 * std::numbers::pi * each.frequency / rate;
    const double cs = each.side * std::cos(w), slope = std::sin(w) / each.q * std::sqrt(a);
    product *= magnitude(a * (a + 1 - (a - 1) * cs + slope), 2 * each.side * a * (a - 1 - (a + 1) * cs),
                         a * (a + 1 - (a - 1) * cs - slope), a + 1 + (a - 1) * cs + slope,
                         -2 * each.side * (a - 1 + (a + 1) * cs), a + 1 + (a - 1) * cs - slope);
  }
  return product;
}

TEST(Lumascope, TheSimulationWeightsFrequenciesAsItsFiveSectionsDo) {
  for (const double rate : {44100, 96000}) {
    for (const double frequency : {20, 100, 1000, 4000, 15000}) {
      const auto periods = static_cast<int32_t>(std::lround(frequency * 16384 / rate));
      const AudioBlock sine = SineBlock(1, 10 * 16384, 0.01, periods, 16384);
      const LumascopeUnderTest::Values values = Bare({{"fftsize", 14}, {"overlap", 0}});
      LumascopeUnderTest plain(values, 1, static_cast<int32_t>(rate));
      LumascopeUnderTest simulating(values, 1, static_cast<int32_t>(rate));
      simulating.Set("psychoacousticsimulation", 1);
      EXPECT_NEAR(LevelOf(simulating, sine) / LevelOf(plain, sine),
                  SimulationAt(periods * rate / 16384, rate),
                  2e-4 * SimulationAt(periods * rate / 16384, rate))
          << frequency;
    }
  }
}

TEST(Lumascope, SmallerWindowsShowSlowerAndLargerOnesFinerSpectra) {
  for (const int32_t exponent : {10, 11, 12, 13, 14}) {
    const int32_t size = 1 << exponent;
    LumascopeUnderTest effect(Bare({{"fftsize", exponent}}));
    effect.Answer(SineBlock(2, size - 1, 1, size / 64, size));
    EXPECT_TRUE(effect.IsCurveZero());
    effect.Answer(AudioBlock(2, 1));
    EXPECT_FALSE(effect.IsCurveZero());
  }
}

TEST(Lumascope, RowsAreShownInTheirUnits) {
  LumascopeUnderTest effect;
  struct {
    int32_t row;
    double value;
    const char* text;
  } const kCases[] = {
      {0, 0, "Spectrum meter (64 bands)"},
      {0, 1, "FFT"},
      {0, 2, "1/3 octave"},
      {1, 0.1, "100 ms"},
      {2, 0.2, "20.00%"},
      {3, 3, "3.00 dB"},
      {4, 10, "1024"},
      {4, 14, "16384"},
      {5, 0.5, "50.00%"},
      {6, 2, "Hann"},
      {6, 6, "Gauss"},
      {7, 2, "Stereo"},
      {8, -6, "-6.00 dB"},
      {9, 1, "1"},
  };
  for (const auto& each : kCases) {
    const MPluginParameter& row = effect.GetRow(each.row);
    EXPECT_EQ(Utf8(MParameterText(row, each.value)), each.text);
    EXPECT_EQ(ParseParameterText(row, MString::FromNarrow(each.text)), each.value) << each.text;
  }
}

}  // namespace
