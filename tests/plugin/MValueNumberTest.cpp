#include "plugin/MValueNumber.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/common/CommaLocale.h"
#include "tests/common/TestRandom.h"
#include "tests/plugin/ValueTexts.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
const double kNaN = std::nan("");
constexpr int32_t kLowest32 = std::numeric_limits<int32_t>::min();
constexpr int32_t kHighest32 = std::numeric_limits<int32_t>::max();
constexpr int64_t kLowest64 = std::numeric_limits<int64_t>::min();
constexpr int64_t kHighest64 = std::numeric_limits<int64_t>::max();

TEST(MValueNumber, StartsWithinItsRange) {
  const MValueDouble inside(0.5, 0, 1), above(2, 0, 1), below(-2, 0, 1), inverted(5, 3, 1);
  EXPECT_EQ(inside.GetValue(), 0.5);
  EXPECT_FALSE(inside.IsChanged());
  EXPECT_EQ(above.GetValue(), 1);
  EXPECT_TRUE(above.IsChanged());
  EXPECT_EQ(above.GetDefault(), 2);  // as given
  EXPECT_EQ(below.GetValue(), 0);
  EXPECT_TRUE(below.IsChanged());
  EXPECT_EQ(inverted.GetValue(), 3);  // the minimum comes last
  EXPECT_EQ(MValueDouble(kNaN, 2, 5).GetValue(), 2);
}

TEST(MValueNumber, StepsAThousandthOfItsRange) {
  const MValueDouble real(0, -1, 3);
  EXPECT_EQ(real.GetStep(), 0.004);
  EXPECT_EQ(real.GetMaxStep(), 0.04);
  EXPECT_EQ(MValueDouble(0, 2, 2).GetStep(), 1);
  EXPECT_EQ(MValueDouble(0, 2, 2).GetMaxStep(), 10);
  EXPECT_EQ(MValueDouble(0, 2, 1).GetStep(), 1);
  EXPECT_EQ(MValueInt32(0, 0, 100).GetStep(), 1);
  EXPECT_EQ(MValueInt32(0, 0, 5999).GetStep(), 5);
  EXPECT_EQ(MValueInt64(0, kLowest64, kHighest64).GetStep(), 18446744073709552);
  EXPECT_EQ(MValueFloat(0, 0, 4).GetStep(), 0.004);
}

TEST(MValueNumber, HasPositionZeroWithoutARange) {
  EXPECT_EQ(MValueDouble(2, 2, 2).GetPosition(), 0);
  EXPECT_EQ(MValueDouble(2, 3, 1).GetPosition(), 0);
  EXPECT_EQ(MValueInt32(2, 2, 2).GetPosition(), 0);
}

TEST(MValueNumber, HasAPositionInItsRange) {
  double variable = 5;
  const MValueDouble value(MBind(variable), 0, 10);
  EXPECT_EQ(value.GetPosition(), 0.5);
  for (const auto& [raw, position] :
       {std::pair(-3.0, 0.0), {0.0, 0.0}, {10.0, 1.0}, {70.0, 1.0}, {kNaN, 0.0}}) {
    variable = raw;
    EXPECT_EQ(value.GetPosition(), position);
  }
  EXPECT_EQ(MValueDouble(0, -1e308, 1e308).GetPosition(), 0.5);
  EXPECT_EQ(MValueInt64(0, kLowest64, kHighest64).GetPosition(), 0.5);
}

TEST(MValueNumber, TakesAPositionAndLimitsIt) {
  MValueDouble value(0, 10, 20);
  EXPECT_TRUE(value.SetPosition(0.25));
  EXPECT_EQ(value.GetValue(), 12.5);
  EXPECT_FALSE(value.SetPosition(0.25));
  EXPECT_TRUE(value.SetPosition(7));
  EXPECT_EQ(value.GetValue(), 20);
  EXPECT_TRUE(value.SetPosition(-7));
  EXPECT_EQ(value.GetValue(), 10);
  for (const double position : {kNaN, kInfinity, -kInfinity}) EXPECT_FALSE(value.SetPosition(position));
  EXPECT_EQ(value.GetValue(), 10);
  MValueDouble wide(0, -1e308, 1e308);
  EXPECT_TRUE(wide.SetPosition(1));
  EXPECT_EQ(wide.GetValue(), 1e308);
}

TEST(MValueNumber, OfIntegersComesBackFromItsPosition) {
  MValueInt32 value(0, -7, 41);
  for (int32_t i = -7; i <= 41; ++i) {
    value.SetValue(i);
    const double position = value.GetPosition();
    value.SetValue(0);
    value.SetPosition(position);
    EXPECT_EQ(value.GetValue(), i);
  }
}

