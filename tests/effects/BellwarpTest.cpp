#include <gtest/gtest.h>

#include "core/MXMLItem.h"
#include "plugin/MParameterText.h"
#include "tests/common/Texts.h"
#include "tests/effects/ModulationUnderTest.h"

namespace {

constexpr int32_t kRate = 48000;

struct Oscillator {
  bool isOn = true;
  double depth = 0.4, hertz = 1000, offset = 0.1, shape = 5;
};

class BellwarpUnderTest : public ModulationUnderTest {
 public:
  BellwarpUnderTest() : ModulationUnderTest("Bellwarp") {}

  void Set(bool isModulating, const Oscillator (&both)[2]) {
    MXMLItem item;
    for (int32_t o = 0; o < 2; ++o)
      item.AddSubItem(MString::Literal(o == 0 ? "shape1" : "shape2"))
          .SetAttribute("value", MString::FromDouble(both[o].shape, 4));
    Load(item);
    ModulationUnderTest::Set("modulate", isModulating);
    for (int32_t o = 0; o < 2; ++o) {
      const int32_t first = 2 + 5 * o;
      ModulationUnderTest::Set(first, both[o].isOn);
      ModulationUnderTest::Set(first + 1, both[o].depth);
      ModulationUnderTest::Set(first + 2, std::log10(both[o].hertz));
      ModulationUnderTest::Set(first + 3, both[o].offset);
    }
  }
};

AudioBlock Model(const AudioBlock& in, bool isModulating, const Oscillator (&both)[2], double phase1 = 0,
                 double phase2 = 0) {
  const TestWave waves[] = {TestWave(both[0].shape), TestWave(both[1].shape)};
  AudioBlock out = in;
  for (int32_t c = 0; c < in.GetChannelCount(); ++c) {
    for (int32_t i = 0; i < in.GetLength(); ++i) {
      const double start[] = {phase1, phase2};
      double values[2];
      for (int32_t o = 0; o < 2; ++o)
        values[o] = waves[o].Read(start[o] + i * both[o].hertz / kRate + c * both[o].offset);
      float& y = out[c][i];
      if (isModulating && both[0].isOn && both[1].isOn) {
        const double depth = (both[0].depth + both[1].depth) / 2;
        y = static_cast<float>((y + 1e-25) * ((values[0] + values[1]) * depth + (1 - depth)));
        continue;
      }
      for (int32_t o = 0; o < 2; ++o)
        if (both[o].isOn)
          y = static_cast<float>((y + 1e-25) * (values[o] * both[o].depth + (1 - both[o].depth)));
    }
  }
  return out;
}

void ExpectClose(const AudioBlock& out, const AudioBlock& expected) {
  EXPECT_LE(out.GetDistance(expected), 1e-6 * expected.GetPeak());
}

TEST(Bellwarp, MultipliesByEachOscillatorOrByTheirSum) {
  TestRandom random;
  for (int32_t switches = 0; switches < 8; ++switches) {
    const bool isModulating = (switches & 4) != 0;
    for (const double depth : {0.0, 0.5, 1.0}) {
      for (const double offset : {0.0, 0.1, 1.0}) {
        const Oscillator both[] = {{(switches & 1) != 0, depth, 330, offset, 5},
                                   {(switches & 2) != 0, 0.7, 1234.5, 0.3 * offset, 1.5}};
        const int32_t channels = random.Integer(1, 4);
        BellwarpUnderTest bellwarp;
        bellwarp.Set(isModulating, both);
        bellwarp.Prepare(channels, kRate);
        const AudioBlock in = AudioBlock::Noise(channels, 3000, random);
        ExpectClose(bellwarp.Answer(in, {700, 1, 300}), Model(in, isModulating, both));
      }
    }
  }
}

TEST(Bellwarp, EveryShapeMultiplies) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(2, 2000, random);
  for (int32_t shape = 0; shape <= 15; ++shape) {
    const Oscillator both[] = {{true, 0.8, 440, 0.25, shape + 0.0}, {true, 0.6, 99.5, 0.5, 15.0 - shape}};
    BellwarpUnderTest bellwarp;
    bellwarp.Set(true, both);
    bellwarp.Prepare(2, kRate);
    ExpectClose(bellwarp.Answer(in, {512}), Model(in, true, both));
  }
}

TEST(Bellwarp, CopiesTheInputWithNothingEnabled) {
  TestRandom random;
  for (const int32_t channels : {1, 2, 11}) {
    for (const bool isModulating : {false, true}) {
      BellwarpUnderTest bellwarp;
      bellwarp.Set(isModulating, {{false}, {false}});
      bellwarp.Prepare(channels, kRate);
      const AudioBlock in = AudioBlock::Noise(channels, 500, random);
      EXPECT_TRUE(bellwarp.Answer(in, {64}) == in);
    }
  }
}

TEST(Bellwarp, ServesAllChannels) {
  TestRandom random;
  const Oscillator both[] = {{true, 1, 440, 0.05, 5}, {false}};
  BellwarpUnderTest bellwarp;
  bellwarp.Set(false, both);
  bellwarp.Prepare(19, kRate);
  const AudioBlock in = AudioBlock::Noise(19, 500, random);
  ExpectClose(bellwarp.Answer(in, {64}), Model(in, false, both));
}

