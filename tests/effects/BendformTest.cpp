#include "effects/Bendform.h"

#include <gtest/gtest.h>

#include <memory>

#include "core/MXMLItem.h"
#include "plugin/MParameterText.h"
#include "tests/common/Texts.h"
#include "tests/effects/NamedEffect.h"

namespace {

struct Point {
  double x, y;
  const char* type = "Mode 1";
  double tension = 0;
};
using Points = std::vector<Point>;

void AddGraph(MXMLItem& item, const Points& points) {
  MXMLItem& graph = item.AddSubItem("graph");
  for (const Point& each : points) {
    MXMLItem& point = graph.AddSubItem("Point");
    point.SetAttribute("x", MString::FromDouble(each.x, 12));
    point.SetAttribute("y", MString::FromDouble(each.y, 12));
    point.SetAttribute("c", MString::FromDouble(each.tension, 12));
    point.SetAttribute("Type", MString::Literal(each.type));
  }
}

class BendformUnderTest : public NamedEffect {
 public:
  explicit BendformUnderTest(const Points& points = {}, double depth = 0.5, int32_t channels = 1)
      : NamedEffect("Bendform") {
    MXMLItem item("state");
    if (!points.empty()) AddGraph(item, points);
    Call(MService::kLoadState, MAsWord(&item));
    Set("Depth", depth);
    Prepare(channels, 48000);
  }
  float AnswerTo(float x) { return Answer(AudioBlock::Constant(1, 1, x))[0][0]; }
};

AudioBlock Ramp(int32_t samples, double from, double to) {
  return AudioBlock(1, samples).Fill([&](int32_t i) { return from + (to - from) * i / (samples - 1); });
}

const Points kRaised = {{0, 0.5}, {0.4, 0.8}, {1, 0.3}};

TEST(Bendform, PassesTheSignalThroughTheIdentityForEveryDepth) {
  const AudioBlock in = Ramp(1001, -1, 1);
  for (const double depth : {0.0, 0.1, 0.5, 0.7, 1.0}) {
    EXPECT_LE(BendformUnderTest({}, depth).Answer(in).GetDistance(in), 0) << depth;
    EXPECT_LE(BendformUnderTest({{0, 0}, {1, 1}}, depth).Answer(in).GetDistance(in), 0) << depth;
  }
}

TEST(Bendform, PassesTheSignalWithoutDepthWhateverIsDrawn) {
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(1, 500, random, 3);
  EXPECT_TRUE(BendformUnderTest(kRaised, 0).Answer(in).GetDistance(in) == 0);
}

TEST(Bendform, TakesZeroOfEitherSignAsPositive) {
  BendformUnderTest bendform(kRaised, 0.8);
  EXPECT_FLOAT_EQ(bendform.AnswerTo(0), 0.25f * 0.8f);
  EXPECT_FLOAT_EQ(bendform.AnswerTo(-0.0f), 0.25f * 0.8f);
  EXPECT_NEAR(bendform.AnswerTo(-1e-12f), -0.2, 1e-5);
}

TEST(Bendform, MapsTheMagnitudesSquareRootAndKeepsTheSign) {
  BendformUnderTest bendform({{0, 0}, {0.5, 0.9}, {1, 1}}, 0.6);
  // The root of 0.16 is 0.4, at 0.8 of the first line.
  EXPECT_NEAR(bendform.AnswerTo(0.16f), 0.6 * 0.72 * 0.72 + 0.4 * 0.16, 1e-7);
  EXPECT_NEAR(bendform.AnswerTo(-0.16f), -(0.6 * 0.72 * 0.72 + 0.4 * 0.16), 1e-7);
}

TEST(Bendform, StaysAtTheLastPointsValueBehindIt) {
  BendformUnderTest bendform({{0, 0}, {0.6, 0.7}}, 1);
  for (const float x : {0.36f, 0.5f, 1.0f, 7.0f, 1e30f}) {
    EXPECT_NEAR(bendform.AnswerTo(x), 0.49, 1e-6) << x;
    EXPECT_NEAR(bendform.AnswerTo(-x), -0.49, 1e-6) << x;
  }
  EXPECT_NEAR(BendformUnderTest({}, 0.5).AnswerTo(3), 0.5 + 1.5, 1e-6);
}

TEST(Bendform, FollowsSegmentsOfAllTypes) {
  TestRandom random;
  const char* const types[] = {"Mode 1", "Mode 2", "Mode 3", "Free 1", "Smooth 1"};
  for (int32_t round = 0; round < 60; ++round) {
    MEnvelopeData data;
    MXMLItem item("state");
    Points points;
    const int32_t count = random.Integer(2, 9);
    for (int32_t i = 0; i < count; ++i)
      points.push_back({(i + random.Real(-0.4, 0.4)) / (count - 1), random.Real(0, 1), types[random.Below(5)],
                        random.Real(-1, 1)});
    AddGraph(item, points);
    data.Load(item.SubItem("graph"));
    MEnvelopeComputer computer;
    computer.Build(data);
    const double depth = random.Real(0, 1);
    BendformUnderTest bendform(points, depth);
    const AudioBlock in = AudioBlock::Noise(1, 300, random, 1.2);
    const AudioBlock out = bendform.Answer(in, {50});
    for (int32_t i = 0; i < 300; ++i) {
      const double u = std::sqrt(std::abs(double{in[0][i]}));
      computer.Seek(u);
      const double v = computer.GetValue(u);
      const double wet = in[0][i] < 0 ? -v * v : v * v;
      const double expected = wet * depth + in[0][i] * (1 - depth);
      ASSERT_NEAR(out[0][i], expected, 1.5e-7 * std::max(1.0, std::abs(expected)))
          << round << ", " << in[0][i];
    }
  }
}

TEST(Bendform, PutsOutTheSameForASampleWhereverItStands) {
  TestRandom random;
  BendformUnderTest bendform(kRaised, 0.7);
  AudioBlock in = AudioBlock::Noise(1, 200, random, 1.3);
  const AudioBlock out = bendform.Answer(in);
  for (int32_t i = 0; i < 200; ++i) ASSERT_EQ(bendform.AnswerTo(in[0][i]), out[0][i]) << in[0][i];
}

TEST(Bendform, PassesWhatIsNotFiniteAndNothingElseIsHarmed) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  BendformUnderTest bendform(kRaised, 0.7);
  AudioBlock in = Ramp(40, -2, 2);
  AudioBlock expected = bendform.Answer(in);
  in[0][5] = std::numeric_limits<float>::quiet_NaN();
  in[0][30] = expected[0][30] = kInfinity;
  in[0][31] = expected[0][31] = -kInfinity;
  const AudioBlock out = bendform.Answer(in);
  for (int32_t i = 0; i < 40; ++i)
    if (i == 5)
      EXPECT_TRUE(std::isnan(out[0][i]));
    else
      EXPECT_EQ(out[0][i], expected[0][i]) << i;
}

