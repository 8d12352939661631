#include "dsp/MEnvelopeComputer.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"
#include "tests/dsp/Curves.h"

namespace {

using namespace MEnvelopeType;

// All kinds of items, with ends on the grid of 1/64 and off it.
MEnvelopeData Motley() {
  return Curve({Point(0.125, 0.25, kMode1, 0.5), Point(0.25, 0.75, kMode2, -0.75),
                Rounded(Point(0.3, 0.5, kMode2, 0.75), MEnvelopeFlag::kDefault, 0.5, 0),
                Point(0.4, 1, kMode3, 0.25), Point(0.5, 0.1, kFree1, 0.5, -0.5), Point(0.625, 0.9, kSmooth1),
                Rounded(Point(0.7, 0.2), MEnvelopeFlag::kDefault, 1, 0, 1), Point(0.8, 0.2),
                Point(0.9, 0.6)});
}

TEST(MEnvelopeComputer, AnEmptyCurveIsTheMiddleOfItsRange) {
  MEnvelopeData data;
  data.yMinimum = -2;
  data.yMaximum = 5;
  for (const double x : {-1e9, 0.0, 0.5, 1e300, 1.7e308, HUGE_VAL}) EXPECT_EQ(ValueOf(data, x), 1.5);
}

TEST(MEnvelopeComputer, OnePointIsItsHeight) {
  for (const double x : {-1e9, 0.25, 0.5, 1e300}) EXPECT_EQ(ValueOf(Curve({Point(0.5, 0.125)}), x), 0.125);
}

TEST(MEnvelopeComputer, TheCurveIsFlatOutsideOfItsPoints) {
  const MEnvelopeData data = Curve({Point(0.25, 0.3), Point(0.75, 0.8)});
  for (const double x : {-1e300, 0.0, 0.2499}) EXPECT_EQ(ValueOf(data, x), 0.3);
  for (const double x : {0.75, 0.9, 1e300, HUGE_VAL}) EXPECT_EQ(ValueOf(data, x), 0.8);
}

TEST(MEnvelopeComputer, BuildingGoesToTheStartOfTheRange) {
  MEnvelopeData data = Motley();
  data.xMinimum = -3;
  data.xMaximum = 7;
  MEnvelopeComputer computer;
  computer.Build(data);
  EXPECT_EQ(computer.GetCurrentX(), -3);
  EXPECT_EQ(computer.GetCurrentIndex(), 0);
  EXPECT_EQ(computer.GetXMinimum(), -3);
  EXPECT_EQ(computer.GetXMaximum(), 7);
  computer.GetValue(0.9);
  computer.Build(data);
  EXPECT_EQ(computer.GetCurrentX(), -3);
  EXPECT_EQ(computer.GetCurrentIndex(), 0);
}

TEST(MEnvelopeComputer, ReadingBackwardsStaysOnTheItemUntilASeek) {
  MEnvelopeComputer computer;
  computer.Build(Curve({Point(0, 0), Point(0.5, 1), Point(1, 0)}));
  EXPECT_DOUBLE_EQ(computer.GetValue(0.75), 0.5);
  EXPECT_EQ(computer.GetCurrentX(), 0.75);
  EXPECT_DOUBLE_EQ(computer.GetValue(0.25), 1.5) << "the second line goes on to the left";
  computer.GetValue(0.75);
  computer.Seek(0.8);
  EXPECT_EQ(computer.GetCurrentX(), 0.75) << "seeking forwards does nothing";
  computer.Seek(0.25);
  EXPECT_EQ(computer.GetCurrentX(), 0.25);
  EXPECT_DOUBLE_EQ(computer.GetValue(0.25), 0.5);
  computer.Seek(-1);
  EXPECT_EQ(computer.GetCurrentIndex(), 0);
  EXPECT_EQ(computer.GetValue(-1), 0);
}

TEST(MEnvelopeComputer, AnItemEndsWhereTheNextBegins) {
  MEnvelopeComputer computer;
  computer.Build(Curve({Point(0, 0), Point(0.5, 1), Point(1, 0)}));
  computer.GetValue(std::nextafter(0.5, 0.0));
  EXPECT_EQ(computer.GetCurrentIndex(), 1);
  computer.GetValue(0.5);
  EXPECT_EQ(computer.GetCurrentIndex(), 2);
  computer.Seek(0.5);
  EXPECT_EQ(computer.GetCurrentIndex(), 2);
}

TEST(MEnvelopeComputer, FillsAreTheValuesAtTheGrid) {
  constexpr int32_t kCount = 80;
  MEnvelopeComputer computer, reader;
  computer.Build(Motley());
  reader.Build(Motley());
  std::vector<double> doubles(kCount);
  std::vector<float> floats(kCount);
  computer.FillDouble(doubles.data(), -0.125, 1.0 / 64, kCount);
  EXPECT_EQ(computer.GetCurrentX(), 1.125);
  computer.Seek(-0.125);
  computer.FillFloat(floats.data(), -0.125, 1.0 / 64, kCount);
  EXPECT_EQ(computer.GetCurrentX(), 1.125);
  for (std::size_t i = 0; i < kCount; ++i) {
    const double value = reader.GetValue(-0.125 + static_cast<double>(i) / 64);
    ASSERT_NEAR(doubles[i], value, 1e-15) << i;
    ASSERT_NEAR(floats[i], value, 1e-7) << i;
  }
}

TEST(MEnvelopeComputer, FillsMayBeCutIntoPieces) {
  constexpr int32_t kCount = 640;
  std::vector<double> whole(kCount), pieces(kCount);
  std::vector<float> wholeFloats(kCount), pieceFloats(kCount);
  MEnvelopeComputer computer;
  computer.Build(Motley());
  computer.FillDouble(whole.data(), 0, 1.0 / 512, kCount);
  computer.Seek(0);
  computer.FillFloat(wholeFloats.data(), 0, 1.0 / 512, kCount);
  for (const int32_t piece : {1, 3, 7, 64}) {
    computer.Seek(0);
    for (int32_t i = 0; i < kCount; i += piece)
      computer.FillDouble(&pieces[static_cast<std::size_t>(i)], i / 512.0, 1.0 / 512,
                          std::min(piece, kCount - i));
    computer.Seek(0);
    for (int32_t i = 0; i < kCount; i += piece)
      computer.FillFloat(&pieceFloats[static_cast<std::size_t>(i)], i / 512.0, 1.0 / 512,
                         std::min(piece, kCount - i));
    EXPECT_EQ(pieces, whole) << piece;
    EXPECT_EQ(pieceFloats, wholeFloats) << piece;
  }
}

TEST(MEnvelopeComputer, StepsThatPassOverItemsLeaveThemOut) {
  MEnvelopeComputer computer, reader;
  computer.Build(Motley());
  reader.Build(Motley());
  double values[5];
  computer.FillDouble(values, 0, 0.375, 5);
  for (int32_t i = 0; i < 5; ++i) EXPECT_NEAR(values[i], reader.GetValue(0.375 * i), 1e-15) << i;
}

TEST(MEnvelopeComputer, OnlyTheFloatFillBeginsAnItemAtTheEndOfTheOneBefore) {
  // A step that rounding makes too short for the whole number of samples in the first segment.
  int32_t samples = 2;
  while (!(samples * (1.0 / samples) < 1.0 && std::ceil(1.0 / (1.0 / samples)) == samples)) ++samples;
  const MEnvelopeData data = Curve({Point(0, 0), Point(1, 1), Point(2, 0)});
  std::vector<double> doubles(static_cast<std::size_t>(samples) + 1);
  std::vector<float> floats(doubles.size());
  MEnvelopeComputer computer;
  computer.Build(data);
  computer.FillDouble(doubles.data(), 0, 1.0 / samples, samples + 1);
  EXPECT_EQ(computer.GetCurrentX(), samples * (1.0 / samples) + 1.0 / samples);
  computer.Seek(0);
  computer.FillFloat(floats.data(), 0, 1.0 / samples, samples + 1);
  EXPECT_EQ(computer.GetCurrentX(), 1 + 1.0 / samples);
}

TEST(MEnvelopeComputer, AStepOfZeroOrBelowReadsFromOneItem) {
  MEnvelopeComputer computer;
  computer.Build(Curve({Point(0, 0), Point(0.5, 1), Point(1, 0)}));
  double values[4];
  computer.FillDouble(values, 0.25, 0, 4);
  for (const double value : values) EXPECT_DOUBLE_EQ(value, 0.5);
  computer.FillDouble(values, 0.25, -0.125, 4);
  EXPECT_DOUBLE_EQ(values[2], 0);
  EXPECT_DOUBLE_EQ(values[3], -0.25) << "the line goes on to the left";
  EXPECT_EQ(computer.GetCurrentX(), -0.25);
}

TEST(MEnvelopeComputer, FillsOfNothingWriteNothing) {
  MEnvelopeComputer computer;
  computer.Build(Motley());
  float guard = 7;
  computer.FillFloat(&guard, 0.5, 0.01, 0);
  computer.FillFloat(&guard, 0.5, 0.01, -5);
  EXPECT_EQ(guard, 7);
}

double TailOf(std::initializer_list<MEnvelopePoint> points) {
  MEnvelopeComputer computer;
  computer.Build(Curve(points));
  return computer.GetTailStart();
}

TEST(MEnvelopeComputer, TheTailBeginsWhereTheCurveStaysAtZero) {
  EXPECT_EQ(TailOf({Point(0, 1), Point(0.5, 0), Point(1, 0)}), 0.5);
  EXPECT_EQ(TailOf({Point(0, 0), Point(0.5, 1), Point(1, 0)}), 1);
  EXPECT_EQ(TailOf({Point(0.25, 0), Point(0.5, 0), Point(1, 0)}), 0.25);
  EXPECT_EQ(TailOf({Point(0, 0), Point(1, 1)}), 1.7e308);
  EXPECT_EQ(TailOf({}), 1.7e308);
  EXPECT_EQ(TailOf({Point(0, 0)}), 1.7e308);
}

TEST(MEnvelopeComputer, ARoundedCornerMovesTheTailToItsRightEnd) {
  const MEnvelopePoint zero = Rounded(Point(0.5, 0), MEnvelopeFlag::kDefault, 0.5, 0);
  EXPECT_EQ(TailOf({Point(0, 1), zero, Point(1, 0)}), 0.625);
  EXPECT_EQ(TailOf({Point(0, 1), Point(0.5, 0), Rounded(Point(1, 0), MEnvelopeFlag::kDefault, 0.5, 0)}), 0.5);
}

TEST(MEnvelopeComputer, TheTailIsFoundAnewByEachBuild) {
  MEnvelopeComputer computer;
  computer.Build(Curve({Point(0, 1), Point(1, 0)}));
  EXPECT_EQ(computer.GetTailStart(), 1);
  computer.Build(Curve({Point(0, 1), Point(1, 1)}));
  EXPECT_EQ(computer.GetTailStart(), 1.7e308);
}

TEST(MEnvelopeComputer, ItKeepsNothingOfTheData) {
  MEnvelopeComputer computer;
  {
    const MEnvelopeData data = Motley();
    computer.Build(data);
  }
  EXPECT_DOUBLE_EQ(computer.GetValue(0.9), 0.6);
}

TEST(MEnvelopeComputer, AFreshOneAndACopyReadAsZeroUntilTheyAreBuilt) {
  MEnvelopeComputer built;
  built.Build(Motley());
  MEnvelopeComputer copy(built), assigned;
  assigned.Build(Motley());
  assigned = built;
  EXPECT_TRUE(built.IsBuilt());
  ASSERT_EQ(copy.GetItemCount(), built.GetItemCount());
  for (int32_t i = 0; i < copy.GetItemCount(); ++i)
    EXPECT_EQ(copy.GetItem(i).GetEnd(), built.GetItem(i).GetEnd());
  MEnvelopeComputer fresh;
  for (MEnvelopeComputer* computer : {&copy, &assigned, &fresh}) {
    EXPECT_FALSE(computer->IsBuilt());
    EXPECT_EQ(computer->GetValue(0.3), 0);
    float values[3] = {1, 1, 1};
    computer->FillFloat(values, 0, 0.1, 3);
    for (const float value : values) EXPECT_EQ(value, 0);
    computer->Seek(0);
    computer->Build(Motley());
    EXPECT_DOUBLE_EQ(computer->GetValue(0.9), 0.6);
  }
  EXPECT_RAISES(fresh.GetItem(-1), "Index out of range.", 0);
  EXPECT_RAISES(fresh.GetItem(fresh.GetItemCount()), "Index out of range.", 0);
}

TEST(MEnvelopeComputer, ReadingAllocatesNothingAndBuildingLeavesNothingBehind) {
  CountingFunctions functions;
  {
    MEnvelopeComputer computer;
    computer.Build(Motley());
    const int64_t calls = CountingFunctions::GetCalls();
    EXPECT_GT(calls, 0);
    double values[256];
    float floats[256];
    for (int32_t i = 0; i < 10; ++i) {
      computer.Seek(-1);
      computer.FillDouble(values, -1, 0.01, 256);
      computer.Seek(0);
      computer.FillFloat(floats, 0, 0.003, 256);
      computer.Seek(0.1);
      computer.GetValue(0.6);
    }
    EXPECT_EQ(CountingFunctions::GetCalls(), calls);
  }
  EXPECT_EQ(CountingFunctions::GetBalance(), 0);
}

TEST(MEnvelopeComputer, ABuildThatFindsNoMemoryLeavesTheOldCurve) {
  CountingFunctions functions;
  MEnvelopeComputer computer;
  computer.Build(Curve({Point(0, 0.25)}));
  const MEnvelopeData data = Motley();
  int32_t failures = 0;
  for (bool isDone = false; !isDone; ++failures) {
    CountingFunctions::FailAfter(failures);
    try {
      computer.Build(data);
      isDone = true;
    } catch (const MException&) {
      ASSERT_EQ(computer.GetValue(0.5), 0.25);
      computer.Seek(0);
    }
  }
  CountingFunctions::FailAfter(-1);
  EXPECT_GT(failures, 10);
  EXPECT_DOUBLE_EQ(computer.GetValue(0.9), 0.6);
}

}  // namespace