TEST(MValueNumber, StepsByTheZoomedStepUpToTheLargeOne) {
  MValueDouble value(0, 0, 1000);  // steps 1 and 10
  EXPECT_TRUE(value.StepBy(3, 0));
  EXPECT_EQ(value.GetValue(), 3);
  EXPECT_TRUE(value.StepBy(1, 2));
  EXPECT_EQ(value.GetValue(), 7);
  EXPECT_TRUE(value.StepBy(1, 4));  // 16 is above 10
  EXPECT_EQ(value.GetValue(), 17);
  EXPECT_TRUE(value.StepBy(-2, kHighest32));
  EXPECT_EQ(value.GetValue(), 0);  // -3 is limited
  EXPECT_FALSE(value.StepBy(-1, 0));
  EXPECT_TRUE(value.StepBy(1, -1));
  EXPECT_EQ(value.GetValue(), 0.5);
  EXPECT_TRUE(value.StepSmall(2));
  EXPECT_EQ(value.GetValue(), 2.5);
  EXPECT_FALSE(value.StepSmall(0));
}

TEST(MValueNumber, OfIntegersMovesByOneAtLeast) {
  MValueInt32 value(0, 0, 100);
  EXPECT_TRUE(value.StepBy(2, -5));
  EXPECT_EQ(value.GetValue(), 2);
}

TEST(MValueNumber, StepsToTheEndOfItsTypeAndNotBeyond) {
  MValueInt32 whole(0, kLowest32, kHighest32);
  whole.SetSteps(kHighest32, kHighest32);
  EXPECT_TRUE(whole.StepBy(kHighest32, 0));
  EXPECT_EQ(whole.GetValue(), kHighest32);
  EXPECT_TRUE(whole.StepSmall(kLowest32));
  EXPECT_EQ(whole.GetValue(), kLowest32);
  MValueInt16 little(0, -32768, 32767);
  EXPECT_TRUE(little.StepBy(kHighest32, 31));
  EXPECT_EQ(little.GetValue(), 32767);
  EXPECT_TRUE(little.StepSmall(kLowest32));
  EXPECT_EQ(little.GetValue(), -32768);
  MValueInt64 big(0, kLowest64, kHighest64);
  big.SetSteps(kHighest64, kHighest64);
  EXPECT_TRUE(big.StepBy(5, 60));
  EXPECT_EQ(big.GetValue(), kHighest64);
  EXPECT_TRUE(big.StepSmall(kLowest32));
  EXPECT_EQ(big.GetValue(), kLowest64);
  big.SetSteps(-1, 10);
  EXPECT_FALSE(big.StepSmall(1));
  EXPECT_TRUE(big.StepSmall(-1));
  EXPECT_EQ(big.GetValue(), kLowest64 + 1);
  MValueFloat real(0, -std::numeric_limits<float>::max(), std::numeric_limits<float>::max());
  real.SetSteps(1e300, 1e300);
  EXPECT_TRUE(real.StepSmall(7));
  EXPECT_EQ(real.GetValue(), std::numeric_limits<float>::max());
  real.SetSteps(kNaN, kNaN);
  EXPECT_FALSE(real.StepSmall(7));
  EXPECT_EQ(real.GetValue(), std::numeric_limits<float>::max());
}

TEST(MValueNumber, WritesToTheVariableThatItIsBoundTo) {
  int64_t variable = 50;
  MValueInt64 value(MBind(variable), 0, 40);
  EXPECT_EQ(variable, 40);
  EXPECT_TRUE(value.IsChanged());
  EXPECT_EQ(value.GetDefault(), 50);
  value.SetText("17");
  EXPECT_EQ(variable, 17);
  variable = 99;
  EXPECT_EQ(value.GetValue(), 99);
  value.Validate();
  EXPECT_EQ(variable, 40);
}

TEST(MValueNumber, NotesEveryWrite) {
  MValueDouble value(0.5, 0, 1);
  const auto notes = [&](auto&& write) {
    value.ClearChanged();
    write();
    return value.IsChanged();
  };
  MXMLItem item("item");
  EXPECT_TRUE(notes([&] { value.SetText("0.25"); }));
  EXPECT_TRUE(notes([&] { value.SetText("0.25"); })) << "though it is the same";
  EXPECT_TRUE(notes([&] { value.SetPosition(0.5); }));
  EXPECT_TRUE(notes([&] { value.SetIndex(1); }));
  EXPECT_TRUE(notes([&] { value.StepBy(1, 0); }));
  EXPECT_TRUE(notes([&] { value.StepSmall(1); }));
  EXPECT_TRUE(notes([&] { value.Reset(); }));
  EXPECT_TRUE(notes([&] { value.FromRawText("3"); }));
  EXPECT_TRUE(notes([&] { value.Validate(); }));
  EXPECT_TRUE(notes([&] { value.Load(item); }));
  EXPECT_TRUE(notes([&] { value.SetValue(0.5); }));
  EXPECT_FALSE(notes([&] { value.Validate(); }));
  EXPECT_FALSE(notes([&] { value.SetText("x"); }));
  EXPECT_FALSE(notes([&] { TextOf(value), value.GetPosition(), value.Save(item); }));
}

