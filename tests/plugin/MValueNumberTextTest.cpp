// How numbers are shown, typed, saved and loaded.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "plugin/MValueNumber.h"
#include "tests/common/CommaLocale.h"
#include "tests/plugin/ValueTexts.h"

namespace {

MXMLItem& Set(MXMLItem& item, const char* name, const char* text) {
  item.SetAttribute(Buffer(name), Buffer(text));
  return item;
}

TEST(MValueNumberText, IsInItsFormat) {
  MValueDouble value(0.12345, 0, 1);
  EXPECT_EQ(TextOf(value), "0.1235");
  value.SetFormat("{0;+.02} st");
  EXPECT_EQ(TextOf(value), "+0.12 st");
  EXPECT_EQ(value.FormatAt(0.5), "+0.50 st");
  EXPECT_EQ(value.FormatAt(7), "+1.00 st");
  EXPECT_EQ(value.FormatAt(std::nan("")), "+0.12 st");
  EXPECT_EQ(value.GetValue(), 0.12345);
  MString text;
  value.ToText(text);
  EXPECT_EQ(text, "+0.12 st");
  EXPECT_EQ(RawTextOf(value), "0.1235");
}

TEST(MValueNumberText, OfIntegersHasNoFraction) {
  EXPECT_EQ(TextOf(MValueInt32(-12, -100, 100)), "-12");
  EXPECT_EQ(RawTextOf(MValueInt16(-12, -100, 100)), "-12");
  EXPECT_EQ(TextOf(MValueInt64(std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::min(), 0)),
            "-9223372036854775808");
  MValueInt32 value(255, 0, 1000);
  value.SetFormat("{0x;04}");
  EXPECT_EQ(TextOf(value), "00FF");
  EXPECT_TRUE(value.SetText("3e8"));
  EXPECT_EQ(value.GetValue(), 1000);
  EXPECT_EQ(value.FormatAt(0.1), "0064");
}

TEST(MValueNumberText, IsCutToEightCharactersForHosts) {
  EXPECT_EQ(ShortTextOf(MValueInt64(123456789, 0, 999999999)), "12345678");
  EXPECT_EQ(ShortTextOf(MValueInt32(7, 0, 9)), "7");
  MValueDouble value(0.5, 0, 1);
  value.SetFormat(MString(u"\u00D7{0;.1}"));
  EXPECT_EQ(ShortTextOf(value), "?0.5");
}

TEST(MValueNumberText, KeepsItsFormatWhenTheNewOneIsBroken) {
  MValueDouble value(0.5, 0, 1);
  value.SetFormat("{0;.1");
  EXPECT_EQ(value.GetFormat(), "{0}");
  EXPECT_EQ(TextOf(value), "0.5000");
}

TEST(MValueNumberText, ThatIsTypedIsLimited) {
  MValueDouble value(0.5, 0, 1);
  EXPECT_TRUE(value.SetText("0.25"));
  EXPECT_EQ(value.GetValue(), 0.25);
  EXPECT_FALSE(value.SetText("0.25"));
  EXPECT_TRUE(value.SetText("12"));
  EXPECT_EQ(value.GetValue(), 1);
  EXPECT_TRUE(value.ParseValue("-1e9"));
  EXPECT_EQ(value.GetValue(), 0);
}

TEST(MValueNumberText, ThatCannotBeReadLeavesTheValue) {
  MValueDouble value(0.5, 0, 1);
  value.ClearChanged();
  MString huge;
  huge.AppendRepeated(u'9', 100000);
  for (const MString& text : {MString(""), MString("x"), MString("nan"), MString("inf"), MString("1e999"),
                              MString("1,5"), MString("1 2"), MString("0.7 x"), huge}) {
    EXPECT_FALSE(value.SetText(text));
    EXPECT_FALSE(value.ParseValue(text));
  }
  value.SetFormat("{0} of {1}");
  EXPECT_FALSE(value.SetText("0.1 of 0.2")) << "two numbers";
  EXPECT_EQ(value.GetValue(), 0.5);
  EXPECT_FALSE(value.IsChanged());
}

TEST(MValueNumberText, OfIntegersIsReadToTheLastDigit) {
  MValueInt64 value(0, std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max());
  const std::pair<const char*, int64_t> texts[] = {
      {"9007199254740993", 9007199254740993},
      {"-9007199254740993", -9007199254740993},
      {"+9223372036854775807", std::numeric_limits<int64_t>::max()},
      {"-9223372036854775808", std::numeric_limits<int64_t>::min()},
      {"9223372036854775808", std::numeric_limits<int64_t>::max()},
      {"-99999999999999999999999", std::numeric_limits<int64_t>::min()},
      {"1e3", 1000},
      {"1.5", 2},
      {"-0.4", 0}};
  for (const auto& [text, number] : texts) {
    value.SetText(Buffer(text));
    EXPECT_EQ(value.GetValue(), number) << text;
  }
  MValueInt16 little(0, -32768, 32767);
  little.FromRawText("70000");
  EXPECT_EQ(little.GetValue(), 32767);
  MValueInt32 whole(0, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max());
  whole.FromRawText("-1e300");
  EXPECT_EQ(whole.GetValue(), std::numeric_limits<int32_t>::min());
}

TEST(MValueNumberText, FromOutsideIsTakenWithoutLimit) {
  MValueDouble value(0.5, 0, 1);
  value.FromRawText("  17.5 and more");
  EXPECT_EQ(value.GetValue(), 17.5);
  for (const char* const text : {"", "x", "nan", "1e999"}) value.FromRawText(Buffer(text));
  EXPECT_EQ(value.GetValue(), 17.5);
  MValueFloat single(0, 0, 1);
  single.FromRawText("1e300");
  EXPECT_EQ(single.GetValue(), std::numeric_limits<float>::max());
}

TEST(MValueNumberText, IsSavedWithFourDecimals) {
  EXPECT_EQ(SavedText(MValueDouble(0.123456, 0, 1)), "0.1235");
  EXPECT_EQ(SavedText(MValueFloat(0.5f, 0, 1)), "0.5000");
  EXPECT_EQ(SavedText(MValueInt32(-7, -9, 9)), "-7");
  MValueDouble value(1, 0, 1);
  value.SetFormat("{0;.1} dB");
  value.SetKey("gain");
  EXPECT_EQ(SavedText(value, "gain"), "1.0000");
  EXPECT_EQ(SavedText(value, "value"), "(none)");
}

TEST(MValueNumberText, IsLoadedWhateverTheFormat) {
  MXMLItem item("item");
  MValueDouble value(0.5, 0, 1);
  value.SetFormat("Gain {0;.1} dB");
  value.Load(Set(item, "VALUE", "0.25"));
  EXPECT_EQ(value.GetValue(), 0.25);
  for (const char* const text : {"", "x", "0.3 dB", "nan", "1e999", "0.1 0.2"})
    value.Load(Set(item, "value", text));
  EXPECT_EQ(value.GetValue(), 0.25);
  value.Load(Set(item, "value", "7"));
  EXPECT_EQ(value.GetValue(), 1);
  value.Load(MXMLItem("empty"));
  EXPECT_EQ(value.GetValue(), 0.5);
}

TEST(MValueNumberText, SurvivesSavingAndLoading) {
  int64_t number = -9007199254740993;
  MValueInt64 value(MBind(number), std::numeric_limits<int64_t>::min(), 0);
  MXMLItem item("item");
  value.Save(item);
  number = 0;
  value.Load(item);
  EXPECT_EQ(number, -9007199254740993);
}

TEST(MValueNumberText, DefinesAValue) {
  MXMLItem item("item");
  Set(item, "mmin", "-10"), Set(item, "mmax", "20"), Set(item, "default", "5"), Set(item, "value", "7");
  Set(item, "inc", "0.5"), Set(item, "maxinc", "2"), Set(item, "format", "{0;.1} dB");
  MValueDouble value;
  value.LoadFromXml(item);
  EXPECT_EQ(value.GetMinimum(), -10);
  EXPECT_EQ(value.GetMaximum(), 20);
  EXPECT_EQ(value.GetDefault(), 5);
  EXPECT_EQ(value.GetValue(), 7);
  EXPECT_EQ(value.GetStep(), 0.5);
  EXPECT_EQ(value.GetMaxStep(), 2);
  EXPECT_EQ(TextOf(value), "7.0 dB");
}

TEST(MValueNumberText, OfADefaultIsTheValueAndTheOtherWayRound) {
  MXMLItem withDefault("item"), withValue("item");
  MValueDouble first(0, 0, 10), second(0, 0, 10);
  first.LoadFromXml(Set(withDefault, "default", "4"));
  EXPECT_EQ(first.GetValue(), 4);
  EXPECT_EQ(first.GetDefault(), 4);
  second.LoadFromXml(Set(withValue, "value", "4"));
  EXPECT_EQ(second.GetValue(), 4);
  EXPECT_EQ(second.GetDefault(), 4);
}

TEST(MValueNumberText, RaisesTheLargeStepToTheSmallOne) {
  MXMLItem item("item"), both("item");
  MValueDouble value(0, 0, 10);
  value.LoadFromXml(Set(item, "inc", "3"));
  EXPECT_EQ(value.GetMaxStep(), 3);
  value.LoadFromXml(Set(item, "inc", "0.5"));
  EXPECT_EQ(value.GetMaxStep(), 3);
  Set(both, "inc", "3"), Set(both, "maxinc", "1");
  value.LoadFromXml(both);
  EXPECT_EQ(value.GetMaxStep(), 1);
}

TEST(MValueNumberText, OfADefinitionIsLimitedAtTheEnd) {
  MXMLItem item("item");
  Set(item, "value", "50"), Set(item, "mmin", "10"), Set(item, "mmax", "20");
  MValueInt32 value;
  value.LoadFromXml(item);
  EXPECT_EQ(value.GetValue(), 20);
  EXPECT_EQ(value.GetDefault(), 50);
}

TEST(MValueNumberText, OfADefinitionThatIsNoNumberCountsAsAbsent) {
  MXMLItem item("item");
  for (const char* const name : {"mmin", "mmax", "default", "value", "inc", "maxinc"}) Set(item, name, "nan");
  Set(item, "format", "{0");
  MValueDouble value(0.5, 0, 1);
  value.LoadFromXml(item);
  EXPECT_EQ(value.GetMinimum(), 0);
  EXPECT_EQ(value.GetMaximum(), 1);
  EXPECT_EQ(value.GetValue(), 0.5);
  EXPECT_EQ(value.GetStep(), 0.001);
  EXPECT_EQ(value.GetMaxStep(), 0.01);
  EXPECT_EQ(TextOf(value), "0.5000");
}

TEST(MValueNumberText, ComesFromBoundFunctions) {
  static int context;
  MValueDouble value(0.5, 0, 1);
  value.SetFunctions({[](const void* given, MString& text, double number) {
                        text = given == &context && number >= 0.5 ? MString("high") : MString("low");
                      },
                      [](const void*, const MString& text, double& number) {
                        number = text == "high" ? 9 : text == "nan" ? std::nan("") : -9;
                        return text != "what";
                      },
                      &context});
  EXPECT_EQ(TextOf(value), "high");
  EXPECT_EQ(value.FormatAt(0.25), "low");
  EXPECT_EQ(ShortTextOf(value), "high");
  MString text;
  value.FormatValue(text);
  EXPECT_EQ(text, "0.5000");
  EXPECT_TRUE(value.SetText("low"));
  EXPECT_EQ(value.GetValue(), 0);
  EXPECT_TRUE(value.SetText("high"));
  EXPECT_EQ(value.GetValue(), 1);
  for (const char* const refused : {"what", "nan"}) EXPECT_FALSE(value.SetText(Buffer(refused)));
  EXPECT_EQ(value.GetValue(), 1);
}

TEST(MValueNumberText, IsBlindForTheLocale) {
  const CommaLocale locale;
  if (!CommaLocale::IsInForce()) GTEST_SKIP() << "no locale with a comma";
  MValueDouble value(0.25, 0, 1);
  EXPECT_EQ(TextOf(value), "0.2500");
  EXPECT_EQ(SavedText(value), "0.2500");
  EXPECT_TRUE(value.SetText("0.75"));
  EXPECT_EQ(value.GetValue(), 0.75);
}

TEST(MStorable, SavesAnEmptyTextAndLoadsNothingByDefault) {
  MStorable storable;
  EXPECT_EQ(storable.GetKey(), "value");
  EXPECT_EQ(SavedText(storable), "");
  MXMLItem item("item");
  storable.Load(item);
  EXPECT_FALSE(storable.Reset());
}

TEST(MStorable, LoadsFromItsKeyAndResetsWithoutIt) {
  struct Noting : MStorable {
    void FromText(const MString& text) override { log += "from " + Utf8(text) + " "; }
    bool Reset() override { return log += "reset ", true; }
    std::string log;
  } storable;
  storable.SetKey("key");
  MXMLItem item("item");
  storable.Load(item);
  storable.Load(Set(item, "KEY", "text"));
  EXPECT_EQ(storable.log, "reset from text ");
}

}  // namespace