TEST(Bellwarp, SkippingMovesBothPhasesLikeZerosDo) {
  TestRandom random;
  const AudioBlock later = AudioBlock::Noise(2, 2000, random);
  const Oscillator both[] = {{true, 1, 333.3, 0.1, 5}, {true, 1, 777.7, 0.2, 1}};
  for (const int32_t samples : {0, 1, 511, 100000}) {
    BellwarpUnderTest skipped, fed;
    for (BellwarpUnderTest* bellwarp : {&skipped, &fed}) {
      bellwarp->Set(false, both);
      bellwarp->Prepare(2, kRate);
    }
    skipped.Skip(samples);
    fed.AnswerToSilence(2, samples);
    ExpectClose(skipped.Answer(later, {512}), fed.Answer(later, {512}));
  }
}

TEST(Bellwarp, SkippingABillionSamplesKeepsBothPhases) {
  TestRandom random;
  const AudioBlock later = AudioBlock::Noise(2, 2000, random);
  for (const bool isModulating : {false, true}) {
    const Oscillator both[] = {{true, 1, 20, 0.1, 1}, {true, 0.5, 1500, 0.2, 5}};
    BellwarpUnderTest bellwarp;
    bellwarp.Set(isModulating, both);
    bellwarp.Prepare(2, kRate);
    bellwarp.Skip(1000000000);
    // Periods of 2400 and of 32 samples.
    ExpectClose(bellwarp.Answer(later, {512}), Model(later, isModulating, both, 1600 / 2400.0, 0));
  }
}

TEST(Bellwarp, AnOscillatorThatIsOffRestsInBlocksAndMovesWhileTimeIsSkipped) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(2, 120, random);
  Oscillator both[] = {{true, 1, 300, 0.1, 5}, {false, 1, 100, 0.2, 1}};
  BellwarpUnderTest bellwarp;
  bellwarp.Set(true, both);
  bellwarp.Prepare(2, kRate);
  bellwarp.Answer(in);  // three quarters of a period of the first one
  both[1].isOn = true;
  bellwarp.Set(true, both);
  ExpectClose(bellwarp.Answer(in), Model(in, true, both, 0.75, 0));
  both[0].isOn = false;
  bellwarp.Set(true, both);
  bellwarp.Skip(1000000000 - 240);  // 480 samples are a period of the second one
  both[0].isOn = true;
  bellwarp.Set(true, both);
  const double first = std::fmod(1.5 + (1000000000 - 240) / 160.0, 1),
               second = 0.25 + (1000000000 - 240) / 480.0;
  ExpectClose(bellwarp.Answer(in), Model(in, true, both, first, std::fmod(second, 1)));
}

TEST(Bellwarp, AStateHoldsBothWaves) {
  BellwarpUnderTest first, second;
  first.Set(true, {{true, 1, 440, 0.1, 2.25}, {true, 1, 1000, 0.2, 11}});
  MXMLItem item, again;
  for (int32_t times = 0; times < 2; ++times) first.Save(item);
  ASSERT_EQ(item.GetChildren().GetCount(), 2);
  second.Load(item);
  second.Save(again);
  for (const MXMLItem* saved : {&item, &again}) {
    EXPECT_EQ(Utf8(saved->GetChildren()[0]->GetName()), "shape1");
    EXPECT_EQ(Utf8(saved->GetChildren()[0]->GetRequiredAttribute("value")), "2.2500");
    EXPECT_EQ(Utf8(saved->GetChildren()[1]->GetName()), "shape2");
    EXPECT_EQ(Utf8(saved->GetChildren()[1]->GetRequiredAttribute("value")), "11.0000");
  }
  MXMLItem empty;
  second.Load(empty);
  second.Save(again);
  for (const MXMLItem* shape : again.GetChildren())
    EXPECT_EQ(Utf8(shape->GetRequiredAttribute("value")), "5.0000");
}

TEST(Bellwarp, HasAPanelAndANamedEditorForEachOscillator) {
  BellwarpUnderTest bellwarp;
  ASSERT_EQ(bellwarp.GetRowCount(), 11);
  EXPECT_EQ(Utf8(bellwarp.GetRow(1).name), "Oscillator 1");
  EXPECT_EQ(Utf8(bellwarp.GetRow(6).name), "Oscillator 2");
  for (const int32_t panel : {1, 6}) EXPECT_EQ(bellwarp.GetRow(panel).kind, MParameterKind::kPanel);
  MPluginPublicBlock& block = bellwarp.GetBlock();
  EXPECT_EQ(block.pluginFlag, 0);
  ASSERT_EQ(block.editorCount, 2);
  EXPECT_EQ(Utf8(block.editors[0].name), "Oscillator 1 shape");
  EXPECT_EQ(Utf8(block.editors[1].name), "Oscillator 2 shape");
  *block.editors[0].editor = 11;
  *block.editors[1].editor = 12;
  bellwarp.Call(MService::kEditorClosed, 12);
  EXPECT_EQ(*block.editors[0].editor, 11);
  EXPECT_EQ(*block.editors[1].editor, 0);
}

TEST(Bellwarp, ShowsPercentAndHertz) {
  BellwarpUnderTest bellwarp;
  const auto show = [&](int32_t row, double value) {
    return Utf8(MParameterText(bellwarp.GetRow(row), value));
  };
  EXPECT_EQ(show(3, 0.4), "40.00%");
  EXPECT_EQ(show(4, 3), "1000Hz");
  EXPECT_EQ(show(4, 4), "10.0kHz");
  EXPECT_EQ(show(5, 0.1), "10.00%");
}

}  // namespace
