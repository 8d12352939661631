#include "plugin/MValueUnits.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/common/TestRandom.h"
#include "tests/plugin/ValueTexts.h"

namespace {

// The text of a value of the class whose range is wide.
template <typename V>
std::string Text(double number) {
  return TextOf(V(number, -1e9, 1e9));
}

// The value behind a typed text; 0.75 if it is refused.
template <typename V>
double Typed(const char* text) {
  V value(0.75, -1e9, 1e9);
  value.SetText(Buffer(text));
  return value.GetValue();
}

TEST(MValueUnits, ShowTheirUnits) {
  EXPECT_EQ(Text<MValuePercents>(0.125), "12%");
  EXPECT_EQ(Text<MValueVolume>(1), "0.00 dB");
  EXPECT_EQ(Text<MValueVolume>(0), "silence");
  EXPECT_EQ(Text<MValueVolume>(0.1), "-20.0 dB");
  EXPECT_EQ(Text<MValueVolume>(0.5), "-6.02 dB");
  EXPECT_EQ(Text<MValuePan>(0), "center");
  EXPECT_EQ(Text<MValuePan>(-0.5), "50% left");
  EXPECT_EQ(Text<MValuePan>(0.25), "25% right");
  EXPECT_EQ(Text<MValueFrequency>(440), "440Hz");
  EXPECT_EQ(Text<MValueFrequency>(12000), "12.0kHz");
  EXPECT_EQ(Text<MValueFrequencyLog>(3), "1000Hz");
  EXPECT_EQ(Text<MValueTimeMS>(0.0005), "1 ms");
  EXPECT_EQ(Text<MValuePitch>(1), "+1.00");
  EXPECT_EQ(Text<MValuePitch>(-0.5), "-0.50");
}

TEST(MValueUnits, ReadTheirUnits) {
  EXPECT_EQ(Typed<MValuePercents>("50%"), 0.5);
  EXPECT_EQ(Typed<MValuePercents>("50"), 0.5);
  EXPECT_DOUBLE_EQ(Typed<MValueVolume>("-20"), 0.1);
  EXPECT_EQ(Typed<MValueVolume>("silence"), 0);
  EXPECT_EQ(Typed<MValuePan>("50% left"), -0.5);
  EXPECT_EQ(Typed<MValuePan>("-50"), -0.5);
  EXPECT_EQ(Typed<MValueFrequency>("440 Hz"), 440);
  EXPECT_EQ(Typed<MValueFrequency>("1.2 kHz"), 1200);
  EXPECT_EQ(Typed<MValueFrequencyLog>("1000"), 3);
  EXPECT_EQ(Typed<MValueTimeMS>("250"), 0.25);
  EXPECT_EQ(Typed<MValuePitch>("+1.00"), 1);
}

TEST(MValueUnits, RefuseATextWithoutANumber) {
  for (const char* const text : {"", "x", "nan", "1e999"}) {
    EXPECT_EQ(Typed<MValuePercents>(text), 0.75) << text;
    EXPECT_EQ(Typed<MValueVolume>(text), 0.75) << text;
    EXPECT_EQ(Typed<MValuePan>(text), 0.75) << text;
    EXPECT_EQ(Typed<MValueFrequency>(text), 0.75) << text;
    EXPECT_EQ(Typed<MValueFrequencyLog>(text), 0.75) << text;
    EXPECT_EQ(Typed<MValueTimeMS>(text), 0.75) << text;
    EXPECT_EQ(Typed<MValuePitch>(text), 0.75) << text;
  }
  EXPECT_EQ(Typed<MValueFrequencyLog>("0"), 0.75);
  EXPECT_EQ(Typed<MValueFrequencyLog>("-3 Hz"), 0.75);
}

TEST(MValueUnits, ShowAnyPositionAsTheValueThere) {
  EXPECT_EQ(MValuePercents(0, 0, 2).FormatAt(0.25), "50%");
  EXPECT_EQ(MValueVolume(1, 0, 1).FormatAt(0), "silence");
  EXPECT_EQ(MValuePan().FormatAt(0.25), "50% left");
  EXPECT_EQ(MValueFrequency(0, 0, 1000).FormatAt(0.44), "440Hz");
  EXPECT_EQ(MValueFrequencyLog(1, 1, 4).FormatAt(1), "10.0kHz");
  EXPECT_EQ(MValueTimeMS(0, 0, 1).FormatAt(0.5), "500 ms");
  EXPECT_EQ(MValuePitch(0, -12, 12).FormatAt(0.75), "+6.00");
  EXPECT_EQ(MValueStepDouble(0, 0, 1).FormatAt(0.1234), "0.1200");
}

TEST(MValueUnits, LimitAndSaveAsEveryNumber) {
  double gain = 0.5;
  MValueVolume volume(MBind(gain), 0, 1);
  EXPECT_TRUE(volume.SetText("12 dB"));
  EXPECT_EQ(gain, 1);
  gain = 0.123456;
  EXPECT_EQ(SavedText(volume), "0.1235");
  EXPECT_EQ(RawTextOf(volume), "0.1235");
  MXMLItem item("item");
  item.SetAttribute("value", "0.25");
  volume.Load(item);
  EXPECT_EQ(gain, 0.25);
  EXPECT_EQ(ShortTextOf(MValuePan(0.25)), "25% righ");
}

TEST(MValuePitch, HasFixedSteps) {
  const MValuePitch value;
  EXPECT_EQ(value.GetStep(), static_cast<double>(0.1f));
  EXPECT_EQ(value.GetMaxStep(), 1);
  EXPECT_EQ(value.GetFormat(), "{0;+.02}");
}

TEST(MValueStepDouble, SnapsToItsGrid) {
  MValueStepDouble value;
  EXPECT_EQ(value.GetMinimum(), 0);
  EXPECT_EQ(value.GetMaximum(), 100);
  EXPECT_EQ(value.GetGrid(), 0.01);
  EXPECT_TRUE(value.SetValue(33.333));
  EXPECT_EQ(value.GetValue(), 3333 * 0.01);
  EXPECT_TRUE(value.SetPosition(1));
  EXPECT_EQ(value.GetValue(), 100);
  EXPECT_FALSE(value.SetText("99.9999"));
  EXPECT_TRUE(value.SetText("12.347"));
  EXPECT_EQ(value.GetValue(), 1235 * 0.01);
  EXPECT_EQ(MValueStepDouble(12.3456).GetValue(), 1235 * 0.01);
  double bound = 0.126;
  const MValueStepDouble snapped(MBind(bound), 0, 1);
  EXPECT_EQ(bound, 13 * 0.01);
  EXPECT_TRUE(snapped.IsChanged());
}

TEST(MValueStepDouble, EndsAtTheLastGridPointWithinTheRange) {
  MValueStepDouble value(0, 1, 2);
  value.SetGrid(0.3);
  value.SetPosition(1);
  EXPECT_DOUBLE_EQ(value.GetValue(), 1.9);
  value.SetPosition(0);
  EXPECT_EQ(value.GetValue(), 1);
}

TEST(MValueStepDouble, WithoutAGridAllowsEveryNumber) {
  MValueStepDouble value;
  for (const double grid : {0.0, -1.0, std::nan("")}) {
    value.SetGrid(grid);
    value.SetValue(33.3333);
    EXPECT_EQ(value.GetValue(), 33.3333);
  }
  value.SetGrid(1e-320);
  value.SetValue(50.5);
  EXPECT_EQ(value.GetValue(), 50.5);
}

TEST(MValueStepDouble, ReadsItsGrid) {
  MXMLItem item("item");
  item.SetAttribute("step", "0.25");
  item.SetAttribute("value", "1.3");
  MValueStepDouble value;
  value.LoadFromXml(item);
  EXPECT_EQ(value.GetGrid(), 0.25);
  EXPECT_EQ(value.GetValue(), 1.25);
  item.SetAttribute("step", "x");
  value.LoadFromXml(item);
  EXPECT_EQ(value.GetGrid(), 0.25);
}

TEST(MValueStepDouble, StaysWhereItHasSnapped) {
  TestRandom random;
  for (int i = 0; i < 100000; ++i) {
    const double low = random.Real(-100, 100);
    MValueStepDouble value(0, low, low + random.Real(0, 100));
    value.SetGrid(random.Real(1e-4, 10));
    value.SetPosition(random.Real(0, 1));
    const double snapped = value.GetValue();
    value.Validate();
    ASSERT_EQ(value.GetValue(), snapped);
    ASSERT_TRUE(snapped >= value.GetMinimum() && snapped <= value.GetMaximum());
  }
}

}  // namespace
