#include "dsp/MSignalGenerator.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/common/CommaLocale.h"
#include "tests/common/TestRandom.h"
#include "tests/core/Balanced.h"
#include "tests/core/XMLTexts.h"
#include "tests/dsp/Curves.h"

namespace {

constexpr int32_t kLength = 8192;

class MSignalGeneratorTest : public Balanced {
 protected:
  void Build(double shape, double depth = 0) {
    generator.SetShape(shape);
    generator.SetCustomDepth(depth);
    generator.Rebuild();
  }

  void TearDown() override {
    owner_.reset();
    Balanced::TearDown();
  }

 private:
  std::unique_ptr<MSignalGenerator> owner_{new MSignalGenerator};

 protected:
  MSignalGenerator& generator = *owner_;
};

// The curve of a fresh generator.
double DefaultCurveAt(double x) {
  return x < 0.25 ? x * 4 : x < 0.75 ? 2 - x * 4 : x * 4 - 4;
}

// What a table is built of, before it is normalised.
std::vector<double> Expected(int32_t index, double fraction, double depth) {
  const float* const from = MWaveShapes::GetTable(index);
  const float* const to = fraction > 0 ? MWaveShapes::GetTable(index + 1) : from;
  std::vector<double> samples(kLength);
  double peak = 0;
  for (int32_t i = 0; i < kLength; ++i) {
    const double shape = (1 - fraction) * from[i] + fraction * to[i];
    const double value = (1 - depth) * shape + depth * DefaultCurveAt(i / 8192.0);
    samples[static_cast<std::size_t>(i)] = value;
    peak = std::max(peak, std::abs(value));
  }
  for (double& sample : samples) sample /= std::max(peak, 0.1);
  return samples;
}

void ExpectWave(const MSignalGenerator& generator, const std::vector<double>& expected) {
  for (int32_t i = 0; i < kLength; ++i)
    ASSERT_NEAR(generator.GetTable()[i], expected[static_cast<std::size_t>(i)], 2e-7) << i;
  EXPECT_EQ(generator.GetTable()[kLength], generator.GetTable()[0]);
}

TEST_F(MSignalGeneratorTest, AFreshOneIsASine) {
  EXPECT_EQ(generator.GetShape(), 5);
  EXPECT_EQ(generator.GetCustomDepth(), 0);
  EXPECT_EQ(generator.GetSamplesPerPeriod(), 1);
  EXPECT_EQ(generator.GetTableStep(), 8192);
  ExpectWave(generator, Expected(5, 0, 0));
  const MEnvelopeData& curve = generator.GetCurve();
  ASSERT_EQ(curve.GetCount(), 4);
  EXPECT_EQ(curve.yMinimum, -1);
  EXPECT_EQ(curve.yMaximum, 1);
  const double points[][3] = {{0, 0, 13}, {0.25, 1, 12}, {0.75, -1, 12}, {1, 0, 13}};
  for (int32_t i = 0; i < 4; ++i) {
    EXPECT_EQ(curve[i].x, points[i][0]);
    EXPECT_EQ(curve[i].y, points[i][1]);
    EXPECT_EQ(curve[i].flags, points[i][2]);
  }
}

TEST_F(MSignalGeneratorTest, EveryShapeIsItsTable) {
  for (int32_t index = 0; index < 16; ++index) {
    Build(index);
    EXPECT_EQ(generator.GetMorphFraction(), 0);
    ExpectWave(generator, Expected(index, 0, 0));
  }
}

TEST_F(MSignalGeneratorTest, FractionsMorphIntoTheNextShape) {
  Build(4.25);
  EXPECT_EQ(generator.GetMorphFraction(), 0.25);
  ExpectWave(generator, Expected(4, 0.25, 0));
  Build(14.5);
  ExpectWave(generator, Expected(14, 0.5, 0));
}

TEST_F(MSignalGeneratorTest, ShapesOutsideAreLimited) {
  Build(15.9);
  EXPECT_EQ(generator.GetShape(), 15);
  ExpectWave(generator, Expected(15, 0, 0));
  Build(-1);
  ExpectWave(generator, Expected(0, 0, 0));
  Build(NAN);
  ExpectWave(generator, Expected(5, 0, 0));
  Build(INFINITY);
  EXPECT_EQ(generator.GetShape(), 5);
}

TEST_F(MSignalGeneratorTest, TheCustomDepthMixesTheCurveIn) {
  Build(5, 0.000009);
  ExpectWave(generator, Expected(5, 0, 0));
  Build(11.5, 0.5);
  ExpectWave(generator, Expected(11, 0.5, 0.5));
  Build(5, 0.25);
  ExpectWave(generator, Expected(5, 0, 0.25));
  for (const double depth : {0.99999, 1.0, 7.0}) {
    Build(5, depth);
    ExpectWave(generator, Expected(5, 0, 1));
  }
  Build(5, NAN);
  EXPECT_EQ(generator.GetCustomDepth(), 0);
  Build(5, -3);
  EXPECT_EQ(generator.GetCustomDepth(), 0);
}

TEST_F(MSignalGeneratorTest, AFaintCurveIsAmplifiedTenfoldOnly) {
  generator.GetCurve().ScaleY(0.05, false);
  generator.BuildCurve();
  Build(5, 1);
  EXPECT_NEAR(generator.Read(0.25), 0.5, 1e-6);
  generator.GetCurve().ScaleY(4, false);  // 0.2
  generator.BuildCurve();
  Build(5, 1);
  EXPECT_NEAR(generator.Read(0.25), 1, 1e-6);
  generator.GetCurve().ScaleY(0, false);
  generator.BuildCurve();
  Build(5, 1);
  EXPECT_EQ(generator.Read(0.25), 0);
}

TEST_F(MSignalGeneratorTest, FrequencyAndRateGivePeriodAndStep) {
  generator.SetFrequency(441, 44100);
  generator.Rebuild();
  EXPECT_DOUBLE_EQ(generator.GetSamplesPerPeriod(), 100);
  EXPECT_DOUBLE_EQ(generator.GetTableStep(), 81.92);
  generator.SetFrequency(0.15915494309189535, 1);
  generator.Rebuild();
  EXPECT_DOUBLE_EQ(generator.GetSamplesPerPeriod(), 6.283185307179586);
  for (const double frequency : {0.0, -1.0, static_cast<double>(NAN), HUGE_VAL}) {
    generator.SetFrequency(frequency, 0);
    generator.Rebuild();
    EXPECT_EQ(generator.GetSamplesPerPeriod(), 1);
    EXPECT_EQ(generator.GetTableStep(), 8192);
  }
}

double Interpolated(const float* table, double phase) {
  const double x = (phase - std::floor(phase)) * 8192;
  const auto index = static_cast<int32_t>(std::floor(x));
  const double t = x - index;
  return t * table[index + 1] + (1 - t) * table[index];
}

TEST_F(MSignalGeneratorTest, ReadingInterpolatesAtAnyPhase) {
  Build(14.3);
  const float* const wave = generator.GetTable();
  for (const double phase : {0.0, 0.99999, 1.0, 7.3, -0.25, -1.0, 0.3333, 100000.7, -54321.1, 262143.99,
                             -262144.0, 262144.5, -262145.3, 1e6 + 0.4, -1e6 - 0.4})
    EXPECT_NEAR(generator.Read(phase), Interpolated(wave, phase), 1e-9) << phase;
  TestRandom random;
  for (int32_t i = 0; i < 10000; ++i) {
    const double phase = random.Real(-3, 3);
    ASSERT_NEAR(generator.Read(phase), Interpolated(wave, phase), 1e-9) << phase;
  }
}

TEST_F(MSignalGeneratorTest, PhasesOfAnySizeReadInsideTheTable) {
  Build(14.3);
  const double atZero = generator.GetTable()[0];
  EXPECT_EQ(generator.Read(NAN), atZero);
  EXPECT_EQ(generator.Read(INFINITY), atZero);
  EXPECT_EQ(generator.Read(-INFINITY), atZero);
  EXPECT_EQ(generator.Read(1e12), atZero);
  EXPECT_EQ(generator.Read(-1e300), atZero);
  EXPECT_NEAR(generator.Read(-1e-300), atZero, 1e-6);
  EXPECT_NEAR(generator.Read(-1e-17), atZero, 1e-6);
  EXPECT_NEAR(generator.Read(1e9 + 0.5), generator.GetTable()[4096], 1e-6);
  TestRandom random;
  for (int32_t i = 0; i < 100000; ++i) {
    const double phase = std::ldexp(random.Real(-1, 1), random.Integer(-1000, 1000));
    ASSERT_LE(std::abs(generator.Read(phase)), 1) << phase;
  }
}

TEST_F(MSignalGeneratorTest, BlocksAreReadAsSingleSamplesAre) {
  Build(8.5);
  for (const int32_t count : {0, 1, 2, 3, 4, 5, 7, 8, 15, 64, 257})
    for (const double step : {1e-4, 0.2, -0.3, 3.7, 12345.6}) {
      std::vector<double> values(static_cast<std::size_t>(count) + 1, 99);
      generator.Read(values.data(), 0.3, step, count);
      for (int32_t i = 0; i < count; ++i)
        ASSERT_NEAR(values[static_cast<std::size_t>(i)], generator.Read(0.3 + i * step), 1e-7) << i;
      EXPECT_EQ(values.back(), 99);
    }
  std::vector<double> many(200000);
  generator.Read(many.data(), -0.7, 0.9, 200000);
  for (std::size_t i = 0; i < many.size(); i += 7)
    ASSERT_NEAR(many[i], generator.Read(-0.7 + static_cast<double>(i) * 0.9), 1e-6) << i;
  double values[3];
  generator.Read(values, NAN, 0.1, 3);
  for (const double value : values) EXPECT_EQ(value, generator.GetTable()[0]);
  generator.Read(values, 0, INFINITY, 3);
  for (const double value : values) EXPECT_LE(std::abs(value), 1);
  generator.Read(values, 0, 1, -1);
}

TEST_F(MSignalGeneratorTest, SavesAndLoads) {
  Build(4.25, 0.5);
  MXMLItem item("shape");
  generator.Save(item);
  const std::string text = Body(item);
  EXPECT_EQ(text.substr(0, 59), "<shape EnvelopeDepth=\"0.5000\" value=\"4.2500\"><Envelope><Poi");
  MSignalGenerator other;
  other.Load(item);
  EXPECT_EQ(other.GetShape(), 4.25);
  EXPECT_EQ(other.GetCustomDepth(), 0.5);
  ExpectWave(other, Expected(4, 0.25, 0.5));
  MXMLItem again("shape");
  other.Save(again);
  EXPECT_EQ(Body(again), text);
}

TEST_F(MSignalGeneratorTest, WhatIsMissingOnLoadHasItsDefault) {
  Build(4.25, 0.5);
  generator.GetCurve().Clear();
  generator.Load(MXMLItem("shape"));
  EXPECT_EQ(generator.GetShape(), 5);
  EXPECT_EQ(generator.GetCustomDepth(), 0);
  EXPECT_EQ(generator.GetCurve().GetCount(), 4);
  ExpectWave(generator, Expected(5, 0, 0));
}

TEST_F(MSignalGeneratorTest, LoadedNumbersAreLimitedAndCurvesKeptInRange) {
  MXMLItem item;
  LoadText(
      item,
      "<shape value=\"99\" EnvelopeDepth=\"nan\"><Envelope><Point x=\"0.5\" y=\"-9\"/></Envelope></shape>");
  generator.Load(item);
  EXPECT_EQ(generator.GetShape(), 15);
  EXPECT_EQ(generator.GetCustomDepth(), 0);
  ASSERT_EQ(generator.GetCurve().GetCount(), 1);
  EXPECT_EQ(generator.GetCurve()[0].y, -1);
}

TEST_F(MSignalGeneratorTest, ALoadOrCopyThatFindsNoMemoryLeavesTheGenerator) {
  MXMLItem item("shape");
  generator.GetCurve().Add(1, 0.5);
  generator.Save(item);
  const auto make = [] { return std::unique_ptr<MSignalGenerator>(new MSignalGenerator); };
  const auto check = [](std::unique_ptr<MSignalGenerator>& subject) {
    ASSERT_EQ(subject->GetCurve().GetCount(), 4);
    subject->SetCustomDepth(1);
    subject->Rebuild();
    ExpectWave(*subject, Expected(5, 0, 1));
  };
  EXPECT_GT(FailEachRequest(
                make, [&](auto& subject) { subject->Load(item); }, check),
            5);
  EXPECT_GT(FailEachRequest(
                make, [&](auto& subject) { subject->CopyFrom(generator); }, check),
            5);
}

TEST_F(MSignalGeneratorTest, CopiesSoundAlike) {
  generator.GetCurve()[1].y = 0.25;
  generator.BuildCurve();
  generator.SetFrequency(2, 48000);
  Build(7.5, 0.75);
  MSignalGenerator copy;
  copy.CopyFrom(generator);
  copy.CopyFrom(copy);
  EXPECT_EQ(copy.GetTableStep(), generator.GetTableStep());
  for (int32_t i = 0; i <= kLength; ++i) ASSERT_EQ(copy.GetTable()[i], generator.GetTable()[i]);
}

TEST_F(MSignalGeneratorTest, RebuildingAndReadingAllocateNothing) {
  generator.SetCustomDepth(0.5);
  const int64_t calls = CountingFunctions::GetCalls();
  double values[64];
  for (const double shape : {5.0, 5.5, 14.9, 15.0}) {
    generator.SetShape(shape);
    generator.Rebuild();
    generator.Read(values, 0.1, 0.01, 64);
    generator.Read(0.7);
  }
  EXPECT_EQ(CountingFunctions::GetCalls(), calls);
}

TEST_F(MSignalGeneratorTest, ADecimalCommaOfTheProcessChangesNothing) {
  const CommaLocale comma;
  if (!comma.IsInForce()) GTEST_SKIP() << "localedef (package libc-bin) could not make a locale with a comma";
  Build(4.25, 0.5);
  MXMLItem item("shape");
  generator.Save(item);
  EXPECT_EQ(Utf8(item.GetAttribute("value")), "4.2500");
  generator.Load(item);
  EXPECT_EQ(generator.GetShape(), 4.25);
}

}  // namespace