TEST(Bendform, ServesAllChannelsAndCopiesUntilItHasASampleRate) {
  TestRandom random;
  NamedEffect fresh("Bendform");
  fresh.Prepare(3, 0);
  const AudioBlock noise = AudioBlock::Noise(3, 200, random, 3);
  EXPECT_TRUE(fresh.Answer(noise) == noise);
  BendformUnderTest bendform(kRaised, 1, 11);
  const AudioBlock out = bendform.Answer(AudioBlock(11, 50));
  for (int32_t c = 0; c < 11; ++c) EXPECT_EQ(out[c][49], 0.25f) << c;
}

TEST(Bendform, KeepsTheCurveOfAStateAndLeavesItWithoutOne) {
  const AudioBlock in = Ramp(200, -2, 2);
  BendformUnderTest drawn(kRaised, 0.5);
  const AudioBlock expected = drawn.Answer(in);
  MXMLItem item("state"), empty("state");
  drawn.Call(MService::kSaveState, MAsWord(&item));
  BendformUnderTest loaded;
  loaded.Call(MService::kLoadState, MAsWord(&item));
  EXPECT_TRUE(loaded.Answer(in) == expected);
  loaded.Call(MService::kLoadState, MAsWord(&empty));
  EXPECT_TRUE(loaded.Answer(in) == expected);
}

TEST(Bendform, IsConstantWithoutPointsAndTakesAResetCurveWithTheNextUpdate) {
  const std::unique_ptr<BendformAudioEffectPlugin> bendform{new BendformAudioEffectPlugin};
  MXMLItem item("state");
  item.AddSubItem("graph");
  item.SetAttribute("parameterDepth", "1");
  bendform->LoadState(item);
  bendform->Prepare(1, 48000);
  AudioBlock block = AudioBlock::Constant(1, 1, 0.5);
  bendform->Process(block.From(), block.From(), 1);
  EXPECT_EQ(block[0][0], 0.25f);  // the square of the middle
  bendform->ResetCurve();
  block[0][0] = 0.5f;
  bendform->Process(block.From(), block.From(), 1);
  EXPECT_EQ(block[0][0], 0.25f);  // the square of the middle
  bendform->Update();
  block[0][0] = 0.5f;
  bendform->Process(block.From(), block.From(), 1);
  EXPECT_EQ(block[0][0], 0.5f);
}

TEST(Bendform, ShowsItsDepthInPercent) {
  BendformUnderTest bendform;
  EXPECT_EQ(Utf8(MParameterText(bendform.GetRow(0), 0.5)), "50.00%");
  EXPECT_EQ(Utf8(bendform.GetRow(0).help).find("<name>Depth</name> defines how powerful the effect is"), 0u);
  EXPECT_EQ(bendform.GetBlock().pluginFlag, 1);
}

}  // namespace
