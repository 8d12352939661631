// The states and the named editors of the effects with one oscillator: the wave in the item "shape", and the
// shape's row, which wins over the shape that the item names.

#include <gtest/gtest.h>

#include "core/MXMLItem.h"
#include "tests/common/Texts.h"
#include "tests/effects/ModulationUnderTest.h"

namespace {

class ModulationState : public testing::TestWithParam<const char*> {
 protected:
  static constexpr int32_t kDepth = 0;  // the row

  // What a rectangle comes out as.
  static AudioBlock Hear(ModulationUnderTest& effect) {
    effect.Set(kDepth, 1);
    effect.Prepare(2, 8000);
    AudioBlock in(2, 4000);
    in.Fill([](int32_t i) { return i % 50 < 25 ? 0.5 : -0.5; });
    return effect.Answer(in, {512});
  }

  ModulationUnderTest effect_{GetParam()};
};

TEST_P(ModulationState, HoldsTheWaveInAnItem) {
  effect_.SetShape(2.25);
  effect_.SetRate(4);
  MXMLItem item;
  for (int32_t times = 0; times < 2; ++times) effect_.Save(item);
  ASSERT_EQ(item.GetChildren().GetCount(), 1);
  const MXMLItem& shape = *item.GetChildren()[0];
  EXPECT_EQ(Utf8(shape.GetName()), "shape");
  EXPECT_EQ(Utf8(shape.GetRequiredAttribute("value")), "2.2500");
  EXPECT_EQ(Utf8(shape.GetRequiredAttribute("EnvelopeDepth")), "0.0000");
  EXPECT_TRUE(shape.HasSubItem("Envelope"));
  EXPECT_EQ(Utf8(item.GetRequiredAttribute("parameterShape")), "2.2500");
  EXPECT_EQ(Utf8(item.GetRequiredAttribute("parameterrate")), "0.6021");
}

TEST_P(ModulationState, TheRowWinsOverTheShapeOfTheItem) {
  MXMLItem item;
  item.SetAttribute("parametershape", "11");
  item.AddSubItem("Shape").SetAttribute("Value", "2");
  effect_.Load(item);
  EXPECT_EQ(effect_.GetShape(), 11);
  MXMLItem saved;
  effect_.Save(saved);
  EXPECT_EQ(Utf8(saved.GetChildren()[0]->GetRequiredAttribute("value")), "11.0000");
  MXMLItem rowAlone;
  rowAlone.SetAttribute("parameterShape", "11");
  ModulationUnderTest same(GetParam());
  same.Load(rowAlone);
  EXPECT_TRUE(Hear(effect_) == Hear(same));
}

TEST_P(ModulationState, TheShapeOfTheItemCountsWithoutTheRow) {
  effect_.SetShape(9);
  MXMLItem item;
  item.AddSubItem("Shape").SetAttribute("Value", "2.5");
  effect_.Load(item);
  EXPECT_EQ(effect_.GetShape(), 2.5);
}

TEST_P(ModulationState, IsASineWithoutTheRowAndTheItemsShape) {
  for (const bool hasItem : {false, true}) {
    effect_.SetShape(9);
    MXMLItem item;
    if (hasItem) item.AddSubItem("shape");
    effect_.Load(item);
    EXPECT_EQ(effect_.GetShape(), 5);
  }
}

TEST_P(ModulationState, TheDrawnCurveComesBack) {
  MXMLItem item, saved;
  MXMLItem& shape = item.AddSubItem("shape");
  shape.SetAttribute("EnvelopeDepth", "1");
  TestWave wave(5);
  wave.GetCurve().Add(0.5, 0.75);
  wave.SetCustomDepth(1);
  wave.Save(shape);
  effect_.Load(item);
  effect_.Save(saved);
  ModulationUnderTest later(GetParam()), plain(GetParam());
  later.Load(saved);
  plain.SetRate(4);
  const AudioBlock heard = Hear(effect_);
  EXPECT_TRUE(Hear(later) == heard);
  EXPECT_GT(Hear(plain).GetDistance(heard), 0.01);
}

TEST_P(ModulationState, ACurveThatCannotBeReadChangesNothing) {
  effect_.SetShape(9);
  MXMLItem before, after, bad;
  effect_.Save(before);
  bad.SetAttribute("parameterShape", "3");
  MXMLItem& point = bad.AddSubItem("shape").AddSubItem("Envelope").AddSubItem("point");
  point.SetAttribute("type", "no such type");
  try {
    effect_.Load(bad);
  } catch (const MException&) {
    EXPECT_EQ(effect_.GetShape(), 9);
  }
  EXPECT_TRUE(Hear(effect_).IsFinite());
}

TEST_P(ModulationState, AnyNumbersOfTheItemAreSafe) {
  TestRandom random;
  const std::vector<const char*> texts = {"nan", "inf", "-1e308", "1e308", "", "x", "25", "-7", "0.5"};
  effect_.Prepare(2, 8000);
  for (int32_t run = 0; run < 50; ++run) {
    MXMLItem item;
    MXMLItem& shape = item.AddSubItem("shape");
    for (const char* const name : {"value", "EnvelopeDepth"})
      if (!random.OneIn(4)) shape.SetAttribute(MString::Literal(name), MString::Literal(random.OneOf(texts)));
    effect_.Load(item);
    EXPECT_TRUE(effect_.Answer(AudioBlock::Noise(2, 100, random)).IsFinite());
  }
}

TEST_P(ModulationState, ANamedEditorIsClosedWithItsWindowOrWithTheMainOne) {
  MPluginPublicBlock& block = effect_.GetBlock();
  ASSERT_EQ(block.editorCount, 1);
  const MPluginEditorRow& row = block.editors[0];
  EXPECT_EQ(Utf8(row.name), "Shape");
  EXPECT_EQ(row.kind, 0);
  EXPECT_EQ(row.available, 1);
  ASSERT_NE(row.editor, nullptr);
  EXPECT_EQ(*row.editor, 0);
  for (const MWord closed : {MWord{1234}, MWord{99}, MWord{0}}) {
    *row.editor = 1234;
    effect_.Call(MService::kEditorClosed, closed);
    EXPECT_EQ(*row.editor, 0) << closed;
  }
}

INSTANTIATE_TEST_SUITE_P(Effects, ModulationState,
                         testing::Values("Roamplex", "Pulsetta", "Quaverly", "Swirlo"),
                         [](const auto& name) { return std::string(name.param); });

}  // namespace