TEST(MValueNumber, ResetsToItsDefaultWithinTheRange) {
  MValueDouble value(7, 0, 1);
  value.SetValue(0.25);
  EXPECT_TRUE(value.Reset());
  EXPECT_EQ(value.GetValue(), 1);
  EXPECT_FALSE(value.Reset());
}

TEST(MValueNumber, ListsTheWholeNumbersOfItsRange) {
  MValueDouble value(0, -1.5, 3.7);
  EXPECT_EQ(value.GetIndexCount(), 5);
  EXPECT_EQ(IndexTextOf(value, 0), "-1.0000");
  EXPECT_EQ(IndexTextOf(value, 4), "3.0000");
  EXPECT_TRUE(value.SetIndex(2));
  EXPECT_EQ(value.GetValue(), 1);
  EXPECT_FALSE(value.SetIndex(2));
  EXPECT_EQ(MValueDouble(0, 0.2, 0.8).GetIndexCount(), 0);
  EXPECT_EQ(MValueDouble(0, 5, 1).GetIndexCount(), 0);
  EXPECT_EQ(MValueInt32(0, kLowest32, kHighest32).GetIndexCount(), kHighest32);
  EXPECT_EQ(IndexTextOf(MValueInt32(0, -5, 5), 2), "-3");
  EXPECT_EQ(IndexTextOf(MValueInt32(0, 123456789, 123456999), 0), "12345678");  // eight characters
}

TEST(MValueNumber, TakesAnIndexWithoutLimit) {
  MValueDouble value(0, 0, 10);
  EXPECT_TRUE(value.SetIndex(70));
  EXPECT_EQ(value.GetValue(), 70);
  EXPECT_TRUE(value.SetIndex(-70));
  EXPECT_EQ(value.GetValue(), -70);
  EXPECT_EQ(IndexTextOf(value, -70), "-70.0000");
  MValueInt16 little(0, 0, 10);
  little.SetIndex(kHighest32);
  EXPECT_EQ(little.GetValue(), 32767);
  EXPECT_EQ(IndexTextOf(little, kLowest32), "-32768");
}

TEST(MValueNumber, HasNoFlags) {
  EXPECT_EQ(MValueDouble().GetFlags(), 0u);
}

TEST(MValueNumber, OfEveryTypeRefusesNumbersThatAreNotFinite) {
  MValueDouble real(0.5, 0, 1);
  MValueFloat single(0.5f, 0, 1);
  for (const double number : {kNaN, kInfinity, -kInfinity}) {
    EXPECT_FALSE(real.SetValue(number));
    EXPECT_FALSE(single.SetValue(static_cast<float>(number)));
  }
  EXPECT_EQ(real.GetValue(), 0.5);
  EXPECT_EQ(single.GetValue(), 0.5f);
}

TEST(MValueNumber, RepairsAVariableThatIsNoNumber) {
  double variable = 0.5;
  MValueDouble value(MBind(variable), 0.25, 1);
  variable = kNaN;
  EXPECT_EQ(TextOf(value), "nan");
  value.Validate();
  EXPECT_EQ(variable, 0.25);
}

TEST(MValueNumber, StaysInItsRangeWhateverIsDone) {
  TestRandom random;
  for (int run = 0; run < 2000; ++run) {
    const double low = random.Real(-1e3, 1e3), high = low + random.Real(0, 1e3);
    MValueDouble value(random.Real(-2e3, 2e3), low, high);
    MValueInt16 little(0, static_cast<int16_t>(low), static_cast<int16_t>(high));
    for (int i = 0; i < 10; ++i) {
      const int32_t count = static_cast<int32_t>(random.Bits());
      const int32_t zoom = random.Integer(-40, 40);
      const double position = random.Real(-3, 3);
      for (MValue* const each : {static_cast<MValue*>(&value), static_cast<MValue*>(&little)}) {
        each->StepBy(count, zoom);
        each->StepSmall(count);
        each->SetPosition(position);
      }
      ASSERT_TRUE(value.GetValue() >= low && value.GetValue() <= high);
      ASSERT_TRUE(little.GetValue() >= little.GetMinimum() && little.GetValue() <= little.GetMaximum());
    }
  }
}

}  // namespace
