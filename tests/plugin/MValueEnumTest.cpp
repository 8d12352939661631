#include "plugin/MValueEnum.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "plugin/MCoreEnumNames.h"
#include "tests/plugin/ValueTexts.h"

enum class Weather : int32_t { kSun, kRain, kThunderstorm };
template <>
struct MEnumNames<Weather> {
  static constexpr const char* kNames[] = {"sun", "Rain", "Thunderstorm"};
};

enum class Nothing : int32_t {};
template <>
struct MEnumNames<Nothing> {
  static constexpr std::array<const char*, 0> kNames = {};
};

namespace {

using WeatherValue = MValueEnum<Weather>;
constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();
constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();

TEST(MValueEnum, IsShownByName) {
  const WeatherValue value(Weather::kRain);
  EXPECT_EQ(TextOf(value), "Rain");
  EXPECT_EQ(RawTextOf(value), "Rain");
  EXPECT_EQ(value.FormatAt(0), "sun");
  EXPECT_EQ(value.FormatAt(1), "Thunderstorm");
  EXPECT_EQ(value.FormatAt(std::nan("")), "Rain");
  EXPECT_EQ(ShortTextOf(WeatherValue(Weather::kThunderstorm)), "Thunders");
  EXPECT_EQ(value.GetFlags(), 0u);
}

TEST(MValueEnum, ReadsNamesInAnyCase) {
  WeatherValue value;
  EXPECT_TRUE(value.SetText("RAIN"));
  EXPECT_EQ(value.GetValue(), Weather::kRain);
  EXPECT_FALSE(value.SetText("rain"));
  EXPECT_TRUE(value.ParseValue("thunderSTORM"));
  EXPECT_EQ(value.GetValue(), Weather::kThunderstorm);
}

TEST(MValueEnum, TakesTheFirstEnumeratorForAnUnknownName) {
  for (const char* const text : {"", "snow", "2", "thunder", "rain "}) {
    WeatherValue value(Weather::kThunderstorm);
    EXPECT_TRUE(value.SetText(Buffer(text))) << text;
    EXPECT_EQ(value.GetValue(), Weather::kSun);
  }
}

TEST(MValueEnum, IsLimitedAtBothEnds) {
  EXPECT_EQ(WeatherValue(Weather(7)).GetValue(), Weather::kThunderstorm);
  EXPECT_EQ(WeatherValue(Weather(-7)).GetValue(), Weather::kSun);
  WeatherValue value;
  EXPECT_TRUE(value.SetValue(Weather(99)));
  EXPECT_EQ(value.GetValue(), Weather::kThunderstorm);
}

TEST(MValueEnum, StepsFromNameToName) {
  WeatherValue value;
  EXPECT_TRUE(value.StepBy(1, 5));
  EXPECT_EQ(value.GetValue(), Weather::kRain);
  EXPECT_TRUE(value.StepSmall(kHighest));
  EXPECT_EQ(value.GetValue(), Weather::kThunderstorm);
  EXPECT_FALSE(value.StepBy(kHighest, 0));
  EXPECT_TRUE(value.StepBy(kLowest, 0));
  EXPECT_EQ(value.GetValue(), Weather::kSun);
  EXPECT_FALSE(value.StepSmall(-1));
}

TEST(MValueEnum, HasPositions) {
  WeatherValue value(Weather::kRain);
  EXPECT_EQ(value.GetPosition(), 0.5);
  EXPECT_TRUE(value.SetPosition(0.9));
  EXPECT_EQ(value.GetValue(), Weather::kThunderstorm);
  EXPECT_TRUE(value.SetPosition(-3));
  EXPECT_EQ(value.GetValue(), Weather::kSun);
  for (const double position : {std::nan(""), HUGE_VAL}) EXPECT_FALSE(value.SetPosition(position));
}

TEST(MValueEnum, ListsItsNames) {
  const WeatherValue value;
  EXPECT_EQ(value.GetIndexCount(), 3);
  EXPECT_EQ(IndexTextOf(value, 1), "Rain");
  EXPECT_EQ(IndexTextOf(value, 3), "3");
  EXPECT_EQ(IndexTextOf(value, -1), "-1");
  EXPECT_EQ(IndexTextOf(value, kLowest), "-2147483");
}

TEST(MValueEnum, KeepsAnIndexOutsideOfTheTable) {
  WeatherValue value;
  EXPECT_TRUE(value.SetIndex(40));
  EXPECT_FALSE(value.SetIndex(40));
  EXPECT_EQ(static_cast<int32_t>(value.GetValue()), 40);
  EXPECT_EQ(TextOf(value), "40");
  EXPECT_EQ(value.GetPosition(), 1);
  EXPECT_EQ(SavedText(value), "40");
  value.Validate();
  EXPECT_EQ(value.GetValue(), Weather::kThunderstorm);
}

TEST(MValueEnum, SavesAndLoadsItsName) {
  WeatherValue value(Weather::kRain);
  EXPECT_EQ(SavedText(value), "Rain");
  MXMLItem item("item");
  item.SetAttribute("value", "THUNDERSTORM");
  value.Load(item);
  EXPECT_EQ(value.GetValue(), Weather::kThunderstorm);
  item.SetAttribute("value", "snow");
  value.Load(item);
  EXPECT_EQ(value.GetValue(), Weather::kSun);
  value.Load(MXMLItem("empty"));
  EXPECT_EQ(value.GetValue(), Weather::kRain);
  EXPECT_FALSE(value.Reset());
  value.FromRawText("thunderstorm");
  EXPECT_EQ(value.GetValue(), Weather::kThunderstorm);
}

TEST(MValueEnum, IsDefinedByNames) {
  MXMLItem item("item");
  item.SetAttribute("value", "rain");
  WeatherValue value;
  value.LoadFromXml(item);
  EXPECT_EQ(value.GetValue(), Weather::kRain);
  EXPECT_EQ(value.GetDefault(), Weather::kRain);
  item.SetAttribute("default", "Thunderstorm");
  value.LoadFromXml(item);
  EXPECT_EQ(value.GetValue(), Weather::kRain);
  EXPECT_EQ(value.GetDefault(), Weather::kThunderstorm);
  item.RemoveAttribute("value");
  value.LoadFromXml(item);
  EXPECT_EQ(value.GetValue(), Weather::kThunderstorm);
}

TEST(MValueEnum, WritesToTheVariableThatItIsBoundTo) {
  Weather weather = Weather(9);
  WeatherValue value{MBind(weather)};
  EXPECT_EQ(weather, Weather::kThunderstorm);
  EXPECT_TRUE(value.IsChanged());
  value.ClearChanged();
  value.SetText("rain");
  EXPECT_EQ(weather, Weather::kRain);
  EXPECT_TRUE(value.IsChanged());
  weather = Weather(-5);
  EXPECT_EQ(TextOf(value), "-5");
}

TEST(MValueEnum, SpeaksByBoundFunctions) {
  WeatherValue value(Weather::kRain);
  value.SetFunctions({[](const void*, MString& text, double number) {
                        text = number == 1 ? MString("wet") : MString("dry");
                      },
                      [](const void*, const MString& text, double& number) {
                        number = text == "much" ? 1e300 : 0;
                        return !text.IsEmpty();
                      }});
  EXPECT_EQ(TextOf(value), "wet");
  EXPECT_EQ(value.FormatAt(0), "dry");
  EXPECT_TRUE(value.SetText("much"));
  EXPECT_EQ(value.GetValue(), Weather::kThunderstorm);
  EXPECT_FALSE(value.SetText(""));
}

TEST(MValueEnum, OfAnEmptyTableIsZero) {
  MValueEnum<Nothing> value(Nothing(3));
  EXPECT_EQ(static_cast<int32_t>(value.GetValue()), 0);
  EXPECT_EQ(value.GetIndexCount(), 0);
  EXPECT_EQ(TextOf(value), "0");
  EXPECT_FALSE(value.SetPosition(1));
  EXPECT_FALSE(value.StepBy(1, 0));
  EXPECT_EQ(value.GetPosition(), 0);
}

TEST(MValueEnum, ChoosesThreadPrioritiesByName) {
  using Priority = MThread::Priority;
  MValueEnum<Priority> value(Priority::kNormal);
  EXPECT_EQ(TextOf(value), "Normal");
  const std::pair<const char*, Priority> names[] = {{"lowest", Priority::kLowest},
                                                    {"Normal", Priority::kNormal},
                                                    {"HIGHEST", Priority::kHighest},
                                                    {"Critical", Priority::kCritical},
                                                    {"Idle", Priority::kIdle}};
  for (const auto& [name, priority] : names) {
    value.SetText(Buffer(name));
    EXPECT_EQ(value.GetValue(), priority) << name;
  }
}

TEST(MValueEnum, KeepsAPriorityWithoutANameWhenItIsSaved) {
  MValueEnum<MThread::Priority> value(MThread::Priority::kHigh);
  MXMLItem item("item");
  value.Save(item);
  value.SetText("Normal");
  value.Load(item);
  EXPECT_EQ(value.GetValue(), MThread::Priority::kHigh);
}

TEST(MValueEnum, ChoosesLanguagesAndCountriesByName) {
  MValueEnum<MLocale::Language> language;
  EXPECT_EQ(TextOf(language), "Default");
  EXPECT_TRUE(language.SetText("czech"));
  EXPECT_EQ(language.GetValue(), MLocale::Language::kCzech);
  EXPECT_EQ(language.GetIndexCount(), MLocale::kLanguageCount);
  MValueEnum<MLocale::Country> country(MLocale::Country::kZimbabwe);
  EXPECT_EQ(TextOf(country), "Zimbabwe");
  EXPECT_TRUE(country.SetText("PORTUGAL"));
  EXPECT_EQ(country.GetValue(), MLocale::Country::kPortugal);
  EXPECT_EQ(country.FormatAt(0), "Afghanistan");
}

template <typename E>
void ExpectEveryNameComesBack() {
  MValueEnum<E> value;
  for (int32_t i = 0; i < value.GetIndexCount(); ++i) {
    value.SetIndex(i);
    MXMLItem item("item");
    value.Save(item);
    value.SetIndex(0);
    value.Load(item);
    EXPECT_EQ(static_cast<int32_t>(value.GetValue()), i) << SavedText(value);
  }
}

TEST(MValueEnum, ComesBackFromEveryName) {
  ExpectEveryNameComesBack<Weather>();
  ExpectEveryNameComesBack<MThread::Priority>();
  ExpectEveryNameComesBack<MLocale::Language>();
  ExpectEveryNameComesBack<MLocale::Country>();
}

}  // namespace
